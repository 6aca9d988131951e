#pragma once
// The designer program's window on the fixture's metadata, shown at a fixed size.
#include <memory>

#include "gui/designer_fixture.h"
#include "main_window.h"
#include "sql_editor.h"

namespace qorvex::testing_gui {

class WindowTest : public DesignerTest {
 protected:
  void OpenWindow() {
    Window = std::make_unique<TqxDesignerWindow>(&Syntax, &Metadata, QString());
    Window->resize(900, 700);
    Window->show();
    Settle();
  }
  void TearDown() override {
    Window.reset();
    DesignerTest::TearDown();
  }
  // Puts Text in the SQL pane and applies it with Ctrl+Return.
  void Apply(const QString& Text) {
    Window->Editor()->setPlainText(Text);
    QTest::keyClick(Window->Editor(), Qt::Key_Return, Qt::ControlModifier);
    Settle();
  }

  std::unique_ptr<TqxDesignerWindow> Window;
};

}  // namespace qorvex::testing_gui
