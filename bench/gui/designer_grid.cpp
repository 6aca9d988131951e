// The select-list grid off screen: a statement of 300 output columns shown with its grid,
// and one cell edit committed through the grid (the model changed, the SQL written anew
// and the grid refreshed).
#include <benchmark/benchmark.h>
#include "bench_support.h"

#include <QApplication>
#include <memory>
#include <string>
#include <vector>

#include "designer/select_list_control.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/query.h"
#include "qorvex/model/select_list.h"
#include "qorvex/syntax/components.h"

namespace {

using namespace qorvex;

using bench::kLoadSQLEvent;

// 300 columns of one table, each as an output row.
std::string ThreeHundredColumns() {
  std::string sql = "select ";
  for (int i = 0; i < 300; ++i)
    sql += (i > 0 ? ", t.C" : "t.C") + std::to_string(i);
  return sql + " from T t";
}

std::vector<std::string> ThreeHundredFields() {
  std::vector<std::string> fields;
  for (int i = 0; i < 300; ++i)
    fields.push_back("C" + std::to_string(i));
  return fields;
}

struct Designer : bench::TqxBenchDesigner {
  Designer() : TqxBenchDesigner(ThreeHundredFields()) {}
  TqxQueryBuilderSelectListControl* Grid() {
    auto* control = dynamic_cast<TqxWidgetControl*>(
        Builder.GetActiveUnionSubquery()->GetSelectList()->GetControl());
    return control != nullptr
               ? qobject_cast<TqxQueryBuilderSelectListControl*>(control->GetWidget())
               : nullptr;
  }
};

void BM_ShowGridOf300Items(benchmark::State& State) {
  Designer designer;
  const std::string sql = ThreeHundredColumns();
  for (auto _ : State) {
    State.PauseTiming();
    designer.Load("");
    designer.Flush();
    State.ResumeTiming();
    designer.Load(sql);
    designer.Grid()->repaint();
  }
  if (designer.Grid() == nullptr || designer.Grid()->RowCount() != 302)
    State.SkipWithError("the grid does not show 300 rows");
}
BENCHMARK(BM_ShowGridOf300Items)->Unit(benchmark::kMillisecond);

// One alias typed into the middle of a 300-row grid and committed, alternating between two
// texts so every commit is a change.
void BM_CommitOneCellIn300ItemGrid(benchmark::State& State) {
  Designer designer;
  designer.Load(ThreeHundredColumns());
  designer.Flush();
  TqxQueryBuilderSelectListControl* grid = designer.Grid();
  const QString aliases[] = {QStringLiteral("First"), QStringLiteral("Second")};
  int turn = 0;
  std::size_t length = 0;
  for (auto _ : State) {
    grid->SetCurrentCell(TqxQueryBuilderSelectListControl::kColAlias, 150);
    grid->ShowEditor(&aliases[turn++ % 2]);
    grid->CommitEdit();
    length = designer.Builder.GetSQL().size();
  }
  if (grid->Cells(TqxQueryBuilderSelectListControl::kColAlias, 150) != aliases[(turn + 1) % 2] ||
      length == 0)
    State.SkipWithError("the edit did not reach the grid");
}
BENCHMARK(BM_CommitOneCellIn300ItemGrid)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
