// The designer program on a real database: connections, the object browser, running the
// statement, keyboard commands and preferences.
#include <sqlite3.h>

#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryDir>
#include <QTreeWidget>

#include "connection_dialog.h"
#include "gui/window_fixture.h"
#include "object_browser.h"
#include "preferences_dialog.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/designer/link_painters.h"
#include "results_pane.h"

namespace qorvex::testing_gui {
namespace {

constexpr const char* kSchema = R"(
create table Customers(Id integer primary key, Name text);
create table Orders(Id integer primary key, CustomerId integer references Customers(Id),
                    Total real);
create view BigOrders as select * from Orders where Total > 10;
insert into Customers values (1, 'Ann'), (2, 'Bob'), (3, 'Cy');
insert into Orders values (1, 1, 5), (2, 1, 20), (3, 2, 30), (4, 3, 1), (5, 3, 12);
)";

class ProgramOnDatabase : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    ASSERT_TRUE(Dir.isValid());
    // Settings go to the temporary folder, not to the user's.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, Dir.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, Dir.path());
    Path = Dir.filePath(QStringLiteral("shop.sqlite"));
    Exec(kSchema);
    OpenWindow();
  }
  // Changes the database behind the program's back.
  void Exec(const char* Sql) const {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(Path.toUtf8().constData(), &db), SQLITE_OK);
    char* message = nullptr;
    const int rc = sqlite3_exec(db, Sql, nullptr, nullptr, &message);
    EXPECT_EQ(rc, SQLITE_OK) << (message ? message : "");
    sqlite3_free(message);
    sqlite3_close(db);
  }
  void Open() { ASSERT_TRUE(Window->OpenConnection({TqxConnectionInfo::ckSQLite, Path})); }
  TqxQueryBuilder* Qb() const { return Window->Builder(); }
  std::vector<TqxDatasource*> Datasources() const {
    return Qb()->GetActiveUnionSubquery()->GetDatasources();
  }
  // Runs what the SQL pane holds with F5 and waits for the end.
  bool Run(const QString& Sql) {
    Window->Editor()->setPlainText(Sql);
    QSignalSpy started(Window->Results(), &TqxResultsPane::started);
    QTest::keyClick(Window->Editor(), Qt::Key_F5);
    if (started.count() != 1)
      return false;
    QElapsedTimer clock;
    clock.start();
    while (Window->Results()->IsRunning() && clock.elapsed() < 10000)
      QApplication::processEvents(QEventLoop::AllEvents, 20);
    return !Window->Results()->IsRunning();
  }
  int LinkCount() const {
    int links = 0;
    for (TqxDatasource* ds : Datasources())
      links += ds->GetJoinsCount();
    return links;
  }
  QWidget* Canvas() const {
    auto* control = dynamic_cast<TqxWidgetControl*>(Qb()->GetActiveUnionSubquery()->GetWorkArea());
    return qobject_cast<TqxUnionSubQueryTabSheet*>(control->GetWidget())->GetWorkArea()->Canvas();
  }
  // Qt delivers a drop only to the widget that accepted the drag's entry.
  bool Drop(QWidget* Target, QPoint At, const QMimeData* Data) {
    QDragEnterEvent enter(At, Qt::CopyAction, Data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Target, &enter);
    if (!enter.isAccepted())
      return false;
    QDropEvent drop(QPointF(At), Qt::CopyAction, Data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Target, &drop);
    Settle();
    return drop.isAccepted();
  }
  int Rows() const { return Window->Results()->Model()->rowCount(); }
  void DoubleClick(QTreeWidgetItem* Item) {
    QTreeWidget* tree = Window->Browser()->Tree();
    const QPoint at = tree->visualItemRect(Item).center();
    // The press before the second click of a double click (the view checks it).
    QTest::mousePress(tree->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    Settle();
  }

  QTemporaryDir Dir;
  QString Path;
};

TEST_F(ProgramOnDatabase, BrowserListsFiltersAndAddsObjects) {
  Open();
  TqxObjectBrowser* browser = Window->Browser();
  QTreeWidgetItem* customers = browser->FindObject("Customers");
  QTreeWidgetItem* orders = browser->FindObject("Orders");
  QTreeWidgetItem* view = browser->FindObject("BigOrders");
  ASSERT_TRUE(customers && orders && view);
  EXPECT_EQ(view->parent()->text(0), "Views (1)");

  browser->Filter()->setText("ORD");
  EXPECT_TRUE(customers->isHidden());
  EXPECT_FALSE(orders->isHidden());
  EXPECT_FALSE(view->isHidden());
  browser->Filter()->clear();
  EXPECT_FALSE(customers->isHidden());

  // Columns come from the database when an object is opened.
  orders->setExpanded(true);
  ASSERT_EQ(orders->childCount(), 3);
  EXPECT_EQ(orders->child(1)->text(0), "CustomerId");

  // Double click: the box, and a link along the foreign key to the box already there.
  DoubleClick(customers);
  // Return does what a double click does.
  browser->Tree()->setCurrentItem(orders);
  QTest::keyClick(browser->Tree(), Qt::Key_Return);
  Settle();
  ASSERT_EQ(Datasources().size(), 2u) << Window->StatusText().toStdString();
  EXPECT_EQ(LinkCount(), 1);
  EXPECT_TRUE(
      Window->Editor()->toPlainText().contains("JOIN\n Orders ON Customers.Id=Orders.CustomerId"))
      << Window->Editor()->toPlainText().toStdString();
  EXPECT_TRUE(Window->StatusText().contains("Orders"));

  // Drop: what the browser drags lands on the diagram where it was dropped.
  QTreeWidget* tree = browser->Tree();
  std::unique_ptr<QMimeData> data(tree->model()->mimeData({tree->indexFromItem(view)}));
  ASSERT_TRUE(data && data->hasFormat(TqxObjectBrowser::kObjectMimeType));
  QWidget* canvas = Canvas();
  Drop(canvas, QPoint(300, 200), data.get());
  ASSERT_EQ(Datasources().size(), 3u) << Window->StatusText().toStdString();
  TqxDatasource* dropped = Datasources().back();
  EXPECT_EQ(dropped->GetCaption(), "BigOrders");
  EXPECT_NEAR(dropped->GetLeft(), 300, Qb()->GetGridSize());
  EXPECT_NEAR(dropped->GetTop(), 200, Qb()->GetGridSize());
  EXPECT_EQ(LinkCount(), 1) << "a dropped object is not linked";
  // Other things dragged over the diagram are not welcome.
  QMimeData text;
  text.setText("Customers");
  EXPECT_FALSE(Drop(canvas, QPoint(40, 300), &text));
  EXPECT_EQ(Datasources().size(), 3u);
}

TEST_F(ProgramOnDatabase, RunsTheStatementCountsRowsAndShowsFailures) {
  Open();
  ASSERT_TRUE(
      Run("select c.Name, o.Total from Customers c inner join Orders o on "
          "c.Id = o.CustomerId where o.Total > 10 order by o.Total"));
  EXPECT_EQ(Rows(), 3);
  EXPECT_EQ(Window->Results()->Model()->headerData(1, Qt::Horizontal, Qt::DisplayRole), "Total");
  EXPECT_TRUE(Window->Results()->Summary().startsWith("3 rows in"))
      << Window->Results()->Summary().toStdString();
  EXPECT_TRUE(Window->Results()->ErrorText().isEmpty());

  // Selected cells copy as tab-separated lines.
  QTableView* table = Window->Results()->Table();
  table->selectionModel()->select(
      QItemSelection(table->model()->index(0, 0), table->model()->index(1, 1)),
      QItemSelectionModel::Select);
  EXPECT_EQ(Window->Results()->SelectionText(), "Cy\t12\nAnn\t20");

  // Nulls show as such; the diagram's own statement runs just as well.
  ASSERT_TRUE(Run("select null as Empty"));
  EXPECT_EQ(Window->Results()->Model()->index(0, 0).data(), "NULL")
      << Window->Results()->ErrorText().toStdString() << Rows();
  Apply("select * from BigOrders");
  ASSERT_TRUE(Run(Window->Editor()->toPlainText()));
  EXPECT_EQ(Rows(), 3);

  // Failures show the database's message, and the window goes on.
  Exec("drop view BigOrders; drop table Orders;");
  struct Case {
    const char* sql;
    const char* message;
  };
  for (const Case& c :
       {Case{"select * from Orders", "no such table: Orders"},
        Case{"delete from Customers", "readonly"}, Case{"select from where", "syntax error"}}) {
    SCOPED_TRACE(c.sql);
    ASSERT_TRUE(Run(c.sql));
    EXPECT_TRUE(Window->Results()->ErrorText().contains(c.message))
        << Window->Results()->ErrorText().toStdString();
    EXPECT_TRUE(Window->StatusText().contains("failed"));
  }
  // Nothing was written, the diagram is kept, and the next statement runs.
  EXPECT_EQ(Datasources().size(), 1u);
  EXPECT_EQ(Datasources().front()->GetCaption(), "BigOrders");
  ASSERT_TRUE(Run("select * from Customers"));
  EXPECT_EQ(Rows(), 3);
  EXPECT_TRUE(Window->Results()->ErrorText().isEmpty());
  // Without a database nothing runs, and the status says why.
  TqxDesignerWindow bare(&Syntax, &Metadata, QString());
  bare.Editor()->setPlainText("select 1");
  EXPECT_FALSE(bare.RunQuery());
  EXPECT_TRUE(bare.StatusText().contains("No database"));
}

TEST_F(ProgramOnDatabase, CancelStopsALongResult) {
  Open();
  Window->Editor()->setPlainText(
      "with recursive n(x) as (select 1 union all select x + 1 from n where x < 50000000) "
      "select x from n");
  ASSERT_TRUE(Window->RunQuery());
  EXPECT_FALSE(Window->RunQuery()) << "one run at a time";
  QElapsedTimer clock;
  clock.start();
  while (Rows() == 0 && clock.elapsed() < 5000)
    QApplication::processEvents(QEventLoop::AllEvents, 10);
  ASSERT_GT(Rows(), 0) << "rows show while the query goes on";
  QTest::mouseClick(Window->Results()->CancelButton(), Qt::LeftButton);
  while (Window->Results()->IsRunning() && clock.elapsed() < 10000)
    QApplication::processEvents(QEventLoop::AllEvents, 10);
  ASSERT_FALSE(Window->Results()->IsRunning());
  EXPECT_LT(Rows(), 50000000);
  EXPECT_TRUE(Window->Results()->Summary().startsWith("Cancelled"));
  EXPECT_TRUE(Window->Results()->ErrorText().isEmpty());
}

TEST_F(ProgramOnDatabase, ConnectionsAreCheckedAndRemembered) {
  Open();
  const QString other = Dir.filePath("other.sqlite");
  const QString text = Dir.filePath("notes.txt");
  QFile file(text);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("not a database at all, just some text that is long enough");
  file.close();
  for (const QString& bad : {other, text}) {
    QString error;
    EXPECT_FALSE(Window->OpenConnection({TqxConnectionInfo::ckSQLite, bad}, &error));
    EXPECT_FALSE(error.isEmpty());
  }
  EXPECT_FALSE(QFile::exists(other)) << "a missing file is not created";
  EXPECT_EQ(Window->Connection()->Info().target, Path) << "a failed open keeps the connection";
  EXPECT_EQ(RecentConnectionKeys(), QStringList{"sqlite:" + Path});

  // ODBC passwords are not written to the settings.
  RememberConnection({TqxConnectionInfo::ckODBC, "DSN=shop;UID=me;PWD=secret"});
  EXPECT_EQ(RecentConnectionKeys(), (QStringList{"odbc:DSN=shop;UID=me", "sqlite:" + Path}));
}

TEST_F(ProgramOnDatabase, ODBCDialogListsDriversAndTests) {
  const QList<TqxODBCEntry> drivers = ODBCDrivers();
  auto has = [&](const QString& Name) {
    return std::any_of(drivers.begin(), drivers.end(),
                       [&](const TqxODBCEntry& E) { return E.name.contains(Name); });
  };
  EXPECT_TRUE(has("SQLite3"));
  EXPECT_TRUE(has("PostgreSQL"));

  TqxConnectionDialog dialog;
  ASSERT_EQ(dialog.Drivers()->count(), drivers.size());
  for (int i = 0; i < dialog.Drivers()->count(); ++i) {
    if (dialog.Drivers()->item(i)->text() == "SQLite3")
      dialog.Drivers()->setCurrentRow(i);
  }
  EXPECT_EQ(dialog.ConnectionString(), "Driver={SQLite3};");
  QSignalSpy finished(&dialog, &TqxConnectionDialog::testFinished);
  for (const QString& string :
       {"Driver={SQLite3};Database=" + Path, QString("Driver={No Such Driver};")}) {
    dialog.SetConnectionString(string);
    QTest::mouseClick(dialog.TestButton(), Qt::LeftButton);
    ASSERT_TRUE(finished.wait(10000));
  }
  EXPECT_TRUE(finished.at(0).at(0).toBool());
  EXPECT_FALSE(finished.at(1).at(0).toBool());
  EXPECT_NE(dialog.TestResult()->text(), "Connected.");
  EXPECT_FALSE(dialog.TestResult()->text().isEmpty());

  // The same database through ODBC, connected from the menu's worker: objects from the
  // catalogue, rows through QODBC.
  Window->OpenConnectionInBackground(
      {TqxConnectionInfo::ckODBC, "Driver={SQLite3};Database=" + Path});
  EXPECT_TRUE(Window->IsConnecting());
  QElapsedTimer clock;
  clock.start();
  while (Window->IsConnecting() && clock.elapsed() < 10000)
    QApplication::processEvents(QEventLoop::AllEvents, 20);
  ASSERT_NE(Window->Connection(), nullptr);
  EXPECT_EQ(Window->Connection()->Info().kind, TqxConnectionInfo::ckODBC);
  EXPECT_NE(Window->Browser()->FindObject("Orders"), nullptr);
  ASSERT_TRUE(Run("select * from Orders where Total > 10"));
  EXPECT_EQ(Rows(), 3) << Window->Results()->ErrorText().toStdString();
}

TEST_F(ProgramOnDatabase, KeyboardAndPreferences) {
  Open();
  Apply("select * from Customers c");
  // F2 without a focused box says what to do; with one it edits the alias.
  Window->Editor()->setFocus();
  EXPECT_FALSE(Window->RenameFocused());
  QList<Box*> boxes = Window->Builder()->findChildren<Box*>();
  ASSERT_EQ(boxes.size(), 1);
  QTest::mouseClick(boxes.front(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 6));
  OnModal<TqxDatasourcePropsForm>([](TqxDatasourcePropsForm* Form) {
    Form->eAlias->setText("cu");
    Form->accept();
  });
  QTest::keyClick(Window.get(), Qt::Key_F2);
  Settle();
  EXPECT_EQ(Datasources().front()->GetAlias(), "cu");
  EXPECT_TRUE(Window->Editor()->toPlainText().contains("Customers cu"));

  // Every command has a menu, and the shortcuts the program promises.
  for (auto [name, keys] : {std::pair{"actionAddTable", "Ctrl+T"},
                            {"actionRename", "F2"},
                            {"actionRun", "F5"},
                            {"actionPreferences", "Ctrl+,"}}) {
    QAction* action = Window->Action(name);
    ASSERT_NE(action, nullptr) << name;
    EXPECT_EQ(action->shortcut().toString(), keys);
    EXPECT_FALSE(action->associatedObjects().size() < 2) << name << " is in no menu";
  }
  for (const char* menu : {"menuFile", "menuEdit", "menuView", "menuQuery", "menuHelp"})
    EXPECT_NE(Window->Menu(menu), nullptr) << menu;

  // The View menu switches the link style, with one item checked.
  auto checked = [&] {
    QStringList texts;
    for (QAction* action : Window->LinkStyleActions()->actions()) {
      if (action->isChecked())
        texts << action->text();
    }
    return texts;
  };
  ASSERT_EQ(Window->LinkStyleActions()->actions().size(), 3);
  EXPECT_EQ(checked(), QStringList({"Access Style"}));
  Window->LinkStyleActions()->actions()[1]->trigger();
  EXPECT_EQ(Window->Builder()->GetLinkTypeName(), "TqxQueryBuilderLinkPainterMSSQL");
  EXPECT_EQ(checked(), QStringList({"MS SQL Style"}));
  EXPECT_FALSE(Window->SetLinkStyle("Access"));
  EXPECT_EQ(checked(), QStringList({"MS SQL Style"}));
  EXPECT_TRUE(Window->SetLinkStyle("Simple"));
  EXPECT_EQ(checked(), QStringList({"Simple"}));

  // Preferences are stored and shown.
  TqxPreferencesDialog dialog(Window->Builder(), TqxPreferences::Load());
  dialog.LinkStyle()->setCurrentText("Simple");
  dialog.GridSize()->setValue(8);
  dialog.Snap()->setChecked(false);
  dialog.Background()->setCurrentIndex(TqxPreferences::bgPlain);
  dialog.Values().Save();
  const TqxPreferences loaded = TqxPreferences::Load();
  EXPECT_EQ(loaded.linkStyle, "Simple");
  EXPECT_EQ(loaded.gridSize, 8);
  EXPECT_FALSE(loaded.snapToGrid);
  EXPECT_EQ(loaded.background, TqxPreferences::bgPlain);
  TqxDesignerWindow next(&Syntax, &Metadata, QString());
  EXPECT_EQ(next.Builder()->GetGridSize(), 8);
  EXPECT_FALSE(next.Builder()->GetSnapToGrid());
  EXPECT_EQ(next.Builder()->GetLinkPainter()->PainterStyle(), "Simple");
  EXPECT_FALSE(next.Builder()->bkImage().isNull());
}

}  // namespace
}  // namespace qorvex::testing_gui
