#pragma once

// SQLite helpers for the connection and the provider: errors as EqxError and a
// statement that is finalized on every path.

#include <sqlite3.h>

#include <optional>
#include <string>

#include "qorvex/core/errors.h"

namespace qorvex::sqlite {

[[noreturn]] inline void Raise(const std::string& Context, sqlite3* Database) {
  throw EqxError(Context + ": " + sqlite3_errmsg(Database));
}

// A prepared statement; finalized by the destructor. Preparing never runs it.
class Statement {
 public:
  Statement(sqlite3* Database, const std::string& SQL, const std::string& Context)
      : Database_(Database), Context_(Context) {
    if (sqlite3_prepare_v2(Database, SQL.c_str(), static_cast<int>(SQL.size()), &Handle_,
                           nullptr) != SQLITE_OK) {
      sqlite3_finalize(Handle_);
      Handle_ = nullptr;
      Raise(Context, Database);
    }
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(Handle_); }

  // Null for text holding no statement (only blanks or comments).
  sqlite3_stmt* Handle() const { return Handle_; }

  void Bind(int Index, const std::string& Value) {
    if (sqlite3_bind_text(Handle_, Index, Value.data(), static_cast<int>(Value.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK)
      Raise(Context_, Database_);
  }
  // Steps to the next row; false at the end.
  bool Step() {
    int rc = sqlite3_step(Handle_);
    if (rc == SQLITE_ROW)
      return true;
    if (rc == SQLITE_DONE)
      return false;
    Raise(Context_, Database_);
  }
  std::optional<std::string> Text(int Column) const {
    const unsigned char* text = sqlite3_column_text(Handle_, Column);
    if (text == nullptr)
      return std::nullopt;
    return std::string(reinterpret_cast<const char*>(text),
                       static_cast<size_t>(sqlite3_column_bytes(Handle_, Column)));
  }
  long Integer(int Column) const {
    return static_cast<long>(sqlite3_column_int64(Handle_, Column));
  }

 private:
  sqlite3* Database_;
  std::string Context_;
  sqlite3_stmt* Handle_ = nullptr;
};

}  // namespace qorvex::sqlite
