// The direct building of the SQL-92 grammar: for a text whose first reading the tokens
// ahead settle, the tree is made in the walk that reads it, with no way recorded and
// replayed. Each operation decides as its twin in the direct reading does
// (sql92_direct.cpp) and makes the nodes its twin in the building pass makes
// (sql92_build.cpp), so the tree is the one the two passes give. Where the direct
// reading gives up, the building gives up too: the nodes made so far are freed and the
// parse runs its two passes.
#include <string>
#include <vector>

#include "parser/sql92_direct.h"
#include "parser/sql92_grammar.h"
#include "parser/sql92_nodes.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/types.h"
#include "qorvex/parser/sql92_parser.h"

namespace qorvex {

using namespace sql92first;
using namespace sql92grammar;
using namespace sql92direct;
using namespace sql92nodes;

namespace {
using ExpressionPtr = std::unique_ptr<TSQLExpressionItem>;
}  // namespace

class SQL92Parser::DirectBuilder {
 public:
  explicit DirectBuilder(SQL92Parser& parser)
      : p_(parser),
        provider_(parser.provider),
        kinds_(parser.PaddedKinds() + 1),
        tokens_(parser.TokenCount() <= TqxBaseScanner::kChunkSize ? parser.scanner->FirstTokens()
                                                                  : nullptr) {}

  bool AtEnd() const { return Next() == tkEof; }

  // ---- statement level
  std::unique_ptr<TSQLSelectStatement> SelectStatement() {
    auto statement = New<TSQLSelectStatement>();
    StatementBody(*statement);
    return statement;
  }

 private:
  // ---- tokens and nodes
  std::int32_t Next() const { return kinds_[at_]; }
  std::int32_t Ahead(std::int32_t n) const { return kinds_[at_ + n]; }
  // The last token consumed.
  const TqxToken& Token(std::int32_t index) const {
    return tokens_ != nullptr ? tokens_[index] : p_.scanner->GetToken(index);
  }
  const TqxToken& Current() const { return Token(at_); }
  const TqxToken& Take() { return Token(++at_); }
  void Expect(std::int32_t kind) {
    if (Next() != kind)
      throw DirectMiss{};
    ++at_;
  }
  // Consumes a token of `kinds`; its place there.
  std::int32_t TokenOf(const std::int32_t* kinds, std::int32_t count) {
    const std::int32_t kind = Next();
    for (std::int32_t i = 0; i < count; ++i) {
      if (kinds[i] == kind) {
        ++at_;
        return i;
      }
    }
    throw DirectMiss{};
  }
  bool OptToken(std::int32_t kind) {
    if (Next() != kind)
      return false;
    ++at_;
    return true;
  }
  // The kind of the token after the run of name parts and points that follows.
  std::int32_t AfterNameRun() const {
    std::int32_t at = at_;
    while (kQualifier.Has(kinds_[at]))
      ++at;
    return kinds_[at];
  }
  void Enter() {
    if (++depth_ > kDirectNesting)
      throw DirectMiss{};
  }
  void Leave() { --depth_; }
  template <class T, class... A>
  std::unique_ptr<T> New(A&&... args) {
    return Make<T>(provider_, std::forward<A>(args)...);
  }
  std::unique_ptr<TSQLOperator> OperatorTaken() {
    return New<TSQLOperator>(std::string(Current().val));
  }

  // ---- statement level
  std::unique_ptr<TSQLSubSelectStatement> SubSelectStatement() {
    auto statement = New<TSQLSubSelectStatement>();
    StatementBody(*statement);
    return statement;
  }
  void StatementBody(TSQLSubSelectStatement& statement) {
    QueryExpression(statement);
    if (Next() == tkKwOrder)
      statement.SetOrderBy(OrderByClause());
  }
  void QueryExpression(TSQLSubQueryExpressions& list) {
    Enter();
    list.Add(SubQueryExpression());
    while (kSetOperator.Has(Next())) {
      TokenOf(kSetOperatorKinds, 3);
      std::string text(Current().val);  // union, except or intersect: the word is kept
      for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
      const bool all = OptToken(tkKwAll);
      auto operand = SubQueryExpression();
      operand->UnionOperator = std::move(text);
      operand->All = all;
      list.Add(std::move(operand));
    }
    Leave();
  }
  std::unique_ptr<TSQLSubQueryExpression> SubQueryExpression() {
    const std::int32_t kind = Next();
    if (kind == tkKwSelect)
      return SelectBlock();
    if (kind != tkLParen)
      throw DirectMiss{};
    ++at_;
    auto group = New<TSQLSubQueryExpressions>();
    QueryExpression(*group);
    Expect(tkRParen);
    return group;
  }
  std::unique_ptr<TSQLSubQuerySelectExpression> SelectBlock();
  std::unique_ptr<TSQLSelectItems> SelectList() {
    auto items = New<TSQLSelectItems>();
    if (kSelectItem.Has(Next())) {
      items->Add(SelectItem());
      while (OptToken(tkComma))
        items->Add(SelectItem());
    }
    return items;
  }
  std::unique_ptr<TSQLSelectItem> SelectItem();
  // [ [ "as" ] alias1 ] of a select item or a FROM source.
  template <class Node>
  void OptAlias(Node& node) {
    if (!kAsAlias.Has(Next()))
      return;
    const bool withAs = OptToken(tkKwAs);
    node.SetAlias(MakeAlias(withAs));
  }
  std::unique_ptr<TSQLAlias> MakeAlias(bool withAs) {
    bool quoted = false;
    std::string name = Alias(quoted);
    if (withAs)
      return New<TSQLAliasObjectAsAlias>(std::move(name), quoted);
    return New<TSQLAliasObjectAlias>(std::move(name), quoted);
  }
  std::string Alias(bool& quoted);
  std::unique_ptr<TSQLOrderByClause> OrderByClause() {
    Expect(tkKwOrder);
    Expect(tkKwBy);
    auto clause = New<TSQLOrderByClause>();
    do {
      auto item = New<TSQLOrderByItem>();
      item->SetExpression(Expression());
      if (kOrderDirection.Has(Next()))
        item->Descending = TokenOf(kOrderDirectionKinds, 2) == 1;
      clause->Add(std::move(item));
    } while (OptToken(tkComma));
    return clause;
  }
  std::unique_ptr<TSQLGroupByList> GroupByList() {
    Expect(tkKwGroup);
    Expect(tkKwBy);
    auto list = New<TSQLGroupByList>();
    do
      list->Add(Expression());
    while (OptToken(tkComma));
    return list;
  }
  void TableSource(TSQLFromItem& item) {
    Enter();
    item.Add(SubTableSource());
    while (kJoinedTable.Has(Next()))
      item.Add(JoinedTable());
    Leave();
  }
  std::unique_ptr<TSQLFromSource> SubTableSource();
  std::unique_ptr<TSQLFromSource> JoinedTable();
  std::unique_ptr<TSQLFunction> SQLfunction() {
    auto function = New<TSQLFunction>();
    NameFunction(*function, *ObjectName());
    auto params = New<TSQLFunctionParams>();
    Expect(tkLParen);
    if (kExpression.Has(Next())) {
      do {
        auto param = New<TSQLFunctionParamExpression>();
        param->SetExpression(Expression());
        params->Add(std::move(param));
      } while (OptToken(tkComma));
    }
    Expect(tkRParen);
    function->SetParams(std::move(params));
    return function;
  }
  // A name chain part.part...part, each token one part.
  void Name(int levels, TSQLQualifiedName& name);
  std::unique_ptr<TSQLDatabaseObject> ObjectName() {
    auto object = New<TSQLDatabaseObject>();
    Name(kObjectQualifiers, *object);
    return object;
  }

  // ---- expressions
  std::unique_ptr<TSQLExpressionsList> ExpressionsList() {
    auto list = New<TSQLExpressionsList>();
    do
      list->Add(Expression());
    while (OptToken(tkComma));
    return list;
  }
  ExpressionPtr ExpressionLogical() {
    Enter();
    auto first = ExpressionAnd();
    if (Next() == tkKwOr) {
      auto collection = New<TSQLExpressionOr>();
      collection->Add(std::move(first));
      while (OptToken(tkKwOr))
        collection->Add(ExpressionAnd());
      first = std::move(collection);
    }
    Leave();
    return first;
  }
  ExpressionPtr ExpressionAnd() {
    auto first = ExpressionNot();
    if (Next() != tkKwAnd)
      return first;
    auto collection = New<TSQLExpressionAnd>();
    collection->Add(std::move(first));
    while (OptToken(tkKwAnd))
      collection->Add(ExpressionNot());
    return collection;
  }
  ExpressionPtr ExpressionNot() {
    const std::int32_t kind = Next();
    if (kind == tkKwNot) {
      Enter();
      ++at_;
      auto node = New<TSQLExpressionNot>();
      node->SetInner(ExpressionNot());
      Leave();
      return node;
    }
    if (!kExpressionLogicalTerm.Has(kind))
      throw DirectMiss{};
    return ExpressionLogicalTerm();
  }
  ExpressionPtr ExpressionLogicalTerm();
  ExpressionPtr Predicate(ExpressionPtr left);
  // The rest of an operator chain after its first operand: each further operand goes one
  // level down for good (checked against the bound) and is read one level further down
  // still, as in the reading.
  template <class Operand>
  ExpressionPtr ChainRest(ExpressionPtr left, const TqxTokenSet& operators,
                          const std::int32_t* kinds, std::int32_t count, Operand operand) {
    const std::int32_t depth = depth_;
    while (operators.Has(Next())) {
      Enter();
      ++depth_;
      TokenOf(kinds, count);
      auto node = New<TSQLExpressionOperatorBinary>();
      node->SetOperator(OperatorTaken());
      node->SetInner(std::move(left));
      node->SetRight(operand());
      --depth_;
      left = std::move(node);
    }
    depth_ = depth;
    return left;
  }
  // expression: expressionFactor { ( "+" | "-" ) expressionFactor }, with the first factor's
  // first operand read here, so that a lone operand costs no further calls.
  ExpressionPtr Expression() {
    Enter();
    ExpressionPtr left = kUnaryOperator.Has(Next()) ? ExpressionUnary() : ExpressionTerm();
    if (kFactorOperator.Has(Next()))
      left = ChainRest(std::move(left), kFactorOperator, kFactorKinds, 3,
                       [this] { return ExpressionUnary(); });
    if (kAddOperator.Has(Next()))
      left = ChainRest(std::move(left), kAddOperator, kAddKinds, 2,
                       [this] { return ExpressionFactor(); });
    Leave();
    return left;
  }
  // expressionFactor: expressionUnary { ( "*" | "/" | "%" ) expressionUnary }
  ExpressionPtr ExpressionFactor() {
    return ChainRest(ExpressionUnary(), kFactorOperator, kFactorKinds, 3,
                     [this] { return ExpressionUnary(); });
  }
  ExpressionPtr ExpressionUnary() {
    if (!kUnaryOperator.Has(Next())) [[likely]]
      return ExpressionTerm();
    Enter();
    TokenOf(kUnaryKinds, 3);
    auto node = New<TSQLExpressionOperatorPrefix>();
    node->SetOperator(OperatorTaken());
    node->SetInner(ExpressionUnary());
    Leave();
    return node;
  }
  ExpressionPtr ExpressionTerm();
  ExpressionPtr AggregateFunction();
  ExpressionPtr CaseFunction();
  ExpressionPtr CastFunction() {
    Expect(tkKwCast);
    Expect(tkLParen);
    auto node = New<TSQLExpressionCast>();
    node->SetInner(Expression());
    Expect(tkKwAs);
    node->SetType(SQLType());
    Expect(tkRParen);
    return node;
  }
  std::unique_ptr<TSQLType> SQLType();
  std::unique_ptr<TSQLType> SQLTypeBuiltIn();

  SQL92Parser& p_;
  TastSyntaxProvider* provider_;
  const std::int32_t* kinds_;  // kinds_[i] is the kind of the token after index i
  // The tokens as one array when they fit the scanner's first chunk.
  const TqxToken* tokens_;
  std::int32_t at_ = -1;  // the last token consumed
  std::int32_t depth_ = 0;
  // Index of the matching ")" for each "(", worked out when first needed.
  std::vector<std::int32_t> match_;
};

// A SELECT block: selectClause [ fromClause ] [ "where" expressionLogical ]
//                   [ groupByList ] [ "having" expressionLogical ]
std::unique_ptr<TSQLSubQuerySelectExpression> SQL92Parser::DirectBuilder::SelectBlock() {
  auto query = New<TSQLSubQuerySelectExpression>();
  Expect(tkKwSelect);
  if (!kSelectMode.Has(Next()))
    query->SetSelectMode(New<TSQLSubQuerySelectModeDefault>());
  else if (TokenOf(kSelectModeKinds, 2) == 0)
    query->SetSelectMode(New<TSQLSubQuerySelectModeAll>());
  else
    query->SetSelectMode(New<TSQLSubQuerySelectModeDistinct>());
  query->SetSelectItems(SelectList());
  if (OptToken(tkKwFrom)) {
    auto clause = New<TSQLFromClause>();
    if (kTableSource.Has(Next()))
      TableSource(*clause);
    query->SetFromClause(std::move(clause));
  }
  if (OptToken(tkKwWhere))
    query->SetWhere(ExpressionLogical());
  if (Next() == tkKwGroup)
    query->SetGroupBy(GroupByList());
  if (OptToken(tkKwHaving))
    query->SetHaving(ExpressionLogical());
  return query;
}

// selectItem: "*" | alias2 "=" expression | dbObject ".*" | expression [ [ "as" ] alias1 ]
std::unique_ptr<TSQLSelectItem> SQL92Parser::DirectBuilder::SelectItem() {
  const std::int32_t kind = Next();
  if (kind == tkStar) {
    ++at_;
    return New<TSQLSelectItemAllColumns>();
  }
  if (kSelectItemAliasEquals.Has(kind) && Ahead(1) == tkEqual) {
    auto item = New<TSQLSelectItemExpression>();
    bool quoted = false;
    std::string alias = Alias(quoted);
    Expect(tkEqual);
    item->SetExpression(Expression());
    item->SetAlias(New<TSQLAliasAliasEqualsObject>(std::move(alias), quoted));
    return item;
  }
  if (kSelectItemAllColumns.Has(kind) && AfterNameRun() == tkDotStar) {
    auto item = New<TSQLSelectItemAllTableColumns>();
    item->SetQualifier(ObjectName());
    Expect(tkDotStar);
    return item;
  }
  if (!kSelectItemExpression.Has(kind))
    throw DirectMiss{};
  auto item = New<TSQLSelectItemExpression>();
  item->SetExpression(Expression());
  OptAlias(*item);
  return item;
}

// alias1, alias2: identifier | string literal | keywordAsIdentifier. A string literal
// names the alias as exactly as a quoted identifier does, so both count as quoted.
std::string SQL92Parser::DirectBuilder::Alias(bool& quoted) {
  const std::int32_t kind = Next();
  if (kIdentifier.Has(kind)) {
    const TqxToken& token = Take();
    quoted = token.kind == tkQuotedIdentifier;
    return quoted ? p_.NameText(token) : std::string(token.val);
  }
  if (kind == tkString) {
    quoted = true;
    return StringLiteralText(Take().val);
  }
  if (!kKeywordAsIdentifier.Has(kind))
    throw DirectMiss{};
  quoted = false;
  return std::string(Take().val);
}

// subTableSource: "(" ( tableSource ")" | subSelectStatement ")" [ "as" ] alias1
//                       [ "(" alias1 { "," alias1 } ")" ] )
//               | SQLfunction [ [ "as" ] alias1 ] | dbObject [ [ "as" ] alias1 ]
std::unique_ptr<TSQLFromSource> SQL92Parser::DirectBuilder::SubTableSource() {
  const std::int32_t kind = Next();
  if (kind == tkLParen) {
    ++at_;
    const std::int32_t inner = Next();
    if (kTableSource.Has(inner)) {
      auto group = New<TSQLFromItem>();
      TableSource(*group);
      Expect(tkRParen);
      return group;
    }
    if (!kSubSelectStatement.Has(inner))
      throw DirectMiss{};
    auto query = New<TSQLFromQuery>();
    query->SetSubQuery(SubSelectStatement());
    Expect(tkRParen);
    const bool withAs = OptToken(tkKwAs);
    query->SetAlias(MakeAlias(withAs));
    if (OptToken(tkLParen)) {
      do {
        bool quoted = false;
        query->ColumnAliases.push_back(Alias(quoted));
        if (quoted)
          MarkQuoted(query->ColumnAliasesQuoted, query->ColumnAliases.size() - 1,
                     query->ColumnAliases.size());
      } while (OptToken(tkComma));
      Expect(tkRParen);
    }
    return query;
  }
  if (!kDbObject.Has(kind))
    throw DirectMiss{};
  if (AfterNameRun() == tkLParen) {
    auto source = New<TSQLFromFunction>();
    source->SetFunction(SQLfunction());
    OptAlias(*source);
    return source;
  }
  auto source = New<TSQLFromObject>();
  source->SetDatabaseObject(ObjectName());
  if (kCannotFollowName.Has(Next()))
    throw DirectMiss{};
  OptAlias(*source);
  return source;
}

// joinedTable: "," subTableSource | "cross" "join" subTableSource
//            | [ "inner" | ( "left" | "right" | "full" ) [ "outer" ] ] "join"
//              ( subTableSource | tableSourceInner ) "on" expressionLogical
// A join whose right side is itself a join is left to the two passes, as in the reading.
std::unique_ptr<TSQLFromSource> SQL92Parser::DirectBuilder::JoinedTable() {
  const std::int32_t kind = Next();
  if (kind == tkComma) {
    ++at_;
    return SubTableSource();
  }
  if (kind == tkKwCross) {
    ++at_;
    Expect(tkKwJoin);
    auto source = SubTableSource();
    source->SetJoinKind(New<TSQLJoinKindCross>());
    return source;
  }
  std::unique_ptr<TSQLJoinKind> joinKind;
  if (!kJoinKindWord.Has(kind)) {
    joinKind = New<TSQLJoinKindInner>();
  } else if (kind == tkKwInner) {
    ++at_;
    joinKind = New<TSQLJoinKindInner>();
  } else {
    const std::int32_t side = TokenOf(kOuterJoinKinds, 3);
    std::unique_ptr<TSQLJoinKindOuter> outer;
    if (side == 0)
      outer = New<TSQLJoinKindLeft>();
    else if (side == 1)
      outer = New<TSQLJoinKindRight>();
    else
      outer = New<TSQLJoinKindFull>();
    outer->Outer = OptToken(tkKwOuter);
    joinKind = std::move(outer);
  }
  Expect(tkKwJoin);
  if (!kSubTableSource.Has(Next()))
    throw DirectMiss{};
  auto source = SubTableSource();
  Expect(tkKwOn);
  source->SetJoinKind(std::move(joinKind));
  source->SetJoinCondition(ExpressionLogical());
  return source;
}

void SQL92Parser::DirectBuilder::Name(int levels, TSQLQualifiedName& name) {
  const std::int32_t first = at_ + 1;
  const std::int32_t last = p_.NameChainEnd(first);
  if (last < 0 || (last - first) / 2 > levels)
    throw DirectMiss{};
  const TqxToken* tokens[kColumnQualifiers + 1];
  int count = 0;
  bool quoted = false;
  for (std::int32_t at = first; at <= last; at += 2) {
    const TqxToken& token = Token(at);
    quoted |= token.kind == tkQuotedIdentifier;
    tokens[count++] = &token;
  }
  at_ = last;
  p_.StoreName(tokens, count, quoted, name);
}

// ---- logical expressions ----------------------------------------------------------------

// expressionLogicalTerm: "(" expressionLogical ")" | [ expression ] predicate
//                      | "exists" "(" subSelectStatement ")"
ExpressionPtr SQL92Parser::DirectBuilder::ExpressionLogicalTerm() {
  const std::int32_t kind = Next();
  if (kind == tkLParen && p_.BracketsHoldCondition(at_ + 1, match_)) {
    ++at_;
    auto node = New<TSQLExpressionBrackets>();
    node->SetInner(ExpressionLogical());
    Expect(tkRParen);
    return node;
  }
  if (kLogicalPredicate.Has(kind)) {
    ExpressionPtr left;
    if (kExpression.Has(kind))
      left = Expression();
    return Predicate(std::move(left));
  }
  if (kind != tkKwExists)
    throw DirectMiss{};
  ++at_;
  Expect(tkLParen);
  auto node = New<TSQLExpressionExists>();
  node->SetSubQuery(SubSelectStatement());
  Expect(tkRParen);
  return node;
}

// predicate: comparisonOperator ( expression | expressionCompWithSet )
//          | "is" [ "not" ] "null"
//          | [ "not" ] "like" expression [ "escape" expression ]
//          | [ "not" ] "between" expression "and" expression
//          | [ "not" ] "in" "(" ( subSelectStatement | expressionsList ) ")"
ExpressionPtr SQL92Parser::DirectBuilder::Predicate(ExpressionPtr left) {
  const std::int32_t kind = Next();
  if (kComparisonOperator.Has(kind)) {
    TokenOf(kComparisonKinds, 9);
    auto op = OperatorTaken();
    const std::int32_t right = Next();
    if (kExpression.Has(right)) {
      auto node = New<TSQLExpressionOperatorBinary>();
      node->SetInner(std::move(left));
      node->SetOperator(std::move(op));
      node->SetRight(Expression());
      return node;
    }
    if (!kExpressionCompWithSet.Has(right))
      throw DirectMiss{};
    // The comparison operator stays with the left operand (a postfix node "a>"), which
    // the quantifier and the sub-query follow.
    const std::int32_t quantifier = TokenOf(kSetQuantifierKinds, 3);
    Expect(tkLParen);
    auto postfix = New<TSQLExpressionOperatorPostfix>();
    postfix->SetInner(std::move(left));
    postfix->SetOperator(CloneNode(*op));
    auto node = New<TSQLExpressionCompWithSubQuery>();
    node->SetInner(std::move(postfix));
    node->SetOperator(std::move(op));
    node->Quantifier = static_cast<std::uint8_t>(quantifier);
    node->SetSubQuery(SubSelectStatement());
    Expect(tkRParen);
    return node;
  }
  if (kind == tkKwIs) {
    ++at_;
    auto node = New<TSQLExpressionIsNull>();
    node->SetInner(std::move(left));
    node->Not = OptToken(tkKwNot);
    Expect(tkKwNull);
    return node;
  }
  const std::int32_t word = kind == tkKwNot ? Ahead(1) : kind;
  if (word == tkKwLike) {
    auto node = New<TSQLExpressionLikeTemplate>();
    node->SetInner(std::move(left));
    node->Not = OptToken(tkKwNot);
    node->Keyword = Take().val;
    node->SetPattern(Expression());
    if (OptToken(tkKwEscape))
      node->SetEscape(Expression());
    return node;
  }
  if (word == tkKwBetween) {
    auto node = New<TSQLExpressionBetween>();
    node->SetInner(std::move(left));
    node->Not = OptToken(tkKwNot);
    ++at_;
    node->SetLow(Expression());
    Expect(tkKwAnd);
    node->SetHigh(Expression());
    return node;
  }
  if (word != tkKwIn)
    throw DirectMiss{};
  const bool isNot = OptToken(tkKwNot);
  ++at_;
  Expect(tkLParen);
  const std::int32_t inner = Next();
  ExpressionPtr result;
  if (kSubSelectStatement.Has(inner)) {
    auto node = New<TSQLExpressionInSubQuery>();
    node->SetInner(std::move(left));
    node->Not = isNot;
    node->SetSubQuery(SubSelectStatement());
    result = std::move(node);
  } else if (kExpressionsList.Has(inner)) {
    auto node = New<TSQLExpressionInSet>();
    node->SetInner(std::move(left));
    node->Not = isNot;
    node->SetList(ExpressionsList());
    result = std::move(node);
  } else {
    throw DirectMiss{};
  }
  Expect(tkRParen);
  return result;
}

// ---- value expressions -------------------------------------------------------------------

// expressionTerm: "(" expression ")" | constant | dbColumn | SQLAggregateFunction
//               | SQLfunction | "(" subSelectStatement ")" | caseFunction
//               | castFunction | parameterlessFunction
ExpressionPtr SQL92Parser::DirectBuilder::ExpressionTerm() {
  const std::int32_t kind = Next();
  if (kind == tkLParen) {
    const std::int32_t inner = Ahead(1);
    if (kExpression.Has(inner)) {
      ++at_;
      auto node = New<TSQLExpressionBrackets>();
      node->SetInner(Expression());
      Expect(tkRParen);
      return node;
    }
    if (!kSubSelectStatement.Has(inner))
      throw DirectMiss{};
    ++at_;
    auto node = New<TSQLExpressionSelect>();
    node->SetSubQuery(SubSelectStatement());
    Expect(tkRParen);
    return node;
  }
  if (kConstant.Has(kind)) {
    TokenOf(kConstantKinds, 6);
    return New<TSQLExpressionConstant>(std::string(Current().val));
  }
  if (kDbColumn.Has(kind)) {
    if (AfterNameRun() == tkLParen) {
      auto node = New<TSQLExpressionFunction>();
      node->SetFunction(SQLfunction());
      return node;
    }
    auto column = New<TSQLObjectColumn>();
    Name(kColumnQualifiers, *column);
    if (kCannotFollowColumn.Has(Next()))
      throw DirectMiss{};
    auto node = New<TSQLExpressionColumn>();
    node->SetColumn(std::move(column));
    return node;
  }
  if (kAggregate.Has(kind))
    return AggregateFunction();
  if (kind == tkKwCase)
    return CaseFunction();
  if (kind == tkKwCast)
    return CastFunction();
  if (!kParameterlessFunction.Has(kind))
    throw DirectMiss{};
  auto node = New<TSQLExpressionParameterlessFunction>();
  node->Name = Take().val;
  return node;
}

// SQLAggregateFunction:
//     ( "avg" | "max" | "min" | "sum" ) "(" [ "all" | "distinct" ] expression ")"
//   | "count" "(" ( "*" | [ "all" | "distinct" ] expression ) ")"
ExpressionPtr SQL92Parser::DirectBuilder::AggregateFunction() {
  // [ "all" | "distinct" ]: 1 for DISTINCT, 2 for ALL, 0 for neither.
  auto mode = [&]() -> std::uint8_t {
    if (!kSelectMode.Has(Next()))
      return 0;
    return TokenOf(kSelectModeKinds, 2) == 1 ? 1 : 2;
  };
  if (Next() != tkKwCount) {
    TokenOf(kOneParamAggregateKinds, 4);
    auto node = New<TSQLExpressionAggregate1ParamWPrefix>();
    node->Name = Current().val;
    Expect(tkLParen);
    node->Quantifier = mode();
    node->SetArgument(Expression());
    Expect(tkRParen);
    return node;
  }
  std::string name(Take().val);  // "count"
  Expect(tkLParen);
  const std::int32_t kind = Next();
  ExpressionPtr result;
  if (kind == tkStar) {
    ++at_;
    auto node = New<TSQLExpressionAggregate>();
    node->Name = std::move(name);
    result = std::move(node);
  } else if (kSelectMode.Has(kind) || kExpression.Has(kind)) {
    auto node = New<TSQLExpressionAggregate1ParamWPrefix>();
    node->Name = std::move(name);
    node->Quantifier = mode();
    node->SetArgument(Expression());
    result = std::move(node);
  } else {
    throw DirectMiss{};
  }
  Expect(tkRParen);
  return result;
}

// caseFunction: "case" ( expression "when" expression "then" expression { ... }
//                      | "when" expressionLogical "then" expression { ... } )
//               [ "else" expression ] "end"
ExpressionPtr SQL92Parser::DirectBuilder::CaseFunction() {
  ++at_;
  auto node = New<TSQLExpressionCaseFunction>();
  const bool simple = kExpression.Has(Next());
  if (simple)
    node->SetOperand(Expression());
  else if (Next() != tkKwWhen)
    throw DirectMiss{};
  do {
    Expect(tkKwWhen);
    auto entry = New<TSQLCaseFunctionItem>();
    entry->SetWhen(simple ? Expression() : ExpressionLogical());
    Expect(tkKwThen);
    entry->SetThen(Expression());
    node->AddItem(std::move(entry));
  } while (Next() == tkKwWhen);
  if (OptToken(tkKwElse))
    node->SetElse(Expression());
  Expect(tkKwEnd);
  return node;
}

// SQLType: SQLTypeUser | built-in type; SQLTypeUser: [ identifier "." ] identifier.
std::unique_ptr<TSQLType> SQL92Parser::DirectBuilder::SQLType() {
  const std::int32_t kind = Next();
  if (!kSQLTypeUser.Has(kind)) {
    if (!kSQLTypeBuiltIn.Has(kind))
      throw DirectMiss{};
    return SQLTypeBuiltIn();
  }
  const std::int32_t start = at_;
  TastVector<std::string> parts;
  std::vector<bool> quoted;
  auto identifier = [&] {
    TokenOf(kIdentifierKinds, 2);
    const TqxToken& token = Current();
    const std::size_t before = parts.size();
    p_.NameParts(token, parts);
    if (token.kind == tkQuotedIdentifier)
      MarkQuoted(quoted, before, parts.size());
  };
  if (Ahead(1) == tkDot) {
    identifier();
    ++at_;  // "."
  }
  identifier();
  if (p_.NameParts(start, at_) > 2)
    throw DirectMiss{};
  auto name = New<TSQLQualifiedName>();
  name->SetWrittenParts(std::move(parts), std::move(quoted));
  auto type = New<TSQLTypeUser>();
  type->SetName(std::move(name));
  return type;
}

// A one-word type or the first form with arguments whose tokens are all there and
// followed by ")".
std::unique_ptr<TSQLType> SQL92Parser::DirectBuilder::SQLTypeBuiltIn() {
  auto type = New<TSQLTypeBuiltIn>();
  const std::int32_t kind = Next();
  if (kSQLType1word.Has(kind)) {
    const bool twoWords = kind == tkKwDouble;
    if ((!twoWords || Ahead(1) == tkKwPrecision) && Ahead(twoWords ? 2 : 1) == tkRParen) {
      TokenOf(kType1WordKinds, kType1WordCount);
      type->Words.emplace_back(Current().val);
      if (twoWords)
        type->Words.emplace_back(Take().val);
      return type;
    }
  }
  std::int32_t end = 0;
  const std::int32_t index = p_.TypeFormAfter(at_, end);
  if (index < 0)
    throw DirectMiss{};
  const TypeForm& form = kTypeForms[index];
  type->AddName(std::string(Take().val));
  if (form.words[1] != 0)
    type->AddName(std::string(Take().val));
  type->SizeIndex = static_cast<int>(type->Words.size()) - 1;
  Expect(tkLParen);
  type->HasSize = true;
  type->Size = SizeValue(Take().val);
  if (form.scale) {
    Expect(tkComma);
    type->HasScale = true;
    type->Scale = SizeValue(Take().val);
  }
  Expect(tkRParen);
  if (form.zone != 0) {
    type->AddName(std::string(Take().val));  // "with" or "without"
    type->AddName(std::string(Take().val));  // "time"
    type->AddName(std::string(Take().val));  // "zone"
  }
  return type;
}

// ---- the entry ---------------------------------------------------------------------------

std::unique_ptr<TSQLSelectStatement> SQL92Parser::ParseSelectDirect() {
  if (plain_)
    return nullptr;
  DirectBuilder builder(*this);
  try {
    auto statement = builder.SelectStatement();
    if (builder.AtEnd())
      return statement;
  } catch (const DirectMiss&) {
  }
  // The reading would give up at the same place: the way calculation starts without it.
  directMissed_ = true;
  return nullptr;
}

}  // namespace qorvex
