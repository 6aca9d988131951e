// An applied edit of a statement of 100 joined tables, as the user sees it: the model
// change, the SQL written anew, the undo step with the layout of every box, and the
// redraw of the work area. Ticking a field, applying a changed text, and undoing.
#include <benchmark/benchmark.h>
#include "bench_support.h"

#include <QApplication>
#include <QUndoStack>
#include <string>
#include <vector>

#include "designer/designer_p.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/select_list.h"

namespace {

using namespace qorvex;

// T0 .. T99, each joined to the one before by a key column; Extra ends the statement.
std::string HundredTables(const std::string& Extra) {
  std::string sql = "select t0.Name from T0 t0";
  for (int i = 1; i < 100; ++i) {
    const std::string a = "t" + std::to_string(i);
    const std::string p = "t" + std::to_string(i - 1);
    sql += " inner join T" + std::to_string(i) + " " + a + " on " + p + ".Id = " + a + ".ParentId";
  }
  return sql + Extra;
}

struct Designer : bench::TqxBenchDesigner {
  Designer() : TqxBenchDesigner({"Id", "ParentId", "Name", "Code", "Created", "Amount"}) {}
  // What the screen does after an edit: paints what changed.
  void Redraw() {
    WorkArea()->viewport()->repaint();
    QApplication::processEvents();
  }
};

void BM_TickFieldOf100Tables(benchmark::State& State) {
  Designer designer;
  designer.Load(HundredTables(""));
  designer.Flush();
  TqxUnionSubQuery* operand = designer.Builder.GetActiveUnionSubquery();
  TqxDatasource* ds = operand->GetDatasources()[50];
  TqxSelectList* list = operand->GetSelectList();
  int turn = 0;
  for (auto _ : State) {
    if (turn++ % 2 == 0)
      list->AddField(ds, "Code");
    else
      list->RemoveFields(ds, "Code");
    designer.Redraw();
  }
  if (designer.Builder.UndoStack()->count() < 2)
    State.SkipWithError("the ticks were not recorded");
}
BENCHMARK(BM_TickFieldOf100Tables)->Unit(benchmark::kMillisecond);

void BM_ApplyChangedTextOf100Tables(benchmark::State& State) {
  Designer designer;
  const std::string texts[] = {HundredTables(" where t50.Amount > 10"),
                               HundredTables(" where t50.Amount > 20")};
  designer.Load(texts[1]);
  designer.Flush();
  int turn = 0;
  for (auto _ : State) {
    designer.Load(texts[turn++ % 2]);
    designer.Redraw();
    State.PauseTiming();
    designer.Flush();
    State.ResumeTiming();
  }
  if (designer.WorkArea()->Boxes().size() != 100 || designer.Builder.UndoStack()->count() < 2)
    State.SkipWithError("the texts did not load into 100 boxes, one step each");
}
BENCHMARK(BM_ApplyChangedTextOf100Tables)->Unit(benchmark::kMillisecond);

void BM_UndoRedoTextOf100Tables(benchmark::State& State) {
  Designer designer;
  designer.Load(HundredTables(""));
  designer.Load(HundredTables(" where t50.Amount > 10"));
  designer.Flush();
  QUndoStack* stack = designer.Builder.UndoStack();
  int turn = 0;
  for (auto _ : State) {
    if (turn++ % 2 == 0)
      stack->undo();
    else
      stack->redo();
    designer.Redraw();
    State.PauseTiming();
    designer.Flush();
    State.ResumeTiming();
  }
  if (stack->count() != 2)
    State.SkipWithError("restoring recorded steps");
}
BENCHMARK(BM_UndoRedoTextOf100Tables)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
