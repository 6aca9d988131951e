// Scripts scanned statement by statement: each statement's tokens must be exactly what
// scanning the statement's own text gives, with places mapped into the script (the parser
// takes its error places from the tokens).
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/statements.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex {
namespace {

using Place = std::tuple<int, int, int, int, std::string, int>;  // kind pos line col val offset

// Statement texts that stress what scanning depends on: the step back after a "-" that
// begins no comment (which counts swallowed line breaks), multi-byte characters, quotes
// holding ";", comments, tokens cut short by the end, and texts the parser rejects.
const char* const kStatements[] = {
    "select a - 1 from t",
    "select a -b, c\r\n\r\n - d from t where x = -1",
    "select '\xC3\xA9;' - 2, \"\xE2\x82\xAC\" from t",
    "select a -- note\n\r- 3 from t",
    "- 3",
    "select (1 from t",
    "select 1.",
    "select x from t where d = {d '2020-01-01'}-",
    "select a\n\n-\n\n-b from t",
    "select @p from t",
};

// What comes between statements: blank lines (swallowed LFs), CR LF, empty statements.
const char* const kSeparators[] = {";", ";\n\n", ";\r\n\r\n", " ;\n", ";;\n\r", "\n\n;\n\n;"};

std::vector<std::string> Scripts() {
  std::vector<std::string> scripts;
  for (const char* first : kStatements) {
    for (const char* sep : kSeparators) {
      for (const char* second : kStatements)
        scripts.push_back(std::string("\n\n") + first + sep + second + sep + "select 9");
    }
  }
  return scripts;
}

// The tokens of each statement of a split script scanned on its own, in the script's places.
std::vector<std::vector<Place>> TokensOfOwnTexts(const std::string& script) {
  std::vector<std::vector<Place>> out;
  for (const TqxStatementText& statement : SplitStatements(script)) {
    SQL92Scanner scanner;
    scanner.Init(statement.text);
    std::vector<Place>& tokens = out.emplace_back();
    for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i) {
      const TqxToken& t = scanner.GetToken(i);
      const TqxScriptLocation at = ToScriptLocation(statement, t.pos, t.line, t.col);
      tokens.emplace_back(t.kind, at.pos, at.line, at.col, t.val, statement.offset + t.offset);
    }
  }
  return out;
}

std::vector<std::vector<Place>> TokensStatementWise(const std::string& script) {
  std::vector<std::vector<Place>> out;
  SQL92Scanner scanner;
  scanner.BeginStatements(script);
  while (scanner.ScanStatement()) {
    std::vector<Place>& tokens = out.emplace_back();
    for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i) {
      const TqxToken& t = scanner.GetToken(i);
      tokens.emplace_back(t.kind, t.pos, t.line, t.col, t.val, t.offset);
    }
  }
  EXPECT_EQ(scanner.GetTokenCount(), 0);
  EXPECT_FALSE(scanner.ScanStatement());
  return out;
}

TEST(StatementWiseScan, TokensAreThoseOfEachStatementScannedOnItsOwn) {
  for (const std::string& script : Scripts()) {
    SCOPED_TRACE(script);
    ASSERT_EQ(TokensStatementWise(script), TokensOfOwnTexts(script));
  }
}

TEST(StatementWiseScan, NothingToParse) {
  TastSQL92SyntaxProvider provider;
  SQL92Scanner scanner;
  EXPECT_FALSE(scanner.ScanStatement());  // no script begun
  for (const char* script : {"", " ;; ;\n", "-- only a comment"}) {
    scanner.BeginStatements(script);
    EXPECT_FALSE(scanner.ScanStatement()) << script;
  }
  EXPECT_THROW(provider.ParseSelect(scanner), EqxSQLError);
}

}  // namespace
}  // namespace qorvex
