#include "qorvex/metadata/event_provider.h"

namespace qorvex {

TqxEventMetadataProvider::~TqxEventMetadataProvider() {
  BeginDestroy();
}

void TqxEventMetadataProvider::GetTableNames(std::vector<std::string>& Names, bool System) {
  Names.clear();
  if (OnGetTableNames)
    OnGetTableNames(this, Names, System);
}

void TqxEventMetadataProvider::GetViewNames(std::vector<std::string>& Names, bool System) {
  Names.clear();
  if (OnGetViewNames)
    OnGetViewNames(this, Names, System);
}

void TqxEventMetadataProvider::GetFields(const std::string& SQL,
                                         std::vector<std::string>& FieldNames) {
  FieldNames.clear();
  if (OnGetSQLFieldNames)
    OnGetSQLFieldNames(this, SQL, FieldNames);
}

void TqxEventMetadataProvider::GetTableRelations(const TSQLDatabaseObject& TableName,
                                                 TSQLMetadataRelations& Relations) {
  Relations.clear();
  if (OnGetTableRelations)
    OnGetTableRelations(this, TableName, Relations);
}

}  // namespace qorvex
