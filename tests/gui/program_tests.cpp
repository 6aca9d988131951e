// The designer program's window: the diagram and the SQL editor in step both ways.
#include <QLabel>
#include <QStatusBar>

#include "gui/window_fixture.h"
#include "main_window.h"
#include "sql_editor.h"

namespace qorvex::testing_gui {
namespace {

class ProgramWindow : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    OpenWindow();
  }
  QString Status() const { return Window->statusBar()->findChild<QLabel*>()->text(); }
  // Types into the editor and applies it with Ctrl+Return.
  void Type(const QString& Text) {
    Window->Editor()->setPlainText(Text);
    QTest::keyClick(Window->Editor(), Qt::Key_Return, Qt::ControlModifier);
    Settle();
  }
};

TEST_F(ProgramWindow, TextAndDiagramFollowEachOther) {
  TqxQueryBuilder* builder = Window->Builder();
  Type("select c.Name from Customers c");
  EXPECT_EQ(builder->findChildren<Box*>().size(), 1);
  EXPECT_EQ(Window->Editor()->toPlainText(), "select c.Name from Customers c")
      << "typed text is not reformatted under the cursor";

  // A diagram edit writes the pane.
  Box* box = builder->findChildren<Box*>().front();
  ClickCheck(box, 3);
  EXPECT_TRUE(Window->Editor()->toPlainText().contains("c.Country"));
  EXPECT_FALSE(Window->Editor()->toPlainText().contains("\r"));

  // A syntax error: the message with its place, a mark in the text, the diagram kept.
  const QString before = QString::fromStdString(builder->GetSQL());
  Type("select c.Name\nfrom Customers c\nwhere c.Id = = 3");
  EXPECT_TRUE(Status().contains("line 3, column 12")) << Status().toStdString();
  EXPECT_EQ(Window->Editor()->MarkedText(), "=");
  EXPECT_EQ(QString::fromStdString(builder->GetSQL()), before);

  // The pause applies text as well.
  Window->Editor()->setPlainText("select * from Orders o");
  QTest::qWait(1000);
  Settle();
  ASSERT_EQ(builder->findChildren<Box*>().size(), 1);
  EXPECT_EQ(builder->findChildren<Box*>().front()->GetCaption(), "Orders o");
  EXPECT_TRUE(Window->Editor()->MarkedText().isEmpty());
}

}  // namespace
}  // namespace qorvex::testing_gui
