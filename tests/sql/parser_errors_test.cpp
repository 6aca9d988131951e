// Rejected texts with the position and message of their error, the nesting bound, the
// way-calculation operations, the error collector and the command-line parse commands.
#include <gtest/gtest.h>

#include <random>

#include "parser_test_util.h"
#include "tool_runner.h"

namespace qorvex::parsertest {
namespace {

std::string Unescape(const std::string& s) {
  std::string out;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '\\' && i + 1 < s.size()) {
      const char n = s[++i];
      out += n == 'n' ? '\n' : n == 't' ? '\t' : n;
    } else {
      out += s[i];
    }
  }
  return out;
}

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
  std::istringstream in(ReadCorpus("rejected.txt"));
  std::string row;
  while (std::getline(in, row)) {
    const auto tab1 = row.find('\t');
    const auto tab2 = row.find('\t', tab1 + 1);
    Rejected r;
    std::sscanf(row.c_str(), "%d:%d", &r.line, &r.col);
    r.message = row.substr(tab1 + 1, tab2 - tab1 - 1);
    r.text = Unescape(row.substr(tab2 + 1));
    out.push_back(std::move(r));
  }
  return out;
}

// Every rejected text raises EqxSQLError once, with the entry's message and the line
// and column of the farthest token where an expected token was missing.
TEST(RejectedCorpus, ReportsMessageLineAndColumn) {
  const std::vector<Rejected> corpus = RejectedCorpus();
  EXPECT_GE(corpus.size(), 100u);
  TastSQL92SyntaxProvider provider;
  for (const Rejected& r : corpus) {
    SCOPED_TRACE(r.text);
    try {
      Parse(provider, EntryOf(r.message), r.text);
      ADD_FAILURE() << "accepted";
    } catch (const EqxSQLError& e) {
      EXPECT_EQ(e.what(), r.message);
      EXPECT_EQ(e.line, r.line);
      EXPECT_EQ(e.col, r.col);
    }
  }
}

TEST(RejectedCorpus, SameErrorAsPlainCalculation) {
  for (const Rejected& r : RejectedCorpus()) {
    SCOPED_TRACE(r.text);
    const Entry entry = EntryOf(r.message);
    const WayOutcome fast = CalculateWays(r.text, entry, false);
    EXPECT_FALSE(fast.complete);
    EXPECT_EQ(fast, CalculateWays(r.text, entry, true));
  }
}

TEST(ParseEntries, MessagesAndTokenData) {
  TastSQL92SyntaxProvider provider;
  struct Case {
    Entry entry;
    const char* text;
    const char* message;
  } cases[] = {{Entry::kSelect, "select a from t\n  select b", "Bad SELECT statement"},
               {Entry::kExpression, "a +", "Bad expression"},
               {Entry::kLogical, "a = 1 )", "Bad logical expression"},
               {Entry::kObject, "a.b.c.d.e", "Bad object name"},
               {Entry::kItem, "a b c", "Bad select item"}};
  for (const Case& c : cases) {
    try {
      Parse(provider, c.entry, c.text);
      ADD_FAILURE() << c.text;
    } catch (const EqxSQLError& e) {
      EXPECT_STREQ(e.what(), c.message);
    }
  }
  try {
    provider.ParseSelect("select a from t\n  select b");
  } catch (const EqxSQLError& e) {
    EXPECT_EQ(e.line, 2);
    EXPECT_EQ(e.col, 3);
    EXPECT_EQ(e.pos, 18);
    EXPECT_EQ(e.tokenText, "select");
  }
  // An unclosed string is reported at the error token holding the rest of the text.
  try {
    provider.ParseSelect("select 'open from t");
    ADD_FAILURE();
  } catch (const EqxSQLError& e) {
    EXPECT_EQ(e.tokenText, "'open from t");
    EXPECT_EQ(e.col, 8);
  }
}

TEST(ParseEntries, MakeSQLErrorWithoutToken) {
  const EqxSQLError e = MakeSQLError("Bad expression", nullptr);
  EXPECT_STREQ(e.what(), "Bad expression");
  EXPECT_EQ(e.pos, 0);
  EXPECT_EQ(e.line, 0);
  EXPECT_EQ(e.col, 0);
  EXPECT_EQ(e.tokenText, "");
  TqxToken t{tkIdentifier, 7, 3, 2, "abc", 9};
  const EqxSQLError f = MakeSQLError("Bad object name", &t);
  EXPECT_EQ(f.pos, 7);
  EXPECT_EQ(f.col, 3);
  EXPECT_EQ(f.line, 2);
  EXPECT_EQ(f.tokenText, "abc");
}

// ---- nesting ---------------------------------------------------------------------

std::string Repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i)
    out += s;
  return out;
}

// 256 levels of every kind of nesting are read; far deeper text is rejected with the
// entry's message (and never overflows the stack).
TEST(Nesting, DeepTextsAreReadOrRejectedCleanly) {
  TastSQL92SyntaxProvider provider;
  const int n = 256;
  const std::vector<std::string> accepted = {
      "select " + Repeat("(", n) + "1" + Repeat(")", n),
      "select * from t where " + Repeat("(", n) + "a = 1" + Repeat(")", n),
      "select * from t where " + Repeat("(", n) + "a" + Repeat(")", n) + " = 1",
      "select * from t where " + Repeat("not ", n) + "a = 1",
      "select " + Repeat("- ", n) + "1",
      "select " + Repeat("f(", n) + "1" + Repeat(")", n),
      "select " + Repeat("(select ", n) + "1" + Repeat(")", n),
      "select * from t where a in " + Repeat("(select a from t where a in ", n) + "(1)" +
          Repeat(")", n),
      "select * from " + Repeat("(select * from ", n) + "t" + Repeat(") x", n),
      "select * from " + Repeat("(", n) + "t" + Repeat(")", n),
      "select " + Repeat("case when a = 1 then ", n) + "1" + Repeat(" end", n),
      "select 1" + Repeat(" + 1", 500),
      "select * from a" + Repeat(" join b", n) + Repeat(" on 1 = 1", n),
  };
  for (const std::string& sql : accepted) {
    SCOPED_TRACE(sql.substr(0, 60));
    std::unique_ptr<TSQLSelectStatement> tree;
    ASSERT_NO_THROW(tree = provider.ParseSelect(sql));
    EXPECT_EQ(Write(*provider.ParseSelect(Write(*tree, false)), false), Write(*tree, false));
  }
  const std::vector<std::string> rejected = {
      "select " + Repeat("(", 5000) + "1" + Repeat(")", 5000),
      "select * from t where " + Repeat("(", 5000) + "a = 1" + Repeat(")", 5000),
      "select * from t where " + Repeat("not ", 5000) + "a = 1",
      "select " + Repeat("- ", 5000) + "1",
      "select " + Repeat("(select ", 3000) + "1" + Repeat(")", 3000),
      "select 1" + Repeat(" + 1", 5000),
      "select * from a" + Repeat(" join b", 3000) + Repeat(" on 1 = 1", 3000),
  };
  for (const std::string& sql : rejected) {
    SCOPED_TRACE(sql.substr(0, 60));
    try {
      provider.ParseSelect(sql);
      ADD_FAILURE() << "accepted";
    } catch (const EqxSQLError& e) {
      EXPECT_STREQ(e.what(), "Bad SELECT statement");
      EXPECT_GT(e.col, 1);
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
      tokens.push_back(scanner.GetToken(k).val);
    const std::size_t at = rng() % (tokens.size() + 1);
    switch (rng() % 3) {
      case 0:
        if (at < tokens.size())
          tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(at));
        break;
      case 1:
        tokens.insert(tokens.begin() + static_cast<std::ptrdiff_t>(at),
                      vocabulary[rng() % vocabulary.size()]);
        break;
      default:
        if (at < tokens.size())
          tokens[at] = vocabulary[rng() % vocabulary.size()];
    }
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

TEST_F(WayOperations, IsIntInArray) {
  const std::int32_t kinds[] = {4, 12, 19};
  EXPECT_FALSE(TqxBaseParser::IsIntInArray(4, kinds, -1));
  EXPECT_TRUE(TqxBaseParser::IsIntInArray(4, kinds, 0));
  EXPECT_FALSE(TqxBaseParser::IsIntInArray(19, kinds, 1));
  EXPECT_TRUE(TqxBaseParser::IsIntInArray(19, kinds, 2));
}

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
  std::vector<std::int32_t> decisions;
  for (const TqxWayPoint* w : parser_.GetWay())
    decisions.push_back(w->decision);
  EXPECT_EQ(decisions, (std::vector<std::int32_t>{0, 1, 2, 5}));
  EXPECT_EQ(parser_.GetWayNode(), root);
  EXPECT_EQ(parser_.GetWayNode()->decision, 1);
  EXPECT_EQ(parser_.Get().val, "a");
  EXPECT_EQ(parser_.Get().val, ",");
}

// A point standing for a stretch of another way is replaced by that stretch (from its
// `link` up to, not including, `linkBase`), also inside a stretch; a way far longer
// than the replay's first storage comes out whole, root first; and the replay stops
// with an error at its end.
TEST_F(WayOperations, UnrollWayExpandsStretchesAndLongWays) {
  TqxWayPoint* root = parser_.NewWayPoint(nullptr);
  // Branch a: decisions 1..4 below root; branch b: 10, then a point for a's 2..3, then 11.
  std::vector<TqxWayPoint*> a{root};
  for (int d = 1; d <= 4; ++d)
    a.push_back(parser_.NewWayPoint(a.back(), d));
  TqxWayPoint* b = parser_.NewWayPoint(root, 10);
  TqxWayPoint* link = parser_.NewWayPoint(b);
  link->link = a[3];
  link->linkBase = a[1];
  b = parser_.NewWayPoint(link, 11);
  // The way replayed: 600 points of decision 7, a point for b's 10..11 (which holds
  // the stretch of a), then 12.
  TqxWayPoint* leaf = root;
  for (int i = 0; i < 600; ++i)
    leaf = parser_.NewWayPoint(leaf, 7);
  TqxWayPoint* outer = parser_.NewWayPoint(leaf);
  outer->link = b;
  outer->linkBase = root;
  leaf = parser_.NewWayPoint(outer, 12);

  std::vector<std::int32_t> expected{0};
  expected.insert(expected.end(), 600, 7);
  expected.insert(expected.end(), {10, 2, 3, 11, 12});
  for (int round = 0; round < 2; ++round) {  // the second unroll reuses the storage
    parser_.UnrollWay(leaf);
    std::vector<std::int32_t> decisions;
    for (const TqxWayPoint* w : parser_.GetWay())
      decisions.push_back(w->decision);
    EXPECT_EQ(decisions, expected);
    EXPECT_EQ(parser_.GetWayNode(), root);
    for (std::size_t i = 1; i < expected.size(); ++i)
      ASSERT_EQ(parser_.GetWayNode()->decision, expected[i]) << i;
    EXPECT_THROW(parser_.GetWayNode(), EqxError);
  }
  parser_.UnrollWay(nullptr);
  EXPECT_TRUE(parser_.GetWay().empty());
  EXPECT_THROW(parser_.GetWayNode(), EqxError);
}

TEST_F(WayOperations, GetPastTheEndGivesTheEndToken) {
  for (int i = 0; i < 5; ++i)
    parser_.Get();
  EXPECT_EQ(parser_.Get().kind, tkEof);
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

TEST(Tool, CheckReportsRejectedStatementsWithInputPositions) {
  const ToolRun r = RunTool("check", "select a from t;\nselect b\n  from u where;\nselect c");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "<stdin>:3:10: error: Bad SELECT statement near \"where\"\n");
  EXPECT_EQ(RunTool("check", "select 1; select 2").status, 0);
}

TEST(Tool, FormatWritesStatementsSeparatedBySemicolonLines) {
  const ToolRun r = RunTool("format", "select a, b from t where a = 1; select 2");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "SELECT a, b\nFROM t\nWHERE a=1\n;\nSELECT 2\n");
  EXPECT_EQ(RunTool("format --one-line", "select a from t where a = 1").out,
            "SELECT a FROM t WHERE a=1\n");
  EXPECT_EQ(RunTool("format --one-line --dialect base", "select [a b] from t").out,
            "SELECT a b FROM t\n");
  EXPECT_EQ(RunTool("format --one-line --html", "select a from t").out,
            "<b>select</b> <i>a</i> <b>from</b> <i>t</i>\n");
  EXPECT_EQ(RunTool("format --dialect oracle", "select 1").status, 2);
}

TEST(Tool, OtherEntriesAndTree) {
  EXPECT_EQ(RunTool("expr", "a + 1; (b)").out, "a+1\n;\n(b)\n");
  EXPECT_EQ(RunTool("logical", "a > 1 and not b").err,
            "<stdin>:1:16: error: Bad logical expression near \"EOF\"\n");
  EXPECT_EQ(RunTool("object", "db..t").out, "db..t\n");
  EXPECT_EQ(RunTool("item", "x = 1").out, "x=1\n");
  EXPECT_EQ(RunTool("tree", "select a").out,
            "TSQLSelectStatement union\n"
            "  TSQLSubQuerySelectExpression union\n"
            "    TSQLSubQuerySelectModeDefault\n"
            "    TSQLSelectItems\n"
            "      TSQLSelectItemExpression\n"
            "        TSQLExpressionColumn\n"
            "          TSQLObjectColumn a\n");
}

}  // namespace
}  // namespace qorvex::parsertest
