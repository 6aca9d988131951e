#include "qorvex/syntax/components.h"

#include <algorithm>

#include "ast/syntax_provider_text.h"
#include "qorvex/core/errors.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex {

namespace {
bool InList(const std::vector<std::string>& List, std::string_view Name) {
  const std::string upper = sptext::UpperCase(Name);
  return std::any_of(List.begin(), List.end(),
                     [&](const std::string& item) { return sptext::UpperCase(item) == upper; });
}
}  // namespace

TqxBaseSyntaxProvider::TqxBaseSyntaxProvider() = default;

TqxBaseSyntaxProvider::~TqxBaseSyntaxProvider() {
  // Linked query builders are told while the tree-level provider still exists, so that
  // they can free the nodes that refer to it.
  BeginDestroy();
}

TastSyntaxProvider* TqxBaseSyntaxProvider::GetASTSyntaxProvider() const {
  if (!ASTSyntaxProvider_) {
    ASTSyntaxProvider_ = CreateASTSyntaxProvider();
    if (!ASTSyntaxProvider_)
      throw EqxError("Syntax provider component has no dialect");
  }
  return ASTSyntaxProvider_.get();
}

std::string TqxBaseSyntaxProvider::GetQuoteBegin() const {
  return GetASTSyntaxProvider()->GetQuoteBegin();
}
std::string TqxBaseSyntaxProvider::GetQuoteEnd() const {
  return GetASTSyntaxProvider()->GetQuoteEnd();
}
bool TqxBaseSyntaxProvider::IsReservedWord(std::string_view Word) const {
  return GetASTSyntaxProvider()->IsReservedWord(Word);
}
void TqxBaseSyntaxProvider::GetStarAggregateNames(std::vector<std::string>& List) const {
  GetASTSyntaxProvider()->GetStarAggregateNames(List);
}
void TqxBaseSyntaxProvider::Get1ParamAggregateNames(std::vector<std::string>& List) const {
  GetASTSyntaxProvider()->Get1ParamAggregateNames(List);
}
void TqxBaseSyntaxProvider::GetPrefixed1ParamAggregateNames(std::vector<std::string>& List) const {
  GetASTSyntaxProvider()->GetPrefixed1ParamAggregateNames(List);
}
void TqxBaseSyntaxProvider::GetComparisonOperators(std::vector<std::string>& List) const {
  GetASTSyntaxProvider()->GetComparisonOperators(List);
}
void TqxBaseSyntaxProvider::GetUnionOperatorsList(std::vector<std::string>& List) const {
  GetASTSyntaxProvider()->GetUnionOperatorsList(List);
}
std::string TqxBaseSyntaxProvider::NormalizeUnionOperator(std::string_view Op) const {
  return GetASTSyntaxProvider()->NormalizeUnionOperator(Op);
}
std::string TqxBaseSyntaxProvider::GetUnionOperatorIcon(std::string_view Op) const {
  return GetASTSyntaxProvider()->GetUnionOperatorIcon(Op);
}
bool TqxBaseSyntaxProvider::IsUniversalExpressions() const {
  return GetASTSyntaxProvider()->IsUniversalExpressions();
}
bool TqxBaseSyntaxProvider::IsSupportViews() const {
  return GetASTSyntaxProvider()->IsSupportViews();
}
bool TqxBaseSyntaxProvider::IsSupportUnions() const {
  return GetASTSyntaxProvider()->IsSupportUnions();
}
bool TqxBaseSyntaxProvider::IsSupportBracketsInUnions() const {
  return GetASTSyntaxProvider()->IsSupportBracketsInUnions();
}
bool TqxBaseSyntaxProvider::IsSupportDerivedTables() const {
  return GetASTSyntaxProvider()->IsSupportDerivedTables();
}
bool TqxBaseSyntaxProvider::IsSupportSubQueryUnions() const {
  return GetASTSyntaxProvider()->IsSupportSubQueryUnions();
}
bool TqxBaseSyntaxProvider::IsSupportSubQueryBracketsInUnions() const {
  return GetASTSyntaxProvider()->IsSupportSubQueryBracketsInUnions();
}
bool TqxBaseSyntaxProvider::IsSupportSubQueryDerivedTables() const {
  return GetASTSyntaxProvider()->IsSupportSubQueryDerivedTables();
}

bool TqxBaseSyntaxProvider::IsNameOfAggregate(std::string_view Name) const {
  std::vector<std::string> list;
  Get1ParamAggregateNames(list);
  return InList(list, Name);
}

bool TqxBaseSyntaxProvider::IsNameOfStarAggregate(std::string_view Name) const {
  std::vector<std::string> list;
  GetStarAggregateNames(list);
  return InList(list, Name);
}

bool TqxBaseSyntaxProvider::IsNameOfPrefixedAggregate(std::string_view Name) const {
  std::vector<std::string> list;
  GetPrefixed1ParamAggregateNames(list);
  return InList(list, Name);
}

std::string TqxBaseSyntaxProvider::AggregateNormalize(std::string_view Name) const {
  const std::string upper = sptext::UpperCase(Name);
  std::vector<std::string> list;
  for (int which = 0; which < 3; ++which) {
    if (which == 0)
      GetStarAggregateNames(list);
    else if (which == 1)
      GetPrefixed1ParamAggregateNames(list);
    else
      Get1ParamAggregateNames(list);
    for (const std::string& item : list) {
      if (sptext::UpperCase(item) == upper)
        return item;
    }
  }
  return std::string(Name);
}

// ---------------------------------------------------------------------------------------
// Linked query builders

void TqxBaseSyntaxProvider::RegisterQueryBuilder(TqxSyntaxProviderClient* QueryBuilder) {
  if (QueryBuilder == nullptr || IsQueryBuilderRegistered(QueryBuilder))
    return;
  auto* component = dynamic_cast<TqxComponent*>(QueryBuilder);
  QueryBuilders_.push_back({QueryBuilder, component});
  if (component != nullptr)
    FreeNotification(component);
}

void TqxBaseSyntaxProvider::UnregisterQueryBuilder(TqxSyntaxProviderClient* QueryBuilder) {
  // The free-notification link stays: the query builder may hold its own subscription
  // to this provider, and a link without a registration is harmless.
  std::erase_if(QueryBuilders_, [&](const Registration& r) { return r.Client == QueryBuilder; });
}

bool TqxBaseSyntaxProvider::IsQueryBuilderRegistered(
    const TqxSyntaxProviderClient* QueryBuilder) const {
  return std::any_of(QueryBuilders_.begin(), QueryBuilders_.end(),
                     [&](const Registration& r) { return r.Client == QueryBuilder; });
}

void TqxBaseSyntaxProvider::SendCapsChangedNotifications() {
  // A query builder may unregister itself or others while it re-reads; only those still
  // registered at their turn are told.
  const std::vector<Registration> snapshot = QueryBuilders_;
  for (const Registration& r : snapshot) {
    if (IsQueryBuilderRegistered(r.Client))
      r.Client->ReadSyntaxProviderCaps();
  }
}

void TqxBaseSyntaxProvider::Notification(TqxComponent* Component, TOperation Operation) {
  TqxComponent::Notification(Component, Operation);
  if (Operation == TOperation::opRemove) {
    std::erase_if(QueryBuilders_, [&](const Registration& r) { return r.Component == Component; });
  }
}

// ---------------------------------------------------------------------------------------
// TqxSQL92SyntaxProvider

TqxSQL92SyntaxProvider::~TqxSQL92SyntaxProvider() {
  BeginDestroy();
}

std::unique_ptr<TastSyntaxProvider> TqxSQL92SyntaxProvider::CreateASTSyntaxProvider() const {
  return std::make_unique<TastSQL92SyntaxProvider>();
}

}  // namespace qorvex
