// The select-list grid of a union operand and its in-place cell editor.
#include "designer/select_list_control.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "qorvex/ast/expressions.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/select_list.h"

namespace qorvex {

namespace {

using Grid = TqxQueryBuilderSelectListControl;

QString FromStd(const std::string& Text) {
  return QString::fromStdString(Text);
}

// Whether a row's expression is itself a condition, so that "=TRUE" and "=FALSE" make
// sense in its criteria cells.
bool TakesBooleanCondition(const TSQLExpressionItem* Expression) {
  while (const auto* brackets = dynamic_cast<const TSQLExpressionBrackets*>(Expression)) {
    if (brackets->GetInner() == nullptr)
      break;
    Expression = brackets->GetInner();
  }
  if (Expression == nullptr)
    return false;
  if (Expression->IsLogical())
    return true;
  const auto* binary = dynamic_cast<const TSQLExpressionOperatorBinary*>(Expression);
  if (binary == nullptr)
    return false;
  static const char* const kComparisons[] = {"=", "<>", "!=", "<", ">", "<=", ">="};
  const std::string op = binary->GetOperatorText();
  return std::any_of(std::begin(kComparisons), std::end(kComparisons),
                     [&](const char* Known) { return op == Known; });
}

// The root node under which a cell's sub-queries are looked for; null when none.
const TastNode* CellRoot(const TqxSelectItem* Item, int Col) {
  if (Item == nullptr)
    return nullptr;
  if (Col == Grid::kColExpression)
    return Item->GetExpression();
  if (Col >= Grid::kColCriteria)
    return Item->GetConditionNode(Col - Grid::kColCriteria);
  return nullptr;
}

// Draws the row markers of the fixed column: a button face, and a small arrow on the
// current row.
class TqxRowMarkerHeader : public QHeaderView {
 public:
  explicit TqxRowMarkerHeader(Grid* Owner) : QHeaderView(Qt::Vertical, Owner), Grid_(Owner) {}
  QSize sizeHint() const override {
    return QSize(Grid::kFixedColWidth, QHeaderView::sizeHint().height());
  }

 protected:
  void paintSection(QPainter* Painter, const QRect& Rect, int Logical) const override {
    Painter->save();
    const QPalette& pal = palette();
    const bool marked = Grid_->GetMarkedRow() == Logical + 1;
    Painter->fillRect(Rect, pal.color(marked ? QPalette::Highlight : QPalette::Button));
    Painter->setPen(pal.color(QPalette::Mid));
    Painter->drawLine(Rect.topRight(), Rect.bottomRight());
    Painter->drawLine(Rect.bottomLeft(), Rect.bottomRight());
    if (Grid_->currentIndex().isValid() && Grid_->currentIndex().row() == Logical) {
      const QPoint c = Rect.center();
      const QPoint arrow[3] = {QPoint(c.x() - 2, c.y() - 4), QPoint(c.x() + 2, c.y()),
                               QPoint(c.x() - 2, c.y() + 4)};
      Painter->setRenderHint(QPainter::Antialiasing, false);
      Painter->setPen(Qt::NoPen);
      Painter->setBrush(pal.color(marked ? QPalette::HighlightedText : QPalette::ButtonText));
      Painter->drawPolygon(arrow, 3);
    }
    Painter->restore();
  }

 private:
  Grid* Grid_;
};

// The header row: captions in the button face, 18 pixels high.
class TqxColumnHeader : public QHeaderView {
 public:
  explicit TqxColumnHeader(QWidget* Parent) : QHeaderView(Qt::Horizontal, Parent) {}
  QSize sizeHint() const override {
    return QSize(QHeaderView::sizeHint().width(), Grid::kHeaderRowHeight);
  }
};

// Paints the cells: the "Output" column as check boxes, the rest as text.
class TqxSelectListCellDelegate : public QStyledItemDelegate {
 public:
  explicit TqxSelectListCellDelegate(Grid* Owner) : QStyledItemDelegate(Owner), Grid_(Owner) {}
  void paint(QPainter* Painter, const QStyleOptionViewItem& Option,
             const QModelIndex& Index) const override {
    if (Index.column() + 1 == Grid::kColOutput) {
      Grid_->DrawCell(*Painter, Option, Index.column() + 1, Index.row() + 1);
      return;
    }
    QStyleOptionViewItem option = Option;
    option.state &= ~QStyle::State_HasFocus;
    if (Grid_->GetMarkedRow() == Index.row() + 1)
      option.state |= QStyle::State_Selected;
    QStyledItemDelegate::paint(Painter, option, Index);
    if (Option.state & QStyle::State_HasFocus) {
      Painter->save();
      Painter->setPen(QPen(Option.palette.color(QPalette::Highlight), 1, Qt::DotLine));
      Painter->drawRect(Option.rect.adjusted(0, 0, -1, -1));
      Painter->restore();
    }
  }

 private:
  Grid* Grid_;
};

}  // namespace

// ---------------------------------------------------------------------------------------
// TqxSelectListGridModel

int TqxSelectListGridModel::rowCount(const QModelIndex& Parent) const {
  return Parent.isValid() ? 0 : static_cast<int>(Rows_.size());
}

int TqxSelectListGridModel::columnCount(const QModelIndex& Parent) const {
  return Parent.isValid() ? 0 : Columns_;
}

QVariant TqxSelectListGridModel::data(const QModelIndex& Index, int Role) const {
  if (!Index.isValid() || Index.column() + 1 == Grid::kColOutput)
    return {};
  if (Role == Qt::DisplayRole || Role == Qt::EditRole || Role == Qt::ToolTipRole) {
    const QString& text = Cell(Index.column(), Index.row());
    if (Role == Qt::ToolTipRole && text.isEmpty())
      return {};
    return text;
  }
  return {};
}

QVariant TqxSelectListGridModel::headerData(int Section, Qt::Orientation Orientation,
                                            int Role) const {
  if (Role != Qt::DisplayRole || Orientation != Qt::Horizontal)
    return {};
  static const char* const kCaptions[] = {"Output",     "Expression", "Alias",   "Sort Type",
                                          "Sort Order", "Group By",   "Criteria"};
  if (Section >= 0 && Section < 7)
    return QString::fromLatin1(kCaptions[Section]);
  return QStringLiteral("Or...");
}

const QString& TqxSelectListGridModel::Cell(int Column, int Row) const {
  static const QString kEmpty;
  if (Row < 0 || Row >= static_cast<int>(Rows_.size()) || Column < 0 ||
      Column >= static_cast<int>(Rows_[static_cast<std::size_t>(Row)].size()))
    return kEmpty;
  return Rows_[static_cast<std::size_t>(Row)][static_cast<std::size_t>(Column)];
}

void TqxSelectListGridModel::AddRow() {
  const int row = static_cast<int>(Rows_.size());
  beginInsertRows(QModelIndex(), row, row);
  Rows_.emplace_back(static_cast<std::size_t>(Columns_));
  endInsertRows();
}

void TqxSelectListGridModel::Clear() {
  if (Rows_.empty())
    return;
  beginRemoveRows(QModelIndex(), 0, static_cast<int>(Rows_.size()) - 1);
  Rows_.clear();
  endRemoveRows();
}

void TqxSelectListGridModel::Refresh(const TqxSelectList* List) {
  const int count = List != nullptr ? List->GetCount() : 0;
  // Four criteria columns at least; more when a row holds more OR groups (loaded SQL).
  int columns = Grid::kColCriteria + 3;
  for (int i = 0; i < count; ++i)
    columns = std::max(columns, Grid::kColCriteria - 1 + List->GetItems(i)->GetConditionsCount());
  if (columns > Columns_) {
    beginInsertColumns(QModelIndex(), Columns_, columns - 1);
    Columns_ = columns;
    for (auto& row : Rows_)
      row.resize(static_cast<std::size_t>(Columns_));
    endInsertColumns();
  } else if (columns < Columns_) {
    beginRemoveColumns(QModelIndex(), columns, Columns_ - 1);
    Columns_ = columns;
    for (auto& row : Rows_)
      row.resize(static_cast<std::size_t>(Columns_));
    endRemoveColumns();
  }
  const int old = static_cast<int>(Rows_.size());
  if (count > old) {
    beginInsertRows(QModelIndex(), old, count - 1);
    Rows_.resize(static_cast<std::size_t>(count), std::vector<QString>(Columns_));
    endInsertRows();
  } else if (count < old) {
    beginRemoveRows(QModelIndex(), count, old - 1);
    Rows_.resize(static_cast<std::size_t>(count));
    endRemoveRows();
  }
  int firstChanged = -1;
  int lastChanged = -1;
  for (int i = 0; i < count; ++i) {
    const TqxSelectItem* item = List->GetItems(i);
    std::vector<QString> cells(static_cast<std::size_t>(Columns_));
    cells[0] = item->GetSelect()
                   ? QStringLiteral("1")
                   : (item->IsCanSelect() ? QStringLiteral("0") : QStringLiteral("-1"));
    if (!item->IsEmpty()) {
      cells[1] = FromStd(item->GetExpressionText());
      cells[2] = FromStd(item->GetAlias());
      cells[3] = FromStd(item->GetSortTypeName());
      cells[4] = FromStd(item->GetSortOrderName());
      cells[5] = FromStd(item->GetGroupByTypeName());
      for (int c = 0; c < item->GetConditionsCount(); ++c)
        cells[static_cast<std::size_t>(Grid::kColCriteria - 1 + c)] =
            FromStd(item->GetCondition(c));
    }
    auto& row = Rows_[static_cast<std::size_t>(i)];
    if (row != cells) {
      row = std::move(cells);
      if (firstChanged < 0)
        firstChanged = i;
      lastChanged = i;
    }
  }
  if (firstChanged >= 0)
    emit dataChanged(index(firstChanged, 0), index(lastChanged, Columns_ - 1));
}

// ---------------------------------------------------------------------------------------
// TqxQueryBuilderSelectListInplaceEdit

TqxQueryBuilderSelectListInplaceEdit::TqxQueryBuilderSelectListInplaceEdit(Grid* Owner)
    : QWidget(Owner->viewport()), Grid_(Owner) {
  setAutoFillBackground(true);
  Edit_ = new QLineEdit(this);
  Edit_->setFrame(false);
  Edit_->setObjectName(QStringLiteral("qorvexGridEdit"));
  Edit_->installEventFilter(this);
  Button_ = new QToolButton(this);
  Button_->setFocusPolicy(Qt::NoFocus);
  Button_->setAutoRaise(false);
  connect(Button_, &QToolButton::clicked, this,
          &TqxQueryBuilderSelectListInplaceEdit::ButtonClicked);
  List_ = new QListWidget(this);
  List_->setWindowFlags(Qt::Popup);
  List_->setObjectName(QStringLiteral("qorvexGridPickList"));
  List_->installEventFilter(this);
  connect(List_, &QListWidget::itemClicked, this, [this](QListWidgetItem*) { CloseUp(true); });
  setFocusProxy(Edit_);
  hide();
}

void TqxQueryBuilderSelectListInplaceEdit::Start(int Col, int Row, const QString& Text,
                                                 TqxGridEditStyle Style) {
  Col_ = Col;
  Row_ = Row;
  Original_ = Grid_->Cells(Col, Row);
  SetEditStyle(Style);
  Edit_->setText(Text);
}

void TqxQueryBuilderSelectListInplaceEdit::SetEditStyle(TqxGridEditStyle Style) {
  Style_ = Style;
  Button_->setVisible(Style != TqxGridEditStyle::esSimple);
  if (Style == TqxGridEditStyle::esPickList) {
    Button_->setText(QString());
    Button_->setArrowType(Qt::DownArrow);
  } else {
    Button_->setArrowType(Qt::NoArrow);
    Button_->setText(QStringLiteral("..."));
  }
  resizeEvent(nullptr);
}

QString TqxQueryBuilderSelectListInplaceEdit::Text() const {
  return Edit_->text();
}

void TqxQueryBuilderSelectListInplaceEdit::SetText(const QString& Text) {
  Edit_->setText(Text);
}

void TqxQueryBuilderSelectListInplaceEdit::resizeEvent(QResizeEvent* /*Event*/) {
  const int h = height();
  const int button = Style_ == TqxGridEditStyle::esSimple ? 0 : std::min(h + 2, 18);
  Edit_->setGeometry(0, 0, std::max(0, width() - button), h);
  Button_->setGeometry(width() - button, 0, button, h);
}

QStringList TqxQueryBuilderSelectListInplaceEdit::DoGetPickListItems() const {
  QStringList items;
  const TqxSelectItem* item = Grid_->ItemAt(Row_);
  const TqxSelectList* list = Grid_->GetSelectList();
  if (item == nullptr || list == nullptr)
    return items;
  if (Col_ == Grid::kColExpression) {
    if (TqxUnionSubQuery* operand = list->GetUnionSubQuery()) {
      for (TqxDatasource* ds : operand->GetDatasources()) {
        const QString name = FromStd(ds->GetQualifier());
        items << name + QStringLiteral(".*");
        for (const std::string& field : ds->GetFields())
          items << name + QLatin1Char('.') + FromStd(field);
      }
    }
  } else if (Col_ == Grid::kColSortType) {
    std::vector<std::string> names;
    TqxSelectItem::GetSortTypeNames(names);
    for (const std::string& name : names)
      items << FromStd(name);
  } else if (Col_ == Grid::kColSortOrder) {
    const int sorted = list->GetSortedCount() + (item->GetSortOrder() == 0 ? 1 : 0);
    for (int i = 1; i <= sorted; ++i)
      items << QString::number(i);
  } else if (Col_ == Grid::kColGroupBy) {
    std::vector<std::string> names;
    item->GetGroupByNames(names);
    for (const std::string& name : names)
      items << FromStd(name);
  } else if (Col_ >= Grid::kColCriteria) {
    items << QStringLiteral("=TRUE") << QStringLiteral("=FALSE");
  }
  return items;
}

bool TqxQueryBuilderSelectListInplaceEdit::IsDroppedDown() const {
  return List_->isVisible();
}

void TqxQueryBuilderSelectListInplaceEdit::DropDown() {
  if (Style_ != TqxGridEditStyle::esPickList || IsDroppedDown())
    return;
  const QStringList items = DoGetPickListItems();
  if (items.isEmpty())
    return;
  List_->clear();
  List_->addItems(items);
  const QList<QListWidgetItem*> same = List_->findItems(Text(), Qt::MatchFixedString);
  List_->setCurrentRow(same.isEmpty() ? 0 : List_->row(same.front()));
  const int rows = std::min(static_cast<int>(items.size()), 8);
  const int rowHeight = std::max(List_->sizeHintForRow(0), fontMetrics().height());
  List_->resize(std::max(width(), List_->sizeHintForColumn(0) + 24),
                rows * rowHeight + 2 * List_->frameWidth());
  List_->move(mapToGlobal(QPoint(0, height())));
  List_->show();
  List_->setFocus(Qt::PopupFocusReason);
}

void TqxQueryBuilderSelectListInplaceEdit::CloseUp(bool Accept) {
  if (!IsDroppedDown())
    return;
  QListWidgetItem* chosen = List_->currentItem();
  List_->hide();
  Edit_->setFocus(Qt::PopupFocusReason);
  if (Accept && chosen != nullptr) {
    Edit_->setText(chosen->text());
    Grid_->CommitEdit();
  }
}

void TqxQueryBuilderSelectListInplaceEdit::DoEditButtonClick() {
  TqxSelectItem* item = Grid_->ItemAt(Row_);
  const TastNode* root = CellRoot(item, Col_);
  if (root == nullptr)
    return;
  const QPoint below = Button_->mapToGlobal(QPoint(0, Button_->height()));
  TqxQueryBuilder* builder = Grid_->GetBuilder();
  // The menu or the tab change may free this editor's grid: nothing of it follows.
  TqxQueryBuilderPrivate::Run(builder, [&] {
    item->ShowSubQueriesPopup(root, TqxPoint{below.x(), below.y()});
  });
}

void TqxQueryBuilderSelectListInplaceEdit::ButtonClicked() {
  if (Style_ == TqxGridEditStyle::esPickList) {
    if (IsDroppedDown())
      CloseUp(false);
    else
      DropDown();
  } else if (Style_ == TqxGridEditStyle::esEllipsis) {
    DoEditButtonClick();
  }
}

bool TqxQueryBuilderSelectListInplaceEdit::eventFilter(QObject* Watched, QEvent* Event) {
  if (Watched == Edit_) {
    if (Event->type() == QEvent::KeyPress)
      return EditorKey(static_cast<QKeyEvent*>(Event));
    if (Event->type() == QEvent::FocusOut) {
      const auto* focus = static_cast<QFocusEvent*>(Event);
      // Leaving for another widget commits, as a spreadsheet does; the pick list, a
      // message box or a menu are not a leave.
      if (focus->reason() != Qt::PopupFocusReason &&
          focus->reason() != Qt::ActiveWindowFocusReason && !IsDroppedDown() && isVisible()) {
        QWidget* now = QApplication::focusWidget();
        if (now != Grid_ && now != Grid_->viewport())
          Grid_->CommitEdit();
      }
    }
  } else if (Watched == List_ && Event->type() == QEvent::KeyPress) {
    return ListKey(static_cast<QKeyEvent*>(Event));
  }
  return QWidget::eventFilter(Watched, Event);
}

bool TqxQueryBuilderSelectListInplaceEdit::ListKey(QKeyEvent* Event) {
  switch (Event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      CloseUp(true);
      return true;
    case Qt::Key_Escape:
    case Qt::Key_F4:
      CloseUp(false);
      return true;
    case Qt::Key_Up:
      if (Event->modifiers() & Qt::AltModifier) {
        CloseUp(true);
        return true;
      }
      return false;
    default:
      return false;
  }
}

bool TqxQueryBuilderSelectListInplaceEdit::EditorKey(QKeyEvent* Event) {
  const bool alt = Event->modifiers() & Qt::AltModifier;
  switch (Event->key()) {
    case Qt::Key_Escape:
      Grid_->CancelEdit();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      Grid_->CommitEdit();
      return true;
    case Qt::Key_F4:
      DropDown();
      return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Up:
    case Qt::Key_Down: {
      if (alt && (Event->key() == Qt::Key_Down || Event->key() == Qt::Key_Up)) {
        DropDown();
        return true;
      }
      // Commit, then move as the grid would.
      if (!Grid_->CommitEdit())
        return true;
      QKeyEvent copy(QEvent::KeyPress, Event->key(), Event->modifiers(), Event->text());
      QApplication::sendEvent(Grid_, &copy);
      return true;
    }
    default:
      return false;
  }
}

// ---------------------------------------------------------------------------------------
// TqxQueryBuilderSelectListControl

TqxQueryBuilderSelectListControl::TqxQueryBuilderSelectListControl(TqxQueryBuilder* Builder,
                                                                   TqxUnionSubQueryTabSheet* Page,
                                                                   TqxSelectList* List)
    : QTableView(Page->GetBottomPanel()), Builder_(Builder), Page_(Page), List_(List) {
  setObjectName(QStringLiteral("qorvexSelectListGrid"));
  setFrameShape(QFrame::NoFrame);
  setVerticalHeader(new TqxRowMarkerHeader(this));
  setHorizontalHeader(new TqxColumnHeader(this));
  Model_ = new TqxSelectListGridModel(this);
  setModel(Model_);
  setItemDelegate(new TqxSelectListCellDelegate(this));
  setSelectionMode(QAbstractItemView::SingleSelection);
  setSelectionBehavior(QAbstractItemView::SelectItems);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setCornerButtonEnabled(false);
  setTabKeyNavigation(true);
  setWordWrap(false);
  setTextElideMode(Qt::ElideRight);
  setAlternatingRowColors(false);

  QHeaderView* rows = verticalHeader();
  rows->setSectionResizeMode(QHeaderView::Fixed);
  rows->setMinimumSectionSize(kDefaultRowHeight);
  rows->setDefaultSectionSize(std::max(kDefaultRowHeight, fontMetrics().height() + 2));
  rows->setFixedWidth(kFixedColWidth);
  rows->setSectionsMovable(true);
  rows->setSectionsClickable(true);
  rows->setHighlightSections(false);
  rows->viewport()->installEventFilter(this);
  connect(rows, &QHeaderView::sectionMoved, this, &Grid::HeaderSectionMoved);
  // A press on a row marker chooses the whole row (Delete then removes it).
  connect(rows, &QHeaderView::sectionPressed, this, [this](int Logical) { MarkRow(Logical + 1); });

  QHeaderView* cols = horizontalHeader();
  cols->setFixedHeight(kHeaderRowHeight);
  cols->setHighlightSections(false);
  cols->setSectionsClickable(false);
  cols->setDefaultSectionSize(kDefaultColWidth);
  cols->setMinimumSectionSize(8);
  cols->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  connect(cols, &QHeaderView::sectionResized, this, [this] { UpdateEditorState(); });
  connect(Model_, &QAbstractItemModel::columnsInserted, this, [this] { ApplyColumnLayout(); });

  Editor_ = new TqxQueryBuilderSelectListInplaceEdit(this);

  if (QWidget* panel = Page->GetBottomPanel()) {
    auto* layout = panel->layout();
    if (layout == nullptr) {
      layout = new QVBoxLayout(panel);
      layout->setContentsMargins(0, 0, 0, 0);
      layout->setSpacing(0);
    }
    layout->addWidget(this);
  }
  Refresh();
  ApplyColumnLayout();
  setCurrentIndex(Model_->index(0, kColExpression - 1));
  show();
}

TqxQueryBuilderSelectListControl::~TqxQueryBuilderSelectListControl() {
  List_ = nullptr;
}

void TqxQueryBuilderSelectListControl::ApplyColumnLayout() {
  // The widths are set as the grid has always set them: Output, Expression and Alias,
  // then Sort Type once the headers are written; the rest keep the default width.
  QHeaderView* cols = horizontalHeader();
  cols->resizeSection(kColOutput - 1, 40);
  cols->resizeSection(kColExpression - 1, 100);
  cols->resizeSection(kColAlias - 1, 70);
  cols->resizeSection(kColSortType - 1, 90);
}

void TqxQueryBuilderSelectListControl::ControlReleased() {
  List_ = nullptr;
  EditItem_ = nullptr;
  Editor_->hide();
  hide();
  deleteLater();
}

TqxQueryBuilderSelectListControl* TqxQueryBuilderSelectListControl::OfPage(const QWidget* Page) {
  return Page != nullptr ? Page->findChild<TqxQueryBuilderSelectListControl*>() : nullptr;
}

TqxQueryBuilderWorkArea* TqxQueryBuilderSelectListControl::GetWorkArea() const {
  return Page_ != nullptr ? Page_->GetWorkArea() : nullptr;
}

bool TqxQueryBuilderSelectListControl::Loading() const {
  return Builder_ == nullptr || Builder_->IsSQLLoading() || Builder_->IsDestroying();
}

TqxSelectItem* TqxQueryBuilderSelectListControl::ItemAt(int Row) const {
  if (List_ == nullptr || Row < 1 || Row > List_->GetCount())
    return nullptr;
  return List_->GetItems(Row - 1);
}

void TqxQueryBuilderSelectListControl::EnsureFresh() const {
  if (Dirty_)
    const_cast<Grid*>(this)->Refresh();
}

int TqxQueryBuilderSelectListControl::ColCount() const {
  EnsureFresh();
  return Model_->columnCount() + 1;
}

int TqxQueryBuilderSelectListControl::RowCount() const {
  EnsureFresh();
  return Model_->rowCount() + 1;
}

QString TqxQueryBuilderSelectListControl::Cells(int Col, int Row) const {
  EnsureFresh();
  if (Row == 0)
    return Col >= 1 ? Model_->headerData(Col - 1, Qt::Horizontal, Qt::DisplayRole).toString()
                    : QString();
  if (Col < 1)
    return QString();
  return Model_->Cell(Col - 1, Row - 1);
}

int TqxQueryBuilderSelectListControl::ColWidths(int Col) const {
  if (Col == 0)
    return verticalHeader()->width();
  return horizontalHeader()->sectionSize(Col - 1);
}

int TqxQueryBuilderSelectListControl::RowHeights(int Row) const {
  if (Row == 0)
    return horizontalHeader()->height();
  return verticalHeader()->sectionSize(Row - 1);
}

QRect TqxQueryBuilderSelectListControl::CellRect(int Col, int Row) const {
  return visualRect(Model_->index(Row - 1, Col - 1));
}

int TqxQueryBuilderSelectListControl::Col() const {
  return currentIndex().isValid() ? currentIndex().column() + 1 : -1;
}

int TqxQueryBuilderSelectListControl::Row() const {
  return currentIndex().isValid() ? currentIndex().row() + 1 : -1;
}

void TqxQueryBuilderSelectListControl::SetCurrentCell(int Col, int Row) {
  EnsureFresh();
  const QModelIndex index = Model_->index(Row - 1, Col - 1);
  if (index.isValid())
    setCurrentIndex(index);
}

// ---- rules of editing

bool TqxQueryBuilderSelectListControl::CanEditCell(int Col, int Row) const {
  const TqxSelectItem* item = ItemAt(Row);
  if (item == nullptr || Col <= kColOutput || Col >= ColCount())
    return false;
  switch (Col) {
    case kColExpression:
      return true;
    case kColAlias:
      return item->IsSupportsAlias();
    case kColSortType:
    case kColSortOrder:
      return item->IsCanSort();
    case kColGroupBy:
      return !item->IsEmpty();
    default:
      return !item->IsEmpty() && item->GetExpressionItem() != nullptr;
  }
}

TqxGridEditStyle TqxQueryBuilderSelectListControl::GetEditStyle(int Col, int Row) const {
  const TqxSelectItem* item = ItemAt(Row);
  if (Col == kColOutput || Col == kColAlias || item == nullptr)
    return TqxGridEditStyle::esSimple;
  if (Col == kColExpression) {
    const TastNode* expression = item->GetExpression();
    return expression != nullptr && item->GetSubqueriesByRootNodeCount(expression) > 0
               ? TqxGridEditStyle::esEllipsis
               : TqxGridEditStyle::esPickList;
  }
  if (Col < kColCriteria)
    return TqxGridEditStyle::esPickList;
  const TastNode* condition = item->GetConditionNode(Col - kColCriteria);
  if (condition != nullptr && item->GetSubqueriesByRootNodeCount(condition) > 0)
    return TqxGridEditStyle::esEllipsis;
  return TakesBooleanCondition(item->GetExpressionItem()) ? TqxGridEditStyle::esPickList
                                                          : TqxGridEditStyle::esSimple;
}

bool TqxQueryBuilderSelectListControl::SetEditText(int Col, int Row, const QString& Text) {
  TqxSelectItem* item = ItemAt(Row);
  if (item == nullptr || Text == Cells(Col, Row) || Loading())
    return true;
  const std::string text = Text.toStdString();
  return TqxQueryBuilderPrivate::Run(Builder_, [&] {
    switch (Col) {
      case kColExpression:
        item->SetExpression(text);
        break;
      case kColAlias:
        item->SetAlias(text);
        break;
      case kColSortType:
        item->SetSortTypeName(text);
        break;
      case kColSortOrder:
        item->SetSortOrderName(text);
        break;
      case kColGroupBy:
        item->SetGroupByTypeName(text);
        break;
      default:
        if (Col >= kColCriteria)
          item->SetCondition(Col - kColCriteria, text);
        break;
    }
  });
}

void TqxQueryBuilderSelectListControl::ToggleOutput(int Row) {
  TqxSelectItem* item = ItemAt(Row);
  if (item == nullptr || item->IsEmpty() || Loading())
    return;
  const bool value = !item->GetSelect();
  // A row that cannot be output is refused by the model, which says why.
  TqxQueryBuilderPrivate::Run(Builder_, [&] { item->SetSelect(value); });
  if (!Editor_->isHidden() && EditItem_ == item)
    CommitEdit();
  else
    HideEditor();
  UpdateEditorState();
}

void TqxQueryBuilderSelectListControl::RowMoved(int From, int To) {
  if (List_ == nullptr || Loading() || From == To)
    return;
  if (ItemAt(From) == nullptr || ItemAt(To) == nullptr)
    return;
  if (IsEditing())
    CommitEdit();
  const int col = Col();
  TqxQueryBuilderPrivate::Run(Builder_, [&] { List_->Move(From - 1, To - 1); });
  Refresh();
  SetCurrentCell(col > 0 ? col : kColExpression, To);
}

void TqxQueryBuilderSelectListControl::HeaderSectionMoved(int /*Logical*/, int OldVisual,
                                                          int NewVisual) {
  if (Moving_ > 0)
    return;
  // The header only reports the drag: the rows stay in model order and the model moves
  // the item.
  ++Moving_;
  verticalHeader()->moveSection(NewVisual, OldVisual);
  --Moving_;
  RowMoved(OldVisual + 1, NewVisual + 1);
}

void TqxQueryBuilderSelectListControl::AddRow() {
  Model_->AddRow();
}

void TqxQueryBuilderSelectListControl::Clear() {
  Model_->Clear();
}

void TqxQueryBuilderSelectListControl::Refresh() {
  if (List_ == nullptr)
    return;
  if (!isVisible() && Model_->rowCount() > 0) {
    Dirty_ = true;
    return;
  }
  Dirty_ = false;
  Model_->Refresh(List_);
  if (!currentIndex().isValid() && Model_->rowCount() > 0)
    setCurrentIndex(Model_->index(0, kColExpression - 1));
  UpdateEditorState();
  verticalHeader()->viewport()->update();
}

void TqxQueryBuilderSelectListControl::showEvent(QShowEvent* Event) {
  QTableView::showEvent(Event);
  if (Dirty_)
    Refresh();
}

// ---- the editor

bool TqxQueryBuilderSelectListControl::IsEditing() const {
  return !Editor_->isHidden();
}

bool TqxQueryBuilderSelectListControl::ShowEditor(const QString* Initial) {
  EnsureFresh();
  const int col = Col();
  const int row = Row();
  if (Loading() || !CanEditCell(col, row))
    return false;
  EditItem_ = ItemAt(row);
  Editor_->Start(col, row, Initial != nullptr ? *Initial : Cells(col, row), GetEditStyle(col, row));
  Editor_->setGeometry(CellRect(col, row));
  Editor_->show();
  Editor_->raise();
  Editor_->LineEdit()->setFocus(Qt::OtherFocusReason);
  if (Initial == nullptr)
    Editor_->LineEdit()->selectAll();
  else
    Editor_->LineEdit()->end(false);
  return true;
}

bool TqxQueryBuilderSelectListControl::CommitEdit(bool Hide) {
  if (!!Editor_->isHidden() || Committing_ > 0)
    return true;
  ++Committing_;
  const int col = Editor_->Col();
  const int row = Editor_->Row();
  const QString text = Editor_->Text();
  // The editor leaves first: the change report refreshes the grid.
  HideEditor();
  const bool done = SetEditText(col, row, text);
  --Committing_;
  if (!done && ItemAt(row) != nullptr) {
    // Refused: the typed text stays in the editor to be corrected or cancelled.
    EditItem_ = ItemAt(row);
    Editor_->setGeometry(CellRect(col, row));
    Editor_->show();
    Editor_->LineEdit()->setFocus(Qt::OtherFocusReason);
    return false;
  }
  if (!Hide && CanEditCell(col, row)) {
    ShowEditor();
    return true;
  }
  return done;
}

void TqxQueryBuilderSelectListControl::CancelEdit() {
  if (!!Editor_->isHidden())
    return;
  Editor_->CloseUp(false);
  Editor_->SetText(Editor_->OriginalText());
  HideEditor();
}

void TqxQueryBuilderSelectListControl::HideEditor() {
  // The grid takes the keyboard before the editor goes: a focused widget that is hidden
  // passes the focus on, and the view would take that as a Tab to the next cell.
  Editor_->CloseUp(false);
  if (Editor_->isAncestorOf(QApplication::focusWidget()) || Editor_->LineEdit()->hasFocus())
    setFocus(Qt::OtherFocusReason);
  Editor_->hide();
  EditItem_ = nullptr;
}

void TqxQueryBuilderSelectListControl::UpdateEditorState() {
  if (!!Editor_->isHidden() || Committing_ > 0)
    return;
  // The editor follows its item when rows come and go.
  int row = Editor_->Row();
  if (EditItem_ != nullptr && List_ != nullptr) {
    const int index = List_->IndexOf(EditItem_);
    row = index >= 0 ? index + 1 : -1;
  }
  if (row < 0 || !CanEditCell(Editor_->Col(), row)) {
    HideEditor();
    return;
  }
  if (row != Editor_->Row()) {
    Editor_->SetRow(row);
    const QModelIndex index = Model_->index(row - 1, Editor_->Col() - 1);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
  }
  Editor_->SetEditStyle(GetEditStyle(Editor_->Col(), row));
  Editor_->setGeometry(CellRect(Editor_->Col(), row));
}

void TqxQueryBuilderSelectListControl::scrollContentsBy(int Dx, int Dy) {
  QTableView::scrollContentsBy(Dx, Dy);
  if (Editor_ != nullptr)
    UpdateEditorState();
}

void TqxQueryBuilderSelectListControl::currentChanged(const QModelIndex& Current,
                                                      const QModelIndex& Previous) {
  QTableView::currentChanged(Current, Previous);
  if (MarkedRow_ > 0) {
    MarkedRow_ = 0;
    viewport()->update();
  }
  // Moving to another cell commits the edit in progress.
  if (Editor_ != nullptr && !Editor_->isHidden() && Committing_ == 0 &&
      (Current.row() + 1 != Editor_->Row() || Current.column() + 1 != Editor_->Col()))
    CommitEdit();
  verticalHeader()->viewport()->update();
}

// ---- check boxes

void TqxQueryBuilderSelectListControl::SetFlatChecks(bool Value) {
  if (Value == FlatChecks_)
    return;
  FlatChecks_ = Value;
  viewport()->update();
}

void TqxQueryBuilderSelectListControl::DrawCheck(QPainter& Painter, const QRect& Rect,
                                                 const QString& State) const {
  const int size = std::min({13, Rect.height() - 2, Rect.width() - 2});
  if (size < 5)
    return;
  const QRect box(Rect.center().x() - size / 2, Rect.center().y() - size / 2, size, size);
  const bool checked = State == QLatin1String("1");
  const bool greyed = State == QLatin1String("-1");
  const QPalette& pal = palette();
  Painter.save();
  Painter.setRenderHint(QPainter::Antialiasing, false);
  Painter.fillRect(box, greyed ? pal.color(QPalette::Button) : pal.color(QPalette::Base));
  if (FlatChecks_) {
    Painter.setPen(greyed ? pal.color(QPalette::Mid) : pal.color(QPalette::Text));
    Painter.drawRect(box.adjusted(0, 0, -1, -1));
  } else {
    // A sunken 3-D frame: shadow above and left, light below and right.
    Painter.setPen(pal.color(QPalette::Dark));
    Painter.drawLine(box.topLeft(), box.topRight());
    Painter.drawLine(box.topLeft(), box.bottomLeft());
    Painter.setPen(pal.color(QPalette::Shadow));
    Painter.drawLine(box.topLeft() + QPoint(1, 1), box.topRight() + QPoint(-1, 1));
    Painter.drawLine(box.topLeft() + QPoint(1, 1), box.bottomLeft() + QPoint(1, -1));
    Painter.setPen(pal.color(QPalette::Light));
    Painter.drawLine(box.bottomLeft(), box.bottomRight());
    Painter.drawLine(box.topRight(), box.bottomRight());
    Painter.setPen(pal.color(QPalette::Midlight));
    Painter.drawLine(box.bottomLeft() + QPoint(1, -1), box.bottomRight() + QPoint(-1, -1));
    Painter.drawLine(box.topRight() + QPoint(-1, 1), box.bottomRight() + QPoint(-1, -1));
  }
  if (checked) {
    const QRect in = box.adjusted(3, 3, -3, -3);
    QPen pen(pal.color(QPalette::Text), 2);
    pen.setCapStyle(Qt::SquareCap);
    Painter.setPen(pen);
    const QPoint a(in.left(), in.center().y());
    const QPoint b(in.left() + in.width() / 3, in.bottom());
    const QPoint c(in.right(), in.top());
    Painter.drawLine(a, b);
    Painter.drawLine(b, c);
  }
  Painter.restore();
}

void TqxQueryBuilderSelectListControl::DrawCell(QPainter& Painter,
                                                const QStyleOptionViewItem& Option, int Col,
                                                int Row) const {
  if ((Option.state & QStyle::State_Selected) || MarkedRow_ == Row)
    Painter.fillRect(Option.rect, Option.palette.color(QPalette::Highlight).lighter(170));
  if (Col == kColOutput)
    DrawCheck(Painter, Option.rect, Cells(Col, Row));
  if (Option.state & QStyle::State_HasFocus) {
    Painter.save();
    Painter.setPen(QPen(Option.palette.color(QPalette::Highlight), 1, Qt::DotLine));
    Painter.drawRect(Option.rect.adjusted(0, 0, -1, -1));
    Painter.restore();
  }
}

// ---- menus

void TqxQueryBuilderSelectListControl::ShowRowMenu(int Row, const QPoint& GlobalPos) {
  TqxSelectItem* item = ItemAt(Row);
  if (item == nullptr || Loading())
    return;
  if (IsEditing())
    CommitEdit();
  item = ItemAt(Row);
  if (item == nullptr)
    return;
  QPointer<Grid> self(this);
  item->ShowPopupMenu(TqxPoint{GlobalPos.x(), GlobalPos.y()});
  // An empty row inserted or removed changes no SQL, so no change report says so.
  if (self)
    Refresh();
}

void TqxQueryBuilderSelectListControl::contextMenuEvent(QContextMenuEvent* Event) {
  const QModelIndex index = indexAt(viewport()->mapFromGlobal(Event->globalPos()));
  if (!index.isValid())
    return;
  setCurrentIndex(index);
  ShowRowMenu(index.row() + 1, Event->globalPos());
}

// ---- drops

bool TqxQueryBuilderSelectListControl::DragOver(const QPoint& GlobalPos,
                                                const TqxDatasource* DS) const {
  if (List_ == nullptr || DS == nullptr || !isVisible() || Loading())
    return false;
  if (!rect().contains(mapFromGlobal(GlobalPos)))
    return false;
  return DS->GetUnionSubQuery() == List_->GetUnionSubQuery();
}

bool TqxQueryBuilderSelectListControl::DragDrop(const QPoint& GlobalPos, TqxDatasource* DS,
                                                const std::string& Field) {
  if (!DragOver(GlobalPos, DS))
    return false;
  if (IsEditing())
    CommitEdit();
  const QPoint at = viewport()->mapFromGlobal(GlobalPos);
  const int row =
      viewport()->rect().contains(at) ? indexAt(at).row() + 1 : 0;  // 0: not on an item row
  TqxSelectList* list = List_;
  if (ItemAt(row) != nullptr)
    TqxQueryBuilderPrivate::Run(Builder_, [&] { list->InsertField(row - 1, DS, Field); });
  else
    TqxQueryBuilderPrivate::Run(Builder_, [&] { list->AddField(DS, Field); });
  return true;
}

// ---- keyboard and mouse

bool TqxQueryBuilderSelectListControl::RowMarked() const {
  return MarkedRow_ > 0 && MarkedRow_ == Row();
}

void TqxQueryBuilderSelectListControl::MarkRow(int Row) {
  if (ItemAt(Row) == nullptr)
    return;
  if (IsEditing())
    CommitEdit();
  SetCurrentCell(Col() > 0 ? Col() : kColExpression, Row);
  MarkedRow_ = Row;
  setFocus(Qt::MouseFocusReason);
  viewport()->update();
  verticalHeader()->viewport()->update();
}

void TqxQueryBuilderSelectListControl::keyPressEvent(QKeyEvent* Event) {
  const int col = Col();
  const int row = Row();
  switch (Event->key()) {
    case Qt::Key_F2:
      ShowEditor();
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (col == kColOutput)
        ToggleOutput(row);
      else
        ShowEditor();
      return;
    case Qt::Key_Escape:
      CancelEdit();
      return;
    case Qt::Key_Space:
      if (col == kColOutput) {
        ToggleOutput(row);
        return;
      }
      break;
    case Qt::Key_Delete:
      if (Loading())
        return;
      if (RowMarked()) {
        // A row chosen by its marker goes; the list's empty row stays.
        TqxSelectItem* item = ItemAt(row);
        if (item != nullptr && row < RowCount() - 1)
          TqxQueryBuilderPrivate::Run(Builder_, [&] { item->RemoveEvent(); });
        Refresh();
        SetCurrentCell(kColExpression, std::min(row, RowCount() - 1));
      } else if (CanEditCell(col, row)) {
        SetEditText(col, row, QString());
      }
      return;
    default:
      break;
  }
  // Typing on a cell starts editing it with the typed text.
  const QString text = Event->text();
  if (!text.isEmpty() && text.at(0).isPrint() &&
      !(Event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
    if (ShowEditor(&text))
      return;
  }
  QTableView::keyPressEvent(Event);
}

void TqxQueryBuilderSelectListControl::mousePressEvent(QMouseEvent* Event) {
  const QModelIndex index = indexAt(Event->position().toPoint());
  if (Event->button() == Qt::LeftButton && index.isValid() && index.column() + 1 == kColOutput) {
    if (IsEditing())
      CommitEdit();
    setCurrentIndex(index);
    setFocus(Qt::MouseFocusReason);
    ToggleOutput(index.row() + 1);
    return;
  }
  // A click on the current cell opens its editor, as in a spreadsheet.
  const bool again = index.isValid() && index == currentIndex() && !IsEditing() &&
                     Event->button() == Qt::LeftButton && hasFocus();
  QTableView::mousePressEvent(Event);
  if (again)
    ShowEditor();
}

void TqxQueryBuilderSelectListControl::mouseDoubleClickEvent(QMouseEvent* Event) {
  const QModelIndex index = indexAt(Event->position().toPoint());
  if (!index.isValid() || Event->button() != Qt::LeftButton)
    return;
  if (index.column() + 1 == kColOutput) {
    ToggleOutput(index.row() + 1);
    return;
  }
  setCurrentIndex(index);
  ShowEditor();
}

bool TqxQueryBuilderSelectListControl::eventFilter(QObject* Watched, QEvent* Event) {
  if (Watched == verticalHeader()->viewport() && Event->type() == QEvent::ContextMenu) {
    auto* menu = static_cast<QContextMenuEvent*>(Event);
    const int logical = verticalHeader()->logicalIndexAt(menu->pos());
    if (logical >= 0) {
      selectRow(logical);
      ShowRowMenu(logical + 1, menu->globalPos());
    }
    return true;
  }
  return QTableView::eventFilter(Watched, Event);
}

}  // namespace qorvex
