// Round trips of the accepted corpus and the trees built for characteristic texts.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <utility>

#include "parser_test_util.h"
#include "qorvex/ast/from.h"
#include "qorvex/parser/sql92_first_sets.h"

namespace qorvex::parsertest {
namespace {

class AcceptedCorpus : public ::testing::Test {
 protected:
  static const std::vector<std::string>& Statements() {
    static const std::vector<std::string> s = [] {
      std::vector<std::string> all = SplitStatements(ReadCorpus("accepted.sql"));
      for (std::string& q : SplitStatements(ReadCorpus("tpch.sql")))
        all.push_back(std::move(q));
      return all;
    }();
    return s;
  }
  TastSQL92SyntaxProvider provider_;
};

// The text of an HTML fragment as plain SQL: the mark-up dropped, "<br/>" a line break.
std::string HTMLToText(const std::string& html) {
  std::string text = html;
  const std::pair<const char*, const char*> marks[] = {
      {"<br/>", "\n"}, {"<b>", ""},  {"</b>", ""},
      {"<i>", ""},     {"</i>", ""}, {"<font color=#7f7fff>", ""},
      {"</font>", ""}};
  for (const auto& [mark, by] : marks) {
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
      text.replace(at, std::strlen(mark), by);
      at += std::strlen(by);
    }
  }
  return text;
}

// Parse, write on one line, parse again, write again: the two texts are equal and so
// are the two trees; a copy of the tree writes the same. The multi-line text reads back
// to the very tree that the one-line text reads to; where the statement has no literal
// (which HTML cannot write) the HTML text reads back to a tree that writes the same
// HTML. So no writer loses a quoted name, a reserved word or a name's parts. The
// multi-line text is read with "\n" line breaks, as the tool writes it: the scanner's
// line-comment check re-reads characters after CR LF breaks before a "-" (a kept quirk
// of the scanner).
TEST_F(AcceptedCorpus, RoundTrips) {
  EXPECT_GE(Statements().size(), 300u);
  int htmlWritten = 0;
  for (const std::string& sql : Statements()) {
    SCOPED_TRACE(sql);
    std::unique_ptr<TSQLSelectStatement> tree;
    ASSERT_NO_THROW(tree = provider_.ParseSelect(sql));
    const std::string oneLine = Write(*tree, false);
    EXPECT_EQ(oneLine.find('\n'), std::string::npos);
    std::unique_ptr<TSQLSelectStatement> again;
    ASSERT_NO_THROW(again = provider_.ParseSelect(oneLine)) << oneLine;
    EXPECT_EQ(Write(*again, false), oneLine);
    EXPECT_EQ(Write(*CloneNode(*tree), false), oneLine);
    const std::string dump = again->Dump();
    EXPECT_EQ(tree->Dump(), dump) << oneLine;

    const std::string multiLine = Write(*tree, true, "\n");
    std::unique_ptr<TSQLSelectStatement> fromMulti;
    ASSERT_NO_THROW(fromMulti = provider_.ParseSelect(multiLine)) << multiLine;
    EXPECT_EQ(fromMulti->Dump(), dump) << multiLine;

    std::string html;
    TSQLBuilderHTML builder(&html);
    builder.ResetBuilder();
    try {
      tree->BuildSQL(builder, true);
    } catch (const EqxError&) {
      continue;  // a number or a string literal
    }
    ++htmlWritten;
    std::unique_ptr<TSQLSelectStatement> htmlTree;
    ASSERT_NO_THROW(htmlTree = provider_.ParseSelect(HTMLToText(html))) << html;
    // HTML lower-cases keywords, type names among them, so its tree is compared by the
    // HTML it writes again; names keep their letter case and quotes in either.
    const std::string first = html;
    builder.ResetBuilder();
    htmlTree->BuildSQL(builder, true);
    EXPECT_EQ(html, first);
  }
  EXPECT_GE(htmlWritten, 100);
}

// The reuse of worked-out readings and the dropping of twin ways choose exactly the way
// that the plain way calculation chooses.
TEST_F(AcceptedCorpus, SameWayAsPlainCalculation) {
  for (const std::string& sql : Statements()) {
    SCOPED_TRACE(sql);
    const WayOutcome fast = CalculateWays(sql, Entry::kSelect, false);
    const WayOutcome plain = CalculateWays(sql, Entry::kSelect, true);
    ASSERT_TRUE(plain.complete);
    EXPECT_EQ(fast, plain);
  }
}

// Texts and the one-line text their tree writes (corpus/rt_written.txt).
TEST(ParserTrees, WriteTheExpectedText) {
  TastSQL92SyntaxProvider provider;
  const auto rows = ReadRows("rt_written.txt");
  EXPECT_GE(rows.size(), 60u);
  for (const std::vector<std::string>& row : rows) {
    SCOPED_TRACE(row.at(1));
    std::unique_ptr<TastNode> node;
    ASSERT_NO_THROW(node = Parse(provider, EntryNamed(row[0]), row[1]));
    EXPECT_EQ(Write(*node, false), row.at(2));
  }
}

// Every alias form, a name with an empty part, a derived table with column aliases in an
// outer join, a quantified comparison and an ordering (corpus/rt_tree.txt).
TEST(ParserTrees, NodeClassesAndFields) {
  std::istringstream in(ReadCorpus("rt_tree.txt"));
  std::string sql, dump;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    if (sql.empty())
      sql = line;
    else
      dump += line + "\n";
  }
  TastSQL92SyntaxProvider provider;
  auto stmt = provider.ParseSelect(sql);
  EXPECT_EQ(stmt->Dump(), dump);
  auto* query = dynamic_cast<TSQLSubQuerySelectExpression*>(stmt->GetItems(0));
  ASSERT_NE(query, nullptr);
  auto* derived = dynamic_cast<TSQLFromQuery*>(query->GetFromClause()->GetItems(1));
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(derived->ColumnAliases, (std::vector<std::string>{"c1", "c2"}));
}

// The same text gives the same tree every time, also when one parser object is not
// reused and when texts are parsed in another order.
TEST(ParserTrees, AmbiguousTextsAreReadTheSameWayEveryTime) {
  TastSQL92SyntaxProvider provider;
  const char* texts[] = {"select ((select 1)) from t where ((a)) = (1)",
                         "select * from a join b join c on 1 = 1 join d on 2 = 2 on 3 = 3",
                         "select * from t where not like 'x' and (a) in ((select 1))"};
  std::vector<std::string> first;
  for (const char* t : texts)
    first.push_back(provider.ParseSelect(t)->Dump());
  for (int round = 0; round < 3; ++round) {
    for (int i = 2; i >= 0; --i)
      EXPECT_EQ(provider.ParseSelect(texts[i])->Dump(), first[static_cast<std::size_t>(i)]);
  }
}

// The first-token sets against the parser: a text starting with a token of a kind in
// the set parses, and every kind in the set has such a text. A kind missing from a set
// would make valid texts fail; a kind too many would show up here without a sample.
std::string ValueSample(std::int32_t kind) {
  static const std::map<std::int32_t, std::string> samples = {
      {tkInteger, "1"},
      {tkDecimal, "1.5"},
      {tkEscape, "{d '2020-01-01'}"},
      {tkIdentifier, "a"},
      {tkQuotedIdentifier, "\"a b\""},
      {tkHex, "0x1F"},
      {tkString, "'s'"},
      {tkLParen, "(1)"},
      {tkKwNull, "null"},
      {tkPlus, "+1"},
      {tkMinus, "-1"},
      {tkTilde, "~1"},
      {tkDot, ".a"},
      {tkKwCase, "case when 1 = 1 then 1 end"},
      {tkKwCast, "cast(1 as int)"},
      {tkKwCount, "count(*)"},
      {tkKwAvg, "avg(1)"},
      {tkKwMax, "max(1)"},
      {tkKwMin, "min(1)"},
      {tkKwSum, "sum(1)"}};
  if (auto at = samples.find(kind); at != samples.end())
    return at->second;
  if (kind >= tkKwCurrentTimestamp && kind <= tkKwSystemUser)
    return "current_user";
  if (kind >= kFirstNonReservedKeyword && kind <= kLastNonReservedKeyword)
    return "ada";
  return "";
}

TEST(FirstSets, MatchWhatTheParserAccepts) {
  namespace f = qorvex::sql92first;
  TastSQL92SyntaxProvider provider;
  std::int32_t kind = 0;
  // The set has the kind exactly when there is a sample, and the sample parses.
  auto check = [&](const TqxTokenSet& set, Entry entry, const std::string& sample,
                   const std::string& prefix = "") {
    EXPECT_EQ(set.Has(kind), !sample.empty()) << prefix << sample;
    if (sample.empty())
      return;
    try {
      Parse(provider, entry, prefix + sample);
    } catch (const EqxSQLError&) {
      ADD_FAILURE() << prefix << sample;
    }
  };
  const std::map<std::int32_t, std::string> logicalSamples = {
      {tkKwIs, "is null"},    {tkKwNot, "not like 'x'"},
      {tkKwLike, "like 'x'"}, {tkKwBetween, "between 1 and 2"},
      {tkKwIn, "in (1)"},     {tkKwExists, "exists (select 1)"}};
  for (; kind < TqxTokenSet::kSize; ++kind) {
    SCOPED_TRACE(kind);
    const std::string value = ValueSample(kind);
    check(f::kExpression, Entry::kExpression, value);
    std::string logical = value.empty() ? "" : value + " = 1";
    if (f::kComparisonOperator.Has(kind))
      logical = "= 1";
    else if (logicalSamples.count(kind) != 0)
      logical = logicalSamples.at(kind);
    check(f::kExpressionLogical, Entry::kLogical, logical);
    check(f::kSelectItem, Entry::kItem, kind == tkStar ? "*" : value);

    std::string source = kind == tkLParen ? "(t)" : kind == tkDot ? ".t" : "";
    if (kind == tkIdentifier || kind == tkQuotedIdentifier)
      source = kind == tkIdentifier ? "t" : "[t]";
    else if (f::kNamePart.Has(kind))
      source = "ada";
    check(f::kTableSource, Entry::kSelect, source, "select * from ");

    if (f::kSQLTypeBuiltIn.Has(kind)) {
      std::string word;
      for (const TqxKeyword& k : SQL92Scanner::Keywords()) {
        if (k.kind == kind)
          word = std::string(k.word);
      }
      if (kind == tkKwDouble)
        word += " precision";
      check(f::kSQLTypeBuiltIn, Entry::kExpression, word + ")", "cast(1 as ");
    }
  }
}

}  // namespace
}  // namespace qorvex::parsertest
