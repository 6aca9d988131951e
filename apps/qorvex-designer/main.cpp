// qorvex-designer: a query builder on a database, with the SQL text beside the diagram.
//
//   qorvex-designer [--sqlite FILE | --odbc CONNECTION] [FILE.sql]
//                   [--screenshot FILE.png [--size WxH]] [--link-style NAME] [--help]
//
// --screenshot loads the statement, lays it out, renders the whole window off screen into
// the PNG file and exits.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QScreen>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "main_window.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/syntax/components.h"
#include "query_files.h"
#if QORVEX_SQLITE_AVAILABLE
#include "qorvex/metadata/sqlite_provider.h"
#endif
#if QORVEX_ODBC_AVAILABLE
#include "qorvex/metadata/odbc_provider.h"
#endif

namespace {

constexpr const char* kUsage =
    "usage: qorvex-designer [--sqlite FILE | --odbc CONNECTION] [FILE.sql]\n"
    "                       [--screenshot FILE.png [--size WxH]] [--link-style NAME]\n"
    "                       [--help]\n"
    "\n"
    "Shows a SELECT statement as a diagram that you edit; the SQL pane below follows every\n"
    "edit, and text typed there is applied after a short pause or with Ctrl+Return.\n"
    "\n"
    "  --sqlite FILE        read tables, views, columns and foreign keys from an SQLite file\n"
    "  --odbc CONNECTION    the same from an ODBC connection string\n"
    "  FILE.sql             the statement to open, laid out as FILE.sql.layout.json\n"
    "                       says when that file exists (File > Save writes both)\n"
    "  --screenshot PNG     lay the statement out, render the window into PNG and exit\n"
    "  --size WxH           window size for --screenshot (default 1100x760)\n"
    "  --link-style NAME    draw the joins as \"Simple\", \"MS SQL Style\" or \"Access Style\"\n"
    "                       (the default; also in the View menu)\n"
    "  --help               this text\n";

struct Options {
  std::string kind;
  std::string target;
  std::string sqlFile;
  std::string screenshot;
  std::string linkStyle;
  int width = 1100;
  int height = 760;
  bool help = false;
};

struct UsageError {
  std::string message;
};

Options ReadOptions(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc)
        throw UsageError{arg + " needs an argument"};
      return argv[++i];
    };
    if (arg == "--help" || arg == "-h") {
      o.help = true;
    } else if (arg == "--sqlite" || arg == "--odbc") {
      if (!o.kind.empty())
        throw UsageError{"give one database: --sqlite FILE or --odbc CONNECTION"};
      o.kind = arg;
      o.target = value();
    } else if (arg == "--screenshot") {
      o.screenshot = value();
    } else if (arg == "--link-style") {
      o.linkStyle = value();
    } else if (arg == "--size") {
      const std::string size = value();
      int w = 0;
      int h = 0;
      char extra = 0;
      if (std::sscanf(size.c_str(), "%dx%d%c", &w, &h, &extra) != 2 || w < 200 || h < 150 ||
          w > 8000 || h > 8000)
        throw UsageError{"--size wants WIDTHxHEIGHT, for example 1100x760 (200x150 at least)"};
      o.width = w;
      o.height = h;
    } else if (arg.size() > 1 && arg[0] == '-') {
      throw UsageError{"unknown option " + arg};
    } else if (!o.sqlFile.empty()) {
      throw UsageError{"more than one SQL file"};
    } else {
      o.sqlFile = arg;
    }
  }
  return o;
}

// The metadata provider with the connection it reads from.
struct Metadata {
#if QORVEX_SQLITE_AVAILABLE
  std::unique_ptr<qorvex::TqxSQLiteConnection> SQLite;
#endif
#if QORVEX_ODBC_AVAILABLE
  std::unique_ptr<qorvex::TqxODBCConnection> ODBC;
#endif
  std::unique_ptr<qorvex::TqxBaseMetadataProvider> Provider;
};

Metadata OpenMetadata(const Options& o) {
  using namespace qorvex;
  Metadata m;
  if (o.kind.empty()) {
    m.Provider = std::make_unique<TqxEventMetadataProvider>();
  } else if (o.kind == "--sqlite") {
#if QORVEX_SQLITE_AVAILABLE
    if (!QFile::exists(QString::fromStdString(o.target)))
      throw std::runtime_error("no such database file: " + o.target);
    m.SQLite = std::make_unique<TqxSQLiteConnection>(o.target);
    m.SQLite->Open();
    m.Provider = std::make_unique<TqxSQLiteMetadataProvider>(m.SQLite.get());
#else
    throw UsageError{"this build has no SQLite support"};
#endif
  } else {
#if QORVEX_ODBC_AVAILABLE
    m.ODBC = std::make_unique<TqxODBCConnection>(o.target);
    m.ODBC->Open();
    m.Provider = std::make_unique<TqxODBCMetadataProvider>(m.ODBC.get());
#else
    throw UsageError{"this build has no ODBC support"};
#endif
  }
  return m;
}

QString ReadSql(const std::string& Path) {
  QFile file(QString::fromStdString(Path));
  if (!file.open(QIODevice::ReadOnly))
    throw std::runtime_error("cannot read " + Path + ": " + file.errorString().toStdString());
  return QString::fromUtf8(file.readAll());
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  try {
    options = ReadOptions(argc, argv);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "qorvex-designer: %s\n%s", error.message.c_str(), kUsage);
    return 2;
  }
  if (options.help) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  // A screenshot needs no display.
  if (!options.screenshot.empty() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");

  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("qorvex-designer"));

  qorvex::TqxSQL92SyntaxProvider syntax;
  Metadata metadata;
  try {
    metadata = OpenMetadata(options);
    if (!options.sqlFile.empty())
      ReadSql(options.sqlFile);  // an unreadable file fails before any window shows
  } catch (const UsageError& error) {
    std::fprintf(stderr, "qorvex-designer: %s\n%s", error.message.c_str(), kUsage);
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qorvex-designer: %s\n", error.what());
    return 1;
  }

  qorvex::TqxDesignerWindow window(&syntax, metadata.Provider.get(),
                                   QString::fromStdString(options.sqlFile));
  bool rejected = false;
  QObject::connect(window.Builder(), &qorvex::TqxQueryBuilder::sqlError,
                   [&](const QString&, const QString& errors) {
                     rejected = true;
                     if (!options.screenshot.empty())
                       std::fprintf(stderr, "qorvex-designer: %s\n", errors.toUtf8().constData());
                   });
  if (!options.linkStyle.empty() && !window.SetLinkStyle(options.linkStyle)) {
    std::string known;
    window.Builder()->GetUserNames(
        [&](const std::string& Name) { known += (known.empty() ? "\"" : ", \"") + Name + "\""; });
    std::fprintf(stderr, "qorvex-designer: unknown link style \"%s\" (known: %s)\n%s",
                 options.linkStyle.c_str(), known.c_str(), kUsage);
    return 2;
  }
  window.resize(options.width, options.height);
  window.show();
  if (!options.sqlFile.empty()) {
    // The statement with its layout, when one was saved beside it.
    QString error;
    QString warning;
    if (!window.Files()->Open(QString::fromStdString(options.sqlFile), &error, &warning)) {
      std::fprintf(stderr, "qorvex-designer: %s\n", error.toUtf8().constData());
      return 1;
    }
    if (!warning.isEmpty())
      std::fprintf(stderr, "qorvex-designer: %s\n", warning.toUtf8().constData());
  }
  if (options.screenshot.empty())
    return app.exec();

  // Let the load message arrive and the layout settle, then render.
  QElapsedTimer clock;
  clock.start();
  while (window.Builder()->IsSQLLoading() && clock.elapsed() < 5000)
    QApplication::processEvents(QEventLoop::AllEvents, 50);
  for (int i = 0; i < 5; ++i)
    QApplication::processEvents();
  const QPixmap shot = window.grab();
  if (shot.isNull() || !shot.save(QString::fromStdString(options.screenshot), "PNG")) {
    std::fprintf(stderr, "qorvex-designer: cannot write %s\n", options.screenshot.c_str());
    return 1;
  }
  return rejected ? 1 : 0;
}
