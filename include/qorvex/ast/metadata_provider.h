#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/core/component.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TSQLDatabaseObject;

// One foreign key between two tables. The column lists pair by position: the i-th
// foreign-key column refers to the i-th primary-key column. Each table is a database
// object with a single name part (the bare table name).
class QORVEX_SQL_EXPORT TSQLMetadataRelation {
 public:
  TSQLMetadataRelation();
  ~TSQLMetadataRelation();

  std::unique_ptr<TSQLDatabaseObject> PKTable;
  std::vector<std::string> PKColumns;
  std::unique_ptr<TSQLDatabaseObject> FKTable;
  std::vector<std::string> FKColumns;
};

// A list of relations that owns its items.
using TSQLMetadataRelations = std::vector<std::unique_ptr<TSQLMetadataRelation>>;

// What the designer asks about the database: table and view names, the result columns
// of a statement, and the foreign keys of a table. The designer never talks to a
// database itself; a provider answers these four questions.
class QORVEX_SQL_EXPORT TqxBaseMetadataProvider : public TqxComponent {
 public:
  // Replace `Names` with bare object names in the order the source delivers them.
  // `System` asks for system tables as well.
  virtual void GetTableNames(std::vector<std::string>& Names, bool System) = 0;
  virtual void GetViewNames(std::vector<std::string>& Names, bool System) = 0;
  // Replace `FieldNames` with the result column names of `SQL` (a statement beginning
  // "select * from "), in result order. The statement is described, never run.
  virtual void GetFields(const std::string& SQL, std::vector<std::string>& FieldNames) = 0;
  // Append one relation per foreign key in which the table takes part, as referenced or
  // as referencing table. Only the object-name part of `TableName` is used.
  virtual void GetTableRelations(const TSQLDatabaseObject& TableName,
                                 TSQLMetadataRelations& Relations) = 0;
};

}  // namespace qorvex
