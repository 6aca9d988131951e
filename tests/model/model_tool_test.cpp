// The `model` command of qorvex-sql, run as a program.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct ToolRun {
  int status;
  std::string out;
  std::string err;
};

class ModelTool : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("qorvex-model-" + std::to_string(::getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  ToolRun Run(const std::string& args, const std::string& input) {
    const std::filesystem::path in = dir_ / "input.sql";
    std::ofstream(in, std::ios::binary) << input;
    const std::string command = std::string(QORVEX_TOOL) + " model " + args + " " + in.string() +
                                " 2>" + (dir_ / "err.txt").string();
    FILE* pipe = ::popen(command.c_str(), "r");
    EXPECT_NE(pipe, nullptr);
    std::string out;
    char chunk[4096];
    while (std::size_t n = std::fread(chunk, 1, sizeof chunk, pipe))
      out.append(chunk, n);
    const int status = ::pclose(pipe);
    std::ifstream err(dir_ / "err.txt");
    std::stringstream ss;
    ss << err.rdbuf();
    return ToolRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, out, ss.str()};
  }

  std::filesystem::path dir_;
};

TEST_F(ModelTool, RegeneratesEachStatementAsFormatDoes) {
  const ToolRun run = Run("", "select a.x from a where a.x > 1 or a.y = 2;\nselect 1");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "SELECT a.x\nFROM a\nWHERE a.x>1 Or a.y=2\n;\nSELECT 1\n");
  const ToolRun oneLine = Run("--one-line", "select a.x from a join b on b.id = a.id");
  EXPECT_EQ(oneLine.out, "SELECT a.x FROM a INNER JOIN  b ON b.id=a.id\n");
}

TEST_F(ModelTool, SummaryShowsTheModel) {
  const ToolRun run =
      Run("--one-line --summary",
          "select a.x as ax, count(*) from a left join b on a.id = b.aid and b.k = 1 "
          "where a.x > 1 or a.y = 2 group by a.x order by ax desc");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(
      run.out,
      "SELECT a.x AS ax, count(*) FROM a LEFT JOIN  b ON a.id=b.aid And b.k=1 WHERE a.x>1 Or a.y=2 "
      "GROUP BY a.x ORDER BY ax DESC\n"
      "-- query \"Main Query\"\n"
      "--   operand Q1\n"
      "--     datasource object \"a\" alias \"\" join \"first\" fields 0\n"
      "--     datasource object \"b\" alias \"\" join \"LEFT JOIN\" fields 0\n"
      "--       link a.id - b.aid join \"LEFT JOIN\" cardinality unknown:unknown outer left:- on "
      "\"a.id=b.aid\"\n"
      "--       link a - b join \"LEFT JOIN\" cardinality unknown:unknown outer left:- on "
      "\"b.k=1\"\n"
      "--     row 1: output yes expression \"a.x\" alias \"ax\" sort \"Descending\" order \"1\" "
      "group "
      "\"Group By\" criteria []\n"
      "--     row 2: output yes expression \"count(*)\" alias \"\" sort \"\" order \"\" group "
      "\"Aggregate\" criteria []\n"
      "--     row 3: output no expression \"a.x\" alias \"\" sort \"\" order \"\" group \"Where\" "
      "criteria [\">1\"]\n"
      "--     row 4: output no expression \"a.y\" alias \"\" sort \"\" order \"\" group \"Where\" "
      "criteria [\"\", \"=2\"]\n");
}

TEST_F(ModelTool, RejectedStatementsAndMisuse) {
  const ToolRun run = Run("", "select a.x from a;\nselect from where x");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "SELECT a.x\nFROM a\n");
  EXPECT_NE(run.err.find(":2:"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("Bad SELECT statement"), std::string::npos) << run.err;
  EXPECT_EQ(Run("--no-such-option", "select 1").status, 2);
  EXPECT_EQ(Run("--sqlite a.db --odbc DSN=x", "select 1").status, 2);
}

}  // namespace
