// The designer program's SQL editor: highlighting a 1 MB script by the scanner, all of it
// and one screenful.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <string>

#include "bench_support.h"
#include "sql_editor.h"
#include "sql_lexer.h"

namespace {

using Sci = QsciScintillaBase;

// About 1 MB of statements with every kind of token, one clause per line.
QString OneMegabyte() {
  const std::string statement =
      "SELECT c.Name, o.\"Order Date\", Sum(i.Price * i.Quantity) AS Total\n"
      "FROM Customers c INNER JOIN Orders o ON c.Id = o.CustomerId\n"
      "WHERE o.Total >= 100.5 AND c.Country <> 'XX' AND o.Code = @code\n"
      "GROUP BY c.Name, o.\"Order Date\" HAVING Count(*) > 2 ORDER BY 3 DESC;\n";
  std::string text;
  while (text.size() < (1u << 20))
    text += statement;
  return QString::fromStdString(text);
}

void BM_StyleWholeMegabyte(benchmark::State& State) {
  qorvex::TqxSqlEditor editor;
  editor.setText(OneMegabyte());
  for (auto _ : State) {
    editor.SendScintilla(Sci::SCI_CLEARDOCUMENTSTYLE);
    editor.SendScintilla(Sci::SCI_COLOURISE, 0UL, -1L);
  }
  State.SetBytesProcessed(State.iterations() * editor.length());
}
BENCHMARK(BM_StyleWholeMegabyte)->Unit(benchmark::kMillisecond);

// A screenful in the middle restyled, as after a character typed there (the editor
// restyles from the changed line to the end of what is shown).
void BM_StyleScreenInMegabyte(benchmark::State& State) {
  qorvex::TqxSqlEditor editor;
  editor.setText(OneMegabyte());
  editor.SendScintilla(Sci::SCI_COLOURISE, 0UL, -1L);
  const int line = editor.lines() / 2;
  const auto at = static_cast<int>(
      editor.SendScintilla(Sci::SCI_POSITIONFROMLINE, static_cast<unsigned long>(line)));
  const auto screenEnd = static_cast<int>(
      editor.SendScintilla(Sci::SCI_POSITIONFROMLINE, static_cast<unsigned long>(line + 60)));
  for (auto _ : State)
    editor.Lexer()->styleText(at, screenEnd);
  State.SetBytesProcessed(State.iterations() * (screenEnd - at));
}
BENCHMARK(BM_StyleScreenInMegabyte)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
