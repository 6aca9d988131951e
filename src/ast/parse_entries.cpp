// The parse entries of the syntax provider: scan the text with the dialect's scanner,
// run the entry's way calculation from a fresh root, require the end of the text, and
// build the tree from the first complete way.
#include <memory>
#include <string>
#include <type_traits>

#include "qorvex/ast/expressions.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"
#include "qorvex/parser/base_parser.h"
#include "qorvex/parser/sql92_parser.h"
#include "qorvex/scanner/base_scanner.h"

namespace qorvex {

namespace {

// Every object of the parse (scanner, tokens, parser, way points) is owned here and
// released on every path, the exception path included.
// Parses the tokens `scanner` holds (the end token last).
// A SELECT statement is first built directly, where the dialect can.
template <class Result, class WayCalc, class Build>
std::unique_ptr<Result> RunParseTokens(TastSyntaxProvider& provider, TqxBaseScanner* scanner,
                                       const char* message, WayCalc wayCalc, Build build) {
  std::unique_ptr<TqxBaseParser> parser = provider.GetParserClass().Create(scanner, &provider);
  if constexpr (std::is_same_v<Result, TSQLSelectStatement>) {
    if (std::unique_ptr<TSQLSelectStatement> tree = parser->ParseSelectDirect())
      return tree;
  }
  // The list of ways is kept per thread for the next parse (a nested parse, made while
  // this one builds its tree, finds it taken and makes its own).
  static thread_local TqxWayList spareWays;
  TqxWayList ways;
  ways.swap(spareWays);
  struct GiveBack {
    TqxWayList& ways;
    ~GiveBack() {
      if (spareWays.capacity() == 0 && ways.capacity() <= 4096) {
        ways.clear();
        ways.swap(spareWays);
      }
    }
  } giveBack{ways};
  ways.clear();
  ways.push_back(parser->NewWayPoint(nullptr));
  try {
    (parser.get()->*wayCalc)(ways);
  } catch (const TqxNestingLimit& limit) {
    throw MakeSQLError(message, &scanner->GetToken(limit.tokenIndex));
  }
  parser->Expect(ways, tkEof);
  if (ways.empty()) {
    const TqxToken* token =
        parser->maxErrIndex < 0 ? nullptr : &scanner->GetToken(parser->maxErrIndex);
    throw MakeSQLError(message, token);
  }
  parser->UnrollWay(ways.front());
  parser->GetWayNode();  // the root
  return (parser.get()->*build)();
}

template <class Result, class WayCalc, class Build>
std::unique_ptr<Result> RunParse(TastSyntaxProvider& provider, const std::string& text,
                                 const char* message, WayCalc wayCalc, Build build) {
  std::unique_ptr<TqxBaseScanner> scanner = provider.GetScannerClass().Create();
  scanner->Init(text);
  return RunParseTokens<Result>(provider, scanner.get(), message, wayCalc, build);
}

}  // namespace

std::unique_ptr<TSQLSelectStatement> TastSyntaxProvider::ParseSelect(const std::string& Text) {
  return RunParse<TSQLSelectStatement>(*this, Text, "Bad SELECT statement",
                                       &TqxBaseParser::ParseSelectWayCalc,
                                       &TqxBaseParser::ParseSelect);
}

std::unique_ptr<TSQLSelectStatement> TastSyntaxProvider::ParseSelect(TqxBaseScanner& Tokens) {
  if (Tokens.GetTokenCount() == 0)
    throw MakeSQLError("Bad SELECT statement", nullptr);
  return RunParseTokens<TSQLSelectStatement>(*this, &Tokens, "Bad SELECT statement",
                                             &TqxBaseParser::ParseSelectWayCalc,
                                             &TqxBaseParser::ParseSelect);
}

std::unique_ptr<TSQLExpressionItem> TastSyntaxProvider::ParseExpression(const std::string& Text) {
  return RunParse<TSQLExpressionItem>(*this, Text, "Bad expression",
                                      &TqxBaseParser::ParseExpressionWayCalc,
                                      &TqxBaseParser::ParseExpression);
}

std::unique_ptr<TSQLExpressionItem> TastSyntaxProvider::ParseLogicalExpression(
    const std::string& Text) {
  return RunParse<TSQLExpressionItem>(*this, Text, "Bad logical expression",
                                      &TqxBaseParser::ParseLogicalExpressionWayCalc,
                                      &TqxBaseParser::ParseLogicalExpression);
}

std::unique_ptr<TSQLDatabaseObject> TastSyntaxProvider::ParseObjectName(const std::string& Text) {
  return RunParse<TSQLDatabaseObject>(*this, Text, "Bad object name",
                                      &TqxBaseParser::ParseObjectNameWayCalc,
                                      &TqxBaseParser::ParseObjectName);
}

std::unique_ptr<TSQLSelectItem> TastSyntaxProvider::ParseSelectItem(const std::string& Text) {
  return RunParse<TSQLSelectItem>(*this, Text, "Bad select item",
                                  &TqxBaseParser::ParseSelectItemWayCalc,
                                  &TqxBaseParser::ParseSelectItem);
}

}  // namespace qorvex
