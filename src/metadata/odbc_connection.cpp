#include "metadata/odbc_support.h"
#include "qorvex/core/errors.h"
#include "qorvex/metadata/odbc_provider.h"

namespace qorvex {

TqxODBCConnection::TqxODBCConnection(std::string ConnectionString)
    : ConnectionString_(std::move(ConnectionString)) {}

TqxODBCConnection::~TqxODBCConnection() {
  BeginDestroy();
  Close();
}

void TqxODBCConnection::SetConnectionString(std::string Value) {
  if (Value == ConnectionString_)
    return;
  Close();
  ConnectionString_ = std::move(Value);
}

void TqxODBCConnection::Open() {
  if (IsOpen())
    return;
  const std::string context = "Cannot open the ODBC connection";
  if (ConnectionString_.empty())
    throw EqxError(context + ": the connection string is empty");

  SQLHENV env = SQL_NULL_HENV;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)))
    throw EqxError(context + ": the ODBC driver manager cannot allocate an environment");
  SQLHDBC dbc = SQL_NULL_HDBC;
  try {
    odbc::Check(
        SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0),
        context, SQL_HANDLE_ENV, env);
    odbc::Check(SQLAllocHandle(SQL_HANDLE_DBC, env, &dbc), context, SQL_HANDLE_ENV, env);
    SQLCHAR completed[1024];
    SQLSMALLINT completedLength = 0;
    SQLRETURN rc = SQLDriverConnect(
        dbc, nullptr, reinterpret_cast<SQLCHAR*>(const_cast<char*>(ConnectionString_.c_str())),
        static_cast<SQLSMALLINT>(ConnectionString_.size()), completed, sizeof completed,
        &completedLength, SQL_DRIVER_NOPROMPT);
    odbc::Check(rc, context, SQL_HANDLE_DBC, dbc);
  } catch (...) {
    if (dbc != SQL_NULL_HDBC)
      SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    SQLFreeHandle(SQL_HANDLE_ENV, env);
    throw;
  }
  Env_ = env;
  Dbc_ = dbc;
}

void TqxODBCConnection::Close() {
  if (Dbc_ != nullptr) {
    SQLDisconnect(static_cast<SQLHDBC>(Dbc_));
    SQLFreeHandle(SQL_HANDLE_DBC, static_cast<SQLHDBC>(Dbc_));
    Dbc_ = nullptr;
  }
  if (Env_ != nullptr) {
    SQLFreeHandle(SQL_HANDLE_ENV, static_cast<SQLHENV>(Env_));
    Env_ = nullptr;
  }
}

}  // namespace qorvex
