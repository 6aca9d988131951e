#include "qorvex/model/datasources.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "model/model_util.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"
#include "qorvex/model/select_list.h"

namespace qorvex {

using model::As;
using model::Downcast;

namespace {

// The menu of a diagram object that can be removed and edited in a dialog.
void AddRemoveAndEdit(TqxPopupMenu& Menu, std::function<void()> Remove,
                      std::function<void()> Edit) {
  TqxMenuItem remove;
  remove.Caption = "Remove";
  remove.OnClick = std::move(Remove);
  Menu.push_back(std::move(remove));
  TqxMenuItem edit;
  edit.Caption = "Edit...";
  edit.Default = true;
  edit.OnClick = std::move(Edit);
  Menu.push_back(std::move(edit));
}

TSQLExpressionItem* StripBrackets(TSQLExpressionItem* E) {
  while (auto* brackets = As<TSQLExpressionBrackets>(E))
    E = brackets->GetInner();
  return E;
}

// Takes the node out of any brackets around it.
std::unique_ptr<TSQLExpressionItem> StripBracketsOwned(std::unique_ptr<TSQLExpressionItem> E) {
  while (auto* brackets = As<TSQLExpressionBrackets>(E.get())) {
    if (brackets->GetInner() == nullptr)
      break;
    E = brackets->ExtractInner();
  }
  return E;
}

// A comparison (any binary operator) of two column references.
const TSQLExpressionOperatorBinary* ColumnPair(const TSQLExpressionItem* E) {
  const auto* binary = As<const TSQLExpressionOperatorBinary>(E);
  if (binary == nullptr)
    return nullptr;
  if (As<const TSQLExpressionColumn>(binary->GetInner()) == nullptr ||
      As<const TSQLExpressionColumn>(binary->GetRight()) == nullptr)
    return nullptr;
  return binary;
}

// Whether a join condition holds a column-pair term: the condition itself, or an item
// of an AND (nested ANDs included), brackets stripped.
bool HasColumnPairTerm(TSQLExpressionItem* E) {
  E = StripBrackets(E);
  if (ColumnPair(E) != nullptr)
    return true;
  if (auto* conjunction = As<TSQLExpressionAnd>(E)) {
    for (int i = 0; i < conjunction->Count(); ++i) {
      if (HasColumnPairTerm(conjunction->GetItems(i)))
        return true;
    }
  }
  return false;
}

const TSQLFromSource* ColumnSource(const TSQLExpressionItem* E) {
  const auto* column = As<const TSQLExpressionColumn>(E);
  return column != nullptr && column->GetColumn() != nullptr ? column->GetColumn()->GetFromSource()
                                                             : nullptr;
}

std::string ColumnName(const TSQLExpressionItem* E) {
  const auto* column = As<const TSQLExpressionColumn>(E);
  return column != nullptr && column->GetColumn() != nullptr ? column->GetColumn()->GetObjName()
                                                             : std::string();
}

struct PairBinding {
  TqxDatasourceBase* Left;
  std::string LeftField;
  TqxDatasourceBase* Right;
  std::string RightField;
};

}  // namespace

// ---------------------------------------------------------------------------------------
// TqxDatasourceBase

TqxDatasourceBase::TqxDatasourceBase(TqxUnionSubQuery* UnionSubQuery,
                                     TqxQueryBuilderControlOwner* Parent)
    : TqxQueryBuilderControlOwner(Parent != nullptr ? Parent->GetQueryBuilder() : nullptr, Parent),
      UnionSubQuery_(UnionSubQuery) {}

TqxDatasourceBase::~TqxDatasourceBase() {
  BeginDestroy();
  Links_.clear();
}

TqxDatasourceGroup* TqxDatasourceBase::GetGroup() const {
  return As<TqxDatasourceGroup>(GetParent());
}

void TqxDatasourceBase::LoadFromAST(std::unique_ptr<TSQLFromSource> Source) {
  Source_ = std::move(Source);
  WaitingCondition_ = Source_ ? Source_->ExtractJoinCondition() : nullptr;
  NotifySQLUpdated();
}

TSQLJoinKind* TqxDatasourceBase::GetJoinKind() const {
  return Source_ ? Source_->GetJoinKind() : nullptr;
}

void TqxDatasourceBase::SetJoinKind(std::unique_ptr<TSQLJoinKind> Kind) {
  if (!Source_)
    return;
  Source_->SetJoinKind(std::move(Kind));
  RepaintLinks();
  NotifySQLUpdated();
}

TqxLink* TqxDatasourceBase::GetJoins(int Index) const {
  if (Index < 0 || Index >= GetJoinsCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return Links_[static_cast<std::size_t>(Index)].get();
}

TqxLink* TqxDatasourceBase::CreateDatasourceLink(TqxDatasourceBase* Left,
                                                 const std::string& LeftField,
                                                 TqxDatasourceBase* Right,
                                                 const std::string& RightField,
                                                 std::unique_ptr<TSQLExpressionItem> Expression) {
  Links_.push_back(std::make_unique<TqxLink>(UnionSubQuery_, this));
  TqxLink* link = Links_.back().get();
  {
    TqxUpdateGuard guard(link);
    link->SetLeftField(LeftField);
    link->SetRightField(RightField);
    link->SetLeftDatasource(Left);
    link->SetRightDatasource(Right);
    link->SetLinkExpression(std::move(Expression));
  }
  link->CreateControl();
  return link;
}

TqxLink* TqxDatasourceBase::FindLink(const TqxDatasourceBase* Left, const std::string& LeftField,
                                     const TqxDatasourceBase* Right,
                                     const std::string& RightField) const {
  for (const auto& link : Links_) {
    if (link->GetLeftDatasource() == Left && link->GetRightDatasource() == Right &&
        model::UpperCase(link->GetLeftField()) == model::UpperCase(LeftField) &&
        model::UpperCase(link->GetRightField()) == model::UpperCase(RightField))
      return link.get();
  }
  return nullptr;
}

void TqxDatasourceBase::RemoveLink(TqxLink* Link) {
  auto it = std::find_if(Links_.begin(), Links_.end(),
                         [&](const auto& owned) { return owned.get() == Link; });
  if (it == Links_.end())
    return;
  TqxUpdateGuard guard(this);
  std::unique_ptr<TqxLink> link = std::move(*it);
  Links_.erase(it);
  link.reset();
  if (Links_.empty() && !IsDestroying()) {
    // The join stays, without a condition.
    const TqxDatasourceGroup* group = GetGroup();
    if (group == nullptr || group->IndexOf(this) > 0)
      SetJoinKind(NewNode<TSQLJoinKindCross>(Source_ ? Source_->GetSyntaxProvider() : nullptr));
  }
  NotifySQLUpdated();
}

bool TqxDatasourceBase::ContainsDatasource(const TqxDatasourceBase* DS, bool /*Recursive*/) const {
  return DS == this;
}

TqxDatasourceBase* TqxDatasourceBase::FindBySource(const TSQLFromSource* Source) {
  return Source != nullptr && Source_.get() == Source ? this : nullptr;
}

void TqxDatasourceBase::GetAllDatasources(std::vector<TqxDatasource*>& /*List*/) {}

void TqxDatasourceBase::NotifyDatasourceDestroyingInternal(TqxDatasourceBase* DS) {
  if (DS == this || DS == nullptr)
    return;
  bool removed = false;
  for (std::size_t i = Links_.size(); i-- > 0;) {
    TqxLink* link = Links_[i].get();
    const bool touches = (link->GetLeftDatasource() != nullptr &&
                          DS->ContainsDatasource(link->GetLeftDatasource(), true)) ||
                         (link->GetRightDatasource() != nullptr &&
                          DS->ContainsDatasource(link->GetRightDatasource(), true));
    if (touches) {
      Links_.erase(Links_.begin() + static_cast<std::ptrdiff_t>(i));
      removed = true;
    }
  }
  // A join that lost all its links is joined by a comma; one that never had links keeps
  // its kind.
  if (removed && Links_.empty() && Source_) {
    Source_->SetJoinKind(nullptr);
  }
  if (removed)
    NotifySQLUpdated();
}

void TqxDatasourceBase::RepaintLinks() {
  for (const auto& link : Links_)
    link->RepaintControls();
}

void TqxDatasourceBase::GetASTChildren(std::vector<TastNode*>& List) const {
  if (Source_)
    List.push_back(Source_.get());
  if (WaitingCondition_)
    List.push_back(WaitingCondition_.get());
}

void TqxDatasourceBase::GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const {
  TqxQueryBuilderControlOwner::GetChildOwners(List);
  for (const auto& link : Links_)
    List.push_back(link.get());
}

TqxQueryBuilderControlOwner* TqxDatasourceBase::GetControlParent() const {
  return UnionSubQuery_;
}

void TqxDatasourceBase::FreeModelObject() {
  if (UnionSubQuery_ != nullptr)
    UnionSubQuery_->RemoveDatasource(this);
}

std::unique_ptr<TSQLFromSource> TqxDatasourceBase::CopySource() const {
  return Source_ ? CloneNode(*Source_) : nullptr;
}

std::unique_ptr<TSQLFromSource> TqxDatasourceBase::BuildAST(TSQLFromSourceMap& Map) const {
  std::unique_ptr<TSQLFromSource> node = CopySource();
  if (!node)
    return nullptr;
  Map.emplace_back(Source_.get(), node.get());
  if (Links_.size() == 1 && Links_.front()->GetLinkExpression() != nullptr) {
    // An AND of one link is that link's condition.
    node->SetJoinCondition(CloneNode(*Links_.front()->GetLinkExpression()));
  } else if (!Links_.empty()) {
    auto conjunction = NewNode<TSQLExpressionAnd>(node->GetSyntaxProvider());
    for (const auto& link : Links_) {
      if (link->GetLinkExpression() != nullptr)
        conjunction->Add(CloneNode(*link->GetLinkExpression()));
    }
    node->SetJoinCondition(SimplifyLogicalExpression(std::move(conjunction)));
  }
  return node;
}

std::unique_ptr<TSQLFromSource> TqxDatasourceBase::GetASTTree() const {
  TSQLFromSourceMap map;
  std::unique_ptr<TSQLFromSource> node = BuildAST(map);
  if (node)
    RemapFromSourceReferences(*node, map);
  return node;
}

// ---- binding join conditions

void TqxDatasourceBase::LoadJoins(TqxDatasourceGroup* Group, TqxDatasourceBase* Prev) {
  if (!WaitingCondition_)
    return;
  if (Prev == nullptr)
    throw EqxError("Can't bind join expression (prev=nil)");
  std::unique_ptr<TSQLExpressionItem> condition = std::move(WaitingCondition_);
  if (HasColumnPairTerm(condition.get())) {
    condition = StripBracketsOwned(std::move(condition));
    BindCondition(condition, Group, Prev);
  }
  // What did not bind joins the previous datasource to this one as a link without fields.
  if (condition)
    CreateDatasourceLink(Prev, std::string(), this, std::string(), std::move(condition));
}

namespace {

// Where the two columns of a pair belong: the earlier datasource (the previous one, or
// one the group holds before this one) and this one, in either order.
std::optional<PairBinding> MatchColumnPair(const TSQLExpressionItem* Term,
                                           TqxUnionSubQuery* Operand, TqxDatasourceBase* Self,
                                           TqxDatasourceGroup* Group, TqxDatasourceBase* Prev) {
  const TSQLExpressionOperatorBinary* pair = ColumnPair(Term);
  if (pair == nullptr || Operand == nullptr || Operand->GetFromClause() == nullptr)
    return std::nullopt;
  const TSQLFromSource* sourceA = ColumnSource(pair->GetInner());
  const TSQLFromSource* sourceB = ColumnSource(pair->GetRight());
  if (sourceA == nullptr || sourceB == nullptr)
    return std::nullopt;
  TqxDatasourceBase* a = Operand->GetFromClause()->FindBySource(sourceA);
  TqxDatasourceBase* b = Operand->GetFromClause()->FindBySource(sourceB);
  if (a == nullptr || b == nullptr)
    return std::nullopt;
  auto earlier = [&](const TqxDatasourceBase* DS) {
    return (Prev != nullptr && Prev->ContainsDatasource(DS, true)) ||
           (Group != nullptr && Group->ContainsDatasourceBefore(DS, Self));
  };
  auto mine = [&](const TqxDatasourceBase* DS) { return Self->ContainsDatasource(DS, true); };
  const std::string nameA = ColumnName(pair->GetInner());
  const std::string nameB = ColumnName(pair->GetRight());
  if (earlier(a) && mine(b))
    return PairBinding{a, nameA, b, nameB};
  if (earlier(b) && mine(a))
    return PairBinding{b, nameB, a, nameA};
  return std::nullopt;
}

}  // namespace

bool TqxDatasourceBase::BindColumnPair(std::unique_ptr<TSQLExpressionItem>& Term,
                                       TqxDatasourceGroup* Group, TqxDatasourceBase* Prev) {
  std::optional<PairBinding> binding =
      MatchColumnPair(StripBrackets(Term.get()), UnionSubQuery_, this, Group, Prev);
  if (!binding)
    return false;
  CreateDatasourceLink(binding->Left, binding->LeftField, binding->Right, binding->RightField,
                       StripBracketsOwned(std::move(Term)));
  return true;
}

// Binds the column pairs of Condition (brackets already stripped); Condition becomes
// null when nothing of it remains.
bool TqxDatasourceBase::BindCondition(std::unique_ptr<TSQLExpressionItem>& Condition,
                                      TqxDatasourceGroup* Group, TqxDatasourceBase* Prev) {
  if (ColumnPair(Condition.get()) != nullptr)
    return BindColumnPair(Condition, Group, Prev);
  auto* conjunction = As<TSQLExpressionAnd>(Condition.get());
  if (conjunction == nullptr)
    return false;
  bool bound = false;
  // The items are taken out (from the back, each removal then being cheap), bound in
  // order, and those that remain are put back in order.
  std::vector<std::unique_ptr<TSQLExpressionItem>> items;
  items.reserve(static_cast<std::size_t>(conjunction->Count()));
  while (conjunction->Count() > 0)
    items.push_back(conjunction->Extract(conjunction->Count() - 1));
  std::reverse(items.begin(), items.end());
  for (auto& item : items) {
    TSQLExpressionItem* stripped = StripBrackets(item.get());
    if (As<TSQLExpressionAnd>(stripped) != nullptr) {
      std::unique_ptr<TSQLExpressionItem> nested = StripBracketsOwned(std::move(item));
      bound = BindCondition(nested, Group, Prev) || bound;
      if (nested)
        conjunction->Add(std::move(nested));
    } else if (ColumnPair(stripped) != nullptr) {
      if (BindColumnPair(item, Group, Prev)) {
        bound = true;
        continue;
      }
      conjunction->Add(std::move(item));
    } else {
      conjunction->Add(std::move(item));
    }
  }
  if (conjunction->Count() == 0)
    Condition.reset();
  return bound;
}

// ---------------------------------------------------------------------------------------
// TqxDatasourceGroup

TqxDatasourceGroup::~TqxDatasourceGroup() {
  BeginDestroy();
  // Later items may refer to earlier ones; they go first.
  while (!Items_.empty())
    Items_.pop_back();
}

std::unique_ptr<TqxDatasourceBase> TqxDatasourceGroup::CreateItemFor(const TSQLFromSource& Source) {
  if (As<const TSQLFromItem>(&Source) != nullptr)
    return std::make_unique<TqxDatasourceGroup>(GetUnionSubQuery(), this);
  if (As<const TSQLFromObject>(&Source) != nullptr)
    return std::make_unique<TqxDataSourceObject>(GetUnionSubQuery(), this);
  if (As<const TSQLFromQuery>(&Source) != nullptr)
    return std::make_unique<TqxDataSourceQuery>(GetUnionSubQuery(), this);
  return std::make_unique<TqxDatasource>(GetUnionSubQuery(), this);
}

void TqxDatasourceGroup::LoadFromAST(std::unique_ptr<TSQLFromSource> Source) {
  std::unique_ptr<TSQLFromItem> item = Downcast<TSQLFromItem>(std::move(Source));
  std::vector<std::unique_ptr<TSQLFromSource>> children;
  if (item) {
    children.reserve(static_cast<std::size_t>(item->Count()));
    while (item->Count() > 0)
      children.push_back(item->Extract(item->Count() - 1));
    std::reverse(children.begin(), children.end());
  }
  TqxDatasourceBase::LoadFromAST(std::move(item));
  TqxFromClause* clause =
      GetUnionSubQuery() != nullptr ? GetUnionSubQuery()->GetFromClause() : nullptr;
  if (clause != nullptr && clause->Loading_)
    clause->IndexSource(this);
  for (auto& child : children) {
    if (!child)
      continue;
    TqxDatasourceBase* ds = Add(CreateItemFor(*child));
    ds->LoadFromAST(std::move(child));
    if (clause != nullptr && clause->Loading_)
      clause->IndexSource(ds);
  }
  std::unordered_map<const TqxDatasourceBase*, std::size_t> positions;
  positions.reserve(Items_.size());
  for (std::size_t i = 0; i < Items_.size(); ++i)
    positions.emplace(Items_[i].get(), i);
  struct PositionsScope {
    const std::unordered_map<const TqxDatasourceBase*, std::size_t>*& Slot;
    ~PositionsScope() { Slot = nullptr; }
  } scope{LoadPositions_};
  LoadPositions_ = &positions;
  TqxDatasourceBase* prev = nullptr;
  for (const auto& ds : Items_) {
    ds->LoadJoins(this, prev);
    prev = ds.get();
  }
}

std::unique_ptr<TSQLFromSource> TqxDatasourceGroup::CopySource() const {
  if (!Source_)
    return nullptr;
  // The model's group node holds no items of its own; the copy is filled from the items.
  std::unique_ptr<TSQLFromSource> copy = CloneNode(*Source_);
  if (auto* item = As<TSQLFromItem>(copy.get()))
    item->Clear();
  return copy;
}

std::unique_ptr<TSQLFromSource> TqxDatasourceGroup::BuildAST(TSQLFromSourceMap& Map) const {
  std::unique_ptr<TSQLFromSource> node = TqxDatasourceBase::BuildAST(Map);
  auto* item = As<TSQLFromItem>(node.get());
  if (item == nullptr)
    return node;
  for (const auto& ds : Items_) {
    if (std::unique_ptr<TSQLFromSource> child = ds->BuildAST(Map))
      item->Add(std::move(child));
  }
  return node;
}

TqxDatasourceBase* TqxDatasourceGroup::Add(std::unique_ptr<TqxDatasourceBase> Item) {
  return Insert(GetCount(), std::move(Item));
}

TqxDatasourceBase* TqxDatasourceGroup::Insert(int Index, std::unique_ptr<TqxDatasourceBase> Item) {
  if (Index < 0 || Index > GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  TqxDatasourceBase* raw = Item.get();
  Items_.insert(Items_.begin() + Index, std::move(Item));
  return raw;
}

void TqxDatasourceGroup::Remove(TqxDatasourceBase* Item) {
  std::unique_ptr<TqxDatasourceBase> item = Extract(Item);
}

void TqxDatasourceGroup::Delete(int Index) {
  Remove(GetItems(Index));
}

std::unique_ptr<TqxDatasourceBase> TqxDatasourceGroup::Extract(TqxDatasourceBase* Item) {
  const int index = IndexOf(Item);
  if (index < 0)
    return nullptr;
  std::unique_ptr<TqxDatasourceBase> item = std::move(Items_[static_cast<std::size_t>(index)]);
  Items_.erase(Items_.begin() + index);
  return item;
}

TqxDatasourceBase* TqxDatasourceGroup::GetItems(int Index) const {
  if (Index < 0 || Index >= GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return Items_[static_cast<std::size_t>(Index)].get();
}

int TqxDatasourceGroup::IndexOf(const TqxDatasourceBase* Item) const {
  for (std::size_t i = 0; i < Items_.size(); ++i) {
    if (Items_[i].get() == Item)
      return static_cast<int>(i);
  }
  return -1;
}

const TqxDatasourceBase* TqxDatasourceGroup::ItemHolding(const TqxDatasourceBase* DS) const {
  const TqxQueryBuilderControlOwner* owner = DS;
  while (owner != nullptr) {
    const TqxQueryBuilderControlOwner* parent = owner->GetParent();
    if (parent == this)
      return static_cast<const TqxDatasourceBase*>(owner);
    if (As<const TqxDatasourceGroup>(parent) == nullptr)
      return nullptr;
    owner = parent;
  }
  return nullptr;
}

bool TqxDatasourceGroup::ContainsDatasourceBefore(const TqxDatasourceBase* DS,
                                                  const TqxDatasourceBase* Before) const {
  if (LoadPositions_ != nullptr && DS != nullptr) {
    // While join conditions are bound the items stand still: their positions decide.
    const TqxDatasourceBase* dsItem = ItemHolding(DS);
    auto dsAt = LoadPositions_->find(dsItem);
    if (dsAt == LoadPositions_->end())
      return false;
    const TqxDatasourceBase* beforeItem = Before != nullptr ? ItemHolding(Before) : nullptr;
    auto beforeAt = LoadPositions_->find(beforeItem);
    return beforeAt == LoadPositions_->end() || dsAt->second < beforeAt->second;
  }
  for (const auto& item : Items_) {
    if (item->ContainsDatasource(Before, true))
      return false;
    if (item->ContainsDatasource(DS, true))
      return true;
  }
  return false;
}

void TqxDatasourceGroup::FindTablesByDBName(const TSQLDatabaseObject& Name,
                                            std::vector<TqxDataSourceObject*>& List) const {
  const TastSyntaxProvider* provider = GetASTSyntaxProvider();
  if (provider == nullptr)
    provider = Name.GetSyntaxProvider();
  if (provider == nullptr)
    return;
  std::vector<TqxDataSourceObject*> objects;
  GetItemsByType(objects, false, true);
  for (TqxDataSourceObject* object : objects) {
    if (object->GetObjectName() != nullptr &&
        provider->IsDBObjectNamesEqual(*object->GetObjectName(), Name))
      List.push_back(object);
  }
}

bool TqxDatasourceGroup::ContainsDatasource(const TqxDatasourceBase* DS, bool Recursive) const {
  if (DS == this)
    return true;
  for (const auto& item : Items_) {
    if (item.get() == DS || (Recursive && item->ContainsDatasource(DS, true)))
      return true;
  }
  return false;
}

TqxDatasourceBase* TqxDatasourceGroup::FindBySource(const TSQLFromSource* Source) {
  if (TqxDatasourceBase* self = TqxDatasourceBase::FindBySource(Source))
    return self;
  for (const auto& item : Items_) {
    if (TqxDatasourceBase* found = item->FindBySource(Source))
      return found;
  }
  return nullptr;
}

void TqxDatasourceGroup::GetAllDatasources(std::vector<TqxDatasource*>& List) {
  for (const auto& item : Items_)
    item->GetAllDatasources(List);
}

void TqxDatasourceGroup::GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const {
  TqxDatasourceBase::GetChildOwners(List);
  for (const auto& item : Items_)
    List.push_back(item.get());
}

void TqxDatasourceGroup::ClearFirstItemJoin() {
  if (Items_.empty())
    return;
  TqxDatasourceBase* first = Items_.front().get();
  if (first->GetFromSource() != nullptr && first->GetFromSource()->GetJoinKind() != nullptr) {
    first->GetFromSource()->SetJoinKind(nullptr);
    first->NotifySQLUpdated();
  }
}

// ---------------------------------------------------------------------------------------
// TqxFromClause

TqxFromClause::TqxFromClause(TqxUnionSubQuery* UnionSubQuery)
    : TqxDatasourceGroup(UnionSubQuery, UnionSubQuery) {
  Source_ = NewNode<TSQLFromClause>(GetASTSyntaxProvider());
}

void TqxFromClause::LoadFromAST(std::unique_ptr<TSQLFromSource> Source) {
  if (!Source)
    Source = NewNode<TSQLFromClause>(GetASTSyntaxProvider());
  struct LoadingScope {
    TqxFromClause& Clause;
    ~LoadingScope() {
      Clause.Loading_ = false;
      Clause.SourceIndex_.clear();
    }
  } scope{*this};
  // Datasources already present are found as well (the clause's own source is replaced).
  SourceIndex_.clear();
  std::vector<TqxDatasourceBase*> present;
  for (const auto& item : Items_)
    present.push_back(item.get());
  for (std::size_t i = 0; i < present.size(); ++i) {
    IndexSource(present[i]);
    if (const auto* group = As<const TqxDatasourceGroup>(present[i])) {
      for (int j = 0; j < group->GetCount(); ++j)
        present.push_back(group->GetItems(j));
    }
  }
  Loading_ = true;
  TqxDatasourceGroup::LoadFromAST(std::move(Source));
}

void TqxFromClause::IndexSource(TqxDatasourceBase* DS) {
  // Each source has one datasource; a later entry replaces one left by a freed source.
  if (DS != nullptr && DS->GetFromSource() != nullptr)
    SourceIndex_.insert_or_assign(DS->GetFromSource(), DS);
}

TqxDatasourceBase* TqxFromClause::FindBySource(const TSQLFromSource* Source) {
  if (!Loading_)
    return TqxDatasourceGroup::FindBySource(Source);
  auto it = SourceIndex_.find(Source);
  return it != SourceIndex_.end() ? it->second : nullptr;
}

std::unique_ptr<TSQLFromClause> TqxFromClause::BuildClause(TSQLFromSourceMap& Map) const {
  if (Items_.empty())
    return nullptr;
  return Downcast<TSQLFromClause>(BuildAST(Map));
}

// ---------------------------------------------------------------------------------------
// TqxDatasource

void TqxDatasource::LoadFromAST(std::unique_ptr<TSQLFromSource> Source) {
  TqxDatasourceBase::LoadFromAST(std::move(Source));
  // Sub-queries of the source (a derived table's statement) become model sub-queries.
  LoadSubQueries(Source_.get());
}

std::string TqxDatasource::GetAlias() const {
  return Source_ ? Source_->GetAliasName() : std::string();
}

// A name typed between the dialect's quotes is taken as that quoted name; any other text
// is the name itself, quoted when written only if it needs to be.
void TqxDatasource::SetAlias(const std::string& Alias) {
  std::string name = Alias;
  bool quoted = false;
  if (Source_ && Source_->GetSyntaxProvider() != nullptr &&
      Source_->GetSyntaxProvider()->ReadQuotedName(Alias, name))
    quoted = !name.empty();
  if (Source_ && name == GetAlias() &&
      quoted == (Source_->GetAlias() != nullptr && Source_->GetAlias()->Quoted))
    return;
  if (!Source_)
    throw EqxError("Can't assign alias if astFromSource=nil!");
  if (name.empty()) {
    Source_->SetAlias(nullptr);
  } else if (TSQLAlias* alias = Source_->GetAlias()) {
    alias->Name = std::move(name);
    alias->Quoted = quoted;
  } else {
    Source_->SetAlias(
        NewNode<TSQLAliasObjectAlias>(Source_->GetSyntaxProvider(), std::move(name), quoted));
  }
  NotifySQLUpdated();
  UpdateContolParams();
  RepaintLinks();
}

std::string TqxDatasource::GetCaption() const {
  if (!Source_)
    return {};
  std::string caption = Source_->GetSimpleExpression();
  const std::string alias = GetAlias();
  if (!alias.empty())
    caption += " " + alias;
  return caption;
}

std::string TqxDatasource::GetQualifier() const {
  const std::string alias = GetAlias();
  if (!alias.empty() || !Source_)
    return alias;
  return Source_->GetSimpleExpression();
}

// A provider that cannot describe the source (an unknown object, a statement the
// database rejects) leaves it without fields; its message goes to OnMetadataError.
void TqxDatasource::RefreshMetadata() {
  TqxBaseQueryBuilder* builder = GetQueryBuilder();
  TqxBaseMetadataProvider* provider = builder != nullptr ? builder->GetMetadataProvider() : nullptr;
  std::string failure;
  if (Source_) {
    if (provider != nullptr) {
      try {
        Source_->RefreshFieldsList(provider);
      } catch (const std::exception& error) {
        Source_->Fields.clear();
        failure = error.what();
      }
    } else {
      Source_->Fields.clear();
    }
  }
  UpdateContolParams();
  RepaintControls();
  if (!failure.empty())
    builder->DoMetadataError(this, failure);
}

const std::vector<std::string>& TqxDatasource::GetFields() const {
  static const std::vector<std::string> kNone;
  return Source_ ? Source_->Fields : kNone;
}

std::vector<std::string> TqxDatasource::GetFieldsWithStar() const {
  std::vector<std::string> fields{"*"};
  fields.insert(fields.end(), GetFields().begin(), GetFields().end());
  return fields;
}

void TqxDatasource::ApplyBounds() {
  if (TqxControl* control = GetControl())
    control->SetBounds(TqxRect{Left_, Top_, Width_, Height_});
}

void TqxDatasource::SetLeft(int Value) {
  Left_ = Value;
  ApplyBounds();
}

void TqxDatasource::SetTop(int Value) {
  Top_ = Value;
  ApplyBounds();
}

void TqxDatasource::SetWidth(int Value) {
  Width_ = Value;
  ApplyBounds();
}

void TqxDatasource::SetHeidht(int Value) {
  Height_ = Value;
  ApplyBounds();
}

void TqxDatasource::SendDestroyNotification() {
  if (GetUnionSubQuery() != nullptr)
    GetUnionSubQuery()->RemoveDatasource(this);
}

bool TqxDatasource::ContainsDatasource(const TqxDatasourceBase* DS, bool /*Recursive*/) const {
  return DS == this;
}

void TqxDatasource::GetAllDatasources(std::vector<TqxDatasource*>& List) {
  List.push_back(this);
}

void TqxDatasource::SaveControlParams() {
  if (TqxControl* control = GetControl()) {
    const TqxRect bounds = control->GetBounds();
    Left_ = bounds.Left;
    Top_ = bounds.Top;
    Width_ = bounds.Width;
    Height_ = bounds.Height;
  }
}

void TqxDatasource::RestoreControlParams() {
  TqxControl* control = GetControl();
  if (control == nullptr)
    return;
  if (Left_ != 0 || Top_ != 0 || Width_ != 0 || Height_ != 0)
    control->SetBounds(TqxRect{Left_, Top_, Width_, Height_});
  TqxDatasourceBase::RestoreControlParams();
  // A box without a stored size sizes itself; its size is kept from then on.
  if (Width_ == 0 || Height_ == 0) {
    const TqxRect bounds = control->GetBounds();
    Width_ = bounds.Width;
    Height_ = bounds.Height;
  }
}

void TqxDatasource::GetPopupMenu(TqxPopupMenu& Menu) {
  AddRemoveAndEdit(
      Menu, [this] { SendDestroyNotification(); }, [this] { EditProps(); });
}

bool TqxDatasource::GetEditPropsDialog(TqxDialogKind& Kind) const {
  Kind = TqxDialogKind::dkDatasourceProps;
  return true;
}

TSQLDatabaseObject* TqxDataSourceObject::GetObjectName() const {
  const auto* object = As<const TSQLFromObject>(Source_.get());
  return object != nullptr ? object->GetDatabaseObject() : nullptr;
}

void TqxDataSourceQuery::LoadFromAST(std::unique_ptr<TSQLFromSource> Source) {
  TqxDatasource::LoadFromAST(std::move(Source));
}

TqxSubQuery* TqxDataSourceQuery::GetSubQuery() const {
  const auto* query = As<const TSQLFromQuery>(Source_.get());
  if (query == nullptr)
    return nullptr;
  const auto* proxy = As<const TqxSubSelectStatementProxy>(query->GetSubQuery());
  return proxy != nullptr ? proxy->GetSubQuery() : nullptr;
}

void TqxDataSourceQuery::NotifySQLUpdated() {
  TqxDatasource::NotifySQLUpdated();
  TqxBaseQueryBuilder* builder = GetQueryBuilder();
  if (GetIsUpdating() || IsDestroying() || builder == nullptr || builder->IsSQLLoading() ||
      builder->GetMetadataProvider() == nullptr || GetFromSource() == nullptr)
    return;
  RefreshMetadata();
}

std::string TqxDataSourceQuery::GetCaption() const {
  const std::string alias = GetAlias();
  return alias.empty() ? std::string("SubQuery") : "SubQuery " + alias;
}

// ---------------------------------------------------------------------------------------
// TqxLink

TqxLink::TqxLink(TqxUnionSubQuery* UnionSubQuery, TqxDatasourceBase* Owner)
    : TqxQueryBuilderControlOwner(Owner != nullptr ? Owner->GetQueryBuilder() : nullptr, Owner),
      UnionSubQuery_(UnionSubQuery),
      Owner_(Owner) {}

TqxLink::~TqxLink() {
  // Tells the datasources, which drops the free notification both ways.
  BeginDestroy();
}

// Keeps free notification with the datasources the link refers to.
void TqxLink::Follow(TqxDatasourceBase* Old, TqxDatasourceBase* New) {
  if (New != nullptr)
    FreeNotification(New);
  if (Old != nullptr && Old != Left_ && Old != Right_)
    RemoveFreeNotification(Old);
}

void TqxLink::SetLeftDatasource(TqxDatasourceBase* Value) {
  if (Value == Left_)
    return;
  TqxDatasourceBase* old = Left_;
  Left_ = Value;
  Follow(old, Value);
  RepaintControls();
}

void TqxLink::SetRightDatasource(TqxDatasourceBase* Value) {
  if (Value == Right_)
    return;
  TqxDatasourceBase* old = Right_;
  Right_ = Value;
  Follow(old, Value);
  RepaintControls();
}

void TqxLink::SetLeftField(const std::string& Value) {
  LeftField_ = Value;
}

void TqxLink::SetRightField(const std::string& Value) {
  RightField_ = Value;
}

void TqxLink::Notification(TqxComponent* Component, TOperation Operation) {
  if (Operation == TOperation::opRemove) {
    if (Component == Left_)
      Left_ = nullptr;
    if (Component == Right_)
      Right_ = nullptr;
  }
  TqxQueryBuilderControlOwner::Notification(Component, Operation);
}

void TqxLink::SetLinkExpression(std::unique_ptr<TSQLExpressionItem> Expression) {
  if (Expression_ && Expression && Expression_->GetSimpleSQL() == Expression->GetSimpleSQL())
    return;
  Expression_ = std::move(Expression);
  LoadSubQueries(Expression_.get());
  UpdateContolParams();
  CalcCardinality();
  NotifySQLUpdated();
}

TqxQueryBuilderLinkConnectType TqxLink::GetLeftType() const {
  const TSQLJoinKind* kind = Owner_ != nullptr ? Owner_->GetJoinKind() : nullptr;
  return kind != nullptr && kind->IsLeftOuter() ? ctOuter : ctInner;
}

TqxQueryBuilderLinkConnectType TqxLink::GetRightType() const {
  const TSQLJoinKind* kind = Owner_ != nullptr ? Owner_->GetJoinKind() : nullptr;
  return kind != nullptr && kind->IsRightOuter() ? ctOuter : ctInner;
}

void TqxLink::SetJoinSides(bool AllFromLeft, bool AllFromRight) {
  if (Owner_ == nullptr || Owner_->GetFromSource() == nullptr)
    return;
  TastSyntaxProvider* provider = Owner_->GetFromSource()->GetSyntaxProvider();
  const auto* old = As<const TSQLJoinKindOuter>(Owner_->GetJoinKind());
  const bool outerWord = old != nullptr && old->Outer;
  std::unique_ptr<TSQLJoinKind> kind;
  auto outer = [&](std::unique_ptr<TSQLJoinKindOuter> node) {
    node->Outer = outerWord;
    return node;
  };
  if (AllFromLeft && AllFromRight)
    kind = outer(NewNode<TSQLJoinKindFull>(provider));
  else if (AllFromLeft)
    kind = outer(NewNode<TSQLJoinKindLeft>(provider));
  else if (AllFromRight)
    kind = outer(NewNode<TSQLJoinKindRight>(provider));
  else
    kind = NewNode<TSQLJoinKindInner>(provider);
  Owner_->SetJoinKind(std::move(kind));
}

TqxDatasource* TqxLink::CalcDatasource(TqxDatasourceBase* DS) {
  while (auto* group = As<TqxDatasourceGroup>(DS)) {
    if (group->GetCount() == 0)
      return nullptr;
    DS = group->GetItems(0);
  }
  return As<TqxDatasource>(DS);
}

void TqxLink::CalcCardinality() {
  LeftCardinality_ = qblcUnknown;
  RightCardinality_ = qblcUnknown;
  auto objectOf = [](TqxDatasourceBase* DS) -> TSQLDatabaseObject* {
    auto* object = DS != nullptr ? As<TSQLFromObject>(DS->GetFromSource()) : nullptr;
    return object != nullptr ? object->GetDatabaseObject() : nullptr;
  };
  TSQLDatabaseObject* left = objectOf(Left_);
  TSQLDatabaseObject* right = objectOf(Right_);
  if (left == nullptr || right == nullptr || LeftField_.empty() || RightField_.empty())
    return;
  TqxBaseQueryBuilder* builder = GetQueryBuilder();
  TqxBaseMetadataProvider* metadata = builder != nullptr ? builder->GetMetadataProvider() : nullptr;
  const TastSyntaxProvider* syntax = builder != nullptr ? builder->GetASTSyntaxProvider() : nullptr;
  if (metadata == nullptr || syntax == nullptr)
    return;
  const std::string leftField = model::UpperCase(LeftField_);
  const std::string rightField = model::UpperCase(RightField_);
  // One-column keys only: the referenced side's column, then the referencing side's.
  auto matches = [&](const TSQLMetadataRelation& Relation, const TSQLDatabaseObject& FKTable,
                     const std::string& PKColumn, const std::string& FKColumn) {
    return Relation.FKTable != nullptr &&
           syntax->IsDBObjectNamesEqual(*Relation.FKTable, FKTable) &&
           Relation.PKColumns.size() == 1 && model::UpperCase(Relation.PKColumns[0]) == PKColumn &&
           Relation.FKColumns.size() == 1 && model::UpperCase(Relation.FKColumns[0]) == FKColumn;
  };
  // Relations the provider cannot give leave the cardinality unknown.
  auto relationsOf = [&](TqxDatasourceBase* DS, const TSQLDatabaseObject& Object,
                         TSQLMetadataRelations& Relations) {
    try {
      metadata->GetTableRelations(Object, Relations);
      return true;
    } catch (const std::exception& error) {
      builder->DoMetadataError(As<TqxDatasource>(DS), error.what());
      return false;
    }
  };
  TSQLMetadataRelations relations;
  if (!relationsOf(Left_, *left, relations))
    return;
  for (const auto& relation : relations) {
    if (relation && matches(*relation, *right, leftField, rightField)) {
      LeftCardinality_ = qblcOne;
      RightCardinality_ = qblcMany;
      return;
    }
  }
  if (!relationsOf(Right_, *right, relations))
    return;
  for (const auto& relation : relations) {
    if (relation && matches(*relation, *left, rightField, leftField)) {
      LeftCardinality_ = qblcMany;
      RightCardinality_ = qblcOne;
      return;
    }
  }
}

void TqxLink::GetASTChildren(std::vector<TastNode*>& List) const {
  if (Expression_)
    List.push_back(Expression_.get());
}

TqxQueryBuilderControlOwner* TqxLink::GetControlParent() const {
  return UnionSubQuery_;
}

void TqxLink::FreeModelObject() {
  if (Owner_ != nullptr)
    Owner_->RemoveLink(this);
}

void TqxLink::GetPopupMenu(TqxPopupMenu& Menu) {
  AddRemoveAndEdit(
      Menu, [this] { RemoveEvent(); }, [this] { EditProps(); });
}

bool TqxLink::GetEditPropsDialog(TqxDialogKind& Kind) const {
  Kind = TqxDialogKind::dkLinkProps;
  return true;
}

}  // namespace qorvex
