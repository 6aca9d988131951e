#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

using Maker = std::function<std::unique_ptr<TastNode>()>;

// The text of a hand-built node: one line, multi-line (null: same as one line) and the
// one-line HTML fragment (null for nodes that write numbers or strings, which HTML cannot).
struct TextCase {
  const char* what;
  Maker make;
  const char* one;
  const char* multi;
  const char* html;
};

void PrintTo(const TextCase& Case, std::ostream* Out) {
  *Out << Case.what;
}

std::unique_ptr<TSQLSubSelectStatement> SelectFrom(const char* Column, const char* TableName) {
  return Stmt(Block(List(SelectExpr(Col({Column}))), From(Sources(Table({TableName})))));
}

template <class T>
std::unique_ptr<T> WithInner(Expr Inner) {
  auto node = NewNode<T>(P());
  node->SetInner(std::move(Inner));
  return node;
}

std::unique_ptr<TSQLTypeBuiltIn> Type(std::vector<std::string> Words, int SizeIndex = 0,
                                      int Size = -1, int Scale = -1) {
  auto type = NewNode<TSQLTypeBuiltIn>(P());
  for (auto& word : Words)
    type->AddName(word);
  type->SizeIndex = SizeIndex;
  type->HasSize = Size >= 0;
  type->Size = Size;
  type->HasScale = Scale >= 0;
  type->Scale = Scale;
  return type;
}

std::unique_ptr<TSQLFunctionParams> Params(std::vector<Expr> Args) {
  auto params = NewNode<TSQLFunctionParams>(P());
  for (auto& arg : Args) {
    auto param = NewNode<TSQLFunctionParamExpression>(P());
    param->SetExpression(std::move(arg));
    params->Add(std::move(param));
  }
  return params;
}

std::unique_ptr<TSQLFunction> Function(const char* Name, std::vector<Expr> Args) {
  auto function = NewNode<TSQLFunction>(P());
  function->Name = Name;
  function->SetParams(Params(std::move(Args)));
  return function;
}

Expr Aggregate1(const char* Name, Expr Arg, int Quantifier = -1) {
  if (Quantifier < 0) {
    auto node = NewNode<TSQLExpressionAggregate1Param>(P());
    node->Name = Name;
    node->SetArgument(std::move(Arg));
    return node;
  }
  auto node = NewNode<TSQLExpressionAggregate1ParamWPrefix>(P());
  node->Name = Name;
  node->Quantifier = static_cast<std::uint8_t>(Quantifier);
  node->SetArgument(std::move(Arg));
  return node;
}

Expr In(Expr Inner, bool NotIn, std::vector<Expr> Values) {
  auto node = NewNode<TSQLExpressionInSet>(P());
  node->SetInner(std::move(Inner));
  node->Not = NotIn;
  auto list = NewNode<TSQLExpressionsList>(P());
  for (auto& value : Values)
    list->Add(std::move(value));
  node->SetList(std::move(list));
  return node;
}

Expr Postfix(Expr Inner, const char* Operator) {
  auto node = NewNode<TSQLExpressionOperatorPostfix>(P());
  node->SetInner(std::move(Inner));
  node->SetOperator(Op(Operator));
  return node;
}

std::unique_ptr<TSQLCaseFunctionItem> When(Expr Condition, Expr Result) {
  auto item = NewNode<TSQLCaseFunctionItem>(P());
  item->SetWhen(std::move(Condition));
  item->SetThen(std::move(Result));
  return item;
}

const TextCase kExpressions[] = {
    // Names
    {"qualified name, outermost first",
     [] {
       auto name = NewNode<TSQLQualifiedName>(P());
       name->AddName("db");
       name->AddName("dbo");
       name->AddName("t");
       return name;
     },
     "db.dbo.t", nullptr,
     "<i>db</i><font color=#7f7fff>.</font><i>dbo</i><font color=#7f7fff>.</font><i>t</i>"},
    {"name with a blank is quoted", [] { return DbObj({"my table"}); }, "\"my table\"", nullptr,
     "<i>\"my table\"</i>"},
    {"empty middle part stays empty",
     [] {
       return DbObj({"db", "", "t"});
     },
     "db..t", nullptr, nullptr},
    {"unbound column writes its own name",
     [] {
       return ObjCol({"s", "t", "id"});
     },
     "s.t.id", nullptr, nullptr},
    {"column expression",
     [] {
       return Col({"a", "id"});
     },
     "a.id", nullptr, nullptr},
    // Functions and operators
    {"function call", [] { return Function("f", Items(Col({"a"}), Const("1"))); }, "f(a, 1)",
     nullptr, nullptr},
    {"function without argument list",
     [] {
       auto function = NewNode<TSQLFunction>(P());
       function->Name = "now";
       return function;
     },
     "now()", nullptr, "<i>now</i><font color=#7f7fff>(</font><font color=#7f7fff>)</font>"},
    {"named argument written tight",
     [] {
       auto param = NewNode<TSQLFunctionParamNamedExpression>(P());
       param->Name = "p";
       param->SetExpression(Col({"a"}));
       return param;
     },
     "p=a", nullptr, nullptr},
    {"operator", [] { return Op("<>"); }, "<>", nullptr, "<font color=#7f7fff><></font>"},
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
       auto name = NewNode<TSQLQualifiedName>(P());
       name->AddName("s");
       name->AddName("money");
       type->SetName(std::move(name));
       return type;
     },
     "s.money", nullptr, nullptr},
    // Leaves
    {"string constant keeps its quotes", [] { return Const("'it''s'"); }, "'it''s'", nullptr,
     nullptr},
    {"integer constant",
     [] { return NewNode<TSQLExpressionConstant>(P(), TSQLConstantValue(std::int64_t{-42})); },
     "-42", nullptr, nullptr},
    {"float constant", [] { return NewNode<TSQLExpressionConstant>(P(), TSQLConstantValue(2.5)); },
     "2.5", nullptr, nullptr},
    {"boolean constant",
     [] { return NewNode<TSQLExpressionConstant>(P(), TSQLConstantValue(false)); }, "False",
     nullptr, nullptr},
    {"null constant", [] { return NewNode<TSQLExpressionConstant>(P()); }, "NULL", nullptr,
     nullptr},
    {"variable",
     [] {
       auto node = NewNode<TSQLExpressionVariable>(P());
       node->Text = "@v";
       return node;
     },
     "@v", nullptr, nullptr},
    {"parameterless function",
     [] {
       auto node = NewNode<TSQLExpressionParameterlessFunction>(P());
       node->Name = "CURRENT_USER";
       return node;
     },
     "CURRENT_USER", nullptr, "<i>CURRENT_USER</i>"},
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
    {"searched CASE without ELSE",
     [] {
       auto node = NewNode<TSQLExpressionCaseFunction>(P());
       node->AddItem(When(Cmp("a", ">", "1"), Const("'x'")));
       return node;
     },
     "CASE WHEN a>1 THEN 'x' END", nullptr, nullptr},
    {"CASE item with missing parts keeps its keywords",
     [] { return NewNode<TSQLCaseFunctionItem>(P()); }, "WHEN THEN ", nullptr,
     "<b>when</b> <b>then</b> "},
    // Aggregates
    {"star aggregate",
     [] {
       auto node = NewNode<TSQLExpressionAggregate>(P());
       node->Name = "Count";
       return node;
     },
     "Count(*)", nullptr, "<i>Count</i><font color=#7f7fff>(*)</font>"},
    {"one-argument aggregate", [] { return Aggregate1("Max", Col({"a"})); }, "Max(a)", nullptr,
     nullptr},
    {"aggregate with DISTINCT",
     [] {
       return Aggregate1("Count", Col({"a"}), TSQLExpressionAggregate1ParamWPrefix::sqDistinct);
     },
     "Count(DISTINCT a)", nullptr,
     "<i>Count</i><font color=#7f7fff>(</font><b>distinct</b> <i>a</i><font "
     "color=#7f7fff>)</font>"},
    {"other quantifiers write nothing", [] { return Aggregate1("Sum", Col({"a"}), 2); }, "Sum(a)",
     nullptr, nullptr},
    {"aggregate with an argument list",
     [] {
       auto node = NewNode<TSQLExpressionAggregateWParams>(P());
       node->Name = "corr";
       node->SetParams(Params(Items(Col({"a"}), Col({"b"}))));
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
       auto minus = NewNode<TSQLExpressionOperatorPrefix>(P());
       minus->SetOperator(Op("-"));
       minus->SetInner(Col({"b"}));
       return Bin(Col({"a"}), "*", std::move(minus));
     },
     "a* -b", nullptr, nullptr},
    {"postfix operator", [] { return Postfix(Col({"a"}), "!"); }, "a!", nullptr, nullptr},
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
    {"CAST without a type", [] { return WithInner<TSQLExpressionCast>(Col({"a"})); }, "Cast(a As )",
     nullptr, nullptr},
    {"IS",
     [] {
       auto node = WithInner<TSQLExpressionIs>(Col({"a"}));
       node->Not = true;
       return node;
     },
     "a IS NOT", nullptr, nullptr},
    {"IS NULL", [] { return WithInner<TSQLExpressionIsNull>(Col({"a"})); }, "a IS NULL", nullptr,
     "<i>a</i> <b>is</b> <b>null</b>"},
    {"IS NOT NULL",
     [] {
       auto node = WithInner<TSQLExpressionIsNull>(Col({"a"}));
       node->Not = true;
       return node;
     },
     "a IS NOT NULL", nullptr, nullptr},
    {"IN", [] { return WithInner<TSQLExpressionIn>(Col({"a"})); }, "a IN", nullptr, nullptr},
    {"NOT IN a list", [] { return In(Col({"a"}), true, Items(Const("1"), Const("2"))); },
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
       auto node = WithInner<TSQLExpressionLikeTemplate>(Col({"a"}));
       node->Not = true;
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
       auto node = WithInner<TSQLExpressionBetween>(Col({"a"}));
       node->Not = true;
       node->SetLow(Const("1"));
       node->SetHigh(Const("2"));
       return node;
     },
     "a Not Between 1 And 2", nullptr, nullptr},
    {"BETWEEN without a low bound",
     [] {
       auto node = WithInner<TSQLExpressionBetween>(Col({"a"}));
       node->SetHigh(Col({"b"}));
       return node;
     },
     "a Between And b", nullptr, nullptr},
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
     [] {
       auto node = NewNode<TSQLExpressionItemsList>(P());
       node->Add(Col({"a"}));
       node->Add(Col({"b"}));
       return node;
     },
     "a, b", nullptr, nullptr},
    {"AND", [] { return And(Items(Cmp("a", "=", "1"), Cmp("b", "<>", "2"))); }, "a=1 And b<>2",
     nullptr, nullptr},
    {"OR inside AND gets no brackets of its own",
     [] {
       return And(Items(Cmp("a", "=", "1"), Or(Items(Cmp("b", "=", "2"), Cmp("c", "=", "3")))));
     },
     "a=1 And b=2 Or c=3", nullptr, nullptr},
    {"empty AND writes nothing", [] { return And({}); }, "", nullptr, ""},
    {"expressions list",
     [] {
       auto list = NewNode<TSQLExpressionsList>(P());
       list->Add(Col({"a"}));
       list->Add(Col({"b"}));
       return list;
     },
     "a, b", nullptr, "<i>a</i><font color=#7f7fff>,</font> <i>b</i>"},
};

class ExpressionText : public testing::TestWithParam<TextCase> {};

TEST_P(ExpressionText, WritesExactlyItsText) {
  const TextCase& c = GetParam();
  std::unique_ptr<TastNode> node = c.make();
  EXPECT_EQ(Plain(*node, false), c.one);
  EXPECT_EQ(Plain(*node, true), c.multi != nullptr ? c.multi : c.one);
  if (c.html != nullptr) {
    EXPECT_EQ(Html(*node, false), c.html);
  }
  // A copy is of the same class and writes the same text.
  std::unique_ptr<TastNode> copy = node->Clone();
  EXPECT_EQ(&copy->ClassType(), &node->ClassType());
  EXPECT_EQ(Plain(*copy, true), Plain(*node, true));
}

INSTANTIATE_TEST_SUITE_P(Nodes, ExpressionText, testing::ValuesIn(kExpressions),
                         [](const testing::TestParamInfo<TextCase>& info) {
                           return "case" + std::to_string(info.index);
                         });

TEST(ExpressionText, EveryExpressionClassIsWrittenByTheTable) {
  std::set<std::string> seen;
  for (const TextCase& c : kExpressions) {
    std::unique_ptr<TastNode> node = c.make();
    std::vector<TastExtender*> nodes;
    CollectNodes(*node, nodes);
    for (TastExtender* n : nodes)
      seen.insert(std::string(n->ClassType().ClassName()));
  }
  const char* expected[] = {"TSQLQualifiedName",
                            "TSQLDatabaseObject",
                            "TSQLObjectColumn",
                            "TSQLFunctionParamExpression",
                            "TSQLFunctionParamNamedExpression",
                            "TSQLFunctionParams",
                            "TSQLFunction",
                            "TSQLOperator",
                            "TSQLTypeBuiltIn",
                            "TSQLTypeUser",
                            "TSQLExpressionConstant",
                            "TSQLExpressionVariable",
                            "TSQLExpressionColumn",
                            "TSQLExpressionParameterlessFunction",
                            "TSQLExpressionFunction",
                            "TSQLExpressionSelect",
                            "TSQLExpressionCaseFunction",
                            "TSQLCaseFunctionItem",
                            "TSQLExpressionAggregate",
                            "TSQLExpressionAggregate1Param",
                            "TSQLExpressionAggregate1ParamWPrefix",
                            "TSQLExpressionAggregateWParams",
                            "TSQLExpressionExpressionItem",
                            "TSQLExpressionIs",
                            "TSQLExpressionIsNull",
                            "TSQLExpressionIn",
                            "TSQLExpressionInSet",
                            "TSQLExpressionInSubQuery",
                            "TSQLExpressionLikeTemplate",
                            "TSQLExpressionCast",
                            "TSQLExpressionOperatorPrefix",
                            "TSQLExpressionOperatorPostfix",
                            "TSQLExpressionOperatorBinary",
                            "TSQLExpressionCompWithSet",
                            "TSQLExpressionCompWithSubQuery",
                            "TSQLExpressionCompWithSetExpression",
                            "TSQLExpressionBetween",
                            "TSQLExpressionBrackets",
                            "TSQLExpressionFieldSelection",
                            "TSQLExpressionNot",
                            "TSQLExpressionExists",
                            "TSQLExpressionOverlaps",
                            "TSQLExpressionItemsList",
                            "TSQLExpressionAnd",
                            "TSQLExpressionOr",
                            "TSQLExpressionsList"};
  for (const char* name : expected)
    EXPECT_TRUE(seen.count(name)) << name;
}

TEST(ExpressionText, ConstantStringForms) {
  EXPECT_EQ(ConstantValueToString(TSQLConstantValue{}), "NULL");
  EXPECT_EQ(ConstantValueToString(true), "True");
  EXPECT_EQ(ConstantValueToString(std::int64_t{1} << 40), "1099511627776");
  EXPECT_EQ(ConstantValueToString(0.1), "0.1");
  EXPECT_EQ(ConstantValueToString(1e300), "1e+300");
  EXPECT_EQ(ConstantValueToString(std::string("X'FF'")), "X'FF'");
}

TEST(ExpressionText, HtmlRefusesNumbers) {
  EXPECT_THROW(Html(*Const("1"), false), EqxError);
}

TEST(QualifiedName, PartsAreKeptInnermostFirst) {
  auto name = NewNode<TSQLQualifiedName>(P());
  name->AddName("a");
  name->AddName("b");
  name->AddName("c");
  EXPECT_EQ(name->Count(), 3);
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

TEST(ExpressionNodes, ChildrenAreListedInOrderAndDumped) {
  auto between = NewNode<TSQLExpressionBetween>(P());
  between->Not = true;
  between->SetInner(Col({"a"}));
  between->SetLow(Const("1"));
  between->SetHigh(Const("2"));
  EXPECT_EQ(between->Dump(),
            "TSQLExpressionBetween NOT\n"
            "  TSQLExpressionColumn\n"
            "    TSQLObjectColumn a\n"
            "  TSQLExpressionConstant 1\n"
            "  TSQLExpressionConstant 2\n");
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

}  // namespace
}  // namespace qorvex
