#pragma once

// Foreign-key rows as the catalogue delivers them, and their conversion into relations:
// shared by the ODBC and the SQLite providers.

#include <algorithm>
#include <climits>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"

namespace qorvex::metadata {

// One column of one foreign key.
struct KeyRow {
  std::string PKTable;
  std::string PKColumn;
  std::string FKTable;
  std::string FKColumn;
  std::string FKName;  // empty when the database does not name its keys
  long KeySeq = 0;     // 1-based position of the column within its key
};

// Orders the rows of pass 1 (keys that refer to a table) by FK table, key name and
// ordinal, or those of pass 2 (the table's own keys) by PK table, key name and ordinal.
// Stable, so rows of unnamed keys keep the catalogue's grouping.
inline void SortKeyRows(std::vector<KeyRow>& Rows, bool ByFKTable) {
  std::stable_sort(Rows.begin(), Rows.end(), [ByFKTable](const KeyRow& a, const KeyRow& b) {
    const std::string& ta = ByFKTable ? a.FKTable : a.PKTable;
    const std::string& tb = ByFKTable ? b.FKTable : b.PKTable;
    return std::tie(ta, a.FKName, a.KeySeq) < std::tie(tb, b.FKName, b.KeySeq);
  });
}

// Appends one relation per key: a new relation begins wherever the ordinal stops rising.
// The key names are not compared. Each table becomes a one-part name with `Provider`.
inline void AppendRelations(const std::vector<KeyRow>& Rows, TastSyntaxProvider* Provider,
                            TSQLMetadataRelations& Relations) {
  long previous = INT_MAX;
  TSQLMetadataRelation* current = nullptr;
  for (const KeyRow& row : Rows) {
    if (current == nullptr || previous >= row.KeySeq) {
      auto relation = std::make_unique<TSQLMetadataRelation>();
      relation->PKTable = NewNode<TSQLDatabaseObject>(Provider);
      relation->PKTable->AddName(row.PKTable);
      relation->FKTable = NewNode<TSQLDatabaseObject>(Provider);
      relation->FKTable->AddName(row.FKTable);
      current = relation.get();
      Relations.push_back(std::move(relation));
    }
    current->PKColumns.push_back(row.PKColumn);
    current->FKColumns.push_back(row.FKColumn);
    previous = row.KeySeq;
  }
}

}  // namespace qorvex::metadata
