// Writing speed: parsed trees written back as one-line and multi-line plain text, on the
// TPC-H queries and on statements whose names are quoted or reserved words.
#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/query.h"
#include "qorvex/scanner/statements.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace {

using qorvex::TastSQL92SyntaxProvider;
using qorvex::TSQLSelectStatement;

std::vector<std::string> TpchQueries() {
  std::ifstream in(std::string(QORVEX_SOURCE_DIR) + "/tests/sql/corpus/tpch.sql", std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  const std::string text = ss.str();
  std::vector<std::string> out;
  for (const qorvex::TqxStatementText& statement : qorvex::SplitStatements(text))
    out.emplace_back(statement.text);
  return out;
}

const std::vector<std::string> kQuotedNames = {
    "select \"Order\".\"Id\", o.[date], o.\"Unit Price\" * o.\"Qty\" as \"Line Total\", "
    "count(*) as \"count\" from \"Order\" join [Order Lines] o on o.\"Order Id\" = "
    "\"Order\".\"Id\" where o.\"select\" = 1 group by \"Order\".\"Id\", o.[date], o.\"Unit "
    "Price\", o.\"Qty\" order by \"Line Total\" desc",
    "select \"case\", \"when\", \"then\", \"else\", \"end\", \"from\", \"where\", \"group\" "
    "from \"select\".\"table\" as \"all\"",
};

// Writes every tree once per iteration and reports statements per second.
void WriteAll(benchmark::State& state, const std::vector<std::string>& statements, bool multiLine) {
  TastSQL92SyntaxProvider provider;
  std::vector<std::unique_ptr<TSQLSelectStatement>> trees;
  for (const std::string& s : statements)
    trees.push_back(provider.ParseSelect(s));
  std::string text;
  qorvex::TSQLBuilderPlainText builder(&text);
  std::int64_t bytes = 0;
  for (auto _ : state) {
    for (const auto& tree : trees) {
      builder.ResetBuilder();
      tree->BuildSQL(builder, multiLine);
      bytes += static_cast<std::int64_t>(text.size());
      benchmark::DoNotOptimize(text.data());
    }
  }
  state.SetBytesProcessed(bytes);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(trees.size()));
}

void BM_WriteTpchOneLine(benchmark::State& state) {
  WriteAll(state, TpchQueries(), false);
}
BENCHMARK(BM_WriteTpchOneLine);

void BM_WriteTpchMultiLine(benchmark::State& state) {
  WriteAll(state, TpchQueries(), true);
}
BENCHMARK(BM_WriteTpchMultiLine);

void BM_WriteQuotedNames(benchmark::State& state) {
  WriteAll(state, kQuotedNames, false);
}
BENCHMARK(BM_WriteQuotedNames);

}  // namespace
