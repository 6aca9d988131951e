// The direct reading that runs before the way calculation: where it settles a text it
// chooses the way the plain way calculation chooses, and it settles ordinary statements
// on its own, without a way point off the chosen way.
#include <gtest/gtest.h>

#include "parser_test_util.h"

namespace qorvex::parsertest {
namespace {

bool ReadDirectly(const std::string& text, Entry entry) {
  bool direct = false;
  CalculateWays(text, entry, false, &direct);
  return direct;
}

// Texts from corpus/rt_direct_reading.txt: the direct reading chooses the way the plain
// calculation chooses, and settles the texts marked "direct" on its own.
TEST(DirectReading, ChoosesThePlainWayAndSettlesOrdinaryTexts) {
  const auto rows = ReadRows("rt_direct_reading.txt");
  EXPECT_GE(rows.size(), 19u);
  for (const std::vector<std::string>& row : rows) {
    SCOPED_TRACE(row.at(2));
    const Entry entry = EntryNamed(row[0]);
    bool direct = false;
    EXPECT_EQ(CalculateWays(row[2], entry, false, &direct), CalculateWays(row[2], entry, true));
    EXPECT_EQ(direct, row[1] == "direct");
  }
}

TEST(DirectReading, SettlesEveryTpchQuery) {
  for (const std::string& sql : SplitStatements(ReadCorpus("tpch.sql"))) {
    SCOPED_TRACE(sql);
    EXPECT_TRUE(ReadDirectly(sql, Entry::kSelect));
  }
}

// Deep nesting: the direct reading keeps to half the nesting bound and leaves deeper
// texts to the way calculation, which accepts them up to the bound.
TEST(DirectReading, LeavesDeepNestingToTheWayCalculation) {
  for (const int depth : {250, 400}) {
    const std::string text = std::string(depth, '(') + "a = 1" + std::string(depth, ')');
    SCOPED_TRACE(depth);
    EXPECT_EQ(ReadDirectly(text, Entry::kLogical), depth == 250);
    TastSQL92SyntaxProvider provider;
    EXPECT_NO_THROW(provider.ParseLogicalExpression(text));
  }
}

}  // namespace
}  // namespace qorvex::parsertest
