#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/component.h"
#include "qorvex/sql_export.h"

namespace qorvex {

// What a syntax-provider component needs of a query builder linked to it: re-reading the
// dialect's feature flags when they change. A client that is also a TqxComponent is
// dropped from the provider's list automatically when it is destroyed.
class QORVEX_SQL_EXPORT TqxSyntaxProviderClient {
 public:
  virtual void ReadSyntaxProviderCaps() = 0;

 protected:
  virtual ~TqxSyntaxProviderClient() = default;
};

// The syntax provider as a component placed beside a query builder. It owns the
// tree-level provider of its dialect (made by CreateASTSyntaxProvider on first use),
// answers the dialect questions through it, and keeps the list of query builders that
// use it.
class QORVEX_SQL_EXPORT TqxBaseSyntaxProvider : public TqxComponent {
 public:
  TqxBaseSyntaxProvider();
  ~TqxBaseSyntaxProvider() override;

  // The tree-level provider; every node built for this component's query builders holds
  // it. Created once and kept for the component's lifetime.
  TastSyntaxProvider* GetASTSyntaxProvider() const;

  std::string GetQuoteBegin() const;
  std::string GetQuoteEnd() const;
  bool IsReservedWord(std::string_view Word) const;
  void GetStarAggregateNames(std::vector<std::string>& List) const;
  void Get1ParamAggregateNames(std::vector<std::string>& List) const;
  void GetPrefixed1ParamAggregateNames(std::vector<std::string>& List) const;
  void GetComparisonOperators(std::vector<std::string>& List) const;
  void GetUnionOperatorsList(std::vector<std::string>& List) const;
  std::string NormalizeUnionOperator(std::string_view Op) const;
  std::string GetUnionOperatorIcon(std::string_view Op) const;
  bool IsDBObjectNamesEqual(const TSQLDatabaseObject& A, const TSQLDatabaseObject& B) const;
  bool IsColumnOfDBObject(const TSQLObjectColumn& Column, const TSQLDatabaseObject& Object) const;
  std::unique_ptr<TSQLFromObject> CreateSQLFromObject(const std::string& Name,
                                                      const std::string& Alias) const;
  // The class name of the dialog that edits a union operand's statement-level options
  // in this dialect (the designer creates it by name); empty when there is none.
  virtual std::string GetEditPropsFormClass() const;

  bool IsUniversalExpressions() const;
  bool IsSupportViews() const;
  bool IsSupportUnions() const;
  bool IsSupportBracketsInUnions() const;
  bool IsSupportDerivedTables() const;
  bool IsSupportSubQueryUnions() const;
  bool IsSupportSubQueryBracketsInUnions() const;
  bool IsSupportSubQueryDerivedTables() const;

  std::unique_ptr<TSQLSelectStatement> ParseSelect(const std::string& Text) const;
  std::unique_ptr<TSQLExpressionItem> ParseExpression(const std::string& Text) const;
  std::unique_ptr<TSQLExpressionItem> ParseLogicalExpression(const std::string& Text) const;
  std::unique_ptr<TSQLDatabaseObject> ParseObjectName(const std::string& Text) const;
  std::unique_ptr<TSQLSelectItem> ParseSelectItem(const std::string& Text) const;

  // Whether Name is in the one-parameter, star or prefixed aggregate list (compared in
  // upper case).
  bool IsNameOfAggregate(std::string_view Name) const;
  bool IsNameOfStarAggregate(std::string_view Name) const;
  bool IsNameOfPrefixedAggregate(std::string_view Name) const;
  // The dialect's spelling of an aggregate name: the first match, compared in upper
  // case, in the star list, then the prefixed list, then the one-parameter list; Name
  // unchanged when no list has it.
  std::string AggregateNormalize(std::string_view Name) const;

  // Query builders linked to this provider. Registering twice keeps one entry.
  void RegisterQueryBuilder(TqxSyntaxProviderClient* QueryBuilder);
  void UnregisterQueryBuilder(TqxSyntaxProviderClient* QueryBuilder);
  bool IsQueryBuilderRegistered(const TqxSyntaxProviderClient* QueryBuilder) const;
  int GetQueryBuilderCount() const { return static_cast<int>(QueryBuilders_.size()); }
  // Tells every registered query builder to re-read the feature flags.
  void SendCapsChangedNotifications();

 protected:
  virtual std::unique_ptr<TastSyntaxProvider> CreateASTSyntaxProvider() const = 0;
  void Notification(TqxComponent* Component, TOperation Operation) override;

 private:
  struct Registration {
    TqxSyntaxProviderClient* Client;
    TqxComponent* Component;  // the same object as a component, when it is one
  };
  mutable std::unique_ptr<TastSyntaxProvider> ASTSyntaxProvider_;
  std::vector<Registration> QueryBuilders_;
};

// The SQL-92 syntax provider component.
class QORVEX_SQL_EXPORT TqxSQL92SyntaxProvider : public TqxBaseSyntaxProvider {
 public:
  ~TqxSQL92SyntaxProvider() override;
  // "TqxSQL92QueryPropsForm": DISTINCT and the set operator.
  std::string GetEditPropsFormClass() const override;

 protected:
  std::unique_ptr<TastSyntaxProvider> CreateASTSyntaxProvider() const override;
};

}  // namespace qorvex
