#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "metadata/key_rows.h"
#include "metadata/sqlite_support.h"
#include "qorvex/metadata/sqlite_provider.h"

namespace qorvex {

namespace {

bool IsSystemName(const std::string& Name) {
  return sqlite3_strnicmp(Name.c_str(), "sqlite_", 7) == 0;
}

std::vector<std::string> ReadNames(sqlite3* Database, const char* SQL) {
  sqlite::Statement statement(Database, SQL, "Cannot read the table list");
  std::vector<std::string> names;
  while (statement.Step())
    names.push_back(statement.Text(0).value_or(""));
  return names;
}

// Foreign-key rows: table, key id, 0-based position, referenced table (as stored when it
// exists), referencing column, referenced column (NULL: the parent's primary key).
// The rows come sorted as each pass wants them: referring keys by their table, the
// table's own keys by the referenced table, then by key and position (key ids stand in
// for the names SQLite does not keep). Finding the keys that refer to a table reads
// every table's keys; a table whose definition lacks the word REFERENCES has none and is
// passed over.
// All of them at once (the last column is the referenced table as the key names it).
constexpr const char* kAllKeys =
    "select m.name, f.id, f.seq, coalesce(p.name, f.\"table\"), f.\"from\", f.\"to\", "
    "f.\"table\" "
    "from sqlite_master as m join pragma_foreign_key_list(m.name) as f "
    "left join sqlite_master as p on p.type = 'table' and p.name = f.\"table\" collate nocase "
    "where m.type = 'table' and m.sql like '%references%'";

struct SQLiteKeyRow {
  metadata::KeyRow Row;
  long Id = 0;
  bool Implicit = false;
};

// Table names compare as SQLite's NOCASE does: ASCII letters fold.
std::string NoCaseKey(std::string Name) {
  for (char& c : Name) {
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  }
  return Name;
}

std::vector<metadata::KeyRow> ResolveKeys(sqlite3* Database, std::vector<SQLiteKeyRow> rows,
                                          const std::string& Table) {
  const std::string context = "Cannot read the foreign keys of \"" + Table + "\"";

  // A key that names no referenced columns refers to the parent's primary key. When the
  // parent has no primary key of the key's width, SQLite cannot use the key either
  // ("foreign key mismatch"), and it is left out.
  std::map<std::pair<std::string, long>, size_t> widths;
  for (const SQLiteKeyRow& key : rows)
    ++widths[{key.Row.FKTable, key.Id}];
  std::map<std::string, std::vector<std::string>> primaryKeys;
  std::set<std::pair<std::string, long>> broken;
  for (SQLiteKeyRow& key : rows) {
    if (!key.Implicit)
      continue;
    auto found = primaryKeys.find(key.Row.PKTable);
    if (found == primaryKeys.end()) {
      sqlite::Statement statement(
          Database, "select name from pragma_table_info(?1) where pk > 0 order by pk", context);
      statement.Bind(1, key.Row.PKTable);
      std::vector<std::string> columns;
      while (statement.Step())
        columns.push_back(statement.Text(0).value_or(""));
      found = primaryKeys.emplace(key.Row.PKTable, std::move(columns)).first;
    }
    const std::vector<std::string>& columns = found->second;
    const std::pair<std::string, long> id{key.Row.FKTable, key.Id};
    if (columns.size() == widths[id] && key.Row.KeySeq >= 1 &&
        static_cast<size_t>(key.Row.KeySeq) <= columns.size())
      key.Row.PKColumn = columns[static_cast<size_t>(key.Row.KeySeq) - 1];
    else
      broken.insert(id);
  }

  std::vector<metadata::KeyRow> result;
  result.reserve(rows.size());
  for (SQLiteKeyRow& key : rows)
    if (!broken.count({key.Row.FKTable, key.Id}))
      result.push_back(std::move(key.Row));
  return result;
}

}  // namespace

struct TqxSQLiteMetadataProvider::KeyIndex {
  sqlite3* Database = nullptr;
  std::string File;
  long SchemaVersion = -1;
  // The keys of other tables that refer to a table, by the referenced name (NOCASE),
  // ordered by referring table, key and position.
  std::unordered_map<std::string, std::vector<SQLiteKeyRow>> Referring;
  // A table's own keys, by its name (NOCASE), ordered by referenced table, key and
  // position.
  std::unordered_map<std::string, std::vector<SQLiteKeyRow>> Own;
};

TqxSQLiteMetadataProvider::TqxSQLiteMetadataProvider(TqxSQLiteConnection* Connection) {
  SetConnection(Connection);
}

TqxSQLiteMetadataProvider::TqxSQLiteMetadataProvider() = default;

TqxSQLiteMetadataProvider::~TqxSQLiteMetadataProvider() = default;

const TqxSQLiteMetadataProvider::KeyIndex& TqxSQLiteMetadataProvider::GetKeyIndex(
    sqlite3* Database, const std::string& Table) {
  const std::string context = "Cannot read the foreign keys of \"" + Table + "\"";
  long version = 0;
  {
    sqlite::Statement statement(Database, "pragma schema_version", context);
    if (statement.Step())
      version = statement.Integer(0);
  }
  const char* file = sqlite3_db_filename(Database, "main");
  const std::string fileName = file != nullptr ? file : "";
  if (Keys_ && Keys_->Database == Database && Keys_->File == fileName &&
      Keys_->SchemaVersion == version)
    return *Keys_;
  auto index = std::make_unique<KeyIndex>();
  index->Database = Database;
  index->File = fileName;
  index->SchemaVersion = version;
  std::vector<std::pair<std::string, SQLiteKeyRow>> rows;  // (referenced name, row)
  {
    sqlite::Statement statement(Database, kAllKeys, context);
    while (statement.Step()) {
      SQLiteKeyRow key;
      key.Row.FKTable = statement.Text(0).value_or("");
      key.Id = statement.Integer(1);
      key.Row.KeySeq = statement.Integer(2) + 1;
      key.Row.PKTable = statement.Text(3).value_or("");
      key.Row.FKColumn = statement.Text(4).value_or("");
      std::optional<std::string> to = statement.Text(5);
      key.Implicit = !to.has_value();
      key.Row.PKColumn = to.value_or("");
      rows.emplace_back(statement.Text(6).value_or(""), std::move(key));
    }
  }
  // Referring keys by referring table, a table's own by referenced table; then by key
  // and position. Names order as SQLite's BINARY collation does (bytewise).
  auto byKey = [](const SQLiteKeyRow& A, const SQLiteKeyRow& B) {
    return std::tie(A.Id, A.Row.KeySeq) < std::tie(B.Id, B.Row.KeySeq);
  };
  std::sort(rows.begin(), rows.end(), [&](const auto& A, const auto& B) {
    if (A.second.Row.FKTable != B.second.Row.FKTable)
      return A.second.Row.FKTable < B.second.Row.FKTable;
    return byKey(A.second, B.second);
  });
  for (const auto& [referenced, key] : rows)
    index->Referring[NoCaseKey(referenced)].push_back(key);
  std::stable_sort(rows.begin(), rows.end(), [&](const auto& A, const auto& B) {
    if (A.second.Row.PKTable != B.second.Row.PKTable)
      return A.second.Row.PKTable < B.second.Row.PKTable;
    return byKey(A.second, B.second);
  });
  for (const auto& [referenced, key] : rows)
    index->Own[NoCaseKey(key.Row.FKTable)].push_back(key);
  Keys_ = std::move(index);
  return *Keys_;
}

sqlite3* TqxSQLiteMetadataProvider::OpenHandle(const char* Operation) {
  return RequireConnection("TqxSQLiteMetadataProvider", Operation).GetHandle();
}

void TqxSQLiteMetadataProvider::GetTableNames(std::vector<std::string>& Names, bool System) {
  Names.clear();
  std::vector<std::string> names =
      ReadNames(OpenHandle("GetTableNames"), "select name from sqlite_master where type = 'table'");
  if (!System)
    std::erase_if(names, IsSystemName);
  Names = std::move(names);
}

void TqxSQLiteMetadataProvider::GetViewNames(std::vector<std::string>& Names, bool System) {
  Names.clear();
  Names =
      ReadNames(OpenHandle("GetViewNames"), "select name from sqlite_master where type = 'view'");
}

void TqxSQLiteMetadataProvider::GetFields(const std::string& SQL,
                                          std::vector<std::string>& FieldNames) {
  FieldNames.clear();
  if (GetConnection() == nullptr)
    return;
  sqlite3* database = OpenHandle("GetFields");
  // Prepared only, never stepped: describing a statement must not run it.
  sqlite::Statement statement(database, SQL, "Cannot prepare the statement");
  if (statement.Handle() == nullptr)
    return;
  const int count = sqlite3_column_count(statement.Handle());
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(count));
  for (int column = 0; column < count; ++column) {
    const char* name = sqlite3_column_name(statement.Handle(), column);
    if (name == nullptr)
      sqlite::Raise("Cannot describe the statement's result", database);
    names.emplace_back(name);
  }
  FieldNames = std::move(names);
}

void TqxSQLiteMetadataProvider::GetTableRelations(const TSQLDatabaseObject& TableName,
                                                  TSQLMetadataRelations& Relations) {
  if (GetConnection() == nullptr)
    return;
  sqlite3* database = OpenHandle("GetTableRelations");
  const std::string name = TableName.GetObjName();
  const KeyIndex& index = GetKeyIndex(database, name);
  auto rowsOf = [&](const std::unordered_map<std::string, std::vector<SQLiteKeyRow>>& Map) {
    auto it = Map.find(NoCaseKey(name));
    return it != Map.end() ? it->second : std::vector<SQLiteKeyRow>();
  };
  std::vector<metadata::KeyRow> referring = ResolveKeys(database, rowsOf(index.Referring), name);
  std::vector<metadata::KeyRow> own = ResolveKeys(database, rowsOf(index.Own), name);

  // Both passes are read before anything is appended, so a failure adds nothing.
  TSQLMetadataRelations found;
  metadata::AppendRelations(referring, TableName.GetSyntaxProvider(), found);
  metadata::AppendRelations(own, TableName.GetSyntaxProvider(), found);
  for (auto& relation : found)
    Relations.push_back(std::move(relation));
}

}  // namespace qorvex
