#pragma once
// The designer program's window on the fixture's metadata, shown at a fixed size.
#include <memory>

#include "gui/designer_fixture.h"
#include "main_window.h"

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
  std::unique_ptr<TqxDesignerWindow> Window;
};

}  // namespace qorvex::testing_gui
