#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

// A column expression whose name node is remembered in `Out` for the checks.
Expr Ref(const Strings& Parts, TSQLObjectColumn*& Out) {
  Expr column = Col(Parts);
  Out = static_cast<TSQLExpressionColumn&>(*column).GetColumn();
  return column;
}

void Bind(TastNode& Root) {
  std::vector<TSQLFromSource*> stack;
  Root.FixupObjects(stack);
  EXPECT_TRUE(stack.empty());
}

TEST(Binding, AliasBeatsObjectNameAndUnaliasedSourcesArePreferred) {
  // Column qualifier, the two sources' tables and aliases, the source to bind, the text.
  const struct {
    Strings column;
    const char *table1, *alias1, *table2;
    int bound;
    const char* text;
  } cases[] = {{{"a", "c"}, "t", "a", "a", 0, "SELECT a.c FROM t a,  a"},
               {{"t", "c"}, "t", "x", "T", 1, "SELECT T.c FROM t x,  T"}};
  for (auto& c : cases) {
    TSQLObjectColumn* column = nullptr;
    auto sources = Sources(Table({c.table1}, c.alias1), Table({c.table2}));
    TSQLFromSource* expected = sources[c.bound].get();
    auto statement = Stmt(Block(List(SelectExpr(Ref(c.column, column))), From(std::move(sources))));
    Bind(*statement);
    EXPECT_EQ(column->GetFromSource(), expected) << c.text;
    EXPECT_EQ(Plain(*statement, false), c.text);  // bound columns use their source's name
  }
}

TEST(Binding, NamesAreWrittenAsTheirSourceIsNamed) {
  struct {
    Strings column, table;
    const char* alias;
    const char* text;
    bool bound;
  } cases[] = {
      {{"X", "c"}, {"t"}, "x", "SELECT x.c FROM t x", true},
      {{"t", "c"}, {"s", "t"}, "x", "SELECT x.c FROM s.t x", true},
      {{"T", "c"}, {"s", "t"}, nullptr, "SELECT s.t.c FROM s.t", true},
      {{"s", "t", "c"}, {"s", "t"}, nullptr, "SELECT s.t.c FROM s.t", true},
      {{"db", "s", "t", "c"}, {"t"}, nullptr, "SELECT t.c FROM t", true},
      {{"r", "t", "c"}, {"s", "t"}, nullptr, "SELECT r.t.c FROM s.t", false},
      {{"u", "c"}, {"t"}, nullptr, "SELECT u.c FROM t", false},
      {{"c"}, {"t"}, "x", "SELECT c FROM t x", false},
      {{"my t", "my c"}, {"my t"}, nullptr, "SELECT \"my t\".\"my c\" FROM \"my t\"", true},
  };
  for (auto& c : cases) {
    TSQLObjectColumn* node = nullptr;
    auto statement =
        Stmt(Block(List(SelectExpr(Ref(c.column, node))), From(Sources(Table(c.table, c.alias)))));
    Bind(*statement);
    EXPECT_EQ(Plain(*statement, false), c.text);
    EXPECT_EQ(node->GetFromSource() != nullptr, c.bound) << c.text;
  }
}

// SELECT * FROM t WHERE Exists(SELECT 1 FROM <inner> WHERE <left>=<right>)
struct Nested {
  std::unique_ptr<TSQLSubSelectStatement> statement;
  TSQLFromSource* outer = nullptr;
  TSQLFromSource* inner = nullptr;
  TSQLObjectColumn* left = nullptr;
  TSQLObjectColumn* right = nullptr;
};

Nested MakeNested(const char* InnerTable, const Strings& Left, const Strings& Right) {
  Nested n;
  auto outer = Table({"t"});
  auto inner = Table({InnerTable});
  n.outer = outer.get();
  n.inner = inner.get();
  auto exists = NewNode<TSQLExpressionExists>(P());
  exists->SetSubQuery(Stmt(Block(List(SelectExpr(Const("1"))), From(Sources(std::move(inner))),
                                 Bin(Ref(Left, n.left), "=", Ref(Right, n.right)))));
  n.statement = Stmt(Block(List(Star()), From(Sources(std::move(outer))), std::move(exists)));
  return n;
}

TEST(Binding, EnclosingBlocksAreVisibleAndTheNearestIsSearchedFirst) {
  Nested n = MakeNested("u", {"u", "id"}, {"t", "id"});
  Bind(*n.statement);
  EXPECT_EQ(n.left->GetFromSource(), n.inner);
  EXPECT_EQ(n.right->GetFromSource(), n.outer);
  Nested m = MakeNested("t", {"t", "id"}, {"t", "k"});
  Bind(*m.statement);
  EXPECT_EQ(m.left->GetFromSource(), m.inner);
  EXPECT_EQ(m.right->GetFromSource(), m.inner);
}

TEST(Binding, SiblingBlocksAreNotVisible) {
  TSQLObjectColumn* ta = nullptr;
  TSQLObjectColumn* inScalar = nullptr;
  auto statement = Stmt(Block(List(SelectExpr(Col({"a"}))), From(Sources(Table({"t"})))));
  statement->Add(Block(List(SelectExpr(Ref({"t", "a"}, ta))), From(Sources(Table({"u"})))));
  // A sub-query in the select list of a third block sees that block only.
  auto scalar = NewNode<TSQLExpressionSelect>(P());
  scalar->SetSubQuery(Stmt(Block(List(SelectExpr(Ref({"u", "a"}, inScalar))))));
  statement->Add(Block(List(SelectExpr(std::move(scalar))), From(Sources(Table({"v"})))));
  Bind(*statement);
  EXPECT_EQ(ta->GetFromSource(), nullptr);
  EXPECT_EQ(inScalar->GetFromSource(), nullptr);
}

TEST(Binding, DerivedTablesSeeTheEnclosingBlock) {
  TSQLObjectColumn* ta = nullptr;
  auto outer = Table({"t"});
  TSQLFromSource* t = outer.get();
  auto derived = NewNode<TSQLFromQuery>(P());
  derived->SetSubQuery(
      Stmt(Block(List(SelectExpr(Ref({"t", "a"}, ta))), From(Sources(Table({"u"}))))));
  derived->SetAlias(Named<TSQLAliasObjectAlias>("q"));
  auto statement = Stmt(Block(List(Star()), From(Sources(std::move(outer), std::move(derived)))));
  Bind(*statement);
  EXPECT_EQ(ta->GetFromSource(), t);
}

TEST(Binding, JoinConditionsAndTableQualifiersBind) {
  TSQLObjectColumn* left = nullptr;
  TSQLObjectColumn* right = nullptr;
  auto a = Table({"a"});
  auto b = Table({"b"}, "x");
  TSQLFromSource* sa = a.get();
  TSQLFromSource* sb = b.get();
  auto allOfB = NewNode<TSQLSelectItemAllTableColumns>(P());
  allOfB->SetQualifier(DbObj({"X"}));
  TSQLDatabaseObject* qualifier = allOfB->GetQualifier();
  auto statement = Stmt(Block(
      List(std::move(allOfB)),
      From(Sources(std::move(a),
                   Joined<TSQLJoinKindLeft>(
                       std::move(b), Bin(Ref({"a", "id"}, left), "=", Ref({"x", "id"}, right)))))));
  Bind(*statement);
  EXPECT_EQ(left->GetFromSource(), sa);
  EXPECT_EQ(right->GetFromSource(), sb);
  EXPECT_EQ(qualifier->GetFromSource(), sb);
  // The FROM objects' own names are never bound.
  auto* object = static_cast<TSQLFromObject*>(sa)->GetDatabaseObject();
  EXPECT_EQ(object->GetFromSource(), nullptr);
  EXPECT_EQ(Plain(*statement, false), "SELECT x.* FROM a LEFT JOIN  b x ON a.id=x.id");
}

TEST(Binding, UnqualifiedColumnsKeepTheirBinding) {
  TSQLObjectColumn* c = nullptr;
  auto source = Table({"t"}, "x");
  TSQLFromSource* t = source.get();
  auto statement = Stmt(Block(List(SelectExpr(Ref({"c"}, c))), From(Sources(std::move(source)))));
  Bind(*statement);
  EXPECT_EQ(c->GetFromSource(), nullptr);
  c->SetFromSource(t);
  Bind(*statement);
  EXPECT_EQ(c->GetFromSource(), t);
  EXPECT_EQ(Plain(*statement, false), "SELECT x.c FROM t x");
}

TEST(Binding, RemovedSourcesAreForgotten) {
  TSQLObjectColumn* xa = nullptr;
  TSQLObjectColumn* ub = nullptr;
  auto x = Table({"t"}, "x");
  TSQLFromSource* sx = x.get();
  auto statement =
      Stmt(Block(List(SelectExpr(Ref({"X", "a"}, xa)), SelectExpr(Ref({"u", "b"}, ub))),
                 From(Sources(std::move(x), Table({"u"})))));
  Bind(*statement);
  EXPECT_EQ(Plain(*statement, false), "SELECT x.a, u.b FROM t x,  u");
  statement->RemoveReferencesToFromSource(sx);
  EXPECT_EQ(xa->GetFromSource(), nullptr);
  EXPECT_NE(ub->GetFromSource(), nullptr);
  EXPECT_EQ(Plain(*statement, false), "SELECT X.a, u.b FROM t x,  u");
}

TEST(Binding, TreeDumpShowsBindings) {
  auto statement = Stmt(Block(List(SelectExpr(Col({"x", "a"})), SelectExpr(Col({"u", "b"}))),
                              From(Sources(Table({"t"}, "x"), Table({"s", "u"})))));
  Bind(*statement);
  EXPECT_EQ(statement->Dump(),
            "TSQLSubSelectStatement union\n"
            "  TSQLSubQuerySelectExpression union\n"
            "    TSQLSelectItems\n"
            "      TSQLSelectItemExpression\n"
            "        TSQLExpressionColumn\n"
            "          TSQLObjectColumn x.a -> x\n"
            "      TSQLSelectItemExpression\n"
            "        TSQLExpressionColumn\n"
            "          TSQLObjectColumn u.b -> s.u\n"
            "    TSQLFromClause\n"
            "      TSQLFromObject\n"
            "        TSQLAliasObjectAlias x\n"
            "        TSQLDatabaseObject t\n"
            "      TSQLFromObject\n"
            "        TSQLDatabaseObject s.u\n");
}

TEST(Binding, TheStackIsLeftAsFound) {
  auto outside = Table({"o"});
  TSQLObjectColumn* oc = nullptr;
  auto statement = Stmt(Block(List(SelectExpr(Ref({"o", "c"}, oc))), From(Sources(Table({"t"})))));
  std::vector<TSQLFromSource*> stack{outside.get()};
  statement->FixupObjects(stack);
  ASSERT_EQ(stack.size(), 1u);
  EXPECT_EQ(stack[0], outside.get());
  EXPECT_EQ(oc->GetFromSource(), outside.get());
}

TEST(Binding, CopiedExpressionsKeepTheirSources) {
  TSQLObjectColumn* xa = nullptr;
  auto x = Table({"t"}, "x");
  TSQLFromSource* sx = x.get();
  auto statement = Stmt(Block(List(SelectExpr(Ref({"x", "a"}, xa))), From(Sources(std::move(x)))));
  Bind(*statement);
  // A copy of an expression alone still refers to the statement's source.
  std::unique_ptr<TSQLObjectColumn> copy = CloneNode(*xa);
  EXPECT_EQ(copy->GetFromSource(), sx);
  EXPECT_EQ(copy->GetSimpleSQL(), "x.a");
}

}  // namespace
}  // namespace qorvex
