#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

// A parsed statement with its sources (join groups left out) and names in walk order.
struct Tree {
  std::unique_ptr<TSQLSelectStatement> statement;
  std::vector<TSQLFromSource*> sources;
  std::vector<TSQLDatabaseObject*> names;

  explicit Tree(const char* Text) : statement(Sql(Text)) {
    std::vector<TastExtender*> nodes;
    CollectNodes(*statement, nodes);
    for (TastExtender* node : nodes) {
      if (auto* source = dynamic_cast<TSQLFromSource*>(node);
          source != nullptr && dynamic_cast<TSQLFromItem*>(node) == nullptr)
        sources.push_back(source);
      if (auto* name = dynamic_cast<TSQLDatabaseObject*>(node))
        names.push_back(name);
    }
  }
  void Bind() {
    std::vector<TSQLFromSource*> stack;
    statement->FixupObjects(stack);
    EXPECT_TRUE(stack.empty());
  }
  // "name>source index" for every bound name, in walk order.
  std::string Bindings() const {
    std::string out;
    for (const TSQLDatabaseObject* name : names) {
      for (std::size_t i = 0; i < sources.size(); ++i) {
        if (name->GetFromSource() == sources[i])
          out += (out.empty() ? "" : " ") + name->GetQualifiedName() + ">" + std::to_string(i);
      }
    }
    return out;
  }
  std::string Text() const { return Plain(*statement, false); }
};

// The statement, its text once bound (bound names are written as their source is named)
// and the bindings. FROM objects' own names are never bound.
TEST(Binding, NamesFindTheirSources) {
  const struct {
    const char *text, *written, *bindings;
  } cases[] = {
      // An alias beats an object name; a source with an alias answers only to it.
      {"select a.c from t a, a", "SELECT a.c FROM t a,  a", "a.c>0"},
      {"select t.c from t x, T", "SELECT T.c FROM t x,  T", "t.c>1"},
      {"select X.c from t x", "SELECT x.c FROM t x", "X.c>0"},
      {"select t.c from s.t x", "SELECT t.c FROM s.t x", ""},
      {"select t.c from t where exists (select 1 from t x where x.c = t.c)",
       "SELECT t.c FROM t WHERE Exists(SELECT 1 FROM t x WHERE x.c=t.c)", "t.c>0 x.c>1 t.c>0"},
      {"select T.c from s.t", "SELECT s.t.c FROM s.t", "T.c>0"},
      {"select s.t.c from s.t", "SELECT s.t.c FROM s.t", "s.t.c>0"},
      {"select db.s.t.c from t", "SELECT t.c FROM t", "db.s.t.c>0"},
      {"select r.t.c from s.t", "SELECT r.t.c FROM s.t", ""},
      {"select u.c from t", "SELECT u.c FROM t", ""},
      {"select c from t x", "SELECT c FROM t x", ""},
      {"select \"my t\".\"my c\" from \"my t\"", "SELECT \"my t\".\"my c\" FROM \"my t\"",
       "my t.my c>0"},
      // Enclosing blocks are visible, the nearest searched first.
      {"select * from t where exists (select 1 from u where u.id = t.id)",
       "SELECT * FROM t WHERE Exists(SELECT 1 FROM u WHERE u.id=t.id)", "u.id>1 t.id>0"},
      {"select * from t where exists (select 1 from t where t.id = t.k)",
       "SELECT * FROM t WHERE Exists(SELECT 1 FROM t WHERE t.id=t.k)", "t.id>1 t.k>1"},
      // Sibling blocks are not; a sub-query in a select list sees its own block only.
      {"select a from t union select t.a from u union select (select u.a) from v",
       "SELECT a FROM t union SELECT t.a FROM u union SELECT (SELECT u.a) FROM v", ""},
      // Derived tables see the blocks enclosing theirs, not their siblings.
      {"select * from t, (select t.a from u) q", "SELECT * FROM t,  (SELECT t.a FROM u) q", ""},
      {"select (select q.a from (select t.a from u) q) from t",
       "SELECT (SELECT q.a FROM (SELECT t.a FROM u) q) FROM t", "q.a>0 t.a>2"},
      // Join conditions and table qualifiers.
      {"select X.* from a left join b x on a.id = x.id",
       "SELECT x.* FROM a LEFT JOIN  b x ON a.id=x.id", "X>1 a.id>0 x.id>1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Tree tree(c.text);
    tree.Bind();
    EXPECT_EQ(tree.Text(), c.written);
    EXPECT_EQ(tree.Bindings(), c.bindings);
  }
}

// Long FROM lists are searched through an index of their block; every name must find the
// source that a plain search of the same stack finds (alias before object name,
// unaliased object first, list order among equals, the inner block before the outer).
TEST(Binding, LongFromListsBindLikeAPlainSearch) {
  const std::vector<std::string> outer = {"t", "T x",     "s.t",   "u",   "s.u y", "\"T\"", "v x",
                                          "x", "db.s.t",  "w q",   "t z", "Q",     "q.t",   "u u",
                                          "y", "\"U\" Y", "m.n.t", "k",   "K k2",  "t"};
  const std::vector<std::string> inner = {"u",  "t T", "w",  "a1", "a2", "a3",    "a4", "a5",
                                          "a6", "a7",  "a8", "a9", "b",  "s.b x", "X",  "c"};
  const std::vector<std::string> names = {
      "t.c",    "T.c",     "x.c",     "X.c",  "s.t.c", "S.T.c",   "u.c",      "U.c",
      "y.c",    "Y.c",     "s.u.c",   "q.c",  "Q.c",   "q.t.c",   "db.s.t.c", "r.t.c",
      "z.c",    "n.t.c",   "k.c",     "k2.c", "K.c",   "w.c",     "b.c",      "s.b.c",
      "none.c", "m.n.t.c", "\"T\".c", "a5.c", "c.c",   "\"u\".c", "t.t.c"};
  auto list = [](const std::vector<std::string>& Items, std::size_t Skip) {
    std::string text;
    for (std::size_t i = 0; i < Items.size(); ++i)
      text += (i == 0 ? "" : ", ") + Items[(i + Skip) % Items.size()];
    return text;
  };
  auto columns = [&](const char* Separator) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
      text += (i == 0 ? "" : Separator) + names[i];
    return text;
  };
  // Rotated lists put each source at the front, the middle and the end.
  for (std::size_t skip : {0u, 7u, 13u}) {
    const std::string text = "select " + columns(", ") + " from " + list(outer, skip) +
                             " where exists (select 1 from " + list(inner, skip) + " where " +
                             columns(" = 1 and ") + " = 1)";
    SCOPED_TRACE(text);
    Tree tree(text.c_str());
    tree.Bind();
    std::vector<TSQLFromSource*> stack{nullptr};
    stack.insert(stack.end(), tree.sources.begin(), tree.sources.begin() + outer.size());
    const std::size_t outerColumns = names.size();
    std::size_t column = 0;
    for (TSQLDatabaseObject* name : tree.names) {
      if (dynamic_cast<TSQLObjectColumn*>(name) == nullptr)
        continue;
      if (column++ == outerColumns) {
        stack.push_back(nullptr);
        stack.insert(stack.end(), tree.sources.begin() + outer.size(), tree.sources.end());
      }
      TSQLFromSource* indexed = name->GetFromSource();
      name->SetFromSource(nullptr);
      name->FixupObjects(stack);
      EXPECT_EQ(indexed, name->GetFromSource())
          << name->GetQualifiedName() << (column > outerColumns ? " (inner)" : " (outer)");
    }
    EXPECT_EQ(column, 2 * names.size());
  }
}

// A binding made by hand survives binding again; a copy of a name alone keeps its source;
// removed sources are forgotten; the dump shows where each name is bound.
TEST(Binding, KeptCopiedRemovedAndDumped) {
  Tree tree("select c, X.a, u.b from t x, s.u");
  tree.Bind();
  EXPECT_EQ(tree.Bindings(), "X.a>0 u.b>1");
  tree.names[0]->SetFromSource(tree.sources[0]);
  tree.Bind();
  EXPECT_EQ(tree.Bindings(), "c>0 X.a>0 u.b>1");
  EXPECT_EQ(tree.Text(), "SELECT x.c, x.a, s.u.b FROM t x,  s.u");
  const std::string dump = tree.statement->Dump();
  EXPECT_NE(dump.find("TSQLObjectColumn X.a -> x\n"), std::string::npos) << dump;
  EXPECT_NE(dump.find("TSQLObjectColumn u.b -> s.u\n"), std::string::npos) << dump;
  std::unique_ptr<TSQLDatabaseObject> copy = CloneNode(*tree.names[1]);
  EXPECT_EQ(copy->GetFromSource(), tree.sources[0]);
  tree.statement->RemoveReferencesToFromSource(tree.sources[0]);
  EXPECT_EQ(tree.Bindings(), "u.b>1");
  EXPECT_EQ(tree.Text(), "SELECT c, X.a, s.u.b FROM t x,  s.u");
}

}  // namespace
}  // namespace qorvex
