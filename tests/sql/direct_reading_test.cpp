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

// Deep nesting: the direct reading goes down to a few levels above the nesting bound
// (600) and leaves the texts closer to it to the way calculation. Each row nests `open`
// ... `close` from `direct` levels (settled directly) to `beyond` levels (rejected); the
// deepest text settled directly and the next one are compared with the plain
// calculation, which reports the bound wherever any reading reaches it.
TEST(DirectReading, GoesDownToTheNestingBound) {
  const struct {
    Entry entry;
    const char *head, *open, *middle, *close, *tail;
    int direct, beyond;
  } rows[] = {
      {Entry::kLogical, "", "(", "a = 1", ")", "", 590, 600},
      {Entry::kSelect, "select * from t where ", "(", "a + 1", ")", " = 2", 590, 598},
      {Entry::kSelect, "select * from t where ", "not ", "a = 1", "", "", 590, 599},
      {Entry::kSelect, "select ", "- ", "1", "", "", 590, 600},
      {Entry::kSelect, "select * from ", "(", "t", ")", "", 590, 600},
      {Entry::kSelect, "select 1", " + 1", "", "", "", 590, 600},
      // Two or three levels for every repetition.
      {Entry::kSelect, "select ", "(select ", "1", ")", "", 290, 300},
      {Entry::kSelect, "select ", "(1 + ", "1", ")", "", 190, 201},
      {Entry::kSelect, "select ", "1 * (", "1", ")", "", 190, 201},
  };
  TastSQL92SyntaxProvider provider;
  for (const auto& row : rows) {
    auto text = [&](int n) {
      return row.head + Repeat(row.open, n) + row.middle + Repeat(row.close, n) +
             std::string(row.tail);
    };
    SCOPED_TRACE(text(1));
    EXPECT_NO_THROW(Parse(provider, row.entry, text(row.direct)));
    EXPECT_THROW(Parse(provider, row.entry, text(row.beyond)), EqxSQLError);
    int deepest = 0;
    for (int n = row.direct; n <= row.beyond; ++n) {
      bool direct = false;
      CalculateWays(text(n), row.entry, false, &direct);
      if (!direct)
        break;
      deepest = n;
    }
    ASSERT_GE(deepest, row.direct);
    ASSERT_LT(deepest, row.beyond);
    for (const int n : {deepest, deepest + 1}) {
      SCOPED_TRACE(n);
      EXPECT_EQ(CalculateWays(text(n), row.entry, false), CalculateWays(text(n), row.entry, true));
    }
  }
}

}  // namespace
}  // namespace qorvex::parsertest
