// What is particular to the ODBC provider and its connection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/metadata/odbc_provider.h"

namespace qorvex::dbtest {
namespace {

using ::testing::HasSubstr;
using Names = std::vector<std::string>;

bool Contains(const Names& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string OpenError(const std::string& connection_string) {
  TqxODBCConnection connection(connection_string);
  const std::string error = ErrorOf([&] { connection.Open(); });
  EXPECT_FALSE(connection.IsOpen());
  return error;
}

TEST(ODBCConnection, FailuresCarryTheDriversDiagnostics) {
  // Nothing listens on a port that was free a moment ago.
  std::string refused =
      OpenError("Driver=" + PostgreSQLODBCDriver() + ";Server=127.0.0.1;Port=1;Database=x;Uid=x;");
  EXPECT_THAT(refused, HasSubstr("Cannot open the ODBC connection: "));
  EXPECT_THAT(refused, HasSubstr("Connection refused"));
  EXPECT_THAT(refused, HasSubstr("(SQLSTATE 08001)"));

  std::string no_driver = OpenError("Driver={No Such Driver};Database=x;");
  EXPECT_THAT(no_driver, HasSubstr("[unixODBC][Driver Manager]"));
  EXPECT_THAT(no_driver, HasSubstr("SQLSTATE"));

  EXPECT_THAT(OpenError(""), HasSubstr("the connection string is empty"));
}

TEST(ODBCConnection, OpensClosesAndReopensWithANewString) {
  PostgresServer& pg = PostgresServer::Instance();
  TqxODBCConnection connection(pg.ConnectionString("postgres"));
  EXPECT_FALSE(connection.IsOpen());
  connection.Open();
  ASSERT_TRUE(connection.IsOpen());
  EXPECT_NE(connection.GetHandle(), nullptr);
  connection.Open();  // already open: nothing happens
  EXPECT_TRUE(connection.IsOpen());

  connection.SetConnectionString(pg.ConnectionString("no_such_database"));
  EXPECT_FALSE(connection.IsOpen());
  EXPECT_THAT(ErrorOf([&] { connection.Open(); }),
              HasSubstr("database \"no_such_database\" does not exist"));
  connection.Close();
  EXPECT_EQ(connection.GetHandle(), nullptr);
}

TEST(ODBCMetadataProvider, SystemTablesOnlyWithSystemAndNoOtherTypes) {
  PostgresServer& pg = PostgresServer::Instance();
  const std::string database = pg.CreateDatabase();
  ODBCExec(pg.ConnectionString(database),
           "create table mine (id int); create view my_view as select * from mine;"
           "create sequence my_seq");
  TqxODBCConnection connection(pg.ConnectionString(database));
  TqxODBCMetadataProvider provider(&connection);

  Names user{"left over"};
  provider.GetTableNames(user, false);
  EXPECT_EQ(user, Names{"mine"});

  // The driver reports the information schema's tables as "SYSTEM TABLE".
  Names all;
  provider.GetTableNames(all, true);
  EXPECT_TRUE(Contains(all, "mine"));
  EXPECT_TRUE(Contains(all, "sql_features"));
  EXPECT_GT(all.size(), 10u);
  EXPECT_FALSE(Contains(all, "my_view"));
  EXPECT_FALSE(Contains(all, "my_seq"));

  Names views;
  provider.GetViewNames(views, true);
  EXPECT_EQ(views, Names{"my_view"});
}

}  // namespace
}  // namespace qorvex::dbtest
