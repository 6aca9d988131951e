// Query model speed on a large statement: 100 joined tables and 300 select items.
// Loading parses the text, asks the metadata for every table's fields and foreign keys,
// and builds the model; regenerating after one edit is what the designer does on every
// change (the SQL builder takes a fresh copy of the statement and writes it).
//
// The BigO families load, write and edit statements of N union operands, N tables in a
// comma list and N joined tables; each should grow linearly with N.
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
    const std::string name = Table.GetObjName();
    if (name.size() < 2 || name[0] != 't' ||
        name.find_first_not_of("0123456789", 1) != std::string::npos)
      return;
    const int n = std::stoi(name.substr(1));
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

// ---- growth with the size of the statement

// select a from t1 union all select a from t2 ...
std::string UnionOperands(int N) {
  std::string sql;
  for (int i = 1; i <= N; ++i) {
    if (i > 1)
      sql += " union all ";
    sql += "select a from t" + std::to_string(i);
  }
  return sql;
}

// select * from t1, t2, ..., tN
std::string CommaTables(int N) {
  std::string sql = "select * from t1";
  for (int i = 2; i <= N; ++i)
    sql += ", t" + std::to_string(i);
  return sql;
}

// select * from t1 join t2 on t1.a = t2.a join t3 on t2.a = t3.a ...
std::string JoinedTables(int N) {
  std::string sql = "select * from t1";
  for (int i = 2; i <= N; ++i) {
    const std::string left = "t" + std::to_string(i - 1);
    const std::string right = "t" + std::to_string(i);
    sql += " join " + right + " on " + left + ".a = " + right + ".a";
  }
  return sql;
}

// select c0, c1 as x from t1 order by c0 + 1, t1.c1 * 2 desc, x, c2, c0 + 5, ...: new
// expressions, an output alias and repeated terms, each sorting a row.
std::string OrderByTerms(int N) {
  std::string sql = "select c0, c1 as x from t1 order by ";
  for (int i = 1; i <= N; ++i) {
    if (i > 1)
      sql += ", ";
    switch (i % 4) {
      case 0:
        sql += "c0 + " + std::to_string(i);
        break;
      case 1:
        sql += "t1.c1 * " + std::to_string(i) + " desc";
        break;
      case 2:
        sql += "x";
        break;
      default:
        sql += "c2";
        break;
    }
  }
  return sql;
}

using Generator = std::string (*)(int);

void SetGrowthRange(benchmark::internal::Benchmark* B) {
  B->RangeMultiplier(4)->Range(128, 8192)->Unit(benchmark::kMillisecond)->Complexity();
}

// Assigning the statement and delivering the load message.
void BM_Load(benchmark::State& state, Generator Make) {
  const int n = static_cast<int>(state.range(0));
  const std::string sql = Make(n);
  for (auto _ : state) {
    state.PauseTiming();
    auto setup = std::make_unique<Setup>();
    state.ResumeTiming();
    setup->Load(sql);
    benchmark::DoNotOptimize(setup->Builder.GetQuery());
    state.PauseTiming();
    setup.reset();
    state.ResumeTiming();
  }
  state.SetComplexityN(n);
}
BENCHMARK_CAPTURE(BM_Load, UnionOperands, UnionOperands)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_Load, CommaTables, CommaTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_Load, JoinedTables, JoinedTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_Load, OrderByTerms, OrderByTerms)->Apply(SetGrowthRange);

// Writing the loaded model back as SQL text (a fresh statement copy, then the text).
void BM_Write(benchmark::State& state, Generator Make) {
  const int n = static_cast<int>(state.range(0));
  Setup setup;
  setup.Load(Make(n));
  std::size_t length = 0;
  for (auto _ : state)
    length += setup.Builder.GetSQL().size();
  benchmark::DoNotOptimize(length);
  state.SetComplexityN(n);
}
BENCHMARK_CAPTURE(BM_Write, UnionOperands, UnionOperands)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_Write, CommaTables, CommaTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_Write, JoinedTables, JoinedTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_Write, OrderByTerms, OrderByTerms)->Apply(SetGrowthRange);

// One datasource added to (or removed from) a FROM list of N tables, with the change
// report that has the SQL builder write the whole statement again.
void BM_AddDatasource(benchmark::State& state, Generator Make) {
  const int n = static_cast<int>(state.range(0));
  Setup setup;
  setup.Load(Make(n));
  TqxUnionSubQuery* operand = setup.Builder.GetQuery()->GetFirstOperand();
  for (auto _ : state) {
    TqxDataSourceObject* ds = operand->AddObject("added");
    state.PauseTiming();
    operand->RemoveDatasource(ds);
    state.ResumeTiming();
  }
  state.SetComplexityN(n);
}
BENCHMARK_CAPTURE(BM_AddDatasource, CommaTables, CommaTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_AddDatasource, JoinedTables, JoinedTables)->Apply(SetGrowthRange);

void BM_RemoveDatasource(benchmark::State& state, Generator Make) {
  const int n = static_cast<int>(state.range(0));
  Setup setup;
  setup.Load(Make(n));
  TqxUnionSubQuery* operand = setup.Builder.GetQuery()->GetFirstOperand();
  for (auto _ : state) {
    state.PauseTiming();
    TqxDataSourceObject* ds = operand->AddObjectWithFK("added");
    operand->AddLink(operand->GetDatasources()[static_cast<std::size_t>(n / 2)], "a", ds, "a");
    state.ResumeTiming();
    operand->RemoveDatasource(ds);
  }
  state.SetComplexityN(n);
}
BENCHMARK_CAPTURE(BM_RemoveDatasource, CommaTables, CommaTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_RemoveDatasource, JoinedTables, JoinedTables)->Apply(SetGrowthRange);

// A field ticked on the middle table and unticked again.
void BM_AddField(benchmark::State& state, Generator Make) {
  const int n = static_cast<int>(state.range(0));
  Setup setup;
  setup.Load(Make(n));
  TqxUnionSubQuery* operand = setup.Builder.GetQuery()->GetFirstOperand();
  TqxDatasource* middle = operand->GetDatasources()[static_cast<std::size_t>(n / 2)];
  for (auto _ : state) {
    operand->GetSelectList()->AddField(middle, "c0");
    state.PauseTiming();
    operand->GetSelectList()->RemoveFields(middle, "c0");
    state.ResumeTiming();
  }
  state.SetComplexityN(n);
}
BENCHMARK_CAPTURE(BM_AddField, CommaTables, CommaTables)->Apply(SetGrowthRange);
BENCHMARK_CAPTURE(BM_AddField, JoinedTables, JoinedTables)->Apply(SetGrowthRange);

}  // namespace
