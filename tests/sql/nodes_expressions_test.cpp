#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

template <class T>
std::unique_ptr<T> Aggregate(const char* AggregateName) {
  auto node = NewNode<T>(P());
  node->Name = AggregateName;
  return node;
}

template <class Compare>
std::unique_ptr<Compare> Quantified(const char* Operator, std::uint8_t Q) {
  auto postfix = WithInner<TSQLExpressionOperatorPostfix>(Col({"a"}));
  postfix->SetOperator(Op(Operator));
  auto node = WithInner<Compare>(std::move(postfix));
  node->Quantifier = Q;
  return node;
}

template <class T>
std::unique_ptr<T> WithNot(Expr Inner) {
  auto node = WithInner<T>(std::move(Inner));
  node->Not = true;
  return node;
}

// Hand-built nodes cover the classes and field values the parser never produces; parsed
// texts cover the multi-line and HTML forms of the others.
const TextCase kExpressions[] = {
    {"function without argument list", [] { return Function("now"); }, "now()", nullptr,
     "<i>now</i><font color=#7f7fff>(</font><font color=#7f7fff>)</font>"},
    {"named argument written tight",
     [] {
       auto param = NewNode<TSQLFunctionParamNamedExpression>(P());
       param->Name = "p";
       param->SetExpression(Col({"a"}));
       return param;
     },
     "p=a", nullptr, nullptr},
    {"function expression", [] { return Ex("coalesce(a, b)"); }, "coalesce(a, b)", nullptr,
     nullptr},
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
    {"parameterless function", [] { return Ex("current_user"); }, "current_user", nullptr,
     "<i>current_user</i>"},
    {"scalar sub-query", [] { return Ex("(select a from t)"); }, "(SELECT a FROM t)",
     "(SELECT a\r\nFROM t)",
     "<font color=#7f7fff>(</font><b>select</b> <i>a</i> <b>from</b> <i>t</i><font "
     "color=#7f7fff>)</font>"},
    {"simple CASE", [] { return Ex("case a when 1 then 'x' when 2 then 'y' else 'z' end"); },
     "CASE a WHEN 1 THEN 'x' WHEN 2 THEN 'y' ELSE 'z' END", nullptr, nullptr},
    {"CASE item with missing parts keeps its keywords",
     [] { return NewNode<TSQLCaseFunctionItem>(P()); }, "WHEN THEN ", nullptr,
     "<b>when</b> <b>then</b> "},
    {"star aggregate", [] { return Ex("count(*)"); }, "count(*)", nullptr,
     "<i>count</i><font color=#7f7fff>(*)</font>"},
    {"one-argument aggregate",
     [] {
       auto node = Aggregate<TSQLExpressionAggregate1Param>("Max");
       node->SetArgument(Col({"a"}));
       return node;
     },
     "Max(a)", nullptr, nullptr},
    {"aggregate with DISTINCT", [] { return Ex("count(distinct a)"); }, "count(DISTINCT a)",
     nullptr,
     "<i>count</i><font color=#7f7fff>(</font><b>distinct</b> <i>a</i><font "
     "color=#7f7fff>)</font>"},
    {"aggregate with an argument list",
     [] {
       auto node = Aggregate<TSQLExpressionAggregateWParams>("corr");
       node->SetParams(
           static_cast<TSQLExpressionFunction&>(*Ex("f(a, b)")).GetFunction()->ExtractParams());
       return node;
     },
     "corr(a, b)", nullptr, nullptr},
    {"plain inner expression", [] { return WithInner<TSQLExpressionExpressionItem>(Col({"a"})); },
     "a", nullptr, nullptr},
    {"brackets", [] { return Ex("(a)"); }, "(a)", nullptr,
     "<font color=#7f7fff>(</font><i>a</i><font color=#7f7fff>)</font>"},
    {"field selection",
     [] {
       auto node = WithInner<TSQLExpressionFieldSelection>(Col({"a"}));
       node->FieldName = "x y";
       return node;
     },
     "a.\"x y\"", nullptr, nullptr},
    {"binary operator written tight", [] { return Ex("a + b"); }, "a+b", nullptr,
     "<i>a</i><font color=#7f7fff>+</font><i>b</i>"},
    {"CAST", [] { return Ex("cast(a as integer)"); }, "Cast(a As integer )", nullptr,
     "<b>cast</b><font color=#7f7fff>(</font><i>a</i> <b>as</b> <b>integer</b> <font "
     "color=#7f7fff>)</font>"},
    {"IS NOT", [] { return WithNot<TSQLExpressionIs>(Col({"a"})); }, "a IS NOT", nullptr, nullptr},
    {"IS NULL", [] { return Cond("a is null"); }, "a IS NULL", nullptr,
     "<i>a</i> <b>is</b> <b>null</b>"},
    {"IN", [] { return WithInner<TSQLExpressionIn>(Col({"a"})); }, "a IN", nullptr, nullptr},
    {"IN a sub-query", [] { return Cond("a in (select b from t)"); }, "a IN (SELECT b FROM t)",
     "a IN (SELECT b\r\nFROM t)", nullptr},
    {"NOT LIKE with ESCAPE and the default keyword",
     [] {
       auto node = WithNot<TSQLExpressionLikeTemplate>(Col({"a"}));
       node->SetPattern(Const("'x%'"));
       node->SetEscape(Const("'!'"));
       return node;
     },
     "a Not LIKE 'x%' Escape '!'", nullptr, nullptr},
    {"LIKE keyword as parsed", [] { return Cond("a like b"); }, "a like b", nullptr,
     "<i>a</i> <b>like</b> <i>b</i>"},
    {"quantified comparison",
     [] { return Quantified<TSQLExpressionCompWithSet>(">", TSQLExpressionCompWithSet::cqSome); },
     "a>Some", nullptr, nullptr},
    {"quantified comparison with a sub-query", [] { return Cond("a >= all (select b from t)"); },
     "a>=All(SELECT b FROM t)", "a>=All(SELECT b\r\nFROM t)", nullptr},
    {"quantified comparison with a set expression",
     [] {
       auto node =
           Quantified<TSQLExpressionCompWithSetExpression>("=", TSQLExpressionCompWithSet::cqAny);
       node->SetSetExpression(Col({"b"}));
       return node;
     },
     "a=Any(b)", nullptr,
     "<i>a</i><font color=#7f7fff>=</font><b>any</b><font color=#7f7fff>(</font><i>b</i><font "
     "color=#7f7fff>)</font>"},
    {"EXISTS", [] { return Cond("exists (select * from t)"); }, "Exists(SELECT * FROM t)",
     "Exists(SELECT *\r\nFROM t)",
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

// The parser's trees are written by the parser tests; the classes it never creates must
// be written here.
TEST(ExpressionText, EveryClassTheParserNeverCreatesIsWrittenByTheTable) {
  std::set<std::string> seen;
  for (const TextCase& c : kExpressions) {
    std::unique_ptr<TastNode> node = c.make();
    std::vector<TastExtender*> nodes;
    CollectNodes(*node, nodes);
    for (TastExtender* n : nodes)
      seen.insert(std::string(n->ClassType().ClassName()));
  }
  for (const char* name :
       {"FunctionParamNamedExpression", "ExpressionVariable", "ExpressionAggregate1Param",
        "ExpressionAggregateWParams", "ExpressionExpressionItem", "ExpressionIs", "ExpressionIn",
        "ExpressionCompWithSet", "ExpressionCompWithSetExpression", "ExpressionFieldSelection",
        "ExpressionOverlaps", "ExpressionItemsList", "CaseFunctionItem", "ExpressionFunction"})
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

}  // namespace
}  // namespace qorvex
