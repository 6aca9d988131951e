#include "qorvex/syntax/sql92_syntax_provider.h"

#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/token.h"
#include "syntax/sql92_classes.h"

namespace qorvex {

const TqxParserClass& TastSQL92SyntaxProvider::GetParserClass() const {
  return sql92::ParserClass();
}

const TqxScannerClass& TastSQL92SyntaxProvider::GetScannerClass() const {
  return sql92::ScannerClass();
}

void TastSQL92SyntaxProvider::GetStarAggregateNames(std::vector<std::string>& List) const {
  List = {"Count"};
}

void TastSQL92SyntaxProvider::Get1ParamAggregateNames(std::vector<std::string>& List) const {
  List.clear();
}

void TastSQL92SyntaxProvider::GetPrefixed1ParamAggregateNames(
    std::vector<std::string>& List) const {
  List = {"Avg", "Count", "Max", "Min", "Sum"};
}

std::string TastSQL92SyntaxProvider::GetQuoteBegin() const {
  return "\"";
}

std::string TastSQL92SyntaxProvider::GetQuoteEnd() const {
  return "\"";
}

bool TastSQL92SyntaxProvider::IsReservedWord(std::string_view Word) const {
  const std::int32_t kind = SQL92Scanner::FindKeyword(Word);
  return kind != 0 && (kind < kFirstNonReservedKeyword || kind > kLastNonReservedKeyword);
}

bool TastSQL92SyntaxProvider::IsSupportViews() const {
  return true;
}
bool TastSQL92SyntaxProvider::IsSupportUnions() const {
  return true;
}
bool TastSQL92SyntaxProvider::IsSupportBracketsInUnions() const {
  return true;
}
bool TastSQL92SyntaxProvider::IsSupportDerivedTables() const {
  return true;
}
bool TastSQL92SyntaxProvider::IsSupportSubQueryUnions() const {
  return true;
}
bool TastSQL92SyntaxProvider::IsSupportSubQueryBracketsInUnions() const {
  return true;
}
bool TastSQL92SyntaxProvider::IsSupportSubQueryDerivedTables() const {
  return true;
}

}  // namespace qorvex
