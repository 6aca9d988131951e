// The Connection property of both database providers: free notification and the
// behaviour without a connection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/metadata/odbc_provider.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex {
namespace {

using ::testing::HasSubstr;
using Names = std::vector<std::string>;

template <class P, class C>
struct Pair {
  using Provider = P;
  using Connection = C;
};
using Pairs = ::testing::Types<Pair<TqxSQLiteMetadataProvider, TqxSQLiteConnection>,
                               Pair<TqxODBCMetadataProvider, TqxODBCConnection>>;

template <class T>
class ConnectionPropertyTest : public ::testing::Test {};
TYPED_TEST_SUITE(ConnectionPropertyTest, Pairs);

// Destroying the connection clears the property; a connection no longer followed, or a
// provider destroyed first, is not told (the sanitizer build checks the latter).
TYPED_TEST(ConnectionPropertyTest, DestroyingEitherSideLeavesNoDanglingReference) {
  using Provider = typename TypeParam::Provider;
  using Connection = typename TypeParam::Connection;
  Provider provider;
  auto first = std::make_unique<Connection>();
  auto second = std::make_unique<Connection>();
  provider.SetConnection(first.get());
  provider.SetConnection(second.get());
  first.reset();
  auto gone = std::make_unique<Provider>(second.get());
  gone.reset();
  EXPECT_EQ(provider.GetConnection(), second.get());
  second.reset();
  EXPECT_EQ(provider.GetConnection(), nullptr);
}

TYPED_TEST(ConnectionPropertyTest, WithoutConnectionNamesFailAndTheRestIsEmpty) {
  using Provider = typename TypeParam::Provider;
  Provider provider;
  Names names{"left over"};
  EXPECT_THAT(dbtest::ErrorOf([&] { provider.GetTableNames(names, false); }),
              HasSubstr("Connection property is not set"));
  EXPECT_TRUE(names.empty());
  EXPECT_THROW(provider.GetViewNames(names, false), EqxError);

  names = {"left over"};
  provider.GetFields("select * from t", names);
  EXPECT_TRUE(names.empty());

  TastSQL92SyntaxProvider syntax;
  auto table = NewNode<TSQLDatabaseObject>(&syntax);
  table->AddName("t");
  TSQLMetadataRelations relations;
  relations.push_back(std::make_unique<TSQLMetadataRelation>());
  provider.GetTableRelations(*table, relations);
  EXPECT_EQ(relations.size(), 1u);
}

}  // namespace
}  // namespace qorvex
