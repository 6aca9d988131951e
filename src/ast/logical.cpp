// The logical-expression operations of the expression nodes (used by the criteria grid)
// and the simplification of conditions.

#include <memory>
#include <string>
#include <vector>

#include "ast/node_util.h"
#include "qorvex/ast/expressions.h"

namespace qorvex {

namespace {

// True when at least one operand is present and every present one depends on Source only.
bool AllDependOn(const std::vector<const TSQLExpressionItem*>& Operands,
                 const TSQLFromSource* Source) {
  bool any = false;
  for (const TSQLExpressionItem* operand : Operands) {
    if (operand == nullptr)
      continue;
    if (!operand->ContainsOnlyItemsWithFromSource(Source))
      return false;
    any = true;
  }
  return any;
}

// The arguments of a parameter list, as expressions.
bool ParamsDependOn(const TSQLFunctionParams* Params, const TSQLFromSource* Source) {
  if (Params == nullptr || Params->GetCount() == 0)
    return false;
  for (int i = 0; i < Params->GetCount(); ++i) {
    const auto* param = dynamic_cast<const TSQLFunctionParamExpression*>(Params->GetItems(i));
    if (param == nullptr || !AllDependOn({param->GetExpression()}, Source))
      return false;
  }
  return true;
}

TSQLExpressionItem* StripBrackets(TSQLExpressionItem* E) {
  while (auto* brackets = dynamic_cast<TSQLExpressionBrackets*>(E))
    E = brackets->GetInner();
  return E;
}

bool IsCollection(const TSQLExpressionItem* E) {
  return dynamic_cast<const TSQLExpressionLogicalCollection*>(E) != nullptr;
}

std::unique_ptr<TSQLExpressionItem> InBrackets(std::unique_ptr<TSQLExpressionItem> E) {
  auto brackets = NewNode<TSQLExpressionBrackets>(E->GetSyntaxProvider());
  brackets->SetInner(std::move(E));
  return brackets;
}

// Takes out the operand of Holder, looking through the brackets around it.
std::unique_ptr<TSQLExpressionItem> DetachCore(TSQLExpressionExpressionItem& Holder) {
  TSQLExpressionExpressionItem* parent = &Holder;
  while (auto* brackets = dynamic_cast<TSQLExpressionBrackets*>(parent->GetInner()))
    parent = brackets;
  return parent->ExtractInner();
}

// Finds the expression of a single operand for a node that is itself the condition.
bool FindInOperand(TSQLExpressionItem* Operand, TSQLExpressionItem*& Expr) {
  if (Operand == nullptr)
    return false;
  TSQLExpressionItem* found = nullptr;
  std::unique_ptr<TSQLExpressionItem> created;
  Operand->FindExpressionItem(found, created);
  if (created || found == nullptr)
    return false;
  Expr = found;
  return true;
}

}  // namespace

// ---------------------------------------------------------------------------------------
// TSQLExpressionItem and its operand-carrying descendants

bool TSQLExpressionItem::ContainsOnlyItemsWithFromSource(const TSQLFromSource* /*Source*/) const {
  return false;
}

void TSQLExpressionItem::RemoveLExpression(const TSQLExpressionItem* /*Expr*/) {}

void TSQLExpressionItem::RestoreLExpression(const TSQLExpressionItem* /*Expr*/) {}

TSQLExpressionItem* TSQLExpressionItem::FindExpressionItem(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) {
  return MakeTrueCondition(Expr, NewCondition);
}

TSQLExpressionItem* TSQLExpressionItem::MakeTrueCondition(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) const {
  TastSyntaxProvider* provider = GetSyntaxProvider();
  auto condition = NewNode<TSQLExpressionOperatorBinary>(provider);
  condition->SetOperator(NewNode<TSQLOperator>(provider, std::string("=")));
  std::unique_ptr<TSQLExpressionItem> copy = CloneNode(*this);
  Expr = copy.get();
  condition->SetInner(std::move(copy));
  condition->SetRight(NewNode<TSQLExpressionConstant>(provider, TSQLConstantValue(true)));
  NewCondition = std::move(condition);
  return NewCondition.get();
}

bool TSQLExpressionColumn::ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const {
  return GetColumn() != nullptr && GetColumn()->GetFromSource() == Source;
}

bool TSQLExpressionFunction::ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const {
  return GetFunction() != nullptr && ParamsDependOn(GetFunction()->GetParams(), Source);
}

bool TSQLExpressionCaseFunction::ContainsOnlyItemsWithFromSource(
    const TSQLFromSource* Source) const {
  std::vector<const TSQLExpressionItem*> operands{GetOperand(), GetElse()};
  for (const auto& item : Items_) {
    if (item) {
      operands.push_back(item->GetWhen());
      operands.push_back(item->GetThen());
    }
  }
  return AllDependOn(operands, Source);
}

bool TSQLExpressionAggregate1Param::ContainsOnlyItemsWithFromSource(
    const TSQLFromSource* Source) const {
  return AllDependOn({GetArgument()}, Source);
}

bool TSQLExpressionAggregateWParams::ContainsOnlyItemsWithFromSource(
    const TSQLFromSource* Source) const {
  return ParamsDependOn(GetParams(), Source);
}

bool TSQLExpressionExpressionItem::ContainsOnlyItemsWithFromSource(
    const TSQLFromSource* Source) const {
  return AllDependOn({GetInner()}, Source);
}

bool TSQLExpressionOperatorBinary::ContainsOnlyItemsWithFromSource(
    const TSQLFromSource* Source) const {
  return AllDependOn({GetInner(), GetRight()}, Source);
}

bool TSQLExpressionBetween::ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const {
  return AllDependOn({GetInner(), GetLow(), GetHigh()}, Source);
}

bool TSQLExpressionOverlaps::ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const {
  return AllDependOn({GetFirst(), GetSecond(), GetThird(), GetFourth()}, Source);
}

bool TSQLExpressionItemsList::ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const {
  bool any = false;
  for (const auto& item : Items_) {
    if (!item)
      continue;
    if (!item->ContainsOnlyItemsWithFromSource(Source))
      return false;
    any = true;
  }
  return any;
}

// ---------------------------------------------------------------------------------------
// Conditions and their left operand

void TSQLExpressionOperation::RemoveLExpression(const TSQLExpressionItem* Expr) {
  if (GetInner() != nullptr && IsExpressionsEqual(GetInner(), Expr))
    SetInner(nullptr);
}

void TSQLExpressionOperation::RestoreLExpression(const TSQLExpressionItem* Expr) {
  if (GetInner() == nullptr && Expr != nullptr)
    SetInner(CloneNode(*Expr));
}

TSQLExpressionItem* TSQLExpressionOperation::FindExpressionItem(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& /*NewCondition*/) {
  Expr = GetInner();
  return this;
}

const TSQLExpressionItem* TSQLExpressionCompWithSet::GetComparedOperand() const {
  const auto* comparison = dynamic_cast<const TSQLExpressionOperation*>(GetInner());
  return comparison != nullptr ? comparison->GetInner() : GetInner();
}

void TSQLExpressionCompWithSet::RemoveLExpression(const TSQLExpressionItem* Expr) {
  if (auto* comparison = dynamic_cast<TSQLExpressionOperation*>(GetInner())) {
    if (comparison->GetInner() != nullptr && IsExpressionsEqual(comparison->GetInner(), Expr))
      comparison->SetInner(nullptr);
    return;
  }
  TSQLExpressionOperation::RemoveLExpression(Expr);
}

void TSQLExpressionCompWithSet::RestoreLExpression(const TSQLExpressionItem* Expr) {
  if (auto* comparison = dynamic_cast<TSQLExpressionOperation*>(GetInner())) {
    if (comparison->GetInner() == nullptr && Expr != nullptr)
      comparison->SetInner(CloneNode(*Expr));
    return;
  }
  TSQLExpressionOperation::RestoreLExpression(Expr);
}

TSQLExpressionItem* TSQLExpressionCompWithSet::FindExpressionItem(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& /*NewCondition*/) {
  Expr = const_cast<TSQLExpressionItem*>(GetComparedOperand());
  return this;
}

void TSQLExpressionBrackets::RemoveLExpression(const TSQLExpressionItem* Expr) {
  if (GetInner() != nullptr)
    GetInner()->RemoveLExpression(Expr);
}

void TSQLExpressionBrackets::RestoreLExpression(const TSQLExpressionItem* Expr) {
  if (GetInner() != nullptr)
    GetInner()->RestoreLExpression(Expr);
}

TSQLExpressionItem* TSQLExpressionBrackets::FindExpressionItem(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) {
  if (FindInOperand(GetInner(), Expr))
    return this;
  return MakeTrueCondition(Expr, NewCondition);
}

void TSQLExpressionNot::RemoveLExpression(const TSQLExpressionItem* Expr) {
  if (GetInner() != nullptr)
    GetInner()->RemoveLExpression(Expr);
}

void TSQLExpressionNot::RestoreLExpression(const TSQLExpressionItem* Expr) {
  if (GetInner() != nullptr)
    GetInner()->RestoreLExpression(Expr);
}

TSQLExpressionItem* TSQLExpressionNot::FindExpressionItem(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) {
  if (FindInOperand(GetInner(), Expr))
    return this;
  return MakeTrueCondition(Expr, NewCondition);
}

void TSQLExpressionLogicalCollection::RemoveLExpression(const TSQLExpressionItem* Expr) {
  // Expr may be a node of one of the operands, which the first removal frees; the
  // operands are compared with a copy.
  std::unique_ptr<TSQLExpressionItem> copy = detail::CloneChild(Expr);
  for (int i = 0; i < Count(); ++i) {
    if (TSQLExpressionItem* item = GetItems(i))
      item->RemoveLExpression(copy.get());
  }
}

void TSQLExpressionLogicalCollection::RestoreLExpression(const TSQLExpressionItem* Expr) {
  for (int i = 0; i < Count(); ++i) {
    if (TSQLExpressionItem* item = GetItems(i))
      item->RestoreLExpression(Expr);
  }
}

TSQLExpressionItem* TSQLExpressionLogicalCollection::FindExpressionItem(
    TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) {
  for (int i = 0; i < Count(); ++i) {
    if (FindInOperand(GetItems(i), Expr))
      return this;
  }
  return MakeTrueCondition(Expr, NewCondition);
}

// ---------------------------------------------------------------------------------------
// Free functions

bool IsExpressionsEqual(const TSQLExpressionItem* A, const TSQLExpressionItem* B) {
  if (A == nullptr || B == nullptr)
    return A == B;
  const std::string a = detail::UpperAscii(A->GetSimpleSQL());
  return a == detail::UpperAscii(B->GetSimpleSQL());
}

std::unique_ptr<TSQLExpressionItem> SimplifyLogicalExpression(
    std::unique_ptr<TSQLExpressionItem> E) {
  if (!E)
    return nullptr;

  // 1. Only NOT and AND/OR (under any brackets) are simplified.
  TSQLExpressionItem* core = StripBrackets(E.get());
  if (dynamic_cast<TSQLExpressionNot*>(core) == nullptr && !IsCollection(core))
    return E;

  // 2. NOT NOT x is x, as often as it occurs.
  for (;;) {
    auto* outer = dynamic_cast<TSQLExpressionNot*>(StripBrackets(E.get()));
    if (outer == nullptr)
      break;
    auto* inner = dynamic_cast<TSQLExpressionNot*>(StripBrackets(outer->GetInner()));
    if (inner == nullptr)
      break;
    E = DetachCore(*inner);
    if (!E)
      return nullptr;
  }

  // 3. NOT (a AND b) is NOT a OR NOT b, and NOT (a OR b) is NOT a AND NOT b.
  if (auto* negation = dynamic_cast<TSQLExpressionNot*>(StripBrackets(E.get()))) {
    if (auto* collection =
            dynamic_cast<TSQLExpressionLogicalCollection*>(StripBrackets(negation->GetInner()))) {
      TastSyntaxProvider* provider = collection->GetSyntaxProvider();
      std::unique_ptr<TSQLExpressionLogicalCollection> opposite;
      if (dynamic_cast<TSQLExpressionAnd*>(collection) != nullptr)
        opposite = NewNode<TSQLExpressionOr>(provider);
      else
        opposite = NewNode<TSQLExpressionAnd>(provider);
      // Taken out from the back (each removal is then cheap) and negated in order.
      std::vector<std::unique_ptr<TSQLExpressionItem>> items;
      items.reserve(static_cast<std::size_t>(collection->Count()));
      while (collection->Count() > 0)
        items.push_back(collection->Extract(collection->Count() - 1));
      for (auto it = items.rbegin(); it != items.rend(); ++it) {
        std::unique_ptr<TSQLExpressionItem> item = std::move(*it);
        if (!item)
          continue;
        // NOT binds tighter than AND and OR: a collection operand keeps its meaning only
        // in brackets.
        if (IsCollection(item.get()))
          item = InBrackets(std::move(item));
        auto negated = NewNode<TSQLExpressionNot>(provider);
        negated->SetInner(std::move(item));
        opposite->Add(std::move(negated));
      }
      opposite->TastNode::Assign(*collection);
      E = std::move(opposite);
    }
  }

  // 4. Only a collection at the top, without brackets, is flattened.
  auto* collection = dynamic_cast<TSQLExpressionLogicalCollection*>(E.get());
  if (collection == nullptr)
    return E;

  // 5. Simplify every item, last to first; splice in nested collections of the same class.
  // The items are taken out from the back and the result is gathered back to front, so
  // that a long collection is not shifted once per item.
  std::vector<std::unique_ptr<TSQLExpressionItem>> reversed;  // the result, last first
  reversed.reserve(static_cast<std::size_t>(collection->Count()));
  while (collection->Count() > 0) {
    std::unique_ptr<TSQLExpressionItem> item =
        SimplifyLogicalExpression(collection->Extract(collection->Count() - 1));
    if (!item)
      continue;
    if (&item->ClassType() == &collection->ClassType()) {
      auto* nested = static_cast<TSQLExpressionLogicalCollection*>(item.get());
      while (nested->Count() > 0)
        reversed.push_back(nested->Extract(nested->Count() - 1));
      continue;
    }
    // Only an AND may stand unbracketed inside an OR; any other collection that the steps
    // above uncovered inside a collection keeps its meaning only in brackets.
    if (IsCollection(item.get()) && !(dynamic_cast<TSQLExpressionAnd*>(item.get()) != nullptr &&
                                      dynamic_cast<TSQLExpressionOr*>(collection) != nullptr))
      item = InBrackets(std::move(item));
    reversed.push_back(std::move(item));
  }
  for (auto it = reversed.rbegin(); it != reversed.rend(); ++it)
    collection->Add(std::move(*it));

  // 6. An empty collection disappears.
  if (collection->Count() == 0)
    return nullptr;
  return E;
}

std::unique_ptr<TSQLExpressionItem> PrepareLogicalExpressionForLoading(
    std::unique_ptr<TSQLExpressionItem> E) {
  return SimplifyLogicalExpression(std::move(E));
}

}  // namespace qorvex
