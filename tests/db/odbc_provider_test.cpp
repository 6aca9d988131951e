// What is particular to the ODBC provider and its connection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/metadata/odbc_provider.h"

namespace qorvex::dbtest {
namespace {

using ::testing::HasSubstr;
using Names = std::vector<std::string>;

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

}  // namespace
}  // namespace qorvex::dbtest
