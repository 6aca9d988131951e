#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/parser/sql92_parser.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/statements.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::parsertest {

enum class Entry { kSelect, kExpression, kLogical, kObject, kItem };

inline std::string ReadCorpus(const std::string& name) {
  std::ifstream in(std::string(QORVEX_SOURCE_DIR) + "/tests/sql/corpus/" + name, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// Reads the escapes \\ \t \r \n \0 and \xNN of the corpus files; any other escaped
// character stands for itself.
inline std::string Unescape(const std::string& s) {
  std::string out;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] != '\\' || i + 1 == s.size()) {
      out += s[i];
      continue;
    }
    const char n = s[++i];
    if (n == 'x' && i + 2 < s.size()) {
      out += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      out += n == 'n' ? '\n' : n == 't' ? '\t' : n == 'r' ? '\r' : n == '0' ? '\0' : n;
    }
  }
  return out;
}

// The rows of a corpus file, split at TABs and unescaped; blank lines and lines starting
// with "#" are skipped.
inline std::vector<std::vector<std::string>> ReadRows(const std::string& name) {
  std::istringstream in(ReadCorpus(name));
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    std::vector<std::string> fields;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
      end = line.find('\t', begin);
      fields.push_back(Unescape(line.substr(begin, end - begin)));
    }
    rows.push_back(std::move(fields));
  }
  return rows;
}

// `s` written `n` times, for deeply nested texts.
inline std::string Repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i)
    out += s;
  return out;
}

// The entry named select, expression, logical, object or item.
inline Entry EntryNamed(const std::string& name) {
  const char* names[] = {"select", "expression", "logical", "object", "item"};
  for (int i = 0; i < 5; ++i) {
    if (name == names[i])
      return static_cast<Entry>(i);
  }
  throw std::invalid_argument("no entry " + name);
}

// The statements of a text, split on its ";" tokens.
inline std::vector<std::string> SplitStatements(const std::string& text) {
  std::vector<std::string> out;
  for (const TqxStatementText& statement : qorvex::SplitStatements(text))
    out.emplace_back(statement.text);
  return out;
}

inline std::unique_ptr<TastNode> Parse(TastSyntaxProvider& provider, Entry entry,
                                       const std::string& text) {
  switch (entry) {
    case Entry::kSelect:
      return provider.ParseSelect(text);
    case Entry::kExpression:
      return provider.ParseExpression(text);
    case Entry::kLogical:
      return provider.ParseLogicalExpression(text);
    case Entry::kObject:
      return provider.ParseObjectName(text);
    case Entry::kItem:
      return provider.ParseSelectItem(text);
  }
  return nullptr;
}

inline std::string Write(const TastNode& node, bool multiLine, const char* newLine = "\r\n") {
  std::string text;
  TSQLBuilderPlainText builder(&text);
  builder.NewLineText = newLine;
  builder.ResetBuilder();
  node.BuildSQL(builder, multiLine);
  return text;
}

// What the way calculation decided for a text: whether a complete way was found, the
// decisions along the first one, and the error index when there was none.
struct WayOutcome {
  bool complete = false;
  std::vector<std::int32_t> decisions;
  std::int32_t maxErrIndex = 0;
  bool nestingLimit = false;

  bool operator==(const WayOutcome&) const = default;
};

// Runs the way calculation of `entry` over `ways`.
inline void RunWayCalc(SQL92Parser& parser, Entry entry, TqxWayList& ways) {
  using WayCalc = void (SQL92Parser::*)(TqxWayList&);
  static constexpr WayCalc calcs[] = {
      &SQL92Parser::ParseSelectWayCalc, &SQL92Parser::ParseExpressionWayCalc,
      &SQL92Parser::ParseLogicalExpressionWayCalc, &SQL92Parser::ParseObjectNameWayCalc,
      &SQL92Parser::ParseSelectItemWayCalc};
  (parser.*calcs[static_cast<int>(entry)])(ways);
}

// The decisions along the way the parser last unrolled.
inline std::vector<std::int32_t> Decisions(const SQL92Parser& parser) {
  std::vector<std::int32_t> out;
  for (const TqxWayPoint* w : parser.GetWay())
    out.push_back(w->decision);
  return out;
}

// The way calculation of `text`; `direct`, when given, tells whether the calculation made
// no way point off the way it chose (which only the direct reading achieves).
inline WayOutcome CalculateWays(const std::string& text, Entry entry, bool plain,
                                bool* direct = nullptr) {
  TastSQL92SyntaxProvider provider;
  SQL92Scanner scanner;
  scanner.Init(text);
  SQL92Parser parser(&scanner, &provider);
  parser.SetPlainWayCalc(plain);
  TqxWayList ways{parser.NewWayPoint(nullptr)};
  WayOutcome out;
  if (direct != nullptr)
    *direct = false;
  try {
    RunWayCalc(parser, entry, ways);
  } catch (const TqxNestingLimit& limit) {
    out.nestingLimit = true;
    out.maxErrIndex = limit.tokenIndex;
    return out;
  }
  parser.Expect(ways, tkEof);
  if (ways.empty()) {
    out.maxErrIndex = parser.maxErrIndex;
    return out;
  }
  out.complete = true;
  parser.UnrollWay(ways.front());
  out.decisions = Decisions(parser);
  if (direct != nullptr)
    *direct = parser.GetWayPointCount() == parser.GetWay().size();
  return out;
}

}  // namespace qorvex::parsertest
