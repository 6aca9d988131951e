#pragma once

#include <string>
#include <vector>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/metadata/connected_provider.h"
#include "qorvex/odbc_export.h"

namespace qorvex {

// An ODBC connection: owns the environment and connection handles and opens them from
// an ODBC connection string ("Driver=...;Server=...;" or "DSN=..."). Failures raise
// EqxError with the driver's diagnostic messages.
class QORVEX_ODBC_EXPORT TqxODBCConnection : public TqxComponent {
 public:
  TqxODBCConnection() = default;
  explicit TqxODBCConnection(std::string ConnectionString);
  ~TqxODBCConnection() override;

  const std::string& GetConnectionString() const { return ConnectionString_; }
  // Closes an open connection first; the next Open uses the new string.
  void SetConnectionString(std::string Value);

  // Connects without prompting; does nothing when already open.
  void Open();
  void Close();
  bool IsOpen() const { return Dbc_ != nullptr; }

  // The ODBC connection handle (an SQLHDBC) while open, else null.
  void* GetHandle() const { return Dbc_; }

 private:
  std::string ConnectionString_;
  void* Env_ = nullptr;
  void* Dbc_ = nullptr;
};

// Metadata from any ODBC data source through the catalogue functions: SQLTables for
// table and view names, SQLPrepare + SQLDescribeCol for the result columns of a
// statement (which is never executed) and SQLForeignKeys for relations.
class QORVEX_ODBC_EXPORT TqxODBCMetadataProvider
    : public TqxConnectedMetadataProvider<TqxODBCConnection> {
 public:
  TqxODBCMetadataProvider() = default;
  explicit TqxODBCMetadataProvider(TqxODBCConnection* Connection);

  // Rows of type "TABLE", and of type "SYSTEM TABLE" when `System` is set. Raises
  // EqxError without a connection.
  void GetTableNames(std::vector<std::string>& Names, bool System) override;
  // Rows of type "VIEW"; `System` is ignored. Raises EqxError without a connection.
  void GetViewNames(std::vector<std::string>& Names, bool System) override;
  // Empty without a connection.
  void GetFields(const std::string& SQL, std::vector<std::string>& FieldNames) override;
  // First the keys that refer to the table, then the table's own keys; appended to
  // `Relations`. Nothing without a connection.
  void GetTableRelations(const TSQLDatabaseObject& TableName,
                         TSQLMetadataRelations& Relations) override;

 private:
  void* OpenHandle(const char* Operation);
  void GetNamesOfTypes(std::vector<std::string>& Names, const char* Type1, const char* Type2,
                       const char* Operation);
};

}  // namespace qorvex
