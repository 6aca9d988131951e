#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/metadata/connected_provider.h"
#include "qorvex/sqlite_export.h"

struct sqlite3;

namespace qorvex {

// An SQLite database for metadata: either a file that the connection opens (and
// closes) itself, or a database handle the application opened and keeps owning.
// Failures raise EqxError with SQLite's message.
class QORVEX_SQLITE_EXPORT TqxSQLiteConnection : public TqxComponent {
 public:
  TqxSQLiteConnection() = default;
  explicit TqxSQLiteConnection(std::string FileName);
  explicit TqxSQLiteConnection(sqlite3* Handle);
  ~TqxSQLiteConnection() override;

  const std::string& GetFileName() const { return FileName_; }
  // Closes the current database; the next Open opens this file (which must exist).
  void SetFileName(std::string Value);
  // Uses an open database that the caller keeps owning (null forgets it).
  void SetHandle(sqlite3* Value);

  // Opens the file when no database is open; does nothing otherwise.
  void Open();
  // Closes a database the connection opened; forgets one it was given.
  void Close();
  bool IsOpen() const { return Handle_ != nullptr; }
  // The open database, else null.
  sqlite3* GetHandle() const { return Handle_; }

 private:
  std::string FileName_;
  sqlite3* Handle_ = nullptr;
  bool OwnsHandle_ = false;
};

// Metadata read from SQLite itself: sqlite_master for table and view names (names
// beginning "sqlite_" are system tables), the prepared but never stepped statement for
// its result columns, and the foreign-key pragmas for relations.
class QORVEX_SQLITE_EXPORT TqxSQLiteMetadataProvider
    : public TqxConnectedMetadataProvider<TqxSQLiteConnection> {
 public:
  TqxSQLiteMetadataProvider();
  explicit TqxSQLiteMetadataProvider(TqxSQLiteConnection* Connection);

  // Raises EqxError without a connection.
  void GetTableNames(std::vector<std::string>& Names, bool System) override;
  // Raises EqxError without a connection; `System` is ignored.
  void GetViewNames(std::vector<std::string>& Names, bool System) override;
  // Empty without a connection.
  void GetFields(const std::string& SQL, std::vector<std::string>& FieldNames) override;
  // First the keys of every table that refer to the named table, then the table's own
  // keys; appended to `Relations`. Nothing without a connection.
  void GetTableRelations(const TSQLDatabaseObject& TableName,
                         TSQLMetadataRelations& Relations) override;
  ~TqxSQLiteMetadataProvider() override;

 private:
  sqlite3* OpenHandle(const char* Operation);

  // Every foreign key of the database, read in one pass and kept while the database and
  // its schema version stay the same, so that asking for many tables' relations does not
  // read every table's keys each time.
  struct KeyIndex;
  // Table names the relations asked for (for error messages).
  const KeyIndex& GetKeyIndex(sqlite3* Database, const std::string& Table);
  std::unique_ptr<KeyIndex> Keys_;
};

}  // namespace qorvex
