// Links on the designer's diagram, off screen: a statement of 200 joined tables with 300
// links. Re-placing links after one box moves, and one full repaint in each link style.
#include <benchmark/benchmark.h>
#include "bench_support.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <string>
#include <vector>

#include "designer/designer_p.h"
#include "designer/link_control.h"
#include "qorvex/designer/link_painters.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/query.h"
#include "qorvex/syntax/components.h"

namespace {

using namespace qorvex;

using bench::kLoadSQLEvent;
constexpr int kBoxes = 200;
constexpr int kLinks = 300;

// T0 .. T199, each joined to the one before by a key column; the first ones by a second
// column as well, up to 300 links.
std::string JoinedTables() {
  std::string sql = "select t0.Name from T0 t0";
  int links = 0;
  for (int i = 1; i < kBoxes; ++i) {
    const std::string a = "t" + std::to_string(i);
    const std::string p = "t" + std::to_string(i - 1);
    sql += " inner join T" + std::to_string(i) + " " + a + " on " + p + ".Id = " + a + ".ParentId";
    ++links;
    if (kLinks - links > kBoxes - 1 - i) {
      sql += " and " + p + ".Code = " + a + ".Code";
      ++links;
    }
  }
  return sql;
}

struct Diagram : bench::TqxBenchDesigner {
  Diagram() : TqxBenchDesigner({"Id", "ParentId", "Name", "Code", "Created", "Amount"}) {
    Load(JoinedTables());
    Flush();
    Area = WorkArea();
  }
  bool Complete() const {
    int placed = 0;
    for (const TqxQueryBuilderLinkControl* link : Area->LinkControls())
      placed += link->IsPlaced() ? 1 : 0;
    return Area->Boxes().size() == kBoxes && placed == kLinks;
  }

  TqxQueryBuilderWorkArea* Area = nullptr;
};

// Moves one box in the middle of the chain to a new place at every step; with
// RealignAll, every link of the diagram is placed again after the move.
void MoveOneBox(benchmark::State& State, bool RealignAll) {
  Diagram diagram;
  if (!diagram.Complete()) {
    State.SkipWithError("the statement did not load into 200 boxes and 300 links");
    return;
  }
  TqxQueryBuilderDataSourceControl* box = diagram.Area->Boxes()[50];
  const QRect start = box->geometry();
  int step = 0;
  for (auto _ : State) {
    ++step;
    box->ProposeGeometry(start.translated((step % 40) * 4, (step % 17) * 6));
    if (RealignAll)
      diagram.Area->RealignLinks(nullptr);
  }
}

// The links ending on the moved box follow it (four of them).
void BM_MoveOneBoxWithItsLinks(benchmark::State& State) {
  MoveOneBox(State, false);
}
BENCHMARK(BM_MoveOneBoxWithItsLinks)->Unit(benchmark::kMicrosecond);

void BM_RealignAllLinksAfterOneBoxMoves(benchmark::State& State) {
  MoveOneBox(State, true);
}
BENCHMARK(BM_RealignAllLinksAfterOneBoxMoves)->Unit(benchmark::kMicrosecond);

// Draws Shown's links in the style the benchmark's argument names; false (the run
// skipped) when the diagram or the style is missing.
bool InStyleOfRange(benchmark::State& State, Diagram& Shown) {
  static const char* const kStyles[] = {"Simple", "MS SQL Style", "Access Style"};
  const char* style = kStyles[State.range(0)];
  State.SetLabel(style);
  if (Shown.Complete() && Shown.Builder.CreateByUserName(style))
    return true;
  State.SkipWithError("the diagram or the style is missing");
  return false;
}

// The whole diagram rendered once: background, 200 boxes, 300 links in one style.
void BM_RepaintDiagramWithLinks(benchmark::State& State) {
  Diagram diagram;
  if (!InStyleOfRange(State, diagram))
    return;
  bench::RepaintLoop(State, diagram.Area->Canvas());
}
BENCHMARK(BM_RepaintDiagramWithLinks)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

// Only the links: each link control painted once by its painter.
void BM_PaintLinksOnly(benchmark::State& State) {
  Diagram diagram;
  if (!InStyleOfRange(State, diagram))
    return;
  QWidget* canvas = diagram.Area->Canvas();
  QImage image(canvas->size(), QImage::Format_ARGB32_Premultiplied);
  TqxQueryBuilderLinkPainter* painter = diagram.Builder.GetLinkPainter();
  for (auto _ : State) {
    QPainter canvasPainter(&image);
    for (TqxQueryBuilderLinkControl* link : diagram.Area->LinkControls()) {
      canvasPainter.save();
      canvasPainter.translate(link->pos());
      painter->PaintLink(canvasPainter, link->GetPoints(), false, link->GetLeftSide(),
                         link->GetRightSide(), link->GetLink());
      canvasPainter.restore();
    }
  }
}
BENCHMARK(BM_PaintLinksOnly)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
