// The `tokens` command of qorvex-sql, run as a program.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tool_runner.h"

namespace qorvex::tooltest {
namespace {

class TokensTool : public ::testing::Test {
 protected:
  std::string Write(const std::string& text) { return files_.Write(text); }
  ToolFiles files_;
};

// One line per token: kind, line, column, position and the text with TABs, line breaks,
// backslashes and control characters escaped; the end token last.
TEST_F(TokensTool, OneLinePerTokenWithEscapedText) {
  const struct {
    std::string input;
    const char* out;
  } cases[] = {
      {"SELECT 'a\tb', x\r\n  FROM [t] -- rest\r\nignored",
       "23\t1\t1\t0\tSELECT\n"
       "7\t1\t8\t7\t'a\\tb'\n"
       "12\t1\t13\t12\t,\n"
       "4\t1\t15\t14\tx\n"
       "30\t2\t3\t18\tFROM\n"
       "5\t2\t8\t23\t[t]\n"
       "0\t3\t8\t42\tEOF\n"},
      {std::string("'\\\n\x01'\x7f", 6),
       "7\t1\t1\t0\t'\\\\\\n\\x01'\n"
       "178\t2\t3\t5\t\\x7f\n"
       "0\t2\t4\t6\tEOF\n"},
      {"", "0\t1\t1\t0\tEOF\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.input);
    const ToolRun run = RunTool("tokens " + Write(c.input));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, c.out);
  }
  // Standard input, also when named "-".
  const char* const fromStdin = "4\t1\t1\t0\ta\n9\t1\t2\t1\t;\n4\t1\t3\t2\tb\n0\t1\t4\t3\tEOF\n";
  EXPECT_EQ(RunTool("tokens", "a;b").out, fromStdin);
  EXPECT_EQ(RunTool("tokens -", "a;b").out, fromStdin);
}

TEST_F(TokensTool, Misuse) {
  ToolRun run = RunTool("tokens --bogus");
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("unknown option --bogus"), std::string::npos);
  EXPECT_EQ(RunTool("tokens a.sql b.sql").status, 2);
  run = RunTool("tokens " + (files_.Dir() / "missing.sql").string());
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("cannot read"), std::string::npos);
}

// Statements scanned one by one must report the same places as the whole input: the
// whole-input listing with each ";" token as a separator line and without the end token.
TEST_F(TokensTool, StatementsKeepWholeInputPositions) {
  const std::string inputs[] = {
      "select a from t;\r\n  select b, 'x;y'\r\n from [u;v]\r\n where c = 1",
      ";; select 1 ;\n\n;\r\n\tselect \"q\"\"\" ; ",
      "select \xc3\xa9t\xc3\xa9 from t ; select 2 -- tail ; select 3\r\nmore",
      "x",
      "",
      ";",
  };
  for (const std::string& input : inputs) {
    SCOPED_TRACE(input);
    const std::string file = Write(input);
    const ToolRun whole = RunTool("tokens " + file);
    const ToolRun split = RunTool("tokens --statements " + file);
    ASSERT_EQ(whole.status, 0);
    ASSERT_EQ(split.status, 0);
    std::string expected;
    bool pendingSeparator = false;
    bool any = false;
    std::istringstream lines(whole.out);
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("0\t", 0) == 0)
        break;  // the end token
      if (line.rfind("9\t", 0) == 0) {
        pendingSeparator = any;
        continue;
      }
      if (pendingSeparator)
        expected += ";\n";
      pendingSeparator = false;
      any = true;
      expected += line + "\n";
    }
    EXPECT_EQ(split.out, expected);
  }
}

}  // namespace
}  // namespace qorvex::tooltest
