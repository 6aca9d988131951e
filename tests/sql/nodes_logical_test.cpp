#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

// ---------------------------------------------------------------------------------------
// SimplifyLogicalExpression

struct SimplifyCase {
  const char* what;
  std::function<Expr()> make;
  const char* result;       // one-line text; null when the result is none
  const char* resultClass;  // class of the new root; null: not checked
  int items = -1;           // items of the resulting collection; -1: not checked
};

void PrintTo(const SimplifyCase& Case, std::ostream* Out) {
  *Out << Case.what;
}

// Parsed conditions, and by hand the shapes the parser never makes (a collection directly
// inside a NOT or another collection, empty collections).
const SimplifyCase kSimplify[] = {
    {"double negation through brackets", [] { return Cond("not (not (a = 1))"); }, "a=1",
     "TSQLExpressionOperatorBinary"},
    {"three NOTs leave one", [] { return Cond("not not not a = 1"); }, "Not a=1",
     "TSQLExpressionNot"},
    {"De Morgan on AND", [] { return Cond("not (a = 1 and b = 2)"); }, "Not a=1 Or Not b=2",
     "TSQLExpressionOr"},
    {"De Morgan on OR", [] { return Not(Or(Items(Cmp("a", "=", "1"), Cmp("b", "=", "2")))); },
     "Not a=1 And Not b=2", "TSQLExpressionAnd"},
    {"nested ANDs flatten into one",
     [] {
       return And(
           Items(And(Items(Cmp("a", "=", "1"), And(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3"))))),
                 Cmp("d", "=", "4")));
     },
     "a=1 And b=2 And c=3 And d=4", "TSQLExpressionAnd", 4},
    {"OR in AND stays nested, bracketed",
     [] {
       return And(Items(Cmp("a", "=", "1"), Or(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3")))));
     },
     "a=1 And (b=2 Or c=3)", "TSQLExpressionAnd"},
    {"AND in OR stays nested without brackets", [] { return Cond("a = 1 and b = 2 or c = 3"); },
     "a=1 And b=2 Or c=3", "TSQLExpressionOr"},
    {"bracketed AND inside AND is kept", [] { return Cond("(a = 1 and b = 2) and c = 3"); },
     "(a=1 And b=2) And c=3", nullptr},
    {"negated OR inside AND is spliced in", [] { return Cond("a = 1 and not (b = 2 or c = 3)"); },
     "a=1 And Not b=2 And Not c=3", "TSQLExpressionAnd"},
    {"negated AND inside AND gets brackets", [] { return Cond("a = 1 and not (b = 2 and c = 3)"); },
     "a=1 And (Not b=2 Or Not c=3)", "TSQLExpressionAnd"},
    {"an operand that is a collection is negated in brackets",
     [] { return Cond("not (a = 1 or b = 2 and c = 3)"); }, "Not a=1 And (Not b=2 Or Not c=3)",
     "TSQLExpressionAnd"},
    {"empty AND", [] { return And({}); }, nullptr, nullptr},
    {"AND of empty collections", [] { return And(Items(And({}), Or({}))); }, nullptr, nullptr},
    {"empty collections are dropped from a list",
     [] { return Or(Items(And({}), Cmp("a", "=", "1"))); }, "a=1", "TSQLExpressionOr"},
};

class Simplify : public testing::TestWithParam<SimplifyCase> {};

TEST_P(Simplify, Result) {
  const SimplifyCase& c = GetParam();
  Expr result = SimplifyLogicalExpression(c.make());
  if (c.result == nullptr) {
    EXPECT_EQ(result, nullptr);
    return;
  }
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->GetSimpleSQL(), c.result);
  if (c.resultClass != nullptr) {
    EXPECT_EQ(result->ClassType().ClassName(), c.resultClass);
  }
  if (c.items >= 0) {
    EXPECT_EQ(static_cast<TSQLExpressionItemsList&>(*result).Count(), c.items);
  }
}

INSTANTIATE_TEST_SUITE_P(Nodes, Simplify, testing::ValuesIn(kSimplify),
                         [](const auto& Info) { return "case" + std::to_string(Info.index); });

TEST(SimplifyLogical, UnchangedRootsAreTheSameNode) {
  Expr comparison = Cmp("a", "=", "1");
  TSQLExpressionItem* node = comparison.get();
  EXPECT_EQ(SimplifyLogicalExpression(std::move(comparison)).get(), node);

  Expr bracketed = Brackets(And(Items(Cmp("a", "=", "1"), And(Items(Cmp("b", "=", "2"))))));
  node = bracketed.get();
  Expr result = PrepareLogicalExpressionForLoading(std::move(bracketed));
  EXPECT_EQ(result.get(), node);
  EXPECT_EQ(result->GetSimpleSQL(), "(a=1 And b=2)");

  EXPECT_EQ(SimplifyLogicalExpression(nullptr), nullptr);
}

TEST(SimplifyLogical, DeMorganKeepsTheCollectionsSettings) {
  Expr collection = And(Items(Cmp("a", "=", "1"), Cmp("b", "=", "2")));
  collection->SetExtenderData(7);
  Expr result = SimplifyLogicalExpression(Not(std::move(collection)));
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->GetExtenderData(), 7u);
  EXPECT_EQ(result->GetSyntaxProvider(), P());
}

// ---------------------------------------------------------------------------------------
// Expression comparison and the grid's operations

TEST(LogicalOperations, ExpressionsEqual) {
  struct {
    Expr a, b;
    bool equal;
  } cases[] = {
      {nullptr, nullptr, true},
      {Col({"a"}), nullptr, false},
      {nullptr, Col({"a"}), false},
      {Col({"T", "id"}), Col({"t", "ID"}), true},
      {Bin(Col({"a"}), "+", Col({"b"})), Bin(Col({"A"}), "+", Col({"B"})), true},
      {Cmp("a", "=", "1"), Cmp("a", "=", "2"), false},
      {Col({"a"}), Brackets(Col({"a"})), false},
  };
  for (auto& c : cases)
    EXPECT_EQ(IsExpressionsEqual(c.a.get(), c.b.get()), c.equal);
}

TEST(LogicalOperations, FindExpressionItem) {
  // A comparison is its own condition; its left side is the expression.
  Expr comparison = Cmp("a", ">", "1");
  TSQLExpressionItem* expr = nullptr;
  Expr created;
  EXPECT_EQ(comparison->FindExpressionItem(expr, created), comparison.get());
  EXPECT_EQ(created, nullptr);
  EXPECT_EQ(expr, static_cast<TSQLExpressionOperation&>(*comparison).GetInner());

  // NOT, brackets and collections are the condition of their first operand's expression.
  Expr condition = Cond("not (b < 2 or a > 1)");
  EXPECT_EQ(condition->FindExpressionItem(expr, created), condition.get());
  EXPECT_EQ(created, nullptr);
  EXPECT_EQ(expr->GetSimpleSQL(), "b");

  // Anything else stands for "node=True", with a copy of the node as its left side.
  Expr exists = Cond("exists (select 1)");
  TSQLExpressionItem* found = exists->FindExpressionItem(expr, created);
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(found, created.get());
  EXPECT_EQ(created->GetSimpleSQL(), "Exists(SELECT 1)=True");
  EXPECT_NE(expr, exists.get());
  EXPECT_EQ(expr, static_cast<TSQLExpressionOperation&>(*created).GetInner());

  // A NOT over such a node is compared as a whole.
  Expr negated = Not(Col({"flag"}));
  created.reset();
  negated->FindExpressionItem(expr, created);
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(created->GetSimpleSQL(), "Not flag=True");
  EXPECT_EQ(expr->GetSimpleSQL(), "Not flag");
}

TEST(LogicalOperations, RemoveAndRestoreTheLeftExpression) {
  Expr condition = Cond("a > 1 or (A < 5 and b = 2) or not a = 3");
  // Expr points into the condition itself: removal must not depend on it staying alive.
  TSQLExpressionItem* expr = nullptr;
  Expr created;
  condition->FindExpressionItem(expr, created);
  ASSERT_EQ(created, nullptr);
  condition->RemoveLExpression(expr);
  EXPECT_EQ(condition->GetSimpleSQL(), ">1 Or (<5 And b=2) Or Not =3");
  Expr a = Col({"a"});
  condition->RestoreLExpression(a.get());
  EXPECT_EQ(condition->GetSimpleSQL(), "a>1 Or (a<5 And b=2) Or Not a=3");
  // Restoring leaves present operands alone.
  condition->RestoreLExpression(Col({"z"}).get());
  EXPECT_EQ(condition->GetSimpleSQL(), "a>1 Or (a<5 And b=2) Or Not a=3");
}

TEST(LogicalOperations, ContainsOnlyItemsWithFromSource) {
  auto s1 = Table({"t1"});
  auto s2 = Table({"t2"});
  // Columns qualified t1 or t2 are bound to those sources.
  auto bound = [&](Expr Node) {
    std::vector<TastExtender*> nodes;
    CollectNodes(*Node, nodes);
    for (TastExtender* node : nodes) {
      if (auto* column = dynamic_cast<TSQLObjectColumn*>(node); column && column->Count() > 1)
        column->SetFromSource(column->GetPrefix(0) == "t1" ? s1.get() : s2.get());
    }
    return Node;
  };
  struct {
    const char* what;
    Expr node;
    bool only;
  } cases[] = {
      {"column of the source", Ex("t1.a"), true},
      {"column of another source", Ex("t2.a"), false},
      {"unbound column", Ex("a"), false},
      {"constant", Ex("1"), false},
      {"aggregate", Ex("max(t1.a)"), true},
      {"function of both sources", Ex("f(t1.a, t2.b)"), false},
      {"function of one source", Ex("f(t1.a, t1.b)"), true},
      {"function without arguments", Ex("f()"), false},
      {"CASE of one source", Ex("case t1.a when t1.b then t1.c end"), true},
      {"CASE with a constant", Ex("case t1.a when 1 then t1.c end"), false},
      {"sum of two columns", Ex("t1.a + t1.b"), true},
      {"column plus constant", Ex("t1.a + 1"), false},
      {"list", Cond("t1.a = t1.b and (t1.c = t1.d)"), true},
      {"empty list", And({}), false},
  };
  for (auto& c : cases)
    EXPECT_EQ(bound(std::move(c.node))->ContainsOnlyItemsWithFromSource(s1.get()), c.only)
        << c.what;
}

}  // namespace
}  // namespace qorvex
