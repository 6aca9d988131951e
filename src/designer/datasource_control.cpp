// Datasource boxes and their field lists.
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <cstdlib>

#include "designer/designer_p.h"
#include "designer/select_list_control.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/select_list.h"

namespace qorvex {

namespace {
QString FromStd(const std::string& Text) {
  return QString::fromStdString(Text);
}

// A field row: the check box, then the name.
constexpr int kCheckSide = 11;
constexpr int kCheckLeft = 3;
constexpr int kTextLeft = kCheckLeft + kCheckSide + 5;
}  // namespace

// ---------------------------------------------------------------------------------------
// TqxQueryBuilderDataSourceControl

TqxQueryBuilderDataSourceControl::TqxQueryBuilderDataSourceControl(
    TqxQueryBuilderWorkArea* WorkArea, TqxDatasource* Datasource)
    : TqxWorkAreaControl(WorkArea->Canvas()), WorkArea_(WorkArea), Datasource_(Datasource) {
  setFocusPolicy(Qt::NoFocus);
  setMouseTracking(true);
  List_ = new TqxQueryBuilderDatasourceFieldsList(this);
  setFocusProxy(List_);
  hide();  // shown once placed
}

TqxQueryBuilderControlOwner* TqxQueryBuilderDataSourceControl::GetOwnerObject() const {
  return Datasource_;
}

int TqxQueryBuilderDataSourceControl::CaptionHeight() const {
  return std::max(16, fontMetrics().height() + 4);
}

QPoint TqxQueryBuilderDataSourceControl::ClientOrigin() const {
  return QPoint(FrameWidth(), FrameWidth() + CaptionHeight());
}

QSize TqxQueryBuilderDataSourceControl::ClientToBoxSize(QSize Client) const {
  return QSize(Client.width() + 2 * FrameWidth(),
               Client.height() + 2 * FrameWidth() + CaptionHeight());
}

QRect TqxQueryBuilderDataSourceControl::CaptionRect() const {
  return QRect(FrameWidth(), FrameWidth(), width() - 2 * FrameWidth(), CaptionHeight());
}

QRect TqxQueryBuilderDataSourceControl::CloseButtonRect() const {
  const QRect caption = CaptionRect();
  const int side = caption.height() - 4;
  return QRect(caption.right() - side - 1, caption.top() + 2, side, side);
}

TqxRect TqxQueryBuilderDataSourceControl::ControlBounds() {
  const QRect r = geometry();
  return TqxRect{r.x(), r.y(), r.width(), r.height()};
}

void TqxQueryBuilderDataSourceControl::SetControlBounds(const TqxRect& Bounds) {
  ProposeGeometry(QRect(Bounds.Left, Bounds.Top, Bounds.Width, Bounds.Height));
}

QRect TqxQueryBuilderDataSourceControl::AdjustGeometry(QRect Proposed) const {
  const QRect current = geometry();
  TqxQueryBuilder* builder = WorkArea_ != nullptr ? WorkArea_->GetBuilder() : nullptr;
  int grid = 5;
  if (builder != nullptr)
    grid = builder->GetSnapToGrid() ? builder->GetGridSize() : 0;
  int x = Proposed.x();
  int y = Proposed.y();
  int w = Proposed.width();
  int h = Proposed.height();
  if (grid > 0) {
    // The remainder keeps the sign of the dividend, as C++ gives it.
    const int dx = x % grid;
    const int dy = y % grid;
    x -= dx;
    y -= dy;
    if (w != current.width())
      w += dx;
    if (h != current.height())
      h += dy;
  }
  // Positions are diagram coordinates: nothing goes above or left of the origin.
  x = std::max(0, x);
  y = std::max(0, y);
  w = std::clamp(w, kMinWidth, kMaxWidth);
  h = std::clamp(h, kMinHeight, kMaxHeight);
  return QRect(x, y, w, h);
}

void TqxQueryBuilderDataSourceControl::ProposeGeometry(QRect Proposed) {
  const QRect adjusted = AdjustGeometry(Proposed);
  if (adjusted == geometry())
    return;
  setGeometry(adjusted);
}

void TqxQueryBuilderDataSourceControl::GeometryChanged() {
  if (Datasource_ == nullptr)
    return;
  WorkArea_->UpdateCanvasSize();
  // Every link ending on this box, whichever datasource's join it belongs to.
  WorkArea_->RealignLinks(this);
}

void TqxQueryBuilderDataSourceControl::moveEvent(QMoveEvent* Event) {
  QWidget::moveEvent(Event);
  GeometryChanged();
}

void TqxQueryBuilderDataSourceControl::resizeEvent(QResizeEvent* Event) {
  QWidget::resizeEvent(Event);
  const QPoint origin = ClientOrigin();
  List_->setGeometry(origin.x(), origin.y(), std::max(0, width() - 2 * FrameWidth()),
                     std::max(0, height() - origin.y() - FrameWidth()));
  GeometryChanged();
}

int TqxQueryBuilderDataSourceControl::WantedClientWidth() const {
  // Wide enough for the caption and the longest field where the columns of FindPos allow
  // it (they are 130 pixels apart); never below 80.
  QFont captionFont = font();
  captionFont.setBold(true);
  int wanted =
      QFontMetrics(captionFont).horizontalAdvance(Caption_) + CloseButtonRect().width() + 14;
  const QFontMetrics rows(List_->font());
  for (int i = 0; i < List_->count(); ++i)
    wanted = std::max(wanted, kTextLeft + rows.horizontalAdvance(List_->item(i)->text()) + 6);
  return std::clamp(wanted, kTunedClientWidth, kMaxTunedClientWidth);
}

void TqxQueryBuilderDataSourceControl::TuneSize() {
  const QSize client(WantedClientWidth(), List_->count() * List_->RowHeight() + 4);
  const QSize box = ClientToBoxSize(client);
  ProposeGeometry(QRect(pos(), box));
}

void TqxQueryBuilderDataSourceControl::UpdateContent() {
  if (Datasource_ == nullptr)
    return;
  TqxQueryBuilder* builder = WorkArea_->GetBuilder();
  const QString caption = FromStd(Datasource_->GetCaption());
  if (caption != Caption_) {
    Caption_ = caption;
    CaptionImageValid_ = false;
    setToolTip(Caption_);
  }
  QPalette palette = List_->palette();
  palette.setColor(QPalette::Base, builder->tableColor());
  List_->setPalette(palette);
  List_->setFont(builder->tableFont());
  List_->SetFields(Datasource_->GetFieldsWithStar());
  if (!Placed_) {
    // A new box: sized from its rows unless the model kept a size, placed by FindPos
    // unless the model kept a position.
    Placed_ = true;
    if (Datasource_->GetWidth() == 0 || Datasource_->GetHeight() == 0)
      TuneSize();
    if (Datasource_->GetLeft() == 0 && Datasource_->GetTop() == 0) {
      const QPoint at = WorkArea_->FindPos(this);
      if (at.x() != INT_MAX)
        ProposeGeometry(QRect(at, size()));
    }
    show();
    WorkArea_->UpdateCanvasSize();
  }
  // The rows may have moved under the links' ends.
  WorkArea_->RealignLinks(this);
  update();
}

void TqxQueryBuilderDataSourceControl::MakeVisible() {
  if (WorkArea_ == nullptr)
    return;
  WorkArea_->GetPage()->MakeVisible();
  WorkArea_->ensureWidgetVisible(this, 0, 0);
}

void TqxQueryBuilderDataSourceControl::ControlReleased() {
  if (WorkArea_ != nullptr && WorkArea_->GetFocusedControl() == this)
    WorkArea_->SetFocusedControl(nullptr);
  Datasource_ = nullptr;
  hide();
  deleteLater();
  if (WorkArea_ != nullptr)
    WorkArea_->UpdateCanvasSize();
}

void TqxQueryBuilderDataSourceControl::SyncChecks() {
  List_->SyncChecks();
}

void TqxQueryBuilderDataSourceControl::SetActive(bool Value) {
  if (Active_ == Value)
    return;
  Active_ = Value;
  CaptionImageValid_ = false;
  update(0, 0, width(), ClientOrigin().y());
}

void TqxQueryBuilderDataSourceControl::BringToFront() {
  raise();
}

void TqxQueryBuilderDataSourceControl::RemoveDatasource() {
  TqxDatasource* ds = Datasource_;
  if (ds == nullptr || WorkArea_->GetBuilder()->IsSQLLoading())
    return;
  // Removing the datasource frees this box's handle; the box itself goes later.
  TqxQueryBuilderPrivate::Run(WorkArea_->GetBuilder(), [&] { ds->SendDestroyNotification(); });
}

void TqxQueryBuilderDataSourceControl::EditProps() {
  TqxDatasource* ds = Datasource_;
  if (ds == nullptr)
    return;
  TqxQueryBuilderPrivate::Run(WorkArea_->GetBuilder(), [&] { ds->EditPropsEvent(); });
}

void TqxQueryBuilderDataSourceControl::ShowPopupMenu(const QPoint& GlobalPos) {
  TqxDatasource* ds = Datasource_;
  if (ds == nullptr)
    return;
  TqxQueryBuilderPrivate::Run(WorkArea_->GetBuilder(), [&] {
    ds->ShowPopupMenu(TqxPoint{GlobalPos.x(), GlobalPos.y()});
  });
}

int TqxQueryBuilderDataSourceControl::HitTest(const QPoint& Pos) const {
  if (!rect().contains(Pos))
    return None;
  const int grip = FrameWidth() + 2;
  int edges = None;
  if (Pos.x() < grip)
    edges |= Left;
  else if (Pos.x() >= width() - grip)
    edges |= Right;
  if (Pos.y() < FrameWidth())
    edges |= Top;
  else if (Pos.y() >= height() - grip)
    edges |= Bottom;
  if (edges != None)
    return edges;
  if (CaptionRect().contains(Pos))
    return Move;
  return None;
}

void TqxQueryBuilderDataSourceControl::mousePressEvent(QMouseEvent* Event) {
  BringToFront();
  if (Datasource_ == nullptr)
    return;
  // A press on the caption or frame also focuses the box.
  if (!isAncestorOf(QApplication::focusWidget()))
    List_->setFocus(Qt::MouseFocusReason);
  WorkArea_->SetFocusedControl(this);
  if (Event->button() == Qt::LeftButton) {
    const QPoint pos = Event->position().toPoint();
    if (CloseButtonRect().contains(pos)) {
      ClosePressed_ = true;
      return;
    }
    DragEdges_ = HitTest(pos);
    PressGlobal_ = Event->globalPosition().toPoint();
    PressGeometry_ = geometry();
  }
}

void TqxQueryBuilderDataSourceControl::mouseMoveEvent(QMouseEvent* Event) {
  const QPoint pos = Event->position().toPoint();
  if (DragEdges_ == None || !(Event->buttons() & Qt::LeftButton)) {
    const int edges = HitTest(pos);
    Qt::CursorShape shape = Qt::ArrowCursor;
    if ((edges & (Left | Top)) == (Left | Top) || (edges & (Right | Bottom)) == (Right | Bottom))
      shape = Qt::SizeFDiagCursor;
    else if ((edges & (Right | Top)) == (Right | Top) ||
             (edges & (Left | Bottom)) == (Left | Bottom))
      shape = Qt::SizeBDiagCursor;
    else if (edges & (Left | Right))
      shape = Qt::SizeHorCursor;
    else if (edges & (Top | Bottom))
      shape = Qt::SizeVerCursor;
    setCursor(shape);
    return;
  }
  const QPoint delta = Event->globalPosition().toPoint() - PressGlobal_;
  QRect proposed = PressGeometry_;
  if (DragEdges_ == Move) {
    proposed.translate(delta);
  } else {
    // The edge that is not dragged stays where it was, whatever the size limits say.
    if (DragEdges_ & Left) {
      const int w = std::clamp(PressGeometry_.width() - delta.x(), kMinWidth, kMaxWidth);
      proposed.setLeft(PressGeometry_.right() + 1 - w);
    } else if (DragEdges_ & Right) {
      proposed.setWidth(std::clamp(PressGeometry_.width() + delta.x(), kMinWidth, kMaxWidth));
    }
    const int minHeight = ClientOrigin().y() + FrameWidth();
    if (DragEdges_ & Top) {
      const int h = std::clamp(PressGeometry_.height() - delta.y(), minHeight, kMaxHeight);
      proposed.setTop(PressGeometry_.bottom() + 1 - h);
    } else if (DragEdges_ & Bottom) {
      proposed.setHeight(std::clamp(PressGeometry_.height() + delta.y(), minHeight, kMaxHeight));
    }
  }
  ProposeGeometry(proposed);
}

void TqxQueryBuilderDataSourceControl::mouseReleaseEvent(QMouseEvent* Event) {
  const QPoint pos = Event->position().toPoint();
  const int dragged = DragEdges_;
  DragEdges_ = None;
  // A finished move or resize is one undo step.
  if (dragged != None && Datasource_ != nullptr && geometry() != PressGeometry_)
    TqxQueryBuilderPrivate::Of(WorkArea_->GetBuilder())
        ->RecordStep(dragged == Move ? QStringLiteral("Move") : QStringLiteral("Resize"));
  if (Event->button() == Qt::LeftButton && ClosePressed_) {
    ClosePressed_ = false;
    // Closing the box removes its datasource, as "Remove" does.
    if (CloseButtonRect().contains(pos))
      RemoveDatasource();
    return;
  }
  if (Event->button() == Qt::RightButton && CaptionRect().contains(pos))
    ShowPopupMenu(Event->globalPosition().toPoint());
}

void TqxQueryBuilderDataSourceControl::mouseDoubleClickEvent(QMouseEvent* Event) {
  const QPoint pos = Event->position().toPoint();
  if (Event->button() == Qt::LeftButton && CaptionRect().contains(pos) &&
      !CloseButtonRect().contains(pos))
    EditProps();
}

void TqxQueryBuilderDataSourceControl::keyPressEvent(QKeyEvent* Event) {
  if (Event->key() == Qt::Key_Delete && Event->modifiers() == Qt::NoModifier &&
      WorkArea_->GetFocusedControl() == this) {
    RemoveDatasource();
    return;
  }
  QWidget::keyPressEvent(Event);
}

void TqxQueryBuilderDataSourceControl::leaveEvent(QEvent* Event) {
  if (DragEdges_ == None)
    unsetCursor();
  QWidget::leaveEvent(Event);
}

void TqxQueryBuilderDataSourceControl::paintEvent(QPaintEvent* /*Event*/) {
  QPainter painter(this);
  const QPalette& pal = palette();
  const QRect outer = rect();
  // Frame: a face-coloured border with a darker outline, then the caption bar.
  // Only the strips around the caption and the list are filled: the list paints its
  // whole area itself.
  const int w = outer.width();
  const int h = outer.height();
  const int f = FrameWidth();
  const QColor line =
      Active_ ? pal.color(QPalette::Highlight).darker(130) : pal.color(QPalette::Dark);
  painter.fillRect(0, 0, w, 1, line);
  painter.fillRect(0, h - 1, w, 1, line);
  painter.fillRect(0, 1, 1, h - 2, line);
  painter.fillRect(w - 1, 1, 1, h - 2, line);
  const QColor face = pal.color(QPalette::Button);
  if (w <= 2 * f || h <= 2 * f) {
    painter.fillRect(outer.adjusted(1, 1, -1, -1), face);
  } else {
    painter.fillRect(1, 1, w - 2, f - 1, face);
    painter.fillRect(1, h - f, w - 2, f - 1, face);
    painter.fillRect(1, f, f - 1, h - 2 * f, face);
    painter.fillRect(w - f, f, f - 1, h - 2 * f, face);
  }
  if (WorkArea_ != nullptr && TqxQueryBuilderPrivate::Of(WorkArea_->GetBuilder())->Exporting) {
    // Exported drawings keep the caption as text.
    painter.save();
    painter.translate(CaptionRect().topLeft());
    DrawCaption(painter, QRect(QPoint(0, 0), CaptionRect().size()));
    painter.restore();
  } else {
    painter.drawPixmap(CaptionRect().topLeft(), CaptionImage());
  }
}

const QPixmap& TqxQueryBuilderDataSourceControl::CaptionImage() {
  const QRect caption = CaptionRect();
  if (CaptionImageValid_ && CaptionImage_.size() == caption.size())
    return CaptionImage_;
  CaptionImageValid_ = true;
  CaptionImage_ = QPixmap(caption.size().expandedTo(QSize(1, 1)));
  QPainter painter(&CaptionImage_);
  DrawCaption(painter, QRect(QPoint(0, 0), caption.size()));
  return CaptionImage_;
}

void TqxQueryBuilderDataSourceControl::DrawCaption(QPainter& Painter, const QRect& Local) {
  const QRect caption = CaptionRect();
  const QPalette& pal = palette();
  const QColor base = Active_ ? pal.color(QPalette::Highlight) : pal.color(QPalette::Mid);
  QLinearGradient gradient(Local.topLeft(), Local.bottomLeft());
  gradient.setColorAt(0, base.lighter(115));
  gradient.setColorAt(1, base);
  Painter.fillRect(Local, gradient);
  const QRect close = CloseButtonRect().translated(-caption.topLeft());
  QFont captionFont = font();
  captionFont.setBold(true);
  Painter.setFont(captionFont);
  Painter.setPen(Active_ ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::WindowText));
  const QRect textRect = Local.adjusted(4, 0, -(close.width() + 6), 0);
  Painter.drawText(
      textRect, Qt::AlignVCenter | Qt::AlignLeft,
      QFontMetrics(captionFont).elidedText(Caption_, Qt::ElideRight, textRect.width()));
  // Close button: a small raised square with a cross.
  Painter.fillRect(close, pal.color(QPalette::Button));
  Painter.setPen(pal.color(QPalette::Dark));
  Painter.drawRect(close.adjusted(0, 0, -1, -1));
  Painter.setPen(QPen(pal.color(QPalette::ButtonText), 1.5));
  Painter.setRenderHint(QPainter::Antialiasing, true);
  const QRectF cross = QRectF(close).adjusted(4, 4, -4, -4);
  Painter.drawLine(cross.topLeft(), cross.bottomRight());
  Painter.drawLine(cross.topRight(), cross.bottomLeft());
}

QRect TqxQueryBuilderDataSourceControl::CalcFieldRect(const QString& FieldName,
                                                      bool WithFrame) const {
  int row = -1;
  for (int i = 0; i < List_->count(); ++i) {
    if (List_->item(i)->text().compare(FieldName, Qt::CaseInsensitive) == 0) {
      row = i;
      break;
    }
  }
  const int clientWidth = width() - 2 * FrameWidth();
  if (row < 0) {
    if (WithFrame)
      return QRect();
    return QRect(QPoint(0, -CaptionHeight()), QPoint(clientWidth - 1, -1));
  }
  QRect r = List_->visualItemRect(List_->item(row));
  // Viewport to list coordinates.
  r.translate(List_->viewport()->pos());
  const int listHeight = List_->height();
  int top = std::max(0, r.top());
  int bottom = std::max(0, r.bottom());
  if (bottom > listHeight - 1)
    bottom = listHeight - 1;
  if (top > listHeight - 1)
    top = listHeight - 1;
  QRect result(QPoint(0, top), QPoint(List_->width() - 1, bottom));
  // List to client coordinates: the client area is the list's place in the box.
  result.translate(List_->pos() - ClientOrigin());
  if (WithFrame)
    result.adjust(-FrameWidth(), 0, FrameWidth(), 0);
  return result;
}

// ---------------------------------------------------------------------------------------
// TqxFieldRowDelegate

QRect TqxFieldRowDelegate::CheckBoxRect(const QRect& Row) {
  return QRect(Row.left() + kCheckLeft, Row.top() + (Row.height() - kCheckSide) / 2, kCheckSide,
               kCheckSide);
}

void TqxFieldRowDelegate::paint(QPainter* Painter, const QStyleOptionViewItem& Option,
                                const QModelIndex& Index) const {
  const QRect row = Option.rect;
  const QPalette& pal = Option.palette;
  const bool selected = Option.state & QStyle::State_Selected;
  const bool focused = Option.state & QStyle::State_HasFocus ||
                       (Option.widget != nullptr && Option.widget->hasFocus());
  if (selected) {
    const QColor band =
        focused ? pal.color(QPalette::Highlight) : pal.color(QPalette::Highlight).lighter(170);
    Painter->fillRect(row.adjusted(kTextLeft - 2, 0, 0, 0), band);
  }
  const QRect box = CheckBoxRect(row);
  Painter->fillRect(box, pal.color(QPalette::Base));
  Painter->setPen(pal.color(QPalette::Dark));
  Painter->drawRect(box.adjusted(0, 0, -1, -1));
  if (Index.data(Qt::CheckStateRole).toInt() == Qt::Checked) {
    Painter->setPen(QPen(pal.color(QPalette::Text), 2));
    const QPoint a(box.left() + 2, box.top() + 5);
    const QPoint b(box.left() + 4, box.bottom() - 3);
    const QPoint c(box.right() - 2, box.top() + 2);
    Painter->drawLine(a, b);
    Painter->drawLine(b, c);
  }
  Painter->setPen(pal.color(selected && focused ? QPalette::HighlightedText : QPalette::Text));
  Painter->setFont(Option.font);
  if (Option.font != TextsFont_) {
    Texts_.clear();
    TextsFont_ = Option.font;
  }
  const QString name = Index.data(Qt::DisplayRole).toString();
  auto text = Texts_.find(name);
  if (text == Texts_.end()) {
    QStaticText laidOut(name);
    laidOut.setTextFormat(Qt::PlainText);
    laidOut.prepare(QTransform(), Option.font);
    text = Texts_.insert(name, laidOut);
  }
  const int textHeight = QFontMetrics(Option.font).height();
  // Long names are cut at the list's edge.
  Painter->drawStaticText(row.left() + kTextLeft, row.top() + (row.height() - textHeight) / 2,
                          *text);
}

QSize TqxFieldRowDelegate::sizeHint(const QStyleOptionViewItem& Option,
                                    const QModelIndex& Index) const {
  const QFontMetrics metrics(Option.font);
  return QSize(kTextLeft + metrics.horizontalAdvance(Index.data(Qt::DisplayRole).toString()) + 4,
               std::max(kCheckSide + 3, metrics.height() + 1));
}

bool TqxFieldRowDelegate::editorEvent(QEvent* Event, QAbstractItemModel* Model,
                                      const QStyleOptionViewItem& Option,
                                      const QModelIndex& Index) {
  if (!(Index.flags() & Qt::ItemIsUserCheckable) || !(Index.flags() & Qt::ItemIsEnabled))
    return false;
  const bool checked = Index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
  switch (Event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      return CheckBoxRect(Option.rect)
          .contains(static_cast<QMouseEvent*>(Event)->position().toPoint());
    case QEvent::MouseButtonRelease: {
      auto* mouse = static_cast<QMouseEvent*>(Event);
      if (mouse->button() != Qt::LeftButton ||
          !CheckBoxRect(Option.rect).contains(mouse->position().toPoint()))
        return false;
      break;
    }
    case QEvent::KeyPress: {
      const int key = static_cast<QKeyEvent*>(Event)->key();
      if (key != Qt::Key_Space && key != Qt::Key_Select)
        return false;
      break;
    }
    default:
      return false;
  }
  return Model->setData(Index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

// ---------------------------------------------------------------------------------------
// TqxQueryBuilderDatasourceFieldsList

TqxQueryBuilderDatasourceFieldsList::TqxQueryBuilderDatasourceFieldsList(
    TqxQueryBuilderDataSourceControl* Box)
    : QListWidget(Box), Box_(Box) {
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::ClickFocus);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setUniformItemSizes(true);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setItemDelegate(new TqxFieldRowDelegate(this));
  viewport()->setAutoFillBackground(false);
  connect(this, &QListWidget::itemChanged, this, &TqxQueryBuilderDatasourceFieldsList::ClickCheck);
  // Whatever the rows show comes through the model or the selection.
  QAbstractItemModel* rows = model();
  const auto invalidate = [this] { InvalidateRows(); };
  connect(rows, &QAbstractItemModel::dataChanged, this, invalidate);
  connect(rows, &QAbstractItemModel::rowsInserted, this, invalidate);
  connect(rows, &QAbstractItemModel::rowsRemoved, this, invalidate);
  connect(rows, &QAbstractItemModel::rowsMoved, this, invalidate);
  connect(rows, &QAbstractItemModel::modelReset, this, invalidate);
  connect(rows, &QAbstractItemModel::layoutChanged, this, invalidate);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, invalidate);
  connect(selectionModel(), &QItemSelectionModel::currentChanged, this, invalidate);
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
    if (Box_->GetDatasource() != nullptr)
      Box_->GetWorkArea()->RealignLinks(Box_);
  });
}

TqxQueryBuilderDatasourceFieldsList::~TqxQueryBuilderDatasourceFieldsList() {
  // The list's base classes clear the rows and the scroll bar as they go, after this class
  // is gone: its handlers must not hear of it.
  disconnect(model(), nullptr, this, nullptr);
  disconnect(selectionModel(), nullptr, this, nullptr);
  disconnect(verticalScrollBar(), nullptr, this, nullptr);
}

bool TqxQueryBuilderDatasourceFieldsList::Loading() const {
  return Box_->GetWorkArea()->GetBuilder()->IsSQLLoading();
}

int TqxQueryBuilderDatasourceFieldsList::RowHeight() const {
  if (count() > 0) {
    const int hint = sizeHintForRow(0);
    if (hint > 0)
      return hint;
  }
  return fontMetrics().height() + 2;
}

void TqxQueryBuilderDatasourceFieldsList::SetFields(const std::vector<std::string>& Fields) {
  ++Syncing_;
  bool same = static_cast<int>(Fields.size()) == count();
  for (int i = 0; same && i < count(); ++i)
    same = item(i)->text() == FromStd(Fields[static_cast<std::size_t>(i)]);
  if (!same) {
    clear();
    for (const std::string& field : Fields) {
      auto* row = new QListWidgetItem(FromStd(field), this);
      row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
      row->setCheckState(Qt::Unchecked);
    }
  }
  --Syncing_;
  SyncChecks();
}

void TqxQueryBuilderDatasourceFieldsList::SyncChecks() {
  TqxDatasource* ds = Box_->GetDatasource();
  if (ds == nullptr || ds->GetUnionSubQuery() == nullptr)
    return;
  TqxSelectList* list = ds->GetUnionSubQuery()->GetSelectList();
  if (list == nullptr)
    return;
  ++Syncing_;
  for (int i = 0; i < count(); ++i) {
    QListWidgetItem* row = item(i);
    const bool ticked = list->FindField(ds, row->text().toStdString()) != nullptr;
    const Qt::CheckState state = ticked ? Qt::Checked : Qt::Unchecked;
    if (row->checkState() != state)
      row->setCheckState(state);
  }
  --Syncing_;
}

void TqxQueryBuilderDatasourceFieldsList::ClickCheck(QListWidgetItem* Item) {
  if (Syncing_ > 0 || Item == nullptr)
    return;
  TqxDatasource* ds = Box_->GetDatasource();
  TqxQueryBuilder* builder = Box_->GetWorkArea()->GetBuilder();
  if (ds == nullptr || ds->GetUnionSubQuery() == nullptr || Loading()) {
    SyncChecks();
    return;
  }
  TqxSelectList* list = ds->GetUnionSubQuery()->GetSelectList();
  const std::string field = Item->text().toStdString();
  const bool checked = Item->checkState() == Qt::Checked;
  const bool done = TqxQueryBuilderPrivate::Run(builder, [&] {
    if (checked) {
      if (list->FindField(ds, field) == nullptr)
        list->AddField(ds, field);
    } else {
      list->RemoveFields(ds, field);
    }
  });
  // A refused change shows the model as it stands.
  if (!done)
    SyncChecks();
}

QRect TqxQueryBuilderDatasourceFieldsList::CheckRect(int Row) const {
  QListWidgetItem* row = item(Row);
  return row != nullptr ? TqxFieldRowDelegate::CheckBoxRect(visualItemRect(row)) : QRect();
}

bool TqxQueryBuilderDatasourceFieldsList::CanAcceptDrop(
    const TqxQueryBuilderDatasourceFieldsList* Source, int Row) const {
  if (Source == nullptr || Source == this || Source->GetBox() == Box_)
    return false;
  const TqxDatasource* target = Box_->GetDatasource();
  const TqxDatasource* from = Source->GetBox()->GetDatasource();
  if (target == nullptr || from == nullptr ||
      target->GetUnionSubQuery() != from->GetUnionSubQuery())
    return false;
  // Only a field row takes a link: not "*", not the empty space below the rows.
  return Row >= 1 && Row < count();
}

TqxQueryBuilderDatasourceFieldsList* TqxQueryBuilderDatasourceFieldsList::DropTargetAt(
    const QPoint& GlobalPos, int* Row) const {
  *Row = -1;
  QWidget* canvas = Box_->GetWorkArea()->Canvas();
  QWidget* child = canvas->childAt(canvas->mapFromGlobal(GlobalPos));
  while (child != nullptr && child != canvas) {
    if (auto* list = qobject_cast<TqxQueryBuilderDatasourceFieldsList*>(child)) {
      QListWidgetItem* row = list->itemAt(list->viewport()->mapFromGlobal(GlobalPos));
      *Row = row != nullptr ? list->row(row) : -1;
      return list;
    }
    child = child->parentWidget();
  }
  return nullptr;
}

void TqxQueryBuilderDatasourceFieldsList::mousePressEvent(QMouseEvent* Event) {
  Box_->BringToFront();
  const QPoint pos = Event->position().toPoint();
  Press_ = pos;
  IgnoreRelease_ = false;
  if (QListWidgetItem* row = itemAt(pos))
    setCurrentItem(row);
  if (!hasFocus())
    setFocus(Qt::MouseFocusReason);
  if (Loading() || Box_->GetDatasource() == nullptr) {
    IgnoreRelease_ = true;
    return;
  }
  if (Event->button() == Qt::LeftButton)
    QListWidget::mousePressEvent(Event);
}

void TqxQueryBuilderDatasourceFieldsList::mouseMoveEvent(QMouseEvent* Event) {
  if (Dragging_) {
    UpdateDragCursor(Event->globalPosition().toPoint());
    return;
  }
  if (!(Event->buttons() & Qt::LeftButton) || Press_.x() < 0 || Loading() ||
      Box_->GetDatasource() == nullptr)
    return;
  const QPoint delta = Event->position().toPoint() - Press_;
  if (std::abs(delta.x()) < kDragThreshold && std::abs(delta.y()) < kDragThreshold)
    return;
  // A field row starts a drag; "*" is not a field.
  const int row = currentRow();
  QListWidgetItem* pressed = itemAt(Press_);
  if (pressed == nullptr || this->row(pressed) != row || row < 1)
    return;
  Dragging_ = true;
  DragRow_ = row;
  // The press gave this list the mouse until the release: no grab is needed.
  UpdateDragCursor(Event->globalPosition().toPoint());
}

void TqxQueryBuilderDatasourceFieldsList::UpdateDragCursor(const QPoint& GlobalPos) {
  int row = -1;
  TqxQueryBuilderDatasourceFieldsList* target = DropTargetAt(GlobalPos, &row);
  const bool welcome = target != nullptr && target->CanAcceptDrop(this, row);
  // The select-list grid below the diagram takes a field as a new row.
  auto* grid = TqxQueryBuilderSelectListControl::OfPage(Box_->GetWorkArea()->GetPage());
  if (!welcome && grid != nullptr && grid->DragOver(GlobalPos, Box_->GetDatasource())) {
    setCursor(Qt::DragCopyCursor);
    return;
  }
  setCursor(welcome ? Qt::DragLinkCursor : Qt::ForbiddenCursor);
}

void TqxQueryBuilderDatasourceFieldsList::CancelDrag() {
  Dragging_ = false;
  DragRow_ = -1;
  unsetCursor();
}

void TqxQueryBuilderDatasourceFieldsList::FinishDrag(const QPoint& GlobalPos) {
  const int sourceRow = DragRow_;
  CancelDrag();
  int row = -1;
  TqxQueryBuilderDatasourceFieldsList* target = DropTargetAt(GlobalPos, &row);
  if (target == nullptr && sourceRow >= 1 && sourceRow < count() && !Loading()) {
    auto* grid = TqxQueryBuilderSelectListControl::OfPage(Box_->GetWorkArea()->GetPage());
    if (grid != nullptr &&
        grid->DragDrop(GlobalPos, Box_->GetDatasource(), item(sourceRow)->text().toStdString()))
      return;
  }
  if (target == nullptr || !target->CanAcceptDrop(this, row) || sourceRow < 1 ||
      sourceRow >= count() || Loading())
    return;
  TqxDatasource* from = Box_->GetDatasource();
  TqxDatasource* to = target->GetBox()->GetDatasource();
  const std::string sourceField = item(sourceRow)->text().toStdString();
  const std::string targetField = target->item(row)->text().toStdString();
  TqxUnionSubQuery* operand = to->GetUnionSubQuery();
  TqxQueryBuilderPrivate::Run(Box_->GetWorkArea()->GetBuilder(),
                              [&] { operand->AddLink(from, sourceField, to, targetField); });
}

void TqxQueryBuilderDatasourceFieldsList::mouseReleaseEvent(QMouseEvent* Event) {
  const bool wasDragging = Dragging_;
  Press_ = QPoint(-1, -1);
  if (wasDragging) {
    FinishDrag(Event->globalPosition().toPoint());
    return;
  }
  if (IgnoreRelease_ || Loading() || Box_->GetDatasource() == nullptr) {
    IgnoreRelease_ = false;
    return;
  }
  if (Event->button() == Qt::LeftButton)
    QListWidget::mouseReleaseEvent(Event);
}

void TqxQueryBuilderDatasourceFieldsList::mouseDoubleClickEvent(QMouseEvent* Event) {
  if (Event->button() != Qt::LeftButton)
    return;
  // The release that follows does not tick the row again.
  IgnoreRelease_ = true;
  Box_->EditProps();
}

void TqxQueryBuilderDatasourceFieldsList::keyPressEvent(QKeyEvent* Event) {
  if (Dragging_ && Event->key() == Qt::Key_Escape) {
    CancelDrag();
    return;
  }
  if (Event->key() == Qt::Key_Delete && Event->modifiers() == Qt::NoModifier) {
    Box_->RemoveDatasource();
    return;
  }
  if (Loading() && (Event->key() == Qt::Key_Space || Event->key() == Qt::Key_Select))
    return;
  QListWidget::keyPressEvent(Event);
}

bool TqxQueryBuilderDatasourceFieldsList::focusNextPrevChild(bool Next) {
  // Tab goes from box to box; past the last box the next widget of the window follows,
  // before the first the diagram itself.
  TqxQueryBuilderWorkArea* area = Box_->GetWorkArea();
  if (area == nullptr || Box_->GetDatasource() == nullptr)
    return QListWidget::focusNextPrevChild(Next);
  if (area->FocusNextBox(Box_, Next))
    return true;
  if (!Next) {
    area->Canvas()->setFocus(Qt::OtherFocusReason);
    return true;
  }
  return QListWidget::focusNextPrevChild(Next);
}

void TqxQueryBuilderDatasourceFieldsList::focusInEvent(QFocusEvent* Event) {
  QListWidget::focusInEvent(Event);
  if (Box_->GetDatasource() != nullptr)
    Box_->GetWorkArea()->SetFocusedControl(Box_);
}

void TqxQueryBuilderDatasourceFieldsList::focusOutEvent(QFocusEvent* Event) {
  InvalidateRows();
  QListWidget::focusOutEvent(Event);
}

void TqxQueryBuilderDatasourceFieldsList::changeEvent(QEvent* Event) {
  switch (Event->type()) {
    case QEvent::PaletteChange:
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::EnabledChange:
    case QEvent::ActivationChange:  // the palette's active or inactive colours
    case QEvent::LayoutDirectionChange:
      InvalidateRows();
      break;
    default:
      break;
  }
  QListWidget::changeEvent(Event);
}

void TqxQueryBuilderDatasourceFieldsList::PaintRows(const QSize& Size, qreal Ratio) {
  RowsImage_ = QImage(Size, QImage::Format_ARGB32_Premultiplied);
  RowsImage_.setDevicePixelRatio(Ratio);
  RowsImage_.fill(palette().color(QPalette::Base));
  RowsImageValid_ = true;
  RowsImageOffset_ = verticalOffset();
  RowsImageFocused_ = hasFocus();
  QPainter painter(&RowsImage_);
  DrawRows(painter);
}

void TqxQueryBuilderDatasourceFieldsList::DrawRows(QPainter& painter) {
  QStyleOptionViewItem common;
  initViewItemOption(&common);
  const QRect area = viewport()->rect();
  const QModelIndex current = currentIndex();
  QAbstractItemDelegate* delegate = itemDelegate();
  for (int row = 0; row < count(); ++row) {
    const QModelIndex index = model()->index(row, 0);
    QStyleOptionViewItem option = common;
    option.rect = visualRect(index);
    if (!option.rect.intersects(area))
      continue;
    if (selectionModel()->isSelected(index))
      option.state |= QStyle::State_Selected;
    if (index == current && hasFocus())
      option.state |= QStyle::State_HasFocus;
    delegate->paint(&painter, option, index);
  }
}

void TqxQueryBuilderDatasourceFieldsList::paintEvent(QPaintEvent* /*Event*/) {
  QWidget* port = viewport();
  const qreal ratio = port->devicePixelRatioF();
  const QSize size = port->size() * ratio;
  if (size.isEmpty())
    return;
  // An exported drawing gets the rows themselves: text in SVG, sharp at any scale.
  TqxQueryBuilderWorkArea* area = Box_ != nullptr ? Box_->GetWorkArea() : nullptr;
  if (area != nullptr && TqxQueryBuilderPrivate::Of(area->GetBuilder())->Exporting) {
    QPainter painter(port);
    painter.fillRect(port->rect(), palette().color(QPalette::Base));
    DrawRows(painter);
    return;
  }
  if (!RowsImageValid_ || RowsImage_.size() != size || RowsImageOffset_ != verticalOffset() ||
      RowsImageFocused_ != hasFocus())
    PaintRows(size, ratio);
  QPainter painter(port);
  // The rows image is opaque: a plain copy unless the table colour is translucent.
  if (palette().color(QPalette::Base).alpha() == 255)
    painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.drawImage(0, 0, RowsImage_);
}

void TqxQueryBuilderDatasourceFieldsList::contextMenuEvent(QContextMenuEvent* Event) {
  Box_->ShowPopupMenu(Event->globalPos());
}

}  // namespace qorvex
