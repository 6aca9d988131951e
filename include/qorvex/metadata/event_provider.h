#pragma once

#include <functional>
#include <string>
#include <vector>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TqxEventMetadataProvider;

using TqxGetObjectNamesEvent = std::function<void(TqxEventMetadataProvider* Sender,
                                                  std::vector<std::string>& Names, bool System)>;
using TqxGetSQLFieldNamesEvent =
    std::function<void(TqxEventMetadataProvider* Sender, const std::string& SQL,
                       std::vector<std::string>& FieldNames)>;
using TqxGetTableRelationsEvent =
    std::function<void(TqxEventMetadataProvider* Sender, const TSQLDatabaseObject& TableName,
                       TSQLMetadataRelations& Relations)>;

// A metadata provider that hands every question to an application-supplied event. Each
// list is cleared before the event runs, so a missing handler answers with an empty list.
class QORVEX_SQL_EXPORT TqxEventMetadataProvider : public TqxBaseMetadataProvider {
 public:
  TqxEventMetadataProvider() = default;
  ~TqxEventMetadataProvider() override;

  void GetTableNames(std::vector<std::string>& Names, bool System) override;
  void GetViewNames(std::vector<std::string>& Names, bool System) override;
  void GetFields(const std::string& SQL, std::vector<std::string>& FieldNames) override;
  // Clears `Relations`, then asks OnGetTableRelations.
  void GetTableRelations(const TSQLDatabaseObject& TableName,
                         TSQLMetadataRelations& Relations) override;

  TqxGetObjectNamesEvent OnGetTableNames;
  TqxGetObjectNamesEvent OnGetViewNames;
  TqxGetSQLFieldNamesEvent OnGetSQLFieldNames;
  TqxGetTableRelationsEvent OnGetTableRelations;
};

}  // namespace qorvex
