#pragma once

#include <QString>
#include <QStringList>
#include <memory>

namespace qorvex {

class TqxBaseMetadataProvider;

// Where a database is: an SQLite file or an ODBC connection string ("DSN=..." or
// "Driver=...;..."). Its key ("sqlite:PATH", "odbc:STRING") is what the recent list stores.
struct TqxConnectionInfo {
  enum Kind { ckSQLite, ckODBC };
  Kind kind = ckSQLite;
  QString target;

  QString Key() const;
  // False when the key is not one the recent list writes.
  static bool FromKey(const QString& Key, TqxConnectionInfo& Info);
  // What a person reads: the file's name, or the data source.
  QString DisplayName() const;
  bool operator==(const TqxConnectionInfo& Other) const {
    return kind == Other.kind && target == Other.target;
  }
};

// An open database: the metadata provider the builder reads and what Qt SQL needs to
// run statements on it. SQLite files are opened read-only, so that nothing the program
// does can change them.
class TqxDesignerConnection {
 public:
  // Opens the database; raises std::runtime_error with the database's message.
  static std::unique_ptr<TqxDesignerConnection> Open(const TqxConnectionInfo& Info);
  ~TqxDesignerConnection();

  const TqxConnectionInfo& Info() const { return Info_; }
  TqxBaseMetadataProvider* Provider() const;
  // Qt SQL driver, database name and connect options for a connection of its own.
  QString QtDriver() const;
  QString QtDatabaseName() const;
  QString QtConnectOptions() const;

 private:
  TqxDesignerConnection() = default;
  struct Handles;
  TqxConnectionInfo Info_;
  std::unique_ptr<Handles> Handles_;
};

// The recently opened connections, newest first, kept in QSettings.
QStringList RecentConnectionKeys();
void RememberConnection(const TqxConnectionInfo& Info);

}  // namespace qorvex
