// Shared by the designer benchmarks: a builder shown off screen over an event metadata
// provider whose every table has the same columns, and the main that starts Qt.
#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <string>
#include <utility>
#include <vector>

#include "designer/designer_p.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/query.h"
#include "qorvex/syntax/components.h"

namespace qorvex::bench {

inline constexpr QEvent::Type kLoadSQLEvent = static_cast<QEvent::Type>(1024);

struct TqxBenchDesigner {
  explicit TqxBenchDesigner(std::vector<std::string> Fields) {
    Metadata.OnGetSQLFieldNames = [Fields = std::move(Fields)](
                                      TqxEventMetadataProvider*, const std::string&,
                                      std::vector<std::string>& Out) { Out = Fields; };
    Builder.SetSyntaxProvider(&Syntax);
    Builder.SetMetadataProvider(&Metadata);
    Builder.resize(1200, 800);
    Builder.show();
    QApplication::processEvents();
  }
  // Assigns the text and delivers the load message.
  void Load(const std::string& Sql) {
    Builder.SetSQL(Sql);
    QApplication::sendPostedEvents(&Builder, kLoadSQLEvent);
  }
  // Frees released controls and delivers what the load posted.
  void Flush() {
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
  }
  TqxQueryBuilderWorkArea* WorkArea() {
    auto* control = dynamic_cast<TqxWidgetControl*>(Builder.GetActiveUnionSubquery()->GetControl());
    return qobject_cast<TqxUnionSubQueryTabSheet*>(control->GetWidget())->GetWorkArea();
  }

  TqxSQL92SyntaxProvider Syntax;
  TqxEventMetadataProvider Metadata;
  TqxQueryBuilder Builder;
};

// One full repaint of Widget into Image. Not inlined, so that a profiler can count the
// instructions of exactly the timed repaints (callgrind --toggle-collect=*RepaintOnce*).
[[gnu::noinline]] inline void RepaintOnce(QWidget* Widget, QImage& Image) {
  QPainter painter(&Image);
  Widget->render(&painter);
}

// Repaints Widget at every step, after one repaint that fills the caches a shown diagram
// has filled long before (laid-out texts, pending geometry events).
inline void RepaintLoop(benchmark::State& State, QWidget* Widget) {
  QImage image(Widget->size(), QImage::Format_ARGB32_Premultiplied);
  {
    QPainter painter(&image);
    Widget->render(&painter);
  }
  for (auto _ : State)
    RepaintOnce(Widget, image);
  State.counters["pixels"] = static_cast<double>(Widget->width()) * Widget->height();
}

// Runs the registered benchmarks on Qt's offscreen platform unless another one is set.
inline int RunDesignerBenchmarks(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace qorvex::bench
