// Placement of new boxes, snapping and clamping of every proposed geometry, positions kept
// across re-assignment, and the pages of the builder.
#include <QScrollBar>
#include <QSplitter>

#include "gui/designer_fixture.h"

namespace qorvex::testing_gui {
namespace {

using Layout = DesignerTest;

// A diagram just wide enough for three columns: the fourth box goes under the first, 20 pixels
// below it, on the grid.
TEST_F(Layout, NewBoxesFillColumnsThenStackUnderTheFirst) {
  Load("select * from Customers c, Orders o, Items i");
  Box* first = BoxOf("Customers c");
  Builder->SetGridSize(8);
  TqxQueryBuilderWorkArea* area = WorkArea();
  const int extra = area->width() - area->viewport()->width();
  Builder->resize(270 + first->width() + 1 + extra, Builder->height());
  Settle();
  TqxDataSourceObject* added = nullptr;
  TqxQueryBuilderPrivate::Run(Builder.get(), [&] { added = Operand()->AddObject("Products"); });
  ASSERT_NE(added, nullptr);
  Box* fourth = BoxOf("Products");
  ASSERT_NE(fourth, nullptr);
  const int y = 10 + first->height() + 20;
  EXPECT_EQ(fourth->pos(), QPoint(8, y - y % 8)) << "snapped from (10, " << y << ")";
  ExpectBoxesMatchModel();
}

TEST_F(Layout, ABuilderWithoutWidthPlacesAsIfItWere800Wide) {
  // A builder inside a window that was never shown, sized to nothing.
  QWidget host;
  auto* builder = new TqxQueryBuilder(&host);
  builder->SetSyntaxProvider(&Syntax);
  builder->SetMetadataProvider(&Metadata);
  builder->resize(0, 0);
  builder->setSql(
      "select * from Customers, Orders, Items, Products, Customers c2, Orders o2, "
      "Items i2");
  Settle();
  std::vector<QPoint> tops;
  for (Box* box : builder->findChildren<Box*>())
    tops.push_back(box->pos());
  std::sort(tops.begin(), tops.end(),
            [](QPoint a, QPoint b) { return a.y() != b.y() ? a.y() < b.y() : a.x() < b.x(); });
  ASSERT_EQ(tops.size(), 7u);
  // Columns at 10, 140, ..., 660 fit in 800 pixels; the seventh box goes under the first.
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(tops[static_cast<size_t>(i)], QPoint(10 + 130 * i, 10)) << i;
  EXPECT_EQ(tops[6].x(), 10);
  EXPECT_GT(tops[6].y(), 10);
}

TEST_F(Layout, ProposedGeometriesAndMouseMovesSnapAndClamp) {
  Load("select * from Customers");
  Box* box = Boxes().front();
  box->setGeometry(16, 16, 90, 100);  // the current geometry decides what is a resize
  struct Case {
    bool snap;
    int grid;
    QRect proposed;
    QRect expected;
  };
  const Case cases[] = {
      {true, 8, {21, 16, 90, 100}, {16, 16, 90, 100}},    // a move keeps the size
      {true, 8, {21, 16, 100, 100}, {16, 16, 105, 100}},  // a resize keeps the far edge
      {true, 8, {16, 27, 90, 120}, {16, 24, 90, 123}},
      {true, 8, {-3, -9, 90, 100}, {0, 0, 90, 100}},  // never above or left of the origin
      {false, 8, {21, 27, 90, 100}, {21, 27, 90, 100}},
      {true, 0, {21, 27, 90, 100}, {21, 27, 90, 100}},
      {true, 2, {21, 27, 30, 900}, {20, 26, 50, 500}},  // size limits 50..400 x 0..500
  };
  for (const Case& c : cases) {
    Builder->SetSnapToGrid(c.snap);
    Builder->SetGridSize(c.grid);
    EXPECT_EQ(box->AdjustGeometry(c.proposed), c.expected)
        << "snap " << c.snap << " grid " << c.grid << " proposed " << c.proposed.x() << ","
        << c.proposed.y() << " " << c.proposed.width() << "x" << c.proposed.height();
  }
  // Code that sets the model's bounds goes through the same function.
  Builder->SetSnapToGrid(true);
  Builder->SetGridSize(8);
  box->GetDatasource()->SetLeft(37);
  EXPECT_EQ(box->x(), 32);

  // The mouse too.
  box->setGeometry(16, 16, 100, 120);
  const QPoint caption = box->CaptionRect().center() - QPoint(20, 0);
  Drag(box, caption, caption + QPoint(13, 7));  // (29, 23) snaps to (24, 16)
  EXPECT_EQ(box->geometry(), QRect(24, 16, 100, 120));
  Drag(box, caption, caption - QPoint(300, 300));  // clamped at the origin, size kept
  EXPECT_EQ(box->geometry(), QRect(0, 0, 100, 120));
  // The right edge dragged 9 pixels: only the width changes.
  const QPoint right(box->width() - 2, box->height() / 2);
  Drag(box, right, right + QPoint(9, 0));
  EXPECT_EQ(box->geometry(), QRect(0, 0, 109, 120));
  // The box's list follows its frame, and the diagram grows to hold the box.
  EXPECT_EQ(box->GetFieldsList()->geometry().right(), box->width() - box->FrameWidth() - 1);
  EXPECT_GE(WorkArea()->Canvas()->minimumWidth(), box->geometry().right());
}

TEST_F(Layout, TheSameStatementAgainKeepsWhereTheUserPutTheBoxes) {
  Load("select c.Name from Customers c inner join Orders o on c.Id = o.CustomerId");
  Box* customers = BoxOf("Customers c");
  customers->ProposeGeometry(QRect(300, 200, customers->width(), customers->height()));
  const QRect moved = customers->geometry();
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);

  Load("SELECT C.NAME FROM CUSTOMERS C INNER JOIN ORDERS O ON C.ID = O.CUSTOMERID");
  EXPECT_EQ(BoxOf("Customers c"), customers);
  EXPECT_EQ(customers->geometry(), moved);
  EXPECT_EQ(changed.count(), 0);

  // Another statement: the boxes it still has stay where they were, a new one is placed.
  const QPoint orders = BoxOf("Orders o")->pos();
  Load("select * from Orders o, Customers c, Products p");
  EXPECT_EQ(BoxOf("Orders o")->pos(), orders);
  EXPECT_EQ(BoxOf("Customers c")->geometry(), moved);
  EXPECT_EQ(BoxOf("Products p")->pos(), QPoint(270, 10));
  EXPECT_EQ(changed.count(), 1);
  ExpectBoxesMatchModel();
}

TEST_F(Layout, TuneSizeFitsTheRowsAndCalcFieldRectFollowsThem) {
  Load("select * from Items");
  Box* box = Boxes().front();
  auto* list = box->GetFieldsList();
  ASSERT_EQ(list->count(), 5);
  EXPECT_EQ(list->item(0)->text(), "*");
  EXPECT_EQ(list->item(4)->text(), "Quantity");
  EXPECT_EQ(list->height(), 5 * list->RowHeight() + 4);
  EXPECT_GE(list->width(), 80);

  const QRect price = box->CalcFieldRect("price", false);  // names compare ignoring case
  EXPECT_EQ(price.top(), 3 * list->RowHeight());
  EXPECT_EQ(price.left(), 0);
  EXPECT_EQ(box->CalcFieldRect("price", true).left(), -box->FrameWidth());
  EXPECT_EQ(box->CalcFieldRect("Nope", false),
            QRect(QPoint(0, -box->CaptionHeight()), QPoint(list->width() - 1, -1)));
  EXPECT_TRUE(box->CalcFieldRect("Nope", true).isNull());

  // A row scrolled out of view collapses onto the list's edge.
  box->ProposeGeometry(QRect(box->pos(), QSize(box->width(), box->ClientOrigin().y() + 30)));
  list->scrollToBottom();
  EXPECT_EQ(box->CalcFieldRect("*", false).top(), 0);
  EXPECT_EQ(box->CalcFieldRect("*", false).bottom(), 0);
}

TEST_F(Layout, PagesFollowTheSubQueriesAndTheBottomPanelHeight) {
  Load("select * from Customers c where c.Id in (select o.CustomerId from Orders o)");
  auto* pages = Builder->findChild<TqxQueryBuiderPageControl*>();
  ASSERT_EQ(pages->count(), 2);
  EXPECT_EQ(pages->tabText(1), "SubQuery 1");
  Load("select * from Customers");
  EXPECT_EQ(pages->count(), 1) << "the sub-query's tab goes with it";

  // The bottom panel: three eighths of the builder's height, or DefColumnsPaneHeight.
  auto* page = WorkArea()->GetPage();
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->GetBottomPanel()->height(), Builder->height() * 3 / 8);
  EXPECT_EQ(page->GetSplitter()->handleWidth(), 3);
  Builder->setSplitterHeight(6);
  EXPECT_EQ(page->GetSplitter()->handleWidth(), 6);
  Builder->SetDefColumnsPaneHeight(150);
  Load("select * from Orders");
  page = WorkArea()->GetPage();
  EXPECT_EQ(page->GetBottomPanel()->height(), 150);
}

}  // namespace
}  // namespace qorvex::testing_gui
