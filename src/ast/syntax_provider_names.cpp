#include <algorithm>
#include <memory>
#include <string>

#include "ast/syntax_provider_text.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"

namespace qorvex {

namespace {

// Compares Count parts of two name-part lists (innermost first), A's from index AFrom
// and B's from 0. The object name itself (B's index 0) must be present and equal; an
// empty outer qualifier (as in db..table) stands for the default and matches any part.
bool SamePartsFromInnermost(const std::vector<std::string>& A, std::size_t AFrom,
                            const std::vector<std::string>& B) {
  if (A.size() <= AFrom || B.empty())
    return false;
  const std::size_t count = std::min(A.size() - AFrom, B.size());
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& a = A[AFrom + i];
    const std::string& b = B[i];
    if (i > 0 && (a.empty() || b.empty()))
      continue;
    if (a.empty() || !sptext::SameText(a, b))
      return false;
  }
  return true;
}

}  // namespace

bool TastSyntaxProvider::IsDBObjectNamesEqual(const TSQLDatabaseObject& A,
                                              const TSQLDatabaseObject& B) const {
  return SamePartsFromInnermost(A.GetNameParts(), 0, B.GetNameParts());
}

bool TastSyntaxProvider::IsColumnOfDBObject(const TSQLObjectColumn& Column,
                                            const TSQLDatabaseObject& Object) const {
  // The column's parts after its own name are its qualifier, innermost (the table) first.
  return SamePartsFromInnermost(Column.GetNameParts(), 1, Object.GetNameParts());
}

std::unique_ptr<TSQLFromObject> TastSyntaxProvider::CreateSQLFromObject(const std::string& Name,
                                                                        const std::string& Alias) {
  if (Name.empty())
    throw EqxError("Can't create a FROM object without a name");
  // A name or alias given between the dialect's quotes is that quoted name.
  std::string name = Name;
  const bool nameQuoted = ReadQuotedName(Name, name) && !name.empty();
  if (!nameQuoted)
    name = Name;
  auto object = NewNode<TSQLDatabaseObject>(this);
  object->AddName(std::move(name), nameQuoted);
  auto from = NewNode<TSQLFromObject>(this);
  from->SetDatabaseObject(std::move(object));
  if (!Alias.empty()) {
    std::string alias = Alias;
    const bool aliasQuoted = ReadQuotedName(Alias, alias) && !alias.empty();
    if (!aliasQuoted)
      alias = Alias;
    from->SetAlias(NewNode<TSQLAliasObjectAlias>(this, std::move(alias), aliasQuoted));
  }
  return from;
}

}  // namespace qorvex
