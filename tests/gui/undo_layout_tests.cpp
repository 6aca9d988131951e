// The builder's undo history, the layout kept beside a query and the diagram's export.
#include <QAction>
#include <QFile>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonObject>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QUndoStack>

#include "gui/window_fixture.h"
#include "query_files.h"

namespace qorvex::testing_gui {
namespace {

// What a user sees: the statement and where each box is (by caption, across all tabs).
struct Snapshot {
  std::string Sql;
  std::map<QString, QRect> Boxes;
  bool operator==(const Snapshot& Other) const = default;
};

void PrintTo(const Snapshot& S, std::ostream* Out) {
  *Out << S.Sql;
  for (const auto& [caption, r] : S.Boxes)
    *Out << " | " << caption.toStdString() << " " << r.x() << "," << r.y() << " " << r.width()
         << "x" << r.height();
}

class UndoLayoutTest : public WindowTest {
 protected:
  static Snapshot Take(TqxQueryBuilder* B) {
    Snapshot s{B->GetSQL(), {}};
    for (Box* box : B->findChildren<Box*>()) {
      if (box->GetDatasource() != nullptr)
        s.Boxes[box->GetCaption()] = box->geometry();
    }
    return s;
  }
  Snapshot Take() const { return Take(Builder.get()); }
  QUndoStack* Stack() const { return Builder->UndoStack(); }
  void Open(const QString& Sql, const QJsonDocument& Layout = QJsonDocument()) {
    Builder->OpenQuery(Sql, Layout);
    Settle();
  }
  // Drags a box by its caption, as a mouse would.
  static void DragBox(Box* B, QPoint Delta) {
    const QPoint start = B->CaptionRect().topLeft() + QPoint(10, 5);
    Drag(B, start, start + Delta);
  }
};

TEST_F(UndoLayoutTest, UndoAndRedoRestoreStatementAndBoxesStepByStep) {
  Open("select c.Name from Customers c");
  ASSERT_EQ(Stack()->count(), 0) << "an opened query starts a new history";
  std::vector<Snapshot> states{Take()};
  const std::vector<std::pair<QString, std::function<void()>>> edits = {
      {"Add Table", [&] { Operand()->AddObject("Orders"); }},
      {"Link",
       [&] {
         const auto ds = Operand()->GetDatasources();
         Operand()->AddLink(ds[0], "Id", ds[1], "CustomerId");
       }},
      {"Edit Columns", [&] { ClickCheck(BoxOf("Orders"), 3); }},
      {"Move", [&] { DragBox(BoxOf("Customers c"), QPoint(260, 150)); }},
      {"Edit SQL",
       [&] {
         Builder->setSql(QString::fromStdString(Sql()) +
                         " WHERE c.Country = 'NL' ORDER BY c.Name DESC");
       }},
  };
  for (const auto& [name, edit] : edits) {
    edit();
    Settle();
    ASSERT_TRUE(Errors.empty()) << Errors.front();
    ASSERT_EQ(Stack()->count(), static_cast<int>(states.size())) << name.toStdString();
    EXPECT_EQ(Stack()->text(Stack()->count() - 1), name);
    ASSERT_NE(Take(), states.back()) << name.toStdString();
    states.push_back(Take());
  }
  EXPECT_EQ(states[5].Boxes["Customers c"], states[4].Boxes["Customers c"])
      << "an applied text keeps the boxes where they were";
  const int steps = static_cast<int>(edits.size());
  for (int i = steps - 1; i >= 0; --i) {
    Stack()->undo();
    Settle();
    EXPECT_EQ(Take(), states[i]) << "undo of " << edits[i].first.toStdString();
  }
  for (int i = 1; i <= steps; ++i) {
    Stack()->redo();
    Settle();
    EXPECT_EQ(Take(), states[i]) << "redo of " << edits[i - 1].first.toStdString();
  }
  EXPECT_EQ(Stack()->count(), steps) << "restoring records no step";
  ExpectBoxesMatchModel();
}

TEST_F(UndoLayoutTest, StepsAreNamedAfterWhatChanged) {
  const auto link = [this] { return Operand()->GetDatasources()[1]->GetJoins(0); };
  const auto row = [this](int I) { return Operand()->GetSelectList()->GetItems(I); };
  const std::vector<std::pair<const char*, std::function<void()>>> cases = {
      {"Edit Criteria", [&] { row(0)->SetCondition(0, "<> 'x'"); }},
      {"Edit Sorting", [&] { row(1)->SetSortType(stDesc); }},
      {"Edit Grouping", [&] { row(0)->SetGroupByType(gtGroupBy); }},
      {"Edit Columns", [&] { row(1)->SetSelect(false); }},
      {"Edit Join", [&] { link()->SetJoinSides(true, false); }},
      {"Remove Link", [&] { Operand()->RemoveLink(link()); }},
      {"Remove Table", [&] { Operand()->RemoveDatasource(Operand()->GetDatasources()[1]); }},
      {"Rename", [&] { Operand()->GetDatasources()[1]->SetAlias("ord"); }},
      {"Add Union", [&] { Builder->GetQuery()->GetUnionGroup()->Add(); }},
  };
  for (const auto& [name, edit] : cases) {
    Open("select c.Name, o.OrderDate from Customers c inner join Orders o on c.Id = o.CustomerId");
    edit();
    Settle();
    ASSERT_EQ(Stack()->count(), 1) << name;
    EXPECT_EQ(Stack()->undoText(), name);
  }
}

TEST_F(UndoLayoutTest, LayoutKeysSurviveReloadAndIgnoreWhatIsMissing) {
  // A table twice under two aliases, and boxes in the diagrams of two sub-queries.
  const QString sql =
      "select c1.Name from Customers c1 inner join Customers c2 on c1.Id = c2.Id, "
      "(select i.OrderId from Items i) d where c1.Id in (select o.CustomerId from Orders o)";
  Open(sql);
  ASSERT_EQ(Boxes().size(), 5u);
  BoxOf("Customers c1")->ProposeGeometry(QRect(300, 40, 150, 120));
  BoxOf("Customers c2")->ProposeGeometry(QRect(40, 220, 120, 90));
  BoxOf("Orders o")->ProposeGeometry(QRect(180, 140, 110, 100));
  BoxOf("Items i")->ProposeGeometry(QRect(60, 300, 100, 100));
  const Snapshot saved = Take();
  const QByteArray json = Builder->SaveLayout().toJson();
  EXPECT_EQ(Builder->SaveLayout().object().value("boxes").toArray().size(), 5);

  Open("");
  Open(sql, QJsonDocument::fromJson(json));
  EXPECT_EQ(Take(), saved);
  EXPECT_EQ(Stack()->count(), 0);

  // Another statement: what matches is placed, the rest is left alone.
  Open("select c2.Name from Customers c2, Products p");
  const QRect products = BoxOf("Products p")->geometry();
  EXPECT_EQ(Builder->LoadLayout(QJsonDocument::fromJson(json)), 1);
  EXPECT_EQ(BoxOf("Customers c2")->geometry(), QRect(40, 220, 120, 90));
  EXPECT_EQ(BoxOf("Products p")->geometry(), products);

  // Documents that are not layouts are refused; odd entries are skipped or clamped.
  const struct {
    const char* Json;
    int Placed;
  } cases[] = {
      {"[1, 2]", -1},
      {"{\"boxes\": 3}", -1},
      {"{\"format\": \"other\", \"boxes\": []}", -1},
      {"{\"boxes\": [7, {\"datasource\": \"nobody\", \"operand\": 1}]}", 0},
      {"{\"boxes\": [{\"subquery\": \"\", \"operand\": 1, \"datasource\": \"C2\", "
       "\"left\": \"x\", \"top\": -50, \"width\": 0}]}",
       1},
  };
  for (const auto& c : cases) {
    QString error;
    EXPECT_EQ(Builder->LoadLayout(QJsonDocument::fromJson(c.Json), &error), c.Placed) << c.Json;
    EXPECT_EQ(error.isEmpty(), c.Placed >= 0) << c.Json;
  }
  EXPECT_EQ(BoxOf("Customers c2")->geometry(), QRect(40, 0, 120, 90))
      << "a bad field keeps the box's value, a negative place is clamped";
}

TEST_F(UndoLayoutTest, ExportCoversTheWholeDiagram) {
  Open("select c.Name from Customers c, Orders o");
  // A box far outside the part the work area shows.
  BoxOf("Orders o")->ProposeGeometry(QRect(1400, 900, 120, 90));
  Settle();
  QWidget* canvas = WorkArea()->Canvas();
  ASSERT_GE(canvas->width(), 1520);
  ASSERT_GT(canvas->width(), WorkArea()->viewport()->width());
  QTemporaryDir dir;
  for (const qreal scale : {1.0, 2.0}) {
    const QString png = dir.filePath(QStringLiteral("d%1.png").arg(scale));
    QString error;
    ASSERT_TRUE(Builder->ExportImage(png, scale, &error)) << error.toStdString();
    const QImage image(png);
    EXPECT_EQ(image.size(), canvas->size() * scale);
    // The far box is drawn: its caption bar is not the white background.
    const QPoint inBox = QPoint(1400 + 30, 900 + 12) * scale;
    EXPECT_NE(image.pixelColor(inBox), image.pixelColor(QPoint(700, 500) * scale));
  }
  const QString svg = dir.filePath(QStringLiteral("d.svg"));
  QString error;
  ASSERT_TRUE(Builder->ExportSvg(svg, &error)) << error.toStdString();
  EXPECT_TRUE(QSvgRenderer(svg).isValid());
  QFile file(svg);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray text = file.readAll();
  EXPECT_TRUE(text.contains("Customers c") && text.contains("Orders o") &&
              text.contains("OrderDate"));

  EXPECT_FALSE(Builder->ExportImage(dir.filePath("missing/d.png"), 1, &error));
  EXPECT_TRUE(error.contains("missing/d.png")) << error.toStdString();
  EXPECT_FALSE(Builder->ExportSvg(dir.filePath("missing/d.svg"), &error));
  EXPECT_FALSE(Builder->ExportImage(dir.filePath("d.png"), 0, &error));
}

// The program: files with their layout, and the Edit menu's history.
TEST_F(UndoLayoutTest, ProgramSavesAndReopensQueryWithLayout) {
  QTemporaryDir dir;
  const QString path = dir.filePath("two.sql");
  OpenWindow();
  TqxQueryBuilder* builder = Window->Builder();
  Apply("select c1.Name from Customers c1, Customers c2");
  Apply("select c1.Name, c2.Name from Customers c1, Customers c2");
  EXPECT_EQ(builder->UndoStack()->count(), 2) << "one step per applied text";
  EXPECT_EQ(Window->Files()->UndoAction()->text(), "&Undo Edit SQL");
  for (Box* box : builder->findChildren<Box*>()) {
    if (box->GetCaption() == "Customers c2")
      DragBox(box, QPoint(200, 120));
  }
  EXPECT_EQ(Window->Files()->UndoAction()->text(), "&Undo Move");
  QString error;
  ASSERT_TRUE(Window->Files()->SaveAs(path, &error)) << error.toStdString();
  EXPECT_TRUE(builder->UndoStack()->isClean());
  const Snapshot saved = Take(builder);
  QFile sql(path);
  ASSERT_TRUE(sql.open(QIODevice::ReadOnly));
  EXPECT_FALSE(sql.readAll().contains('{')) << "the statement stays plain SQL";
  ASSERT_TRUE(QFile::exists(TqxQueryFiles::LayoutPathFor(path)));

  OpenWindow();
  ASSERT_TRUE(Window->Files()->Open(path, &error)) << error.toStdString();
  Settle();
  EXPECT_EQ(Take(Window->Builder()), saved);
  EXPECT_EQ(Window->Builder()->UndoStack()->count(), 0);
  EXPECT_FALSE(Window->Files()->Open(dir.filePath("none.sql"), &error));
  EXPECT_TRUE(error.contains("none.sql"));
}

// Ctrl+Z in the editor is the diagram's undo: typing not yet applied becomes a step that the
// command takes back; typing that does not parse is taken back without touching the history.
TEST_F(UndoLayoutTest, UndoInTheEditorTakesBackTyping) {
  OpenWindow();
  Apply("select c.Name from Customers c");
  const std::string loaded = Window->Builder()->GetSQL();
  const int steps = Window->Builder()->UndoStack()->count();
  auto typeAndUndo = [&](const QString& Text, Qt::KeyboardModifiers Keys) {
    Window->Editor()->setPlainText(Text);
    QTest::keyClick(Window->Editor(), Qt::Key_Z, Keys);
    Settle();
  };
  Window->Editor()->setFocus();
  typeAndUndo("select c.Name, c.Id from Customers c", Qt::ControlModifier);
  EXPECT_EQ(Window->Builder()->GetSQL(), loaded);
  EXPECT_EQ(Window->Builder()->UndoStack()->count(), steps + 1) << "the typing is redoable";
  QTest::keyClick(Window->Editor(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  Settle();
  const std::string redone = Window->Builder()->GetSQL();
  EXPECT_NE(redone.find("c.Id"), std::string::npos);

  typeAndUndo("select c.Name from Customers c where", Qt::ControlModifier);
  EXPECT_EQ(Window->Builder()->GetSQL(), redone) << "the diagram keeps its last good statement";
  EXPECT_FALSE(Window->Editor()->toPlainText().contains("where"));
  EXPECT_EQ(Window->Builder()->UndoStack()->index(), steps + 1);
}

// Closing with unsaved changes asks first: Cancel keeps the window, Discard closes it.
TEST_F(UndoLayoutTest, ClosingWithChangesAsksFirst) {
  OpenWindow();
  Window->Editor()->setPlainText("select c.Name from Customers c");  // typing not yet applied
  int asked = 0;
  for (const QMessageBox::StandardButton button : {QMessageBox::Cancel, QMessageBox::Discard}) {
    OnModal<QMessageBox>([&asked, button](QMessageBox* Box) {
      ++asked;
      Box->button(button)->click();
    });
    Window->close();
    Settle();
    EXPECT_EQ(asked, button == QMessageBox::Cancel ? 1 : 2);
    EXPECT_EQ(Window->isVisible(), button == QMessageBox::Cancel);
  }
}

}  // namespace
}  // namespace qorvex::testing_gui
