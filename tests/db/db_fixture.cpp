#include "db_fixture.h"

#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "qorvex/metadata/odbc_provider.h"
#include "qorvex/metadata/sqlite_provider.h"

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

std::string SQLiteScalar(const fs::path& path, const std::string& sql) {
  sqlite3* db = OpenSQLite(path);
  sqlite3_stmt* stmt = nullptr;
  std::string result;
  int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr);
  if (rc == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW && sqlite3_column_text(stmt, 0))
    result = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
  std::string message = sqlite3_errmsg(db);
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  if (rc != SQLITE_OK)
    throw std::runtime_error("sqlite: " + message + " in: " + sql);
  return result;
}

// --- ODBC ------------------------------------------------------------------------------

namespace {

// The drivers registered with the driver manager.
std::vector<std::string> RegisteredODBCDrivers() {
  std::vector<std::string> names;
  SQLHENV env = SQL_NULL_HENV;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)))
    return names;
  SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  SQLCHAR name[256];
  SQLCHAR attributes[1024];
  SQLSMALLINT nameLength = 0, attributesLength = 0;
  SQLUSMALLINT direction = SQL_FETCH_FIRST;
  while (SQL_SUCCEEDED(SQLDrivers(env, direction, name, sizeof name, &nameLength, attributes,
                                  sizeof attributes, &attributesLength))) {
    names.emplace_back(reinterpret_cast<const char*>(name));
    direction = SQL_FETCH_NEXT;
  }
  SQLFreeHandle(SQL_HANDLE_ENV, env);
  return names;
}

// The driver library's path when it is found, else the registered name. The path comes
// first: by name, the PostgreSQL driver takes Debian's odbcinst.ini settings, which turn
// on a communication log in /tmp for every process.
std::string FindDriver(const std::string& registered, const std::string& library) {
  for (const char* dir : {"/usr/lib/x86_64-linux-gnu/odbc", "/usr/lib/aarch64-linux-gnu/odbc",
                          "/usr/lib/odbc", "/usr/lib64", "/usr/local/lib"}) {
    fs::path candidate = fs::path(dir) / library;
    if (fs::exists(candidate))
      return candidate.string();
  }
  std::vector<std::string> drivers = RegisteredODBCDrivers();
  if (std::find(drivers.begin(), drivers.end(), registered) != drivers.end())
    return "{" + registered + "}";
  throw std::runtime_error("ODBC driver \"" + registered + "\" (" + library +
                           ") is not installed; run scripts/install-deps.sh");
}

struct OdbcHandles {
  SQLHENV env = SQL_NULL_HENV;
  SQLHDBC dbc = SQL_NULL_HDBC;
  SQLHSTMT stmt = SQL_NULL_HSTMT;
  ~OdbcHandles() {
    if (stmt)
      SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    if (dbc) {
      SQLDisconnect(dbc);
      SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    }
    if (env)
      SQLFreeHandle(SQL_HANDLE_ENV, env);
  }
};

std::string OdbcMessage(SQLSMALLINT type, SQLHANDLE handle) {
  std::string text;
  SQLCHAR state[6], message[1024];
  SQLINTEGER native;
  SQLSMALLINT length;
  for (SQLSMALLINT i = 1; SQL_SUCCEEDED(
           SQLGetDiagRec(type, handle, i, state, &native, message, sizeof message, &length));
       ++i)
    text += std::string(reinterpret_cast<char*>(message)) + "\n";
  return text;
}

void Connect(OdbcHandles& h, const std::string& connection_string) {
  SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &h.env);
  SQLSetEnvAttr(h.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  SQLAllocHandle(SQL_HANDLE_DBC, h.env, &h.dbc);
  if (!SQL_SUCCEEDED(SQLDriverConnect(h.dbc, nullptr, (SQLCHAR*)connection_string.c_str(), SQL_NTS,
                                      nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT)))
    throw std::runtime_error("odbc connect: " + OdbcMessage(SQL_HANDLE_DBC, h.dbc));
  SQLAllocHandle(SQL_HANDLE_STMT, h.dbc, &h.stmt);
}

void ExecDirect(OdbcHandles& h, const std::string& sql) {
  SQLRETURN rc = SQLExecDirect(h.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA)
    throw std::runtime_error("odbc: " + OdbcMessage(SQL_HANDLE_STMT, h.stmt) + " in: " + sql);
}

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
  OdbcHandles h;
  Connect(h, connection_string);
  ExecDirect(h, sql);
}

std::string ODBCScalar(const std::string& connection_string, const std::string& sql) {
  OdbcHandles h;
  Connect(h, connection_string);
  ExecDirect(h, sql);
  if (!SQL_SUCCEEDED(SQLFetch(h.stmt)))
    return "";
  char value[256] = "";
  SQLLEN indicator = 0;
  SQLGetData(h.stmt, 1, SQL_C_CHAR, value, sizeof value, &indicator);
  return indicator == SQL_NULL_DATA ? "" : value;
}

// --- PostgreSQL server -------------------------------------------------------------------

namespace {

// The user that runs the server: the current one, or "postgres" when running as root
// (the server refuses to run as root).
std::optional<passwd> ServerUser() {
  if (geteuid() != 0)
    return std::nullopt;
  passwd* pw = getpwnam("postgres");
  if (pw == nullptr)
    throw std::runtime_error(
        "the tests run as root and there is no \"postgres\" user to run the PostgreSQL server");
  return *pw;
}

// In a child process: takes on the server user's identity.
void BecomeServerUser(const std::optional<passwd>& user) {
  if (!user)
    return;
  if (setgroups(0, nullptr) != 0 || setgid(user->pw_gid) != 0 || setuid(user->pw_uid) != 0)
    _exit(126);
}

// Runs a program as the server user with output to `log`; returns its exit status.
int Run(const std::vector<std::string>& argv, const fs::path& log,
        const std::optional<passwd>& user) {
  pid_t pid = fork();
  if (pid < 0)
    throw std::runtime_error("fork failed");
  if (pid == 0) {
    BecomeServerUser(user);
    int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (fd >= 0) {
      dup2(fd, 1);
      dup2(fd, 2);
      close(fd);
    }
    int null = open("/dev/null", O_RDONLY);
    if (null >= 0)
      dup2(null, 0);
    std::vector<char*> args;
    for (const std::string& a : argv)
      args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    setenv("LC_ALL", "C", 1);
    execv(args[0], args.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

fs::path FindPostgresBin() {
  std::vector<fs::path> found;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator("/usr/lib/postgresql", ec)) {
    fs::path bin = entry.path() / "bin";
    if (fs::exists(bin / "initdb") && fs::exists(bin / "pg_ctl"))
      found.push_back(bin);
  }
  if (found.empty())
    throw std::runtime_error(
        "PostgreSQL server programs not found under /usr/lib/postgresql/*/bin; run "
        "scripts/install-deps.sh");
  // The newest major version.
  std::sort(found.begin(), found.end(), [](const fs::path& a, const fs::path& b) {
    return std::stoi(a.parent_path().filename().string()) <
           std::stoi(b.parent_path().filename().string());
  });
  return found.back();
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
  std::optional<passwd> user = ServerUser();
  bin_ = FindPostgresBin();
  dir_ = MakeTempDir("qorvex-pg-");
  if (user) {
    // The server user owns the directory: it writes the cluster and its socket there.
    if (chown(dir_.c_str(), user->pw_uid, user->pw_gid) != 0)
      throw std::runtime_error("cannot hand " + dir_.string() + " to the postgres user");
  }

  // A watchdog process stops the server and removes the directory as soon as this
  // process ends, however it ends: it waits for the end of a pipe whose only writer is
  // this process. Its own session keeps it out of signals sent to our process group.
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0)
    throw std::runtime_error("pipe failed");
  const std::string pg_ctl = (bin_ / "pg_ctl").string();
  const std::string data = (dir_ / "data").string();
  pid_t pid = fork();
  if (pid < 0)
    throw std::runtime_error("fork failed");
  if (pid == 0) {
    setsid();
    dup2(fds[0], 0);
    int null = open("/dev/null", O_WRONLY);
    if (null >= 0) {
      dup2(null, 1);
      dup2(null, 2);
    }
    BecomeServerUser(user);
    const char* script =
        "while read -r _; do :; done; "
        "[ -f \"$2/postmaster.pid\" ] && \"$1\" -D \"$2\" -m immediate -w -s stop; "
        "rm -rf \"$3\"";
    execl("/bin/sh", "sh", "-c", script, "sh", pg_ctl.c_str(), data.c_str(), dir_.c_str(),
          static_cast<char*>(nullptr));
    _exit(127);
  }
  close(fds[0]);
  watchdog_pid_ = pid;
  watchdog_fd_ = fds[1];

  const fs::path log = dir_ / "server.log";
  if (Run({(bin_ / "initdb").string(), "-D", data, "-A", "trust", "-U", "qorvex", "-E", "UTF8",
           "--locale=C", "--no-sync", "--no-instructions"},
          log, user) != 0)
    throw std::runtime_error("initdb failed:\n" + ReadFile(log));

  // Another process may take the port between the probe and the start: try a few.
  for (int attempt = 0; attempt < 5; ++attempt) {
    port_ = FreeTcpPort();
    const std::string options = "-F -h 127.0.0.1 -p " + std::to_string(port_) + " -k " +
                                dir_.string() + " -c max_connections=40";
    if (Run({pg_ctl, "-D", data, "-l", log.string(), "-w", "-t", "60", "-s", "-o", options,
             "start"},
            dir_ / "pg_ctl.log", user) == 0)
      return;
  }
  throw std::runtime_error("the PostgreSQL server did not start:\n" + ReadFile(log) +
                           ReadFile(dir_ / "pg_ctl.log"));
}

void PostgresServer::Stop() {
  if (watchdog_fd_ >= 0) {
    close(watchdog_fd_);
    watchdog_fd_ = -1;
  }
  if (watchdog_pid_ > 0) {
    int status = 0;
    while (waitpid(watchdog_pid_, &status, 0) < 0 && errno == EINTR) {
    }
    watchdog_pid_ = -1;
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
  switch (backend) {
    case Backend::SQLiteNative:
      return "SQLiteNative";
    case Backend::SQLiteODBC:
      return "SQLiteODBC";
    case Backend::PostgreSQLODBC:
      return "PostgreSQLODBC";
  }
  return "?";
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
  std::string Scalar(const std::string& sql) override { return SQLiteScalar(file_, sql); }

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
