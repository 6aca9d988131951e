#include "connection.h"

#include <QFileInfo>
#include <QSettings>
#include <stdexcept>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/metadata/event_provider.h"
#if QORVEX_SQLITE_AVAILABLE
#include <sqlite3.h>

#include "qorvex/metadata/sqlite_provider.h"
#endif
#if QORVEX_ODBC_AVAILABLE
#include "qorvex/metadata/odbc_provider.h"
#endif

namespace qorvex {

namespace {
constexpr const char* kRecentKey = "connections/recent";
constexpr int kRecentMax = 8;
}  // namespace

QString TqxConnectionSpec::Key() const {
  return (kind == ckSQLite ? QStringLiteral("sqlite:") : QStringLiteral("odbc:")) + target;
}

bool TqxConnectionSpec::FromKey(const QString& Key, TqxConnectionSpec& Spec) {
  if (Key.startsWith(QStringLiteral("sqlite:")))
    Spec = {ckSQLite, Key.mid(7)};
  else if (Key.startsWith(QStringLiteral("odbc:")))
    Spec = {ckODBC, Key.mid(5)};
  else
    return false;
  return !Spec.target.isEmpty();
}

namespace {
// A connection string without its password, for titles, menus and the settings file.
QString WithoutPassword(const QString& Target) {
  QStringList parts = Target.split(QLatin1Char(';'), Qt::SkipEmptyParts);
  parts.removeIf([](const QString& Part) {
    const QString name = Part.section(QLatin1Char('='), 0, 0).trimmed();
    return name.compare(QStringLiteral("PWD"), Qt::CaseInsensitive) == 0 ||
           name.compare(QStringLiteral("Password"), Qt::CaseInsensitive) == 0;
  });
  return parts.join(QLatin1Char(';'));
}
}  // namespace

QString TqxConnectionSpec::DisplayName() const {
  return kind == ckSQLite ? QFileInfo(target).fileName() : WithoutPassword(target);
}

struct TqxDesignerConnection::Handles {
#if QORVEX_SQLITE_AVAILABLE
  struct CloseDatabase {
    void operator()(sqlite3* Db) const { sqlite3_close_v2(Db); }
  };
  std::unique_ptr<sqlite3, CloseDatabase> Database;
  std::unique_ptr<TqxSQLiteConnection> SQLite;
#endif
#if QORVEX_ODBC_AVAILABLE
  std::unique_ptr<TqxODBCConnection> ODBC;
#endif
  // Freed first: it refers to the connection above.
  std::unique_ptr<TqxBaseMetadataProvider> Provider;
  ~Handles() {
    Provider.reset();
  }
};

std::unique_ptr<TqxDesignerConnection> TqxDesignerConnection::Open(const TqxConnectionSpec& Spec) {
  std::unique_ptr<TqxDesignerConnection> c(new TqxDesignerConnection);
  c->Spec_ = Spec;
  c->Handles_ = std::make_unique<Handles>();
  Handles& h = *c->Handles_;
  if (Spec.kind == TqxConnectionSpec::ckSQLite) {
#if QORVEX_SQLITE_AVAILABLE
    if (!QFileInfo(Spec.target).isFile())
      throw std::runtime_error("no such database file: " + Spec.target.toStdString());
    sqlite3* raw = nullptr;
    const int rc =
        sqlite3_open_v2(Spec.target.toUtf8().constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    h.Database.reset(raw);
    if (rc != SQLITE_OK)
      throw std::runtime_error(Spec.target.toStdString() + ": " + sqlite3_errmsg(raw));
    // Opening is lazy in SQLite: reading the schema tells a database from another file.
    char* message = nullptr;
    if (sqlite3_exec(raw, "select count(*) from sqlite_master", nullptr, nullptr, &message) !=
        SQLITE_OK) {
      const std::string text = message != nullptr ? message : sqlite3_errmsg(raw);
      sqlite3_free(message);
      throw std::runtime_error(Spec.target.toStdString() + ": " + text);
    }
    h.SQLite = std::make_unique<TqxSQLiteConnection>(raw);
    h.Provider = std::make_unique<TqxSQLiteMetadataProvider>(h.SQLite.get());
#else
    throw std::runtime_error("this build has no SQLite support");
#endif
  } else {
#if QORVEX_ODBC_AVAILABLE
    h.ODBC = std::make_unique<TqxODBCConnection>(Spec.target.toStdString());
    h.ODBC->Open();
    h.Provider = std::make_unique<TqxODBCMetadataProvider>(h.ODBC.get());
#else
    throw std::runtime_error("this build has no ODBC support");
#endif
  }
  return c;
}

TqxDesignerConnection::~TqxDesignerConnection() = default;

TqxBaseMetadataProvider* TqxDesignerConnection::Provider() const {
  return Handles_->Provider.get();
}

QString TqxDesignerConnection::QtDriver() const {
  return Spec_.kind == TqxConnectionSpec::ckSQLite ? QStringLiteral("QSQLITE")
                                                   : QStringLiteral("QODBC");
}

QString TqxDesignerConnection::QtDatabaseName() const {
  return Spec_.target;
}

QString TqxDesignerConnection::QtConnectOptions() const {
  // ODBC's access mode is a hint the driver may follow; SQLite's flag is a promise.
  return Spec_.kind == TqxConnectionSpec::ckSQLite
             ? QStringLiteral("QSQLITE_OPEN_READONLY")
             : QStringLiteral("SQL_ATTR_ACCESS_MODE=SQL_MODE_READ_ONLY");
}

QStringList RecentConnectionKeys() {
  QSettings settings;
  return settings.value(QLatin1String(kRecentKey)).toStringList();
}

void RememberConnection(const TqxConnectionSpec& Spec) {
  // Passwords are not written to the settings file; a recent entry asks the driver
  // without one.
  TqxConnectionSpec kept = Spec;
  if (kept.kind == TqxConnectionSpec::ckODBC)
    kept.target = WithoutPassword(kept.target);
  QStringList keys = RecentConnectionKeys();
  keys.removeAll(kept.Key());
  keys.prepend(kept.Key());
  while (keys.size() > kRecentMax)
    keys.removeLast();
  QSettings settings;
  settings.setValue(QLatin1String(kRecentKey), keys);
}

}  // namespace qorvex
