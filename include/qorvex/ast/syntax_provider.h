#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qorvex/ast/node.h"
#include "qorvex/core/metaclass.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TqxBaseScanner;
class TqxBaseParser;
class TSQLSelectStatement;
class TSQLExpressionItem;
class TSQLDatabaseObject;
class TSQLObjectColumn;
class TSQLSelectItem;
class TSQLFromObject;

// Class reference of scanners (created without arguments) and of parsers (created over a
// scanner for the provider that asks for the parse).
using TqxScannerClass = TqxClassOf<TqxBaseScanner>;
using TqxParserClass = TqxClassOf<TqxBaseParser, TqxBaseScanner*, TastSyntaxProvider*>;

// One entry of a provider's extender registry: nodes of NodeClass (and, failing a nearer
// entry, of its descendants) get an extender of ExtenderClass.
struct QORVEX_SQL_EXPORT TastClassToExtenderEntry {
  const TastClass* NodeClass = nullptr;
  const TastClass* ExtenderClass = nullptr;
};

// The SQL dialect as the syntax tree sees it: scanner and parser classes, identifier
// quoting, aggregate names, operators offered to the user, feature flags, the parse entry
// points and the registry of extenders that change how nodes print. Every node holds the
// provider that created it; the provider must outlive its nodes.
class QORVEX_SQL_EXPORT TastSyntaxProvider {
 public:
  TastSyntaxProvider();
  TastSyntaxProvider(const TastSyntaxProvider&) = delete;
  TastSyntaxProvider& operator=(const TastSyntaxProvider&) = delete;
  virtual ~TastSyntaxProvider();

  virtual const TqxParserClass& GetParserClass() const = 0;
  virtual const TqxScannerClass& GetScannerClass() const = 0;

  // Parse entries: each reads the whole Text with one production of the dialect and
  // returns the new tree, or raises EqxSQLError ("Bad SELECT statement", "Bad expression",
  // "Bad logical expression", "Bad object name", "Bad select item").
  std::unique_ptr<TSQLSelectStatement> ParseSelect(const std::string& Text);
  std::unique_ptr<TSQLExpressionItem> ParseExpression(const std::string& Text);
  virtual std::unique_ptr<TSQLExpressionItem> ParseLogicalExpression(const std::string& Text);
  std::unique_ptr<TSQLDatabaseObject> ParseObjectName(const std::string& Text);
  std::unique_ptr<TSQLSelectItem> ParseSelectItem(const std::string& Text);
  // ParseSelect on tokens already scanned by this dialect's scanner class: all the tokens
  // `Tokens` holds, the end token last (as after Init or SQL92Scanner::ScanStatement).
  // Errors carry the tokens' places; with no tokens at all the text is rejected.
  std::unique_ptr<TSQLSelectStatement> ParseSelect(TqxBaseScanner& Tokens);

  // Aggregate names; each operation replaces the content of List.
  virtual void GetStarAggregateNames(std::vector<std::string>& List) const = 0;
  virtual void Get1ParamAggregateNames(std::vector<std::string>& List) const = 0;
  virtual void GetPrefixed1ParamAggregateNames(std::vector<std::string>& List) const = 0;

  // A FROM object for a table or view of the given bare name, with an alias node when
  // Alias is not empty, and no join kind.
  virtual std::unique_ptr<TSQLFromObject> CreateSQLFromObject(const std::string& Name,
                                                              const std::string& Alias);

  // Replace the content of List.
  virtual void GetComparisonOperators(std::vector<std::string>& List) const;
  virtual void GetUnionOperatorsList(std::vector<std::string>& List) const;

  virtual std::string GetQuoteBegin() const;
  virtual std::string GetQuoteEnd() const;
  // Whether the dialect reserves Word (ASCII letter case ignored), so that the grammar
  // does not read it as a name unless it is quoted. The base knows no words.
  virtual bool IsReservedWord(std::string_view Word) const;
  // Whether Text is one name between the dialect's quotes; if so Name receives the name
  // inside, with doubled closing quotes read as one.
  bool ReadQuotedName(std::string_view Text, std::string& Name) const;

  // Object names compare part by part, case-insensitively, innermost part first and only
  // as far as both names have parts.
  virtual bool IsDBObjectNamesEqual(const TSQLDatabaseObject& A, const TSQLDatabaseObject& B) const;
  // Whether the column's qualifier names the object (a column without qualifier
  // belongs to no object in particular and gives false).
  virtual bool IsColumnOfDBObject(const TSQLObjectColumn& Column,
                                  const TSQLDatabaseObject& Object) const;

  virtual bool IsUniversalExpressions() const;
  virtual bool IsSupportViews() const = 0;
  virtual bool IsSupportUnions() const = 0;
  virtual bool IsSupportBracketsInUnions() const = 0;
  virtual bool IsSupportDerivedTables() const = 0;
  virtual bool IsSupportSubQueryUnions() const = 0;
  virtual bool IsSupportSubQueryBracketsInUnions() const = 0;
  virtual bool IsSupportSubQueryDerivedTables() const = 0;

  // Extender registry. Registering a class that already has an exact entry raises
  // EqxError `Extender for "X" already registered!` and leaves the registry unchanged;
  // the list form checks every class before registering any. Existing nodes see a change
  // only when their UpdateExtender runs again.
  void RegisterExtender(const TastClass& NodeClass, const TastClass& ExtenderClass);
  void RegisterExtender(const std::vector<const TastClass*>& NodeClasses,
                        const TastClass& ExtenderClass);
  // Removes the exact entry of NodeClass; false when there is none.
  bool UnregisterExtender(const TastClass& NodeClass);
  // The extender class of the exact entry for NodeClass or, with Inherited, of the
  // nearest registered ancestor (the first registered among equally near ones); null
  // when there is none.
  const TastClass* FindExtenderClass(const TastClass& NodeClass, bool Inherited) const;
  const std::vector<TastClassToExtenderEntry>& GetExtenders() const { return Extenders_; }

  // The list's spelling of a union operator (compared case-insensitively), else the
  // operator lower-cased: "union all" gives "Union All", "INTERSECT" gives "intersect".
  std::string NormalizeUnionOperator(std::string_view Op) const;
  // The image key of a union operator for the designer ("QXQB_UNION", "QXQB_UNIONALL",
  // "QXQB_EXCEPT", "QXQB_EXCEPTALL", "QXQB_INTERSECT", "QXQB_INTERSECTALL"), matched
  // case-insensitively with blanks collapsed; empty for an unknown operator.
  std::string GetUnionOperatorIcon(std::string_view Op) const;

 private:
  std::vector<TastClassToExtenderEntry> Extenders_;
};

}  // namespace qorvex
