#pragma once

// Real databases for the provider tests: SQLite files in temporary directories, and one
// PostgreSQL server per test process, started on first use in a temporary data
// directory on a free local port and removed when the process ends.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "error_of.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/core/errors.h"

namespace qorvex::dbtest {

// A temporary directory, removed with everything in it by the destructor.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Runs `sql` (one or more statements) on the SQLite file at `path`, creating the file.
void SQLiteExec(const std::filesystem::path& path, const std::string& sql);
// The rows of the query `sql` as text, NULL as "<null>".
using Rows = std::vector<std::vector<std::string>>;
Rows SQLiteRows(const std::filesystem::path& path, const std::string& sql);

// The text of the file `name` under tests/db/corpus.
std::string ReadCorpus(const std::string& name);

using test::ErrorOf;

inline std::vector<std::string> Sorted(std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  return names;
}

// The provider's relations of `table` as "FKTABLE(cols) -> PKTABLE(cols)", in provider
// order; checks that each is well formed.
std::vector<std::string> RelationTexts(TqxBaseMetadataProvider& provider, const std::string& table);

// ODBC driver references for connection strings: the name registered in odbcinst.ini
// when there is one, else the driver library's path.
std::string SQLiteODBCDriver();
std::string PostgreSQLODBCDriver();

// The process's PostgreSQL server (started on the first call; throws std::runtime_error
// with the server's log when it cannot be started).
class PostgresServer {
 public:
  static PostgresServer& Instance();
  // Stops the server (if started) and removes its directory.
  static void Shutdown();

  // An ODBC connection string for `database`; `extra` is appended as is.
  std::string ConnectionString(const std::string& database, const std::string& extra = "") const;
  // A new empty database with a unique name; returns its name.
  std::string CreateDatabase();

 private:
  PostgresServer() = default;
  void Start();
  void Stop();

  std::filesystem::path dir_;
  int port_ = 0;
  FILE* watchdog_ = nullptr;  // the write end of the watchdog's pipe
  int databases_ = 0;
};

// Runs statements through a fresh ODBC connection (autocommit).
void ODBCExec(const std::string& connection_string, const std::string& sql);

enum class Backend { SQLiteNative, SQLiteODBC, PostgreSQLODBC };
const char* BackendName(Backend backend);

// One fresh database of a backend with a metadata provider connected to it.
class TestDatabase {
 public:
  virtual ~TestDatabase() = default;
  virtual Backend Kind() const = 0;
  virtual TqxBaseMetadataProvider& Provider() = 0;
  // Runs statements outside the provider's connection.
  virtual void Exec(const std::string& sql) = 0;
  virtual std::string Scalar(const std::string& sql) = 0;

  static std::unique_ptr<TestDatabase> Create(Backend backend);
};

}  // namespace qorvex::dbtest
