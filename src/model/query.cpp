#include "qorvex/model/query.h"

#include <algorithm>

#include "model/model_nodes.h"
#include "model/model_util.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query_builder.h"
#include "qorvex/model/select_list.h"
#include "qorvex/syntax/components.h"

namespace qorvex {

using model::As;
using model::Downcast;

namespace {

constexpr TqxQueryBuilderGroupByTypes kWhereLoadTypes{gtExpression, gtWhere};
constexpr TqxQueryBuilderGroupByTypes kHavingLoadTypes{gtExpression, gtGroupBy, gtHaving,
                                                       gtAggregateStar, gtAggregate};

std::string OperatorOf(const TSQLSubQueryExpression& Node) {
  return Node.All ? Node.UnionOperator + " all" : Node.UnionOperator;
}

}  // namespace

// ---------------------------------------------------------------------------------------
// TqxQueryBase

TqxUnionGroup* TqxQueryBase::GetParentGroup() const {
  return As<TqxUnionGroup>(GetParent());
}

TqxSubQuery* TqxQueryBase::GetSubQuery() const {
  for (TqxQueryBuilderControlOwner* owner = GetParent(); owner != nullptr;
       owner = owner->GetParent()) {
    if (auto* query = As<TqxSubQuery>(owner))
      return query;
  }
  return nullptr;
}

bool TqxQueryBase::IsMainQuery() const {
  return As<TqxQuery>(GetSubQuery()) != nullptr;
}

void TqxQueryBase::SetUnionOperator(const std::string& Operator) {
  const std::string op =
      model::Trim(Operator).empty() ? std::string("union") : model::Trim(Operator);
  const TastSyntaxProvider* provider = GetASTSyntaxProvider();
  UnionOperator_ =
      provider != nullptr ? provider->NormalizeUnionOperator(op) : model::LowerCase(op);
}

void TqxQueryBase::SetUnionOperatorEvent(const std::string& Operator) {
  const std::string old = UnionOperator_;
  SetUnionOperator(Operator);
  if (UnionOperator_ == old)
    return;
  RepaintControls();
  NotifySQLUpdated();
}

TqxQueryBuilderControlOwner* TqxQueryBase::GetControlParent() const {
  return GetSubQuery();
}

// ---------------------------------------------------------------------------------------
// TqxUnionGroup

TqxUnionGroup::TqxUnionGroup(TqxBaseQueryBuilder* QueryBuilder, TqxQueryBuilderControlOwner* Parent)
    : TqxQueryBase(QueryBuilder, Parent) {}

TqxUnionGroup::~TqxUnionGroup() {
  BeginDestroy();
  while (!Items_.empty())
    Items_.pop_back();
}

TqxQueryBase* TqxUnionGroup::GetItems(int Index) const {
  if (Index < 0 || Index >= GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return Items_[static_cast<std::size_t>(Index)].get();
}

int TqxUnionGroup::IndexOf(const TqxQueryBase* Item) const {
  for (std::size_t i = 0; i < Items_.size(); ++i) {
    if (Items_[i].get() == Item)
      return static_cast<int>(i);
  }
  return -1;
}

void TqxUnionGroup::CheckCanAddOperand() const {
  if (Items_.empty())
    return;
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  if (IsMainQuery()) {
    if (provider == nullptr || !provider->IsSupportUnions())
      throw EqxError("This server don't support unions!");
  } else if (provider == nullptr || !provider->IsSupportSubQueryUnions()) {
    throw EqxError("This server don't support unions in subqueries!");
  }
}

void TqxUnionGroup::CheckCanAddGroup() const {
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  if (IsMainQuery()) {
    if (provider == nullptr || !provider->IsSupportBracketsInUnions())
      throw EqxError("This server don't support brackets in unions!");
  } else if (provider == nullptr || !provider->IsSupportSubQueryBracketsInUnions()) {
    throw EqxError("This server don't support brackets in unions in subqueries!");
  }
}

TqxUnionSubQuery* TqxUnionGroup::Add() {
  return Insert(GetCount());
}

TqxUnionGroup* TqxUnionGroup::AddGroup() {
  return InsertGroup(GetCount());
}

TqxUnionSubQuery* TqxUnionGroup::Insert(int Index) {
  if (Index < 0 || Index > GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  CheckCanAddOperand();
  if (GetQueryBuilder() == nullptr || GetQueryBuilder()->IsDestroying())
    return nullptr;
  TqxUpdateGuard guard(this);
  TqxUnionSubQuery* operand = InsertAST(Index, model::MakeEmptySelect(GetASTSyntaxProvider()));
  NotifySQLUpdated();
  return operand;
}

TqxUnionGroup* TqxUnionGroup::InsertGroup(int Index) {
  if (Index < 0 || Index > GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  CheckCanAddGroup();
  if (GetQueryBuilder() == nullptr || GetQueryBuilder()->IsDestroying())
    return nullptr;
  TqxUpdateGuard guard(this);
  TqxUnionGroup* group =
      InsertGroupAST(Index, NewNode<TSQLSubQueryExpressions>(GetASTSyntaxProvider()));
  // A group is never left empty: it starts with one empty operand.
  group->InsertAST(0, model::MakeEmptySelect(GetASTSyntaxProvider()));
  NotifySQLUpdated();
  return group;
}

TqxUnionSubQuery* TqxUnionGroup::AddAST(std::unique_ptr<TSQLSubQuerySelectExpression> Node) {
  return InsertAST(GetCount(), std::move(Node));
}

TqxUnionGroup* TqxUnionGroup::AddGroupAST(std::unique_ptr<TSQLSubQueryExpressions> Node) {
  return InsertGroupAST(GetCount(), std::move(Node));
}

TqxQueryBase* TqxUnionGroup::InsertItem(int Index, std::unique_ptr<TqxQueryBase> Item) {
  Index = std::clamp(Index, 0, GetCount());
  Item->SetParent(this);
  TqxQueryBase* raw = Item.get();
  Items_.insert(Items_.begin() + Index, std::move(Item));
  return raw;
}

template <class T, class Load>
T* TqxUnionGroup::InsertLoaded(int Index, const std::string& Operator, Load&& LoadInto) {
  TqxUpdateGuard guard(this);
  auto* item = static_cast<T*>(InsertItem(Index, std::make_unique<T>(GetQueryBuilder(), this)));
  item->SetUnionOperator(Operator);
  try {
    LoadInto(*item);
  } catch (...) {
    // A tree the model rejects leaves the group as it was.
    ExtractItem(item);
    throw;
  }
  item->CreateControlsRecursive();
  NotifySQLUpdated();
  return item;
}

TqxUnionSubQuery* TqxUnionGroup::InsertAST(int Index,
                                           std::unique_ptr<TSQLSubQuerySelectExpression> Node) {
  if (!Node)
    return nullptr;
  const std::string op = OperatorOf(*Node);
  return InsertLoaded<TqxUnionSubQuery>(
      Index, op, [&](TqxUnionSubQuery& operand) { operand.LoadFromAST(std::move(Node)); });
}

TqxUnionGroup* TqxUnionGroup::InsertGroupAST(int Index,
                                             std::unique_ptr<TSQLSubQueryExpressions> Node) {
  if (!Node)
    return nullptr;
  return InsertLoaded<TqxUnionGroup>(Index, OperatorOf(*Node),
                                     [&](TqxUnionGroup& group) { group.LoadFromAST(*Node); });
}

void TqxUnionGroup::LoadFromAST(TSQLSubQueryExpressions& Node) {
  // Taken out from the back (each removal is then cheap) and loaded in order.
  std::vector<std::unique_ptr<TSQLSubQueryExpression>> items;
  items.reserve(static_cast<std::size_t>(Node.GetCount()));
  while (Node.GetCount() > 0)
    items.push_back(Node.Extract(Node.GetCount() - 1));
  for (auto it = items.rbegin(); it != items.rend(); ++it) {
    std::unique_ptr<TSQLSubQueryExpression> item = std::move(*it);
    if (As<TSQLSubQuerySelectExpression>(item.get()) != nullptr)
      AddAST(Downcast<TSQLSubQuerySelectExpression>(std::move(item)));
    else if (As<TSQLSubQueryExpressions>(item.get()) != nullptr)
      AddGroupAST(Downcast<TSQLSubQueryExpressions>(std::move(item)));
  }
}

std::unique_ptr<TSQLSubQueryExpressions> TqxUnionGroup::BuildAST(TSQLFromSourceMap& Map) const {
  auto node = NewNode<TSQLSubQueryExpressions>(GetASTSyntaxProvider());
  node->UnionOperator = UnionOperator_;
  for (const auto& item : Items_) {
    std::unique_ptr<TSQLSubQueryExpression> child;
    if (const auto* operand = As<const TqxUnionSubQuery>(item.get()))
      child = operand->BuildAST(Map);
    else if (const auto* group = As<const TqxUnionGroup>(item.get()))
      child = group->BuildAST(Map);
    if (!child)
      continue;
    // The operator is written as the provider spells it ("Union All").
    child->UnionOperator = item->GetUnionOperator();
    child->All = false;
    node->Add(std::move(child));
  }
  return node;
}

std::unique_ptr<TqxQueryBase> TqxUnionGroup::ExtractItem(TqxQueryBase* Item) {
  const int index = IndexOf(Item);
  if (index < 0)
    return nullptr;
  std::unique_ptr<TqxQueryBase> item = std::move(Items_[static_cast<std::size_t>(index)]);
  Items_.erase(Items_.begin() + index);
  return item;
}

void TqxUnionGroup::Remove(TqxQueryBase* Item) {
  if (IndexOf(Item) < 0)
    return;
  {
    TqxUpdateGuard guard(this);
    ExtractItem(Item).reset();
    NotifySQLUpdated();
    // A query always has an operand.
    if (Items_.empty() && GetParentGroup() == nullptr && GetQueryBuilder() != nullptr &&
        !GetQueryBuilder()->IsDestroying())
      InsertAST(0, model::MakeEmptySelect(GetASTSyntaxProvider()));
  }
  DropIfEmpty();  // may free this group: nothing may follow
}

void TqxUnionGroup::DropIfEmpty() {
  if (!Items_.empty())
    return;
  if (TqxUnionGroup* parent = GetParentGroup())
    parent->Remove(this);
}

void TqxUnionGroup::Clear() {
  if (Items_.empty())
    return;
  while (!Items_.empty())
    Items_.pop_back();
  NotifySQLUpdated();
}

// ---- the union structure

void TqxUnionGroup::RemoveBrackets() {
  TqxUnionGroup* parent = GetParentGroup();
  if (parent == nullptr)
    return;
  TqxUpdateGuard guard(parent);
  int index = parent->IndexOf(this);
  std::vector<std::unique_ptr<TqxQueryBase>> items = std::move(Items_);
  Items_.clear();
  if (!items.empty())
    items.front()->UnionOperator_ = UnionOperator_;
  std::unique_ptr<TqxQueryBase> self = parent->ExtractItem(this);
  for (auto& item : items)
    parent->InsertItem(index++, std::move(item));
  parent->NotifySQLUpdated();
  self.reset();  // frees this group
}

TqxUnionGroup* TqxUnionGroup::EncloseWithBrackets(TqxQueryBase* Item) {
  const int index = IndexOf(Item);
  if (index < 0)
    throw EqxError("The union item is not in this group");
  CheckCanAddGroup();
  TqxUpdateGuard guard(this);
  auto group = std::make_unique<TqxUnionGroup>(GetQueryBuilder(), this);
  group->UnionOperator_ = Item->UnionOperator_;
  TqxUnionGroup* raw = group.get();
  std::unique_ptr<TqxQueryBase> item = ExtractItem(Item);
  InsertItem(index, std::move(group));
  raw->InsertItem(0, std::move(item));
  raw->CreateControlsRecursive();
  NotifySQLUpdated();
  return raw;
}

std::unique_ptr<TqxQueryBase> TqxUnionGroup::Detach(TqxQueryBase* Item) {
  TqxUnionGroup* parent = Item != nullptr ? Item->GetParentGroup() : nullptr;
  if (parent == nullptr)
    throw EqxError("The union item is not in a group");
  return parent->ExtractItem(Item);
}

namespace {
void CheckMovable(const TqxQueryBase* Item, const TqxQueryBase* Target) {
  if (Item == nullptr || Target == nullptr || Item->GetParentGroup() == nullptr ||
      Target->GetParentGroup() == nullptr)
    throw EqxError("The union item is not in a group");
  if (Item->GetSubQuery() != Target->GetSubQuery())
    throw EqxError("Union items can only be moved within their query");
  const auto* group = As<const TqxUnionGroup>(Item);
  if (group != nullptr && (group == Target || group->Contains(Target)))
    throw EqxError("A union group can't be moved into itself");
}
}  // namespace

void TqxUnionGroup::InsertBefore(TqxQueryBase* Item, TqxQueryBase* Target) {
  if (Item == Target)
    return;
  CheckMovable(Item, Target);
  TqxSubQuery* query = Item->GetSubQuery();
  TqxUpdateGuard guard(query);
  TqxUnionGroup* from = Item->GetParentGroup();
  std::unique_ptr<TqxQueryBase> item = Detach(Item);
  TqxUnionGroup* to = Target->GetParentGroup();
  to->InsertItem(to->IndexOf(Target), std::move(item));
  to->NotifySQLUpdated();
  from->DropIfEmpty();
}

void TqxUnionGroup::InsertAfter(TqxQueryBase* Item, TqxQueryBase* Target) {
  if (Item == Target)
    return;
  CheckMovable(Item, Target);
  TqxSubQuery* query = Item->GetSubQuery();
  TqxUpdateGuard guard(query);
  TqxUnionGroup* from = Item->GetParentGroup();
  std::unique_ptr<TqxQueryBase> item = Detach(Item);
  TqxUnionGroup* to = Target->GetParentGroup();
  to->InsertItem(to->IndexOf(Target) + 1, std::move(item));
  to->NotifySQLUpdated();
  from->DropIfEmpty();
}

void TqxUnionGroup::AddToBegin(TqxQueryBase* Item) {
  if (Items_.empty())
    throw EqxError("The union group is empty");
  if (IndexOf(Item) == 0)
    return;
  InsertBefore(Item, Items_.front().get());
}

void TqxUnionGroup::AddToEnd(TqxQueryBase* Item) {
  if (Items_.empty())
    throw EqxError("The union group is empty");
  if (IndexOf(Item) == GetCount() - 1)
    return;
  InsertAfter(Item, Items_.back().get());
}

void TqxUnionGroup::RemoveFromBegin() {
  if (GetParentGroup() == nullptr || Items_.empty())
    return;
  InsertBefore(Items_.front().get(), this);
}

void TqxUnionGroup::RemoveFromEnd() {
  if (GetParentGroup() == nullptr || Items_.empty())
    return;
  InsertAfter(Items_.back().get(), this);
}

TqxUnionSubQuery* TqxUnionGroup::GetFirstOperand() const {
  for (const auto& item : Items_) {
    if (auto* operand = As<TqxUnionSubQuery>(item.get()))
      return operand;
    if (const auto* group = As<const TqxUnionGroup>(item.get())) {
      if (TqxUnionSubQuery* operand = group->GetFirstOperand())
        return operand;
    }
  }
  return nullptr;
}

void TqxUnionGroup::GetOperands(std::vector<TqxUnionSubQuery*>& List) const {
  for (const auto& item : Items_) {
    if (auto* operand = As<TqxUnionSubQuery>(item.get()))
      List.push_back(operand);
    else if (const auto* group = As<const TqxUnionGroup>(item.get()))
      group->GetOperands(List);
  }
}

void TqxUnionGroup::BuildList(std::vector<TqxQueryBase*>& List) const {
  for (const auto& item : Items_) {
    List.push_back(item.get());
    if (const auto* group = As<const TqxUnionGroup>(item.get())) {
      group->BuildList(List);
      List.push_back(item.get());
    }
  }
}

bool TqxUnionGroup::Contains(const TqxQueryBase* Item) const {
  for (const auto& item : Items_) {
    if (item.get() == Item)
      return true;
    if (const auto* group = As<const TqxUnionGroup>(item.get())) {
      if (group->Contains(Item))
        return true;
    }
  }
  return false;
}

void TqxUnionGroup::GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const {
  TqxQueryBase::GetChildOwners(List);
  for (const auto& item : Items_)
    List.push_back(item.get());
}

void TqxUnionGroup::FreeModelObject() {
  if (TqxUnionGroup* parent = GetParentGroup())
    parent->Remove(this);
}

void TqxUnionGroup::GetPopupMenu(TqxPopupMenu& Menu) {
  if (GetParentGroup() == nullptr)
    return;
  TqxMenuItem remove;
  remove.Caption = "Remove Brackets";
  remove.OnClick = [this] { RemoveBrackets(); };
  Menu.push_back(std::move(remove));
}

// ---------------------------------------------------------------------------------------
// TqxUnionSubQuery

TqxUnionSubQuery::TqxUnionSubQuery(TqxBaseQueryBuilder* QueryBuilder,
                                   TqxQueryBuilderControlOwner* Parent)
    : TqxQueryBase(QueryBuilder, Parent) {
  Shell_ = NewNode<TSQLSubQuerySelectExpression>(GetASTSyntaxProvider());
  FromClause_ = std::make_unique<TqxFromClause>(this);
  SelectList_ = std::make_unique<TqxSelectList>(this);
}

TqxUnionSubQuery::~TqxUnionSubQuery() {
  BeginDestroy();
  // Rows refer to the FROM sources: they go first.
  SelectList_.reset();
  FromClause_.reset();
}

std::string TqxUnionSubQuery::GetName() const {
  const TqxSubQuery* query = GetSubQuery();
  if (query != nullptr && query->GetUnionGroup() != nullptr) {
    std::vector<TqxUnionSubQuery*> operands;
    query->GetUnionGroup()->GetOperands(operands);
    auto it = std::find(operands.begin(), operands.end(), this);
    if (it != operands.end())
      return "Q" + std::to_string(it - operands.begin() + 1);
  }
  return "Q";
}

bool TqxUnionSubQuery::GetDistinct() const {
  return As<const TSQLSubQuerySelectModeDistinct>(Shell_->GetSelectMode()) != nullptr;
}

void TqxUnionSubQuery::SetDistinct(bool Value) {
  if (Value == GetDistinct())
    return;
  if (Value)
    Shell_->SetSelectMode(NewNode<TSQLSubQuerySelectModeDistinct>(Shell_->GetSyntaxProvider()));
  else
    Shell_->SetSelectMode(nullptr);
  NotifySQLUpdated();
}

void TqxUnionSubQuery::LoadFromAST(std::unique_ptr<TSQLSubQuerySelectExpression> Node) {
  if (!Node)
    return;
  TqxUpdateGuard guard(this);
  std::unique_ptr<TSQLSelectItems> items = Node->ExtractSelectItems();
  std::unique_ptr<TSQLFromClause> from = Node->ExtractFromClause();
  std::unique_ptr<TSQLExpressionItem> where = Node->ExtractWhere();
  std::unique_ptr<TSQLGroupByList> groupBy = Node->ExtractGroupBy();
  std::unique_ptr<TSQLExpressionItem> having = Node->ExtractHaving();
  std::unique_ptr<TSQLOrderByClause> orderBy = Node->ExtractOrderBy();
  Shell_ = std::move(Node);
  FromClause_->LoadFromAST(std::move(from));
  SelectList_->LoadSelectListFromAST(std::move(items));
  // Grouped rows first, so that a column both grouped and filtered gets a row for each.
  SelectList_->LoadGroupByListFromAST(std::move(groupBy));
  SelectList_->LoadConditionFromAST(std::move(where), kWhereLoadTypes, gtWhere);
  SelectList_->LoadConditionFromAST(std::move(having), kHavingLoadTypes, gtHaving);
  SelectList_->LoadOrderByListFromAST(std::move(orderBy));
  NotifySQLUpdated();
}

std::unique_ptr<TSQLSubQuerySelectExpression> TqxUnionSubQuery::BuildAST(
    TSQLFromSourceMap& Map) const {
  std::unique_ptr<TSQLSubQuerySelectExpression> node = CloneNode(*Shell_);
  node->SetSelectItems(SelectList_->GetASTTree());
  node->SetFromClause(FromClause_->BuildClause(Map));
  node->SetWhere(SelectList_->GetConditionTree(TqxQueryBuilderGroupByTypes{gtWhere}));
  node->SetGroupBy(SelectList_->GetGroupByTree());
  node->SetHaving(SelectList_->GetConditionTree(
      TqxQueryBuilderGroupByTypes{gtGroupBy, gtHaving, gtAggregateStar, gtAggregate}));
  node->UnionOperator = UnionOperator_;
  node->All = false;
  return node;
}

std::unique_ptr<TSQLSubQuerySelectExpression> TqxUnionSubQuery::GetASTTree() const {
  TSQLFromSourceMap map;
  std::unique_ptr<TSQLSubQuerySelectExpression> node = BuildAST(map);
  RemapFromSourceReferences(*node, map);
  return node;
}

// ---- editing the diagram

namespace {
// The FROM object the syntax provider makes of a name (its parsing of quotes and parts).
std::unique_ptr<TSQLFromObject> ObjectFromName(const TqxBaseQueryBuilder* Builder,
                                               const std::string& Name, const std::string& Alias) {
  const TqxBaseSyntaxProvider* provider =
      Builder != nullptr ? Builder->GetSyntaxProvider() : nullptr;
  if (provider == nullptr)
    return nullptr;
  return provider->CreateSQLFromObject(Name, Alias);
}
}  // namespace

TqxDataSourceObject* TqxUnionSubQuery::AddObject(const std::string& Name,
                                                 const std::string& Alias) {
  return AddObjectAt(Name, TqxPoint{}, Alias.empty() ? MakeDefaultAlias(Name) : Alias);
}

TqxDataSourceObject* TqxUnionSubQuery::AddObjectAt(const std::string& Name, TqxPoint Point,
                                                   const std::string& Alias) {
  std::unique_ptr<TSQLFromObject> source = ObjectFromName(GetQueryBuilder(), Name, Alias);
  if (!source)
    return nullptr;
  TqxUpdateGuard guard(this);
  auto* ds = static_cast<TqxDataSourceObject*>(
      FromClause_->Add(std::make_unique<TqxDataSourceObject>(this, FromClause_.get())));
  try {
    ds->LoadFromAST(std::move(source));
    ds->RefreshMetadata();
  } catch (...) {
    FromClause_->Remove(ds);
    throw;
  }
  ds->SetLeft(Point.X);
  ds->SetTop(Point.Y);
  ds->CreateControl();
  return ds;
}

TqxDataSourceObject* TqxUnionSubQuery::AddObjectWithFK(const std::string& Name,
                                                       const std::string& Alias) {
  TqxUpdateGuard guard(this);
  TqxDataSourceObject* ds = AddObject(Name, Alias);
  if (ds != nullptr)
    AddFKLinksForObject(ds);
  return ds;
}

TqxDataSourceObject* TqxUnionSubQuery::AddObjectWithFKAt(const std::string& Name, TqxPoint Point,
                                                         const std::string& Alias) {
  TqxUpdateGuard guard(this);
  TqxDataSourceObject* ds = AddObjectAt(Name, Point, Alias);
  if (ds != nullptr)
    AddFKLinksForObject(ds);
  return ds;
}

TqxDataSourceQuery* TqxUnionSubQuery::AddQuery(const std::string& Alias) {
  return AddQueryAt(TqxPoint{}, Alias);
}

TqxDataSourceQuery* TqxUnionSubQuery::AddQueryAt(TqxPoint Point, const std::string& Alias) {
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  if (provider == nullptr)
    return nullptr;
  if (IsMainQuery() ? !provider->IsSupportDerivedTables()
                    : !provider->IsSupportSubQueryDerivedTables())
    throw EqxError(IsMainQuery() ? "This server don't support derived tables!"
                                 : "This server don't support derived tables in subqueries!");
  // A derived table needs a name in most dialects: "q1", "q2", ... unless one is given.
  std::string alias = Alias;
  if (alias.empty()) {
    std::vector<std::string> used;
    for (const TqxDatasource* ds : GetDatasources())
      used.push_back(model::UpperCase(ds->GetQualifier()));
    for (int n = 1; alias.empty(); ++n) {
      const std::string candidate = "q" + std::to_string(n);
      if (std::find(used.begin(), used.end(), model::UpperCase(candidate)) == used.end())
        alias = candidate;
    }
  }
  TastSyntaxProvider* ast = provider->GetASTSyntaxProvider();
  auto statement = NewNode<TSQLSubSelectStatement>(ast);
  statement->Add(model::MakeEmptySelect(ast));
  auto source = NewNode<TSQLFromQuery>(ast);
  source->SetSubQuery(std::move(statement));
  source->SetAlias(NewNode<TSQLAliasObjectAlias>(ast, alias));
  TqxUpdateGuard guard(this);
  auto* ds = static_cast<TqxDataSourceQuery*>(
      FromClause_->Add(std::make_unique<TqxDataSourceQuery>(this, FromClause_.get())));
  try {
    ds->LoadFromAST(std::move(source));
  } catch (...) {
    FromClause_->Remove(ds);
    throw;
  }
  ds->SetLeft(Point.X);
  ds->SetTop(Point.Y);
  ds->CreateControlsRecursive();
  return ds;
}

std::string TqxUnionSubQuery::MakeDefaultAlias(const std::string& Name) const {
  std::unique_ptr<TSQLFromObject> source = ObjectFromName(GetQueryBuilder(), Name, std::string());
  if (!source || source->GetDatabaseObject() == nullptr)
    return {};
  std::vector<TqxDataSourceObject*> present;
  FromClause_->FindTablesByDBName(*source->GetDatabaseObject(), present);
  if (present.empty())
    return {};
  // Unique among the aliases and object names the query already uses.
  std::vector<std::string> used;
  for (const TqxDatasource* ds : GetDatasources()) {
    used.push_back(model::UpperCase(ds->GetAlias()));
    if (const auto* object = As<const TqxDataSourceObject>(ds)) {
      if (object->GetObjectName() != nullptr)
        used.push_back(model::UpperCase(object->GetObjectName()->GetObjName()));
    }
  }
  const std::string base = source->GetDatabaseObject()->GetObjName();
  for (int n = 1;; ++n) {
    const std::string candidate = base + std::to_string(n);
    if (std::find(used.begin(), used.end(), model::UpperCase(candidate)) == used.end())
      return candidate;
  }
}

// A hand-made link belongs to the later of its two datasources in FROM order, where both
// are visible: the item of the innermost group holding both that holds the later one.
// Its ends are put in FROM order too (left the earlier), as links read from SQL are.
// The new join is an inner join; sources joined by a comma before it become cross
// joins, so the ON condition may refer to them in every dialect.
TqxLink* TqxUnionSubQuery::AddLink(TqxDatasourceBase* Left, const std::string& LeftField,
                                   TqxDatasourceBase* Right, const std::string& RightField) {
  auto* left = As<TqxDatasource>(Left);
  auto* right = As<TqxDatasource>(Right);
  if (left == nullptr || right == nullptr || left == right)
    throw EqxError("A link joins fields of two different datasources");
  if (!FromClause_->ContainsDatasource(left, true) || !FromClause_->ContainsDatasource(right, true))
    throw EqxError("The datasources of a link must belong to the same query");
  if (LeftField.empty() || RightField.empty() || LeftField == "*" || RightField == "*")
    throw EqxError("A link joins two fields");
  TqxDatasourceGroup* group = FromClause_.get();
  int leftIndex = -1;
  int rightIndex = -1;
  for (;;) {
    leftIndex = rightIndex = -1;
    for (int i = 0; i < group->GetCount(); ++i) {
      if (group->GetItems(i)->ContainsDatasource(left, true))
        leftIndex = i;
      if (group->GetItems(i)->ContainsDatasource(right, true))
        rightIndex = i;
    }
    auto* inner =
        leftIndex == rightIndex ? As<TqxDatasourceGroup>(group->GetItems(leftIndex)) : nullptr;
    if (inner == nullptr)
      break;
    group = inner;
  }
  std::string leftField = LeftField;
  std::string rightField = RightField;
  if (leftIndex > rightIndex) {
    std::swap(left, right);
    std::swap(leftField, rightField);
    std::swap(leftIndex, rightIndex);
  }
  TqxDatasourceBase* owner = group->GetItems(rightIndex);
  if (TqxLink* existing = owner->FindLink(left, leftField, right, rightField))
    return existing;
  TastSyntaxProvider* provider = GetASTSyntaxProvider();
  auto expression = NewNode<TSQLExpressionOperatorBinary>(provider);
  expression->SetInner(model::MakeColumnExpression(left, leftField));
  expression->SetOperator(NewNode<TSQLOperator>(provider, std::string("=")));
  expression->SetRight(model::MakeColumnExpression(right, rightField));
  TqxUpdateGuard guard(this);
  TqxLink* link =
      owner->CreateDatasourceLink(left, leftField, right, rightField, std::move(expression));
  if (owner->GetJoinKind() == nullptr || As<TSQLJoinKindCross>(owner->GetJoinKind()) != nullptr)
    owner->SetJoinKind(NewNode<TSQLJoinKindInner>(provider));
  for (int i = 1; i < rightIndex; ++i) {
    if (group->GetItems(i)->GetJoinKind() == nullptr)
      group->GetItems(i)->SetJoinKind(NewNode<TSQLJoinKindCross>(provider));
  }
  owner->NotifySQLUpdated();
  link->RepaintControls();
  return link;
}

void TqxUnionSubQuery::AddFKLinksForObject(TqxDataSourceObject* DS) {
  TqxBaseMetadataProvider* metadata =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetMetadataProvider() : nullptr;
  const TastSyntaxProvider* syntax = GetASTSyntaxProvider();
  if (metadata == nullptr || syntax == nullptr || DS == nullptr || DS->GetObjectName() == nullptr)
    return;
  const TSQLDatabaseObject& object = *DS->GetObjectName();
  TSQLMetadataRelations relations;
  try {
    metadata->GetTableRelations(object, relations);
  } catch (const std::exception& error) {
    // No foreign keys to follow; the datasource stays as it was added.
    GetQueryBuilder()->DoMetadataError(DS, error.what());
    return;
  }
  TqxUpdateGuard guard(this);
  for (const auto& relation : relations) {
    if (!relation || !relation->PKTable || !relation->FKTable)
      continue;
    const bool referenced = syntax->IsDBObjectNamesEqual(*relation->PKTable, object);
    const TSQLDatabaseObject& other = referenced ? *relation->FKTable : *relation->PKTable;
    std::vector<TqxDataSourceObject*> others;
    FromClause_->FindTablesByDBName(other, others);
    const std::size_t pairs = std::min(relation->PKColumns.size(), relation->FKColumns.size());
    for (TqxDataSourceObject* ds : others) {
      if (ds == DS)
        continue;
      for (std::size_t i = 0; i < pairs; ++i) {
        const std::string& ownColumn = referenced ? relation->PKColumns[i] : relation->FKColumns[i];
        const std::string& otherColumn =
            referenced ? relation->FKColumns[i] : relation->PKColumns[i];
        if (FindLink(ds, otherColumn, DS, ownColumn) == nullptr)
          AddLink(ds, otherColumn, DS, ownColumn);
      }
    }
  }
}

namespace {
TqxLink* FindLinkIn(const TqxDatasourceBase* Item, const TqxDatasourceBase* Left,
                    const std::string& LeftField, const TqxDatasourceBase* Right,
                    const std::string& RightField) {
  if (TqxLink* link = Item->FindLink(Left, LeftField, Right, RightField))
    return link;
  if (TqxLink* link = Item->FindLink(Right, RightField, Left, LeftField))
    return link;
  if (const auto* group = As<const TqxDatasourceGroup>(Item)) {
    for (int i = 0; i < group->GetCount(); ++i) {
      if (TqxLink* link = FindLinkIn(group->GetItems(i), Left, LeftField, Right, RightField))
        return link;
    }
  }
  return nullptr;
}
}  // namespace

TqxLink* TqxUnionSubQuery::FindLink(const TqxDatasourceBase* Left, const std::string& LeftField,
                                    const TqxDatasourceBase* Right,
                                    const std::string& RightField) const {
  return FindLinkIn(FromClause_.get(), Left, LeftField, Right, RightField);
}

void TqxUnionSubQuery::FindTablesByDBName(const TSQLDatabaseObject& Name,
                                          std::vector<TqxDataSourceObject*>& List) const {
  FromClause_->FindTablesByDBName(Name, List);
}

void TqxUnionSubQuery::FindTablesByDBName(const std::string& Name,
                                          std::vector<TqxDataSourceObject*>& List) const {
  std::unique_ptr<TSQLFromObject> source = ObjectFromName(GetQueryBuilder(), Name, std::string());
  if (source && source->GetDatabaseObject() != nullptr)
    FromClause_->FindTablesByDBName(*source->GetDatabaseObject(), List);
}

void TqxUnionSubQuery::RemoveDatasource(TqxDatasourceBase* DS) {
  if (DS == nullptr || DS == FromClause_.get() || !FromClause_->ContainsDatasource(DS, true))
    return;
  TqxUpdateGuard guard(this);
  NotifyDatasourceDestroying(DS);
  TqxDatasourceGroup* group = DS->GetGroup();
  group->Remove(DS);
  group->ClearFirstItemJoin();
  NotifySQLUpdated();
  if (group != FromClause_.get() && group->GetCount() == 0)
    RemoveDatasource(group);
}

void TqxUnionSubQuery::RemoveLink(TqxLink* Link) {
  if (Link != nullptr && Link->GetOwnerDatasource() != nullptr)
    Link->GetOwnerDatasource()->RemoveLink(Link);
}

std::vector<TqxDatasource*> TqxUnionSubQuery::GetDatasources() const {
  std::vector<TqxDatasource*> list;
  FromClause_->GetAllDatasources(list);
  return list;
}

void TqxUnionSubQuery::GetVisibleSources(std::vector<TSQLFromSource*>& List) const {
  const TqxSubQuery* query = GetSubQuery();
  if (const TqxUnionSubQuery* outer =
          query != nullptr ? query->GetParentUnionSubQuery() : nullptr) {
    outer->GetVisibleSources(List);
    // A derived table does not see the sources beside it in its FROM clause.
    bool derived = false;
    for (const TqxQueryBuilderControlOwner* owner = query->GetParent();
         owner != nullptr && owner != outer; owner = owner->GetParent()) {
      if (As<const TqxDatasource>(owner) != nullptr)
        derived = true;
    }
    if (derived) {
      while (!List.empty() && List.back() != nullptr)
        List.pop_back();
      if (!List.empty())
        List.pop_back();
    }
  }
  List.push_back(nullptr);
  for (TqxDatasource* ds : GetDatasources()) {
    if (ds->GetFromSource() != nullptr)
      List.push_back(ds->GetFromSource());
  }
}

void TqxUnionSubQuery::BindNames(TastExtender& Root) const {
  std::vector<TSQLFromSource*> sources;
  GetVisibleSources(sources);
  Root.FixupObjects(sources);
}

void TqxUnionSubQuery::GetPopupMenuWA(TqxPopupMenu& Menu) {
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  TqxMenuItem addTable;
  addTable.Caption = "Add Table";
  addTable.OnClick = [this] {
    if (GetQueryBuilder() != nullptr)
      GetQueryBuilder()->ShowAddObjectForm();
  };
  Menu.push_back(std::move(addTable));
  TqxMenuItem addQuery;
  addQuery.Caption = "Add Subquery";
  addQuery.OnClick = [this] { AddQuery(); };
  Menu.push_back(std::move(addQuery));
  TqxMenuItem unionMenu;
  unionMenu.Caption = "Union";
  GetPopupMenu(unionMenu.Items);
  Menu.push_back(std::move(unionMenu));
  TqxMenuItem edit;
  edit.Caption = "Edit...";
  edit.Enabled = provider != nullptr;
  edit.Default = true;
  edit.OnClick = [this] { EditProps(); };
  Menu.push_back(std::move(edit));
}

void TqxUnionSubQuery::GetPopupMenu(TqxPopupMenu& Menu) {
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  const bool main = IsMainQuery();
  TqxUnionGroup* group = GetParentGroup();
  TqxMenuItem add;
  add.Caption = "New Union SubQuery";
  add.Enabled = provider != nullptr &&
                (main ? provider->IsSupportUnions() : provider->IsSupportSubQueryUnions());
  add.OnClick = [this, group] {
    if (group != nullptr)
      group->Insert(group->IndexOf(this) + 1);
  };
  Menu.push_back(std::move(add));
  TqxMenuItem enclose;
  enclose.Caption = "Enclose With Brackets";
  enclose.Enabled = provider != nullptr && (main ? provider->IsSupportBracketsInUnions()
                                                 : provider->IsSupportSubQueryBracketsInUnions());
  enclose.OnClick = [this, group] {
    if (group != nullptr)
      group->EncloseWithBrackets(this);
  };
  Menu.push_back(std::move(enclose));
  TqxMenuItem remove;
  remove.Caption = "Remove";
  remove.Enabled = group != nullptr && group->GetCount() >= 2;
  remove.OnClick = [this] { RemoveEvent(); };
  Menu.push_back(std::move(remove));
}

bool TqxUnionSubQuery::GetEditPropsDialog(TqxDialogKind& Kind) const {
  Kind = TqxDialogKind::dkQueryProps;
  return true;
}

void TqxUnionSubQuery::FreeModelObject() {
  if (TqxUnionGroup* group = GetParentGroup())
    group->Remove(this);
}

void TqxUnionSubQuery::GetASTChildren(std::vector<TastNode*>& List) const {
  List.push_back(Shell_.get());
}

void TqxUnionSubQuery::GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const {
  TqxQueryBase::GetChildOwners(List);
  List.push_back(FromClause_.get());
  List.push_back(SelectList_.get());
}

// ---------------------------------------------------------------------------------------
// TqxSubQuery

TqxSubQuery::TqxSubQuery(TqxBaseQueryBuilder* QueryBuilder, TqxQueryBuilderControlOwner* Parent)
    : TqxQueryBase(QueryBuilder, Parent) {
  UnionGroup_ = std::make_unique<TqxUnionGroup>(QueryBuilder, this);
  if (QueryBuilder != nullptr)
    QueryBuilder->RegisterSubQuery(this);
}

TqxSubQuery::~TqxSubQuery() {
  BeginDestroy();
  UnionGroup_.reset();
  if (GetQueryBuilder() != nullptr)
    GetQueryBuilder()->UnregisterSubQuery(this);
}

TqxSubQuery* TqxSubQuery::GetParentSubQuery() const {
  return TqxQueryBase::GetSubQuery();
}

TqxUnionSubQuery* TqxSubQuery::GetParentUnionSubQuery() const {
  for (TqxQueryBuilderControlOwner* owner = GetParent(); owner != nullptr;
       owner = owner->GetParent()) {
    if (auto* operand = As<TqxUnionSubQuery>(owner))
      return operand;
  }
  return nullptr;
}

std::unique_ptr<TSQLSubSelectStatement> TqxSubQuery::NewStatement() const {
  return NewNode<TSQLSubSelectStatement>(GetASTSyntaxProvider());
}

void TqxSubQuery::LoadFromAST(std::unique_ptr<TSQLSubSelectStatement> Statement) {
  if (!Statement)
    return;
  TqxUpdateGuard guard(this);
  // The new structure is built aside and replaces the old one only when complete.
  auto group = std::make_unique<TqxUnionGroup>(GetQueryBuilder(), this);
  std::unique_ptr<TSQLOrderByClause> orderBy = Statement->ExtractOrderBy();
  group->LoadFromAST(*Statement);
  if (group->GetCount() == 0)
    group->AddAST(model::MakeEmptySelect(GetASTSyntaxProvider()));
  if (orderBy) {
    if (TqxUnionSubQuery* first = group->GetFirstOperand())
      first->GetSelectList()->LoadOrderByListFromAST(std::move(orderBy));
  }
  SetActiveUnionSubquery(nullptr);
  UnionGroup_ = std::move(group);
  NotifySQLUpdated();
}

std::unique_ptr<TSQLSubSelectStatement> TqxSubQuery::GetASTTree() const {
  TSQLFromSourceMap map;
  std::unique_ptr<TSQLSubSelectStatement> statement = NewStatement();
  std::unique_ptr<TSQLSubQueryExpressions> chain = UnionGroup_->BuildAST(map);
  std::vector<std::unique_ptr<TSQLSubQueryExpression>> operands;
  operands.reserve(static_cast<std::size_t>(chain->GetCount()));
  while (chain->GetCount() > 0)
    operands.push_back(chain->Extract(chain->GetCount() - 1));
  for (auto it = operands.rbegin(); it != operands.rend(); ++it)
    statement->Add(std::move(*it));
  if (const TqxUnionSubQuery* first = GetFirstOperand())
    statement->SetOrderBy(first->GetSelectList()->GetOrderByClause());
  RemapFromSourceReferences(*statement, map);
  return statement;
}

std::string TqxSubQuery::GetSQL() const {
  std::unique_ptr<TSQLSubSelectStatement> statement = GetASTTree();
  std::string text;
  TSQLBuilderPlainText builder(&text);
  builder.ResetBuilder();
  statement->BuildSQL(builder, true);
  return text;
}

TqxUnionSubQuery* TqxSubQuery::GetFirstOperand() const {
  return UnionGroup_ ? UnionGroup_->GetFirstOperand() : nullptr;
}

TqxUnionSubQuery* TqxSubQuery::GetActiveUnionSubquery() const {
  return ActiveOperand_ != nullptr ? ActiveOperand_ : GetFirstOperand();
}

void TqxSubQuery::SetActiveUnionSubquery(TqxUnionSubQuery* Operand) {
  if (Operand == ActiveOperand_)
    return;
  if (Operand != nullptr && (UnionGroup_ == nullptr || !UnionGroup_->Contains(Operand)))
    throw EqxError("The union operand is not in this query");
  if (ActiveOperand_ != nullptr)
    RemoveFreeNotification(ActiveOperand_);
  ActiveOperand_ = Operand;
  if (Operand != nullptr) {
    FreeNotification(Operand);
    Operand->MakeVisible();
  }
}

void TqxSubQuery::Notification(TqxComponent* Component, TOperation Operation) {
  if (Operation == TOperation::opRemove && Component == ActiveOperand_)
    ActiveOperand_ = nullptr;
  TqxQueryBase::Notification(Component, Operation);
}

void TqxSubQuery::Clear() {
  TqxUpdateGuard guard(this);
  SetActiveUnionSubquery(nullptr);
  UnionGroup_->Clear();
  if (GetQueryBuilder() != nullptr && !GetQueryBuilder()->IsDestroying())
    UnionGroup_->AddAST(model::MakeEmptySelect(GetASTSyntaxProvider()));
  NotifySQLUpdated();
}

void TqxSubQuery::GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const {
  TqxQueryBase::GetChildOwners(List);
  if (UnionGroup_)
    List.push_back(UnionGroup_.get());
}

// ---------------------------------------------------------------------------------------
// TqxQuery

TqxQuery::TqxQuery(TqxBaseQueryBuilder* QueryBuilder) : TqxSubQuery(QueryBuilder, nullptr) {}

std::unique_ptr<TSQLSubSelectStatement> TqxQuery::NewStatement() const {
  return NewNode<TSQLSelectStatement>(GetASTSyntaxProvider());
}

std::unique_ptr<TSQLSelectStatement> TqxQuery::GetSelectStatement() const {
  return Downcast<TSQLSelectStatement>(GetASTTree());
}

// ---------------------------------------------------------------------------------------
// TqxSubSelectStatementProxy

QX_DEFINE_PROXY_CLASS(TqxSubSelectStatementProxy, TSQLSubSelectStatementProxy)

TqxSubSelectStatementProxy::TqxSubSelectStatementProxy(
    TastSyntaxProvider* SyntaxProvider, TqxQueryBuilderControlOwner* Owner,
    std::unique_ptr<TSQLSubSelectStatement> Statement)
    : TSQLSubSelectStatementProxy(SyntaxProvider, Owner, std::move(Statement)) {
  if (Owner == nullptr)
    throw EqxError("A sub-query needs a model object to belong to");
  SubQuery_ = std::make_unique<TqxSubQuery>(Owner->GetQueryBuilder(), Owner);
  SubQuery_->LoadFromAST(TakeStatement());
}

TqxSubSelectStatementProxy::~TqxSubSelectStatementProxy() = default;

std::unique_ptr<TSQLSubSelectStatement> TqxSubSelectStatementProxy::GetASTTree() const {
  return SubQuery_->GetASTTree();
}

}  // namespace qorvex
