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

std::unique_ptr<TSQLSubQuerySelectExpression> EmptyBlock() {
  auto block = NewNode<TSQLSubQuerySelectExpression>(P());
  block->SetSelectItems(NewNode<TSQLSelectItems>(P()));
  return block;
}

// The first SELECT block of a parsed statement, taken out of it; the statement's ORDER BY
// moved into the block.
std::unique_ptr<TSQLSubQuerySelectExpression> Block(const std::string& Text) {
  auto statement = Sql(Text);
  std::unique_ptr<TSQLSubQuerySelectExpression> block(
      static_cast<TSQLSubQuerySelectExpression*>(statement->Extract(0).release()));
  block->SetOrderBy(statement->ExtractOrderBy());
  return block;
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
    {"all columns", [] { return NewNode<TSQLSelectItemAllColumns>(P()); }, "*", nullptr,
     "<font color=#7f7fff>*</font>"},
    {"all columns of a table", [] { return P()->ParseSelectItem("s.t.*"); }, "s.t.*", nullptr,
     "<i>s</i><font color=#7f7fff>.</font><i>t</i><font color=#7f7fff>.*</font>"},
    {"alias after the expression", [] { return P()->ParseSelectItem("b a"); }, "b a", nullptr,
     "<i>b</i> <i>a</i>"},
    {"GROUP BY list writes its own keywords",
     [] { return Block("select a from t group by a, b")->ExtractGroupBy(); }, "GROUP BY a, b",
     nullptr, "<b>group</b> <b>by</b> <i>a</i><font color=#7f7fff>,</font> <i>b</i>"},
    {"default mode writes nothing", [] { return NewNode<TSQLSubQuerySelectModeDefault>(P()); }, "",
     nullptr, ""},
    // SELECT blocks
    {"block with an empty select list", [] { return EmptyBlock(); }, "SELECT", nullptr,
     "<b>select</b>"},
    {"empty select list with a mode",
     [] { return WithMode<TSQLSubQuerySelectModeAll>(EmptyBlock()); }, "SELECT ALL", nullptr,
     nullptr},
    {"empty FROM clause keeps its keyword", [] { return Sql("select * from"); }, "SELECT * FROM ",
     "SELECT *\r\nFROM ", nullptr},
    {"DISTINCT stays on the SELECT line", [] { return Sql("select distinct a from t"); },
     "SELECT DISTINCT a FROM t", "SELECT DISTINCT a\r\nFROM t",
     "<b>select</b> <b>distinct</b> <i>a</i> <b>from</b> <i>t</i>"},
    {"every clause of a block in its fixed order",
     [] {
       return Block(
           "select distinct a, b from t where a = 1 group by a having count(*) > 1 order by a "
           "desc");
     },
     "SELECT DISTINCT a, b FROM t WHERE a=1 GROUP BY a HAVING count(*)>1 ORDER BY a DESC",
     "SELECT DISTINCT a, b\r\nFROM t\r\nWHERE a=1\r\nGROUP BY a\r\nHAVING count(*)>1\r\nORDER BY "
     "a DESC",
     nullptr},
    {"empty GROUP BY list is left out",
     [] {
       auto block = Block("select a from t");
       block->SetGroupBy(NewNode<TSQLGroupByList>(P()));
       return block;
     },
     "SELECT a FROM t", "SELECT a\r\nFROM t", nullptr},
    // Chains and statements
    {"operand without operator set writes union",
     [] { return Chain(Block("select a"), Block("select b")); }, "SELECT a union SELECT b",
     "SELECT a\r\nunion\r\nSELECT b", "<b>select</b> <i>a</i> <b>union</b> <b>select</b> <i>b</i>"},
    {"operator text as stored, ALL after it",
     [] {
       auto chain = Sql("select a");
       chain->Add(Operator(Block("select b"), "Union", true));
       return chain;
     },
     "SELECT a Union ALL SELECT b", "SELECT a\r\nUnion ALL\r\nSELECT b", nullptr},
    {"three operands, the middle one a group",
     [] { return Sql("select a from t union all (select b intersect select c) except select d"); },
     "SELECT a FROM t union ALL (SELECT b intersect SELECT c) except SELECT d",
     "SELECT a\r\nFROM t\r\nunion ALL\r\n(SELECT b\r\nintersect\r\nSELECT c)\r\nexcept\r\nSELECT d",
     nullptr},
    {"statement ORDER BY follows the chain",
     [] { return Sql("select a from t union select a from u order by a"); },
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
  auto chain = Chain(Block("select a"), Block("select b"));
  chain->Insert(1, Block("select c"));
  EXPECT_EQ(Plain(*chain, false), "SELECT a union SELECT c union SELECT b");
  TSQLSubQueryExpression* c = chain->GetItems(1);
  EXPECT_EQ(chain->IndexOf(c), 1);
  EXPECT_EQ(chain->Extract(c).get(), c);
  chain->Remove(chain->GetItems(1));
  EXPECT_EQ(Plain(*chain, false), "SELECT a");
  EXPECT_THROW(chain->Delete(1), EqxError);
  EXPECT_THROW(chain->Insert(5, Block("select x")), EqxError);
  chain->Clear();
  EXPECT_EQ(chain->GetCount(), 0);
}

// A statement of the richest shape: every clause and every kind of sub-query holder.
std::unique_ptr<TSQLSelectStatement> RichStatement() {
  return Sql(
      "select distinct x.a, x.*, (select max(u.b) from u where u.k = x.k) as m "
      "from t x join u on x.k = u.k, (select 1) d (c) "
      "where exists (select * from v where v.k = x.k) and x.a in (select a from w) "
      "and x.a > any (select a from w) group by a having a > 1 "
      "union all (select a from t except select b from t) order by a");
}

// A copy shares no node, keeps the sources' fields and binds names to its own sources.
TEST(QueryNodes, CloneOfAStatementSharesNoNodeAndRebindsItsNames) {
  std::unique_ptr<TSQLSelectStatement> original = RichStatement();
  std::vector<TSQLFromSource*> stack;
  original->FixupObjects(stack);
  std::vector<TastExtender*> before, after;
  CollectNodes(*original, before);
  for (TastExtender* node : before) {
    if (auto* source = dynamic_cast<TSQLFromSource*>(node))
      source->Fields = {"f"};
  }
  std::unique_ptr<TastNode> copy = original->Clone();
  EXPECT_EQ(&copy->ClassType(), &TSQLSelectStatement::StaticClass());
  EXPECT_EQ(Plain(*copy, true), Plain(*original, true));
  CollectNodes(*copy, after);
  EXPECT_EQ(before.size(), after.size());
  const std::set<TastExtender*> originalNodes(before.begin(), before.end());
  const std::set<TastExtender*> copyNodes(after.begin(), after.end());
  int bound = 0;
  for (TastExtender* node : after) {
    EXPECT_EQ(originalNodes.count(node), 0u) << node->ClassType().ClassName();
    if (auto* source = dynamic_cast<TSQLFromSource*>(node)) {
      EXPECT_EQ(source->Fields, Strings{"f"});
    }
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

TEST(StatementProxy, CloneIsARealStatement) {
  auto proxy = MakeProxy(Sql("select a from t"));
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
  auto proxy = MakeProxy(Sql("select a from t"));
  auto other = Sql("select b");
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"Add", [&] { proxy->Add(Block("select x")); }},
      {"Assign", [&] { proxy->Assign(*other); }},
      {"Clear", [&] { proxy->Clear(); }},
      {"Delete", [&] { proxy->Delete(0); }},
      {"Extract", [&] { proxy->Extract(0); }},
      {"Extract", [&] { proxy->Extract(other->GetItems(0)); }},
      {"GetCount", [&] { proxy->GetCount(); }},
      {"GetItems", [&] { proxy->GetItems(0); }},
      {"Remove", [&] { proxy->Remove(other->GetItems(0)); }},
      {"Insert", [&] { proxy->Insert(0, Block("select x")); }},
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

TEST(StatementProxy, SubQueriesMoveIntoProxies) {
  std::unique_ptr<TSQLSelectStatement> statement = RichStatement();
  const std::string before = Plain(*statement, true);
  for (int walk = 0; walk < 2; ++walk) {  // a second walk leaves the proxies as they are
    statement->MoveSubQueryInProxy(FakeOwner(), TTestProxy::ProxyStaticClass());
    EXPECT_EQ(Plain(*statement, true), before);
    EXPECT_EQ(gLiveTrees, 0);
    // Every sub-query (of five kinds of holder) is now a proxy that took over the statement.
    std::vector<TastExtender*> nodes;
    CollectNodes(*statement, nodes);
    int proxies = 0;
    for (TastExtender* node : nodes) {
      auto* held = dynamic_cast<TSQLSubSelectStatement*>(node);
      if (held == nullptr || held == statement.get())
        continue;
      auto* proxy = dynamic_cast<TTestProxy*>(held);
      ASSERT_NE(proxy, nullptr);
      ++proxies;
      EXPECT_NE(proxy->GetStatement(), nullptr);
      EXPECT_EQ(proxy->GetOwner(), FakeOwner());
    }
    EXPECT_EQ(proxies, 5);
  }
}

TEST(StatementProxy, AnAbstractProxyClassKeepsTheStatement) {
  Expr exists = Cond("exists (select a from t)");
  EXPECT_THROW(
      exists->MoveSubQueryInProxy(FakeOwner(), TSQLSubSelectStatementProxy::ProxyStaticClass()),
      EqxError);
  EXPECT_EQ(Plain(*exists, false), "Exists(SELECT a FROM t)");
}

}  // namespace
}  // namespace qorvex
