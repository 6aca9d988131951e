// Links on the diagram: where the link controls go, what their lines answer to, what each
// painter style draws, and editing links with the mouse and the keyboard.
#include <QContextMenuEvent>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>

#include "designer/link_control.h"
#include "designer_fixture.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/designer/link_painters.h"

namespace qorvex::testing_gui {
namespace {

// ---------------------------------------------------------------------------------------
// Placement and hit test, on plain rectangles

TEST(LinkGeometry, PlacementPicksSidesAndBoundsAndHoldsTheWholeLine) {
  // Field rows 100 wide (x 0..99) and 16 high, frame included.
  const struct {
    const char* name;
    QRect a, b, bounds;
    TqxQueryBuilderLinkConnectToSide left, right;
  } cases[] = {
      // A gap of 10 is widened to 16 round its middle (105), then enlarged.
      {"side by side, gap 10", QRect(0, 40, 100, 16), QRect(110, 80, 100, 16),
       QRect(100 + 10 - 16 - 2, 40 - 20, 32 - 10 + 4, 56 + 41), csRight, csLeft},
      {"wide gap", QRect(0, 40, 100, 16), QRect(300, 40, 100, 16), QRect(98, 20, 204, 57), csRight,
       csLeft},
      {"B left of A", QRect(300, 40, 100, 16), QRect(0, 10, 100, 16), QRect(98, -10, 204, 46 + 41),
       csLeft, csRight},
      // Same left and right: a tie loops round the left sides.
      {"stacked", QRect(50, 10, 100, 16), QRect(50, 200, 100, 16),
       QRect(50 - 16 - 2, -10, 16 + 4, 206 + 41), csLeft, csLeft},
      {"overlap, lefts closer", QRect(50, 10, 100, 16), QRect(60, 200, 300, 16),
       QRect(50 - 16 - 2, -10, 26 + 4, 247), csLeft, csLeft},
      // Rights closer: the loop lies right of the farther right edge.
      {"overlap, rights closer", QRect(50, 10, 100, 16), QRect(0, 200, 145, 16),
       QRect(145 - 2, -10, 150 + 16 - 145 + 4, 247), csRight, csRight},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const TqxLinkPlacement placement = CalcLinkPlacement(c.a, c.b);
    EXPECT_EQ(placement.Bounds, c.bounds);
    EXPECT_EQ(placement.LeftSide, c.left);
    EXPECT_EQ(placement.RightSide, c.right);
    const TqxQueryBuilderPointArray points =
        CalcLinkPoints(c.a, c.b, placement.LeftSide, placement.RightSide);
    // Ends on the rows' middles, stubs 16 long, everything inside the control with room
    // above for the cardinality marks.
    EXPECT_EQ(points[0].y(), c.a.y() + 8);
    EXPECT_EQ(points[3].y(), c.b.y() + 8);
    EXPECT_EQ(std::abs(points[1].x() - points[0].x()), 16);
    EXPECT_EQ(std::abs(points[2].x() - points[3].x()), 16);
    for (const QPoint& p : points) {
      EXPECT_TRUE(placement.Bounds.adjusted(2, 20, -1, -20).contains(p)) << p.x() << "," << p.y();
    }
  }
}

TEST(LinkGeometry, HitTestAnswersWithinSixPixelsOfEachKindOfStretch) {
  // Each line with points that hit it (within 6 pixels) and points that miss (7 out, beyond
  // an end, far away).
  const struct {
    const char* name;
    TqxQueryBuilderPointArray points;
    std::vector<QPoint> hits, misses;
  } cases[] = {
      {"a horizontal stub and a vertical drop",
       {QPoint(10, 10), QPoint(26, 10), QPoint(26, 110), QPoint(42, 110)},
       {QPoint(18, 16), QPoint(18, 4), QPoint(32, 60)},
       {QPoint(18, 17), QPoint(4, 10), QPoint(33, 60), QPoint(19, 60)}},
      {"an oblique run",
       {QPoint(0, 0), QPoint(16, 0), QPoint(56, 20), QPoint(72, 20)},
       {QPoint(36, 10), QPoint(36, 16), QPoint(46, 9)},
       {QPoint(36, 17), QPoint(200, 200)}},
      {"a steep run",
       {QPoint(0, 0), QPoint(16, 0), QPoint(26, 80), QPoint(42, 80)},
       {QPoint(27, 40)},
       {QPoint(28, 40)}},
  };
  for (const auto& c : cases) {
    for (const QPoint& p : c.hits)
      EXPECT_TRUE(LinkLineHitTest(c.points, p)) << c.name << " at " << p.x() << "," << p.y();
    for (const QPoint& p : c.misses)
      EXPECT_FALSE(LinkLineHitTest(c.points, p)) << c.name << " at " << p.x() << "," << p.y();
  }
}

// ---------------------------------------------------------------------------------------
// Painters, on an image

class LinkPainting : public DesignerTest {
 protected:
  static constexpr QRgb kBackground = qRgb(180, 200, 255);

  void SetUp() override {
    DesignerTest::SetUp();
    RelateOrdersToCustomers();
  }

  // A link whose left end keeps all its rows (outer) and whose right end is inner; the
  // foreign key makes the left end "one" and the right end "many".
  TqxLink* LeftJoin() {
    Load("select * from Customers c left join Orders o on c.Id = o.CustomerId");
    TqxLink* link = Operand()->GetDatasources()[1]->GetJoins(0);
    EXPECT_EQ(link->GetLeftType(), ctOuter);
    EXPECT_EQ(link->GetRightType(), ctInner);
    EXPECT_EQ(link->GetLeftCardinality(), qblcOne);
    EXPECT_EQ(link->GetRightCardinality(), qblcMany);
    return link;
  }

  // A straight line from (20, 50) to (100, 50), leaving the left box to the right.
  static TqxQueryBuilderPointArray Straight() {
    return {QPoint(20, 50), QPoint(36, 50), QPoint(84, 50), QPoint(100, 50)};
  }

  // Paints a link on a 130 x 90 image; with an Origin, painted that far into a bigger image
  // and cut out again: the marks are copied from kept images and must land the same.
  QImage Paint(TqxQueryBuilderLinkPainter& Painter, bool Focused, const TqxLink* Link,
               const TqxQueryBuilderPointArray& Points = Straight(), QPoint Origin = {}) {
    QImage image(130 + Origin.x(), 90 + Origin.y(), QImage::Format_RGB32);
    image.fill(kBackground);
    QPainter canvas(&image);
    canvas.translate(Origin);
    Painter.PaintLink(canvas, Points, Focused, csRight, csLeft, Link);
    canvas.end();
    return image.copy(Origin.x(), Origin.y(), 130, 90);
  }

  static QColor At(const QImage& Image, int X, int Y) { return Image.pixelColor(X, Y); }
  // Pixels of Color in column X between Top and Bottom.
  static int Count(const QImage& Image, int X, int Top, int Bottom, const QColor& Color) {
    int n = 0;
    for (int y = Top; y <= Bottom; ++y)
      n += Image.pixel(X, y) == Color.rgb() ? 1 : 0;
    return n;
  }
};

TEST_F(LinkPainting, SimpleStyleDrawsALineWithAnArrowForOuterAndACircleForInner) {
  TqxLink* link = LeftJoin();
  TqxQueryBuilderLinkPainterSimple painter(Builder.get());
  for (bool focused : {false, true}) {
    SCOPED_TRACE(focused ? "focused" : "not focused");
    const QImage image = Paint(painter, focused, link);
    EXPECT_EQ(Paint(painter, focused, link, Straight(), QPoint(7, 11)), image);
    EXPECT_EQ(Count(image, 60, 44, 56, Qt::black), focused ? 2 : 1);
    // Left end outer: a white arrow with its tip on the box edge, nothing behind the tip.
    EXPECT_EQ(At(image, 25, 50), QColor(Qt::white));
    EXPECT_EQ(At(image, 22, 47).rgb(), kBackground);
    // Right end inner: a white circle from the edge 8 pixels out.
    EXPECT_EQ(At(image, 96, 50), QColor(Qt::white));
    EXPECT_EQ(At(image, 98, 47), QColor(Qt::white));
  }
  painter.SetLinkColor(0xFF0000);
  painter.SetLinkShapesColor(0x00FF00);
  const QImage coloured = Paint(painter, false, link);
  EXPECT_EQ(At(coloured, 60, 50), QColor(255, 0, 0));
  EXPECT_EQ(At(coloured, 96, 50), QColor(0, 255, 0));
}

TEST_F(LinkPainting, MSSQLStyleDrawsABandWithADiamondAndOuterHalves) {
  TqxLink* link = LeftJoin();
  TqxQueryBuilderLinkPainterMSSQL painter(Builder.get());
  const QColor face = Builder->ToQColor(clBtnFace);
  const QColor shadow = Builder->ToQColor(clBtnShadow);
  ASSERT_NE(face, shadow);
  for (bool focused : {false, true}) {
    SCOPED_TRACE(focused ? "focused" : "not focused");
    const QImage image = Paint(painter, focused, link);
    EXPECT_EQ(Paint(painter, focused, link, Straight(), QPoint(7, 11)), image);
    // The band: three face-coloured rows between black edges; the lower edge is heavier
    // when focused.
    EXPECT_EQ(Count(image, 30, 49, 51, face), focused ? 2 : 3);
    EXPECT_EQ(Count(image, 30, 44, 56, Qt::black), focused ? 3 : 2);
    EXPECT_EQ(At(image, 30, 48), QColor(Qt::black));
    // The diamond at the middle, and the half rectangle on the outer (left) end's side.
    const QRgb fill = (focused ? shadow : face).rgb();
    EXPECT_EQ(At(image, 60, 46).rgb(), fill);
    EXPECT_EQ(At(image, 55, 45).rgb(), fill);
    EXPECT_EQ(At(image, 65, 45).rgb(), kBackground);
  }
}

TEST_F(LinkPainting, AccessStyleDrawsHeavyStubsEndMarksAndCardinalityMarks) {
  TqxLink* link = LeftJoin();
  TqxQueryBuilderLinkPainterAccess painter(Builder.get());
  const QImage& one = LinkCardinalityImage(qblcOne);
  const QImage& many = LinkCardinalityImage(qblcMany);
  ASSERT_FALSE(one.isNull());
  ASSERT_FALSE(many.isNull());
  EXPECT_TRUE(LinkCardinalityImage(qblcUnknown).isNull());
  EXPECT_NE(one, many);
  for (bool focused : {false, true}) {
    SCOPED_TRACE(focused ? "focused" : "not focused");
    const QImage image = Paint(painter, focused, link);
    EXPECT_EQ(Paint(painter, focused, link, Straight(), QPoint(7, 11)), image);
    EXPECT_EQ(Count(image, 60, 44, 56, Qt::black), focused ? 2 : 1);
    EXPECT_EQ(Count(image, 30, 47, 56, Qt::black), 2);  // stubs always heavy
    EXPECT_EQ(Count(image, 90, 47, 56, Qt::black), 2);
    // Outer left end: a filled arrow 4 long; inner right end: a filled circle 6 wide.
    EXPECT_EQ(At(image, 23, 48), QColor(Qt::black));
    EXPECT_EQ(At(image, 97, 48), QColor(Qt::black));
  }
  // "1" above the left stub, "many" above the right one, drawn through their transparency.
  const QImage image = Paint(painter, false, link);
  auto expectMark = [&](const QImage& Mark, QPoint Stub) {
    const QImage mark = Mark.convertToFormat(QImage::Format_ARGB32);
    const QPoint origin = TqxQueryBuilderLinkPainterAccess::CardinalitySymbolOrigin(Stub, Mark);
    EXPECT_EQ(origin.y() + mark.height() + 4, Stub.y());
    int opaque = 0;
    for (int y = 0; y < mark.height(); ++y) {
      for (int x = 0; x < mark.width(); ++x) {
        const bool ink = qAlpha(mark.pixel(x, y)) > 0;
        opaque += ink ? 1 : 0;
        const QRgb seen = image.pixel(origin + QPoint(x, y));
        if (ink)
          EXPECT_EQ(seen, mark.pixel(x, y) | 0xFF000000u) << x << "," << y;
        else
          EXPECT_EQ(seen, kBackground) << x << "," << y;
      }
    }
    EXPECT_GT(opaque, 5);
  };
  expectMark(one, QPoint(28, 50));
  expectMark(many, QPoint(92, 50));
  // Without known cardinalities nothing is drawn above the stubs.
  const QImage plain = Paint(painter, false, nullptr);
  for (int y = 0; y < 44; ++y)
    EXPECT_EQ(plain.pixel(28, y), kBackground) << y;
}

// Along a slanted stretch every column of the band reads edge, three face rows, edge.
TEST_F(LinkPainting, MSSQLBandKeepsItsRowsAlongASlantedStretch) {
  TqxQueryBuilderLinkPainterMSSQL painter(Builder.get());
  const QRgb face = Builder->ToQColor(clBtnFace).rgb();
  const QRgb black = qRgb(0, 0, 0);
  for (const TqxQueryBuilderPointArray& points :
       {TqxQueryBuilderPointArray{QPoint(10, 20), QPoint(26, 20), QPoint(86, 37), QPoint(102, 37)},
        TqxQueryBuilderPointArray{QPoint(102, 37), QPoint(86, 37), QPoint(26, 20),
                                  QPoint(10, 20)}}) {
    const QImage image = Paint(painter, false, nullptr, points);
    for (int x = 28; x <= 48; ++x) {
      std::string column;
      for (int y = 10; y < 50; ++y) {
        const QRgb p = image.pixel(x, y);
        column += p == black ? 'E' : p == face ? 'f' : p == kBackground ? '.' : '?';
      }
      const auto first = column.find_first_not_of('.');
      const auto last = column.find_last_not_of('.');
      ASSERT_NE(first, std::string::npos) << x;
      EXPECT_EQ(column.substr(first, last - first + 1), "EfffE") << "column " << x;
    }
  }
}

// DrawLine fills straight stretches itself: the pixels must be the raster engine's own.
TEST(LinkLines, DrawLineSetsThePixelsOfTheEnginesPolyline) {
  const struct {
    const char* name;
    TqxQueryBuilderPointArray points;
  } cases[] = {
      {"straight", {QPoint(5, 20), QPoint(21, 20), QPoint(60, 20), QPoint(76, 20)}},
      {"backwards", {QPoint(76, 20), QPoint(60, 20), QPoint(21, 20), QPoint(5, 20)}},
      {"slanted", {QPoint(5, 10), QPoint(21, 10), QPoint(60, 33), QPoint(76, 33)}},
      {"steep", {QPoint(30, 2), QPoint(46, 2), QPoint(40, 38), QPoint(56, 38)}},
      {"loop", {QPoint(40, 8), QPoint(24, 8), QPoint(24, 30), QPoint(40, 30)}},
  };
  for (const auto& c : cases) {
    for (int width : {1, 2}) {
      for (int offset : {-2, 0, 1}) {
        QImage drawn(90, 45, QImage::Format_RGB32);
        drawn.fill(Qt::white);
        QImage expected = drawn;
        {
          QPainter painter(&drawn);
          painter.translate(3, 2);
          TqxQueryBuilderLinkPainter::DrawLine(painter, c.points, width, offset, Qt::black);
        }
        {
          QPainter painter(&expected);
          painter.translate(3, 2);
          TqxQueryBuilderPointArray moved = c.points;
          for (QPoint& point : moved)
            point.ry() += offset;
          painter.setPen(QPen(Qt::black, width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
          painter.drawPolyline(moved.data(), 4);
        }
        EXPECT_EQ(drawn, expected) << c.name << " width " << width << " offset " << offset;
      }
    }
  }
}

// ---------------------------------------------------------------------------------------
// The registry and the builder's painter

TEST(LinkPainters, RegistryCreatesByClassNameAndStyleInRegistrationOrder) {
  TqxQueryBuilderLinkPainters& registry = TqxQueryBuilderLinkPainters::Instance();
  std::vector<std::string> names;
  registry.GetUserNames([&](const std::string& Name) { names.push_back(Name); });
  ASSERT_GE(names.size(), 3u);
  EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 3),
            (std::vector<std::string>{"Simple", "MS SQL Style", "Access Style"}));
  const struct {
    const char* className;
    const char* style;
  } styles[] = {{"TqxQueryBuilderLinkPainterSimple", "Simple"},
                {"TqxQueryBuilderLinkPainterMSSQL", "MS SQL Style"},
                {"TqxQueryBuilderLinkPainterAccess", "Access Style"}};
  for (const auto& s : styles) {
    auto byName = registry.CreateByName(s.className, nullptr);
    ASSERT_NE(byName, nullptr) << s.className;
    EXPECT_EQ(byName->PainterStyle(), s.style);
    EXPECT_EQ(TqxQueryBuilderLinkPainters::GetPainterStyle(byName->ClassType()), s.style);
    auto byStyle = registry.CreateByUserName(s.style, nullptr);
    ASSERT_NE(byStyle, nullptr) << s.style;
    EXPECT_EQ(byStyle->ClassType().ClassName(), s.className);
  }
  // Exact names only.
  EXPECT_EQ(registry.CreateByName("tqxquerybuilderlinkpaintersimple", nullptr), nullptr);
  EXPECT_EQ(registry.CreateByUserName("simple", nullptr), nullptr);
  EXPECT_EQ(FallbackLinkPainter().PainterStyle(), "Access Style");
}

class Links : public DesignerTest {
 protected:
  // Customers at (10, 10), Orders to its right with a gap of Gap pixels, same width.
  void PlaceSideBySide(Box* Left, Box* Right, int Gap) {
    Left->ProposeGeometry(QRect(10, 10, 120, 100));
    Right->ProposeGeometry(QRect(10 + 120 + Gap, 60, 120, 100));
    ASSERT_EQ(Right->x(), 10 + 120 + Gap);
  }

  TqxQueryBuilderLinkControl* OnlyLink() {
    const auto& links = WorkArea()->LinkControls();
    return links.size() == 1 ? links.front() : nullptr;
  }

  // A field row's middle on its box's edge, in canvas coordinates.
  static QPoint RowEdge(Box* B, const QString& Field, bool Right) {
    const QRect r = B->CalcFieldRect(Field, true).translated(B->pos() + B->ClientOrigin());
    return QPoint(Right ? r.x() + r.width() : r.x(), (r.y() + r.y() + r.height()) / 2);
  }

  static QPoint ToCanvas(TqxQueryBuilderLinkControl* Link, int Index) {
    return Link->GetPoints()[static_cast<std::size_t>(Index)] + Link->pos();
  }

  QWidget* Canvas() { return WorkArea()->Canvas(); }
};

TEST_F(Links, ALinkFollowsItsRowsWhenBoxesMoveAndListsScroll) {
  Load("select * from Customers c inner join Orders o on c.Id = o.CustomerId");
  Box* customers = BoxOf("Customers c");
  Box* orders = BoxOf("Orders o");
  ASSERT_TRUE(customers && orders);
  PlaceSideBySide(customers, orders, 10);
  TqxQueryBuilderLinkControl* link = OnlyLink();
  ASSERT_NE(link, nullptr);
  ASSERT_TRUE(link->isVisible());
  // The 10-pixel gap: 26 wide, straddling the gap's middle.
  EXPECT_EQ(link->width(), 26);
  EXPECT_EQ(link->x() + link->width() / 2, customers->geometry().right() + 1 + 5);
  EXPECT_EQ(link->GetLeftSide(), csRight);
  EXPECT_EQ(link->GetRightSide(), csLeft);
  EXPECT_EQ(ToCanvas(link, 0), RowEdge(customers, "Id", true));
  EXPECT_EQ(ToCanvas(link, 3), RowEdge(orders, "CustomerId", false));

  // Moving the left box (whose join the link is not part of) re-places the link too.
  customers->ProposeGeometry(QRect(10, 200, 120, 100));
  EXPECT_EQ(ToCanvas(link, 0), RowEdge(customers, "Id", true));
  // Stacked exactly: both ends leave from the left and loop 16 pixels out.
  orders->ProposeGeometry(QRect(10, 400, 120, 100));
  EXPECT_EQ(link->GetLeftSide(), csLeft);
  EXPECT_EQ(link->GetRightSide(), csLeft);
  EXPECT_EQ(ToCanvas(link, 1).x(), customers->x() - 16);
  EXPECT_EQ(ToCanvas(link, 2).x(), orders->x() - 16);
  EXPECT_EQ(link->x(), 0 + customers->x() - 16 - 2);

  // A row scrolled out of a list one row high sticks to the list's top, then its bottom
  // edge.
  auto* list = orders->GetFieldsList();
  const int rowHeight = list->RowHeight();
  orders->ProposeGeometry(
      QRect(300, 400, 120, orders->ClientOrigin().y() + orders->FrameWidth() + rowHeight + 2));
  ASSERT_EQ(list->height(), rowHeight + 2);
  const QRect listInCanvas(orders->pos() + list->pos(), list->size());
  list->verticalScrollBar()->setValue(list->verticalScrollBar()->maximum());
  ASSERT_LT(list->visualItemRect(list->item(2)).bottom(), 0);
  EXPECT_EQ(ToCanvas(link, 3).y(), listInCanvas.top());
  list->verticalScrollBar()->setValue(0);
  ASSERT_GE(list->visualItemRect(list->item(2)).top(), list->height());
  EXPECT_EQ(ToCanvas(link, 3).y(), listInCanvas.top() + list->height() - 1);
  // Back in view, the end is on the row's middle again.
  list->scrollToItem(list->item(2), QAbstractItemView::PositionAtTop);
  EXPECT_EQ(ToCanvas(link, 3), RowEdge(orders, "CustomerId", false));
}

TEST_F(Links, PressesOnTheLineFocusTheLinkAndDeleteRemovesTheJoin) {
  Load("select * from Customers c inner join Orders o on c.Id = o.CustomerId");
  Box* customers = BoxOf("Customers c");
  Box* orders = BoxOf("Orders o");
  PlaceSideBySide(customers, orders, 80);
  TqxQueryBuilderLinkControl* link = OnlyLink();
  ASSERT_NE(link, nullptr);
  const QPoint stub = ToCanvas(link, 0) + QPoint(8, 0);
  // Seven pixels off the stub: the diagram gets the press, nothing is focused.
  QTest::mouseClick(Canvas(), Qt::LeftButton, Qt::NoModifier, stub + QPoint(0, 7));
  EXPECT_EQ(WorkArea()->GetFocusedControl(), nullptr);
  EXPECT_EQ(WorkArea()->LinkAt(stub + QPoint(0, 7)), nullptr);
  QTest::mouseClick(Canvas(), Qt::LeftButton, Qt::NoModifier, stub + QPoint(0, 6));
  EXPECT_EQ(WorkArea()->GetFocusedControl(), link);
  EXPECT_TRUE(link->IsFocused());
  // A box under the link's bounds still takes its own clicks.
  QTest::mouseClick(customers->GetFieldsList()->viewport(), Qt::LeftButton, Qt::NoModifier,
                    RowCenter(customers, 1));
  EXPECT_EQ(WorkArea()->GetFocusedControl(), customers);
  QTest::mouseClick(Canvas(), Qt::LeftButton, Qt::NoModifier, stub);
  ASSERT_EQ(WorkArea()->GetFocusedControl(), link);

  QTest::keyClick(Canvas(), Qt::Key_Delete);
  Settle();
  EXPECT_EQ(Operand()->GetDatasources()[1]->GetJoinsCount(), 0);
  EXPECT_EQ(Sql().find("CustomerId"), std::string::npos) << Sql();
  EXPECT_TRUE(WorkArea()->LinkControls().empty());
  EXPECT_EQ(WorkArea()->GetFocusedControl(), nullptr);
  EXPECT_TRUE(Errors.empty());
}

TEST_F(Links, TheLinkMenuOffersRemoveAndEditAndRunsRemove) {
  Load("select * from Customers c inner join Orders o on c.Id = o.CustomerId");
  PlaceSideBySide(BoxOf("Customers c"), BoxOf("Orders o"), 80);
  TqxQueryBuilderLinkControl* link = OnlyLink();
  ASSERT_NE(link, nullptr);
  ChooseInMenus("Remove");
  const QPoint onLine = ToCanvas(link, 0) + QPoint(5, 1);
  QContextMenuEvent event(QContextMenuEvent::Mouse, onLine, Canvas()->mapToGlobal(onLine));
  QApplication::sendEvent(Canvas(), &event);
  Settle();
  EXPECT_EQ(MenuCaptions, QStringList({"Remove", "Edit...", "-", "About Qorvex..."}));
  EXPECT_EQ(Bold, QStringList{"Edit..."});
  EXPECT_EQ(Sql().find("CustomerId"), std::string::npos) << Sql();
  EXPECT_TRUE(WorkArea()->LinkControls().empty());
}

// Field rows dragged with the mouse: a drag starts three pixels out; a row dropped on another
// box's row joins the two and the link is drawn at once; any other drop changes nothing.
TEST_F(Links, AFieldDroppedOnAnotherBoxJoinsThemAndTheLinkIsDrawnAtOnce) {
  Load("select * from Customers c, Orders o");
  Box* customers = BoxOf("Customers c");
  Box* orders = BoxOf("Orders o");
  PlaceSideBySide(customers, orders, 60);
  // Room below the rows of the target, to drop on empty list space.
  orders->ProposeGeometry(QRect(orders->pos(), orders->size() + QSize(0, 60)));
  auto* source = customers->GetFieldsList();
  auto* target = orders->GetFieldsList();
  const std::string before = Sql();
  const QPoint start = RowCenter(customers, 2);
  for (const auto& [move, drags] : {std::pair{QPoint(2, 0), false},
                                    {QPoint(2, -2), false},
                                    {QPoint(0, 2), false},
                                    {QPoint(3, 0), true},
                                    {QPoint(0, -3), true},
                                    {QPoint(-3, 2), true}}) {
    QTest::mousePress(source->viewport(), Qt::LeftButton, Qt::NoModifier, start);
    EXPECT_EQ(source->GetPressPoint(), start);
    MoveWithButton(source->viewport(), start + move);
    EXPECT_EQ(source->IsDragging(), drags) << move.x() << "," << move.y();
    QTest::mouseRelease(source->viewport(), Qt::LeftButton, Qt::NoModifier, start + move);
    EXPECT_EQ(source->GetPressPoint(), QPoint(-1, -1));
    EXPECT_FALSE(source->IsDragging());
  }
  const std::pair<const char*, QPoint> refused[] = {
      {"the * row", target->viewport()->mapToGlobal(RowCenter(orders, 0))},
      {"below the rows", target->viewport()->mapToGlobal(
                             QPoint(10, target->visualItemRect(target->item(3)).bottom() + 2))},
      {"the same box", source->viewport()->mapToGlobal(RowCenter(customers, 2))},
      {"the empty diagram", Canvas()->mapToGlobal(QPoint(600, 300))},
      {"the caption of the other box", orders->mapToGlobal(orders->CaptionRect().center())},
  };
  for (const auto& [where, point] : refused) {
    DragField(customers, 1, point);
    EXPECT_EQ(Sql(), before) << where;
  }
  DragField(customers, 0, target->viewport()->mapToGlobal(RowCenter(orders, 2)));
  EXPECT_EQ(Sql(), before) << "a drag from \"*\" is no field drag";

  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);
  DragField(customers, 1, orders->GetFieldsList()->viewport()->mapToGlobal(RowCenter(orders, 2)));
  EXPECT_EQ(changed.count(), 1);
  EXPECT_NE(Sql().find("ON c.Id=o.CustomerId"), std::string::npos) << Sql();
  EXPECT_FALSE(customers->GetFieldsList()->IsDragging());
  ExpectBoxesMatchModel();
  TqxQueryBuilderLinkControl* link = OnlyLink();
  ASSERT_NE(link, nullptr) << Sql();
  EXPECT_TRUE(link->isVisible());
  EXPECT_EQ(ToCanvas(link, 0), RowEdge(customers, "Id", true));
  EXPECT_EQ(ToCanvas(link, 3), RowEdge(orders, "CustomerId", false));
  // The diagram shows the line: dark pixels in the middle of the gap.
  const QImage shot = Canvas()->grab().toImage();
  const QPoint middle = (ToCanvas(link, 1) + ToCanvas(link, 2)) / 2;
  int dark = 0;
  for (int y = middle.y() - 3; y <= middle.y() + 3; ++y)
    dark += qGray(shot.pixel(middle.x(), y)) < 60 ? 1 : 0;
  EXPECT_GE(dark, 1);

  // Fields of another union operand never meet: their boxes are on other diagrams.
  EXPECT_TRUE(target->CanAcceptDrop(source, 1));
  EXPECT_FALSE(target->CanAcceptDrop(target, 1));
  TqxUnionSubQuery* second = nullptr;
  TqxQueryBuilderPrivate::Run(Builder.get(), [&] {
    second = Operand()->GetParentGroup()->Add();
    second->AddObject("Items");
  });
  ASSERT_NE(second, nullptr);
  const std::vector<Box*> boxes = Boxes();
  auto items = std::find_if(boxes.begin(), boxes.end(), [&](Box* B) {
    return B->GetDatasource()->GetUnionSubQuery() == second;
  });
  ASSERT_NE(items, boxes.end());
  EXPECT_FALSE((*items)->GetFieldsList()->CanAcceptDrop(source, 1));
}

TEST_F(Links, TheBuilderOwnsItsPainterAndFallsBackToAccessStyle) {
  EXPECT_EQ(Builder->GetLinkTypeName(), "TqxQueryBuilderLinkPainterAccess");
  Load("select * from Customers c inner join Orders o on c.Id = o.CustomerId");
  PlaceSideBySide(BoxOf("Customers c"), BoxOf("Orders o"), 80);
  TqxQueryBuilderLinkControl* link = OnlyLink();
  ASSERT_NE(link, nullptr);
  // Black pixels across the left stub: two for the Access style's heavy stub, one for
  // the simple style's thin line.
  auto stubInk = [&] {
    Settle();
    const QImage shot = Canvas()->grab().toImage();
    const QPoint stub = ToCanvas(link, 0) + QPoint(12, 0);
    int ink = 0;
    for (int y = stub.y() - 4; y <= stub.y() + 4; ++y)
      ink += qGray(shot.pixel(stub.x(), y)) < 40 ? 1 : 0;
    return ink;
  };
  EXPECT_EQ(stubInk(), 2);
  Builder->SetLinkTypeName("TqxQueryBuilderLinkPainterSimple");
  ASSERT_NE(Builder->GetLinkPainter(), nullptr);
  EXPECT_EQ(Builder->GetLinkPainter()->PainterStyle(), "Simple");
  EXPECT_EQ(stubInk(), 1);
  Builder->SetLinkPainter(nullptr);
  EXPECT_EQ(Builder->GetLinkTypeName(), "");
  EXPECT_EQ(stubInk(), 2);
  Builder->SetLinkTypeName("TqxQueryBuilderLinkPainterSimple");
  Builder->SetLinkTypeName("NoSuchPainter");
  EXPECT_EQ(Builder->GetLinkPainter(), nullptr);
  EXPECT_EQ(stubInk(), 2);
}

}  // namespace
}  // namespace qorvex::testing_gui
