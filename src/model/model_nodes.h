#pragma once

// Tree nodes the model builds for its own edits.

#include <memory>
#include <string>

#include "qorvex/ast/expressions.h"
#include "qorvex/ast/query.h"

namespace qorvex {
class TqxDatasource;
}

namespace qorvex::model {

// A column of a datasource, bound to its FROM source and qualified by the datasource's
// alias, else by its object's name.
std::unique_ptr<TSQLObjectColumn> MakeColumn(TqxDatasource* DS, const std::string& Field);
std::unique_ptr<TSQLExpressionColumn> MakeColumnExpression(TqxDatasource* DS,
                                                           const std::string& Field);

// An empty SELECT block: empty select list, FROM clause and GROUP BY list.
std::unique_ptr<TSQLSubQuerySelectExpression> MakeEmptySelect(TastSyntaxProvider* Provider);

}  // namespace qorvex::model
