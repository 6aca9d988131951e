// Edits made on screen: ticking, dragging fields into links, removing boxes, menus, and
// input that must change nothing.
#include <QImage>
#include <QLineEdit>
#include <QScrollBar>
#include <map>

#include "gui/designer_fixture.h"

namespace qorvex::testing_gui {
namespace {

using Editing = DesignerTest;

TEST_F(Editing, TickingStarAndFieldsWritesTheSelectListOnceAndTheRowsShowIt) {
  Load("select c.Name from Customers c");
  Box* box = BoxOf("Customers c");
  ASSERT_NE(box, nullptr);
  auto* list = box->GetFieldsList();
  ASSERT_EQ(list->count(), 4);
  EXPECT_EQ(list->item(2)->checkState(), Qt::Checked) << "Name is in the select list";
  EXPECT_EQ(list->item(0)->checkState(), Qt::Unchecked);
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);

  ClickCheck(box, 0);  // "*"
  EXPECT_EQ(changed.count(), 1);
  EXPECT_NE(Sql().find("c.*"), std::string::npos) << Sql();
  EXPECT_EQ(list->item(0)->checkState(), Qt::Checked);

  ClickCheck(box, 3);  // Country
  EXPECT_EQ(changed.count(), 2);
  EXPECT_NE(Sql().find("c.Country"), std::string::npos) << Sql();

  ClickCheck(box, 0);
  ClickCheck(box, 2);
  EXPECT_EQ(changed.count(), 4);
  EXPECT_EQ(Sql().find("c.*"), std::string::npos) << Sql();
  EXPECT_EQ(Sql().find("c.Name"), std::string::npos) << Sql();
  EXPECT_EQ(changed.last().at(0).toString().toStdString(), Sql());
  EXPECT_EQ(list->item(2)->checkState(), Qt::Unchecked);

  // The rows are drawn from a kept image: it must follow every change of what they show.
  const QColor base = list->palette().color(QPalette::Base);
  auto shot = [&] { return list->viewport()->grab().toImage(); };
  // Dark pixels inside a row's check box: its tick.
  auto ticked = [&](const QImage& Image, int Row) {
    const QRect check = list->CheckRect(Row).adjusted(2, 2, -2, -2);
    int ink = 0;
    for (int y = check.top(); y <= check.bottom(); ++y)
      for (int x = check.left(); x <= check.right(); ++x)
        ink += qGray(Image.pixel(x, y)) < 100 ? 1 : 0;
    return ink > 0;
  };
  auto banded = [&](const QImage& Image, int Row) {
    const QRect row = list->visualItemRect(list->item(Row));
    return Image.pixelColor(row.right() - 2, row.center().y()) != base;
  };
  QImage image = shot();
  EXPECT_FALSE(ticked(image, 2));
  EXPECT_TRUE(ticked(image, 3));
  // Ticked from the select list's side.
  TqxDatasource* ds = box->GetDatasource();
  ASSERT_TRUE(TqxQueryBuilderPrivate::Run(
      Builder.get(), [&] { Operand()->GetSelectList()->AddField(ds, "Name"); }));
  Settle();
  image = shot();
  EXPECT_TRUE(ticked(image, 2)) << Sql();
  // The current row's band moves with it.
  list->setCurrentRow(1);
  image = shot();
  EXPECT_TRUE(banded(image, 1));
  list->setCurrentRow(2);
  image = shot();
  EXPECT_FALSE(banded(image, 1));
  EXPECT_TRUE(banded(image, 2));
  // A short box scrolls its list: the rows move under their check boxes.
  box->ProposeGeometry(QRect(box->pos(), QSize(box->width(), box->height() - 25)));
  Settle();
  ASSERT_GT(list->verticalScrollBar()->maximum(), 0);
  list->verticalScrollBar()->setValue(list->verticalScrollBar()->maximum());
  image = shot();
  EXPECT_TRUE(ticked(image, 2));
  EXPECT_TRUE(banded(image, 2));
}

// Presses focus and raise a box; the keyboard alone walks the boxes with Tab, Shift+Tab back,
// and leaves the diagram after the last; Delete removes the focused box; so does its close
// button.
TEST_F(Editing, FocusFollowsPressesAndTabAndDeleteActOnTheFocusedBox) {
  Load(
      "select c.Name, o.OrderDate from Customers c inner join Orders o on c.Id = o.CustomerId "
      "inner join Items i on o.Id = i.OrderId");
  Box* customers = BoxOf("Customers c");
  Box* orders = BoxOf("Orders o");
  Box* items = BoxOf("Items i");
  auto* outside = new QLineEdit(Builder.get());  // the next stop of the window's chain
  outside->show();
  Builder->activateWindow();
  WorkArea()->Canvas()->setFocus(Qt::TabFocusReason);
  EXPECT_EQ(WorkArea()->GetFocusedControl(), customers);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(WorkArea()->GetFocusedControl(), orders);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(WorkArea()->GetFocusedControl(), items);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
  EXPECT_EQ(WorkArea()->GetFocusedControl(), orders);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_FALSE(WorkArea()->Canvas()->isAncestorOf(QApplication::focusWidget()))
      << "Tab after the last box leaves the diagram";

  QTest::mouseClick(customers, Qt::LeftButton, Qt::NoModifier, customers->CaptionRect().center());
  EXPECT_EQ(WorkArea()->GetFocusedControl(), customers);
  EXPECT_TRUE(customers->IsActive());
  QTest::mouseClick(orders->GetFieldsList()->viewport(), Qt::LeftButton, Qt::NoModifier,
                    RowCenter(orders, 1) + QPoint(30, 0));
  EXPECT_EQ(WorkArea()->GetFocusedControl(), orders);
  EXPECT_FALSE(customers->IsActive());
  EXPECT_TRUE(orders->IsActive());
  EXPECT_EQ(WorkArea()->Canvas()->children().last(), orders) << "a press raises the box";
  QTest::mouseClick(WorkArea()->Canvas(), Qt::LeftButton, Qt::NoModifier, QPoint(700, 400));
  EXPECT_EQ(WorkArea()->GetFocusedControl(), nullptr);
  EXPECT_FALSE(orders->IsActive());
  customers->GetFieldsList()->setFocus();
  EXPECT_EQ(WorkArea()->GetFocusedControl(), customers);
  outside->setFocus();
  EXPECT_EQ(WorkArea()->GetFocusedControl(), nullptr);

  QTest::mouseClick(orders->GetFieldsList()->viewport(), Qt::LeftButton, Qt::NoModifier,
                    RowCenter(orders, 1) + QPoint(30, 0));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete, Qt::ShiftModifier);
  EXPECT_NE(BoxOf("Orders o"), nullptr) << "Delete with a modifier is no delete";
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
  Settle();
  EXPECT_EQ(BoxOf("Orders o"), nullptr);
  EXPECT_EQ(Sql().find("Orders"), std::string::npos) << Sql();
  EXPECT_EQ(Sql().find("OrderDate"), std::string::npos) << Sql();
  ExpectBoxesMatchModel();
  QTest::mouseClick(items, Qt::LeftButton, Qt::NoModifier, items->CloseButtonRect().center());
  Settle();
  EXPECT_EQ(BoxOf("Items i"), nullptr);
  EXPECT_EQ(Sql().find("Items"), std::string::npos) << Sql();
  ExpectBoxesMatchModel();
}

TEST_F(Editing, NothingChangesWhileSqlIsLoading) {
  Load("select * from Customers c");
  Box* box = BoxOf("Customers c");
  const std::string before = Sql();
  Builder->setSql("select * from Customers c");  // the same text: the model stays
  ASSERT_TRUE(Builder->IsSQLLoading());
  ClickCheck(box, 2);
  QTest::keyClick(box->GetFieldsList(), Qt::Key_Delete);
  EXPECT_EQ(box->GetFieldsList()->item(2)->checkState(), Qt::Unchecked);
  Settle();
  EXPECT_EQ(Sql(), before);
  EXPECT_EQ(BoxOf("Customers c"), box);
}

TEST_F(Editing, BadInputLeavesTheDiagramAsItWas) {
  Load("select c.Name from Customers c, Orders o");
  const std::string before = Sql();
  QSignalSpy errors(Builder.get(), &TqxQueryBuilder::sqlError);
  std::string handled;
  Builder->OnSQLError = [&](TqxBaseQueryBuilder*, const std::string&, const std::string& e) {
    handled = e;
  };
  for (const char* text : {"select from where", "select * from (", "select ,,, from Customers",
                           "\xff\xfe select", "select * from Customers c where c.Id = (select"}) {
    Load(QString::fromLatin1(text));
    EXPECT_EQ(Sql(), before) << text;
    EXPECT_EQ(Boxes().size(), 2u) << text;
  }
  EXPECT_EQ(errors.count(), 5);
  EXPECT_FALSE(handled.empty());
  ExpectBoxesMatchModel();

  // A table the metadata does not know still gets its box, with the "*" row.
  Load("select c.Name from Nowhere n, Customers c");
  Box* unknown = BoxOf("Nowhere n");
  ASSERT_NE(unknown, nullptr);
  EXPECT_EQ(unknown->GetFieldsList()->count(), 1);
  ClickCheck(unknown, 0);
  EXPECT_NE(Sql().find("n.*"), std::string::npos) << Sql();

  // Blank text: one empty operand, no boxes.
  Load("   ");
  EXPECT_TRUE(Boxes().empty());
  ExpectBoxesMatchModel();
}

TEST_F(Editing, MenusOfferTheModelsItemsAndRunThem) {
  Load("select * from Customers c");
  ChooseInMenus("Add Subquery");
  WorkArea()->ShowPopupMenu(QPoint(0, 0));
  EXPECT_EQ(MenuCaptions,
            QStringList({"Add Table", "Add Subquery", "Union", "New Union SubQuery",
                         "Enclose With Brackets", "Remove", "Edit...", "-", "About Qorvex..."}));
  EXPECT_EQ(Bold, QStringList{"Edit..."}) << "the default item is bold";
  EXPECT_EQ(Disabled, QStringList{"Remove"}) << "one operand cannot be removed";
  EXPECT_EQ(Boxes().size(), 2u);
  EXPECT_NE(Sql().find("(SELECT"), std::string::npos) << Sql();
  EXPECT_EQ(Builder->findChild<TqxQueryBuiderPageControl*>()->count(), 2);
  ExpectBoxesMatchModel();

  ChooseInMenus("Remove");
  BoxOf("Customers c")->ShowPopupMenu(QPoint(0, 0));
  EXPECT_EQ(MenuCaptions, QStringList({"Remove", "Edit...", "-", "About Qorvex..."}));
  Settle();
  EXPECT_EQ(BoxOf("Customers c"), nullptr);
  EXPECT_EQ(Sql().find("Customers"), std::string::npos);
  ExpectBoxesMatchModel();
  EXPECT_TRUE(AboutText().contains("Qorvex"));
}

TEST_F(Editing, TheBackgroundShowsTheChosenPattern) {
  Load("select * from Customers");
  QWidget* canvas = WorkArea()->Canvas();
  // The commonest colour of a stretch of empty diagram is the fill of the pattern.
  auto dominant = [&]() {
    const QImage image = canvas->grab(QRect(300, 100, 200, 150)).toImage();
    std::map<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        ++counts[image.pixel(x, y) | 0xFF000000u];
    return std::max_element(counts.begin(), counts.end(),
                            [](auto& a, auto& b) { return a.second < b.second; })
        ->first;
  };
  const std::pair<TqxBkImageDarkness, QRgb> cases[] = {{bgidWhite, qRgb(255, 255, 255)},
                                                       {bgidLight, qRgb(224, 223, 227)},
                                                       {bgidDark, qRgb(153, 153, 153)}};
  for (const auto& [darkness, fill] : cases) {
    Builder->SetBkImageDarkness(darkness);
    EXPECT_EQ(dominant(), fill) << darkness;
  }
  // A user image: top-left once over BkColor, or tiled.
  QPixmap image(40, 40);
  image.fill(QColor(10, 120, 200));
  Builder->setBkImage(image);
  Builder->setBkColor(QColor(250, 240, 200));
  Builder->SetBkImagePos(bkipTopLeft);
  const QImage once = canvas->grab().toImage();
  EXPECT_EQ(once.pixel(300, 20), qRgb(250, 240, 200));
  EXPECT_EQ(QImage(canvas->grab(QRect(0, 0, 40, 40)).toImage()).pixel(5, 5), qRgb(10, 120, 200))
      << "the image sits at the origin";
  Builder->SetBkImagePos(bkipTile);
  EXPECT_EQ(canvas->grab().toImage().pixel(300, 300), qRgb(10, 120, 200));

  // TableColor is the ground of the field lists.
  Builder->setTableColor(QColor(250, 250, 200));
  Box* box = Boxes().front();
  auto* list = box->GetFieldsList();
  const QPoint inList = list->geometry().topLeft() + QPoint(list->width() - 3, 3);
  EXPECT_EQ(box->grab().toImage().pixel(inList), qRgb(250, 250, 200));
}

}  // namespace
}  // namespace qorvex::testing_gui
