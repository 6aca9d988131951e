// Metadata reading on a database of 2,000 tables with 20 columns each: the table list,
// and one field list per table, from SQLite natively and through its ODBC driver.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/metadata/odbc_provider.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace {

constexpr int kTables = 2000;
constexpr int kColumns = 20;

std::string TableName(int i) {
  return "table_" + std::to_string(i);
}

// The database file, made once per run in a temporary directory removed at exit.
class BenchDatabase {
 public:
  static const BenchDatabase& Get() {
    static BenchDatabase db;
    return db;
  }
  const std::string& File() const { return file_; }
  const std::vector<std::string>& Statements() const { return statements_; }

 private:
  BenchDatabase() {
    std::string dir = (std::filesystem::temp_directory_path() / "qorvex-bench-XXXXXX").string();
    if (mkdtemp(dir.data()) == nullptr)
      throw std::runtime_error("cannot create a temporary directory");
    dir_ = dir;
    file_ = (dir_ / "wide.db").string();
    std::string sql = "begin;";
    for (int t = 0; t < kTables; ++t) {
      sql += "create table " + TableName(t) + " (id integer primary key";
      for (int c = 1; c < kColumns; ++c)
        sql += ", column_" + std::to_string(c) + " varchar(40)";
      if (t > 0)
        sql += ", foreign key (column_1) references " + TableName(t - 1) + " (id)";
      sql += ");";
      statements_.push_back("select * from " + TableName(t));
    }
    sql += "commit;";
    sqlite3* db = nullptr;
    char* error = nullptr;
    if (sqlite3_open(file_.c_str(), &db) != SQLITE_OK ||
        sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
      std::string message = error ? error : sqlite3_errmsg(db);
      sqlite3_free(error);
      sqlite3_close(db);
      throw std::runtime_error("cannot create the benchmark database: " + message);
    }
    sqlite3_close(db);
  }
  ~BenchDatabase() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }

  std::filesystem::path dir_;
  std::string file_;
  std::vector<std::string> statements_;
};

// A provider of each kind on the benchmark database, connected before timing starts.
struct Native {
  qorvex::TqxSQLiteConnection connection{BenchDatabase::Get().File()};
  qorvex::TqxSQLiteMetadataProvider provider{&connection};
  Native() { connection.Open(); }
};
struct ODBC {
  qorvex::TqxODBCConnection connection{"Driver=SQLite3;Database=" + BenchDatabase::Get().File() +
                                       ";NoCreat=1;"};
  qorvex::TqxODBCMetadataProvider provider{&connection};
  ODBC() { connection.Open(); }
};

template <class P>
void BM_GetTableNames(benchmark::State& state) {
  P p;
  std::vector<std::string> names;
  for (auto _ : state) {
    p.provider.GetTableNames(names, false);
    benchmark::DoNotOptimize(names.data());
  }
  if (names.size() != kTables)
    state.SkipWithError("wrong table count");
  state.SetItemsProcessed(state.iterations() * kTables);
}

// One GetFields per table: a whole sweep per iteration.
template <class P>
void BM_GetFieldsPerTable(benchmark::State& state) {
  P p;
  const std::vector<std::string>& statements = BenchDatabase::Get().Statements();
  std::vector<std::string> fields;
  for (auto _ : state) {
    for (const std::string& sql : statements) {
      p.provider.GetFields(sql, fields);
      benchmark::DoNotOptimize(fields.data());
    }
  }
  if (fields.size() != kColumns)
    state.SkipWithError("wrong column count");
  state.SetItemsProcessed(state.iterations() * kTables);
}

// The relations of one table in the middle of the chain of keys: one key refers to it,
// it has one of its own. Finding the referring keys reads every table's keys.
template <class P>
void BM_GetTableRelations(benchmark::State& state) {
  P p;
  qorvex::TastSQL92SyntaxProvider syntax;
  auto table = qorvex::NewNode<qorvex::TSQLDatabaseObject>(&syntax);
  table->AddName(TableName(kTables / 2));
  qorvex::TSQLMetadataRelations relations;
  for (auto _ : state) {
    relations.clear();
    p.provider.GetTableRelations(*table, relations);
  }
  if (relations.size() != 2)
    state.SkipWithError("wrong relation count");
}

BENCHMARK_TEMPLATE(BM_GetTableNames, Native)
    ->Name("SQLiteNative/GetTableNames")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_GetFieldsPerTable, Native)
    ->Name("SQLiteNative/GetFieldsPerTable")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_GetTableRelations, Native)
    ->Name("SQLiteNative/GetTableRelations")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_GetTableNames, ODBC)
    ->Name("SQLiteODBC/GetTableNames")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_GetFieldsPerTable, ODBC)
    ->Name("SQLiteODBC/GetFieldsPerTable")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_GetTableRelations, ODBC)
    ->Name("SQLiteODBC/GetTableRelations")
    ->Unit(benchmark::kMillisecond);

}  // namespace
