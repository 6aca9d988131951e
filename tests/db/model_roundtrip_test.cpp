// Statements loaded into the query model and written back must mean what they meant:
// on a SQLite database filled by the test, the original and the regenerated statement
// return the same rows (in the same order when the statement is sorted), and the
// regenerated text loads and regenerates to itself.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/core/errors.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"

namespace qorvex::dbtest {
namespace {

const char* const kSchema = R"sql(
create table regions (id integer primary key, name text not null);
create table countries (id integer primary key, region_id integer references regions(id),
                        name text not null, population integer);
create table customers (id integer primary key, country_id integer references countries(id),
                        name text, segment text, credit real);
create table employees (id integer primary key, manager_id integer references employees(id),
                        country_id integer references countries(id), name text, salary integer);
create table suppliers (id integer primary key, country_id integer references countries(id), name text);
create table categories (id integer primary key, parent_id integer references categories(id), name text);
create table products (id integer primary key, category_id integer references categories(id),
                       supplier_id integer references suppliers(id), name text, price real);
create table orders (id integer primary key, customer_id integer references customers(id),
                     employee_id integer references employees(id), order_date text, status text);
create table order_items (order_id integer references orders(id),
                          product_id integer references products(id), qty integer, discount real,
                          primary key (order_id, product_id));
)sql";

// Deterministic pseudo-random numbers for the data.
class Random {
 public:
  int Next(int Limit) {
    state_ = state_ * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<int>((state_ >> 33) % static_cast<std::uint64_t>(Limit));
  }

 private:
  std::uint64_t state_ = 20240601;
};

std::string MakeData() {
  Random rnd;
  std::string sql = "begin;";
  const char* regions[] = {"North", "South", "East", "West"};
  for (int i = 0; i < 4; ++i)
    sql += "insert into regions values (" + std::to_string(i + 1) + ", '" + regions[i] + "');";
  for (int i = 1; i <= 12; ++i) {
    const std::string region = i % 6 == 0 ? "null" : std::to_string(rnd.Next(4) + 1);
    sql += "insert into countries values (" + std::to_string(i) + ", " + region + ", 'Country" +
           std::to_string(i) + "', " + std::to_string(1000 + rnd.Next(90000)) + ");";
  }
  const char* segments[] = {"retail", "corporate", "public", "Retail"};
  for (int i = 1; i <= 60; ++i) {
    const std::string country = i % 9 == 0 ? "null" : std::to_string(rnd.Next(12) + 1);
    const std::string credit = i % 7 == 0 ? "null" : std::to_string(rnd.Next(5000)) + ".5";
    sql += "insert into customers values (" + std::to_string(i) + ", " + country + ", '" +
           (i % 5 == 0 ? "Ann " : "Bob ") + std::to_string(i) + "', '" + segments[rnd.Next(4)] +
           "', " + credit + ");";
  }
  for (int i = 1; i <= 15; ++i) {
    const std::string manager = i <= 2 ? "null" : std::to_string(rnd.Next(i - 1) + 1);
    sql += "insert into employees values (" + std::to_string(i) + ", " + manager + ", " +
           std::to_string(rnd.Next(12) + 1) + ", 'Emp" + std::to_string(i) + "', " +
           std::to_string(2000 + rnd.Next(6000)) + ");";
  }
  for (int i = 1; i <= 10; ++i)
    sql += "insert into suppliers values (" + std::to_string(i) + ", " +
           (i % 4 == 0 ? std::string("null") : std::to_string(rnd.Next(12) + 1)) + ", 'Sup" +
           std::to_string(i) + "');";
  for (int i = 1; i <= 8; ++i)
    sql += "insert into categories values (" + std::to_string(i) + ", " +
           (i <= 3 ? std::string("null") : std::to_string(rnd.Next(3) + 1)) + ", 'Cat" +
           std::to_string(i) + "');";
  for (int i = 1; i <= 40; ++i)
    sql += "insert into products values (" + std::to_string(i) + ", " +
           std::to_string(rnd.Next(8) + 1) + ", " +
           (i % 10 == 0 ? std::string("null") : std::to_string(rnd.Next(10) + 1)) + ", 'Prod" +
           std::to_string(i) + "', " + std::to_string(rnd.Next(300) + 1) + ".25);";
  const char* statuses[] = {"open", "shipped", "closed", "cancelled"};
  for (int i = 1; i <= 300; ++i) {
    sql += "insert into orders values (" + std::to_string(i) + ", " +
           std::to_string(rnd.Next(55) + 1) + ", " +
           (i % 11 == 0 ? std::string("null") : std::to_string(rnd.Next(15) + 1)) + ", '2024-0" +
           std::to_string(rnd.Next(9) + 1) + "-1" + std::to_string(rnd.Next(9)) + "', '" +
           statuses[rnd.Next(4)] + "');";
    const int items = rnd.Next(4) + 1;
    std::vector<int> used;
    for (int k = 0; k < items; ++k) {
      const int product = rnd.Next(40) + 1;
      if (std::find(used.begin(), used.end(), product) != used.end())
        continue;
      used.push_back(product);
      sql += "insert into order_items values (" + std::to_string(i) + ", " +
             std::to_string(product) + ", " + std::to_string(rnd.Next(20) + 1) + ", " +
             (k % 3 == 0 ? "0.1" : "0") + ");";
    }
  }
  return sql + "commit;";
}

using Rows = std::vector<std::vector<std::string>>;

Rows Query(sqlite3* Db, const std::string& SQL) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(Db, SQL.c_str(), -1, &statement, nullptr) != SQLITE_OK)
    throw std::runtime_error(std::string(sqlite3_errmsg(Db)) + " in: " + SQL);
  Rows rows;
  int rc;
  while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
    std::vector<std::string> row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const auto* text = sqlite3_column_text(statement, i);
      row.push_back(text != nullptr ? reinterpret_cast<const char*>(text) : "<null>");
    }
    rows.push_back(std::move(row));
  }
  sqlite3_finalize(statement);
  if (rc != SQLITE_DONE)
    throw std::runtime_error(std::string(sqlite3_errmsg(Db)) + " in: " + SQL);
  return rows;
}

std::string Lower(std::string Text) {
  for (char& c : Text)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return Text;
}

// Whether the statement ends with an ORDER BY outside all brackets.
bool IsSorted(const std::string& SQL) {
  const std::string lower = Lower(SQL);
  int depth = 0;
  bool sorted = false;
  for (std::size_t i = 0; i < lower.size(); ++i) {
    if (lower[i] == '(')
      ++depth;
    else if (lower[i] == ')')
      --depth;
    else if (depth == 0 && lower.compare(i, 5, "order") == 0)
      sorted = true;
  }
  return sorted;
}

// SQLite has no bracketed operands in a compound SELECT; a bracketed group runs as a
// derived table of its own, which means the same.
std::string ForSQLite(const std::string& SQL) {
  std::string out;
  std::string lastWord;
  for (std::size_t i = 0; i < SQL.size(); ++i) {
    const char c = SQL[i];
    if (c == '(') {
      std::size_t j = i + 1;
      while (j < SQL.size() && std::isspace(static_cast<unsigned char>(SQL[j])))
        ++j;
      const bool select = Lower(SQL.substr(j, 6)) == "select" || SQL[j] == '(';
      const std::string word = Lower(lastWord);
      if (select && (word.empty() || word == "union" || word == "all" || word == "except" ||
                     word == "intersect" || word == "(")) {
        out += "SELECT * FROM (";
        lastWord = "(";
        continue;
      }
    }
    out += c;
    if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') {
      if (i == 0 || !(std::isalnum(static_cast<unsigned char>(SQL[i - 1])) || SQL[i - 1] == '_'))
        lastWord.clear();
      lastWord += c;
    } else if (!std::isspace(static_cast<unsigned char>(c))) {
      lastWord = std::string(1, c);
    }
  }
  return out;
}

std::vector<std::string> Statements() {
  std::vector<std::string> list;
  // Joins of 2 to 8 tables along the foreign keys, in several spellings.
  struct Step {
    const char* Source;
    const char* On;
    const char* OnSwapped;
    const char* Column;
  };
  const Step chain[] = {
      {"order_items oi", "", "", "oi.qty"},
      {"orders o", "o.id = oi.order_id", "oi.order_id = o.id", "o.status"},
      {"customers c", "c.id = o.customer_id", "o.customer_id = c.id", "c.name"},
      {"countries co", "co.id = c.country_id", "c.country_id = co.id", "co.name"},
      {"regions r", "r.id = co.region_id", "co.region_id = r.id", "r.name"},
      {"products p", "p.id = oi.product_id", "oi.product_id = p.id", "p.price"},
      {"categories ca", "ca.id = p.category_id", "p.category_id = ca.id", "ca.name"},
      {"suppliers s", "s.id = p.supplier_id", "p.supplier_id = s.id", "s.name"},
  };
  const char* kinds[][2] = {{"JOIN", "INNER JOIN"}, {"LEFT JOIN", "LEFT OUTER JOIN"}};
  for (int n = 2; n <= 8; ++n) {
    for (int variant = 0; variant < 4; ++variant) {
      std::string select = "SELECT oi.order_id, oi.product_id";
      std::string from = std::string(" FROM ") + chain[0].Source;
      for (int k = 1; k < n; ++k) {
        select += ", " + std::string(chain[k].Column);
        const char* kind = kinds[variant % 2][(k + variant / 2) % 2];
        from += std::string(" ") + kind + " " + chain[k].Source + " ON " +
                (variant >= 2 ? chain[k].OnSwapped : chain[k].On);
      }
      std::string sql = select + from;
      if (variant % 2 == 1)
        sql += " WHERE oi.qty > 5";
      if (variant != 2)
        sql += " ORDER BY oi.order_id, oi.product_id";
      list.push_back(sql);
    }
  }
  // Conditions, criteria columns joined by OR.
  const char* conditions[] = {
      "c.credit > 1000",
      "c.credit > 1000 AND c.segment = 'retail'",
      "c.credit > 1000 OR c.segment = 'retail'",
      "(c.credit > 1000 AND c.segment = 'retail') OR (c.credit < 100 AND c.segment = 'corporate')",
      "c.credit BETWEEN 100 AND 2000 AND c.country_id IN (1, 2, 3)",
      "c.credit NOT BETWEEN 100 AND 2000 OR c.credit IS NULL",
      "c.name LIKE 'Ann%' OR c.name LIKE '%7'",
      "c.country_id IS NULL OR co.population < 20000",
      "NOT (c.segment = 'retail' OR c.segment = 'public')",
      "c.segment <> 'retail' AND NOT c.credit > 3000",
      "c.credit > 500 AND c.credit < 4000 AND c.segment = 'corporate' OR c.id = 1",
      "co.name = 'Country3' OR co.name = 'Country4' OR co.name = 'Country5'",
      "c.id * 2 > co.id + 10 AND c.credit >= 0",
      "c.id = 5 OR c.id = 6 AND c.credit > 0 OR c.id = 7",
      "(c.id < 10 OR c.id > 50) AND (c.segment = 'retail' OR c.segment = 'Retail')",
      "length(c.name) > 6 AND upper(c.segment) = 'RETAIL'",
      "c.credit > (SELECT avg(c2.credit) FROM customers c2)",
      "c.id IN (SELECT o.customer_id FROM orders o WHERE o.status = 'closed')",
      "c.id NOT IN (SELECT o.customer_id FROM orders o WHERE o.customer_id IS NOT NULL)",
      "EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id AND o.status = 'open')",
      "NOT EXISTS (SELECT 1 FROM orders o WHERE o.customer_id = c.id) OR c.credit IS NULL",
      "c.segment IN ('retail', 'public') AND (c.credit > 2000 OR c.country_id = 1)",
  };
  for (const char* condition : conditions) {
    list.push_back(
        std::string(
            "SELECT c.id, c.name, co.name FROM customers c LEFT JOIN countries co ON co.id = "
            "c.country_id WHERE ") +
        condition + " ORDER BY c.id");
    list.push_back(
        std::string("SELECT c.name FROM customers c LEFT JOIN countries co ON co.id = c.country_id "
                    "WHERE ") +
        condition);
  }
  // The rest: other joins, grouping, unions, sub-queries and other expressions.
  std::ifstream in(std::string(QORVEX_SOURCE_DIR) + "/tests/db/corpus/model_roundtrip.sql");
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && line.rfind("--", 0) != 0)
      list.push_back(line);
  return list;
}

class ModelRoundTripTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    file_ = dir_->Path() / "model.db";
    SQLiteExec(file_, kSchema);
    SQLiteExec(file_, MakeData());
  }
  static void TearDownTestSuite() {
    delete dir_;
    dir_ = nullptr;
  }
  void SetUp() override {
    ASSERT_EQ(sqlite3_open(file_.c_str(), &db_), SQLITE_OK);
    connection_.SetFileName(file_.string());
    metadata_.SetConnection(&connection_);
  }
  void TearDown() override { sqlite3_close(db_); }

  // The SQL a fresh builder regenerates from SQL.
  std::string Regenerate(const std::string& SQL) {
    TqxBaseQueryBuilder builder;
    builder.SetSyntaxProvider(&syntax_);
    builder.SetMetadataProvider(&metadata_);
    builder.SetSQL(SQL);
    builder.ProcessMessages();
    return builder.GetSQL();
  }

  static TempDir* dir_;
  static std::filesystem::path file_;
  sqlite3* db_ = nullptr;
  TqxSQLiteConnection connection_;
  TqxSQLiteMetadataProvider metadata_;
  TqxSQL92SyntaxProvider syntax_;
};

TempDir* ModelRoundTripTest::dir_ = nullptr;
std::filesystem::path ModelRoundTripTest::file_;

TEST_F(ModelRoundTripTest, RegeneratedStatementsMeanTheSameAndAreStable) {
  const std::vector<std::string> statements = Statements();
  ASSERT_GE(statements.size(), 150u);
  int nonEmpty = 0;
  for (const std::string& sql : statements) {
    SCOPED_TRACE(sql);
    std::string regenerated;
    try {
      regenerated = Regenerate(sql);
    } catch (const std::exception& e) {
      ADD_FAILURE() << "load failed: " << e.what();
      continue;
    }
    Rows original;
    Rows again;
    try {
      original = Query(db_, ForSQLite(sql));
      again = Query(db_, ForSQLite(regenerated));
    } catch (const std::exception& e) {
      ADD_FAILURE() << e.what() << "\nregenerated:\n" << regenerated;
      continue;
    }
    if (!original.empty())
      ++nonEmpty;
    if (!IsSorted(sql)) {
      std::sort(original.begin(), original.end());
      std::sort(again.begin(), again.end());
    }
    EXPECT_EQ(original, again) << "regenerated:\n" << regenerated;
    EXPECT_EQ(Regenerate(regenerated), regenerated) << "not stable";
  }
  // The data make the statements return rows, so that the comparison means something.
  EXPECT_GE(nonEmpty, static_cast<int>(statements.size()) * 9 / 10);
}

TEST_F(ModelRoundTripTest, DerivedTablesAndDatasourcesKnowTheirFields) {
  TqxBaseQueryBuilder builder;
  builder.SetSyntaxProvider(&syntax_);
  builder.SetMetadataProvider(&metadata_);
  builder.SetSQL(
      "SELECT c.name, t.n FROM customers c JOIN (SELECT o.customer_id AS cid, count(*) AS n FROM "
      "orders o "
      "GROUP BY o.customer_id) t ON t.cid = c.id");
  builder.ProcessMessages();
  std::vector<TqxDatasource*> sources = builder.GetQuery()->GetFirstOperand()->GetDatasources();
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_EQ(sources[0]->GetFields(),
            (std::vector<std::string>{"id", "country_id", "name", "segment", "credit"}));
  EXPECT_EQ(sources[1]->GetFields(), (std::vector<std::string>{"cid", "n"}));
  EXPECT_EQ(sources[1]->GetJoinsCount(), 1);
  // Keys of the database give the link's cardinality.
  builder.SetSQL("SELECT * FROM customers c JOIN orders o ON o.customer_id = c.id");
  builder.ProcessMessages();
  const TqxLink* link = builder.GetQuery()->GetFirstOperand()->GetDatasources()[1]->GetJoins(0);
  EXPECT_EQ(link->GetLeftCardinality(), qblcOne);
  EXPECT_EQ(link->GetRightCardinality(), qblcMany);
}

}  // namespace
}  // namespace qorvex::dbtest
