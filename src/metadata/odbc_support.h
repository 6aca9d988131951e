#pragma once

// ODBC helpers shared by the connection and the provider: diagnostics turned into
// EqxError, and a statement handle that is freed on every path.

#include <sql.h>
#include <sqlext.h>

#include <optional>
#include <string>

namespace qorvex::odbc {

// All diagnostic records of a handle, one per line, as "MESSAGE (SQLSTATE xxxxx)".
std::string Diagnostics(SQLSMALLINT HandleType, SQLHANDLE Handle);

// Raises EqxError "`Context`: diagnostics" (or "`Context` failed" without records).
[[noreturn]] void Raise(const std::string& Context, SQLSMALLINT HandleType, SQLHANDLE Handle);

inline void Check(SQLRETURN Result, const std::string& Context, SQLSMALLINT HandleType,
                  SQLHANDLE Handle) {
  if (!SQL_SUCCEEDED(Result))
    Raise(Context, HandleType, Handle);
}

// A statement handle on a connection, freed (with its cursor) by the destructor.
class Statement {
 public:
  explicit Statement(SQLHDBC Connection);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  SQLHSTMT Handle() const { return Handle_; }
  void Check(SQLRETURN Result, const std::string& Context) const {
    odbc::Check(Result, Context, SQL_HANDLE_STMT, Handle_);
  }
  // Closes the open cursor, if any, so that the handle can run another call.
  void CloseCursor();
  // Steps to the next row; false at the end of the result.
  bool Fetch();
  // Column `Column` (1-based) of the current row as text; nullopt for NULL.
  std::optional<std::string> GetText(SQLUSMALLINT Column);
  // Column `Column` of the current row as an integer; `Default` for NULL.
  long GetInteger(SQLUSMALLINT Column, long Default);

 private:
  SQLHSTMT Handle_ = SQL_NULL_HSTMT;
};

}  // namespace qorvex::odbc
