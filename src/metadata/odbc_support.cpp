#include "metadata/odbc_support.h"

#include <vector>

#include "qorvex/core/errors.h"

namespace qorvex::odbc {

std::string Diagnostics(SQLSMALLINT HandleType, SQLHANDLE Handle) {
  std::string text;
  if (Handle == SQL_NULL_HANDLE)
    return text;
  for (SQLSMALLINT record = 1;; ++record) {
    SQLCHAR state[SQL_SQLSTATE_SIZE + 1] = {};
    SQLINTEGER native = 0;
    std::vector<SQLCHAR> message(512);
    SQLSMALLINT length = 0;
    SQLRETURN rc = SQLGetDiagRec(HandleType, Handle, record, state, &native, message.data(),
                                 static_cast<SQLSMALLINT>(message.size()), &length);
    if (rc == SQL_SUCCESS_WITH_INFO && length >= static_cast<SQLSMALLINT>(message.size())) {
      // The message was cut: ask again with room for all of it.
      message.resize(static_cast<size_t>(length) + 1);
      rc = SQLGetDiagRec(HandleType, Handle, record, state, &native, message.data(),
                         static_cast<SQLSMALLINT>(message.size()), &length);
    }
    if (!SQL_SUCCEEDED(rc))
      break;
    std::string line(reinterpret_cast<const char*>(message.data()));
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r' || line.back() == ' '))
      line.pop_back();
    if (!text.empty())
      text += '\n';
    text += line;
    text += " (SQLSTATE ";
    text += reinterpret_cast<const char*>(state);
    text += ')';
  }
  return text;
}

void Raise(const std::string& Context, SQLSMALLINT HandleType, SQLHANDLE Handle) {
  std::string diagnostics = Diagnostics(HandleType, Handle);
  if (diagnostics.empty())
    throw EqxError(Context + " failed");
  throw EqxError(Context + ": " + diagnostics);
}

Statement::Statement(SQLHDBC Connection) {
  SQLRETURN rc = SQLAllocHandle(SQL_HANDLE_STMT, Connection, &Handle_);
  if (!SQL_SUCCEEDED(rc)) {
    Handle_ = SQL_NULL_HSTMT;
    Raise("Cannot allocate an ODBC statement", SQL_HANDLE_DBC, Connection);
  }
}

Statement::~Statement() {
  if (Handle_ == SQL_NULL_HSTMT)
    return;
  // Closing first matters: the PostgreSQL driver frees a prepared statement's description
  // only on close, not when the handle itself is freed.
  SQLFreeStmt(Handle_, SQL_CLOSE);
  SQLFreeHandle(SQL_HANDLE_STMT, Handle_);
}

void Statement::CloseCursor() {
  SQLFreeStmt(Handle_, SQL_CLOSE);
}

bool Statement::Fetch() {
  SQLRETURN rc = SQLFetch(Handle_);
  if (rc == SQL_NO_DATA)
    return false;
  Check(rc, "Cannot read the ODBC result");
  return true;
}

std::optional<std::string> Statement::GetText(SQLUSMALLINT Column) {
  std::string value;
  char buffer[256];
  for (;;) {
    SQLLEN indicator = 0;
    SQLRETURN rc = SQLGetData(Handle_, Column, SQL_C_CHAR, buffer, sizeof buffer, &indicator);
    if (rc == SQL_NO_DATA)
      break;  // a long value whose last part was read by the previous call
    Check(rc, "Cannot read the ODBC result");
    if (indicator == SQL_NULL_DATA)
      return std::nullopt;
    if (indicator != SQL_NO_TOTAL && indicator < static_cast<SQLLEN>(sizeof buffer)) {
      value.append(buffer, static_cast<size_t>(indicator));
      break;
    }
    // Truncated: the buffer holds a terminated part and the rest follows.
    value.append(buffer, sizeof buffer - 1);
  }
  return value;
}

long Statement::GetInteger(SQLUSMALLINT Column, long Default) {
  SQLINTEGER value = 0;
  SQLLEN indicator = 0;
  Check(SQLGetData(Handle_, Column, SQL_C_SLONG, &value, sizeof value, &indicator),
        "Cannot read the ODBC result");
  if (indicator == SQL_NULL_DATA)
    return Default;
  return value;
}

}  // namespace qorvex::odbc
