#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

template <class Mode>
std::unique_ptr<TSQLSubQuerySelectExpression> WithMode(
    std::unique_ptr<TSQLSubQuerySelectExpression> Block) {
  Block->SetSelectMode(NewNode<Mode>(P()));
  return Block;
}

std::unique_ptr<TSQLOrderByClause> OrderBy(std::vector<std::pair<const char*, bool>> Items) {
  auto clause = NewNode<TSQLOrderByClause>(P());
  for (auto& [column, descending] : Items) {
    auto item = NewNode<TSQLOrderByItem>(P());
    item->SetExpression(Col({column}));
    item->Descending = descending;
    clause->Add(std::move(item));
  }
  return clause;
}

std::unique_ptr<TSQLGroupByList> GroupBy(std::vector<const char*> Columns) {
  auto list = NewNode<TSQLGroupByList>(P());
  for (const char* column : Columns)
    list->Add(Col({column}));
  return list;
}

template <class T>
std::unique_ptr<T> Operator(std::unique_ptr<T> Operand, const char* Text, bool All = false) {
  Operand->UnionOperator = Text;
  Operand->All = All;
  return Operand;
}

template <class... A>
std::unique_ptr<TSQLSubQueryExpressions> Chain(A... Operands) {
  auto chain = NewNode<TSQLSubQueryExpressions>(P());
  (chain->Add(std::move(Operands)), ...);
  return chain;
}

const TextCase kQuery[] = {
    // Select items
    {"all columns", [] { return Star(); }, "*", nullptr, "<font color=#7f7fff>*</font>"},
    {"all columns of a table",
     [] {
       auto item = NewNode<TSQLSelectItemAllTableColumns>(P());
       item->SetQualifier(DbObj({"s", "t"}));
       return item;
     },
     "s.t.*", nullptr, "<i>s</i><font color=#7f7fff>.</font><i>t</i><font color=#7f7fff>.*</font>"},
    {"alias-equals form",
     [] {
       return SelectExpr(Bin(Col({"b"}), "+", Const("1")), Named<TSQLAliasAliasEqualsObject>("a"));
     },
     "a=b+1", nullptr, nullptr},
    {"alias after the expression",
     [] { return SelectExpr(Col({"b"}), Named<TSQLAliasObjectAlias>("a")); }, "b a", nullptr,
     "<i>b</i> <i>a</i>"},
    // Grouping and ordering
    {"GROUP BY list writes its own keywords",
     [] {
       return GroupBy({"a", "b"});
     },
     "GROUP BY a, b", nullptr,
     "<b>group</b> <b>by</b> <i>a</i><font color=#7f7fff>,</font> <i>b</i>"},
    {"ORDER BY entries, ascending without keyword",
     [] {
       return OrderBy({{"a", false}, {"b", true}});
     },
     "a, b DESC", nullptr, nullptr},
    {"default mode writes nothing", [] { return NewNode<TSQLSubQuerySelectModeDefault>(P()); }, "",
     nullptr, ""},
    // SELECT blocks
    {"block with an empty select list", [] { return Block(List()); }, "SELECT", nullptr,
     "<b>select</b>"},
    {"empty select list with a mode",
     [] { return WithMode<TSQLSubQuerySelectModeAll>(Block(List())); }, "SELECT ALL", nullptr,
     nullptr},
    {"empty FROM clause keeps its keyword", [] { return Block(List(Star()), From(Sources())); },
     "SELECT * FROM ", "SELECT *\r\nFROM ", nullptr},
    {"DISTINCT stays on the SELECT line",
     [] { return WithMode<TSQLSubQuerySelectModeDistinct>(SelectColumn("a", "t")); },
     "SELECT DISTINCT a FROM t", "SELECT DISTINCT a\r\nFROM t",
     "<b>select</b> <b>distinct</b> <i>a</i> <b>from</b> <i>t</i>"},
    {"every clause in its fixed order",
     [] {
       auto block = WithMode<TSQLSubQuerySelectModeDistinct>(
           Block(List(SelectExpr(Col({"a"})), SelectExpr(Col({"b"}))), From(Sources(Table({"t"}))),
                 Cmp("a", "=", "1")));
       block->SetGroupBy(GroupBy({"a"}));
       auto count = NewNode<TSQLExpressionAggregate>(P());
       count->Name = "Count";
       block->SetHaving(Bin(std::move(count), ">", Const("1")));
       block->SetOrderBy(OrderBy({{"a", true}}));
       return block;
     },
     "SELECT DISTINCT a, b FROM t WHERE a=1 GROUP BY a HAVING Count(*)>1 ORDER BY a DESC",
     "SELECT DISTINCT a, b\r\nFROM t\r\nWHERE a=1\r\nGROUP BY a\r\nHAVING Count(*)>1\r\nORDER BY "
     "a DESC",
     nullptr},
    {"empty GROUP BY list is left out",
     [] {
       auto block = SelectColumn("a", "t");
       block->SetGroupBy(GroupBy({}));
       return block;
     },
     "SELECT a FROM t", "SELECT a\r\nFROM t", nullptr},
    // Chains and statements
    {"operand without operator set writes union",
     [] { return Chain(SelectColumn("a"), SelectColumn("b")); }, "SELECT a union SELECT b",
     "SELECT a\r\nunion\r\nSELECT b", "<b>select</b> <i>a</i> <b>union</b> <b>select</b> <i>b</i>"},
    {"three operands, the middle one a group",
     [] {
       auto group = Chain(SelectColumn("b"), Operator(SelectColumn("c"), "intersect"));
       auto chain = Stmt(SelectColumn("a", "t"));
       chain->Add(Operator(std::move(group), "Union", true));
       chain->Add(Operator(SelectColumn("d"), "except"));
       return chain;
     },
     "SELECT a FROM t Union ALL (SELECT b intersect SELECT c) except SELECT d",
     "SELECT a\r\nFROM t\r\nUnion ALL\r\n(SELECT b\r\nintersect\r\nSELECT c)\r\nexcept\r\nSELECT d",
     nullptr},
    {"statement ORDER BY follows the chain",
     [] {
       auto statement = Stmt<TSQLSelectStatement>(SelectColumn("a", "t"));
       statement->Add(SelectColumn("a", "u"));
       statement->SetOrderBy(OrderBy({{"a", false}}));
       return statement;
     },
     "SELECT a FROM t union SELECT a FROM u ORDER BY a",
     "SELECT a\r\nFROM t\r\nunion\r\nSELECT a\r\nFROM u\r\nORDER BY a", nullptr},
    {"empty statement writes nothing", [] { return NewNode<TSQLSelectStatement>(P()); }, "",
     nullptr, ""},
};

class QueryText : public testing::TestWithParam<TextCase> {};
TEST_P(QueryText, WritesExactlyItsText) {
  CheckText(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Nodes, QueryText, testing::ValuesIn(kQuery), CaseName);

TEST(QueryNodes, SimpleUnionOperator) {
  auto operand = NewNode<TSQLSubQuerySelectExpression>(P());
  EXPECT_EQ(operand->GetSimpleUnionOperator(), "union");
  EXPECT_EQ(Operator(std::move(operand), "Union", true)->GetSimpleUnionOperator(), "Union ALL");
}

TEST(QueryNodes, ChainListOperations) {
  auto chain = Chain(SelectColumn("a"), SelectColumn("b"));
  chain->Insert(1, SelectColumn("c"));
  EXPECT_EQ(Plain(*chain, false), "SELECT a union SELECT c union SELECT b");
  TSQLSubQueryExpression* c = chain->GetItems(1);
  EXPECT_EQ(chain->IndexOf(c), 1);
  EXPECT_EQ(chain->Extract(c).get(), c);
  chain->Remove(chain->GetItems(1));
  EXPECT_EQ(Plain(*chain, false), "SELECT a");
  EXPECT_THROW(chain->Delete(1), EqxError);
  EXPECT_THROW(chain->Insert(5, SelectColumn("x")), EqxError);
  chain->Clear();
  EXPECT_EQ(chain->GetCount(), 0);
}

// A statement of the richest shape, every clause and every kind of sub-query holder.
std::unique_ptr<TSQLSelectStatement> RichStatement() {
  auto maxOfB = NewNode<TSQLExpressionAggregate1Param>(P());
  maxOfB->Name = "Max";
  maxOfB->SetArgument(Col({"u", "b"}));
  auto scalar = NewNode<TSQLExpressionSelect>(P());
  scalar->SetSubQuery(Stmt(Block(List(SelectExpr(std::move(maxOfB))), From(Sources(Table({"u"}))),
                                 Bin(Col({"u", "k"}), "=", Col({"x", "k"})))));
  auto allOfT = NewNode<TSQLSelectItemAllTableColumns>(P());
  allOfT->SetQualifier(DbObj({"x"}));
  auto derived = NewNode<TSQLFromQuery>(P());
  derived->SetSubQuery(Stmt(Block(List(SelectExpr(Const("1"))))));
  derived->SetAlias(Named<TSQLAliasObjectAlias>("d"));
  derived->ColumnAliases = {"c"};
  auto exists = NewNode<TSQLExpressionExists>(P());
  exists->SetSubQuery(Stmt(Block(List(Star()), From(Sources(Table({"v"}))),
                                 Bin(Col({"v", "k"}), "=", Col({"x", "k"})))));
  auto in = WithInner<TSQLExpressionInSubQuery>(Col({"x", "a"}));
  in->SetSubQuery(Stmt(SelectColumn("a", "w")));
  auto greater = WithInner<TSQLExpressionOperatorPostfix>(Col({"x", "a"}));
  greater->SetOperator(Op(">"));
  auto compare = WithInner<TSQLExpressionCompWithSubQuery>(std::move(greater));
  compare->Quantifier = TSQLExpressionCompWithSet::cqAny;
  compare->SetSubQuery(Stmt(SelectColumn("a", "w")));

  auto block = WithMode<TSQLSubQuerySelectModeDistinct>(
      Block(List(SelectExpr(Col({"x", "a"})), std::move(allOfT),
                 SelectExpr(std::move(scalar), Named<TSQLAliasObjectAsAlias>("m"))),
            From(Sources(
                Table({"t"}, "x"),
                Joined<TSQLJoinKindInner>(Table({"u"}), Bin(Col({"x", "k"}), "=", Col({"u", "k"}))),
                std::move(derived))),
            And(Items(std::move(exists), std::move(in), std::move(compare)))));
  block->SetGroupBy(GroupBy({"a"}));
  block->SetHaving(Cmp("a", ">", "1"));
  block->SetOrderBy(OrderBy({{"a", true}}));
  auto group = Chain(SelectColumn("a", "t"), Operator(SelectColumn("b", "t"), "except"));
  auto statement = Stmt<TSQLSelectStatement>(std::move(block));
  statement->Add(Operator(std::move(group), "Union", true));
  statement->SetOrderBy(OrderBy({{"a", false}}));
  return statement;
}

TEST(QueryNodes, CloneOfAStatementSharesNoNodeAndRebindsItsNames) {
  std::unique_ptr<TSQLSelectStatement> original = RichStatement();
  std::vector<TSQLFromSource*> stack;
  original->FixupObjects(stack);
  std::unique_ptr<TastNode> copy = original->Clone();
  EXPECT_EQ(&copy->ClassType(), &TSQLSelectStatement::StaticClass());
  EXPECT_EQ(Plain(*copy, true), Plain(*original, true));

  std::vector<TastExtender*> before, after;
  CollectNodes(*original, before);
  CollectNodes(*copy, after);
  EXPECT_EQ(before.size(), after.size());
  const std::set<TastExtender*> originalNodes(before.begin(), before.end());
  const std::set<TastExtender*> copyNodes(after.begin(), after.end());
  int bound = 0;
  for (TastExtender* node : after) {
    EXPECT_EQ(originalNodes.count(node), 0u) << node->ClassType().ClassName();
    auto* name = dynamic_cast<TSQLDatabaseObject*>(node);
    if (name != nullptr && name->GetFromSource() != nullptr) {
      ++bound;
      EXPECT_EQ(copyNodes.count(name->GetFromSource()), 1u) << name->GetQualifiedName();
    }
  }
  EXPECT_GE(bound, 8);
  // The copy stands on its own.
  const std::string text = Plain(*copy, true);
  original.reset();
  EXPECT_EQ(Plain(*copy, true), text);
}

// ---------------------------------------------------------------------------------------
// Statement proxy

int gLiveTrees = 0;

// A statement that counts how many of its kind are alive.
class TCountedStatement : public TSQLSubSelectStatement {
  QX_CLASS(TastClass)

 public:
  explicit TCountedStatement(TastSyntaxProvider* SyntaxProvider)
      : TSQLSubSelectStatement(SyntaxProvider) {
    ++gLiveTrees;
  }
  ~TCountedStatement() override { --gLiveTrees; }
};
QX_DEFINE_CLASS(TCountedStatement, TSQLSubSelectStatement)

// Builds its tree as a copy of the statement it took over.
class TTestProxy : public TSQLSubSelectStatementProxy {
  QX_CLASS(TastClass)
  QX_PROXY_CLASS()

 public:
  TTestProxy(TastSyntaxProvider* SyntaxProvider, TqxQueryBuilderControlOwner* Owner,
             std::unique_ptr<TSQLSubSelectStatement> Statement)
      : TSQLSubSelectStatementProxy(SyntaxProvider, Owner, std::move(Statement)) {}

  std::unique_ptr<TSQLSubSelectStatement> GetASTTree() const override {
    auto tree = NewNode<TCountedStatement>(GetSyntaxProvider());
    if (GetStatement() != nullptr)
      tree->Assign(*GetStatement());
    return tree;
  }
  using TSQLSubSelectStatementProxy::GetStatement;
};
QX_DEFINE_PROXY_CLASS(TTestProxy, TSQLSubSelectStatementProxy)

TqxQueryBuilderControlOwner* FakeOwner() {
  static int owner;
  return reinterpret_cast<TqxQueryBuilderControlOwner*>(&owner);
}

std::unique_ptr<TTestProxy> MakeProxy(std::unique_ptr<TSQLSubSelectStatement> Statement) {
  std::unique_ptr<TSQLSubSelectStatementProxy> proxy =
      TTestProxy::ProxyStaticClass().Create(P(), FakeOwner(), std::move(Statement));
  return std::unique_ptr<TTestProxy>(static_cast<TTestProxy*>(proxy.release()));
}

TEST(StatementProxy, WritesThroughAFreshTreeAndFreesIt) {
  auto proxy = MakeProxy(Stmt(Block(List(SelectExpr(Const("1"))), From(Sources(Table({"t"}))))));
  EXPECT_EQ(proxy->GetOwner(), FakeOwner());
  EXPECT_EQ(Plain(*proxy, true), "SELECT 1\r\nFROM t");
  EXPECT_EQ(proxy->GetSimpleSQL(), "SELECT 1 FROM t");
  EXPECT_EQ(gLiveTrees, 0);
  // The HTML builder refuses the number: the tree is freed on that path too.
  EXPECT_THROW(Html(*proxy, false), EqxError);
  EXPECT_EQ(gLiveTrees, 0);
}

TEST(StatementProxy, CloneIsARealStatement) {
  auto proxy = MakeProxy(Stmt(SelectColumn("a", "t")));
  std::unique_ptr<TastNode> copy = proxy->Clone();
  EXPECT_EQ(&copy->ClassType(), &TCountedStatement::StaticClass());
  EXPECT_EQ(gLiveTrees, 1);
  EXPECT_EQ(Plain(*copy, false), "SELECT a FROM t");
  copy.reset();
  EXPECT_EQ(gLiveTrees, 0);
  // A statement assigned from a proxy copies the proxy's tree.
  auto statement = NewNode<TSQLSubSelectStatement>(P());
  statement->Assign(*proxy);
  EXPECT_EQ(Plain(*statement, false), "SELECT a FROM t");
  EXPECT_EQ(gLiveTrees, 0);
}

TEST(StatementProxy, RefusesListOperationsAndAssign) {
  auto proxy = MakeProxy(Stmt(SelectColumn("a", "t")));
  auto other = Stmt(SelectColumn("b"));
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"Add", [&] { proxy->Add(SelectColumn("x")); }},
      {"Assign", [&] { proxy->Assign(*other); }},
      {"Clear", [&] { proxy->Clear(); }},
      {"Delete", [&] { proxy->Delete(0); }},
      {"Extract", [&] { proxy->Extract(0); }},
      {"Extract", [&] { proxy->Extract(other->GetItems(0)); }},
      {"GetCount", [&] { proxy->GetCount(); }},
      {"GetItems", [&] { proxy->GetItems(0); }},
      {"Remove", [&] { proxy->Remove(other->GetItems(0)); }},
      {"Insert", [&] { proxy->Insert(0, SelectColumn("x")); }},
      {"IndexOf", [&] { proxy->IndexOf(nullptr); }},
  };
  for (auto& [operation, call] : cases) {
    try {
      call();
      ADD_FAILURE() << "no exception for " << operation;
    } catch (const EqxError& e) {
      EXPECT_EQ(e.what(), std::string(operation) +
                              " can't be called with "
                              "TSQLSubSelectStatementProxy");
    }
  }
  EXPECT_EQ(Plain(*proxy, false), "SELECT a FROM t");
}

TSQLSubSelectStatement* HeldSubQuery(TastExtender* Node) {
  if (auto* s = dynamic_cast<TSQLExpressionSelect*>(Node))
    return s->GetSubQuery();
  if (auto* s = dynamic_cast<TSQLExpressionInSubQuery*>(Node))
    return s->GetSubQuery();
  if (auto* s = dynamic_cast<TSQLExpressionExists*>(Node))
    return s->GetSubQuery();
  if (auto* s = dynamic_cast<TSQLExpressionCompWithSubQuery*>(Node))
    return s->GetSubQuery();
  if (auto* s = dynamic_cast<TSQLFromQuery*>(Node))
    return s->GetSubQuery();
  return nullptr;
}

TEST(StatementProxy, SubQueriesMoveIntoProxies) {
  std::unique_ptr<TSQLSelectStatement> statement = RichStatement();
  const std::string before = Plain(*statement, true);
  for (int walk = 0; walk < 2; ++walk) {  // a second walk leaves the proxies as they are
    statement->MoveSubQueryInProxy(FakeOwner(), TTestProxy::ProxyStaticClass());
    EXPECT_EQ(Plain(*statement, true), before);
    EXPECT_EQ(gLiveTrees, 0);
    // Every holder of a sub-query now holds a proxy that took over the statement.
    std::vector<TastExtender*> nodes;
    CollectNodes(*statement, nodes);
    std::set<std::string> holders;
    int proxies = 0;
    for (TastExtender* node : nodes) {
      if (auto* proxy = dynamic_cast<TTestProxy*>(node)) {
        ++proxies;
        EXPECT_NE(proxy->GetStatement(), nullptr);
        EXPECT_EQ(proxy->GetOwner(), FakeOwner());
      }
      if (TSQLSubSelectStatement* held = HeldSubQuery(node)) {
        holders.insert(std::string(node->ClassType().ClassName()));
        EXPECT_NE(dynamic_cast<TTestProxy*>(held), nullptr) << node->ClassType().ClassName();
      }
    }
    EXPECT_EQ(proxies, 5);
    EXPECT_EQ(holders.size(), 5u);
  }
}

TEST(StatementProxy, AnAbstractProxyClassKeepsTheStatement) {
  auto exists = NewNode<TSQLExpressionExists>(P());
  exists->SetSubQuery(Stmt(SelectColumn("a", "t")));
  EXPECT_THROW(
      exists->MoveSubQueryInProxy(FakeOwner(), TSQLSubSelectStatementProxy::ProxyStaticClass()),
      EqxError);
  EXPECT_EQ(Plain(*exists, false), "Exists(SELECT a FROM t)");
}

}  // namespace
}  // namespace qorvex
