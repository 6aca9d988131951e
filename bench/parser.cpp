// Parsing speed: scanning, way calculation and tree building through the provider's
// ParseSelect, on typical queries, the TPC-H queries, a 1 MB file of statements, a
// 500-table join, deep nesting and long lists.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/parser/sql92_parser.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/statements.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace {

using qorvex::TastSQL92SyntaxProvider;

const std::vector<std::string> kTypical = {
    "select * from customers",
    "select c.id, c.name, c.city from customers c where c.country = 'DE' order by c.name",
    "select o.id, o.ordered_at, c.name from orders o inner join customers c on c.id = "
    "o.customer_id where o.ordered_at >= {d '2024-01-01'} and o.status in ('open', 'paid')",
    "select p.category, count(*) as n, avg(p.price) as avg_price from products p group by "
    "p.category having count(*) > 10 order by n desc",
    "select e.name, d.name as department, m.name as manager from employees e left outer join "
    "departments d on d.id = e.department_id left join employees m on m.id = e.manager_id "
    "where e.salary between 1000 and 5000 and e.name like 'A%'",
    "select id, case status when 1 then 'new' when 2 then 'open' else 'closed' end as state, "
    "cast(amount as numeric(12,2)) from invoices where due < current_timestamp and not paid = 1",
    "select distinct s.name from suppliers s where exists (select * from deliveries d where "
    "d.supplier_id = s.id and d.late = 1) or s.rating < 3",
    "select u.id, u.email from users u where u.id not in (select user_id from bans) union "
    "select a.id, a.email from admins a",
    "select top_products.name, total from (select p.name, sum(l.qty * l.price) as total from "
    "lines l join products p on p.id = l.product_id group by p.name) as top_products where "
    "total > 1000 order by total desc",
    "select count(distinct customer_id), sum(amount), min(created), max(created) from payments "
    "where (method = 'card' or method = 'cash') and amount > 0",
};

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// Statements of a text split on its ";" tokens.
std::vector<std::string> SplitStatements(const std::string& text) {
  std::vector<std::string> out;
  for (const qorvex::TqxStatementText& statement : qorvex::SplitStatements(text))
    out.emplace_back(statement.text);
  return out;
}

const std::vector<std::string>& Tpch() {
  static const std::vector<std::string> queries =
      SplitStatements(ReadFile(std::string(QORVEX_SOURCE_DIR) + "/tests/sql/corpus/tpch.sql"));
  return queries;
}

// Runs ParseSelect over every statement once per iteration and reports bytes and
// statements per second.
void ParseAll(benchmark::State& state, const std::vector<std::string>& statements) {
  TastSQL92SyntaxProvider provider;
  std::int64_t bytes = 0;
  for (const std::string& s : statements)
    bytes += static_cast<std::int64_t>(s.size());
  for (auto _ : state) {
    for (const std::string& s : statements) {
      auto tree = provider.ParseSelect(s);
      benchmark::DoNotOptimize(tree.get());
    }
  }
  state.SetBytesProcessed(state.iterations() * bytes);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(statements.size()));
  // Microseconds per statement: the inverted rate of a count scaled by 1e-6.
  state.counters["us_per_stmt"] = benchmark::Counter(
      1e-6 * static_cast<double>(state.iterations()) * static_cast<double>(statements.size()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_TypicalQueries(benchmark::State& state) {
  ParseAll(state, kTypical);
}
BENCHMARK(BM_TypicalQueries);

void BM_TpchQueries(benchmark::State& state) {
  ParseAll(state, Tpch());
}
BENCHMARK(BM_TpchQueries);

// The phases apart on the TPC-H queries: scanning alone, and scanning with the way
// calculation but without building the tree.
void BM_TpchScanOnly(benchmark::State& state) {
  std::int64_t bytes = 0;
  for (const std::string& s : Tpch())
    bytes += static_cast<std::int64_t>(s.size());
  for (auto _ : state) {
    for (const std::string& s : Tpch()) {
      qorvex::SQL92Scanner scanner;
      scanner.Init(s);
      benchmark::DoNotOptimize(scanner.GetTokenCount());
    }
  }
  state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_TpchScanOnly);

void BM_TpchWayCalcOnly(benchmark::State& state) {
  TastSQL92SyntaxProvider provider;
  std::int64_t bytes = 0;
  for (const std::string& s : Tpch())
    bytes += static_cast<std::int64_t>(s.size());
  for (auto _ : state) {
    for (const std::string& s : Tpch()) {
      qorvex::SQL92Scanner scanner;
      scanner.Init(s);
      qorvex::SQL92Parser parser(&scanner, &provider);
      qorvex::TqxWayList ways{parser.NewWayPoint(nullptr)};
      parser.ParseSelectWayCalc(ways);
      parser.Expect(ways, qorvex::tkEof);
      benchmark::DoNotOptimize(ways.size());
    }
  }
  state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_TpchWayCalcOnly);

// About 1 MB of statements: the typical and TPC-H queries repeated.
void BM_OneMegabyteFile(benchmark::State& state) {
  static const std::vector<std::string> statements = [] {
    std::string text;
    while (text.size() < (1u << 20)) {
      for (const std::string& s : kTypical)
        text += s + ";\n";
      for (const std::string& s : Tpch())
        text += s + ";\n";
    }
    return SplitStatements(text);
  }();
  ParseAll(state, statements);
}
BENCHMARK(BM_OneMegabyteFile)->Unit(benchmark::kMillisecond);

// A script of about 1 MB read statement by statement, as `qorvex-sql check` does: split
// and each statement scanned again for its parse, or scanned once with each statement's
// tokens parsed as they come.
const std::string& OneMegabyteScript() {
  static const std::string text = [] {
    std::string script;
    while (script.size() < (1u << 20)) {
      for (const std::string& s : kTypical)
        script += s + ";\n";
      for (const std::string& s : Tpch())
        script += s + ";\n";
    }
    return script;
  }();
  return text;
}

void BM_ScriptSplitThenParse(benchmark::State& state) {
  TastSQL92SyntaxProvider provider;
  const std::string& script = OneMegabyteScript();
  for (auto _ : state) {
    std::string text;
    for (const qorvex::TqxStatementText& statement : qorvex::SplitStatements(script)) {
      text.assign(statement.text);
      auto tree = provider.ParseSelect(text);
      benchmark::DoNotOptimize(tree.get());
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(script.size()));
}
BENCHMARK(BM_ScriptSplitThenParse)->Unit(benchmark::kMillisecond);

void BM_ScriptScannedOnce(benchmark::State& state) {
  TastSQL92SyntaxProvider provider;
  const std::string& script = OneMegabyteScript();
  for (auto _ : state) {
    qorvex::SQL92Scanner scanner;
    scanner.BeginStatements(script);
    while (scanner.ScanStatement()) {
      auto tree = provider.ParseSelect(scanner);
      benchmark::DoNotOptimize(tree.get());
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(script.size()));
}
BENCHMARK(BM_ScriptScannedOnce)->Unit(benchmark::kMillisecond);

// A join of n tables, each joined on a condition over the one before.
std::string JoinOf(int tables) {
  std::string sql = "select * from t0";
  for (int i = 1; i < tables; ++i) {
    const std::string t = "t" + std::to_string(i);
    sql += (i % 3 == 0 ? " left join " : " inner join ") + t + " on " + t + ".id = t" +
           std::to_string(i - 1) + ".ref";
  }
  return sql;
}

void BM_Join500Tables(benchmark::State& state) {
  ParseAll(state, {JoinOf(500)});
}
BENCHMARK(BM_Join500Tables)->Unit(benchmark::kMicrosecond);

// Joins of 8 to 500 tables: the bytes per second should stay level as the join grows.
void BM_JoinTables(benchmark::State& state) {
  ParseAll(state, {JoinOf(static_cast<int>(state.range(0)))});
}
BENCHMARK(BM_JoinTables)
    ->Arg(8)
    ->Arg(16)
    ->Arg(32)
    ->Arg(40)
    ->Arg(48)
    ->Arg(64)
    ->Arg(125)
    ->Arg(250)
    ->Arg(500)
    ->Unit(benchmark::kMicrosecond);

std::string Nested(int depth, bool logical) {
  std::string open(static_cast<std::size_t>(depth), '(');
  std::string close(static_cast<std::size_t>(depth), ')');
  if (logical)
    return "select * from t where " + open + "a = 1" + close;
  return "select * from t where " + open + "a + 1" + close + " = 2";
}
void BM_NestedValue(benchmark::State& state) {
  ParseAll(state, {Nested(static_cast<int>(state.range(0)), false)});
}
void BM_NestedLogical(benchmark::State& state) {
  ParseAll(state, {Nested(static_cast<int>(state.range(0)), true)});
}
// From 1 level to just below the nesting bound (600): the bytes per second should stay
// level all the way.
void NestingLevels(benchmark::internal::Benchmark* b) {
  for (const int levels : {1, 8, 30, 60, 120, 240, 298, 302, 400, 500, 590})
    b->Arg(levels);
  b->Unit(benchmark::kMicrosecond);
}
BENCHMARK(BM_NestedValue)->Apply(NestingLevels);
BENCHMARK(BM_NestedLogical)->Apply(NestingLevels);

// Rejected texts of about 1 KB: brackets left open n deep (500: the error is at the end;
// 700: at the bracket where the nesting bound is reached), padded with blanks. The error
// path explores every reading, so it is the slowest a kilobyte gets.
void BM_RejectedOpenBrackets(benchmark::State& state) {
  std::string sql = "select * from t where " +
                    std::string(static_cast<std::size_t>(state.range(0)), '(') + "a = 1";
  sql.resize(std::max<std::size_t>(sql.size(), 1024), ' ');
  TastSQL92SyntaxProvider provider;
  for (auto _ : state) {
    try {
      provider.ParseSelect(sql);
      state.SkipWithError("the text was accepted");
      break;
    } catch (const qorvex::EqxSQLError& e) {
      benchmark::DoNotOptimize(e.col);
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sql.size()));
}
BENCHMARK(BM_RejectedOpenBrackets)->Arg(500)->Arg(700)->Unit(benchmark::kMillisecond);

// Lists of n items; Complexity() fits the growth.
template <class Make>
void ListBench(benchmark::State& state, Make make) {
  const std::string sql = make(static_cast<int>(state.range(0)));
  ParseAll(state, {sql});
  state.SetComplexityN(state.range(0));
}
void BM_SelectList(benchmark::State& state) {
  ListBench(state, [](int n) {
    std::string s = "select c0";
    for (int i = 1; i < n; ++i)
      s += ", t.c" + std::to_string(i) + " as a" + std::to_string(i);
    return s + " from t";
  });
}
void BM_InList(benchmark::State& state) {
  ListBench(state, [](int n) {
    std::string s = "select * from t where a in (0";
    for (int i = 1; i < n; ++i)
      s += ", " + std::to_string(i);
    return s + ")";
  });
}
void BM_AndChain(benchmark::State& state) {
  ListBench(state, [](int n) {
    std::string s = "select * from t where a0 = 0";
    for (int i = 1; i < n; ++i)
      s += " and a" + std::to_string(i) + " = " + std::to_string(i);
    return s;
  });
}
void BM_UnionChain(benchmark::State& state) {
  ListBench(state, [](int n) {
    std::string s = "select a from t0";
    for (int i = 1; i < n; ++i)
      s += (i % 2 ? " union all select a from t" : " except select a from t") + std::to_string(i);
    return s;
  });
}
BENCHMARK(BM_SelectList)->RangeMultiplier(2)->Range(125, 1000)->Complexity(benchmark::oN);
BENCHMARK(BM_InList)->RangeMultiplier(2)->Range(125, 1000)->Complexity(benchmark::oN);
BENCHMARK(BM_AndChain)->RangeMultiplier(2)->Range(125, 1000)->Complexity(benchmark::oN);
BENCHMARK(BM_UnionChain)->RangeMultiplier(2)->Range(125, 1000)->Complexity(benchmark::oN);

}  // namespace
