#include <memory>
#include <string>

#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"

// Name comparison and FROM-object creation need the concrete name and FROM node classes;
// until those are in the library these operations report that they are unavailable.
namespace qorvex {

bool TastSyntaxProvider::IsDBObjectNamesEqual(const TSQLDatabaseObject&,
                                              const TSQLDatabaseObject&) const {
  throw EqxError("Object-name comparison is not available");
}

bool TastSyntaxProvider::IsColumnOfDBObject(const TSQLObjectColumn&,
                                            const TSQLDatabaseObject&) const {
  throw EqxError("Object-name comparison is not available");
}

std::unique_ptr<TSQLFromObject> TastSyntaxProvider::CreateSQLFromObject(const std::string&,
                                                                        const std::string&) {
  throw EqxError("FROM objects are not available");
}

}  // namespace qorvex
