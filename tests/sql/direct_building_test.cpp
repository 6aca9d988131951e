// The direct building of SELECT statements: where it settles a text, its tree is the one
// the two passes (way calculation, then replay) make, node for node; it settles exactly
// the texts the direct reading settles, and leaves the others to the two passes.
#include <gtest/gtest.h>

#include "parser_test_util.h"

namespace qorvex::parsertest {
namespace {

// The tree of the two passes, without the direct building.
std::string TwoPassTree(const std::string& text) {
  TastSQL92SyntaxProvider provider;
  SQL92Scanner scanner;
  scanner.Init(text);
  SQL92Parser parser(&scanner, &provider);
  TqxWayList ways{parser.NewWayPoint(nullptr)};
  parser.ParseSelectWayCalc(ways);
  parser.Expect(ways, tkEof);
  if (ways.empty())
    return "no reading";
  parser.UnrollWay(ways.front());
  parser.GetWayNode();
  return parser.ParseSelect()->Dump();
}

// The tree of the direct building; "not settled" where it gives up.
std::string DirectTree(const std::string& text) {
  TastSQL92SyntaxProvider provider;
  SQL92Scanner scanner;
  scanner.Init(text);
  SQL92Parser parser(&scanner, &provider);
  auto tree = parser.ParseSelectDirect();
  return tree ? tree->Dump() : "not settled";
}

TEST(DirectBuilding, MakesTheTreeOfTheTwoPassesWhereverTheReadingSettles) {
  std::vector<std::string> texts = SplitStatements(ReadCorpus("accepted.sql"));
  for (const std::string& sql : SplitStatements(ReadCorpus("tpch.sql")))
    texts.push_back(sql);
  int settled = 0;
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    bool read = false;
    CalculateWays(text, Entry::kSelect, false, &read);
    const std::string direct = DirectTree(text);
    EXPECT_EQ(direct != "not settled", read);
    if (direct != "not settled") {
      EXPECT_EQ(direct, TwoPassTree(text));
      ++settled;
    }
  }
  // Most statements of the corpus are ordinary ones.
  EXPECT_GT(settled, static_cast<int>(texts.size()) * 3 / 4);
}

TEST(DirectBuilding, SettlesTheDirectRowsOfTheReadingCorpus) {
  for (const std::vector<std::string>& row : ReadRows("rt_direct_reading.txt")) {
    if (row.at(0) != "select")
      continue;
    SCOPED_TRACE(row.at(2));
    const std::string direct = DirectTree(row[2]);
    EXPECT_EQ(direct != "not settled", row[1] == "direct");
    if (row[1] == "direct")
      EXPECT_EQ(direct, TwoPassTree(row[2]));
  }
}

// A text the building gives up on halfway frees what it made and is read by the two
// passes, in the same parser.
TEST(DirectBuilding, GivesUpCleanlyAndTheTwoPassesTakeOver) {
  TastSQL92SyntaxProvider provider;
  for (const char* text :
       {"select a, b from t join u join v on v.x = u.x on u.y = t.y",
        "select * from db..t where a = (select max(b) from [x][y])", "select a from t where"}) {
    SCOPED_TRACE(text);
    SQL92Scanner scanner;
    scanner.Init(text);
    SQL92Parser parser(&scanner, &provider);
    EXPECT_EQ(parser.ParseSelectDirect(), nullptr);
    TqxWayList ways{parser.NewWayPoint(nullptr)};
    parser.ParseSelectWayCalc(ways);
    parser.Expect(ways, tkEof);
    if (std::string(text).ends_with("where")) {
      EXPECT_TRUE(ways.empty());
      EXPECT_THROW(provider.ParseSelect(text), EqxSQLError);
      continue;
    }
    ASSERT_EQ(ways.size(), 1u);
    parser.UnrollWay(ways.front());
    parser.GetWayNode();
    EXPECT_EQ(parser.ParseSelect()->Dump(), TwoPassTree(text));
    EXPECT_EQ(provider.ParseSelect(text)->Dump(), TwoPassTree(text));
  }
}

}  // namespace
}  // namespace qorvex::parsertest
