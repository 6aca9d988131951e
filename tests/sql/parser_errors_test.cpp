// Rejected texts with the position and message of their error, the nesting bound, the
// way-calculation operations, the error collector and the command-line parse commands.
#include <gtest/gtest.h>

#include <random>

#include "parser_test_util.h"
#include "tool_runner.h"

namespace qorvex::parsertest {
namespace {

Entry EntryOf(const std::string& message) {
  if (message == "Bad expression")
    return Entry::kExpression;
  if (message == "Bad logical expression")
    return Entry::kLogical;
  if (message == "Bad object name")
    return Entry::kObject;
  if (message == "Bad select item")
    return Entry::kItem;
  return Entry::kSelect;
}

struct Rejected {
  std::int32_t line, col;
  std::string message, text;
};

std::vector<Rejected> RejectedCorpus() {
  std::vector<Rejected> out;
  for (const std::vector<std::string>& row : ReadRows("rejected.txt")) {
    Rejected r{0, 0, row.at(1), row.at(2)};
    std::sscanf(row[0].c_str(), "%d:%d", &r.line, &r.col);
    out.push_back(std::move(r));
  }
  return out;
}

// Every rejected text raises EqxSQLError once, with the entry's message and the line
// and column of the farthest token where an expected token was missing; the plain way
// calculation fails at the same token.
TEST(RejectedCorpus, ReportsMessageLineAndColumnAsThePlainCalculation) {
  const std::vector<Rejected> corpus = RejectedCorpus();
  EXPECT_GE(corpus.size(), 100u);
  TastSQL92SyntaxProvider provider;
  for (const Rejected& r : corpus) {
    SCOPED_TRACE(r.text);
    const Entry entry = EntryOf(r.message);
    try {
      Parse(provider, entry, r.text);
      ADD_FAILURE() << "accepted";
    } catch (const EqxSQLError& e) {
      EXPECT_EQ(e.what(), r.message);
      EXPECT_EQ(e.line, r.line);
      EXPECT_EQ(e.col, r.col);
    }
    const WayOutcome fast = CalculateWays(r.text, entry, false);
    EXPECT_FALSE(fast.complete);
    EXPECT_EQ(fast, CalculateWays(r.text, entry, true));
  }
}

// Beyond the line and column of the corpus: the character position and the text of the
// token the error is reported at, also for an error token holding the rest of the text.
TEST(ParseEntries, ErrorsCarryPositionAndTokenText) {
  TastSQL92SyntaxProvider provider;
  const struct {
    const char* text;
    std::int32_t line, col, pos;
    const char* token;
  } cases[] = {{"select a from t\n  select b", 2, 3, 18, "select"},
               {"select a from t\r\n\r\nselect b", 3, 1, 17, "select"},
               {"select 'open from t", 1, 8, 7, "'open from t"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    try {
      provider.ParseSelect(c.text);
      ADD_FAILURE() << "accepted";
    } catch (const EqxSQLError& e) {
      EXPECT_EQ(e.line, c.line);
      EXPECT_EQ(e.col, c.col);
      EXPECT_EQ(e.pos, c.pos);
      EXPECT_EQ(e.tokenText, c.token);
    }
  }
}

// ---- nesting ---------------------------------------------------------------------

// Every kind of nesting is read to 256 levels; far deeper text is rejected with the
// entry's message, never overflowing the stack (the kinds the direct reading takes close
// to the bound are tried there). A text is head + open * n + middle + close * n + tail.
TEST(Nesting, DeepTextsAreReadOrRejectedCleanly) {
  TastSQL92SyntaxProvider provider;
  const struct {
    const char *head, *open, *middle, *close, *tail;
    int read, rejected;  // 0: not tried
  } cases[] = {
      {"select ", "(", "1", ")", "", 256, 5000},
      {"select * from t where ", "(", "a = 1", ")", "", 256, 5000},
      {"select * from t where ", "(", "a", ")", " = 1", 256, 0},
      {"select ", "f(", "1", ")", "", 256, 0},
      {"select ", "(select ", "1", ")", "", 256, 3000},
      {"select * from t where a in ", "(select a from t where a in ", "(1)", ")", "", 256, 0},
      {"select * from ", "(select * from ", "t", ") x", "", 256, 0},
      {"select ", "case when a = 1 then ", "1", " end", "", 256, 0},
      {"select * from a", " join b", "", " on 1 = 1", "", 256, 3000},
  };
  for (const auto& c : cases) {
    for (const int n : {c.read, c.rejected}) {
      if (n == 0)
        continue;
      const std::string sql =
          c.head + Repeat(c.open, n) + c.middle + Repeat(c.close, n) + std::string(c.tail);
      SCOPED_TRACE(sql.substr(0, 60) + " n=" + std::to_string(n));
      if (n == c.read) {
        std::unique_ptr<TSQLSelectStatement> tree;
        ASSERT_NO_THROW(tree = provider.ParseSelect(sql));
        EXPECT_EQ(Write(*provider.ParseSelect(Write(*tree, false)), false), Write(*tree, false));
        continue;
      }
      try {
        provider.ParseSelect(sql);
        ADD_FAILURE() << "accepted";
      } catch (const EqxSQLError& e) {
        EXPECT_STREQ(e.what(), "Bad SELECT statement");
        EXPECT_GT(e.col, 1);
      }
    }
  }
}

TEST(Nesting, BoundIsReachedAtTheSameTokenInBothCalculations) {
  const std::string sql = "select " + Repeat("(", 2000) + "1" + Repeat(")", 2000);
  const WayOutcome fast = CalculateWays(sql, Entry::kSelect, false);
  EXPECT_TRUE(fast.nestingLimit);
  EXPECT_EQ(fast, CalculateWays(sql, Entry::kSelect, true));
}

// ---- plain and optimised way calculations on random texts ------------------------

// Random token sequences and mutations of corpus statements: both calculations agree on
// the first way, and on the error index when there is none.
TEST(WayCalculation, OptimisationsKeepTheFirstWayOnRandomTexts) {
  const std::vector<std::string> vocabulary = {
      "select", "a",     "b.c",   ",",     "(",     ")",     "from",    "t",       "join",
      "left",   "outer", "on",    "=",     "1",     "not",   "and",     "or",      "in",
      ".",      "*",     "union", "all",   "case",  "when",  "then",    "end",     "as",
      "x",      "[q r]", "'s'",   "count", "is",    "null",  "between", "like",    "exists",
      "where",  "group", "by",    "order", "cross", "cast",  "int",     "numeric", "+",
      "-",      ".*",    "<>",    "any",   "ada",   "[a][b]"};
  std::mt19937 rng(12345);
  const Entry entries[] = {Entry::kSelect, Entry::kExpression, Entry::kLogical, Entry::kObject,
                           Entry::kItem};
  for (int i = 0; i < 6000; ++i) {
    std::string text;
    const int length = 1 + static_cast<int>(rng() % 18);
    if (i % 5 != 0)
      text = "select ";
    for (int k = 0; k < length; ++k)
      text += vocabulary[rng() % vocabulary.size()] + " ";
    const Entry entry = entries[i % 5 == 0 ? rng() % 5 : 0];
    SCOPED_TRACE(text);
    ASSERT_EQ(CalculateWays(text, entry, false), CalculateWays(text, entry, true));
  }
  const std::vector<std::string> statements = SplitStatements(ReadCorpus("accepted.sql"));
  for (int i = 0; i < 3000; ++i) {
    const std::string& base = statements[rng() % statements.size()];
    SQL92Scanner scanner;
    scanner.Init(base);
    std::vector<std::string> tokens;
    for (std::int32_t k = 0; k + 1 < scanner.GetTokenCount(); ++k)
      tokens.emplace_back(scanner.GetToken(k).val);
    // Drop, insert or replace one token.
    const std::string& word = vocabulary[rng() % vocabulary.size()];
    const auto at = tokens.begin() + static_cast<std::ptrdiff_t>(rng() % (tokens.size() + 1));
    const unsigned change = rng() % 3;
    if (change == 1)
      tokens.insert(at, word);
    else if (at != tokens.end() && change == 0)
      tokens.erase(at);
    else if (at != tokens.end())
      *at = word;
    std::string text;
    for (const std::string& t : tokens)
      text += t + " ";
    SCOPED_TRACE(text);
    ASSERT_EQ(CalculateWays(text, Entry::kSelect, false),
              CalculateWays(text, Entry::kSelect, true));
  }
}

// ---- way-calculation operations ---------------------------------------------------

struct ScannedText {
  explicit ScannedText(const char* text) { scanner.Init(text); }
  SQL92Scanner scanner;
};

class WayOperations : public ::testing::Test {
 protected:
  TastSQL92SyntaxProvider provider_;
  ScannedText text_{"a , b ( c"};
  SQL92Parser parser_{&text_.scanner, &provider_};
};

TEST_F(WayOperations, LookaheadTests) {
  TqxWayList empty;
  EXPECT_FALSE(parser_.CheckLAToken(empty, tkIdentifier));
  EXPECT_TRUE(empty.empty());

  TqxWayPoint* root = parser_.NewWayPoint(nullptr);
  TqxWayPoint* atA = parser_.NewWayPoint(root);  // next token: a
  TqxWayPoint* atComma = parser_.NewWayPoint(root);
  atComma->tokenIndex = 0;  // next token: ,
  TqxWayList ways{atA, atComma};
  EXPECT_TRUE(parser_.CheckLAToken(ways, tkComma));
  EXPECT_EQ(ways, TqxWayList{atComma});

  ways = {atA, atComma};
  const std::int32_t set[] = {tkLParen, tkIdentifier};
  EXPECT_TRUE(parser_.CheckLAToken(ways, set, 1));
  EXPECT_EQ(ways, TqxWayList{atA});
  ways = {atA, atComma};
  EXPECT_TRUE(parser_.CheckLANotToken(ways, tkComma));
  EXPECT_EQ(ways, TqxWayList{atA});
  ways = {atA, atComma};
  EXPECT_FALSE(parser_.CheckLANotToken(ways, set, 1) && ways.size() != 1);
  EXPECT_EQ(ways, TqxWayList{atComma});
  ways = {atA, atComma};
  EXPECT_TRUE(parser_.CheckLANotIn(ways, {"a"}));
  EXPECT_EQ(ways, TqxWayList{atComma});
  EXPECT_FALSE(parser_.CheckLANotIn(ways, {",", "b"}));
  EXPECT_TRUE(ways.empty());
}

TEST_F(WayOperations, ExpectRemovesFailingWaysAndRaisesTheErrorIndex) {
  TqxWayPoint* root = parser_.NewWayPoint(nullptr);
  TqxWayPoint* w0 = parser_.NewWayPoint(root);  // token 0: a
  TqxWayPoint* w2 = parser_.NewWayPoint(root);
  w2->tokenIndex = 1;  // token 2: b
  TqxWayPoint* w3 = parser_.NewWayPoint(root);
  w3->tokenIndex = 2;  // token 3: (
  EXPECT_EQ(root->GetChildCount(), 3);
  TqxWayList ways{w0, w2, w3};
  parser_.Expect(ways, tkIdentifier);
  EXPECT_EQ(ways, (TqxWayList{w0, w2}));
  EXPECT_EQ(w0->tokenIndex, 0);
  EXPECT_EQ(w2->tokenIndex, 2);
  EXPECT_EQ(parser_.maxErrIndex, 3);
  EXPECT_EQ(root->GetChildCount(), 2);
  parser_.Expect(ways, tkKwSelect);
  EXPECT_TRUE(ways.empty());
  EXPECT_EQ(parser_.maxErrIndex, 3);
  parser_.Expect(ways, tkKwSelect);  // an empty list stays empty
  EXPECT_TRUE(ways.empty());
}

TEST_F(WayOperations, WayTreeShapeAndUnroll) {
  TqxWayPoint* root = parser_.NewWayPoint(nullptr);
  EXPECT_EQ(root->tokenIndex, -1);
  EXPECT_EQ(root->GetDepth(), 1);
  EXPECT_EQ(root->GetCount(), 0);

  TqxWayList ways{root};
  parser_.AddWayNode(ways, 1);
  TqxWayList more;
  parser_.ListAddWithWayNode(more, ways, 0);
  parser_.ListAddWithWayNode(more, ways, 2);
  parser_.AddWayNode(more, 5);
  EXPECT_EQ(root->GetCount(), 5);
  EXPECT_EQ(root->GetDepth(), 4);

  parser_.UnrollWay(more[1]);
  EXPECT_EQ(parser_.maxErrIndex, -1);
  EXPECT_EQ(Decisions(parser_), (std::vector<std::int32_t>{0, 1, 2, 5}));
  EXPECT_EQ(parser_.GetWayNode(), root);
  EXPECT_EQ(parser_.GetWayNode()->decision, 1);
  EXPECT_EQ(parser_.Get().val, "a");
  EXPECT_EQ(parser_.Get().val, ",");
  for (int i = 0; i < 3; ++i)
    parser_.Get();
  EXPECT_EQ(parser_.Get().kind, tkEof);  // past the end
  EXPECT_EQ(parser_.Get().kind, tkEof);
}

// The SQL92 production: a statement with an optional ";" after it.
TEST(ParserProductions, SQL92TakesAnOptionalSemicolon) {
  TastSQL92SyntaxProvider provider;
  for (const char* text : {"select a from t;", "select a from t"}) {
    SQL92Scanner scanner;
    scanner.Init(text);
    SQL92Parser parser(&scanner, &provider);
    TqxWayList ways{parser.NewWayPoint(nullptr)};
    parser.SQL92WayCalc(ways);
    parser.Expect(ways, tkEof);
    ASSERT_EQ(ways.size(), 1u) << text;
    parser.UnrollWay(ways.front());
    parser.GetWayNode();
    auto statement = parser.SQL92();
    EXPECT_EQ(Write(*statement, false), "SELECT a FROM t");
  }
}

TEST(ParserErrorsCollector, FormatsMessages) {
  TqxParserErrors errors;
  errors.Error(3, 7, "something");
  errors.SynErr(1, 2, 99);
  errors.SemErr(4, 5, 12);
  EXPECT_EQ(errors.messages,
            (std::vector<std::string>{"line 3 col 7: something", "line 1 col 2: SQL Syntax error",
                                      "line 4 col 5: error 12"}));
  EXPECT_THROW(errors.Exception("stop"), EqxAbort);
  EXPECT_EQ(errors.messages.back(), "stop");
}

// ---- command-line tool ----------------------------------------------------------------

using tooltest::RunTool;
using tooltest::ToolRun;

// The parse commands of the tool (corpus/err_tool_commands.txt): exit status, output and
// error output.
TEST(Tool, ParseCommands) {
  const auto rows = ReadRows("err_tool_commands.txt");
  EXPECT_GE(rows.size(), 12u);
  for (const std::vector<std::string>& row : rows) {
    SCOPED_TRACE(row.at(0) + ": " + row.at(2));
    const tooltest::ToolRun r = tooltest::RunTool(row[0], row[2]);
    EXPECT_EQ(std::to_string(r.status), row[1]);
    EXPECT_TRUE(row.at(3) == "*" || r.out == row[3]) << r.out;
    EXPECT_TRUE(row.at(4) == "*" || r.err == row[4]) << r.err;
  }
}

}  // namespace
}  // namespace qorvex::parsertest
