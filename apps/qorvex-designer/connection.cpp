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

QString TqxConnectionInfo::Key() const {
  return (kind == ckSQLite ? QStringLiteral("sqlite:") : QStringLiteral("odbc:")) + target;
}

bool TqxConnectionInfo::FromKey(const QString& Key, TqxConnectionInfo& Info) {
  if (Key.startsWith(QStringLiteral("sqlite:")))
    Info = {ckSQLite, Key.mid(7)};
  else if (Key.startsWith(QStringLiteral("odbc:")))
    Info = {ckODBC, Key.mid(5)};
  else
    return false;
  return !Info.target.isEmpty();
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

QString TqxConnectionInfo::DisplayName() const {
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

std::unique_ptr<TqxDesignerConnection> TqxDesignerConnection::Open(const TqxConnectionInfo& Info) {
  std::unique_ptr<TqxDesignerConnection> c(new TqxDesignerConnection);
  c->Info_ = Info;
  c->Handles_ = std::make_unique<Handles>();
  Handles& h = *c->Handles_;
  if (Info.kind == TqxConnectionInfo::ckSQLite) {
#if QORVEX_SQLITE_AVAILABLE
    if (!QFileInfo(Info.target).isFile())
      throw std::runtime_error("no such database file: " + Info.target.toStdString());
    sqlite3* raw = nullptr;
    const int rc =
        sqlite3_open_v2(Info.target.toUtf8().constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    h.Database.reset(raw);
    if (rc != SQLITE_OK)
      throw std::runtime_error(Info.target.toStdString() + ": " + sqlite3_errmsg(raw));
    // Opening is lazy in SQLite: reading the schema tells a database from another file.
    char* message = nullptr;
    if (sqlite3_exec(raw, "select count(*) from sqlite_master", nullptr, nullptr, &message) !=
        SQLITE_OK) {
      const std::string text = message != nullptr ? message : sqlite3_errmsg(raw);
      sqlite3_free(message);
      throw std::runtime_error(Info.target.toStdString() + ": " + text);
    }
    h.SQLite = std::make_unique<TqxSQLiteConnection>(raw);
    h.Provider = std::make_unique<TqxSQLiteMetadataProvider>(h.SQLite.get());
#else
    throw std::runtime_error("this build has no SQLite support");
#endif
  } else {
#if QORVEX_ODBC_AVAILABLE
    h.ODBC = std::make_unique<TqxODBCConnection>(Info.target.toStdString());
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
  return Info_.kind == TqxConnectionInfo::ckSQLite ? QStringLiteral("QSQLITE")
                                                   : QStringLiteral("QODBC");
}

QString TqxDesignerConnection::QtDatabaseName() const {
  return Info_.target;
}

QString TqxDesignerConnection::QtConnectOptions() const {
  // ODBC's access mode is a hint the driver may follow; SQLite's flag is a promise.
  return Info_.kind == TqxConnectionInfo::ckSQLite
             ? QStringLiteral("QSQLITE_OPEN_READONLY")
             : QStringLiteral("SQL_ATTR_ACCESS_MODE=SQL_MODE_READ_ONLY");
}

QStringList RecentConnectionKeys() {
  QSettings settings;
  return settings.value(QLatin1String(kRecentKey)).toStringList();
}

void RememberConnection(const TqxConnectionInfo& Info) {
  // Passwords are not written to the settings file; a recent entry asks the driver
  // without one.
  TqxConnectionInfo kept = Info;
  if (kept.kind == TqxConnectionInfo::ckODBC)
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
