// qorvex-designer: a query builder on a database, with the SQL text beside the diagram.
//
//   qorvex-designer [--sqlite FILE | --odbc CONNECTION] [FILE.sql]
//                   [--screenshot FILE.png [--size WxH]] [--link-style NAME] [--run]
//                   [--help]
//
// --screenshot loads the statement, lays it out, renders the whole window off screen into
// the PNG file and exits.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTimer>
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
#include "results_pane.h"

namespace {

constexpr const char* kUsage =
    "usage: qorvex-designer [--sqlite FILE | --odbc CONNECTION] [FILE.sql]\n"
    "                       [--screenshot FILE.png [--size WxH]] [--link-style NAME]\n"
    "                       [--run] [--help]\n"
    "\n"
    "Shows a SELECT statement as a diagram that you edit; the SQL pane below follows every\n"
    "edit, and text typed there is applied after a short pause or with Ctrl+Return.\n"
    "\n"
    "  --sqlite FILE        read tables, views, columns and foreign keys from an SQLite file\n"
    "  --odbc CONNECTION    the same from an ODBC connection string\n"
    "  FILE.sql             the statement to open\n"
    "  --screenshot PNG     lay the statement out, render the window into PNG and exit\n"
    "  --size WxH           window size for --screenshot (default 1100x760)\n"
    "  --link-style NAME    draw the joins as \"Simple\", \"MS SQL Style\" or \"Access Style\"\n"
    "                       (the default; also in the View menu)\n"
    "  --run                run the statement on the database once it is shown (F5)\n"
    "  --help               this text\n";

struct Options {
  std::string kind;
  std::string target;
  std::string sqlFile;
  std::string screenshot;
  std::string linkStyle;
  bool run = false;
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
    } else if (arg == "--run") {
      o.run = true;
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

  QApplication::setOrganizationName(QStringLiteral("qorvex"));

  qorvex::TqxSQL92SyntaxProvider syntax;
  // The metadata before a database is opened: no objects.
  qorvex::TqxEventMetadataProvider noDatabase;
  try {
    if (!options.sqlFile.empty())
      ReadSql(options.sqlFile);  // an unreadable file fails before any window shows
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qorvex-designer: %s\n", error.what());
    return 1;
  }

  qorvex::TqxDesignerWindow window(&syntax, &noDatabase, QString::fromStdString(options.sqlFile));
  if (!options.kind.empty()) {
    const qorvex::TqxConnectionInfo info{options.kind == "--sqlite"
                                             ? qorvex::TqxConnectionInfo::ckSQLite
                                             : qorvex::TqxConnectionInfo::ckODBC,
                                         QString::fromStdString(options.target)};
    QString error;
    // A screenshot leaves the list of recent connections as it is.
    if (!window.OpenConnection(info, &error, options.screenshot.empty())) {
      std::fprintf(stderr, "qorvex-designer: %s\n", error.toUtf8().constData());
      return 1;
    }
    if (!options.sqlFile.empty())
      window.setWindowTitle(QStringLiteral("Qorvex Designer - %1 - %2")
                                .arg(QString::fromStdString(options.sqlFile), info.DisplayName()));
  }
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
  if (options.run)
    QTimer::singleShot(0, &window, [&window] { window.RunQuery(); });
  if (options.screenshot.empty())
    return app.exec();

  // Let the load message arrive, the rows come and the layout settle, then render.
  QElapsedTimer clock;
  clock.start();
  while ((window.Builder()->IsSQLLoading() || (options.run && clock.elapsed() < 100) ||
          window.Results()->IsRunning()) &&
         clock.elapsed() < 10000)
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
