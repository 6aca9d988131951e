// The diagram of one union operand: background, placement of new boxes, focus, keys,
// drops from outside and the context menu.
#include <QApplication>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPaintEngine>
#include <QPainter>
#include <QScrollBar>

#include "designer/designer_p.h"
#include "designer/link_control.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"

namespace qorvex {

namespace {

// The widget the boxes live on. It paints the background and hands its input to the
// work area.
class TqxWorkAreaCanvas : public QWidget {
 public:
  explicit TqxWorkAreaCanvas(TqxQueryBuilderWorkArea* Area) : Area_(Area) {
    // Tab reaches the diagram and goes on through its boxes.
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
  }

 protected:
  void paintEvent(QPaintEvent* Event) override {
    QPainter painter(this);
    Area_->PaintBackground(painter, Event->rect());
  }
  void mousePressEvent(QMouseEvent* Event) override {
    setFocus(Qt::MouseFocusReason);
    // A press on a link's line focuses the link.
    Area_->SetFocusedControl(Area_->LinkAt(Event->position().toPoint()));
    QWidget::mousePressEvent(Event);
  }
  void mouseDoubleClickEvent(QMouseEvent* Event) override {
    if (Event->button() != Qt::LeftButton)
      return;
    if (TqxQueryBuilderLinkControl* link = Area_->LinkAt(Event->position().toPoint())) {
      link->EditProps();
      return;
    }
    if (TqxUnionSubQuery* operand = Area_->GetOperand())
      TqxQueryBuilderPrivate::Run(Area_->GetBuilder(), [&] { operand->EditPropsEvent(); });
  }
  void keyPressEvent(QKeyEvent* Event) override {
    if (Event->key() == Qt::Key_Delete && Event->modifiers() == Qt::NoModifier &&
        Area_->DeleteFocusedLink())
      return;
    QWidget::keyPressEvent(Event);
  }
  void focusInEvent(QFocusEvent* Event) override {
    QWidget::focusInEvent(Event);
    // Coming in by Tab, the keyboard goes on to the first box (the last by Shift+Tab).
    if (Event->reason() == Qt::TabFocusReason)
      Area_->FocusNextBox(nullptr, true);
    else if (Event->reason() == Qt::BacktabFocusReason)
      Area_->FocusNextBox(nullptr, false);
  }
  void contextMenuEvent(QContextMenuEvent* Event) override {
    if (TqxQueryBuilderLinkControl* link = Area_->LinkAt(Event->pos())) {
      link->ShowPopupMenu(Event->globalPos());
      return;
    }
    Area_->ShowPopupMenu(Event->globalPos());
  }
  // Drags from outside the component go to the application's handlers.
  bool Welcome(QDropEvent* Event) {
    TqxQueryBuilder* builder = Area_->GetBuilder();
    TqxUnionSubQuery* operand = Area_->GetOperand();
    if (operand == nullptr || !builder->OnDragOver || builder->IsSQLLoading())
      return false;
    bool welcome = false;
    TqxQueryBuilderPrivate::Run(builder, [&] {
      welcome =
          builder->OnDragOver(builder, Event->mimeData(), operand, Event->position().toPoint());
    });
    return welcome;
  }
  void dragEnterEvent(QDragEnterEvent* Event) override {
    if (Welcome(Event))
      Event->acceptProposedAction();
    else
      Event->ignore();
  }
  void dragMoveEvent(QDragMoveEvent* Event) override {
    if (Welcome(Event))
      Event->acceptProposedAction();
    else
      Event->ignore();
  }
  void dropEvent(QDropEvent* Event) override {
    TqxQueryBuilder* builder = Area_->GetBuilder();
    TqxUnionSubQuery* operand = Area_->GetOperand();
    if (!Welcome(Event) || !builder->OnDragDrop)
      return;
    Event->acceptProposedAction();
    const QPoint at = Event->position().toPoint();
    const QMimeData* data = Event->mimeData();
    TqxQueryBuilderPrivate::Run(builder, [&] { builder->OnDragDrop(builder, data, operand, at); });
  }

 private:
  TqxQueryBuilderWorkArea* Area_;
};

// The built-in patterns: a faint dot lattice with a slightly stronger cross every fourth
// point, drawn by the project so that no image file is needed.
QPixmap MakeTile(const QColor& Fill, const QColor& Dot, const QColor& Cross) {
  constexpr int kStep = 12;
  constexpr int kSize = kStep * 4;
  QPixmap tile(kSize, kSize);
  tile.fill(Fill);
  QPainter painter(&tile);
  for (int y = 0; y < kSize; y += kStep) {
    for (int x = 0; x < kSize; x += kStep)
      painter.fillRect(x, y, 1, 1, Dot);
  }
  painter.fillRect(0, 0, 1, 1, Cross);
  painter.fillRect(1, 0, 1, 1, Cross);
  painter.fillRect(0, 1, 1, 1, Cross);
  painter.fillRect(kSize - 1, 0, 1, 1, Cross);
  painter.fillRect(0, kSize - 1, 1, 1, Cross);
  return tile;
}

}  // namespace

QColor BackgroundFill(TqxBkImageDarkness Darkness) {
  switch (Darkness) {
    case bgidLight:
      return QColor(224, 223, 227);
    case bgidDark:
      return QColor(153, 153, 153);
    case bgidWhite:
    default:
      return QColor(255, 255, 255);
  }
}

const QPixmap& BackgroundTile(TqxBkImageDarkness Darkness) {
  static const QPixmap white =
      MakeTile(BackgroundFill(bgidWhite), QColor(222, 224, 230), QColor(200, 204, 214));
  static const QPixmap light =
      MakeTile(BackgroundFill(bgidLight), QColor(206, 205, 212), QColor(186, 185, 194));
  static const QPixmap dark =
      MakeTile(BackgroundFill(bgidDark), QColor(140, 140, 140), QColor(124, 124, 128));
  switch (Darkness) {
    case bgidLight:
      return light;
    case bgidDark:
      return dark;
    case bgidWhite:
    default:
      return white;
  }
}

// ---------------------------------------------------------------------------------------
// TqxQueryBuilderWorkArea

TqxQueryBuilderWorkArea::TqxQueryBuilderWorkArea(TqxQueryBuilder* Builder,
                                                 TqxUnionSubQueryTabSheet* Page)
    : QScrollArea(Page), Builder_(Builder), Page_(Page) {
  setFrameShape(QFrame::NoFrame);
  setWidgetResizable(true);
  setBackgroundRole(QPalette::Mid);
  setWidget(new TqxWorkAreaCanvas(this));
  connect(qApp, &QApplication::focusChanged, this, &TqxQueryBuilderWorkArea::FocusChanged);
}

TqxQueryBuilderWorkArea::~TqxQueryBuilderWorkArea() {
  DetachLinkControls();
}

TqxUnionSubQuery* TqxQueryBuilderWorkArea::GetOperand() const {
  return Released_ ? nullptr : Page_->GetOperand();
}

void TqxQueryBuilderWorkArea::Release() {
  Released_ = true;
  Focused_ = nullptr;
  DetachLinkControls();
}

QList<TqxQueryBuilderDataSourceControl*> TqxQueryBuilderWorkArea::Boxes() const {
  QList<TqxQueryBuilderDataSourceControl*> boxes;
  for (QObject* child : Canvas()->children()) {
    auto* box = qobject_cast<TqxQueryBuilderDataSourceControl*>(child);
    if (box != nullptr && box->GetDatasource() != nullptr)
      boxes.push_back(box);
  }
  return boxes;
}

QPoint TqxQueryBuilderWorkArea::FindPos(const QWidget* Control) const {
  // A page that has not been laid out yet gets the width of the pages it will join.
  int width = viewport()->width();
  if (!testAttribute(Qt::WA_WState_Visible) && Page_->parentWidget() != nullptr)
    width = Page_->parentWidget()->testAttribute(Qt::WA_WState_Visible)
                ? Page_->parentWidget()->width()
                : 0;
  if (width <= 0)
    width = Builder_->width();
  if (width <= 0)
    width = 800;
  const QList<TqxQueryBuilderDataSourceControl*> boxes = Boxes();
  const int grid = Builder_->GetSnapToGrid() ? Builder_->GetGridSize() : 0;
  QPoint best(INT_MAX, INT_MAX);
  for (int x = 10; width > Control->width() + x; x += 130) {
    int y = 10;
    for (;;) {
      const TqxQueryBuilderDataSourceControl* found = nullptr;
      for (const TqxQueryBuilderDataSourceControl* box : boxes) {
        if (box != Control && box->isVisibleTo(Canvas()) && box->x() == x && box->y() == y) {
          found = box;
          break;
        }
      }
      if (found == nullptr)
        break;
      y += found->height() + 20;
      if (grid > 0)
        y -= y % grid;
    }
    if (y < best.y())
      best = QPoint(x, y);
  }
  return best;
}

void TqxQueryBuilderWorkArea::SetFocusedControl(QWidget* Control) {
  if (Control == Focused_)
    return;
  QPointer<QWidget> previous = Focused_;
  auto* previousControl = qobject_cast<TqxWorkAreaControl*>(previous.data());
  if (previousControl != nullptr && !previousControl->IsBox())
    previousControl->update();  // a link loses its focused look
  Focused_ = Control;
  if (auto* box = qobject_cast<TqxQueryBuilderDataSourceControl*>(Control)) {
    if (!box->isAncestorOf(QApplication::focusWidget()))
      box->setFocus(Qt::OtherFocusReason);
    box->SetActive(true);
  } else if (Control != nullptr) {
    Canvas()->setFocus(Qt::OtherFocusReason);
    Control->update();
  }
  if (auto* box = qobject_cast<TqxQueryBuilderDataSourceControl*>(previous.data())) {
    if (box->GetDatasource() != nullptr)
      box->SetActive(false);
  }
}

void TqxQueryBuilderWorkArea::FocusChanged(QWidget* /*Old*/, QWidget* Now) {
  if (Focused_ == nullptr)
    return;
  if (Now == nullptr || (Now != Canvas() && !Canvas()->isAncestorOf(Now)))
    SetFocusedControl(nullptr);
}

bool TqxQueryBuilderWorkArea::FocusNextBox(const TqxQueryBuilderDataSourceControl* From,
                                           bool Forward) {
  const QList<TqxQueryBuilderDataSourceControl*> boxes = Boxes();
  if (boxes.isEmpty())
    return false;
  qsizetype index =
      From == nullptr ? (Forward ? 0 : boxes.size() - 1) : boxes.indexOf(From) + (Forward ? 1 : -1);
  if (index < 0 || index >= boxes.size())
    return false;
  TqxQueryBuilderDataSourceControl* box = boxes[index];
  box->MakeVisible();
  box->GetFieldsList()->setFocus(Forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
  return true;
}

bool TqxQueryBuilderWorkArea::DeleteFocusedLink() {
  auto* control = qobject_cast<TqxWorkAreaControl*>(Focused_.data());
  if (control == nullptr || control->IsBox() || Builder_->IsSQLLoading())
    return false;
  TqxQueryBuilderControlOwner* owner = control->GetOwnerObject();
  if (owner == nullptr)
    return false;
  SetFocusedControl(nullptr);
  TqxQueryBuilderPrivate::Run(Builder_, [&] { owner->RemoveEvent(); });
  return true;
}

void TqxQueryBuilderWorkArea::UpdateCanvasSize() {
  QRect bounds;
  for (const TqxQueryBuilderDataSourceControl* box : Boxes()) {
    if (box->isVisibleTo(Canvas()))
      bounds = bounds.united(box->geometry());
  }
  const QSize needed(std::max(0, bounds.right() + 20), std::max(0, bounds.bottom() + 20));
  if (Canvas()->minimumSize() != needed)
    Canvas()->setMinimumSize(needed);
}

void TqxQueryBuilderWorkArea::PaintBackground(QPainter& Painter, const QRect& Rect) const {
  TqxQueryBuilderPrivate* d = TqxQueryBuilderPrivate::Of(Builder_);
  const QPixmap& user = d->UserBackground();
  if (!user.isNull()) {
    Painter.fillRect(Rect, Builder_->bkColor());
    if (Builder_->GetBkImagePos() == bkipTile)
      Painter.drawTiledPixmap(Rect, user, Rect.topLeft());
    else
      Painter.drawPixmap(0, 0, user);
    return;
  }
  // A drawing gets a plain fill: the pattern would be written as a mosaic of bitmaps.
  if (d->Exporting && Painter.paintEngine() != nullptr &&
      Painter.paintEngine()->type() == QPaintEngine::SVG) {
    Painter.fillRect(Rect, BackgroundFill(Builder_->GetBkImageDarkness()));
    return;
  }
  // The pattern starts at the diagram's origin, so it scrolls with the boxes.
  const QPixmap& tile = BackgroundTile(Builder_->GetBkImageDarkness());
  const QPoint offset(Rect.x() % tile.width(), Rect.y() % tile.height());
  Painter.drawTiledPixmap(Rect, tile, offset);
}

void TqxQueryBuilderWorkArea::ShowPopupMenu(const QPoint& GlobalPos) {
  TqxUnionSubQuery* operand = GetOperand();
  TqxControlFactory* factory = Builder_->GetControlFactory();
  if (operand == nullptr || factory == nullptr)
    return;
  TqxPopupMenu menu;
  TqxQueryBuilderPrivate::Run(Builder_, [&] {
    operand->GetPopupMenuWA(menu);
    Builder_->PopupMenuCompleted(menu);
  });
  factory->PopupMenu(*operand, menu, TqxPoint{GlobalPos.x(), GlobalPos.y()});
}

}  // namespace qorvex
