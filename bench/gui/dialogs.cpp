// The Add object dialog off screen on a SQLite catalogue of 10,000 tables: opening it
// (reading the names, filling and laying out the list) and narrowing it by the filter.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include "bench_support.h"

#include <QApplication>
#include <QDir>
#include <QListView>
#include <QTemporaryDir>
#include <memory>
#include <string>

#include "qorvex/designer/dialogs.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/syntax/components.h"

namespace {

using namespace qorvex;

constexpr int kTables = 10000;

// A database file of kTables small tables named T00000 .. T09999.
struct Catalogue {
  Catalogue() {
    Path = Dir.filePath(QStringLiteral("catalogue.sqlite")).toStdString();
    sqlite3* db = nullptr;
    sqlite3_open(Path.c_str(), &db);
    std::string script = "begin;";
    char name[16];
    for (int i = 0; i < kTables; ++i) {
      std::snprintf(name, sizeof name, "T%05d", i);
      script += std::string("create table ") + name + "(Id integer primary key, Name text);";
    }
    script += "commit;";
    sqlite3_exec(db, script.c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(db);
    Connection = std::make_unique<TqxSQLiteConnection>(Path);
    Metadata = std::make_unique<TqxSQLiteMetadataProvider>(Connection.get());
    Builder.SetSyntaxProvider(&Syntax);
    Builder.SetMetadataProvider(Metadata.get());
    Builder.resize(1100, 760);
    Builder.show();
    QApplication::processEvents();
  }
  QTemporaryDir Dir;
  std::string Path;
  std::unique_ptr<TqxSQLiteConnection> Connection;
  std::unique_ptr<TqxSQLiteMetadataProvider> Metadata;
  TqxSQL92SyntaxProvider Syntax;
  TqxQueryBuilder Builder;
};

Catalogue& Shared() {
  static Catalogue catalogue;
  return catalogue;
}

// From nothing to the dialog on screen with every table listed.
void BM_AddObjectOpen(benchmark::State& State) {
  Catalogue& c = Shared();
  for (auto _ : State) {
    TqxAddObjectForm form(&c.Builder);
    form.FillLists();
    form.LoadOptions();
    form.show();
    QApplication::processEvents();
    if (form.lTables->model()->rowCount() != kTables)
      State.SkipWithError("the list is incomplete");
    form.hide();
  }
}
BENCHMARK(BM_AddObjectOpen)->Unit(benchmark::kMillisecond);

// One keystroke of the filter, the list laid out again.
void BM_AddObjectFilterKeystroke(benchmark::State& State) {
  Catalogue& c = Shared();
  TqxAddObjectForm form(&c.Builder);
  form.FillLists();
  form.show();
  QApplication::processEvents();
  const QString texts[] = {"t0", "t01", "t012", "t0123", "t012", "t01", "t0", ""};
  std::size_t i = 0;
  for (auto _ : State) {
    form.SetFilter(texts[i++ % std::size(texts)]);
    QApplication::processEvents();
  }
}
BENCHMARK(BM_AddObjectFilterKeystroke)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return qorvex::bench::RunDesignerBenchmarks(argc, argv);
}
