// The designer program: a window opened on the sample database with the sample statement
// shown, and the results pane taking a large result while the window keeps serving events.
#include <sqlite3.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>

#include "bench_support.h"
#include "main_window.h"
#include "results_pane.h"

namespace qorvex::bench {
namespace {

QString ReadFile(const char* Name) {
  QFile file(QStringLiteral(QORVEX_SOURCE_DIR "/examples/") + QLatin1String(Name));
  file.open(QIODevice::ReadOnly);
  return QString::fromUtf8(file.readAll());
}

// The sample database, made once in a temporary folder.
const QString& SampleDatabase() {
  static QTemporaryDir dir;
  static const QString path = [] {
    const QString file = dir.filePath(QStringLiteral("sample.sqlite"));
    sqlite3* db = nullptr;
    sqlite3_open(file.toUtf8().constData(), &db);
    sqlite3_exec(db, ReadFile("sample-db.sql").toUtf8().constData(), nullptr, nullptr, nullptr);
    sqlite3_close(db);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    return file;
  }();
  return path;
}

// What the program does from its window's creation to the first picture of the sample
// statement on the sample database.
void BM_ProgramShowsSampleQuery(benchmark::State& State) {
  const QString sql = ReadFile("example.sql");
  const QString database = SampleDatabase();
  TqxSQL92SyntaxProvider syntax;
  TqxEventMetadataProvider none;
  for (auto _ : State) {
    TqxDesignerWindow window(&syntax, &none, QString());
    window.resize(1100, 760);
    window.OpenConnection({TqxConnectionInfo::ckSQLite, database}, nullptr, false);
    window.show();
    window.Editor()->setPlainText(sql);
    window.ApplyText();
    while (window.Builder()->IsSQLLoading())
      QApplication::processEvents();
    const QPixmap shot = window.grab();
    benchmark::DoNotOptimize(shot.cacheKey());
  }
}
BENCHMARK(BM_ProgramShowsSampleQuery)->Unit(benchmark::kMillisecond);

// A 5 ms timer in the window: the longest gap between its ticks is how long the window
// could not react.
struct StallMeter {
  explicit StallMeter(double& Longest) {
    since.start();
    QObject::connect(&ticker, &QTimer::timeout,
                     [&Longest, this] { Longest = std::max(Longest, double(since.restart())); });
    ticker.start(5);
  }
  QTimer ticker;
  QElapsedTimer since;
};

// Rows arrive in the results while a timer of the window ticks every 5 ms; the longest
// wait between ticks is how long the window stood still.
void BM_ResultsWhileWindowResponds(benchmark::State& State) {
  const int rows = static_cast<int>(State.range(0));
  const QString sql =
      QStringLiteral(
          "with recursive n(x) as (select 1 union all select x + 1 from n where x < %1) "
          "select x, x * 2 as twice, 'row ' || x as label from n")
          .arg(rows);
  const TqxRunTarget target{QStringLiteral("QSQLITE"), SampleDatabase(),
                            QStringLiteral("QSQLITE_OPEN_READONLY")};
  TqxResultsPane pane;
  pane.resize(800, 400);
  pane.show();
  // One run first: the driver's loading and the first painting of a table are the
  // program's start, not the streaming measured here.
  {
    QEventLoop loop;
    QObject::connect(&pane, &TqxResultsPane::finished, &loop, &QEventLoop::quit);
    pane.Run(target, QStringLiteral("select 1"));
    loop.exec();
  }
  double longest = 0;
  for (auto _ : State) {
    QEventLoop loop;
    QObject::connect(&pane, &TqxResultsPane::finished, &loop, &QEventLoop::quit);
    StallMeter meter(longest);
    pane.Run(target, sql);
    loop.exec();
    if (pane.Model()->rowCount() != rows)
      State.SkipWithError(pane.ErrorText().toUtf8().constData());
  }
  State.counters["rows"] = rows;
  State.counters["longest_stall_ms"] = longest;
  State.SetItemsProcessed(State.iterations() * rows);
}
BENCHMARK(BM_ResultsWhileWindowResponds)->Arg(200000)->Unit(benchmark::kMillisecond)->Iterations(3);

// The same timer with nothing running: the stalls the machine itself causes, to read the
// figure above against.
void BM_IdleWindowTimer(benchmark::State& State) {
  double longest = 0;
  for (auto _ : State) {
    QEventLoop loop;
    StallMeter meter(longest);
    QTimer::singleShot(400, &loop, &QEventLoop::quit);
    loop.exec();
  }
  State.counters["longest_stall_ms"] = longest;
}
BENCHMARK(BM_IdleWindowTimer)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace qorvex::bench

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
