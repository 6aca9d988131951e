// A statement about an object the database lacks loads into the query model all the same
// (the model tests check the datasource and OnMetadataError): the tool, on a SQLite file,
// writes the SQL a provider that knows nothing gives and shows the SQLite provider's
// message in the summary.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"
#include "tool_runner.h"

namespace qorvex::dbtest {
namespace {

class ModelMetadataErrorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    file_ = dir_.Path() / "shop.db";
    SQLiteExec(file_, "create table customers (id integer primary key, name text)");
  }

  // The SQL a builder whose provider knows nothing writes for SQL.
  std::string Unknowing(const std::string& SQL) {
    TqxSQL92SyntaxProvider syntax;
    TqxEventMetadataProvider nothing;
    TqxBaseQueryBuilder builder;
    builder.SetSyntaxProvider(&syntax);
    builder.SetMetadataProvider(&nothing);
    builder.SetSQL(SQL);
    builder.ProcessMessages();
    return builder.GetStatementCopy()->GetSimpleSQL();
  }

  TempDir dir_;
  std::filesystem::path file_;
};

TEST_F(ModelMetadataErrorTest, TheToolShowsTheErrorInTheSummary) {
  const std::string sql = "SELECT n.x FROM nosuch n";
  tooltest::ToolRun run =
      tooltest::RunTool("model --one-line --summary --sqlite '" + file_.string() + "'", sql);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')), Unknowing(sql));
  EXPECT_NE(run.out.find("--     datasource object \"nosuch\" alias \"n\" join \"first\" fields 0\n"
                         "--       metadata error \"Cannot prepare the statement: no such table: "
                         "nosuch\"\n"),
            std::string::npos)
      << run.out;
}

}  // namespace
}  // namespace qorvex::dbtest
