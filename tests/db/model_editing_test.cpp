// Editing a query the way a user does in the designer, on a SQLite database whose
// metadata (fields, foreign keys) the model reads: every operation is one change report
// and gives the expected SQL, and the SQL runs.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/query.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"

namespace qorvex::dbtest {
namespace {

const char* const kSchema = R"sql(
create table customers (id integer primary key, name text, city text);
create table products (id integer primary key, name text, price real);
create table orders (id integer primary key, customer_id integer references customers(id),
                     total real, status text);
create table order_items (order_id integer references orders(id),
                          product_id integer references products(id), qty integer,
                          primary key (order_id, product_id));
insert into customers values (1, 'Alice', 'Oslo'), (2, 'Bert', 'Rome'), (3, 'Anna', 'Oslo');
insert into products values (1, 'Tea', 4.5), (2, 'Cake', 12.0);
insert into orders values (10, 1, 150, 'open'), (11, 2, 80, 'closed'), (12, 3, 20, 'open');
insert into order_items values (10, 1, 3), (10, 2, 1), (11, 2, 5), (12, 1, 2);
)sql";

class ModelEditingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    file_ = dir_.Path() / "edit.db";
    SQLiteExec(file_, kSchema);
    connection_.SetFileName(file_.string());
    metadata_.SetConnection(&connection_);
    builder_.SetSyntaxProvider(&syntax_);
    builder_.SetMetadataProvider(&metadata_);
    output_.OnSQLUpdated = [this](TqxBaseSQLBuilder*) { ++reports_; };
    output_.SetQueryBuilder(&builder_);
  }

  // The published statement on one line.
  std::string SQL() const {
    return output_.GetStatement() != nullptr ? output_.GetStatement()->GetSimpleSQL()
                                             : std::string();
  }

  // Runs the published SQL on the database; the number of rows.
  std::size_t Run() const { return SQLiteRows(file_, output_.GetSQL()).size(); }

  // Runs one operation and checks that it sent exactly one change report.
  template <class F>
  void Step(F&& Operation, const std::string& Expected) {
    const int before = reports_;
    Operation();
    EXPECT_EQ(reports_ - before, 1) << "reports for: " << Expected;
    EXPECT_EQ(SQL(), Expected);
  }

  TqxUnionSubQuery* Operand() { return builder_.GetQuery()->GetFirstOperand(); }

  TempDir dir_;
  std::filesystem::path file_;
  TqxSQLiteConnection connection_;
  TqxSQLiteMetadataProvider metadata_;
  TqxSQL92SyntaxProvider syntax_;
  TqxBaseQueryBuilder builder_;
  TqxSQLBuilderPlainText output_;
  int reports_ = 0;
};

TEST_F(ModelEditingTest, BuildingAJoinQueryStepByStep) {
  TqxUnionSubQuery* q = Operand();
  TqxDataSourceObject* customers = nullptr;
  TqxDataSourceObject* orders = nullptr;
  Step([&] { customers = q->AddObjectWithFK("customers"); }, "SELECT FROM customers");
  EXPECT_EQ(customers->GetFields(), (std::vector<std::string>{"id", "name", "city"}));
  const std::string join = " FROM customers INNER JOIN  orders ON customers.id=orders.customer_id";
  Step([&] { orders = q->AddObjectWithFK("orders"); }, "SELECT" + join);
  ASSERT_EQ(orders->GetJoinsCount(), 1);
  TqxLink* link = orders->GetJoins(0);
  EXPECT_EQ(link->GetLeftCardinality(), qblcOne);
  EXPECT_EQ(link->GetRightCardinality(), qblcMany);

  TqxSelectList* list = q->GetSelectList();
  Step([&] { list->AddField(customers, "name"); }, "SELECT customers.name" + join);
  Step([&] { list->AddField(orders, "total"); }, "SELECT customers.name, orders.total" + join);
  Step([&] { list->AddField(orders, "*"); },
       "SELECT customers.name, orders.total, orders.*" + join);
  EXPECT_EQ(Run(), 3u);

  // Criteria in two columns: OR between them.
  const std::string where = " WHERE orders.total>100 Or customers.name like 'B%'";
  Step([&] { list->GetItems(1)->SetCondition(0, "> 100"); },
       "SELECT customers.name, orders.total, orders.*" + join + " WHERE orders.total>100");
  Step([&] { list->GetItems(0)->SetCondition(1, "like 'B%'"); },
       "SELECT customers.name, orders.total, orders.*" + join + where);
  EXPECT_EQ(Run(), 2u);
  Step([&] { list->RemoveFields(orders, "*"); },
       "SELECT customers.name, orders.total" + join + where);

  Step([&] { link->SetJoinSides(true, false); },
       "SELECT customers.name, orders.total FROM customers LEFT JOIN  orders ON "
       "customers.id=orders.customer_id" +
           where);
  EXPECT_EQ(link->GetLeftType(), ctOuter);
  const std::string aliased =
      "SELECT c.name, orders.total FROM customers c LEFT JOIN  orders ON c.id=orders.customer_id "
      "WHERE orders.total>100 Or c.name like 'B%'";
  Step([&] { customers->SetAlias("c"); }, aliased);
  Step([&] { list->GetItems(0)->SetSortTypeName("Descending"); },
       aliased + " ORDER BY c.name DESC");
  EXPECT_EQ(Run(), 2u);

  Step([&] { q->RemoveLink(link); },
       "SELECT c.name, orders.total FROM customers c CROSS JOIN  orders WHERE orders.total>100 Or "
       "c.name like 'B%' ORDER BY c.name DESC");
  EXPECT_EQ(Run(), 5u);
  Step([&] { q->RemoveDatasource(orders); },
       "SELECT c.name FROM customers c WHERE c.name like 'B%' ORDER BY c.name DESC");
  EXPECT_EQ(Run(), 1u);
}

}  // namespace
}  // namespace qorvex::dbtest
