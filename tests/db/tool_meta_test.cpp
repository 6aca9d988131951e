// The `meta` command of qorvex-sql on SQLite files, natively and through ODBC.
#include <gtest/gtest.h>

#include <string>

#include "db_fixture.h"
#include "tool_runner.h"

namespace qorvex::dbtest {
namespace {

using tooltest::RunTool;
using tooltest::ToolRun;

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s)
    q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

class ToolMetaTest : public ::testing::Test {
 protected:
  void SetUp() override {
    file_ = (dir_.Path() / "shop.db").string();
    SQLiteExec(file_,
               "create table customer (id integer primary key autoincrement, name text);"
               "create table orders (no int, cust int, line int, primary key (no, line),"
               " foreign key (cust) references customer (id));"
               "create table shipment (order_no int, order_line int,"
               " foreign key (order_no, order_line) references orders (no, line));"
               "create view big_orders as select * from orders where no > 100");
  }
  std::string Sqlite() const { return "meta --sqlite " + Quote(file_) + " "; }

  TempDir dir_;
  std::string file_;
};

// Natively and through the ODBC driver alike.
TEST_F(ToolMetaTest, AnswersEachQuestionOneItemPerLine) {
  const std::string odbc =
      "meta --odbc " + Quote("Driver=" + SQLiteODBCDriver() + ";Database=" + file_ + ";") + " ";
  for (const std::string& meta : {Sqlite(), odbc}) {
    SCOPED_TRACE(meta);
    EXPECT_EQ(RunTool(meta + "views").out, "big_orders\n");
    EXPECT_EQ(RunTool(meta + "fields " + Quote("select * from big_orders b, customer")).out,
              "no\ncust\nline\nid\nname\n");
    ToolRun relations = RunTool(meta + "relations orders");
    EXPECT_EQ(relations.status, 0);
    EXPECT_EQ(relations.out,
              "shipment(order_no,order_line) -> orders(no,line)\n"
              "orders(cust) -> customer(id)\n");
  }
  EXPECT_EQ(RunTool(Sqlite() + "tables").out, "customer\norders\nshipment\n");
  EXPECT_EQ(RunTool(Sqlite() + "--system tables").out,
            "customer\nsqlite_sequence\norders\nshipment\n");
}

TEST_F(ToolMetaTest, ErrorsAndMisuseHaveTheirExitStatus) {
  EXPECT_EQ(RunTool(Sqlite() + "fields " + Quote("select * from nowhere")).status, 1);
  EXPECT_EQ(RunTool("meta --sqlite " + Quote(file_ + ".missing") + " tables").status, 1);
  for (const char* misuse :
       {"meta tables", "meta --sqlite", "meta --sqlite x.db", "meta --sqlite x.db colours",
        "meta --sqlite x.db fields", "meta --sqlite x.db tables extra",
        "meta --sqlite x.db --system views", "meta --sqlite a.db --odbc b tables"})
    EXPECT_EQ(RunTool(misuse).status, 2) << misuse;
}

}  // namespace
}  // namespace qorvex::dbtest
