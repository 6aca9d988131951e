#include "qorvex/model/control_owner.h"

#include <algorithm>

#include "qorvex/ast/from.h"
#include "qorvex/ast/node.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"

namespace qorvex {

TqxControl::~TqxControl() {
  BeginDestroy();
}

TqxQueryBuilderControlOwner::TqxQueryBuilderControlOwner(TqxBaseQueryBuilder* QueryBuilder,
                                                         TqxQueryBuilderControlOwner* Parent)
    : QueryBuilder_(QueryBuilder), Parent_(Parent) {}

TqxQueryBuilderControlOwner::~TqxQueryBuilderControlOwner() {
  BeginDestroy();
  DiscardControls();
}

TastSyntaxProvider* TqxQueryBuilderControlOwner::GetASTSyntaxProvider() const {
  return QueryBuilder_ != nullptr ? QueryBuilder_->GetASTSyntaxProvider() : nullptr;
}

// ---------------------------------------------------------------------------------------
// Controls

TqxControl* TqxQueryBuilderControlOwner::GetControls(int Index) const {
  if (Index < 0 || Index >= GetControlsCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return Controls_[static_cast<std::size_t>(Index)].get();
}

bool TqxQueryBuilderControlOwner::CanCreateControls() const {
  if (QueryBuilder_ == nullptr || QueryBuilder_->IsDestroying() ||
      QueryBuilder_->GetControlFactory() == nullptr || IsDestroying())
    return false;
  const TqxQueryBuilderControlOwner* parent = GetControlParent();
  if (parent == nullptr)
    return true;
  return parent->GetControl() != nullptr;
}

void TqxQueryBuilderControlOwner::CreateControl() {
  if (!Controls_.empty() || !CanCreateControls())
    return;
  DoCreateControl();
}

void TqxQueryBuilderControlOwner::DestroyControl() {
  if (Controls_.empty())
    return;
  DoDestroyControl();
}

void TqxQueryBuilderControlOwner::CreateControlsRecursive() {
  CreateControl();
  std::vector<TqxQueryBuilderControlOwner*> children;
  GetChildOwners(children);
  for (TqxQueryBuilderControlOwner* child : children)
    child->CreateControlsRecursive();
}

void TqxQueryBuilderControlOwner::DestroyControlsRecursive() {
  std::vector<TqxQueryBuilderControlOwner*> children;
  GetChildOwners(children);
  for (TqxQueryBuilderControlOwner* child : children)
    child->DestroyControlsRecursive();
  DestroyControl();
}

std::vector<std::unique_ptr<TqxControl>> TqxQueryBuilderControlOwner::CreateControlInternal() {
  TqxControlFactory* factory =
      QueryBuilder_ != nullptr ? QueryBuilder_->GetControlFactory() : nullptr;
  if (factory == nullptr)
    return {};
  const TqxQueryBuilderControlOwner* parent = GetControlParent();
  return factory->CreateControls(*this, parent != nullptr ? parent->GetControl() : nullptr);
}

void TqxQueryBuilderControlOwner::AdoptControls(std::vector<std::unique_ptr<TqxControl>> Controls) {
  for (auto& control : Controls) {
    if (!control)
      continue;
    FreeNotification(control.get());
    Controls_.push_back(std::move(control));
  }
}

void TqxQueryBuilderControlOwner::DoCreateControl() {
  AdoptControls(CreateControlInternal());
  if (!Controls_.empty())
    RestoreControlParams();
}

void TqxQueryBuilderControlOwner::DoDestroyControl() {
  SaveControlParams();
  DiscardControls();
}

void TqxQueryBuilderControlOwner::DiscardControls() {
  if (Controls_.empty())
    return;
  // Taken out of the list first: the removal notification of a control freed here must
  // not be mistaken for one freed by the screen.
  std::vector<std::unique_ptr<TqxControl>> controls = std::move(Controls_);
  Controls_.clear();
  const bool wasDestroying = DestroyingControls_;
  DestroyingControls_ = true;
  while (!controls.empty()) {
    std::unique_ptr<TqxControl> control = std::move(controls.back());
    controls.pop_back();
    RemoveFreeNotification(control.get());
    control.reset();
  }
  DestroyingControls_ = wasDestroying;
}

void TqxQueryBuilderControlOwner::RestoreControlParams() {
  DoUpdateContolParams();
}

void TqxQueryBuilderControlOwner::DoUpdateContolParams() {
  for (const auto& control : Controls_)
    control->UpdateContent();
}

void TqxQueryBuilderControlOwner::UpdateContolParams() {
  DoUpdateContolParams();
}

void TqxQueryBuilderControlOwner::RepaintControls() {
  for (const auto& control : Controls_)
    control->Repaint();
}

void TqxQueryBuilderControlOwner::MakeVisible() {
  for (const auto& control : Controls_)
    control->MakeVisible();
}

void TqxQueryBuilderControlOwner::NotifyControlDestroying(TqxControl* Control) {
  auto it = std::find_if(Controls_.begin(), Controls_.end(),
                         [&](const auto& owned) { return owned.get() == Control; });
  if (it == Controls_.end())
    return;
  RemoveFreeNotification(Control);
  it->release();  // the control is being freed by whoever called
  Controls_.erase(it);
}

void TqxQueryBuilderControlOwner::Notification(TqxComponent* Component, TOperation Operation) {
  TqxComponent::Notification(Component, Operation);
  if (Operation != TOperation::opRemove)
    return;
  auto it = std::find_if(Controls_.begin(), Controls_.end(),
                         [&](const auto& owned) { return owned.get() == Component; });
  if (it == Controls_.end())
    return;
  // A control freed from the screen side: let go of it, and the model object it showed
  // goes with it.
  it->release();
  Controls_.erase(it);
  if (DestroyingControls_ || IsDestroying())
    return;
  FreeModelObject();  // may free this object: nothing may follow
}

// ---------------------------------------------------------------------------------------
// Screen commands

bool TqxQueryBuilderControlOwner::EditProps() {
  TqxControlFactory* factory =
      QueryBuilder_ != nullptr ? QueryBuilder_->GetControlFactory() : nullptr;
  TqxDialogKind kind{};
  if (factory == nullptr || !GetEditPropsDialog(kind))
    return false;
  return factory->ExecuteDialog(*this, kind);
}

void TqxQueryBuilderControlOwner::RemoveEvent() {
  FreeModelObject();
}

void TqxQueryBuilderControlOwner::EditSubquery(TqxSubQuery* Query) {
  if (QueryBuilder_ != nullptr && Query != nullptr)
    QueryBuilder_->SetActiveSubquery(Query);
}

void TqxQueryBuilderControlOwner::ShowSubQueriesPopup(const TastNode* Root, TqxPoint ScreenPos) {
  std::vector<TqxSubQuery*> queries;
  GetSubqueriesByRootNode(Root, queries);
  if (queries.empty())
    return;
  if (queries.size() == 1) {
    EditSubquery(queries.front());
    return;
  }
  TqxControlFactory* factory =
      QueryBuilder_ != nullptr ? QueryBuilder_->GetControlFactory() : nullptr;
  if (factory == nullptr)
    return;
  TqxPopupMenu menu;
  for (TqxSubQuery* query : queries) {
    TqxMenuItem item;
    item.Caption = QueryBuilder_->GetTabHeaderText(query);
    item.OnClick = [this, query] { EditSubquery(query); };
    menu.push_back(std::move(item));
  }
  factory->PopupMenu(*this, menu, ScreenPos);
}

TqxPopupMenu TqxQueryBuilderControlOwner::BuildPopupMenu() {
  TqxPopupMenu menu;
  GetPopupMenu(menu);
  if (!menu.empty() && QueryBuilder_ != nullptr)
    QueryBuilder_->PopupMenuCompleted(menu);
  return menu;
}

void TqxQueryBuilderControlOwner::ShowPopupMenu(TqxPoint ScreenPos) {
  TqxControlFactory* factory =
      QueryBuilder_ != nullptr ? QueryBuilder_->GetControlFactory() : nullptr;
  if (factory == nullptr)
    return;
  TqxPopupMenu menu = BuildPopupMenu();
  if (!menu.empty())
    factory->PopupMenu(*this, menu, ScreenPos);
}

// ---------------------------------------------------------------------------------------
// Change reports

void TqxQueryBuilderControlOwner::BeginUpdate() {
  ++UpdateCount_;
}

void TqxQueryBuilderControlOwner::EndUpdate() {
  if (UpdateCount_ == 0)
    return;
  if (--UpdateCount_ > 0 || !UpdatePending_)
    return;
  UpdatePending_ = false;
  DoSQLUpdated();
}

void TqxQueryBuilderControlOwner::NotifySQLUpdated() {
  if (IsDestroying())
    return;
  if (UpdateCount_ > 0) {
    UpdatePending_ = true;
    return;
  }
  DoSQLUpdated();
}

void TqxQueryBuilderControlOwner::DoSQLUpdated() {
  if (Parent_ != nullptr)
    Parent_->NotifySQLUpdated();
  else if (QueryBuilder_ != nullptr)
    QueryBuilder_->NotifySQLUpdated();
}

// ---------------------------------------------------------------------------------------
// Syntax tree and sub-queries

void TqxQueryBuilderControlOwner::GetASTChildren(std::vector<TastNode*>& /*List*/) const {}

void TqxQueryBuilderControlOwner::GetASTChildrenForSubtree(std::vector<TastNode*>& List) const {
  GetASTChildren(List);
  std::vector<TqxQueryBuilderControlOwner*> children;
  GetChildOwners(children);
  for (const TqxQueryBuilderControlOwner* child : children)
    child->GetASTChildrenForSubtree(List);
}

void TqxQueryBuilderControlOwner::GetChildOwners(
    std::vector<TqxQueryBuilderControlOwner*>& List) const {
  std::vector<TqxSubQuery*> queries;
  GetSubqueries(queries);
  List.insert(List.end(), queries.begin(), queries.end());
}

namespace {
void CollectSubqueries(const TastExtender* Node, std::vector<TqxSubQuery*>& List) {
  if (Node == nullptr)
    return;
  if (const auto* proxy = dynamic_cast<const TqxSubSelectStatementProxy*>(Node)) {
    if (proxy->GetSubQuery() != nullptr)
      List.push_back(proxy->GetSubQuery());
    return;
  }
  std::vector<TastExtender*> children;
  Node->GetMyChildren(children);
  for (const TastExtender* child : children)
    CollectSubqueries(child, List);
}
}  // namespace

void TqxQueryBuilderControlOwner::GetSubqueriesByRootNode(const TastExtender* Root,
                                                          std::vector<TqxSubQuery*>& List) const {
  CollectSubqueries(Root, List);
}

int TqxQueryBuilderControlOwner::GetSubqueriesByRootNodeCount(const TastExtender* Root) const {
  std::vector<TqxSubQuery*> queries;
  CollectSubqueries(Root, queries);
  return static_cast<int>(queries.size());
}

void TqxQueryBuilderControlOwner::GetSubqueries(std::vector<TqxSubQuery*>& List) const {
  std::vector<TastNode*> nodes;
  GetASTChildren(nodes);
  for (const TastNode* node : nodes)
    CollectSubqueries(node, List);
}

void TqxQueryBuilderControlOwner::LoadSubQueries(TastExtender* Root) {
  if (Root != nullptr)
    Root->MoveSubQueryInProxy(this, TqxSubSelectStatementProxy::ProxyStaticClass());
}

// ---------------------------------------------------------------------------------------
// Datasource removal

namespace {
void TellDestroying(TqxQueryBuilderControlOwner* Owner, TqxDatasourceBase* DS) {
  Owner->NotifyDatasourceDestroyingInternal(DS);
  std::vector<TqxQueryBuilderControlOwner*> children;
  Owner->GetChildOwners(children);
  for (TqxQueryBuilderControlOwner* child : children)
    TellDestroying(child, DS);
}

void CollectSources(TqxDatasourceBase* DS, std::vector<const TSQLFromSource*>& Sources) {
  if (DS->GetFromSource() != nullptr)
    Sources.push_back(DS->GetFromSource());
  if (auto* group = dynamic_cast<TqxDatasourceGroup*>(DS)) {
    for (int i = 0; i < group->GetCount(); ++i)
      CollectSources(group->GetItems(i), Sources);
  }
}
}  // namespace

void TqxQueryBuilderControlOwner::NotifyDatasourceDestroying(TqxDatasourceBase* DS) {
  if (DS == nullptr)
    return;
  TellDestroying(this, DS);
  std::vector<const TSQLFromSource*> sources;
  CollectSources(DS, sources);
  std::vector<TastNode*> nodes;
  GetASTChildrenForSubtree(nodes);
  for (TastNode* node : nodes) {
    for (const TSQLFromSource* source : sources)
      node->RemoveReferencesToFromSource(source);
  }
}

}  // namespace qorvex
