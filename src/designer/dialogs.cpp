// The factory's dialogs: which dialog edits which model object.
#include <memory>

#include "designer/designer_p.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"

namespace qorvex {

bool ExecuteDesignerDialog(TqxQueryBuilder* Builder, TqxQueryBuilderControlOwner& Owner,
                           TqxDialogKind Kind) {
  TastSyntaxProvider* syntax = Builder->GetASTSyntaxProvider();
  std::unique_ptr<TqxQBPropertiesForm> form;
  switch (Kind) {
    case TqxDialogKind::dkAddObject: {
      TqxAddObjectForm dialog(Builder);
      TqxQueryBuilderPrivate* d = TqxQueryBuilderPrivate::Of(Builder);
      d->AddObjectForm = &dialog;
      dialog.ShowModal();
      d->AddObjectForm = nullptr;
      return dialog.GetAddedCount() > 0;
    }
    case TqxDialogKind::dkDatasourceProps:
      if (dynamic_cast<TqxDatasource*>(&Owner) != nullptr)
        form = std::make_unique<TqxDatasourcePropsForm>(Builder);
      break;
    case TqxDialogKind::dkLinkProps:
      if (dynamic_cast<TqxLink*>(&Owner) != nullptr)
        form = std::make_unique<TqxLinkPropsForm>(Builder);
      break;
    case TqxDialogKind::dkQueryProps:
      if (Builder->GetSyntaxProvider() != nullptr)
        form.reset(
            CreatePropertiesForm(Builder->GetSyntaxProvider()->GetEditPropsFormClass(), Builder));
      break;
  }
  if (!form)
    return false;
  return form->Edit(&Owner, syntax);
}

}  // namespace qorvex
