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

struct TextCase {
  const char* what;
  Maker make;
  const char* one;
  const char* multi;  // null: same as one
  const char* html;   // null: not checked
};

void PrintTo(const TextCase& Case, std::ostream* Out) {
  *Out << Case.what;
}

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

std::unique_ptr<TSQLSubQuerySelectExpression> SelectColumn(const char* Column,
                                                           const char* TableName = nullptr) {
  return Block(List(SelectExpr(Col({Column}))),
               TableName != nullptr ? From(Sources(Table({TableName}))) : nullptr);
}

template <class T>
std::unique_ptr<T> Operator(std::unique_ptr<T> Operand, const char* Text, bool All = false) {
  Operand->UnionOperator = Text;
  Operand->All = All;
  return Operand;
}

// SELECT DISTINCT a, b FROM t WHERE a=1 GROUP BY a HAVING Count(*)>1 ORDER BY a DESC
std::unique_ptr<TSQLSubQuerySelectExpression> FullBlock() {
  auto block = WithMode<TSQLSubQuerySelectModeDistinct>(
      Block(List(SelectExpr(Col({"a"})), SelectExpr(Col({"b"}))), From(Sources(Table({"t"}))),
            Cmp("a", "=", "1")));
  block->SetGroupBy(GroupBy({"a"}));
  auto count = NewNode<TSQLExpressionAggregate>(P());
  count->Name = "Count";
  block->SetHaving(Bin(std::move(count), ">", Const("1")));
  block->SetOrderBy(OrderBy({{"a", true}}));
  return block;
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
       return SelectExpr(Bin(Col({"b"}), "+", Const("1")),
                         NewNode<TSQLAliasAliasEqualsObject>(P(), std::string("a")));
     },
     "a=b+1", nullptr, nullptr},
    {"alias after the expression",
     [] { return SelectExpr(Col({"b"}), NewNode<TSQLAliasObjectAlias>(P(), std::string("a"))); },
     "b a", nullptr, "<i>b</i> <i>a</i>"},
    {"AS alias after the expression",
     [] { return SelectExpr(Col({"b"}), NewNode<TSQLAliasObjectAsAlias>(P(), std::string("a"))); },
     "b AS a", nullptr, nullptr},
    {"select list",
     [] {
       auto items = NewNode<TSQLSelectItems>(P());
       items->Add(Star());
       items->Add(SelectExpr(Col({"a"})));
       return items;
     },
     "*, a", nullptr, nullptr},
    // Grouping and ordering
    {"GROUP BY list writes its own keywords",
     [] {
       return GroupBy({"a", "b"});
     },
     "GROUP BY a, b", nullptr,
     "<b>group</b> <b>by</b> <i>a</i><font color=#7f7fff>,</font> <i>b</i>"},
    {"descending order item",
     [] {
       auto item = NewNode<TSQLOrderByItem>(P());
       item->SetExpression(Col({"a"}));
       item->Descending = true;
       return item;
     },
     "a DESC", nullptr, nullptr},
    {"ORDER BY entries, ascending without keyword",
     [] {
       return OrderBy({{"a", false}, {"b", true}});
     },
     "a, b DESC", nullptr, nullptr},
    // Select modes
    {"default mode writes nothing", [] { return NewNode<TSQLSubQuerySelectModeDefault>(P()); }, "",
     nullptr, ""},
    {"ALL mode", [] { return NewNode<TSQLSubQuerySelectModeAll>(P()); }, "ALL", nullptr, nullptr},
    {"DISTINCT mode", [] { return NewNode<TSQLSubQuerySelectModeDistinct>(P()); }, "DISTINCT",
     nullptr, nullptr},
    // SELECT blocks
    {"block without FROM", [] { return Block(List(SelectExpr(Const("1")))); }, "SELECT 1", nullptr,
     nullptr},
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
    {"every clause in its fixed order", [] { return FullBlock(); },
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
     [] {
       auto chain = NewNode<TSQLSubQueryExpressions>(P());
       chain->Add(SelectColumn("a"));
       chain->Add(SelectColumn("b"));
       return chain;
     },
     "SELECT a union SELECT b", "SELECT a\r\nunion\r\nSELECT b",
     "<b>select</b> <i>a</i> <b>union</b> <b>select</b> <i>b</i>"},
    {"three operands, the middle one a group",
     [] {
       auto group = NewNode<TSQLSubQueryExpressions>(P());
       group->Add(SelectColumn("b"));
       group->Add(Operator(SelectColumn("c"), "intersect"));
       auto chain = NewNode<TSQLSubSelectStatement>(P());
       chain->Add(SelectColumn("a", "t"));
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
  const TextCase& c = GetParam();
  std::unique_ptr<TastNode> node = c.make();
  EXPECT_EQ(Plain(*node, false), c.one);
  EXPECT_EQ(Plain(*node, true), c.multi != nullptr ? c.multi : c.one);
  if (c.html != nullptr) {
    EXPECT_EQ(Html(*node, false), c.html);
  }
  std::unique_ptr<TastNode> copy = node->Clone();
  EXPECT_EQ(&copy->ClassType(), &node->ClassType());
  EXPECT_EQ(Plain(*copy, true), Plain(*node, true));
}

INSTANTIATE_TEST_SUITE_P(Nodes, QueryText, testing::ValuesIn(kQuery),
                         [](const testing::TestParamInfo<TextCase>& info) {
                           return "case" + std::to_string(info.index);
                         });

TEST(QueryNodes, SimpleUnionOperator) {
  auto operand = NewNode<TSQLSubQuerySelectExpression>(P());
  EXPECT_EQ(operand->GetSimpleUnionOperator(), "union");
  operand->UnionOperator = "Union";
  operand->All = true;
  EXPECT_EQ(operand->GetSimpleUnionOperator(), "Union ALL");
  std::unique_ptr<TSQLSubQuerySelectExpression> copy = CloneNode(*operand);
  EXPECT_EQ(copy->GetSimpleUnionOperator(), "Union ALL");
}

TEST(QueryNodes, ChainListOperations) {
  auto chain = NewNode<TSQLSubQueryExpressions>(P());
  chain->Add(SelectColumn("a"));
  chain->Add(SelectColumn("b"));
  chain->Insert(1, SelectColumn("c"));
  EXPECT_EQ(chain->GetCount(), 3);
  EXPECT_EQ(Plain(*chain, false), "SELECT a union SELECT c union SELECT b");
  TSQLSubQueryExpression* c = chain->GetItems(1);
  EXPECT_EQ(chain->IndexOf(c), 1);
  std::unique_ptr<TSQLSubQueryExpression> taken = chain->Extract(c);
  EXPECT_EQ(taken.get(), c);
  chain->Remove(chain->GetItems(1));
  EXPECT_EQ(Plain(*chain, false), "SELECT a");
  EXPECT_THROW(chain->Delete(1), EqxError);
  EXPECT_THROW(chain->Insert(5, SelectColumn("x")), EqxError);
  chain->Clear();
  EXPECT_EQ(chain->GetCount(), 0);
}

// A statement of the richest shape, every clause and every kind of sub-query holder.
std::unique_ptr<TSQLSelectStatement> RichStatement() {
  // Scalar sub-query in the select list.
  auto maxOfB = NewNode<TSQLExpressionAggregate1Param>(P());
  maxOfB->Name = "Max";
  maxOfB->SetArgument(Col({"u", "b"}));
  auto scalar = NewNode<TSQLExpressionSelect>(P());
  scalar->SetSubQuery(Stmt(Block(List(SelectExpr(std::move(maxOfB))), From(Sources(Table({"u"}))),
                                 Bin(Col({"u", "k"}), "=", Col({"x", "k"})))));
  auto allOfT = NewNode<TSQLSelectItemAllTableColumns>(P());
  allOfT->SetQualifier(DbObj({"x"}));
  // Derived table with column aliases.
  auto derived = NewNode<TSQLFromQuery>(P());
  derived->SetSubQuery(Stmt(Block(List(SelectExpr(Const("1"))))));
  derived->SetAlias(NewNode<TSQLAliasObjectAlias>(P(), std::string("d")));
  derived->ColumnAliases = {"c"};
  // EXISTS, IN with a sub-query and a quantified comparison.
  auto exists = NewNode<TSQLExpressionExists>(P());
  exists->SetSubQuery(Stmt(Block(List(Star()), From(Sources(Table({"v"}))),
                                 Bin(Col({"v", "k"}), "=", Col({"x", "k"})))));
  auto in = NewNode<TSQLExpressionInSubQuery>(P());
  in->SetInner(Col({"x", "a"}));
  in->SetSubQuery(Stmt(SelectColumn("a", "w")));
  auto compare = NewNode<TSQLExpressionCompWithSubQuery>(P());
  auto greater = NewNode<TSQLExpressionOperatorPostfix>(P());
  greater->SetInner(Col({"x", "a"}));
  greater->SetOperator(Op(">"));
  compare->SetInner(std::move(greater));
  compare->Quantifier = TSQLExpressionCompWithSet::cqAny;
  compare->SetSubQuery(Stmt(SelectColumn("a", "w")));

  auto block = WithMode<TSQLSubQuerySelectModeDistinct>(Block(
      List(SelectExpr(Col({"x", "a"})), std::move(allOfT),
           SelectExpr(std::move(scalar), NewNode<TSQLAliasObjectAsAlias>(P(), std::string("m")))),
      From(Sources(
          Table({"t"}, "x"),
          Joined<TSQLJoinKindInner>(Table({"u"}), Bin(Col({"x", "k"}), "=", Col({"u", "k"}))),
          std::move(derived))),
      And(Items(std::move(exists), std::move(in), std::move(compare)))));
  block->SetGroupBy(GroupBy({"a"}));
  block->SetHaving(Cmp("a", ">", "1"));
  block->SetOrderBy(OrderBy({{"a", true}}));

  auto group = NewNode<TSQLSubQueryExpressions>(P());
  group->Add(SelectColumn("a", "t"));
  group->Add(Operator(SelectColumn("b", "t"), "except"));
  auto statement = Stmt<TSQLSelectStatement>(std::move(block));
  statement->Add(Operator(std::move(group), "Union", true));
  statement->SetOrderBy(OrderBy({{"a", false}}));
  return statement;
}

const char* const kRichText =
    "SELECT DISTINCT x.a, x.*, (SELECT Max(u.b)\r\nFROM u\r\nWHERE u.k=x.k) AS m\r\n"
    "FROM t x INNER JOIN\r\n u ON x.k=u.k, \r\n (SELECT 1) d (c)\r\n"
    "WHERE Exists(SELECT *\r\nFROM v\r\nWHERE v.k=x.k) And x.a IN (SELECT a\r\nFROM w) And "
    "x.a>Any(SELECT a\r\nFROM w)\r\n"
    "GROUP BY a\r\nHAVING a>1\r\nORDER BY a DESC\r\n"
    "Union ALL\r\n(SELECT a\r\nFROM t\r\nexcept\r\nSELECT b\r\nFROM t)\r\nORDER BY a";

TEST(QueryNodes, RichStatementText) {
  EXPECT_EQ(Plain(*RichStatement(), true), kRichText);
}

TEST(QueryNodes, CloneOfAStatementSharesNoNodeAndRebindsItsNames) {
  std::unique_ptr<TSQLSelectStatement> original = RichStatement();
  std::vector<TSQLFromSource*> stack;
  original->FixupObjects(stack);
  EXPECT_TRUE(stack.empty());
  std::unique_ptr<TastNode> copy = original->Clone();
  EXPECT_EQ(&copy->ClassType(), &TSQLSelectStatement::StaticClass());
  EXPECT_EQ(Plain(*copy, true), Plain(*original, true));
  EXPECT_EQ(Plain(*copy, false), Plain(*original, false));

  std::vector<TastExtender*> before, after;
  CollectNodes(*original, before);
  CollectNodes(*copy, after);
  EXPECT_EQ(before.size(), after.size());
  const std::set<TastExtender*> originalNodes(before.begin(), before.end());
  const std::set<TastExtender*> copyNodes(after.begin(), after.end());
  int bound = 0;
  for (TastExtender* node : after) {
    EXPECT_EQ(originalNodes.count(node), 0u) << node->ClassType().ClassName();
    if (auto* name = dynamic_cast<TSQLDatabaseObject*>(node)) {
      if (name->GetFromSource() != nullptr) {
        ++bound;
        EXPECT_EQ(copyNodes.count(name->GetFromSource()), 1u) << name->GetQualifiedName();
      }
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
  struct {
    std::function<void()> call;
    const char* message;
  } cases[] = {
      {[&] { proxy->Add(SelectColumn("x")); },
       "Add can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Assign(*other); }, "Assign can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Clear(); }, "Clear can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Delete(0); }, "Delete can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Extract(0); }, "Extract can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Extract(other->GetItems(0)); },
       "Extract can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->GetCount(); }, "GetCount can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->GetItems(0); }, "GetItems can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Remove(other->GetItems(0)); },
       "Remove can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->Insert(0, SelectColumn("x")); },
       "Insert can't be called with TSQLSubSelectStatementProxy"},
      {[&] { proxy->IndexOf(nullptr); },
       "IndexOf can't be called with TSQLSubSelectStatementProxy"},
  };
  for (auto& c : cases) {
    try {
      c.call();
      ADD_FAILURE() << "no exception for: " << c.message;
    } catch (const EqxError& e) {
      EXPECT_STREQ(e.what(), c.message);
    }
  }
  EXPECT_EQ(Plain(*proxy, false), "SELECT a FROM t");
}

TEST(StatementProxy, SubQueriesMoveIntoProxies) {
  std::unique_ptr<TSQLSelectStatement> statement = RichStatement();
  const std::string before = Plain(*statement, true);
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
    TSQLSubSelectStatement* held = nullptr;
    if (auto* s = dynamic_cast<TSQLExpressionSelect*>(node))
      held = s->GetSubQuery();
    else if (auto* s = dynamic_cast<TSQLExpressionInSubQuery*>(node))
      held = s->GetSubQuery();
    else if (auto* s = dynamic_cast<TSQLExpressionExists*>(node))
      held = s->GetSubQuery();
    else if (auto* s = dynamic_cast<TSQLExpressionCompWithSubQuery*>(node))
      held = s->GetSubQuery();
    else if (auto* s = dynamic_cast<TSQLFromQuery*>(node))
      held = s->GetSubQuery();
    else
      continue;
    holders.insert(std::string(node->ClassType().ClassName()));
    EXPECT_NE(dynamic_cast<TTestProxy*>(held), nullptr) << node->ClassType().ClassName();
  }
  EXPECT_EQ(proxies, 5);
  EXPECT_EQ(holders.size(), 5u);

  // A second walk leaves the proxies as they are.
  statement->MoveSubQueryInProxy(FakeOwner(), TTestProxy::ProxyStaticClass());
  nodes.clear();
  CollectNodes(*statement, nodes);
  int again = 0;
  for (TastExtender* node : nodes)
    again += dynamic_cast<TTestProxy*>(node) != nullptr;
  EXPECT_EQ(again, 5);
}

TEST(StatementProxy, AnAbstractProxyClassKeepsTheStatement) {
  auto exists = NewNode<TSQLExpressionExists>(P());
  exists->SetSubQuery(Stmt(SelectColumn("a", "t")));
  EXPECT_THROW(
      exists->MoveSubQueryInProxy(FakeOwner(), TSQLSubSelectStatementProxy::ProxyStaticClass()),
      EqxError);
  ASSERT_NE(exists->GetSubQuery(), nullptr);
  EXPECT_EQ(Plain(*exists, false), "Exists(SELECT a FROM t)");
}

}  // namespace
}  // namespace qorvex
