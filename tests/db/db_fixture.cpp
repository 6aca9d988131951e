#include "db_fixture.h"

#include <netinet/in.h>
#include <pwd.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/metadata/odbc_provider.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace fs = std::filesystem;

namespace qorvex::dbtest {

namespace {

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

fs::path MakeTempDir(const char* prefix) {
  std::string pattern = (fs::temp_directory_path() / (std::string(prefix) + "XXXXXX")).string();
  if (mkdtemp(pattern.data()) == nullptr)
    throw std::runtime_error("cannot create a temporary directory under " +
                             fs::temp_directory_path().string());
  return pattern;
}

}  // namespace

// --- temporary directories and SQLite ------------------------------------------------

TempDir::TempDir() : path_(MakeTempDir("qorvex-db-")) {}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

namespace {

sqlite3* OpenSQLite(const fs::path& path) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    std::string message = sqlite3_errmsg(db);
    sqlite3_close(db);
    throw std::runtime_error("sqlite open " + path.string() + ": " + message);
  }
  return db;
}

}  // namespace

void SQLiteExec(const fs::path& path, const std::string& sql) {
  sqlite3* db = OpenSQLite(path);
  char* error = nullptr;
  int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error);
  std::string message = error ? error : "";
  sqlite3_free(error);
  sqlite3_close(db);
  if (rc != SQLITE_OK)
    throw std::runtime_error("sqlite: " + message + " in: " + sql);
}

Rows SQLiteRows(const fs::path& path, const std::string& sql) {
  sqlite3* db = OpenSQLite(path);
  sqlite3_stmt* stmt = nullptr;
  Rows rows;
  int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
  while (rc == SQLITE_OK && (rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    rows.emplace_back();
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
      const unsigned char* text = sqlite3_column_text(stmt, i);
      rows.back().push_back(text ? reinterpret_cast<const char*>(text) : "<null>");
    }
    rc = SQLITE_OK;
  }
  std::string message = sqlite3_errmsg(db);
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  if (rc != SQLITE_DONE)
    throw std::runtime_error("sqlite: " + message + " in: " + sql);
  return rows;
}

std::string ReadCorpus(const std::string& name) {
  return ReadFile(fs::path(QORVEX_SOURCE_DIR) / "tests/db/corpus" / name);
}

std::vector<std::string> RelationTexts(TqxBaseMetadataProvider& provider,
                                       const std::string& table) {
  static TastSQL92SyntaxProvider syntax;
  auto name = NewNode<TSQLDatabaseObject>(&syntax);
  name->AddName(table);
  TSQLMetadataRelations relations;
  provider.GetTableRelations(*name, relations);
  auto join = [](const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& n : names)
      text += (text.empty() ? "" : ",") + n;
    return text;
  };
  std::vector<std::string> out;
  for (const auto& r : relations) {
    EXPECT_EQ(r->PKTable->Count(), 1);
    EXPECT_EQ(r->FKTable->Count(), 1);
    EXPECT_EQ(r->PKTable->GetSyntaxProvider(), &syntax);
    EXPECT_EQ(r->FKTable->GetSyntaxProvider(), &syntax);
    EXPECT_EQ(r->PKColumns.size(), r->FKColumns.size());
    out.push_back(r->FKTable->GetObjName() + "(" + join(r->FKColumns) + ") -> " +
                  r->PKTable->GetObjName() + "(" + join(r->PKColumns) + ")");
  }
  return out;
}

// --- ODBC ------------------------------------------------------------------------------

namespace {

// The driver library's path when it is found, else the registered name. The path comes
// first: by name, the PostgreSQL driver takes Debian's odbcinst.ini settings, which turn
// on a communication log in /tmp for every process. A missing driver fails at connect.
std::string FindDriver(const std::string& registered, const std::string& library) {
  for (const char* dir : {"/usr/lib/x86_64-linux-gnu/odbc", "/usr/lib/aarch64-linux-gnu/odbc",
                          "/usr/lib/odbc", "/usr/lib64", "/usr/local/lib"}) {
    fs::path candidate = fs::path(dir) / library;
    if (fs::exists(candidate))
      return candidate.string();
  }
  return "{" + registered + "}";
}

// A statement on a fresh connection (autocommit), opened by the provider's own connection
// class (its failures are EqxErrors with the driver's messages).
struct OdbcStatement {
  TqxODBCConnection connection;
  SQLHSTMT stmt = SQL_NULL_HSTMT;

  OdbcStatement(const std::string& connection_string, const std::string& sql)
      : connection(connection_string) {
    connection.Open();
    SQLAllocHandle(SQL_HANDLE_STMT, connection.GetHandle(), &stmt);
    SQLRETURN rc = SQLExecDirect(stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
    if (SQL_SUCCEEDED(rc) || rc == SQL_NO_DATA)
      return;
    std::string text = "odbc: ";
    SQLCHAR state[6], message[1024];
    SQLINTEGER native;
    SQLSMALLINT length;
    for (SQLSMALLINT i = 1; SQL_SUCCEEDED(SQLGetDiagRec(SQL_HANDLE_STMT, stmt, i, state, &native,
                                                        message, sizeof message, &length));
         ++i)
      text += std::string(reinterpret_cast<char*>(message)) + "\n";
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    throw std::runtime_error(text + " in: " + sql);
  }
  ~OdbcStatement() { SQLFreeHandle(SQL_HANDLE_STMT, stmt); }
};

}  // namespace

std::string SQLiteODBCDriver() {
  static const std::string driver = FindDriver("SQLite3", "libsqlite3odbc.so");
  return driver;
}

std::string PostgreSQLODBCDriver() {
  static const std::string driver = FindDriver("PostgreSQL Unicode", "psqlodbcw.so");
  return driver;
}

void ODBCExec(const std::string& connection_string, const std::string& sql) {
  OdbcStatement statement(connection_string, sql);
}

namespace {

std::string ODBCScalar(const std::string& connection_string, const std::string& sql) {
  OdbcStatement statement(connection_string, sql);
  if (!SQL_SUCCEEDED(SQLFetch(statement.stmt)))
    return "";
  char value[256] = "";
  SQLLEN indicator = 0;
  SQLGetData(statement.stmt, 1, SQL_C_CHAR, value, sizeof value, &indicator);
  return indicator == SQL_NULL_DATA ? "" : value;
}

// --- PostgreSQL server -------------------------------------------------------------------

// Runs a shell command as the server user (the current one, or "postgres" when running
// as root: the server refuses to run as root), its output appended to `log`.
int Run(const std::string& command, const fs::path& log) {
  const std::string as = geteuid() == 0 ? "runuser -u postgres -- " : "";
  const int status = std::system(
      ("LC_ALL=C " + as + command + " >>'" + log.string() + "' 2>&1 </dev/null").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The bin directory of the newest PostgreSQL server installed.
fs::path FindPostgresBin() {
  fs::path found;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator("/usr/lib/postgresql", ec)) {
    if (fs::exists(entry.path() / "bin/initdb") &&
        (found.empty() || std::stoi(entry.path().filename().string()) >
                              std::stoi(found.parent_path().filename().string())))
      found = entry.path() / "bin";
  }
  if (found.empty())
    throw std::runtime_error(
        "PostgreSQL server programs not found under /usr/lib/postgresql/*/bin; run "
        "scripts/install-deps.sh");
  return found;
}

int FreeTcpPort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = 0;
  socklen_t length = sizeof addr;
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &length) != 0) {
    if (fd >= 0)
      close(fd);
    throw std::runtime_error("cannot find a free local TCP port");
  }
  close(fd);
  return ntohs(addr.sin_port);
}

std::mutex server_mutex;
PostgresServer* server = nullptr;
std::string server_error;

// Stops the server at the end of the test program, failed tests included.
class PostgresEnvironment : public ::testing::Environment {
 public:
  void TearDown() override { PostgresServer::Shutdown(); }
};
[[maybe_unused]] ::testing::Environment* const environment =
    ::testing::AddGlobalTestEnvironment(new PostgresEnvironment);

}  // namespace

PostgresServer& PostgresServer::Instance() {
  std::lock_guard<std::mutex> lock(server_mutex);
  if (server != nullptr)
    return *server;
  if (!server_error.empty())
    throw std::runtime_error(server_error);
  auto* created = new PostgresServer;
  try {
    created->Start();
  } catch (const std::exception& e) {
    server_error = e.what();
    created->Stop();
    delete created;
    throw;
  }
  server = created;
  std::atexit([] { Shutdown(); });
  return *server;
}

namespace {

// Debian's PostgreSQL ODBC driver writes a log file to /tmp for every process that
// used it, whatever the connection string says; remove the one of this process.
void RemoveDriverLog() {
  const passwd* pw = getpwuid(geteuid());
  const std::string suffix = (pw ? pw->pw_name : "") + std::to_string(getpid()) + ".log";
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator("/tmp", ec)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("psqlodbc_", 0) == 0 && name.size() > suffix.size() &&
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
      fs::remove(entry.path(), ec);
  }
}

}  // namespace

void PostgresServer::Shutdown() {
  std::lock_guard<std::mutex> lock(server_mutex);
  if (server == nullptr)
    return;
  server->Stop();
  delete server;
  server = nullptr;
  server_error = "the PostgreSQL server has been stopped";
  RemoveDriverLog();
}

void PostgresServer::Start() {
  const fs::path bin = FindPostgresBin();
  dir_ = MakeTempDir("qorvex-pg-");
  // The server user owns the directory: it writes the cluster and its socket there.
  if (geteuid() == 0 && std::system(("chown postgres: '" + dir_.string() + "'").c_str()) != 0)
    throw std::runtime_error("cannot hand " + dir_.string() + " to the postgres user");

  // A watchdog process stops the server and removes the directory as soon as this
  // process ends, however it ends: it waits for the end of a pipe whose only writer is
  // this process. Its own session keeps it out of signals sent to our process group.
  const std::string pg_ctl = "\"" + (bin / "pg_ctl").string() + "\"";
  const std::string data = "\"" + (dir_ / "data").string() + "\"";
  const std::string script = "while read -r _; do :; done; [ -f " + data + "/postmaster.pid ] && " +
                             pg_ctl + " -D " + data + " -m immediate -w -s stop; rm -rf \"" +
                             dir_.string() + "\"";
  const std::string as = geteuid() == 0 ? "runuser -u postgres -- " : "";
  watchdog_ = popen(("setsid -w " + as + "sh -c '" + script + "' >/dev/null 2>&1").c_str(), "we");
  if (watchdog_ == nullptr)
    throw std::runtime_error("cannot start the watchdog process");

  if (Run("\"" + (bin / "initdb").string() + "\" -D " + data +
              " -A trust -U qorvex -E UTF8 --locale=C --no-sync --no-instructions",
          dir_ / "initdb.log") != 0)
    throw std::runtime_error("initdb failed:\n" + ReadFile(dir_ / "initdb.log"));

  // Another process may take the port between the probe and the start: try a few.
  const fs::path log = dir_ / "server.log";
  for (int attempt = 0; attempt < 5; ++attempt) {
    port_ = FreeTcpPort();
    if (Run(pg_ctl + " -D " + data + " -l '" + log.string() +
                "' -w -t 60 -s -o '-F -h 127.0.0.1 -p " + std::to_string(port_) + " -k " +
                dir_.string() + " -c max_connections=40' start",
            dir_ / "pg_ctl.log") == 0)
      return;
  }
  throw std::runtime_error("the PostgreSQL server did not start:\n" + ReadFile(log) +
                           ReadFile(dir_ / "pg_ctl.log"));
}

void PostgresServer::Stop() {
  if (watchdog_ != nullptr) {
    pclose(watchdog_);
    watchdog_ = nullptr;
  } else if (!dir_.empty()) {
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }
}

std::string PostgresServer::ConnectionString(const std::string& database,
                                             const std::string& extra) const {
  return "Driver=" + PostgreSQLODBCDriver() + ";Server=127.0.0.1;Port=" + std::to_string(port_) +
         ";Database=" + database + ";Uid=qorvex;Pwd=;" + extra;
}

std::string PostgresServer::CreateDatabase() {
  std::string name = "qx" + std::to_string(getpid()) + "_" + std::to_string(++databases_);
  ODBCExec(ConnectionString("postgres"), "create database " + name);
  return name;
}

// --- backends ----------------------------------------------------------------------------

const char* BackendName(Backend backend) {
  static const char* const names[] = {"SQLiteNative", "SQLiteODBC", "PostgreSQLODBC"};
  return names[static_cast<int>(backend)];
}

namespace {

class SQLiteDatabase : public TestDatabase {
 public:
  explicit SQLiteDatabase(Backend kind) : kind_(kind), file_(dir_.Path() / "test.db") {
    SQLiteExec(file_, "pragma user_version = 0");  // creates the file
    if (kind == Backend::SQLiteNative) {
      sqlite_connection_.SetFileName(file_.string());
      sqlite_provider_.SetConnection(&sqlite_connection_);
    } else {
      odbc_connection_.SetConnectionString("Driver=" + SQLiteODBCDriver() +
                                           ";Database=" + file_.string() + ";NoCreat=1;");
      odbc_provider_.SetConnection(&odbc_connection_);
    }
  }
  Backend Kind() const override { return kind_; }
  TqxBaseMetadataProvider& Provider() override {
    if (kind_ == Backend::SQLiteNative)
      return sqlite_provider_;
    return odbc_provider_;
  }
  void Exec(const std::string& sql) override { SQLiteExec(file_, sql); }
  std::string Scalar(const std::string& sql) override {
    Rows rows = SQLiteRows(file_, sql);
    return rows.empty() ? "" : rows[0][0];
  }

 private:
  Backend kind_;
  TempDir dir_;
  fs::path file_;
  TqxSQLiteConnection sqlite_connection_;
  TqxSQLiteMetadataProvider sqlite_provider_;
  TqxODBCConnection odbc_connection_;
  TqxODBCMetadataProvider odbc_provider_;
};

class PostgresDatabase : public TestDatabase {
 public:
  PostgresDatabase() {
    PostgresServer& pg = PostgresServer::Instance();
    connection_string_ = pg.ConnectionString(pg.CreateDatabase());
    connection_.SetConnectionString(connection_string_);
    provider_.SetConnection(&connection_);
  }
  Backend Kind() const override { return Backend::PostgreSQLODBC; }
  TqxBaseMetadataProvider& Provider() override { return provider_; }
  void Exec(const std::string& sql) override { ODBCExec(connection_string_, sql); }
  std::string Scalar(const std::string& sql) override {
    return ODBCScalar(connection_string_, sql);
  }

 private:
  std::string connection_string_;
  TqxODBCConnection connection_;
  TqxODBCMetadataProvider provider_;
};

}  // namespace

std::unique_ptr<TestDatabase> TestDatabase::Create(Backend backend) {
  if (backend == Backend::PostgreSQLODBC)
    return std::make_unique<PostgresDatabase>();
  return std::make_unique<SQLiteDatabase>(backend);
}

}  // namespace qorvex::dbtest
