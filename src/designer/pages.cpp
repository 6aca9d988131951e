// The tab control of the builder, the tab page of each sub-query and the page of each
// union operand.
#include <QEvent>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QTabBar>
#include <QVBoxLayout>

#include "designer/designer_p.h"
#include "designer/union_nav_bar.h"
#include "qorvex/model/query.h"

namespace qorvex {

// ---------------------------------------------------------------------------------------
// TqxQueryBuiderPageControl

TqxQueryBuiderPageControl::TqxQueryBuiderPageControl(TqxQueryBuilder* Builder)
    : QTabWidget(Builder), Builder_(Builder) {
  setDocumentMode(true);
  connect(this, &QTabWidget::currentChanged, this, &TqxQueryBuiderPageControl::CurrentChanged);
  ApplyTabLook();
}

void TqxQueryBuiderPageControl::ApplyTabLook() {
  // Tabs keep the style's own look; buttons and flat buttons are drawn by a style sheet.
  QString sheet;
  switch (Builder_->GetTabStyle()) {
    case tsTabs:
      break;
    case tsButtons:
      sheet = QStringLiteral(
          "QTabBar::tab { border: 1px solid palette(dark); border-radius: 3px; margin: 2px; "
          "padding: 3px 10px; background: palette(button); }"
          "QTabBar::tab:selected { background: palette(midlight); border-color: palette(shadow); "
          "}");
      break;
    case tsFlatButtons:
      sheet = QStringLiteral(
          "QTabBar::tab { border: none; margin: 2px; padding: 3px 10px; background: "
          "transparent; }"
          "QTabBar::tab:selected { background: palette(midlight); }");
      break;
  }
  tabBar()->setAttribute(Qt::WA_Hover, Builder_->GetTabHotTrack());
  if (Builder_->GetTabHotTrack())
    sheet += QStringLiteral("QTabBar::tab:hover { color: palette(highlight); }");
  setDocumentMode(Builder_->GetTabStyle() == tsTabs);
  tabBar()->setDrawBase(Builder_->GetTabStyle() == tsTabs);
  tabBar()->setStyleSheet(sheet);
}

void TqxQueryBuiderPageControl::Quietly(const std::function<void()>& F) {
  ++Quiet_;
  try {
    F();
  } catch (...) {
    --Quiet_;
    throw;
  }
  --Quiet_;
}

void TqxQueryBuiderPageControl::CurrentChanged(int Index) {
  if (Quiet_ > 0 || Builder_->IsDestroying() || Builder_->GetIsUpdating())
    return;
  auto* sheet = qobject_cast<TqxQueryTabSheet*>(widget(Index));
  if (sheet == nullptr || sheet->GetQuery() == nullptr)
    return;
  TqxSubQuery* query = sheet->GetQuery();
  TqxQueryBuilderPrivate::Run(Builder_, [&] { Builder_->SetActiveSubquery(query); });
}

void TqxQueryBuiderPageControl::SyncWithModel() {
  Quietly([&] {
    TqxSubQuery* active = Builder_->GetActiveSubquery();
    for (int i = 0; i < count(); ++i) {
      auto* sheet = qobject_cast<TqxQueryTabSheet*>(widget(i));
      if (sheet == nullptr || sheet->GetQuery() == nullptr)
        continue;
      sheet->UpdateContent();
      if (sheet->GetQuery() == active)
        setCurrentIndex(i);
    }
  });
}

// ---------------------------------------------------------------------------------------
// TqxQueryTabSheet

TqxQueryTabSheet::TqxQueryTabSheet(TqxQueryBuiderPageControl* Pages, TqxSubQuery* Query)
    : Pages_(Pages), Query_(Query) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  Stack_ = new QStackedWidget(this);
  layout->addWidget(Stack_);
  // The bar floats over the work area of the shown operand, outside the layout.
  NavBar_ = new TqxUnionNavBar(this);
  connect(Stack_, &QStackedWidget::currentChanged, this, [this] { PlaceNavBar(); });
  Pages_->Quietly([&] {
    Pages_->addTab(this, QString::fromStdString(Pages_->GetBuilder()->GetTabHeaderText(Query)));
  });
}

void TqxQueryTabSheet::UpdateContent() {
  if (Query_ == nullptr)
    return;
  const int index = Pages_->indexOf(this);
  if (index >= 0)
    Pages_->setTabText(index,
                       QString::fromStdString(Pages_->GetBuilder()->GetTabHeaderText(Query_)));
  // The page of the active operand is the one shown.
  if (TqxUnionSubQuery* operand = Query_->GetActiveUnionSubquery()) {
    if (auto* control = dynamic_cast<TqxWidgetControl*>(operand->GetControl())) {
      if (control->GetWidget() != nullptr && control->GetWidget() != Stack_->currentWidget())
        Stack_->setCurrentWidget(control->GetWidget());
    }
  }
  NavBar_->AlignControls();
}

void TqxQueryTabSheet::PlaceNavBar() {
  // A released sheet waits for its deferred deletion after the builder may be gone; the
  // work areas it watches can still deliver events until then.
  if (NavBar_ == nullptr || Query_ == nullptr)
    return;
  TqxQueryBuilder* builder = Pages_->GetBuilder();
  QRect area = rect();
  auto* page = qobject_cast<TqxUnionSubQueryTabSheet*>(Stack_->currentWidget());
  if (page != nullptr) {
    TqxQueryBuilderWorkArea* work = page->GetWorkArea();
    const QRect client = work->viewport()->geometry();
    area = QRect(work->mapTo(this, client.topLeft()), client.size());
    // A missing scroll bar's room is kept free, so the bar stays put when one shows.
    if (!work->verticalScrollBar()->isVisibleTo(work))
      area.setRight(area.right() - style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, work));
    if (!work->horizontalScrollBar()->isVisibleTo(work))
      area.setBottom(area.bottom() -
                     style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, work));
  }
  const int width = NavBar_->CalcWidth();
  const int height = TqxUnionNavBar::kHeight;
  const TqxUnionNavBarPosition pos = builder->GetUnionNavBarPos();
  const int left =
      pos == unbTopLeft || pos == unbBottomLeft ? area.left() : area.right() + 1 - width;
  const int top = pos == unbTopRight || pos == unbTopLeft ? area.top() : area.bottom() + 1 - height;
  NavBar_->setGeometry(left, top, width, height);
  NavBar_->raise();
}

void TqxQueryTabSheet::resizeEvent(QResizeEvent* Event) {
  QWidget::resizeEvent(Event);
  PlaceNavBar();
}

bool TqxQueryTabSheet::eventFilter(QObject* Watched, QEvent* Event) {
  if (Event->type() == QEvent::Resize || Event->type() == QEvent::Move ||
      Event->type() == QEvent::LayoutRequest)
    PlaceNavBar();
  return QWidget::eventFilter(Watched, Event);
}

void TqxQueryTabSheet::MakeVisible() {
  Pages_->Quietly([&] { Pages_->setCurrentWidget(this); });
}

void TqxQueryTabSheet::ControlReleased() {
  Query_ = nullptr;
  Pages_->Quietly([&] {
    const int index = Pages_->indexOf(this);
    if (index >= 0)
      Pages_->removeTab(index);
  });
  hide();
  setParent(nullptr);
  deleteLater();
}

// ---------------------------------------------------------------------------------------
// TqxUnionSubQueryTabSheet

namespace {
// The panel below the splitter. The splitter first gives it its preferred height and
// the work area the rest, whenever the page is first laid out.
class TqxBottomPanel : public QWidget {
 public:
  TqxBottomPanel(TqxUnionSubQueryTabSheet* Page, QWidget* Parent) : QWidget(Parent), Page_(Page) {}
  QSize sizeHint() const override { return QSize(0, Page_->BottomPanelHeight()); }

 private:
  TqxUnionSubQueryTabSheet* Page_;
};
}  // namespace

TqxUnionSubQueryTabSheet::TqxUnionSubQueryTabSheet(TqxQueryBuilder* Builder,
                                                   TqxQueryTabSheet* TabSheet,
                                                   TqxUnionSubQuery* Operand)
    : QWidget(TabSheet->GetOperandPages()),
      Builder_(Builder),
      TabSheet_(TabSheet),
      Operand_(Operand) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  Splitter_ = new QSplitter(Qt::Vertical, this);
  Splitter_->setChildrenCollapsible(false);
  layout->addWidget(Splitter_);

  auto* inner = new QWidget(Splitter_);
  auto* innerLayout = new QVBoxLayout(inner);
  innerLayout->setContentsMargins(0, 0, 0, 0);
  WorkArea_ = new TqxQueryBuilderWorkArea(Builder, this);
  innerLayout->addWidget(WorkArea_);
  // The tab page keeps its union bar over the work area as it is resized.
  WorkArea_->installEventFilter(TabSheet);

  // The select-list grid will fill this panel.
  BottomPanel_ = new TqxBottomPanel(this, Splitter_);
  BottomPanel_->setObjectName(QStringLiteral("qorvexColumnsPane"));
  BottomPanel_->setAutoFillBackground(true);

  Splitter_->addWidget(inner);
  Splitter_->addWidget(BottomPanel_);
  Splitter_->setStretchFactor(0, 1);
  Splitter_->setStretchFactor(1, 0);
  UpdateLayout();
  TabSheet->GetOperandPages()->addWidget(this);
}

int TqxUnionSubQueryTabSheet::BottomPanelHeight() const {
  // A released page may outlive its builder until its deferred deletion.
  if (Operand_ == nullptr)
    return 0;
  const int fixed = Builder_->GetDefColumnsPaneHeight();
  return fixed != 0 ? fixed : Builder_->height() * 3 / 8;
}

void TqxUnionSubQueryTabSheet::UpdateLayout() {
  if (Operand_ == nullptr)
    return;
  Splitter_->setHandleWidth(Builder_->GetSplitterHeight());
}

void TqxUnionSubQueryTabSheet::RepaintControl() {
  WorkArea_->Canvas()->update();
}

void TqxUnionSubQueryTabSheet::MakeVisible() {
  TabSheet_->GetOperandPages()->setCurrentWidget(this);
  TabSheet_->MakeVisible();
}

void TqxUnionSubQueryTabSheet::ControlReleased() {
  Operand_ = nullptr;
  WorkArea_->Release();
  hide();
  TabSheet_->GetOperandPages()->removeWidget(this);
  deleteLater();
}

}  // namespace qorvex
