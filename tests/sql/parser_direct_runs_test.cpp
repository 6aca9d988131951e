// A direct reading from the root is kept as a list of decisions; from a point below the
// root it is made into way points under that point. Both must replay the same way, and
// a kept list must survive a later reading elsewhere in the same parser.
#include <gtest/gtest.h>

#include "parser_test_util.h"

namespace qorvex {
namespace {

using parsertest::Decisions;
using parsertest::Write;

TEST(ParserDirectRuns, ReadingsFromTheRootAndFromBelowItReplayTheSameWay) {
  TastSQL92SyntaxProvider provider;
  for (const char* text :
       {"select c.id, count(*) n from customers c join orders o on o.cid = c.id where "
        "c.city in ('a', 'b') group by c.id order by n desc",
        "select *"}) {
    SQL92Scanner scanner;
    scanner.Init(text);
    SQL92Parser parser(&scanner, &provider);

    TqxWayList fromRoot{parser.NewWayPoint(nullptr)};
    parser.ParseSelectWayCalc(fromRoot);
    parser.Expect(fromRoot, tkEof);
    ASSERT_EQ(fromRoot.size(), 1u) << text;
    parser.UnrollWay(fromRoot.front());
    const std::vector<std::int32_t> expected = Decisions(parser);
    ASSERT_GT(expected.size(), 1u);

    TqxWayPoint* root = parser.NewWayPoint(nullptr);
    TqxWayList below{parser.NewWayPoint(root, 7)};
    parser.ParseSelectWayCalc(below);
    parser.Expect(below, tkEof);
    ASSERT_EQ(below.size(), 1u) << text;
    parser.UnrollWay(below.front());
    std::vector<std::int32_t> shifted{0, 7};
    shifted.insert(shifted.end(), expected.begin() + 1, expected.end());
    EXPECT_EQ(Decisions(parser), shifted) << text;
    EXPECT_EQ(parser.GetWayNode(), root);
    EXPECT_EQ(parser.GetWayNode()->decision, 7);
    EXPECT_EQ(Write(*parser.ParseSelect(), false), Write(*provider.ParseSelect(text), false));

    parser.UnrollWay(fromRoot.front());
    EXPECT_EQ(Decisions(parser), expected) << text;
    EXPECT_EQ(parser.GetWayNode(), parser.GetWay().front());
    EXPECT_EQ(Write(*parser.ParseSelect(), false), Write(*provider.ParseSelect(text), false));
    EXPECT_THROW(parser.GetWayNode(), EqxError);
  }
}

}  // namespace
}  // namespace qorvex
