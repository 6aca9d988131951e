// The `model` command of qorvex-sql, run as a program.
#include <gtest/gtest.h>

#include <string>

#include "tool_runner.h"

namespace qorvex::tooltest {
namespace {

// The tool's model command on `input` given as a file.
ToolRun Model(const std::string& args, const std::string& input) {
  ToolFiles files;
  return RunTool("model " + args + " " + files.Write(input));
}

TEST(ModelTool, RegeneratesEachStatementAndReportsRejectedOnes) {
  const ToolRun run = Model("", "select a.x from a where a.x > 1 or a.y = 2;\nselect 1");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "SELECT a.x\nFROM a\nWHERE a.x>1 Or a.y=2\n;\nSELECT 1\n");
  const ToolRun oneLine = Model("--one-line", "select a.x from a join b on b.id = a.id");
  EXPECT_EQ(oneLine.out, "SELECT a.x FROM a INNER JOIN  b ON b.id=a.id\n");
  // A rejected statement is reported at its line; the others are still written.
  const ToolRun rejected = Model("", "select a.x from a;\nselect from where x");
  EXPECT_EQ(rejected.status, 1);
  EXPECT_EQ(rejected.out, "SELECT a.x\nFROM a\n");
  EXPECT_NE(rejected.err.find(":2:"), std::string::npos) << rejected.err;
  EXPECT_NE(rejected.err.find("Bad SELECT statement"), std::string::npos) << rejected.err;
  EXPECT_EQ(Model("--no-such-option", "select 1").status, 2);
  EXPECT_EQ(Model("--sqlite a.db --odbc DSN=x", "select 1").status, 2);
}

TEST(ModelTool, SummaryShowsTheModel) {
  const ToolRun run =
      Model("--one-line --summary",
            "select a.x as ax, count(*) from a left join b on a.id = b.aid and b.k = 1 "
            "where a.x > 1 or a.y = 2 group by a.x order by ax desc");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            ReadFileText(std::string(QORVEX_SOURCE_DIR) + "/tests/model/corpus/model_summary.txt"));
}

}  // namespace
}  // namespace qorvex::tooltest
