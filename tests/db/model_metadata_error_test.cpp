// Statements about objects the database lacks load into the query model all the same:
// the datasource has no fields, the SQLite provider's message reaches OnMetadataError,
// and the SQL written back is the one a provider that knows nothing gives.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"
#include "tool_runner.h"

namespace qorvex::dbtest {
namespace {

class ModelMetadataErrorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    file_ = dir_.Path() / "shop.db";
    SQLiteExec(file_,
               "create table customers (id integer primary key, name text);"
               "create table orders (id integer primary key,"
               " customer_id integer references customers(id), total real);");
    connection_.SetFileName(file_.string());
    sqlite_.SetConnection(&connection_);
  }

  // Loads SQL into a builder on Provider; the errors it reports go to Errors as
  // "datasource: message".
  std::unique_ptr<TqxBaseQueryBuilder> Load(const std::string& SQL,
                                            TqxBaseMetadataProvider& Provider) {
    auto builder = std::make_unique<TqxBaseQueryBuilder>();
    builder->OnMetadataError = [this](TqxBaseQueryBuilder*, TqxDatasource* ADatasource,
                                      const std::string& AMessage) {
      errors_.push_back(ADatasource->GetQualifier() + ": " + AMessage);
    };
    builder->SetSyntaxProvider(&syntax_);
    builder->SetMetadataProvider(&Provider);
    builder->SetSQL(SQL);
    builder->ProcessMessages();
    return builder;
  }

  TempDir dir_;
  std::filesystem::path file_;
  TqxSQLiteConnection connection_;
  TqxSQLiteMetadataProvider sqlite_;
  TqxEventMetadataProvider nothing_;
  TqxSQL92SyntaxProvider syntax_;
  std::vector<std::string> errors_;
};

TEST_F(ModelMetadataErrorTest, UnknownTablesAndFunctionsLoadWithoutFields) {
  struct Case {
    const char* SQL;
    std::vector<std::string> Errors;
  };
  const std::string noTable = "Cannot prepare the statement: no such table: ";
  const Case cases[] = {
      {"SELECT n.x, c.name FROM nosuch n JOIN customers c ON c.id = n.cid WHERE n.x > 1",
       {"n: " + noTable + "nosuch"}},
      {"SELECT c.name, q.v FROM customers c JOIN (SELECT undefined_fn(c2.id) AS v, c2.id FROM "
       "customers c2) q ON q.id = c.id",
       {"q: Cannot prepare the statement: no such function: undefined_fn"}},
      {"SELECT * FROM gone g, (SELECT * FROM gone) h",
       {"g: " + noTable + "gone", "h: " + noTable + "gone", "gone: " + noTable + "gone"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.SQL);
    errors_.clear();
    std::unique_ptr<TqxBaseQueryBuilder> builder = Load(c.SQL, sqlite_);
    std::vector<std::string> errors = errors_;
    const std::string expected = Load(c.SQL, nothing_)->GetSQL();
    EXPECT_EQ(builder->GetSQL(), expected);
    EXPECT_EQ(Sorted(errors), Sorted(c.Errors));
  }
  // The known tables still have their fields.
  errors_.clear();
  std::unique_ptr<TqxBaseQueryBuilder> builder = Load(cases[0].SQL, sqlite_);
  std::vector<TqxDatasource*> sources = builder->GetQuery()->GetFirstOperand()->GetDatasources();
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_TRUE(sources[0]->GetFields().empty());
  EXPECT_EQ(sources[1]->GetFields(), (std::vector<std::string>{"id", "name"}));
}

TEST_F(ModelMetadataErrorTest, TheToolShowsTheErrorInTheSummary) {
  const std::string sql = "SELECT n.x FROM nosuch n";
  tooltest::ToolRun run =
      tooltest::RunTool("model --one-line --summary --sqlite '" + file_.string() + "'", sql);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')),
            Load(sql, nothing_)->GetStatementCopy()->GetSimpleSQL());
  EXPECT_NE(run.out.find("--     datasource object \"nosuch\" alias \"n\" join \"first\" fields 0\n"
                         "--       metadata error \"Cannot prepare the statement: no such table: "
                         "nosuch\"\n"),
            std::string::npos)
      << run.out;
}

}  // namespace
}  // namespace qorvex::dbtest
