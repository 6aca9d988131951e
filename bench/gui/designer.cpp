// The designer widget off screen: loading a statement of 100 joined tables with all its
// controls, moving one box among 200, and one full repaint of a diagram of 200 boxes (the
// whole diagram, and the part a work area shows).
#include <benchmark/benchmark.h>
#include "bench_support.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <memory>
#include <string>
#include <vector>

#include "designer/designer_p.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/query.h"
#include "qorvex/syntax/components.h"

namespace {

using namespace qorvex;

using bench::kLoadSQLEvent;

// T0 .. Tn-1, each joined to the one before by a key column.
std::string JoinedTables(int Count, const std::string& AliasPrefix) {
  std::string sql = "select " + AliasPrefix + "0.Name from T0 " + AliasPrefix + "0";
  for (int i = 1; i < Count; ++i) {
    const std::string a = AliasPrefix + std::to_string(i);
    const std::string p = AliasPrefix + std::to_string(i - 1);
    sql += " inner join T" + std::to_string(i) + " " + a + " on " + p + ".Id = " + a + ".ParentId";
  }
  return sql;
}

struct Designer : bench::TqxBenchDesigner {
  Designer() : TqxBenchDesigner({"Id", "ParentId", "Name", "Code", "Created", "Amount"}) {}
};

void BM_LoadHundredJoinedTables(benchmark::State& State) {
  Designer designer;
  const std::string statements[] = {JoinedTables(100, "a"), JoinedTables(100, "b")};
  int turn = 0;
  for (auto _ : State) {
    State.PauseTiming();
    designer.Load("");
    designer.Flush();
    State.ResumeTiming();
    designer.Load(statements[turn++ % 2]);
  }
  const auto boxes = designer.Builder.findChildren<TqxQueryBuilderDataSourceControl*>();
  if (boxes.size() != 100)
    State.SkipWithError("the statement did not load into 100 boxes");
}
BENCHMARK(BM_LoadHundredJoinedTables)->Unit(benchmark::kMillisecond);

void BM_MoveOneBoxAmong200(benchmark::State& State) {
  Designer designer;
  designer.Load(JoinedTables(200, "t"));
  designer.Flush();
  QList<TqxQueryBuilderDataSourceControl*> boxes = designer.WorkArea()->Boxes();
  if (boxes.size() != 200) {
    State.SkipWithError("the statement did not load into 200 boxes");
    return;
  }
  // A box in the middle of the chain: it has links on both sides.
  TqxQueryBuilderDataSourceControl* box = boxes[100];
  const QRect start = box->geometry();
  int step = 0;
  for (auto _ : State) {
    ++step;
    box->ProposeGeometry(start.translated((step % 40) * 3, (step % 17) * 5));
  }
}
BENCHMARK(BM_MoveOneBoxAmong200)->Unit(benchmark::kMicrosecond);

void BM_RepaintWorkAreaOf200Boxes(benchmark::State& State) {
  Designer designer;
  designer.Load(JoinedTables(200, "t"));
  designer.Flush();
  bench::RepaintLoop(State, designer.WorkArea()->Canvas());
}
BENCHMARK(BM_RepaintWorkAreaOf200Boxes)->Unit(benchmark::kMillisecond);

// What the screen shows: the work area's visible part, repainted in full.
void BM_RepaintVisibleWorkAreaOf200Boxes(benchmark::State& State) {
  Designer designer;
  designer.Load(JoinedTables(200, "t"));
  designer.Flush();
  bench::RepaintLoop(State, designer.WorkArea()->viewport());
}
BENCHMARK(BM_RepaintVisibleWorkAreaOf200Boxes)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
