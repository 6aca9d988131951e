#include "qorvex/ast/nodes.h"
#include "qorvex/syntax/components.h"

// The component's answers that hand out or take tree nodes.
namespace qorvex {

bool TqxBaseSyntaxProvider::IsDBObjectNamesEqual(const TSQLDatabaseObject& A,
                                                 const TSQLDatabaseObject& B) const {
  return GetASTSyntaxProvider()->IsDBObjectNamesEqual(A, B);
}
bool TqxBaseSyntaxProvider::IsColumnOfDBObject(const TSQLObjectColumn& Column,
                                               const TSQLDatabaseObject& Object) const {
  return GetASTSyntaxProvider()->IsColumnOfDBObject(Column, Object);
}
std::unique_ptr<TSQLFromObject> TqxBaseSyntaxProvider::CreateSQLFromObject(
    const std::string& Name, const std::string& Alias) const {
  return GetASTSyntaxProvider()->CreateSQLFromObject(Name, Alias);
}

std::unique_ptr<TSQLSelectStatement> TqxBaseSyntaxProvider::ParseSelect(
    const std::string& Text) const {
  return GetASTSyntaxProvider()->ParseSelect(Text);
}
std::unique_ptr<TSQLExpressionItem> TqxBaseSyntaxProvider::ParseExpression(
    const std::string& Text) const {
  return GetASTSyntaxProvider()->ParseExpression(Text);
}
std::unique_ptr<TSQLExpressionItem> TqxBaseSyntaxProvider::ParseLogicalExpression(
    const std::string& Text) const {
  return GetASTSyntaxProvider()->ParseLogicalExpression(Text);
}
std::unique_ptr<TSQLDatabaseObject> TqxBaseSyntaxProvider::ParseObjectName(
    const std::string& Text) const {
  return GetASTSyntaxProvider()->ParseObjectName(Text);
}
std::unique_ptr<TSQLSelectItem> TqxBaseSyntaxProvider::ParseSelectItem(
    const std::string& Text) const {
  return GetASTSyntaxProvider()->ParseSelectItem(Text);
}

}  // namespace qorvex
