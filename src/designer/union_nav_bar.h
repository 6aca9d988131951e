#pragma once

// The union navigation bar of a query tab page and the controls it orders: a button per
// union operand, a bracket pair per nested group and an operator icon before each item.

#include <QLabel>
#include <QToolButton>
#include <QWidget>

#include "designer/designer_p.h"

namespace qorvex {

class TqxQueryBase;
class TqxUnionGroup;

// Lets a bar control be dragged onto another: a press, then a move of more than four
// pixels with the left button held, then the release over the target.
class TqxUnionDragSource {
 public:
  static constexpr int kDragThreshold = 4;
  virtual ~TqxUnionDragSource() = default;
  bool IsDragging() const { return Dragging_; }

 protected:
  void DragPress(const QMouseEvent* Event);
  // True while a drag runs (the move is consumed).
  bool DragMove(QWidget* Self, const QMouseEvent* Event);
  // True when the release ended a drag (dropped or refused).
  bool DragRelease(QWidget* Self, const QMouseEvent* Event);
  QPoint PressPoint_{-1, -1};

 private:
  bool Dragging_ = false;
};

// The bar of one query tab page: lays out the controls of the query's union items left
// to right and performs the drops between them.
class TqxUnionNavBar : public QWidget {
  Q_OBJECT
 public:
  static constexpr int kHeight = 24;

  explicit TqxUnionNavBar(TqxQueryTabSheet* Sheet);

  TqxQueryTabSheet* GetQueryTabSheet() const { return Sheet_; }
  TqxSubQuery* GetQuery() const;

  // The controls in display order: per item its operator, then its button, or for a
  // group its left bracket, the group's items and its right bracket.
  QList<QWidget*> BuildControlsList() const;
  // 4 + the widths of the visible controls.
  int CalcWidth() const;
  // Whether A comes before B in BuildControlsList.
  bool CustomAlignInsertBefore(QWidget* A, QWidget* B) const;
  // Places the controls left to right from x = 0.
  void CustomAlignPosition(const QList<QWidget*>& Controls);
  // Refreshes the operators, places the controls, sizes the bar and has the page place
  // it. Deferred while alignment is suspended.
  void AlignControls();
  void DisableAlign() { ++AlignDisabled_; }
  void EnableAlign();
  // How many times the bar was aligned (for tests and diagnostics).
  int GetAlignCount() const { return AlignCount_; }

  // The first and last index of Item in the query's BuildList (a group appears twice);
  // false when the item is not in it.
  bool FindQueryBounds(const TqxQueryBase* Item, int& First, int& Last) const;

  // The bar control under a global point; null when none.
  QWidget* DropTargetAt(const QPoint& GlobalPos) const;
  // Whether Source may be dropped on Target, and the drop itself (one change, one
  // alignment). False when refused or when the model refused the change.
  bool CanDrop(QWidget* Source, QWidget* Target) const;
  bool Drop(QWidget* Source, QWidget* Target);

 protected:
  void paintEvent(QPaintEvent* Event) override;

 private:
  // An operator stands for its item: the item's button or left bracket.
  QWidget* ResolveTarget(QWidget* Target) const;
  bool AcceptBracketOn(const TqxUnionGroup* Group, bool Left, const TqxQueryBase* Operand) const;

  TqxQueryTabSheet* Sheet_;
  int AlignDisabled_ = 0;
  bool AlignPending_ = false;
  int AlignCount_ = 0;
};

// One union operand on the bar: a toggle button (one of the bar's is down) whose click
// shows the operand's page.
class TqxUnionButton : public QToolButton, public TqxControlWidget, public TqxUnionDragSource {
  Q_OBJECT
 public:
  TqxUnionButton(TqxUnionNavBar* Bar, TqxUnionSubQuery* Operand);
  QWidget* Widget() override { return this; }
  void UpdateContent() override;
  void MakeVisible() override;
  void ControlReleased() override;

  TqxUnionSubQuery* GetOperand() const { return Operand_; }
  QPoint GetPressPoint() const { return PressPoint_; }
  void Click();
  void ShowPopupMenu(const QPoint& GlobalPos);

 protected:
  void mousePressEvent(QMouseEvent* Event) override;
  void mouseMoveEvent(QMouseEvent* Event) override;
  void mouseReleaseEvent(QMouseEvent* Event) override;
  void mouseDoubleClickEvent(QMouseEvent* Event) override;
  void contextMenuEvent(QContextMenuEvent* Event) override;

 private:
  TqxUnionSubQuery* Operand_;
};

// A bracket of a nested union group; dragged onto buttons it widens or narrows the group.
class TqxBracket : public QLabel, public TqxControlWidget, public TqxUnionDragSource {
  Q_OBJECT
 public:
  static constexpr int kWidth = 10;
  TqxBracket(TqxUnionNavBar* Bar, TqxUnionGroup* Group, bool Left);
  QWidget* Widget() override { return this; }
  void ControlReleased() override;

  TqxUnionGroup* GetGroup() const { return Group_; }
  bool IsLeft() const { return Left_; }
  void ShowPopupMenu(const QPoint& GlobalPos);

 protected:
  void mousePressEvent(QMouseEvent* Event) override;
  void mouseMoveEvent(QMouseEvent* Event) override;
  void mouseReleaseEvent(QMouseEvent* Event) override;
  void contextMenuEvent(QContextMenuEvent* Event) override;

 private:
  TqxUnionGroup* Group_;
  bool Left_;
};

class TqxLeftBracket : public TqxBracket {
  Q_OBJECT
 public:
  TqxLeftBracket(TqxUnionNavBar* Bar, TqxUnionGroup* Group) : TqxBracket(Bar, Group, true) {}
};

class TqxRightBracket : public TqxBracket {
  Q_OBJECT
 public:
  TqxRightBracket(TqxUnionNavBar* Bar, TqxUnionGroup* Group) : TqxBracket(Bar, Group, false) {}
};

// The set operator joining an item to the one before it: the provider's icon, and a
// menu of the provider's operators on a plain left click.
class TqxUnionOperator : public QWidget, public TqxControlWidget {
  Q_OBJECT
 public:
  static constexpr int kSize = 16;
  TqxUnionOperator(TqxUnionNavBar* Bar, TqxQueryBase* Query);
  QWidget* Widget() override { return this; }
  void UpdateContent() override;
  void RepaintControl() override;
  void ControlReleased() override;

  TqxQueryBase* GetQuery() const { return Query_; }
  // An empty text means "union".
  void SetUnionOperator(const QString& Text);
  void SetAll(bool Value);
  QString GetUnionOperator() const { return Operator_; }
  bool GetAll() const { return All_; }
  QString GetCaption() const { return Caption_; }
  QString GetHint() const { return toolTip(); }
  // The operator menu: the provider's operators (the current one checked), then the
  // closing items.
  void GetPopupMenu(TqxPopupMenu& Menu);
  void ShowPopupMenu(const QPoint& GlobalPos);
  // The provider's icon for the operator; null without a provider or an icon.
  QPixmap Icon() const;

 protected:
  void paintEvent(QPaintEvent* Event) override;
  void mouseReleaseEvent(QMouseEvent* Event) override;
  void contextMenuEvent(QContextMenuEvent* Event) override;

 private:
  void Rebuild();
  TqxQueryBase* Query_;
  QString Operator_ = QStringLiteral("union");
  bool All_ = false;
  QString Caption_;
};

// The six operator images by resource name ("QXQB_UNION", ...); null for another name.
QPixmap UnionOperatorImage(const QString& Name);

}  // namespace qorvex
