#pragma once

// The select-list grid below each operand's diagram and its in-place cell editor.

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QPointer>
#include <QStringList>
#include <QStyledItemDelegate>
#include <QTableView>
#include <string>
#include <vector>

#include "designer/designer_p.h"

class QLineEdit;
class QListWidget;
class QToolButton;

namespace qorvex {

class TqxSelectItem;
class TqxSelectList;
class TqxQueryBuilderSelectListControl;

// How a cell is edited: as text, with a drop-down list of values, or with a "..." button
// that opens the sub-queries under the cell.
enum class TqxGridEditStyle { esSimple, esPickList, esEllipsis };

// The cell editor of the select-list grid: a line edit with a button on its right, a
// drop-down arrow for a pick list or "..." for cells holding sub-queries.
class TqxQueryBuilderSelectListInplaceEdit : public QWidget {
  Q_OBJECT
 public:
  explicit TqxQueryBuilderSelectListInplaceEdit(TqxQueryBuilderSelectListControl* Grid);

  // Opens on a grid cell with its text; the typed text is what is committed.
  void Start(int Col, int Row, const QString& Text, TqxGridEditStyle Style);
  int Col() const { return Col_; }
  int Row() const { return Row_; }
  void SetRow(int Row) { Row_ = Row; }
  TqxGridEditStyle GetEditStyle() const { return Style_; }
  void SetEditStyle(TqxGridEditStyle Style);
  QString Text() const;
  void SetText(const QString& Text);
  // The cell's text when the edit began (Escape puts it back).
  QString OriginalText() const { return Original_; }
  QLineEdit* LineEdit() const { return Edit_; }
  QToolButton* Button() const { return Button_; }

  // The values offered by the drop-down list of the cell being edited.
  QStringList DoGetPickListItems() const;
  QListWidget* PickList() const { return List_; }
  bool IsDroppedDown() const;
  void DropDown();
  // Closes the list; with Accept the chosen value is taken and committed.
  void CloseUp(bool Accept);
  // The "..." button: shows the sub-query under the cell (a menu when there are several).
  void DoEditButtonClick();

 protected:
  bool eventFilter(QObject* Watched, QEvent* Event) override;
  void resizeEvent(QResizeEvent* Event) override;

 private:
  bool EditorKey(QKeyEvent* Event);
  bool ListKey(QKeyEvent* Event);
  void ButtonClicked();

  TqxQueryBuilderSelectListControl* Grid_;
  QLineEdit* Edit_;
  QToolButton* Button_;
  QListWidget* List_;
  TqxGridEditStyle Style_ = TqxGridEditStyle::esSimple;
  QString Original_;
  int Col_ = -1;
  int Row_ = -1;
};

// The cell texts of the grid, read from the select list in one pass (Refresh) so that
// painting never walks the model. Model columns are grid columns 1 and up; model rows are
// grid rows 1 and up.
class TqxSelectListGridModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  explicit TqxSelectListGridModel(QObject* Parent) : QAbstractTableModel(Parent) {}
  int rowCount(const QModelIndex& Parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& Parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& Index, int Role) const override;
  QVariant headerData(int Section, Qt::Orientation Orientation, int Role) const override;

  const QString& Cell(int Column, int Row) const;
  // Re-reads every cell from List; rows and columns are added or dropped at the end only,
  // so an open editor stays where it is.
  void Refresh(const TqxSelectList* List);
  void AddRow();
  void Clear();

 private:
  int Columns_ = 10;
  std::vector<std::vector<QString>> Rows_;
};

// The select-list grid of one union operand: a fixed column of row markers, a header
// row, and one row per select item followed by the list's empty row. Cells are edited in
// place; every edit goes to the select item, and the grid is refreshed from the model
// after each change of the query. Column and row numbers of its operations count the
// fixed column and the header row, as the grid shows them.
class TqxQueryBuilderSelectListControl : public QTableView, public TqxControlWidget {
  Q_OBJECT
 public:
  static constexpr int kColOutput = 1;
  static constexpr int kColExpression = 2;
  static constexpr int kColAlias = 3;
  static constexpr int kColSortType = 4;
  static constexpr int kColSortOrder = 5;
  static constexpr int kColGroupBy = 6;
  static constexpr int kColCriteria = 7;
  static constexpr int kFixedColWidth = 12;
  static constexpr int kHeaderRowHeight = 18;
  static constexpr int kDefaultRowHeight = 16;
  static constexpr int kDefaultColWidth = 64;

  TqxQueryBuilderSelectListControl(TqxQueryBuilder* Builder, TqxUnionSubQueryTabSheet* Page,
                                   TqxSelectList* List);
  ~TqxQueryBuilderSelectListControl() override;

  QWidget* Widget() override { return this; }
  void SetControlBounds(const TqxRect&) override {}  // fills the bottom panel
  void UpdateContent() override { Refresh(); }
  void ControlReleased() override;

  // The grid of an operand's page; null when it has none.
  static TqxQueryBuilderSelectListControl* OfPage(const QWidget* Page);
  TqxQueryBuilder* GetBuilder() const { return Builder_; }
  TqxSelectList* GetSelectList() const { return List_; }
  TqxQueryBuilderWorkArea* GetWorkArea() const;
  // The item of a grid row; null for the header row or beyond the list.
  TqxSelectItem* ItemAt(int Row) const;

  int ColCount() const;
  int RowCount() const;
  QString Cells(int Col, int Row) const;
  int ColWidths(int Col) const;
  int RowHeights(int Row) const;
  // The rectangle of a cell in viewport coordinates (the fixed column and header row are
  // outside the viewport).
  QRect CellRect(int Col, int Row) const;
  int Col() const;
  int Row() const;
  void SetCurrentCell(int Col, int Row);

  bool CanEditCell(int Col, int Row) const;
  TqxGridEditStyle GetEditStyle(int Col, int Row) const;
  // Gives a cell's new text to the model; a text equal to the cell's changes nothing.
  // False when the model refused it (the error has been reported).
  bool SetEditText(int Col, int Row, const QString& Text);
  // Moves the item of grid row From to grid row To.
  void RowMoved(int From, int To);
  void ToggleOutput(int Row);
  // Appends an empty grid row; drops every item row (the grid keeps its header).
  void AddRow();
  void Clear();
  // Re-reads every cell from the select list.
  void Refresh();

  // ---- editing
  bool IsEditing() const;
  TqxQueryBuilderSelectListInplaceEdit* InplaceEditor() const { return Editor_; }
  // Opens the editor on the current cell; with Initial its text replaces the cell's.
  bool ShowEditor(const QString* Initial = nullptr);
  // Commits the editor's text; with Hide the editor closes when the model took it.
  bool CommitEdit(bool Hide = true);
  // Escape: the cell's previous text goes back and the edit ends.
  void CancelEdit();
  // Places the editor on its cell, or hides it when the cell can no longer be edited.
  void UpdateEditorState();

  // ---- check boxes
  bool GetFlatChecks() const { return FlatChecks_; }
  void SetFlatChecks(bool Value);
  // A check box in Rect for a cell text of the "Output" column: "1", "0" or "-1".
  void DrawCheck(QPainter& Painter, const QRect& Rect, const QString& State) const;
  void DrawCell(QPainter& Painter, const QStyleOptionViewItem& Option, int Col, int Row) const;

  // Chooses a whole row, as a press on its marker does; 0 when none is chosen.
  void MarkRow(int Row);
  int GetMarkedRow() const { return MarkedRow_; }

  // ---- menus and drops
  void ShowRowMenu(int Row, const QPoint& GlobalPos);
  // Whether a field of DS may be dropped at a screen point of this grid.
  bool DragOver(const QPoint& GlobalPos, const TqxDatasource* DS) const;
  // Drops a field: on an item row it is inserted there, elsewhere it is appended. False
  // when the point is not on the grid or the field is not welcome.
  bool DragDrop(const QPoint& GlobalPos, TqxDatasource* DS, const std::string& Field);

 protected:
  void keyPressEvent(QKeyEvent* Event) override;
  void mousePressEvent(QMouseEvent* Event) override;
  void mouseDoubleClickEvent(QMouseEvent* Event) override;
  void contextMenuEvent(QContextMenuEvent* Event) override;
  void showEvent(QShowEvent* Event) override;
  void scrollContentsBy(int Dx, int Dy) override;
  void currentChanged(const QModelIndex& Current, const QModelIndex& Previous) override;
  bool eventFilter(QObject* Watched, QEvent* Event) override;

 private:
  friend class TqxQueryBuilderSelectListInplaceEdit;
  bool Loading() const;
  bool RowMarked() const;
  void HeaderSectionMoved(int Logical, int OldVisual, int NewVisual);
  void ApplyColumnLayout();
  void EnsureFresh() const;
  void HideEditor();

  TqxQueryBuilder* Builder_;
  TqxUnionSubQueryTabSheet* Page_;
  TqxSelectList* List_;
  TqxSelectListGridModel* Model_ = nullptr;
  TqxQueryBuilderSelectListInplaceEdit* Editor_ = nullptr;
  // The item whose cell the editor is on; the editor follows it when rows move.
  TqxSelectItem* EditItem_ = nullptr;
  bool FlatChecks_ = true;
  bool Dirty_ = false;
  int Committing_ = 0;
  int Moving_ = 0;
  int MarkedRow_ = 0;
};

}  // namespace qorvex
