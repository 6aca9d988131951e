#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qorvex/core/component.h"
#include "qorvex/model/types.h"
#include "qorvex/model_export.h"

namespace qorvex {

class TqxQueryBuilderControlOwner;

// One entry of a context menu that a model object offers. A caption of "-" is a separator.
struct QORVEX_MODEL_EXPORT TqxMenuItem {
  std::string Caption;
  std::string ShortCut;
  bool Enabled = true;
  bool Checked = false;
  bool Default = false;  // shown in bold; what a double click does
  std::function<void()> OnClick;
  std::vector<TqxMenuItem> Items;  // a sub-menu when not empty
};
using TqxPopupMenu = std::vector<TqxMenuItem>;

// The dialogs a model object can ask the screen to run.
enum class TqxDialogKind { dkDatasourceProps, dkLinkProps, dkQueryProps, dkAddObject };

// The on-screen control of a model object, as the model sees it. The toolkit derives its
// widgets' wrappers from it; the model never depends on a control existing.
//
// The owner holds its controls and frees them in DestroyControl, saving their position
// and size first. The screen side may also free a control itself (the Delete key, a
// close button): the owner hears of it through the removal notification of
// TqxComponent, lets go of the control and frees the model object it stood for.
// Derived destructors call BeginDestroy() first so the owner is told while the control
// is still whole.
class QORVEX_MODEL_EXPORT TqxControl : public TqxComponent {
 public:
  explicit TqxControl(TqxQueryBuilderControlOwner* Owner) : Owner_(Owner) {}
  ~TqxControl() override;

  TqxQueryBuilderControlOwner* GetOwner() const { return Owner_; }

  // Position and size in the parent control; the owner saves them before the control is
  // freed and restores them into a new control.
  virtual TqxRect GetBounds() const { return Bounds_; }
  virtual void SetBounds(const TqxRect& Bounds) { Bounds_ = Bounds; }
  // Draws the control again.
  virtual void Repaint() {}
  // Re-reads what the control shows from its owner (caption, field list, colours, fonts).
  virtual void UpdateContent() {}
  // Scrolls or switches pages so the control can be seen.
  virtual void MakeVisible() {}

 private:
  TqxQueryBuilderControlOwner* Owner_;
  TqxRect Bounds_;
};

// Makes and runs the screen side for a query builder: the controls of model objects,
// their context menus and their dialogs. A builder without a factory creates no control
// and everything else works.
class QORVEX_MODEL_EXPORT TqxControlFactory {
 public:
  virtual ~TqxControlFactory() = default;

  // The controls showing Owner inside ParentControl (null for a control placed directly
  // on the builder). Most owners get one control or none; a union group gets its two
  // brackets. The model owns what is returned.
  virtual std::vector<std::unique_ptr<TqxControl>> CreateControls(
      TqxQueryBuilderControlOwner& Owner, TqxControl* ParentControl) = 0;
  // Shows Menu at a screen position; a chosen item's OnClick runs.
  virtual void PopupMenu(TqxQueryBuilderControlOwner& Owner, const TqxPopupMenu& Menu,
                         TqxPoint ScreenPos) = 0;
  // Runs a modal dialog on Owner; true when it was closed with OK (the dialog has then
  // applied its changes through the model's operations).
  virtual bool ExecuteDialog(TqxQueryBuilderControlOwner& Owner, TqxDialogKind Kind) = 0;
  // The product's about box.
  virtual void ShowAbout() {}
};

}  // namespace qorvex
