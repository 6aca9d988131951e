#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qorvex/ast/syntax_provider.h"
#include "qorvex/sql_export.h"

namespace qorvex {

// The SQL-92 dialect: double-quoted identifiers, COUNT(*) and the five prefixed
// aggregates, every query feature supported; read by the SQL-92 scanner and parser.
class QORVEX_SQL_EXPORT TastSQL92SyntaxProvider : public TastSyntaxProvider {
 public:
  const TqxParserClass& GetParserClass() const override;
  const TqxScannerClass& GetScannerClass() const override;

  void GetStarAggregateNames(std::vector<std::string>& List) const override;
  void Get1ParamAggregateNames(std::vector<std::string>& List) const override;
  void GetPrefixed1ParamAggregateNames(std::vector<std::string>& List) const override;

  std::string GetQuoteBegin() const override;
  std::string GetQuoteEnd() const override;
  // The keywords of the scanner's table that the grammar never takes as a name (all but
  // the non-reserved ones from "ada" to "unnamed").
  bool IsReservedWord(std::string_view Word) const override;

  bool IsSupportViews() const override;
  bool IsSupportUnions() const override;
  bool IsSupportBracketsInUnions() const override;
  bool IsSupportDerivedTables() const override;
  bool IsSupportSubQueryUnions() const override;
  bool IsSupportSubQueryBracketsInUnions() const override;
  bool IsSupportSubQueryDerivedTables() const override;
};

}  // namespace qorvex
