// What is particular to the native SQLite provider and its connection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/metadata/sqlite_provider.h"

namespace qorvex::dbtest {
namespace {

using ::testing::HasSubstr;
using Names = std::vector<std::string>;

class SQLiteProviderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    file_ = dir_.Path() / "test.db";
    connection_.SetFileName(file_.string());
    provider_.SetConnection(&connection_);
  }
  Names Relations(const std::string& table) { return Sorted(RelationTexts(provider_, table)); }

  TempDir dir_;
  std::filesystem::path file_;
  TqxSQLiteConnection connection_;
  TqxSQLiteMetadataProvider provider_;
};

TEST_F(SQLiteProviderTest, ImplicitKeysFollowThePrimaryKeyOrderAndBrokenKeysAreLeftOut) {
  SQLiteExec(file_,
             "create table p (k1 int, k2 int, primary key (k2, k1));"
             "create table nokey (v int);"
             "create table q (a int, b int, c int, d int,"
             " foreign key (a, b) references p,"      // p's key, in key order
             " foreign key (c) references p,"         // too narrow: unusable
             " foreign key (d) references nokey,"     // no primary key: unusable
             " foreign key (d) references gone (x))"  // missing table, named column: kept
  );
  EXPECT_EQ(Relations("q"), (Names{"q(a,b) -> p(k2,k1)", "q(d) -> gone(x)"}));
  EXPECT_EQ(Relations("p"), Names{"q(a,b) -> p(k2,k1)"});
}

// Keys referring to a table come by referring table, a table's own by referenced table;
// the keys read once are read again when the schema changes, also through another
// connection.
TEST_F(SQLiteProviderTest, RelationsComeInOrderAndFollowSchemaChanges) {
  SQLiteExec(file_,
             "create table p (id int primary key);"
             "create table zeta (pid int references p (id));"
             "create table alpha (qid int references q (id), pid int references P (id));"
             "create table q (id int primary key, pid int references p (id))");
  EXPECT_EQ(RelationTexts(provider_, "p"),
            (Names{"alpha(pid) -> p(id)", "q(pid) -> p(id)", "zeta(pid) -> p(id)"}));
  EXPECT_EQ(RelationTexts(provider_, "ALPHA"),
            (Names{"alpha(pid) -> p(id)", "alpha(qid) -> q(id)"}));
  EXPECT_EQ(RelationTexts(provider_, "q"), (Names{"alpha(qid) -> q(id)", "q(pid) -> p(id)"}));
  EXPECT_EQ(RelationTexts(provider_, "none"), Names{});
  // A text without a statement has no fields.
  Names fields{"left over"};
  provider_.GetFields("  -- nothing\n", fields);
  EXPECT_TRUE(fields.empty());
  SQLiteExec(file_,
             "drop table zeta;"
             "create table beta (pid int references p (id))");
  EXPECT_EQ(RelationTexts(provider_, "p"),
            (Names{"alpha(pid) -> p(id)", "beta(pid) -> p(id)", "q(pid) -> p(id)"}));
  // Another database through the same connection.
  const std::filesystem::path other = dir_.Path() / "other.db";
  SQLiteExec(other, "create table p (id int primary key); create table c (x int references p)");
  connection_.SetFileName(other.string());
  EXPECT_EQ(RelationTexts(provider_, "p"), Names{"c(x) -> p(id)"});
}

TEST_F(SQLiteProviderTest, OpenFailuresCarrySQLitesMessage) {
  TqxSQLiteConnection missing((dir_.Path() / "missing.db").string());
  const std::string error = ErrorOf([&] { missing.Open(); });
  EXPECT_THAT(error, HasSubstr("unable to open database file"));
  EXPECT_THAT(error, HasSubstr("missing.db"));
  EXPECT_FALSE(std::filesystem::exists(dir_.Path() / "missing.db"));

  std::ofstream(dir_.Path() / "junk.db") << std::string(4096, 'x');
  TqxSQLiteConnection junk((dir_.Path() / "junk.db").string());
  TqxSQLiteMetadataProvider provider(&junk);
  Names names;
  EXPECT_THAT(ErrorOf([&] { provider.GetTableNames(names, false); }),
              HasSubstr("file is not a database"));

  TqxSQLiteConnection unnamed;
  EXPECT_THROW(unnamed.Open(), EqxError);
}

TEST_F(SQLiteProviderTest, AGivenHandleIsUsedButNotClosed) {
  SQLiteExec(file_, "create table t (a int)");
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(file_.c_str(), &db), SQLITE_OK);
  {
    TqxSQLiteConnection connection(db);
    TqxSQLiteMetadataProvider provider(&connection);
    Names names;
    provider.GetTableNames(names, false);
    EXPECT_EQ(names, Names{"t"});
    EXPECT_EQ(connection.GetHandle(), db);
  }
  // Still open: the application owns it.
  EXPECT_EQ(sqlite3_exec(db, "create table u (b int)", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
}

}  // namespace
}  // namespace qorvex::dbtest
