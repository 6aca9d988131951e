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

struct DirectCase {
  Entry entry;
  const char* text;
  bool direct;  // settled by the direct reading
};

const DirectCase kCases[] = {
    {Entry::kSelect,
     "select c.id, c.name n, count(*) as orders, 'x' = o.a from customers c "
     "left outer join orders o on o.customer_id = c.id where c.country in ('DE', 'FR') "
     "group by c.id, c.name having count(*) > 1 order by 3 desc, c.name",
     true},
    {Entry::kSelect,
     "select a, t.*, case when a > 1 then 'x' else 'y' end, case a when 1 then 2 end, "
     "cast(a as numeric(10, 2)), cast(b as double precision), cast(c as s.mytype), "
     "cast(d as time(3) with time zone), current_user, -+~a, f(a, b), dbo.g() from t",
     true},
    {Entry::kSelect,
     "select * from (select a from t) x (y), s.v w cross join f(1) g where exists "
     "(select 1 from u) and a between 1 and 2 and b not like 'x%' escape '!' and c is not "
     "null and d not in (select e from v union all select e from w) and e = any (select 1)",
     true},
    {Entry::kSelect, "(select a from t) union (select b from u) order by 1", true},
    // Brackets in logical position: a bracketed condition, or the value of a predicate.
    {Entry::kLogical, "(a = 1) and b = 2", true},
    {Entry::kLogical, "(a + b) > c", true},
    {Entry::kLogical, "((a = 1) or (b + 1) * 2 < 3) and not (c) in (1, 2)", true},
    {Entry::kLogical, "((select max(a) from t)) = 1", true},
    {Entry::kExpression, "(a + (b * (c - 1))) / 2", true},
    {Entry::kObject, "db.s.t", true},
    {Entry::kItem, "x = a + 1", true},
    {Entry::kItem, "t.*", true},
    // Left to the way calculation: names with empty or bracketed parts, a join whose right
    // side is a join, a bracket opening both a query and a list, dead ends.
    {Entry::kSelect, "select * from db..t", false},
    {Entry::kSelect, "select [a][b] from t", false},
    {Entry::kSelect, "select * from t1 join t2 join t3 on x = 1 on y = 2", false},
    {Entry::kLogical, "a in ((1), (2))", false},
    {Entry::kLogical, "(a)", false},
    {Entry::kSelect, "select * from t where", false},
    {Entry::kSelect, "select a b c from t", false},
};

TEST(DirectReading, ChoosesThePlainWayAndSettlesOrdinaryTexts) {
  for (const DirectCase& c : kCases) {
    SCOPED_TRACE(c.text);
    bool direct = false;
    EXPECT_EQ(CalculateWays(c.text, c.entry, false, &direct), CalculateWays(c.text, c.entry, true));
    EXPECT_EQ(direct, c.direct);
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
