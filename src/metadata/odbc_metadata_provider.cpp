#include <map>
#include <utility>

#include "metadata/key_rows.h"
#include "metadata/odbc_support.h"
#include "qorvex/core/errors.h"
#include "qorvex/metadata/odbc_provider.h"

namespace qorvex {

namespace {

// Result columns of SQLTables and SQLForeignKeys, read in increasing order.
constexpr SQLUSMALLINT kTableName = 3;
constexpr SQLUSMALLINT kTableType = 4;
constexpr SQLUSMALLINT kPKTableName = 3;
constexpr SQLUSMALLINT kPKColumnName = 4;
constexpr SQLUSMALLINT kFKTableName = 7;
constexpr SQLUSMALLINT kFKColumnName = 8;
constexpr SQLUSMALLINT kKeySeq = 9;
constexpr SQLUSMALLINT kFKName = 12;
// Result columns of SQLPrimaryKeys.
constexpr SQLUSMALLINT kPrimaryKeyColumn = 4;
constexpr SQLUSMALLINT kPrimaryKeySeq = 5;

SQLCHAR* Text(const std::string& s) {
  return reinterpret_cast<SQLCHAR*>(const_cast<char*>(s.c_str()));
}

SQLSMALLINT TextLength(const std::string& s) {
  return static_cast<SQLSMALLINT>(s.size());
}

// The foreign-key rows of one pass: keys that refer to `PKTable` or keys of `FKTable`
// (one of the two is given).
std::vector<metadata::KeyRow> ReadForeignKeys(odbc::Statement& Statement,
                                              const std::string* PKTable,
                                              const std::string* FKTable) {
  SQLRETURN rc =
      SQLForeignKeys(Statement.Handle(), nullptr, 0, nullptr, 0, PKTable ? Text(*PKTable) : nullptr,
                     PKTable ? TextLength(*PKTable) : 0, nullptr, 0, nullptr, 0,
                     FKTable ? Text(*FKTable) : nullptr, FKTable ? TextLength(*FKTable) : 0);
  Statement.Check(rc, "Cannot read the foreign keys");
  std::vector<metadata::KeyRow> rows;
  while (Statement.Fetch()) {
    metadata::KeyRow row;
    row.PKTable = Statement.GetText(kPKTableName).value_or("");
    std::optional<std::string> pkColumn = Statement.GetText(kPKColumnName);
    row.FKTable = Statement.GetText(kFKTableName).value_or("");
    row.FKColumn = Statement.GetText(kFKColumnName).value_or("");
    row.KeySeq = Statement.GetInteger(kKeySeq, 0);
    row.FKName = Statement.GetText(kFKName).value_or("");
    // Some drivers leave the column out when the key refers to the primary key
    // implicitly; it is filled in below.
    if (pkColumn)
      row.PKColumn = std::move(*pkColumn);
    rows.push_back(std::move(row));
  }
  Statement.CloseCursor();
  return rows;
}

// Fills in referenced columns that the driver left empty from the referenced table's
// primary key, matching by the column's position in the key.
void ResolveImplicitKeyColumns(odbc::Statement& Statement, std::vector<metadata::KeyRow>& Rows) {
  std::map<std::string, std::map<long, std::string>> primaryKeys;
  for (metadata::KeyRow& row : Rows) {
    if (!row.PKColumn.empty())
      continue;
    auto found = primaryKeys.find(row.PKTable);
    if (found == primaryKeys.end()) {
      std::map<long, std::string> columns;
      SQLRETURN rc = SQLPrimaryKeys(Statement.Handle(), nullptr, 0, nullptr, 0, Text(row.PKTable),
                                    TextLength(row.PKTable));
      Statement.Check(rc, "Cannot read the primary key of " + row.PKTable);
      while (Statement.Fetch()) {
        std::string column = Statement.GetText(kPrimaryKeyColumn).value_or("");
        columns[Statement.GetInteger(kPrimaryKeySeq, 0)] = std::move(column);
      }
      Statement.CloseCursor();
      found = primaryKeys.emplace(row.PKTable, std::move(columns)).first;
    }
    auto column = found->second.find(row.KeySeq);
    if (column != found->second.end())
      row.PKColumn = column->second;
  }
}

}  // namespace

TqxODBCMetadataProvider::TqxODBCMetadataProvider(TqxODBCConnection* Connection) {
  SetConnection(Connection);
}

void* TqxODBCMetadataProvider::OpenHandle(const char* Operation) {
  return RequireConnection("TqxODBCMetadataProvider", Operation).GetHandle();
}

void TqxODBCMetadataProvider::GetNamesOfTypes(std::vector<std::string>& Names, const char* Type1,
                                              const char* Type2, const char* Operation) {
  Names.clear();
  odbc::Statement statement(static_cast<SQLHDBC>(OpenHandle(Operation)));
  // The types are also passed as the restriction: some drivers (PostgreSQL's) report
  // system tables only when asked for them by type.
  std::string types = Type1;
  if (Type2 != nullptr)
    types = types + "," + Type2;
  statement.Check(SQLTables(statement.Handle(), nullptr, 0, nullptr, 0, nullptr, 0, Text(types),
                            TextLength(types)),
                  "Cannot read the table list");
  std::vector<std::string> names;
  // Columns are read left to right: not every driver can go back.
  while (statement.Fetch()) {
    std::optional<std::string> name = statement.GetText(kTableName);
    std::optional<std::string> type = statement.GetText(kTableType);
    if (name && type && (*type == Type1 || (Type2 != nullptr && *type == Type2)))
      names.push_back(std::move(*name));
  }
  Names = std::move(names);
}

void TqxODBCMetadataProvider::GetTableNames(std::vector<std::string>& Names, bool System) {
  GetNamesOfTypes(Names, "TABLE", System ? "SYSTEM TABLE" : nullptr, "GetTableNames");
}

void TqxODBCMetadataProvider::GetViewNames(std::vector<std::string>& Names, bool System) {
  GetNamesOfTypes(Names, "VIEW", nullptr, "GetViewNames");
}

void TqxODBCMetadataProvider::GetFields(const std::string& SQL,
                                        std::vector<std::string>& FieldNames) {
  FieldNames.clear();
  if (GetConnection() == nullptr)
    return;
  odbc::Statement statement(static_cast<SQLHDBC>(OpenHandle("GetFields")));
  // Prepared and described only: the statement never runs.
  statement.Check(SQLPrepare(statement.Handle(), Text(SQL), static_cast<SQLINTEGER>(SQL.size())),
                  "Cannot prepare the statement");
  SQLSMALLINT count = 0;
  statement.Check(SQLNumResultCols(statement.Handle(), &count),
                  "Cannot describe the statement's result");
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(count));
  for (SQLUSMALLINT column = 1; column <= static_cast<SQLUSMALLINT>(count); ++column) {
    std::vector<SQLCHAR> name(256);
    SQLSMALLINT length = 0;
    SQLSMALLINT type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    for (;;) {
      statement.Check(SQLDescribeCol(statement.Handle(), column, name.data(),
                                     static_cast<SQLSMALLINT>(name.size()), &length, &type, &size,
                                     &digits, &nullable),
                      "Cannot describe the statement's result");
      if (length < static_cast<SQLSMALLINT>(name.size()))
        break;
      name.resize(static_cast<size_t>(length) + 1);  // cut: ask again with room for it
    }
    names.emplace_back(reinterpret_cast<const char*>(name.data()), static_cast<size_t>(length));
  }
  FieldNames = std::move(names);
}

void TqxODBCMetadataProvider::GetTableRelations(const TSQLDatabaseObject& TableName,
                                                TSQLMetadataRelations& Relations) {
  if (GetConnection() == nullptr)
    return;
  const std::string name = TableName.GetObjName();
  auto connection = static_cast<SQLHDBC>(OpenHandle("GetTableRelations"));
  // A driver without foreign-key support knows no relations; that is not an error.
  SQLUSMALLINT supported = SQL_FALSE;
  if (!SQL_SUCCEEDED(SQLGetFunctions(connection, SQL_API_SQLFOREIGNKEYS, &supported)) ||
      supported == SQL_FALSE)
    return;
  odbc::Statement statement(connection);

  std::vector<metadata::KeyRow> referring = ReadForeignKeys(statement, &name, nullptr);
  ResolveImplicitKeyColumns(statement, referring);
  metadata::SortKeyRows(referring, /*ByFKTable=*/true);
  std::vector<metadata::KeyRow> own = ReadForeignKeys(statement, nullptr, &name);
  ResolveImplicitKeyColumns(statement, own);
  metadata::SortKeyRows(own, /*ByFKTable=*/false);

  // Both passes are read before anything is appended, so a failure adds nothing.
  TSQLMetadataRelations found;
  metadata::AppendRelations(referring, TableName.GetSyntaxProvider(), found);
  metadata::AppendRelations(own, TableName.GetSyntaxProvider(), found);
  for (auto& relation : found)
    Relations.push_back(std::move(relation));
}

}  // namespace qorvex
