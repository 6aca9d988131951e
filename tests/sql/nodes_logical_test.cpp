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

const SimplifyCase kSimplify[] = {
    {"double negation through brackets",
     [] { return Not(Brackets(Not(Brackets(Cmp("a", "=", "1"))))); }, "a=1",
     "TSQLExpressionOperatorBinary"},
    {"three NOTs leave one", [] { return Not(Not(Not(Cmp("a", "=", "1")))); }, "Not a=1",
     "TSQLExpressionNot"},
    {"De Morgan on AND",
     [] { return Not(Brackets(And(Items(Cmp("a", "=", "1"), Cmp("b", "=", "2"))))); },
     "Not a=1 Or Not b=2", "TSQLExpressionOr"},
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
    {"AND in OR stays nested without brackets",
     [] {
       return Or(Items(And(Items(Cmp("a", "=", "1"), Cmp("b", "=", "2"))), Cmp("c", "=", "3")));
     },
     "a=1 And b=2 Or c=3", "TSQLExpressionOr"},
    {"bracketed AND inside AND is kept",
     [] {
       return And(
           Items(Brackets(And(Items(Cmp("a", "=", "1"), Cmp("b", "=", "2")))), Cmp("c", "=", "3")));
     },
     "(a=1 And b=2) And c=3", nullptr},
    {"negated OR inside AND is spliced in",
     [] {
       return And(Items(Cmp("a", "=", "1"),
                        Not(Brackets(Or(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3")))))));
     },
     "a=1 And Not b=2 And Not c=3", "TSQLExpressionAnd"},
    {"negated AND inside AND gets brackets",
     [] {
       return And(Items(Cmp("a", "=", "1"),
                        Not(Brackets(And(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3")))))));
     },
     "a=1 And (Not b=2 Or Not c=3)", "TSQLExpressionAnd"},
    {"an operand that is a collection is negated in brackets",
     [] {
       return Not(Brackets(
           Or(Items(Cmp("a", "=", "1"), And(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3")))))));
     },
     "Not a=1 And (Not b=2 Or Not c=3)", "TSQLExpressionAnd"},
    {"empty AND", [] { return And({}); }, nullptr, nullptr},
    {"AND of empty collections", [] { return And(Items(And({}), Or({}))); }, nullptr, nullptr},
    {"empty collections are dropped from a list",
     [] { return Or(Items(And({}), Cmp("a", "=", "1"))); }, "a=1", "TSQLExpressionOr"},
    {"NOT of a comparison is kept", [] { return Not(Cmp("a", "=", "1")); }, "Not a=1",
     "TSQLExpressionNot"},
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
  if (c.resultClass != nullptr)
    EXPECT_EQ(result->ClassType().ClassName(), c.resultClass);
  if (c.items >= 0)
    EXPECT_EQ(static_cast<TSQLExpressionItemsList&>(*result).Count(), c.items);
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

TEST(LogicalOperations, IsLogical) {
  struct {
    Expr node;
    bool logical;
  } cases[] = {
      {Col({"a"}), false},
      {Cmp("a", "=", "1"), false},
      {Brackets(Cmp("a", "=", "1")), false},
      {NewNode<TSQLExpressionIsNull>(P()), true},
      {NewNode<TSQLExpressionInSet>(P()), true},
      {NewNode<TSQLExpressionLikeTemplate>(P()), true},
      {NewNode<TSQLExpressionBetween>(P()), false},
      {Not(Col({"a"})), true},
      {NewNode<TSQLExpressionExists>(P()), true},
      {NewNode<TSQLExpressionOverlaps>(P()), true},
      {And({}), true},
      {Or({}), true},
      {NewNode<TSQLExpressionItemsList>(P()), false},
  };
  for (auto& c : cases)
    EXPECT_EQ(c.node->IsLogical(), c.logical) << c.node->ClassType().ClassName();
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
  Expr condition = Not(Brackets(Or(Items(Cmp("b", "<", "2"), Cmp("a", ">", "1")))));
  EXPECT_EQ(condition->FindExpressionItem(expr, created), condition.get());
  EXPECT_EQ(created, nullptr);
  EXPECT_EQ(expr->GetSimpleSQL(), "b");

  // Anything else stands for "node=True", with a copy of the node as its left side.
  auto exists = NewNode<TSQLExpressionExists>(P());
  exists->SetSubQuery(Stmt(Block(List(SelectExpr(Const("1"))))));
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
  Expr condition =
      Or(Items(Cmp("a", ">", "1"), Brackets(And(Items(Cmp("A", "<", "5"), Cmp("b", "=", "2")))),
               Not(Cmp("a", "=", "3"))));
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
  auto col = [](TSQLFromSource* Source, const char* Name) {
    Expr column = Col({Name});
    static_cast<TSQLExpressionColumn&>(*column).GetColumn()->SetFromSource(Source);
    return column;
  };
  auto aggregate = [](Expr Arg) {
    auto node = NewNode<TSQLExpressionAggregate1Param>(P());
    node->SetArgument(std::move(Arg));
    return node;
  };
  auto function = [](std::vector<Expr> Args) {
    auto node = NewNode<TSQLExpressionFunction>(P());
    node->SetFunction(Function("f", std::move(Args)));
    return node;
  };
  auto caseOf = [](Expr Operand, Expr When, Expr Then) {
    auto node = NewNode<TSQLExpressionCaseFunction>(P());
    node->SetOperand(std::move(Operand));
    auto item = NewNode<TSQLCaseFunctionItem>(P());
    item->SetWhen(std::move(When));
    item->SetThen(std::move(Then));
    node->AddItem(std::move(item));
    return node;
  };
  struct {
    const char* what;
    Expr node;
    bool only;
  } cases[] = {
      {"column of the source", col(s1.get(), "a"), true},
      {"column of another source", col(s2.get(), "a"), false},
      {"unbound column", Col({"a"}), false},
      {"constant", Const("1"), false},
      {"aggregate", aggregate(col(s1.get(), "a")), true},
      {"function of both sources", function(Items(col(s1.get(), "a"), col(s2.get(), "b"))), false},
      {"function of one source", function(Items(col(s1.get(), "a"), col(s1.get(), "b"))), true},
      {"function without arguments", function({}), false},
      {"CASE of one source", caseOf(col(s1.get(), "a"), col(s1.get(), "b"), col(s1.get(), "c")),
       true},
      {"CASE with a constant", caseOf(col(s1.get(), "a"), Const("1"), col(s1.get(), "c")), false},
      {"sum of two columns", Bin(col(s1.get(), "a"), "+", col(s1.get(), "b")), true},
      {"column plus constant", Bin(col(s1.get(), "a"), "+", Const("1")), false},
      {"list", And(Items(col(s1.get(), "a"), Brackets(col(s1.get(), "b")))), true},
      {"empty list", And({}), false},
  };
  for (auto& c : cases)
    EXPECT_EQ(c.node->ContainsOnlyItemsWithFromSource(s1.get()), c.only) << c.what;
}

}  // namespace
}  // namespace qorvex
