#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/metadata_provider.h"
#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

// The FROM clause of "select * from <Text>", and its first source.
std::unique_ptr<TSQLFromClause> Clause(const std::string& Text) {
  return static_cast<TSQLSubQuerySelectExpression*>(Sql("select * from " + Text)->GetItems(0))
      ->ExtractFromClause();
}
std::unique_ptr<TSQLFromSource> Source(const std::string& Text) {
  return Clause(Text)->Extract(0);
}

// Alias, join kind and source classes by hand; joined items as parsed.
const TextCase kFrom[] = {
    {"alias", [] { return Named<TSQLAlias>("x"); }, "x", nullptr, "<i>x</i>"},
    {"object alias", [] { return Named<TSQLAliasObjectAlias>("my x"); }, "\"my x\"", nullptr,
     "<i>\"my x\"</i>"},
    {"AS alias", [] { return Named<TSQLAliasObjectAsAlias>("x"); }, "AS x", nullptr,
     "<b>as</b> <i>x</i>"},
    {"alias-equals form writes the name", [] { return Named<TSQLAliasAliasEqualsObject>("x"); },
     "x", nullptr, nullptr},
    // The leading space of a join kind collapses at the start of a text.
    {"cross join", [] { return JoinKind<TSQLJoinKindCross>(); }, "CROSS JOIN", nullptr,
     "<b>cross</b> <b>join</b>"},
    {"left outer join", [] { return JoinKind<TSQLJoinKindLeft>(true); }, "LEFT OUTER JOIN", nullptr,
     "<b>left</b> <b>outer</b> <b>join</b>"},
    {"table",
     [] {
       return Table({"s", "t"});
     },
     "s.t", nullptr, "<i>s</i><font color=#7f7fff>.</font><i>t</i>"},
    {"derived table with AS and quoted column aliases",
     [] { return Source("(select 1) as x (c, \"d e\")"); }, "(SELECT 1) AS x (c, \"d e\")", nullptr,
     nullptr},
    {"built-in function",
     [] {
       auto source = NewNode<TSQLFromBuiltInFunction>(P());
       source->SetFunction(Function("dual"));
       return source;
     },
     "dual()", nullptr, nullptr},
    {"table variable",
     [] {
       auto source = NewNode<TSQLFromVariable>(P());
       source->VariableName = "tv";
       return source;
     },
     "tv", nullptr, nullptr},
    // Two spaces before a joined source on one line, a line break and one space on many.
    {"inner join with alias and ON", [] { return Sql("select * from a join b x on a.id = x.id"); },
     "SELECT * FROM a INNER JOIN  b x ON a.id=x.id",
     "SELECT *\r\nFROM a INNER JOIN\r\n b x ON a.id=x.id",
     "<b>select</b> <font color=#7f7fff>*</font> <b>from</b> <i>a</i> <b>inner</b> <b>join</b>  "
     "<i>b</i> <i>x</i> <b>on</b> <i>a</i><font color=#7f7fff>.</font><i>id</i><font "
     "color=#7f7fff>=</font><i>x</i><font color=#7f7fff>.</font><i>id</i>"},
    {"comma-separated sources", [] { return From(Sources(Table({"a"}), Table({"b"}))); }, "a,  b",
     "a, \r\n b", nullptr},
    {"three sources, left outer and cross",
     [] { return Sql("select * from a left outer join b on a.id = b.id cross join c"); },
     "SELECT * FROM a LEFT OUTER JOIN  b ON a.id=b.id CROSS JOIN  c",
     "SELECT *\r\nFROM a LEFT OUTER JOIN\r\n b ON a.id=b.id CROSS JOIN\r\n c", nullptr},
    {"nested join group is bracketed",
     [] { return Sql("select * from a full join (b right join c on b.k = c.k) on a.k = b.k"); },
     "SELECT * FROM a FULL JOIN  (b RIGHT JOIN  c ON b.k=c.k) ON a.k=b.k",
     "SELECT *\r\nFROM a FULL JOIN\r\n (b RIGHT JOIN\r\n c ON b.k=c.k) ON a.k=b.k", nullptr},
    {"empty FROM clause writes nothing", [] { return From(Sources()); }, "", nullptr, ""},
};

class FromText : public testing::TestWithParam<TextCase> {};
TEST_P(FromText, WritesExactlyItsText) {
  CheckText(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Nodes, FromText, testing::ValuesIn(kFrom), CaseName);

TEST(FromSources, ItemListOperations) {
  auto item = From<TSQLFromItem>(Sources(Table({"a"}), Table({"b"})));
  TSQLFromSource* b = item->GetItems(1);
  item->Insert(0, Table({"c"}));
  EXPECT_EQ(Plain(*item, false), "c,  a,  b");
  EXPECT_EQ(item->IndexOf(b), 2);
  EXPECT_EQ(item->Extract(b).get(), b);
  EXPECT_EQ(item->IndexOf(b), -1);
  EXPECT_EQ(item->Extract(b), nullptr);
  item->Delete(0);
  EXPECT_EQ(Plain(*item, false), "a");
  EXPECT_THROW(item->GetItems(1), EqxError);
  EXPECT_THROW(item->Insert(3, Table({"d"})), EqxError);
  EXPECT_THROW(item->Extract(-1), EqxError);
}

// Answers field questions from a fixed list and records every question.
class RecordingMetadata : public TqxBaseMetadataProvider {
 public:
  Strings Asked;
  Strings Answer{"f1", "f2"};
  void GetTableNames(Strings&, bool) override {}
  void GetViewNames(Strings&, bool) override {}
  void GetFields(const std::string& SQL, Strings& FieldNames) override {
    Asked.push_back(SQL);
    FieldNames = Answer;
  }
  void GetTableRelations(const TSQLDatabaseObject&, TSQLMetadataRelations&) override {}
};

TEST(FieldLists, QuestionsAskedOfTheMetadataProvider) {
  std::vector<std::pair<std::unique_ptr<TSQLFromSource>, const char*>> cases;
  cases.emplace_back(Source("s.[my t] as x"), "select * from s.\"my t\" AS x");
  cases.emplace_back(Source("(select 1) x (c, d)"), "select * from (SELECT 1) x (c, d)");
  cases.emplace_back(Source("(select 1) x"), "select * from (SELECT 1) x");
  cases.emplace_back(Source("(select 1) x (c)"), "select * from (SELECT 1) (c)");
  cases.back().first->SetAlias(nullptr);
  for (auto& [source, question] : cases) {
    RecordingMetadata metadata;
    source->Fields = {"stale"};
    source->RefreshFieldsList(&metadata);
    EXPECT_EQ(metadata.Asked, Strings{question});
    EXPECT_EQ(source->Fields, metadata.Answer);
    source->RefreshFieldsList(nullptr);
    EXPECT_TRUE(source->Fields.empty());
  }
}

TEST(FieldLists, RecursiveRefreshAsksChildrenFirstAndSkipsJoinGroups) {
  auto clause = Clause("t1, (select a from t2, t3) q, (t4 join t5 on 1 = 1)");
  RecordingMetadata metadata;
  clause->RefreshFieldsListRecursive(&metadata);
  const Strings expected{"select * from t1", "select * from t2",
                         "select * from t3", "select * from (SELECT a FROM t2,  t3) q",
                         "select * from t4", "select * from t5"};
  EXPECT_EQ(metadata.Asked, expected);
  EXPECT_TRUE(clause->Fields.empty());
  EXPECT_TRUE(clause->GetItems(2)->Fields.empty());
  EXPECT_EQ(clause->GetItems(1)->Fields, metadata.Answer);
}

}  // namespace
}  // namespace qorvex
