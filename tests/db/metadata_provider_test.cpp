// The provider contract on real databases: SQLite natively and through its ODBC driver,
// and PostgreSQL through its ODBC driver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::dbtest {
namespace {

using Names = std::vector<std::string>;
using ::testing::HasSubstr;

class ProviderTest : public ::testing::TestWithParam<Backend> {
 protected:
  void SetUp() override { db_ = TestDatabase::Create(GetParam()); }

  Backend Kind() const { return GetParam(); }
  bool IsPostgres() const { return GetParam() == Backend::PostgreSQLODBC; }
  TqxBaseMetadataProvider& Provider() { return db_->Provider(); }

  Names Tables(bool system = false) {
    Names names{"left over"};
    Provider().GetTableNames(names, system);
    return names;
  }
  Names Views() {
    Names names{"left over"};
    Provider().GetViewNames(names, false);
    return names;
  }
  Names Fields(const std::string& sql) {
    Names names{"left over"};
    Provider().GetFields(sql, names);
    return names;
  }
  Names Relations(const std::string& table) { return RelationTexts(Provider(), table); }

  TastSQL92SyntaxProvider syntax_;
  std::unique_ptr<TestDatabase> db_;
};

std::string ParamName(const ::testing::TestParamInfo<Backend>& info) {
  return BackendName(info.param);
}

// --- names -------------------------------------------------------------------------------

// Views (and sequences) are never among tables, system ones included, nor tables among
// views; names with blanks, quotes and letters beyond ASCII are kept.
TEST_P(ProviderTest, TableAndViewNames) {
  db_->Exec(
      "create table \"order items\" (id int primary key, \"say \"\"hi\"\"\" int, \"x y\" int);"
      "create table \"line items\" (id int, item int references \"order items\" (id));"
      "create view \"big items\" as select * from \"order items\";"
      "create view v_both as select a.id from \"order items\" a join \"line items\" b on a.id = "
      "b.id;"
      "create table \"größe\" (\"maß\" int)");
  if (IsPostgres())
    db_->Exec("create sequence my_seq");
  EXPECT_EQ(Sorted(Tables()), (Names{"größe", "line items", "order items"}));
  EXPECT_EQ(Sorted(Views()), (Names{"big items", "v_both"}));
  const Names system = Tables(/*system=*/true);
  for (const std::string& name : system)
    EXPECT_TRUE(name != "big items" && name != "v_both" && name != "my_seq") << name;
  // PostgreSQL's driver reports the information schema's tables as system tables.
  EXPECT_EQ(std::count(system.begin(), system.end(), "sql_features"), IsPostgres() ? 1 : 0);
  EXPECT_EQ(std::count(system.begin(), system.end(), "order items"), 1);
  EXPECT_EQ(Fields("select * from \"größe\""), Names{"maß"});
  EXPECT_EQ(Fields("select * from \"order items\""), (Names{"id", "say \"hi\"", "x y"}));
  EXPECT_EQ(Fields("select * from \"big items\" b"), (Names{"id", "say \"hi\"", "x y"}));
  EXPECT_EQ(Relations("order items"), Names{"line items(item) -> order items(id)"});
}

// --- fields ------------------------------------------------------------------------------

TEST_P(ProviderTest, FieldsComeInResultOrderForJoinsAndDerivedTables) {
  db_->Exec(
      "create table dept (id int primary key, name varchar(20));"
      "create table emp (emp_no int primary key, dept_id int, salary int, last_name "
      "varchar(20))");
  EXPECT_EQ(Fields("select * from emp"), (Names{"emp_no", "dept_id", "salary", "last_name"}));
  EXPECT_EQ(Fields("select * from dept d inner join emp e on d.id = e.dept_id"),
            (Names{"id", "name", "emp_no", "dept_id", "salary", "last_name"}));
  EXPECT_EQ(Fields("select * from (select last_name, emp_no as n, salary * 2 as double_pay "
                   "from emp) x"),
            (Names{"last_name", "n", "double_pay"}));
  EXPECT_EQ(Fields("select * from (select e.salary, d.name from emp e, dept d) as s"),
            (Names{"salary", "name"}));
}

TEST_P(ProviderTest, ReadingMetadataNeverChangesTheDatabase) {
  db_->Exec(
      "create table t (x int);"
      "create table audit (n int);"
      "insert into t values (1);"
      "insert into t values (2)");
  if (IsPostgres()) {
    db_->Exec(
        "create function touch() returns table (a int) language plpgsql as $$ begin insert "
        "into audit values (1); return query select 1; end $$");
    EXPECT_EQ(Fields("with d as (delete from t returning *) select * from d"), Names{"x"});
    EXPECT_EQ(Fields("select * from touch()"), Names{"a"});
    EXPECT_EQ(Fields("insert into t values (3) returning x, 7 as seven"), (Names{"x", "seven"}));
    Fields("delete from t");
  } else {
    // Through its ODBC driver SQLite describes no result for these; natively it does.
    Names returning = Fields("insert into t values (3) returning x, 7 as seven");
    if (Kind() == Backend::SQLiteNative) {
      EXPECT_EQ(returning, (Names{"x", "seven"}));
    }
    Fields("delete from t");
    Fields("insert into audit select x from t");
    Fields("drop table audit");
  }
  EXPECT_EQ(db_->Scalar("select count(*) from t"), "2");
  EXPECT_EQ(db_->Scalar("select count(*) from audit"), "0");
}

// The message of a rejected statement reaches the caller (with the SQLSTATE through ODBC),
// and the connection stays usable.
TEST_P(ProviderTest, StatementsTheDatabaseRejectsRaiseItsMessage) {
  db_->Exec("create table t (x int)");
  Names fields{"left over"};
  EXPECT_THAT(ErrorOf([&] { Provider().GetFields("select * from no_such_table", fields); }),
              HasSubstr(IsPostgres() ? "relation \"no_such_table\" does not exist"
                                     : "no such table: no_such_table"));
  EXPECT_TRUE(fields.empty());
  const std::string error =
      ErrorOf([&] { Provider().GetFields("select * from t where x = = 1", fields); });
  EXPECT_THAT(error, HasSubstr("syntax error"));
  if (IsPostgres()) {
    EXPECT_THAT(error, HasSubstr("SQLSTATE 42601"));
  }
  EXPECT_EQ(Fields("select 1 as one, 'x' as \"two words\""), (Names{"one", "two words"}));
}

// --- relations ---------------------------------------------------------------------------

// A two-column key is one relation, its columns in key order; two one-column keys between
// the same tables are two; keys referring to a table come first, ordered by table, then the
// table's own keys; a self-reference shows in each pass; a key without referenced columns
// refers to the primary key. Only the object part of a name is used and results are
// appended to what the list holds.
TEST_P(ProviderTest, RelationsOfEveryKindOfKey) {
  db_->Exec(
      "create table p (x int, y int, z int, primary key (x, y));"
      "create table q (a int, b int, c int, constraint k_xy foreign key (b, a) "
      "references p (x, y));"
      "create table p2 (x int primary key, z int unique);"
      "create table q2 (a int, c int, constraint k1 foreign key (a) references p2 (x),"
      " constraint k2 foreign key (c) references p2 (z));"
      "create table hub (id int primary key);"
      "create table zulu (id int primary key);"
      "create table alpha (id int primary key);"
      "create table middle (id int primary key, zulu_id int references zulu (id),"
      " hub_id int references hub (id), alpha_id int references alpha (id));"
      "create table zz_user (m int references middle (id));"
      "create table aa_user (m int references middle (id));"
      "create table node (id int primary key, parent int references node (id));"
      "create table p3 (k2 int, k1 int, primary key (k2, k1));"
      "create table q3 (a int, b int, s int references hub, foreign key (a, b) references p3)");
  EXPECT_EQ(Relations("p"), Names{"q(b,a) -> p(x,y)"});
  EXPECT_EQ(Relations("q"), Names{"q(b,a) -> p(x,y)"});
  EXPECT_TRUE(Relations("nothing here").empty());
  // PostgreSQL names the keys, and the rows are ordered by name; SQLite's keys have no
  // names and come in its own order.
  const Names two{"q2(a) -> p2(x)", "q2(c) -> p2(z)"};
  EXPECT_EQ(IsPostgres() ? Relations("p2") : Sorted(Relations("p2")), two);
  EXPECT_EQ(IsPostgres() ? Relations("q2") : Sorted(Relations("q2")), two);
  EXPECT_EQ(Relations("middle"),
            (Names{"aa_user(m) -> middle(id)", "zz_user(m) -> middle(id)",
                   "middle(alpha_id) -> alpha(id)", "middle(hub_id) -> hub(id)",
                   "middle(zulu_id) -> zulu(id)"}));
  EXPECT_EQ(Relations("node"), (Names{"node(parent) -> node(id)", "node(parent) -> node(id)"}));
  EXPECT_EQ(Sorted(Relations("q3")), (Names{"q3(a,b) -> p3(k2,k1)", "q3(s) -> hub(id)"}));

  auto name = NewNode<TSQLDatabaseObject>(&syntax_);
  name->AddName("some_catalog");
  name->AddName("some_schema");
  name->AddName("p");
  TSQLMetadataRelations relations;
  relations.push_back(std::make_unique<TSQLMetadataRelation>());
  Provider().GetTableRelations(*name, relations);
  ASSERT_EQ(relations.size(), 2u);
  EXPECT_EQ(relations[0]->PKTable, nullptr);
  EXPECT_EQ(relations[1]->FKTable->GetObjName(), "q");
  EXPECT_EQ(relations[1]->PKColumns, (Names{"x", "y"}));
}

INSTANTIATE_TEST_SUITE_P(Databases, ProviderTest,
                         ::testing::Values(Backend::SQLiteNative, Backend::SQLiteODBC,
                                           Backend::PostgreSQLODBC),
                         ParamName);

}  // namespace
}  // namespace qorvex::dbtest
