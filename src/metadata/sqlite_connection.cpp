#include "metadata/sqlite_support.h"
#include "qorvex/metadata/sqlite_provider.h"

namespace qorvex {

TqxSQLiteConnection::TqxSQLiteConnection(std::string FileName) : FileName_(std::move(FileName)) {}

TqxSQLiteConnection::TqxSQLiteConnection(sqlite3* Handle) : Handle_(Handle) {}

TqxSQLiteConnection::~TqxSQLiteConnection() {
  BeginDestroy();
  Close();
}

void TqxSQLiteConnection::SetFileName(std::string Value) {
  Close();
  FileName_ = std::move(Value);
}

void TqxSQLiteConnection::SetHandle(sqlite3* Value) {
  if (Value == Handle_)
    return;
  Close();
  Handle_ = Value;
  OwnsHandle_ = false;
}

void TqxSQLiteConnection::Open() {
  if (IsOpen())
    return;
  const std::string context = "Cannot open the SQLite database";
  if (FileName_.empty())
    throw EqxError(context + ": no file name is set");
  sqlite3* handle = nullptr;
  // An existing database only: a missing file is an error, not a new empty database.
  int rc = sqlite3_open_v2(FileName_.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
  if (rc != SQLITE_OK) {
    std::string message = handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(rc);
    sqlite3_close_v2(handle);
    throw EqxError(context + " \"" + FileName_ + "\": " + message);
  }
  sqlite3_extended_result_codes(handle, 1);
  Handle_ = handle;
  OwnsHandle_ = true;
}

void TqxSQLiteConnection::Close() {
  if (Handle_ != nullptr && OwnsHandle_)
    sqlite3_close_v2(Handle_);
  Handle_ = nullptr;
  OwnsHandle_ = false;
}

}  // namespace qorvex
