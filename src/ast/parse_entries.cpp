#include <memory>
#include <string>

#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"

// Parse entries of a library built without the SQL parser: every entry reports that.
namespace qorvex {

namespace {
[[noreturn]] void NoParser() {
  throw EqxError("The SQL parser is not linked in");
}
}  // namespace

std::unique_ptr<TSQLSelectStatement> TastSyntaxProvider::ParseSelect(const std::string&) {
  NoParser();
}

std::unique_ptr<TSQLExpressionItem> TastSyntaxProvider::ParseExpression(const std::string&) {
  NoParser();
}

std::unique_ptr<TSQLExpressionItem> TastSyntaxProvider::ParseLogicalExpression(const std::string&) {
  NoParser();
}

std::unique_ptr<TSQLDatabaseObject> TastSyntaxProvider::ParseObjectName(const std::string&) {
  NoParser();
}

std::unique_ptr<TSQLSelectItem> TastSyntaxProvider::ParseSelectItem(const std::string&) {
  NoParser();
}

}  // namespace qorvex
