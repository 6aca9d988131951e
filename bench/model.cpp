// Query model speed on a large statement: 100 joined tables and 300 select items.
// Loading parses the text, asks the metadata for every table's fields and foreign keys,
// and builds the model; regenerating after one edit is what the designer does on every
// change (the SQL builder takes a fresh copy of the statement and writes it).
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"

namespace {

using namespace qorvex;

constexpr int kTables = 100;
constexpr int kItems = 300;

// t0 JOIN t1 ON t1.parent_id = t0.id JOIN t2 ON t2.parent_id = t1.id ..., with a second
// condition on every tenth join, and 300 columns spread over the tables.
std::string BigStatement() {
  std::string sql = "SELECT ";
  for (int i = 0; i < kItems; ++i) {
    if (i > 0)
      sql += ", ";
    sql += "t" + std::to_string(i % kTables) + ".c" + std::to_string(i / kTables);
  }
  sql += " FROM t0";
  for (int i = 1; i < kTables; ++i) {
    sql += " INNER JOIN t" + std::to_string(i) + " ON t" + std::to_string(i) + ".parent_id = t" +
           std::to_string(i - 1) + ".id";
    if (i % 10 == 0)
      sql += " AND t" + std::to_string(i) + ".c0 > 5";
  }
  sql += " WHERE t0.c1 > 10 AND t50.c2 < 7 ORDER BY t0.c0";
  return sql;
}

// Metadata of the 100 tables: five fields each and a foreign key to the table before.
void Describe(TqxEventMetadataProvider& Metadata) {
  Metadata.OnGetSQLFieldNames = [](TqxEventMetadataProvider*, const std::string&,
                                   std::vector<std::string>& Fields) {
    Fields = {"id", "parent_id", "c0", "c1", "c2"};
  };
  Metadata.OnGetTableRelations = [](TqxEventMetadataProvider*, const TSQLDatabaseObject& Table,
                                    TSQLMetadataRelations& Relations) {
    const int n = std::stoi(Table.GetObjName().substr(1));
    auto add = [&](int Child, int Parent) {
      if (Child < 1 || Parent < 0 || Child >= kTables)
        return;
      auto relation = std::make_unique<TSQLMetadataRelation>();
      relation->PKTable = NewNode<TSQLDatabaseObject>(Table.GetSyntaxProvider());
      relation->PKTable->AddName("t" + std::to_string(Parent));
      relation->PKColumns = {"id"};
      relation->FKTable = NewNode<TSQLDatabaseObject>(Table.GetSyntaxProvider());
      relation->FKTable->AddName("t" + std::to_string(Child));
      relation->FKColumns = {"parent_id"};
      Relations.push_back(std::move(relation));
    };
    add(n, n - 1);
    add(n + 1, n);
  };
}

struct Setup {
  Setup() {
    Describe(Metadata);
    Builder.SetSyntaxProvider(&Syntax);
    Builder.SetMetadataProvider(&Metadata);
    Output.SetQueryBuilder(&Builder);
  }
  void Load(const std::string& SQL) {
    Builder.SetSQL(SQL);
    Builder.ProcessMessages();
  }
  TqxSQL92SyntaxProvider Syntax;
  TqxEventMetadataProvider Metadata;
  TqxBaseQueryBuilder Builder;
  TqxSQLBuilderPlainText Output;
};

// Parsing alone, for comparison with loading.
void BM_ParseBigStatement(benchmark::State& state) {
  const std::string sql = BigStatement();
  TqxSQL92SyntaxProvider syntax;
  for (auto _ : state) {
    auto tree = syntax.ParseSelect(sql);
    benchmark::DoNotOptimize(tree.get());
  }
}
BENCHMARK(BM_ParseBigStatement)->Unit(benchmark::kMillisecond);

// Assigning the statement to a builder and delivering the load message.
void BM_LoadBigStatement(benchmark::State& state) {
  const std::string sql = BigStatement();
  for (auto _ : state) {
    Setup setup;
    setup.Load(sql);
    benchmark::DoNotOptimize(setup.Builder.GetQuery());
  }
}
BENCHMARK(BM_LoadBigStatement)->Unit(benchmark::kMillisecond);

// One edit (an alias set or cleared on the middle table), the change report to the SQL
// builder (a fresh copy of the statement) and the text read from it.
void BM_RegenerateAfterOneEdit(benchmark::State& state) {
  Setup setup;
  setup.Load(BigStatement());
  TqxDatasource* middle = setup.Builder.GetQuery()->GetFirstOperand()->GetDatasources()[50];
  bool aliased = false;
  std::size_t length = 0;
  for (auto _ : state) {
    aliased = !aliased;
    middle->SetAlias(aliased ? "m" : "");
    length += setup.Output.GetSQL().size();
  }
  benchmark::DoNotOptimize(length);
}
BENCHMARK(BM_RegenerateAfterOneEdit)->Unit(benchmark::kMillisecond);

// A criteria cell typed on one row: parsing the cell, the change report and the text.
void BM_CriteriaEditAndText(benchmark::State& state) {
  Setup setup;
  setup.Load(BigStatement());
  TqxSelectItem* row = setup.Builder.GetQuery()->GetFirstOperand()->GetSelectList()->GetItems(150);
  int n = 0;
  std::size_t length = 0;
  for (auto _ : state) {
    row->SetCondition(0, "> " + std::to_string(++n));
    length += setup.Output.GetSQL().size();
  }
  benchmark::DoNotOptimize(length);
}
BENCHMARK(BM_CriteriaEditAndText)->Unit(benchmark::kMillisecond);

}  // namespace
