// Deferred loading, and long random mouse and key sequences that must never leave a
// box without its datasource, a datasource without its box, or SQL that does not parse.
#include <QDialog>
#include <QTimer>
#include <random>

#include "gui/designer_fixture.h"

namespace qorvex::testing_gui {
namespace {

using Robustness = DesignerTest;

TEST_F(Robustness, TwoAssignmentsBeforeTheLoopRunsEndInAnEmptyQuery) {
  Load("select * from Customers c");
  QSignalSpy loaded(Builder.get(), &TqxQueryBuilder::sqlLoaded);
  Builder->setSql("select * from Orders o");
  Builder->setSql("select * from Items i");
  EXPECT_TRUE(Builder->IsSQLLoading());
  EXPECT_NE(BoxOf("Customers c"), nullptr) << "nothing is parsed before the loop runs";
  // The first message loads the latest text; the second finds none and loads an empty query.
  QApplication::sendPostedEvents(Builder.get(), QEvent::Type(1024 + 0));
  Settle();
  EXPECT_EQ(loaded.count(), 2);
  EXPECT_FALSE(Builder->IsSQLLoading());
  EXPECT_TRUE(Boxes().empty());
  ExpectBoxesMatchModel();
}

TEST_F(Robustness, EventsStillQueuedWhenTheBuilderGoesAreHarmless) {
  // Controls released with the builder wait for their deferred deletion; layout and resize
  // events already queued for them arrive first.
  Load(
      "select c.Name from Customers c inner join Orders o on c.Id = o.CustomerId "
      "union select p.Name from Products p");
  for (TqxQueryBuilderWorkArea* area : Builder->findChildren<TqxQueryBuilderWorkArea*>())
    QApplication::postEvent(area, new QEvent(QEvent::LayoutRequest));
  Builder.reset();
  QApplication::processEvents();
  Settle();
  SUCCEED();
}

TEST_F(Robustness, RandomMouseAndKeySequencesKeepBoxesAndModelTogether) {
  Tables["T"] = {"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L"};
  std::mt19937 random(20261123);
  auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  TqxQueryBuilderPrivate* d = TqxQueryBuilderPrivate::Of(Builder.get());
  // Menus choose a random enabled item, never the about box.
  d->MenuExecutor = [&](QMenu& menu, const QPoint&) -> QAction* {
    std::vector<QAction*> actions;
    for (QAction* a : menu.actions()) {
      if (a->menu() != nullptr)
        for (QAction* s : a->menu()->actions())
          actions.push_back(s);
      else if (!a->isSeparator() && !a->text().startsWith("About"))
        actions.push_back(a);
    }
    return actions.empty() || pick(3) == 0
               ? nullptr
               : actions[static_cast<size_t>(pick(static_cast<int>(actions.size())))];
  };
  // Dialogs the menus open are closed at once, with OK or Cancel.
  QTimer closer;
  QObject::connect(&closer, &QTimer::timeout, [&] {
    if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
      pick(2) == 0 ? dialog->accept() : dialog->reject();
  });
  closer.start(1);
  const char* statements[] = {
      "select c.Name from Customers c inner join Orders o on c.Id = o.CustomerId",
      "select * from Customers c, Orders o, Items i, Products p, T t",
      "select t.A from T t where t.B in (select o.Id from Orders o)", "select from", ""};
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);
  for (int step = 0; step < 600; ++step) {
    if (step % 100 == 0)
      Load(statements[pick(5)]);
    std::vector<Box*> boxes = Boxes();
    if (boxes.empty()) {
      TqxQueryBuilderPrivate::Run(Builder.get(),
                                  [&] { Operand()->AddObject(pick(2) ? "T" : "Orders"); });
      continue;
    }
    Box* box = boxes[static_cast<size_t>(pick(static_cast<int>(boxes.size())))];
    QWidget* list = box->GetFieldsList()->viewport();
    const QPoint inBox(pick(box->width() + 20) - 10, pick(box->height() + 20) - 10);
    const QPoint inList(pick(list->width() + 10) - 5, pick(list->height() + 10) - 5);
    switch (pick(9)) {
      case 0:
        QTest::mousePress(box, Qt::LeftButton, Qt::NoModifier, inBox);
        MoveWithButton(box, inBox + QPoint(pick(61) - 30, pick(61) - 30));
        QTest::mouseRelease(box, Qt::LeftButton, Qt::NoModifier, inBox);
        break;
      case 1:
        QTest::mouseClick(list, Qt::LeftButton, Qt::NoModifier, inList);
        break;
      case 2: {
        Box* other = boxes[static_cast<size_t>(pick(static_cast<int>(boxes.size())))];
        const int rows = box->GetFieldsList()->count();
        DragField(box, pick(rows),
                  other->GetFieldsList()->viewport()->mapToGlobal(
                      QPoint(pick(other->width()), pick(other->height()))));
        break;
      }
      case 3:
        QTest::keyClick(box->GetFieldsList(), pick(4) == 0 ? Qt::Key_Delete : Qt::Key_Space);
        break;
      case 4:
        QTest::mouseClick(box, Qt::RightButton, Qt::NoModifier, box->CaptionRect().center());
        break;
      case 5:
        WorkArea()->ShowPopupMenu(QPoint(0, 0));
        break;
      case 6:
        QTest::mouseDClick(list, Qt::LeftButton, Qt::NoModifier, inList);
        break;
      case 7:
        Builder->setSql(QString::fromStdString(Sql()));  // a load pending under the next event
        QTest::mouseClick(list, Qt::LeftButton, Qt::NoModifier, inList);
        break;
      default:
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, box->CloseButtonRect().center());
        break;
    }
    Settle();
    ASSERT_NO_FATAL_FAILURE(ExpectBoxesMatchModel()) << "step " << step;
    ASSERT_NO_THROW(Syntax.ParseSelect(Sql())) << "step " << step << "\n" << Sql();
  }
  // The sequence did edit the query, many times.
  EXPECT_GT(changed.count(), 100);
}

}  // namespace
}  // namespace qorvex::testing_gui
