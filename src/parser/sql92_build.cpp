// The building pass of the SQL-92 grammar: each operation replays the decisions that
// its way-calculation twin recorded (one way point per decision, read in the same
// order) and creates the tree nodes through the provider.
#include <charconv>
#include <new>

#include "parser/sql92_grammar.h"
#include "parser/sql92_nodes.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/ast/types.h"
#include "qorvex/parser/sql92_parser.h"

namespace qorvex {

using namespace sql92grammar;
using namespace sql92nodes;

// ---- names --------------------------------------------------------------------------

// A quoted identifier stands for the text inside its quotes (a doubled quote stands for
// one); a bracketed one for the text inside its brackets, and [a][b] for the two parts
// a and b.
void SQL92Parser::NameParts(const TqxToken& token, TastVector<std::string>& parts) const {
  const std::string_view v = token.val;
  if (token.kind != tkQuotedIdentifier || v.size() < 2) {
    parts.emplace_back(v);
    return;
  }
  if (v.front() == '"') {
    std::string text;
    text.reserve(v.size() - 2);
    for (std::size_t i = 1; i + 1 < v.size(); ++i) {
      text += v[i];
      if (v[i] == '"' && v[i + 1] == '"' && i + 2 < v.size())
        ++i;
    }
    parts.push_back(std::move(text));
    return;
  }
  // "[" part "]" { "[" part "]" }
  std::size_t i = 0;
  while (i < v.size() && v[i] == '[') {
    const std::size_t close = v.find(']', i + 1);
    if (close == std::string_view::npos) {
      parts.emplace_back(v.substr(i + 1));
      return;
    }
    parts.emplace_back(v.substr(i + 1, close - i - 1));
    i = close + 1;
  }
}

std::string SQL92Parser::NameText(const TqxToken& token) const {
  TastVector<std::string> parts;
  NameParts(token, parts);
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i != 0)
      text += '.';
    text += parts[i];
  }
  return text;
}

bool SQL92Parser::identifier(TastVector<std::string>& parts) {
  Decision();
  const TqxToken& token = Get();
  NameParts(token, parts);
  return token.kind == tkQuotedIdentifier;
}

std::string SQL92Parser::keywordAsIdentifier() {
  Decision();
  return std::string(Get().val);
}

std::string SQL92Parser::stringLiteral() {
  return StringLiteralText(Get().val);
}

// The qualifying parts and the name of dbObject and dbColumn. Unquoted parts, the usual
// case, are stored straight in the node's order (innermost first).
void SQL92Parser::ReadName(int levels, TSQLQualifiedName& name) {
  int entered = 0;
  while (entered < levels && Decision() == 1)
    ++entered;
  const TqxToken* tokens[kColumnQualifiers + 1];  // null for an empty qualifying part
  int count = 0;
  bool quoted = false;
  const auto part = [&]() -> const TqxToken* {
    Decision();  // identifier or keyword
    Decision();  // which one
    const TqxToken& token = Get();
    quoted |= token.kind == tkQuotedIdentifier;
    return &token;
  };
  for (; entered > 0; --entered) {
    tokens[count++] = Decision() == 1 ? part() : nullptr;
    Get();  // "."
  }
  tokens[count++] = part();
  StoreName(tokens, count, quoted, name);
}

// The parts of a name chain, qualifiers first (null for an empty qualifying part).
void SQL92Parser::StoreName(const TqxToken* const* tokens, int count, bool quoted,
                            TSQLQualifiedName& name) const {
  if (!quoted) {
    TastVector<std::string> parts;
    parts.reserve(static_cast<std::size_t>(count));
    for (int i = count - 1; i >= 0; --i) {
      if (tokens[i] != nullptr)
        parts.emplace_back(tokens[i]->val);
      else
        parts.emplace_back();
    }
    name.SetStoredParts(std::move(parts));
    return;
  }
  TastVector<std::string> parts;
  std::vector<bool> quotedParts;
  for (int i = 0; i < count; ++i) {
    const std::size_t before = parts.size();
    if (tokens[i] == nullptr) {
      parts.emplace_back();
      continue;
    }
    NameParts(*tokens[i], parts);
    if (tokens[i]->kind == tkQuotedIdentifier)
      MarkQuoted(quotedParts, before, parts.size());
  }
  name.SetWrittenParts(std::move(parts), std::move(quotedParts));
}

std::unique_ptr<TSQLDatabaseObject> SQL92Parser::dbObject() {
  auto object = Make<TSQLDatabaseObject>(provider);
  ReadName(kObjectQualifiers, *object);
  return object;
}

std::unique_ptr<TSQLObjectColumn> SQL92Parser::dbColumn() {
  auto column = Make<TSQLObjectColumn>(provider);
  ReadName(kColumnQualifiers, *column);
  return column;
}

// alias1, alias2: the alias text. A string literal names the alias as exactly as a
// quoted identifier does, so both count as quoted.
std::string SQL92Parser::alias1(bool& quoted) {
  switch (Decision()) {
    case 0: {
      Decision();  // which identifier form
      const TqxToken& token = Get();
      quoted = token.kind == tkQuotedIdentifier;
      return quoted ? NameText(token) : std::string(token.val);
    }
    case 1:
      quoted = true;
      return stringLiteral();
    default:
      quoted = false;
      return keywordAsIdentifier();
  }
}

std::string SQL92Parser::alias2(bool& quoted) {
  return alias1(quoted);
}

std::unique_ptr<TSQLAlias> SQL92Parser::MakeAlias(bool withAs) {
  bool quoted = false;
  std::string name = alias1(quoted);
  if (withAs)
    return Make<TSQLAliasObjectAsAlias>(provider, std::move(name), quoted);
  return Make<TSQLAliasObjectAlias>(provider, std::move(name), quoted);
}

// ---- entries ------------------------------------------------------------------------

std::unique_ptr<TSQLSelectStatement> SQL92Parser::ParseSelect() {
  return selectStatement();
}
std::unique_ptr<TSQLDatabaseObject> SQL92Parser::ParseObjectName() {
  return dbObject();
}
std::unique_ptr<TSQLExpressionItem> SQL92Parser::ParseExpression() {
  return expression();
}
std::unique_ptr<TSQLSelectItem> SQL92Parser::ParseSelectItem() {
  return selectItem();
}
std::unique_ptr<TSQLExpressionItem> SQL92Parser::ParseLogicalExpression() {
  return expressionLogical();
}

std::unique_ptr<TSQLSelectStatement> SQL92Parser::SQL92() {
  auto statement = selectStatement();
  if (Decision() == 1)
    Get();  // ";"
  return statement;
}

// ---- statement level ----------------------------------------------------------------

// selectStatement and subSelectStatement: queryExpression [ orderByClause ]
void SQL92Parser::statementBody(TSQLSubSelectStatement& statement) {
  queryExpression(statement);
  if (Decision() == 1)
    statement.SetOrderBy(orderByClause());
}

std::unique_ptr<TSQLSelectStatement> SQL92Parser::selectStatement() {
  auto statement = Make<TSQLSelectStatement>(provider);
  statementBody(*statement);
  return statement;
}

std::unique_ptr<TSQLSubSelectStatement> SQL92Parser::subSelectStatement() {
  auto statement = Make<TSQLSubSelectStatement>(provider);
  statementBody(*statement);
  return statement;
}

void SQL92Parser::queryExpression(TSQLSubQueryExpressions& list) {
  list.Add(subQueryExpression());
  while (Decision() == 1) {
    Decision();  // union, except or intersect: the word itself is kept
    std::string text(Get().val);
    for (char& c : text)
      c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    bool all = false;
    if (Decision() == 1) {
      Get();
      all = true;
    }
    auto operand = subQueryExpression();
    operand->UnionOperator = std::move(text);
    operand->All = all;
    list.Add(std::move(operand));
  }
}

std::unique_ptr<TSQLSubQueryExpression> SQL92Parser::subQueryExpression() {
  if (Decision() == 0)
    return selectBlock();
  Get();  // "("
  auto group = Make<TSQLSubQueryExpressions>(provider);
  queryExpression(*group);
  Get();  // ")"
  return group;
}

std::unique_ptr<TSQLSubQuerySelectExpression> SQL92Parser::selectBlock() {
  auto query = Make<TSQLSubQuerySelectExpression>(provider);
  selectClause(*query);
  if (Decision() == 1)
    query->SetFromClause(fromClause());
  if (Decision() == 1) {
    Get();  // "where"
    query->SetWhere(expressionLogical());
  }
  if (Decision() == 1)
    query->SetGroupBy(groupByList());
  if (Decision() == 1) {
    Get();  // "having"
    query->SetHaving(expressionLogical());
  }
  return query;
}

void SQL92Parser::selectClause(TSQLSubQuerySelectExpression& query) {
  Get();  // "select"
  if (Decision() == 1) {
    const std::int32_t mode = Decision();
    Get();
    if (mode == 0)
      query.SetSelectMode(Make<TSQLSubQuerySelectModeAll>(provider));
    else
      query.SetSelectMode(Make<TSQLSubQuerySelectModeDistinct>(provider));
  } else {
    query.SetSelectMode(Make<TSQLSubQuerySelectModeDefault>(provider));
  }
  query.SetSelectItems(selectList());
}

std::unique_ptr<TSQLSelectItems> SQL92Parser::selectList() {
  auto items = Make<TSQLSelectItems>(provider);
  if (Decision() == 1) {
    items->Add(selectItem());
    while (Decision() == 1) {
      Get();  // ","
      items->Add(selectItem());
    }
  }
  return items;
}

std::unique_ptr<TSQLSelectItem> SQL92Parser::selectItem() {
  switch (Decision()) {
    case 0:
      Get();  // "*"
      return Make<TSQLSelectItemAllColumns>(provider);
    case 1: {
      auto item = Make<TSQLSelectItemExpression>(provider);
      bool quoted = false;
      std::string alias = alias2(quoted);
      Get();  // "="
      item->SetExpression(expression());
      item->SetAlias(Make<TSQLAliasAliasEqualsObject>(provider, std::move(alias), quoted));
      return item;
    }
    case 2: {
      auto item = Make<TSQLSelectItemAllTableColumns>(provider);
      item->SetQualifier(dbObject());
      Get();  // ".*"
      return item;
    }
    default: {
      auto item = Make<TSQLSelectItemExpression>(provider);
      item->SetExpression(expression());
      if (Decision() == 1) {
        const bool withAs = Decision() == 1;
        if (withAs)
          Get();  // "as"
        item->SetAlias(MakeAlias(withAs));
      }
      return item;
    }
  }
}

std::unique_ptr<TSQLOrderByClause> SQL92Parser::orderByClause() {
  Get();  // "order"
  Get();  // "by"
  auto clause = Make<TSQLOrderByClause>(provider);
  clause->Add(orderByItem());
  while (Decision() == 1) {
    Get();  // ","
    clause->Add(orderByItem());
  }
  return clause;
}

std::unique_ptr<TSQLOrderByItem> SQL92Parser::orderByItem() {
  auto item = Make<TSQLOrderByItem>(provider);
  item->SetExpression(expression());
  if (Decision() == 1) {
    item->Descending = Decision() == 1;
    Get();
  }
  return item;
}

std::unique_ptr<TSQLGroupByList> SQL92Parser::groupByList() {
  Get();  // "group"
  Get();  // "by"
  auto list = Make<TSQLGroupByList>(provider);
  list->Add(expression());
  while (Decision() == 1) {
    Get();  // ","
    list->Add(expression());
  }
  return list;
}

// ---- FROM clause --------------------------------------------------------------------

std::unique_ptr<TSQLFromClause> SQL92Parser::fromClause() {
  Get();  // "from"
  auto clause = Make<TSQLFromClause>(provider);
  if (Decision() == 1)
    tableSource(*clause);
  return clause;
}

void SQL92Parser::tableSource(TSQLFromItem& item) {
  item.Add(subTableSource());
  while (Decision() == 1)
    item.Add(joinedTable());
}

std::unique_ptr<TSQLFromSource> SQL92Parser::subTableSource() {
  switch (Decision()) {
    case 0: {
      Get();  // "("
      if (Decision() == 0) {
        auto group = Make<TSQLFromItem>(provider);
        tableSource(*group);
        Get();  // ")"
        return group;
      }
      auto query = Make<TSQLFromQuery>(provider);
      query->SetSubQuery(subSelectStatement());
      Get();  // ")"
      const bool withAs = Decision() == 1;
      if (withAs)
        Get();  // "as"
      query->SetAlias(MakeAlias(withAs));
      if (Decision() == 1) {
        Get();  // "("
        auto columnAlias = [&] {
          bool quoted = false;
          query->ColumnAliases.push_back(alias1(quoted));
          if (quoted)
            MarkQuoted(query->ColumnAliasesQuoted, query->ColumnAliases.size() - 1,
                       query->ColumnAliases.size());
        };
        columnAlias();
        while (Decision() == 1) {
          Get();  // ","
          columnAlias();
        }
        Get();  // ")"
      }
      return query;
    }
    case 1: {
      auto source = Make<TSQLFromFunction>(provider);
      source->SetFunction(SQLfunction());
      if (Decision() == 1) {
        const bool withAs = Decision() == 1;
        if (withAs)
          Get();
        source->SetAlias(MakeAlias(withAs));
      }
      return source;
    }
    default: {
      auto source = Make<TSQLFromObject>(provider);
      source->SetDatabaseObject(dbObject());
      if (Decision() == 1) {
        const bool withAs = Decision() == 1;
        if (withAs)
          Get();
        source->SetAlias(MakeAlias(withAs));
      }
      return source;
    }
  }
}

std::unique_ptr<TSQLFromSource> SQL92Parser::joinedTable() {
  switch (Decision()) {
    case 0:
      Get();  // ","
      return subTableSource();
    case 1: {
      Get();  // "cross"
      Get();  // "join"
      auto source = subTableSource();
      source->SetJoinKind(Make<TSQLJoinKindCross>(provider));
      return source;
    }
    default: {
      std::unique_ptr<TSQLJoinKind> kind;
      if (Decision() == 1) {
        if (Decision() == 0) {
          Get();  // "inner"
          kind = Make<TSQLJoinKindInner>(provider);
        } else {
          const std::int32_t side = Decision();
          Get();
          std::unique_ptr<TSQLJoinKindOuter> outer;
          if (side == 0)
            outer = Make<TSQLJoinKindLeft>(provider);
          else if (side == 1)
            outer = Make<TSQLJoinKindRight>(provider);
          else
            outer = Make<TSQLJoinKindFull>(provider);
          if (Decision() == 1) {
            Get();  // "outer"
            outer->Outer = true;
          }
          kind = std::move(outer);
        }
      } else {
        kind = Make<TSQLJoinKindInner>(provider);
      }
      Get();  // "join"
      std::unique_ptr<TSQLFromSource> source;
      if (Decision() == 0)
        source = subTableSource();
      else
        source = tableSourceInner();
      Get();  // "on"
      source->SetJoinKind(std::move(kind));
      source->SetJoinCondition(expressionLogical());
      return source;
    }
  }
}

std::unique_ptr<TSQLFromItem> SQL92Parser::tableSourceInner() {
  auto item = Make<TSQLFromItem>(provider);
  item->Add(subTableSource());
  item->Add(joinedTable());
  while (Decision() == 1)
    item->Add(joinedTable());
  return item;
}

void SQL92Parser::NameFunction(TSQLFunction& function, const TSQLDatabaseObject& name) {
  function.Name = name.GetObjName();
  function.NameQuoted = name.IsQuoted(0);
  for (int i = name.Count() - 1; i >= 1; --i) {
    function.Qualifiers.push_back(name.GetNames(i));
    if (name.IsQuoted(i))
      MarkQuoted(function.QualifiersQuoted, function.Qualifiers.size() - 1,
                 function.Qualifiers.size());
  }
}

std::unique_ptr<TSQLFunction> SQL92Parser::SQLfunction() {
  auto function = Make<TSQLFunction>(provider);
  NameFunction(*function, *dbObject());
  auto params = Make<TSQLFunctionParams>(provider);
  Get();  // "("
  if (Decision() == 1) {
    auto list = expressionsList();
    while (list->GetCount() > 0) {
      auto param = Make<TSQLFunctionParamExpression>(provider);
      param->SetExpression(std::unique_ptr<TSQLExpressionItem>(
          static_cast<TSQLExpressionItem*>(list->Extract(0).release())));
      params->Add(std::move(param));
    }
  }
  Get();  // ")"
  function->SetParams(std::move(params));
  return function;
}

// ---- logical expressions ------------------------------------------------------------

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionLogical() {
  auto first = expressionAnd();
  if (Decision() == 0)
    return first;
  auto collection = Make<TSQLExpressionOr>(provider);
  collection->Add(std::move(first));
  do {
    Get();  // "or"
    collection->Add(expressionAnd());
  } while (Decision() == 1);
  return collection;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionAnd() {
  auto first = expressionNot();
  if (Decision() == 0)
    return first;
  auto collection = Make<TSQLExpressionAnd>(provider);
  collection->Add(std::move(first));
  do {
    Get();  // "and"
    collection->Add(expressionNot());
  } while (Decision() == 1);
  return collection;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionNot() {
  if (Decision() == 1)
    return expressionLogicalTerm();
  Get();  // "not"
  auto node = Make<TSQLExpressionNot>(provider);
  node->SetInner(expressionNot());
  return node;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionLogicalTerm() {
  switch (Decision()) {
    case 0: {
      Get();  // "("
      auto node = Make<TSQLExpressionBrackets>(provider);
      node->SetInner(expressionLogical());
      Get();  // ")"
      return node;
    }
    case 1: {
      std::unique_ptr<TSQLExpressionItem> left;
      if (Decision() == 1)
        left = expression();
      return predicate(std::move(left));
    }
    default: {
      Get();  // "exists"
      Get();  // "("
      auto node = Make<TSQLExpressionExists>(provider);
      node->SetSubQuery(subSelectStatement());
      Get();  // ")"
      return node;
    }
  }
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::predicate(
    std::unique_ptr<TSQLExpressionItem> left) {
  auto optNot = [&] {
    if (Decision() == 1) {
      Get();  // "not"
      return true;
    }
    return false;
  };
  switch (Decision()) {
    case 0: {
      auto op = comparisonOperator();
      if (Decision() == 1)
        return expressionCompWithSet(std::move(left), std::move(op));
      auto node = Make<TSQLExpressionOperatorBinary>(provider);
      node->SetInner(std::move(left));
      node->SetOperator(std::move(op));
      node->SetRight(expression());
      return node;
    }
    case 1: {
      Get();  // "is"
      auto node = Make<TSQLExpressionIsNull>(provider);
      node->SetInner(std::move(left));
      node->Not = optNot();
      Get();  // "null"
      return node;
    }
    case 2: {
      auto node = Make<TSQLExpressionLikeTemplate>(provider);
      node->SetInner(std::move(left));
      node->Not = optNot();
      node->Keyword = Get().val;
      node->SetPattern(expression());
      if (Decision() == 1) {
        Get();  // "escape"
        node->SetEscape(expression());
      }
      return node;
    }
    case 3: {
      auto node = Make<TSQLExpressionBetween>(provider);
      node->SetInner(std::move(left));
      node->Not = optNot();
      Get();  // "between"
      node->SetLow(expression());
      Get();  // "and"
      node->SetHigh(expression());
      return node;
    }
    default: {
      const bool isNot = optNot();
      Get();  // "in"
      Get();  // "("
      std::unique_ptr<TSQLExpressionItem> result;
      if (Decision() == 0) {
        auto node = Make<TSQLExpressionInSubQuery>(provider);
        node->SetInner(std::move(left));
        node->Not = isNot;
        node->SetSubQuery(subSelectStatement());
        result = std::move(node);
      } else {
        auto node = Make<TSQLExpressionInSet>(provider);
        node->SetInner(std::move(left));
        node->Not = isNot;
        node->SetList(expressionsList());
        result = std::move(node);
      }
      Get();  // ")"
      return result;
    }
  }
}

std::unique_ptr<TSQLOperator> SQL92Parser::comparisonOperator() {
  Decision();
  return Make<TSQLOperator>(provider, std::string(Get().val));
}

// The comparison operator stays with the left operand (a postfix node "a>"), which the
// quantifier and the sub-query follow.
std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionCompWithSet(
    std::unique_ptr<TSQLExpressionItem> left, std::unique_ptr<TSQLOperator> op) {
  const std::int32_t quantifier = Decision();
  Get();
  Get();  // "("
  auto postfix = Make<TSQLExpressionOperatorPostfix>(provider);
  postfix->SetInner(std::move(left));
  postfix->SetOperator(CloneNode(*op));
  auto node = Make<TSQLExpressionCompWithSubQuery>(provider);
  node->SetInner(std::move(postfix));
  node->SetOperator(std::move(op));
  node->Quantifier = static_cast<std::uint8_t>(quantifier);
  node->SetSubQuery(subSelectStatement());
  Get();  // ")"
  return node;
}

std::unique_ptr<TSQLExpressionsList> SQL92Parser::expressionsList() {
  auto list = Make<TSQLExpressionsList>(provider);
  list->Add(expression());
  while (Decision() == 1) {
    Get();  // ","
    list->Add(expression());
  }
  return list;
}

// ---- value expressions --------------------------------------------------------------

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expression() {
  return expressionAdd();
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionAdd() {
  auto left = expressionFactor();
  while (Decision() == 1) {
    Decision();
    auto node = Make<TSQLExpressionOperatorBinary>(provider);
    node->SetOperator(Make<TSQLOperator>(provider, std::string(Get().val)));
    node->SetInner(std::move(left));
    node->SetRight(expressionFactor());
    left = std::move(node);
  }
  return left;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionFactor() {
  auto left = expressionUnary();
  while (Decision() == 1) {
    Decision();
    auto node = Make<TSQLExpressionOperatorBinary>(provider);
    node->SetOperator(Make<TSQLOperator>(provider, std::string(Get().val)));
    node->SetInner(std::move(left));
    node->SetRight(expressionUnary());
    left = std::move(node);
  }
  return left;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionUnary() {
  if (Decision() == 1)
    return expressionTerm();
  Decision();
  auto node = Make<TSQLExpressionOperatorPrefix>(provider);
  node->SetOperator(Make<TSQLOperator>(provider, std::string(Get().val)));
  node->SetInner(expressionUnary());
  return node;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::expressionTerm() {
  switch (Decision()) {
    case 0: {
      Get();  // "("
      auto node = Make<TSQLExpressionBrackets>(provider);
      node->SetInner(expression());
      Get();  // ")"
      return node;
    }
    case 1:
      return constant();
    case 2: {
      auto node = Make<TSQLExpressionColumn>(provider);
      node->SetColumn(dbColumn());
      return node;
    }
    case 3:
      return SQLAggregateFunction();
    case 4: {
      auto node = Make<TSQLExpressionFunction>(provider);
      node->SetFunction(SQLfunction());
      return node;
    }
    case 5: {
      Get();  // "("
      auto node = Make<TSQLExpressionSelect>(provider);
      node->SetSubQuery(subSelectStatement());
      Get();  // ")"
      return node;
    }
    case 6:
      return caseFunction();
    case 7:
      return castFunction();
    default:
      return parameterlessFunction();
  }
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::constant() {
  Decision();
  return Make<TSQLExpressionConstant>(provider, std::string(Get().val));
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::SQLAggregateFunction() {
  // [ "all" | "distinct" ]: 1 for DISTINCT, 2 for ALL, 0 for neither.
  auto mode = [&]() -> std::uint8_t {
    if (Decision() == 0)
      return 0;
    const std::int32_t d = Decision();
    Get();
    return d == 1 ? 1 : 2;
  };
  if (Decision() == 0) {
    Decision();
    std::string name(Get().val);
    Get();  // "("
    auto node = Make<TSQLExpressionAggregate1ParamWPrefix>(provider);
    node->Name = std::move(name);
    node->Quantifier = mode();
    node->SetArgument(expression());
    Get();  // ")"
    return node;
  }
  std::string name(Get().val);  // "count"
  Get();                        // "("
  std::unique_ptr<TSQLExpressionItem> result;
  if (Decision() == 0) {
    Get();  // "*"
    auto node = Make<TSQLExpressionAggregate>(provider);
    node->Name = std::move(name);
    result = std::move(node);
  } else {
    auto node = Make<TSQLExpressionAggregate1ParamWPrefix>(provider);
    node->Name = std::move(name);
    node->Quantifier = mode();
    node->SetArgument(expression());
    result = std::move(node);
  }
  Get();  // ")"
  return result;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::caseFunction() {
  Get();  // "case"
  auto node = Make<TSQLExpressionCaseFunction>(provider);
  const bool simple = Decision() == 0;
  if (simple)
    node->SetOperand(expression());
  auto item = [&] {
    Get();  // "when"
    auto entry = Make<TSQLCaseFunctionItem>(provider);
    entry->SetWhen(simple ? expression() : expressionLogical());
    Get();  // "then"
    entry->SetThen(expression());
    node->AddItem(std::move(entry));
  };
  item();
  while (Decision() == 1)
    item();
  if (Decision() == 1) {
    Get();  // "else"
    node->SetElse(expression());
  }
  Get();  // "end"
  return node;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::castFunction() {
  Get();  // "cast"
  Get();  // "("
  auto node = Make<TSQLExpressionCast>(provider);
  node->SetInner(expression());
  Get();  // "as"
  node->SetType(SQLType());
  Get();  // ")"
  return node;
}

std::unique_ptr<TSQLExpressionItem> SQL92Parser::parameterlessFunction() {
  Decision();
  auto node = Make<TSQLExpressionParameterlessFunction>(provider);
  node->Name = Get().val;
  return node;
}

std::unique_ptr<TSQLType> SQL92Parser::SQLType() {
  if (Decision() == 0)
    return SQLTypeUser();
  return SQLTypeBuiltIn();
}

std::unique_ptr<TSQLType> SQL92Parser::SQLTypeUser() {
  TastVector<std::string> parts;
  std::vector<bool> quoted;
  if (Decision() == 1) {
    if (identifier(parts))
      MarkQuoted(quoted, 0, parts.size());
    Get();  // "."
  }
  const std::size_t before = parts.size();
  if (identifier(parts))
    MarkQuoted(quoted, before, parts.size());
  auto name = Make<TSQLQualifiedName>(provider);
  name->SetWrittenParts(std::move(parts), std::move(quoted));
  auto type = Make<TSQLTypeUser>(provider);
  type->SetName(std::move(name));
  return type;
}

std::unique_ptr<TSQLType> SQL92Parser::SQLTypeBuiltIn() {
  auto type = Make<TSQLTypeBuiltIn>(provider);
  const std::int32_t decision = Decision();
  if (decision == 0) {
    SQLType1word(type->Words);
    return type;
  }
  const TypeForm& form = kTypeForms[decision - 1];
  type->AddName(std::string(Get().val));
  if (form.words[1] != 0)
    type->AddName(std::string(Get().val));
  type->SizeIndex = static_cast<int>(type->Words.size()) - 1;
  Get();  // "("
  type->HasSize = true;
  type->Size = SizeValue(Get().val);
  if (form.scale) {
    Get();  // ","
    type->HasScale = true;
    type->Scale = SizeValue(Get().val);
  }
  Get();  // ")"
  if (form.zone != 0) {
    type->AddName(std::string(Get().val));  // "with" or "without"
    type->AddName(std::string(Get().val));  // "time"
    type->AddName(std::string(Get().val));  // "zone"
  }
  return type;
}

void SQL92Parser::SQLType1word(std::vector<std::string>& words) {
  const std::int32_t decision = Decision();
  words.emplace_back(Get().val);
  if (decision == kDoublePrecisionDecision)
    words.emplace_back(Get().val);
}

}  // namespace qorvex
