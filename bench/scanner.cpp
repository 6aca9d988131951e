// Scanning speed of the SQL-92 scanner over about 1 MB of generated queries.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qorvex/scanner/sql92_scanner.h"

namespace {

// A deterministic text of realistic SELECT statements: joins, qualified and quoted
// names, literals of every kind, CR LF line breaks and indentation.
std::string MakeSqlText(std::size_t targetBytes) {
  static const char* const kTables[] = {"orders",    "customers", "order_lines", "products",
                                        "suppliers", "employees", "categories",  "invoices"};
  static const char* const kColumns[] = {"id",         "customer_id", "product_id", "quantity",
                                         "unit_price", "order_date",  "status",     "Title",
                                         "LastName",   "city",        "discount",   "amount"};
  std::uint32_t seed = 12345;
  auto next = [&seed](std::uint32_t n) {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) % n;
  };
  auto column = [&](const char* alias) {
    return std::string(alias) + "." + kColumns[next(std::size(kColumns))];
  };
  std::string text;
  text.reserve(targetBytes + 1024);
  while (text.size() < targetBytes) {
    const char* t1 = kTables[next(std::size(kTables))];
    const char* t2 = kTables[next(std::size(kTables))];
    text += "SELECT DISTINCT " + column("a") + ", " + column("b") + " AS \"Total Amount\",\r\n";
    text += "       SUM(" + column("a") + " * 1.25e2) AS total, COUNT(*), [b].[" +
            kColumns[next(std::size(kColumns))] + "]\r\n";
    text += "  FROM " + std::string(t1) + " a\r\n";
    text += "  LEFT OUTER JOIN " + std::string(t2) + " b ON " + column("a") + " = " + column("b") +
            "\r\n";
    text += " WHERE " + column("a") + " >= {d '2020-01-01'} AND " + column("b") + " <> 'it''s " +
            std::to_string(next(100000)) + "'\r\n";
    text += "   AND (" + column("a") + " BETWEEN " + std::to_string(next(1000)) + " AND " +
            std::to_string(next(100000)) + ".5 OR " + column("b") + " IN (1, 2, 0x1F, @p" +
            std::to_string(next(10)) + "))\r\n";
    text += " GROUP BY " + column("a") + ", " + column("b") + "\r\n";
    text += "HAVING SUM(" + column("a") + ") > " + std::to_string(next(5000)) + "\r\n";
    text += " ORDER BY 1 DESC, 2 ASC;\r\n\r\n";
  }
  return text;
}

void BM_ScanSql(benchmark::State& state) {
  const std::string text = MakeSqlText(1 << 20);
  std::int64_t tokens = 0;
  for (auto _ : state) {
    qorvex::SQL92Scanner scanner;
    scanner.Init(text);
    tokens = scanner.GetTokenCount();
    benchmark::DoNotOptimize(scanner.GetToken(tokens / 2).kind);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  state.counters["tokens"] = static_cast<double>(tokens);
  state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(BM_ScanSql)->Unit(benchmark::kMillisecond);

// The same text one statement at a time, each with a fresh scanner, as parsing does it.
void BM_ScanStatements(benchmark::State& state) {
  const std::string text = MakeSqlText(1 << 20);
  std::vector<std::string_view> statements;
  for (std::size_t begin = 0, end; (end = text.find(';', begin)) != std::string::npos;
       begin = end + 1)
    statements.push_back(std::string_view(text).substr(begin, end - begin));
  std::int64_t bytes = 0;
  for (std::string_view s : statements)
    bytes += static_cast<std::int64_t>(s.size());
  for (auto _ : state) {
    for (std::string_view s : statements) {
      qorvex::SQL92Scanner scanner;
      scanner.Init(s);
      benchmark::DoNotOptimize(scanner.GetToken(0).kind);
    }
  }
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["statements"] = static_cast<double>(statements.size());
}
BENCHMARK(BM_ScanStatements)->Unit(benchmark::kMillisecond);

}  // namespace
