#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

std::unique_ptr<TSQLSubSelectStatement> SelectFrom(const char* Column, const char* TableName) {
  return Stmt(SelectColumn(Column, TableName));
}

std::unique_ptr<TSQLTypeBuiltIn> Type(Strings Words, int SizeIndex = 0, int Size = -1,
                                      int Scale = -1) {
  auto type = Name<TSQLTypeBuiltIn>(Words);
  type->SizeIndex = SizeIndex;
  type->HasSize = Size >= 0;
  type->Size = Size;
  type->HasScale = Scale >= 0;
  type->Scale = Scale;
  return type;
}

template <class T>
std::unique_ptr<T> Aggregate(const char* AggregateName) {
  auto node = NewNode<T>(P());
  node->Name = AggregateName;
  return node;
}

Expr Postfix(Expr Inner, const char* Operator) {
  auto node = WithInner<TSQLExpressionOperatorPostfix>(std::move(Inner));
  node->SetOperator(Op(Operator));
  return node;
}

std::unique_ptr<TSQLCaseFunctionItem> When(Expr Condition, Expr Result) {
  auto item = NewNode<TSQLCaseFunctionItem>(P());
  item->SetWhen(std::move(Condition));
  item->SetThen(std::move(Result));
  return item;
}

template <class T>
std::unique_ptr<T> WithNot(Expr Inner) {
  auto node = WithInner<T>(std::move(Inner));
  node->Not = true;
  return node;
}

const TextCase kExpressions[] = {
    // Functions and operators
    {"function without argument list", [] { return Function("now", {}, true); }, "now()", nullptr,
     "<i>now</i><font color=#7f7fff>(</font><font color=#7f7fff>)</font>"},
    {"named argument written tight",
     [] {
       auto param = NewNode<TSQLFunctionParamNamedExpression>(P());
       param->Name = "p";
       param->SetExpression(Col({"a"}));
       return param;
     },
     "p=a", nullptr, nullptr},
    {"function expression",
     [] {
       auto node = NewNode<TSQLExpressionFunction>(P());
       node->SetFunction(Function("coalesce", Items(Col({"a"}), Col({"b"}))));
       return node;
     },
     "coalesce(a, b)", nullptr, nullptr},
    // Types
    {"one-word type keeps its trailing space", [] { return Type({"INTEGER"}); }, "INTEGER ",
     nullptr, "<b>integer</b> "},
    {"type with size and scale", [] { return Type({"NUMERIC"}, 0, 10, 2); }, "NUMERIC(10,2)",
     nullptr, nullptr},
    {"size on the second word",
     [] {
       return Type({"CHARACTER", "VARYING"}, 1, 20);
     },
     "CHARACTER VARYING(20)", nullptr, nullptr},
    {"user type",
     [] {
       auto type = NewNode<TSQLTypeUser>(P());
       type->SetName(Name<TSQLQualifiedName>({"s", "money"}));
       return type;
     },
     "s.money", nullptr, nullptr},
    // Leaves
    {"integer constant",
     [] { return NewNode<TSQLExpressionConstant>(P(), TSQLConstantValue(std::int64_t{-42})); },
     "-42", nullptr, nullptr},
    {"variable",
     [] {
       auto node = NewNode<TSQLExpressionVariable>(P());
       node->Text = "@v";
       return node;
     },
     "@v", nullptr, nullptr},
    {"parameterless function",
     [] { return Aggregate<TSQLExpressionParameterlessFunction>("CURRENT_USER"); }, "CURRENT_USER",
     nullptr, "<i>CURRENT_USER</i>"},
    {"scalar sub-query",
     [] {
       auto node = NewNode<TSQLExpressionSelect>(P());
       node->SetSubQuery(SelectFrom("a", "t"));
       return node;
     },
     "(SELECT a FROM t)", "(SELECT a\r\nFROM t)",
     "<font color=#7f7fff>(</font><b>select</b> <i>a</i> <b>from</b> <i>t</i><font "
     "color=#7f7fff>)</font>"},
    // CASE
    {"simple CASE",
     [] {
       auto node = NewNode<TSQLExpressionCaseFunction>(P());
       node->SetOperand(Col({"a"}));
       node->AddItem(When(Const("1"), Const("'x'")));
       node->AddItem(When(Const("2"), Const("'y'")));
       node->SetElse(Const("'z'"));
       return node;
     },
     "CASE a WHEN 1 THEN 'x' WHEN 2 THEN 'y' ELSE 'z' END", nullptr, nullptr},
    {"CASE item with missing parts keeps its keywords",
     [] { return NewNode<TSQLCaseFunctionItem>(P()); }, "WHEN THEN ", nullptr,
     "<b>when</b> <b>then</b> "},
    // Aggregates
    {"star aggregate", [] { return Aggregate<TSQLExpressionAggregate>("Count"); }, "Count(*)",
     nullptr, "<i>Count</i><font color=#7f7fff>(*)</font>"},
    {"one-argument aggregate",
     [] {
       auto node = Aggregate<TSQLExpressionAggregate1Param>("Max");
       node->SetArgument(Col({"a"}));
       return node;
     },
     "Max(a)", nullptr, nullptr},
    {"aggregate with DISTINCT",
     [] {
       auto node = Aggregate<TSQLExpressionAggregate1ParamWPrefix>("Count");
       node->Quantifier = TSQLExpressionAggregate1ParamWPrefix::sqDistinct;
       node->SetArgument(Col({"a"}));
       return node;
     },
     "Count(DISTINCT a)", nullptr,
     "<i>Count</i><font color=#7f7fff>(</font><b>distinct</b> <i>a</i><font "
     "color=#7f7fff>)</font>"},
    {"aggregate with an argument list",
     [] {
       auto node = Aggregate<TSQLExpressionAggregateWParams>("corr");
       node->SetParams(Function("", Items(Col({"a"}), Col({"b"})))->ExtractParams());
       return node;
     },
     "corr(a, b)", nullptr, nullptr},
    // One inner expression
    {"plain inner expression", [] { return WithInner<TSQLExpressionExpressionItem>(Col({"a"})); },
     "a", nullptr, nullptr},
    {"brackets", [] { return Brackets(Col({"a"})); }, "(a)", nullptr,
     "<font color=#7f7fff>(</font><i>a</i><font color=#7f7fff>)</font>"},
    {"field selection",
     [] {
       auto node = WithInner<TSQLExpressionFieldSelection>(Col({"a"}));
       node->FieldName = "x y";
       return node;
     },
     "a.\"x y\"", nullptr, nullptr},
    {"NOT", [] { return Not(Cmp("a", "=", "1")); }, "Not a=1", nullptr, nullptr},
    {"binary operator written tight", [] { return Bin(Col({"a"}), "+", Col({"b"})); }, "a+b",
     nullptr, "<i>a</i><font color=#7f7fff>+</font><i>b</i>"},
    {"prefix operator after a binary one",
     [] {
       auto minus = WithInner<TSQLExpressionOperatorPrefix>(Col({"b"}));
       minus->SetOperator(Op("-"));
       return Bin(Col({"a"}), "*", std::move(minus));
     },
     "a* -b", nullptr, nullptr},
    {"binary operator without its left operand", [] { return Bin(nullptr, ">=", Const("5")); },
     ">=5", nullptr, nullptr},
    {"CAST",
     [] {
       auto node = WithInner<TSQLExpressionCast>(Col({"a"}));
       node->SetType(Type({"INTEGER"}));
       return node;
     },
     "Cast(a As INTEGER )", nullptr,
     "<b>cast</b><font color=#7f7fff>(</font><i>a</i> <b>as</b> <b>integer</b> <font "
     "color=#7f7fff>)</font>"},
    {"IS NOT", [] { return WithNot<TSQLExpressionIs>(Col({"a"})); }, "a IS NOT", nullptr, nullptr},
    {"IS NULL", [] { return WithInner<TSQLExpressionIsNull>(Col({"a"})); }, "a IS NULL", nullptr,
     "<i>a</i> <b>is</b> <b>null</b>"},
    {"IN", [] { return WithInner<TSQLExpressionIn>(Col({"a"})); }, "a IN", nullptr, nullptr},
    {"NOT IN a list",
     [] {
       auto node = WithNot<TSQLExpressionInSet>(Col({"a"}));
       node->SetList(Logical<TSQLExpressionsList>(Items(Const("1"), Const("2"))));
       return node;
     },
     "a NOT IN (1, 2)", nullptr, nullptr},
    {"IN a sub-query",
     [] {
       auto node = WithInner<TSQLExpressionInSubQuery>(Col({"a"}));
       node->SetSubQuery(SelectFrom("b", "t"));
       return node;
     },
     "a IN (SELECT b FROM t)", "a IN (SELECT b\r\nFROM t)", nullptr},
    {"NOT LIKE with ESCAPE",
     [] {
       auto node = WithNot<TSQLExpressionLikeTemplate>(Col({"a"}));
       node->SetPattern(Const("'x%'"));
       node->SetEscape(Const("'!'"));
       return node;
     },
     "a Not LIKE 'x%' Escape '!'", nullptr, nullptr},
    {"LIKE keyword as parsed",
     [] {
       auto node = WithInner<TSQLExpressionLikeTemplate>(Col({"a"}));
       node->Keyword = "like";
       node->SetPattern(Col({"b"}));
       return node;
     },
     "a like b", nullptr, "<i>a</i> <b>like</b> <i>b</i>"},
    {"quantified comparison",
     [] {
       auto node = WithInner<TSQLExpressionCompWithSet>(Postfix(Col({"a"}), ">"));
       node->Quantifier = TSQLExpressionCompWithSet::cqSome;
       return node;
     },
     "a>Some", nullptr, nullptr},
    {"quantified comparison with a sub-query",
     [] {
       auto node = WithInner<TSQLExpressionCompWithSubQuery>(Postfix(Col({"a"}), ">="));
       node->Quantifier = TSQLExpressionCompWithSet::cqAll;
       node->SetSubQuery(SelectFrom("b", "t"));
       return node;
     },
     "a>=All(SELECT b FROM t)", "a>=All(SELECT b\r\nFROM t)", nullptr},
    {"quantified comparison with a set expression",
     [] {
       auto node = WithInner<TSQLExpressionCompWithSetExpression>(Postfix(Col({"a"}), "="));
       node->Quantifier = TSQLExpressionCompWithSet::cqAny;
       node->SetSetExpression(Col({"b"}));
       return node;
     },
     "a=Any(b)", nullptr,
     "<i>a</i><font color=#7f7fff>=</font><b>any</b><font color=#7f7fff>(</font><i>b</i><font "
     "color=#7f7fff>)</font>"},
    {"NOT BETWEEN",
     [] {
       auto node = WithNot<TSQLExpressionBetween>(Col({"a"}));
       node->SetLow(Const("1"));
       node->SetHigh(Const("2"));
       return node;
     },
     "a Not Between 1 And 2", nullptr, nullptr},
    // Other predicates and lists
    {"EXISTS",
     [] {
       auto node = NewNode<TSQLExpressionExists>(P());
       node->SetSubQuery(Stmt(Block(List(Star()), From(Sources(Table({"t"}))))));
       return node;
     },
     "Exists(SELECT * FROM t)", "Exists(SELECT *\r\nFROM t)",
     "<b>exists</b><font color=#7f7fff>(</font><b>select</b> <font color=#7f7fff>*</font> "
     "<b>from</b> <i>t</i><font color=#7f7fff>)</font>"},
    {"OVERLAPS",
     [] {
       auto node = NewNode<TSQLExpressionOverlaps>(P());
       node->SetFirst(Col({"a"}));
       node->SetSecond(Col({"b"}));
       node->SetThird(Col({"c"}));
       node->SetFourth(Col({"d"}));
       return node;
     },
     "(a,b) Overlaps (c,d)", nullptr, nullptr},
    {"expression items list",
     [] { return Logical<TSQLExpressionItemsList>(Items(Col({"a"}), Col({"b"}))); }, "a, b",
     nullptr, nullptr},
    {"OR inside AND gets no brackets of its own",
     [] {
       return And(Items(Cmp("a", "=", "1"), Or(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3")))));
     },
     "a=1 And b=2 Or c=3", nullptr, nullptr},
    {"empty AND writes nothing", [] { return And({}); }, "", nullptr, ""},

};

class ExpressionText : public testing::TestWithParam<TextCase> {};
TEST_P(ExpressionText, WritesExactlyItsText) {
  CheckText(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Nodes, ExpressionText, testing::ValuesIn(kExpressions), CaseName);

TEST(ExpressionText, EveryExpressionClassIsWrittenByTheTable) {
  std::set<std::string> seen;
  for (const TextCase& c : kExpressions) {
    std::unique_ptr<TastNode> node = c.make();
    std::vector<TastExtender*> nodes;
    CollectNodes(*node, nodes);
    for (TastExtender* n : nodes)
      seen.insert(std::string(n->ClassType().ClassName()));
  }
  for (const char* name : {"QualifiedName",
                           "DatabaseObject",
                           "ObjectColumn",
                           "FunctionParamExpression",
                           "FunctionParamNamedExpression",
                           "FunctionParams",
                           "Function",
                           "Operator",
                           "TypeBuiltIn",
                           "TypeUser",
                           "ExpressionConstant",
                           "ExpressionVariable",
                           "ExpressionColumn",
                           "ExpressionParameterlessFunction",
                           "ExpressionFunction",
                           "ExpressionSelect",
                           "ExpressionCaseFunction",
                           "CaseFunctionItem",
                           "ExpressionAggregate",
                           "ExpressionAggregate1Param",
                           "ExpressionAggregate1ParamWPrefix",
                           "ExpressionAggregateWParams",
                           "ExpressionExpressionItem",
                           "ExpressionIs",
                           "ExpressionIsNull",
                           "ExpressionIn",
                           "ExpressionInSet",
                           "ExpressionInSubQuery",
                           "ExpressionLikeTemplate",
                           "ExpressionCast",
                           "ExpressionOperatorPrefix",
                           "ExpressionOperatorPostfix",
                           "ExpressionOperatorBinary",
                           "ExpressionCompWithSet",
                           "ExpressionCompWithSubQuery",
                           "ExpressionCompWithSetExpression",
                           "ExpressionBetween",
                           "ExpressionBrackets",
                           "ExpressionFieldSelection",
                           "ExpressionNot",
                           "ExpressionExists",
                           "ExpressionOverlaps",
                           "ExpressionItemsList",
                           "ExpressionAnd",
                           "ExpressionOr",
                           "ExpressionsList"})
    EXPECT_TRUE(seen.count(std::string("TSQL") + name)) << name;
}

TEST(ExpressionText, ConstantStringForms) {
  EXPECT_EQ(ConstantValueToString(TSQLConstantValue{}), "NULL");
  EXPECT_EQ(ConstantValueToString(true), "True");
  EXPECT_EQ(ConstantValueToString(false), "False");
  EXPECT_EQ(ConstantValueToString(std::int64_t{1} << 40), "1099511627776");
  EXPECT_EQ(ConstantValueToString(0.1), "0.1");
  EXPECT_EQ(ConstantValueToString(1e300), "1e+300");
  EXPECT_EQ(ConstantValueToString(std::string("X'FF'")), "X'FF'");
  // A constant node writes its value's string form; HTML refuses numbers.
  EXPECT_EQ(Plain(*NewNode<TSQLExpressionConstant>(P(), TSQLConstantValue(2.5)), false), "2.5");
  EXPECT_EQ(Plain(*NewNode<TSQLExpressionConstant>(P()), false), "NULL");
  EXPECT_THROW(Html(*Const("1"), false), EqxError);
}

TEST(QualifiedName, PartsAreKeptInnermostFirst) {
  auto name = Name<TSQLQualifiedName>({"a", "b", "c"});
  EXPECT_EQ(name->GetObjName(), "c");
  EXPECT_EQ(name->GetPrefix(0), "b");
  EXPECT_EQ(name->GetNames(2), "a");
  name->AddPrefix("srv");
  name->SetObjName("d");
  EXPECT_EQ(name->GetQualifiedName(), "srv.a.b.d");
  EXPECT_THROW(name->GetNames(4), EqxError);
  EXPECT_THROW(name->GetPrefix(-2), EqxError);
  auto empty = NewNode<TSQLQualifiedName>(P());
  EXPECT_EQ(empty->GetObjName(), "");
  empty->SetObjName("x");
  EXPECT_EQ(empty->GetQualifiedName(), "x");
}

TEST(ExpressionNodes, ListsCheckTheirIndexes) {
  auto list = NewNode<TSQLExpressionAnd>(P());
  list->Add(Col({"a"}));
  EXPECT_THROW(list->GetItems(1), EqxError);
  EXPECT_THROW(list->Insert(2, Col({"b"})), EqxError);
  list->Insert(1, Col({"b"}));
  list->Insert(0, Col({"c"}));
  EXPECT_EQ(Plain(*list, false), "c And a And b");
  std::unique_ptr<TSQLExpressionItem> a = list->Extract(list->GetItems(1));
  EXPECT_EQ(Plain(*a, false), "a");
  EXPECT_EQ(list->Extract(a.get()), nullptr);
  list->Delete(0);
  EXPECT_EQ(Plain(*list, false), "b");
  EXPECT_THROW(list->Delete(3), EqxError);
}

TEST(ExpressionNodes, AssignReplacesTheOwnFields) {
  auto target = NewNode<TSQLExpressionAnd>(P());
  target->Add(Col({"x"}));
  auto source = And(Items(Cmp("a", "=", "1"), Cmp("b", "=", "2")));
  target->Assign(*source);
  EXPECT_EQ(Plain(*target, false), "a=1 And b=2");
  EXPECT_NE(target->GetItems(0), static_cast<TSQLExpressionAnd&>(*source).GetItems(0));
}

TEST(ExpressionNodes, DumpShowsDetailsAndChildrenInOrder) {
  auto between = WithNot<TSQLExpressionBetween>(Col({"a"}));
  between->SetLow(Const("1"));
  between->SetHigh(Const("2"));
  EXPECT_EQ(between->Dump(),
            "TSQLExpressionBetween NOT\n  TSQLExpressionColumn\n    TSQLObjectColumn a\n"
            "  TSQLExpressionConstant 1\n  TSQLExpressionConstant 2\n");
}

}  // namespace
}  // namespace qorvex
