#pragma once

// Private classes of the designer widgets. Each widget that stands for a model object
// implements TqxControlWidget; the model owns a TqxWidgetControl that refers to it.

#include <QEvent>
#include <QFrame>
#include <QHash>
#include <QImage>
#include <QJsonObject>
#include <QListWidget>
#include <QPointer>
#include <QScrollArea>
#include <QStaticText>
#include <QStyledItemDelegate>
#include <QTabWidget>
#include <QWidget>
#include <climits>
#include <functional>
#include <memory>
#include <string>

#include "qorvex/designer/link_painters.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/model/controls.h"
#include "qorvex/model/sql_builder.h"

class QMenu;
class QAction;
class QSplitter;
class QStackedWidget;
class QUndoStack;

namespace qorvex {

class TqxAddObjectForm;
class TqxDatasource;
class TqxQueryBuilderDataSourceControl;
class TqxQueryBuilderDatasourceFieldsList;
class TqxQueryBuilderLinkControl;
class TqxQueryBuilderLinkPainter;
class TqxQueryBuilderWorkArea;
class TqxSubQuery;
class TqxUnionNavBar;
class TqxUnionSubQuery;

// What the model's control wrapper asks of a widget.
class TqxControlWidget {
 public:
  virtual ~TqxControlWidget() = default;
  virtual QWidget* Widget() = 0;
  virtual TqxRect ControlBounds();
  virtual void SetControlBounds(const TqxRect& Bounds);
  virtual void RepaintControl() { Widget()->update(); }
  virtual void UpdateContent() {}
  virtual void MakeVisible() {}
  // The model let go of the widget: it forgets its model object, leaves the screen and
  // is freed once the event loop is back (it may be inside one of its own events).
  virtual void ControlReleased();
};

// The model's handle on a widget. Freeing it releases the widget; a widget freed by its Qt
// parent first simply leaves the handle empty (the model object stays).
class TqxWidgetControl : public TqxControl {
 public:
  TqxWidgetControl(TqxQueryBuilderControlOwner* Owner, TqxControlWidget* Widget);
  ~TqxWidgetControl() override;

  TqxControlWidget* GetControlWidget() const { return Widget_ ? Interface_ : nullptr; }
  QWidget* GetWidget() const { return Widget_.data(); }

  TqxRect GetBounds() const override;
  void SetBounds(const TqxRect& Bounds) override;
  void Repaint() override;
  void UpdateContent() override;
  void MakeVisible() override;

 private:
  QPointer<QWidget> Widget_;
  TqxControlWidget* Interface_;
};

// The tab control of the builder: one TqxQueryTabSheet per sub-query.
class TqxQueryBuiderPageControl : public QTabWidget {
  Q_OBJECT
 public:
  explicit TqxQueryBuiderPageControl(TqxQueryBuilder* Builder);
  TqxQueryBuilder* GetBuilder() const { return Builder_; }
  // Runs F with tab changes not reported to the model (the model is changing the pages).
  void Quietly(const std::function<void()>& F);
  // Re-reads every caption and follows the builder's active sub-query and operands.
  void SyncWithModel();
  // Applies the builder's TabStyle and TabHotTrack.
  void ApplyTabLook();

 private:
  void CurrentChanged(int Index);
  TqxQueryBuilder* Builder_;
  int Quiet_ = 0;
};

// The tab page of one sub-query: the pages of its union operands, one shown at a time.
// The union navigation bar will be placed on it.
class TqxQueryTabSheet : public QWidget, public TqxControlWidget {
  Q_OBJECT
 public:
  TqxQueryTabSheet(TqxQueryBuiderPageControl* Pages, TqxSubQuery* Query);
  QWidget* Widget() override { return this; }
  void UpdateContent() override;
  void MakeVisible() override;
  void ControlReleased() override;

  TqxSubQuery* GetQuery() const { return Query_; }
  QStackedWidget* GetOperandPages() const { return Stack_; }
  TqxUnionNavBar* GetNavBar() const { return NavBar_; }
  // Puts the union bar in the corner UnionNavBarPos names, over the current work area.
  void PlaceNavBar();

 protected:
  void resizeEvent(QResizeEvent* Event) override;
  bool eventFilter(QObject* Watched, QEvent* Event) override;

 private:
  TqxQueryBuiderPageControl* Pages_;
  TqxSubQuery* Query_;
  QStackedWidget* Stack_;
  TqxUnionNavBar* NavBar_ = nullptr;
};

// The page of one union operand: the work area above a splitter and the bottom panel that
// the select-list grid fills.
class TqxUnionSubQueryTabSheet : public QWidget, public TqxControlWidget {
  Q_OBJECT
 public:
  TqxUnionSubQueryTabSheet(TqxQueryBuilder* Builder, TqxQueryTabSheet* TabSheet,
                           TqxUnionSubQuery* Operand);
  QWidget* Widget() override { return this; }
  void RepaintControl() override;
  void MakeVisible() override;
  void ControlReleased() override;

  TqxUnionSubQuery* GetOperand() const { return Operand_; }
  TqxQueryBuilderWorkArea* GetWorkArea() const { return WorkArea_; }
  QSplitter* GetSplitter() const { return Splitter_; }
  QWidget* GetBottomPanel() const { return BottomPanel_; }
  // Applies SplitterHeight.
  void UpdateLayout();
  // DefColumnsPaneHeight, or three eighths of the builder's height.
  int BottomPanelHeight() const;

 private:
  TqxQueryBuilder* Builder_;
  TqxQueryTabSheet* TabSheet_;
  TqxUnionSubQuery* Operand_;
  QSplitter* Splitter_;
  TqxQueryBuilderWorkArea* WorkArea_;
  QWidget* BottomPanel_;
};

// A widget on the work area that can be its focused control: a datasource box, or a link.
class TqxWorkAreaControl : public QWidget {
  Q_OBJECT
 public:
  using QWidget::QWidget;
  virtual TqxQueryBuilderControlOwner* GetOwnerObject() const = 0;
  virtual bool IsBox() const { return false; }
};

// The diagram of one union operand: a scroll area whose content grows with the boxes.
class TqxQueryBuilderWorkArea : public QScrollArea {
  Q_OBJECT
 public:
  TqxQueryBuilderWorkArea(TqxQueryBuilder* Builder, TqxUnionSubQueryTabSheet* Page);
  ~TqxQueryBuilderWorkArea() override;

  TqxQueryBuilder* GetBuilder() const { return Builder_; }
  TqxUnionSubQueryTabSheet* GetPage() const { return Page_; }
  TqxUnionSubQuery* GetOperand() const;
  // The widget the boxes live on (diagram coordinates).
  QWidget* Canvas() const { return widget(); }

  // A free place for a new box: columns 130 pixels apart from x = 10, the column whose
  // free slot is highest wins; (INT_MAX, INT_MAX) when no column fits.
  QPoint FindPos(const QWidget* Control) const;
  QWidget* GetFocusedControl() const { return Focused_.data(); }
  void SetFocusedControl(QWidget* Control);
  // Grows or shrinks the diagram to hold every box.
  void UpdateCanvasSize();
  // The boxes on this diagram, in stacking order.
  QList<TqxQueryBuilderDataSourceControl*> Boxes() const;
  // Fills the background of Rect (diagram coordinates).
  void PaintBackground(QPainter& Painter, const QRect& Rect) const;
  void ShowPopupMenu(const QPoint& GlobalPos);
  // The Delete key: removes the focused link.
  bool DeleteFocusedLink();
  // Gives the keyboard to the box after (or before) From in the diagram, or to the first
  // (last) box when From is null; false when there is none, so that Tab leaves the diagram.
  bool FocusNextBox(const TqxQueryBuilderDataSourceControl* From, bool Forward);
  // Detaches from the model before the page goes.
  void Release();

  // The link controls on this diagram; they lie below the boxes.
  void AddLinkControl(TqxQueryBuilderLinkControl* Link);
  void RemoveLinkControl(TqxQueryBuilderLinkControl* Link);
  const std::vector<TqxQueryBuilderLinkControl*>& LinkControls() const { return Links_; }
  // Re-places the links that end on Box, or all links when Box is null.
  void RealignLinks(const TqxQueryBuilderDataSourceControl* Box = nullptr);
  // The link whose line passes near a canvas point; null when none does.
  TqxQueryBuilderLinkControl* LinkAt(const QPoint& CanvasPos) const;

 private:
  void FocusChanged(QWidget* Old, QWidget* Now);
  void DetachLinkControls();
  std::vector<TqxQueryBuilderLinkControl*> Links_;
  TqxQueryBuilder* Builder_;
  TqxUnionSubQueryTabSheet* Page_;
  QPointer<QWidget> Focused_;
  bool Released_ = false;
};

// A datasource box: a tool window drawn by the designer (small caption with the display
// text and a close button, a sizeable frame) holding the field list. Every proposed
// geometry passes through ProposeGeometry.
class TqxQueryBuilderDataSourceControl : public TqxWorkAreaControl, public TqxControlWidget {
  Q_OBJECT
 public:
  static constexpr int kMinWidth = 50;
  static constexpr int kMaxWidth = 400;
  static constexpr int kMinHeight = 0;
  static constexpr int kMaxHeight = 500;
  static constexpr int kTunedClientWidth = 80;
  static constexpr int kMaxTunedClientWidth = 114;

  TqxQueryBuilderDataSourceControl(TqxQueryBuilderWorkArea* WorkArea, TqxDatasource* Datasource);

  QWidget* Widget() override { return this; }
  TqxRect ControlBounds() override;
  void SetControlBounds(const TqxRect& Bounds) override;
  void UpdateContent() override;
  void MakeVisible() override;
  void ControlReleased() override;
  TqxQueryBuilderControlOwner* GetOwnerObject() const override;
  bool IsBox() const override { return true; }

  TqxDatasource* GetDatasource() const { return Datasource_; }
  TqxQueryBuilderWorkArea* GetWorkArea() const { return WorkArea_; }
  TqxQueryBuilderDatasourceFieldsList* GetFieldsList() const { return List_; }
  QString GetCaption() const { return Caption_; }

  // Snaps to the grid and clamps at the diagram's origin, then moves and sizes the box.
  void ProposeGeometry(QRect Proposed);
  // The geometry ProposeGeometry would give (the current geometry decides what counts as
  // a change of size).
  QRect AdjustGeometry(QRect Proposed) const;
  // Client size from the rows: rows × row height + 4 high, 80 wide or as much more as
  // the texts need up to kMaxTunedClientWidth.
  void TuneSize();
  int WantedClientWidth() const;
  // The rectangle of a field row in client coordinates (see ClientOrigin); the caption
  // bar for an unknown field, or an empty rectangle for one when WithFrame is set.
  QRect CalcFieldRect(const QString& FieldName, bool WithFrame) const;
  // Where the client area (the list) begins in the box.
  QPoint ClientOrigin() const;
  QSize ClientToBoxSize(QSize Client) const;
  int CaptionHeight() const;
  int FrameWidth() const { return 4; }
  QRect CaptionRect() const;
  QRect CloseButtonRect() const;
  bool IsActive() const { return Active_; }
  void SetActive(bool Value);
  void BringToFront();
  // The Delete key: removes the datasource through the model.
  void RemoveDatasource();
  void EditProps();
  void ShowPopupMenu(const QPoint& GlobalPos);
  // Re-reads the check marks from the select list.
  void SyncChecks();

 protected:
  void paintEvent(QPaintEvent* Event) override;
  void resizeEvent(QResizeEvent* Event) override;
  void moveEvent(QMoveEvent* Event) override;
  void mousePressEvent(QMouseEvent* Event) override;
  void mouseMoveEvent(QMouseEvent* Event) override;
  void mouseReleaseEvent(QMouseEvent* Event) override;
  void mouseDoubleClickEvent(QMouseEvent* Event) override;
  void keyPressEvent(QKeyEvent* Event) override;
  void leaveEvent(QEvent* Event) override;

 private:
  enum Edge { None = 0, Left = 1, Right = 2, Top = 4, Bottom = 8, Move = 16 };
  int HitTest(const QPoint& Pos) const;
  void GeometryChanged();
  // The caption bar drawn once and kept until its size, text or state changes.
  const QPixmap& CaptionImage();
  // Draws the caption bar into Local (caption coordinates).
  void DrawCaption(QPainter& Painter, const QRect& Local);

  TqxQueryBuilderWorkArea* WorkArea_;
  QPixmap CaptionImage_;
  bool CaptionImageValid_ = false;
  TqxDatasource* Datasource_;
  TqxQueryBuilderDatasourceFieldsList* List_;
  QString Caption_;
  bool Active_ = false;
  bool Placed_ = false;
  int DragEdges_ = None;
  QPoint PressGlobal_;
  QRect PressGeometry_;
  bool ClosePressed_ = false;
};

// Draws and hit-tests the rows of a field list itself: a check box and the name. Cheaper
// than the style's item drawing, which matters on diagrams of hundreds of boxes.
class TqxFieldRowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  // The check box within a row's rectangle.
  static QRect CheckBoxRect(const QRect& Row);
  void paint(QPainter* Painter, const QStyleOptionViewItem& Option,
             const QModelIndex& Index) const override;
  QSize sizeHint(const QStyleOptionViewItem& Option, const QModelIndex& Index) const override;
  bool editorEvent(QEvent* Event, QAbstractItemModel* Model, const QStyleOptionViewItem& Option,
                   const QModelIndex& Index) override;

 private:
  // Laid-out names, kept while the font stays the same.
  mutable QHash<QString, QStaticText> Texts_;
  mutable QFont TextsFont_;
};

// The check list of a box: row 0 "*", then the fields in metadata order.
class TqxQueryBuilderDatasourceFieldsList : public QListWidget {
  Q_OBJECT
 public:
  static constexpr int kDragThreshold = 3;

  explicit TqxQueryBuilderDatasourceFieldsList(TqxQueryBuilderDataSourceControl* Box);
  ~TqxQueryBuilderDatasourceFieldsList() override;

  TqxQueryBuilderDataSourceControl* GetBox() const { return Box_; }
  QPoint GetPressPoint() const { return Press_; }
  bool IsDragging() const { return Dragging_; }
  // Sets the rows (with "*" first) and ticks from the model.
  void SetFields(const std::vector<std::string>& Fields);
  void SyncChecks();
  // The check box of a row, in viewport coordinates.
  QRect CheckRect(int Row) const;
  int RowHeight() const;
  // Whether a field dragged from Source may be dropped on Row of this list.
  bool CanAcceptDrop(const TqxQueryBuilderDatasourceFieldsList* Source, int Row) const;
  // The list and row under a global point on the same work area; null when none.
  TqxQueryBuilderDatasourceFieldsList* DropTargetAt(const QPoint& GlobalPos, int* Row) const;

 protected:
  void mousePressEvent(QMouseEvent* Event) override;
  void mouseMoveEvent(QMouseEvent* Event) override;
  void mouseReleaseEvent(QMouseEvent* Event) override;
  void mouseDoubleClickEvent(QMouseEvent* Event) override;
  bool focusNextPrevChild(bool Next) override;
  void keyPressEvent(QKeyEvent* Event) override;
  void focusInEvent(QFocusEvent* Event) override;
  void focusOutEvent(QFocusEvent* Event) override;
  void contextMenuEvent(QContextMenuEvent* Event) override;
  void changeEvent(QEvent* Event) override;
  // Draws the rows from RowsImage_, laying them out again only when something they show
  // changed: a diagram repaint then costs one image copy per list.
  void paintEvent(QPaintEvent* Event) override;

 private:
  void InvalidateRows() { RowsImageValid_ = false; }
  void PaintRows(const QSize& Size, qreal Ratio);
  void DrawRows(QPainter& Painter);
  void ClickCheck(QListWidgetItem* Item);
  void UpdateDragCursor(const QPoint& GlobalPos);
  void FinishDrag(const QPoint& GlobalPos);
  void CancelDrag();
  bool Loading() const;

  TqxQueryBuilderDataSourceControl* Box_;
  QPoint Press_{-1, -1};
  int DragRow_ = -1;
  bool Dragging_ = false;
  bool IgnoreRelease_ = false;
  int Syncing_ = 0;
  // The visible rows as last drawn, for the scroll offset and focus they were drawn with.
  QImage RowsImage_;
  bool RowsImageValid_ = false;
  int RowsImageOffset_ = 0;
  bool RowsImageFocused_ = false;
};

// Makes the widgets of model objects and runs their menus and dialogs.
class TqxDesignerControlFactory : public TqxControlFactory {
 public:
  explicit TqxDesignerControlFactory(TqxQueryBuilder* Builder) : Builder_(Builder) {}
  std::vector<std::unique_ptr<TqxControl>> CreateControls(TqxQueryBuilderControlOwner& Owner,
                                                          TqxControl* ParentControl) override;
  void PopupMenu(TqxQueryBuilderControlOwner& Owner, const TqxPopupMenu& Menu,
                 TqxPoint ScreenPos) override;
  bool ExecuteDialog(TqxQueryBuilderControlOwner& Owner, TqxDialogKind Kind) override;
  void ShowAbout() override;

 private:
  TqxQueryBuilder* Builder_;
};

// Runs the dialog of Kind on Owner for a builder (the factory's ExecuteDialog).
bool ExecuteDesignerDialog(TqxQueryBuilder* Builder, TqxQueryBuilderControlOwner& Owner,
                           TqxDialogKind Kind);
// Fills Menu from the model's items; returns each action's handler by action.
void BuildQMenu(QMenu& Menu, const TqxPopupMenu& Items,
                std::vector<std::pair<QAction*, std::function<void()>>>& Handlers);
// The text of the about box.
QString AboutText();
// The built-in background pattern for a darkness: fill colour and a tile drawn over it.
QColor BackgroundFill(TqxBkImageDarkness Darkness);
const QPixmap& BackgroundTile(TqxBkImageDarkness Darkness);

// The deferred load of assigned SQL: the first user message number.
inline constexpr QEvent::Type kLoadSQLEvent = static_cast<QEvent::Type>(1024);

// What an undo step restores: the statement, where every box is, and the tab that was
// being edited. The counts name a step by what changed.
struct TqxDiagramState {
  QString Sql;
  QJsonObject Layout;
  QString ActiveSubquery;
  int ActiveOperand = 0;
  int Datasources = 0;
  int Links = 0;
  int Operands = 0;
  int Subqueries = 0;
  bool SameContent(const TqxDiagramState& Other) const {
    return Sql == Other.Sql && Layout == Other.Layout;
  }
};

// The builder's private part.
class TqxQueryBuilderPrivate {
 public:
  explicit TqxQueryBuilderPrivate(TqxQueryBuilder* Builder);
  static TqxQueryBuilderPrivate* Of(TqxQueryBuilder* Builder) { return Builder->d_.get(); }

  // Runs a model operation from a screen event; a failure is reported, never thrown.
  static bool Run(TqxQueryBuilder* Builder, const std::function<void()>& Operation);
  void ReportError(const QString& Message);
  // After every SQL rewrite: ticks, tab captions, pages.
  void ModelChanged();
  const QPixmap& UserBackground();

  TqxQueryBuilder* Q;
  TqxQueryBuiderPageControl* Pages = nullptr;
  std::unique_ptr<TqxDesignerControlFactory> Factory;
  TqxSQLBuilderPlainText Writer;
  QPixmap BkImageCache;
  bool BkImageCacheValid = false;
  // Shows a menu and returns the chosen action; replaceable (tests choose items).
  std::function<QAction*(QMenu& Menu, const QPoint& GlobalPos)> MenuExecutor;
  // The builder's link painter; null lets the shared Access-style painter draw.
  std::unique_ptr<TqxQueryBuilderLinkPainter> LinkPainter;
  // The Add object dialog while it is open (option changes reach it).
  QPointer<TqxAddObjectForm> AddObjectForm;

  // ---- history and layout (history.cpp)
  // The model reported a change: a step unless a load or a restore is running.
  void ModelReported();
  // A load message was handled: the layout waiting for it (or the one the diagram had)
  // is applied, then the load is a
  // step ("Edit SQL") or, after OpenQuery, the start of a new history.
  void LoadHandled();
  // Pushes a step from the last recorded state to the current one when they differ; an
  // empty Name is derived from what changed.
  void RecordStep(const QString& Name = QString());
  // Brings back a recorded state without recording anything.
  void Restore(const TqxDiagramState& State);
  TqxDiagramState Capture() const;
  QJsonObject CaptureLayout() const;
  // Moves the boxes the layout names; returns how many it found.
  int ApplyLayout(const QJsonObject& Layout);
  // The canvas of the operand being edited; null when there is none.
  QWidget* CurrentCanvas() const;

  QUndoStack* Undo = nullptr;
  TqxDiagramState Recorded;
  int Restoring = 0;
  bool InLoad = false;
  bool HasPendingLayout = false;
  QJsonObject PendingLayout;
  // The layout before a load of new text, applied to the boxes that remain.
  QJsonObject KeptLayout;
  bool ResetHistoryAfterLoad = false;
  // While the diagram is drawn for export, boxes paint their captions directly (no
  // cached bitmap) so that texts stay texts and scale sharply.
  bool Exporting = false;
};

}  // namespace qorvex
