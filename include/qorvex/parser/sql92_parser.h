#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qorvex/parser/base_parser.h"
#include "qorvex/parser/token_set.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TSQLAlias;
class TSQLCaseFunctionItem;
class TSQLExpressionsList;
class TSQLFromClause;
class TSQLFromItem;
class TSQLFromSource;
class TSQLFunction;
class TSQLGroupByList;
class TSQLJoinKind;
class TSQLOperator;
class TSQLOrderByClause;
class TSQLOrderByItem;
class TSQLQualifiedName;
class TSQLObjectColumn;
class TSQLQualifiedName;
class TSQLSelectItems;
class TSQLSubQueryExpression;
class TSQLSubQueryExpressions;
class TSQLSubQuerySelectExpression;
class TSQLSubQuerySelectMode;
class TSQLSubSelectStatement;
class TSQLType;

// Raised inside the way calculation when a text nests deeper than the parser follows;
// the parse entry turns it into its syntax error at `tokenIndex`.
struct QORVEX_SQL_EXPORT TqxNestingLimit {
  std::int32_t tokenIndex;
};

// The parser of the SQL-92 dialect. Every production has a way-calculation operation
// (suffix WayCalc) that advances a list of ways over it, recording one way point per
// decision, and a building operation that replays those decisions in the same order
// and creates the tree nodes through the provider.
//
// Order of readings: an option taken comes before it skipped, an earlier alternative
// before a later one, fewer iterations of a repetition before more; the parse entry
// takes the first complete way. The way calculation keeps that first way while
// dropping ways that can no longer come first: two ways of one list that stand at the
// same token have the same future, so the later one is dropped; and the reading of an
// expression, a condition, a query expression or a FROM list that has been worked out
// at a token is reused there instead of being worked out again.
class QORVEX_SQL_EXPORT SQL92Parser : public TqxBaseParser {
  QX_CLASS(TqxParserClass)

 public:
  // How deep constructs may nest (brackets, sub-queries, NOT and sign chains, operator
  // chains). A text nesting deeper is rejected at the token where the bound is reached.
  static constexpr std::int32_t kMaxNesting = 600;

  SQL92Parser(TqxBaseScanner* scanner, TastSyntaxProvider* provider);
  ~SQL92Parser() override;

  void ParseSelectWayCalc(TqxWayList& ways) override;
  std::unique_ptr<TSQLSelectStatement> ParseSelect() override;
  void ParseObjectNameWayCalc(TqxWayList& ways) override;
  std::unique_ptr<TSQLDatabaseObject> ParseObjectName() override;
  void ParseExpressionWayCalc(TqxWayList& ways) override;
  std::unique_ptr<TSQLExpressionItem> ParseExpression() override;
  void ParseSelectItemWayCalc(TqxWayList& ways) override;
  std::unique_ptr<TSQLSelectItem> ParseSelectItem() override;
  void ParseLogicalExpressionWayCalc(TqxWayList& ways) override;
  std::unique_ptr<TSQLExpressionItem> ParseLogicalExpression() override;
  std::unique_ptr<TSQLSelectStatement> ParseSelectDirect() override;

  // The statement followed by an optional ";" (no parse entry uses it).
  void SQL92WayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSelectStatement> SQL92();

  // Without the reuse of worked-out readings and the dropping of ways standing at the
  // same token: the plain way calculation, for checking that both choose the same way.
  void SetPlainWayCalc(bool plain) { plain_ = plain; }

 protected:
  // ---- statement level
  void selectStatementWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSelectStatement> selectStatement();
  void subSelectStatementWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSubSelectStatement> subSelectStatement();
  void statementBody(TSQLSubSelectStatement& statement);
  void queryExpressionWayCalc(TqxWayList& ways);
  void queryExpression(TSQLSubQueryExpressions& list);
  void subQueryExpressionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSubQueryExpression> subQueryExpression();
  void selectBlockWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSubQuerySelectExpression> selectBlock();
  void selectClauseWayCalc(TqxWayList& ways);
  void selectClause(TSQLSubQuerySelectExpression& query);
  void selectListWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSelectItems> selectList();
  void selectItemWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLSelectItem> selectItem();
  void alias1WayCalc(TqxWayList& ways);
  // The alias name; `quoted` tells whether it was a quoted identifier or a string.
  std::string alias1(bool& quoted);
  void alias2WayCalc(TqxWayList& ways);
  std::string alias2(bool& quoted);
  void orderByClauseWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLOrderByClause> orderByClause();
  void orderByItemWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLOrderByItem> orderByItem();
  void groupByListWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLGroupByList> groupByList();
  void fromClauseWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLFromClause> fromClause();
  void tableSourceWayCalc(TqxWayList& ways);
  void tableSource(TSQLFromItem& item);
  void subTableSourceWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLFromSource> subTableSource();
  void joinedTableWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLFromSource> joinedTable();
  void tableSourceInnerWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLFromItem> tableSourceInner();
  void SQLfunctionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLFunction> SQLfunction();
  void dbObjectWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLDatabaseObject> dbObject();
  void identifierWayCalc(TqxWayList& ways);
  // Appends the name parts a name token stands for (one, or several for [a][b]); true
  // when the token was quoted.
  bool identifier(TastVector<std::string>& parts);

  // ---- expressions
  void expressionLogicalWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionLogical();
  void expressionAndWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionAnd();
  void expressionNotWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionNot();
  void expressionLogicalTermWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionLogicalTerm();
  void predicateWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> predicate(std::unique_ptr<TSQLExpressionItem> left);
  void comparisonOperatorWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLOperator> comparisonOperator();
  void expressionCompWithSetWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionCompWithSet(
      std::unique_ptr<TSQLExpressionItem> left, std::unique_ptr<TSQLOperator> op);
  void expressionsListWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionsList> expressionsList();
  void expressionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expression();
  void expressionAddWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionAdd();
  void expressionFactorWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionFactor();
  void expressionUnaryWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionUnary();
  void expressionTermWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> expressionTerm();
  void constantWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> constant();
  void dbColumnWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLObjectColumn> dbColumn();
  void SQLAggregateFunctionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> SQLAggregateFunction();
  void caseFunctionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> caseFunction();
  void castFunctionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> castFunction();
  void parameterlessFunctionWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLExpressionItem> parameterlessFunction();
  void SQLTypeWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLType> SQLType();
  void SQLTypeUserWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLType> SQLTypeUser();
  void SQLTypeBuiltInWayCalc(TqxWayList& ways);
  std::unique_ptr<TSQLType> SQLTypeBuiltIn();
  void SQLType1wordWayCalc(TqxWayList& ways);
  void SQLType1word(std::vector<std::string>& words);
  void keywordAsIdentifierWayCalc(TqxWayList& ways);
  std::string keywordAsIdentifier();
  void stringLiteralWayCalc(TqxWayList& ways);
  std::string stringLiteral();

 private:
  // Pooled way lists: the grammar's work lists are taken from and returned to a pool, so
  // a parse allocates lists only while its nesting grows.
  class ListRef;
  ListRef TakeList();

  // The four shapes of grammar operation (sequence is plain code).
  template <class F>
  void Opt(TqxWayList& ways, const TqxTokenSet& first, F&& part);
  // An option whose skipping ways must stand before a token of `follow` to go on.
  template <class F>
  void OptFollowed(TqxWayList& ways, const TqxTokenSet& first, const TqxTokenSet* follow, F&& part);
  template <class... A>
  void Choice(TqxWayList& ways, A&&... alternatives);
  template <class F>
  void Iter(TqxWayList& ways, const TqxTokenSet& first, F&& part);
  template <class F>
  void IterGreedy(TqxWayList& ways, const TqxTokenSet& first, F&& part);
  // A choice among single tokens: alternative i is kinds[i].
  void TokenChoice(TqxWayList& ways, const std::int32_t* kinds, std::int32_t count);
  void TokenRangeChoice(TqxWayList& ways, std::int32_t firstKind, std::int32_t lastKind);
  // An optional single token.
  void OptToken(TqxWayList& ways, std::int32_t kind);
  void OptAs(TqxWayList& ways);
  // An integer literal that fits a type size.
  void ExpectSize(TqxWayList& ways);
  // Optional qualifying parts of a name: `levels` nested options of [part] ".".
  void QualifiersWayCalc(TqxWayList& ways, int levels);
  // dbObject and dbColumn: `levels` optional qualifying parts, then the name.
  void ReadName(int levels, TSQLQualifiedName& name);
  // Stores a name chain's parts in `name`: its tokens, qualifiers first (null for an
  // empty qualifying part), and whether any of them is quoted.
  void StoreName(const TqxToken* const* tokens, int count, bool quoted,
                 TSQLQualifiedName& name) const;
  // Gives a function the parts of the object name it was written with.
  static void NameFunction(TSQLFunction& function, const TSQLDatabaseObject& name);
  void namePartWayCalc(TqxWayList& ways);

  // Runs the way calculation of a parse entry: first the direct reading, then, when that
  // does not settle the text, the way calculation (twice when the text has no reading).
  enum class DirectEntry { kSelect, kObject, kExpression, kItem, kLogical };
  template <class F>
  void Entry(TqxWayList& ways, DirectEntry entry, F&& calc);
  // Reads the text along one way, deciding by the tokens ahead, as far as that settles
  // which way comes first; true with `ways` holding that way when it reached the end.
  bool ReadDirect(TqxWayList& ways, DirectEntry entry);
  class DirectReader;
  // The tree made in the walk that reads the text, for the texts the direct reading
  // settles (see ParseSelectDirect).
  class DirectBuilder;
  bool directMissed_ = false;  // the direct building gave up: the reading would too
  void ForgetWorked();
  // Drops the ways standing before a token for which `dead` says they have no future. While
  // errors are worked out exactly, only when the error index already stands at that token
  // or beyond (so dropping them changes neither the first way nor the error position).
  template <class Dead>
  void DropDead(TqxWayList& ways, Dead dead);
  // Appends the ways of `src` to `dest`, dropping any that stand at the same token as a
  // way already there.
  void Unite(TqxWayList& dest, const TqxWayList& src);
  void DropTwins(TqxWayList& ways);
  // Appends a child of every parent to `dest` unless a way of `dest` stands there.
  void AppendChildren(TqxWayList& dest, const TqxWayList& parents, std::int32_t decision);
  std::uint32_t NewEpoch();
  std::uint32_t& Stamp(std::int32_t tokenIndex);
  // dbObject and dbColumn: `levels` qualifying parts, then the name. Works out the
  // readings of the nested options directly from the tokens, with the same ways, order
  // and error position as the options themselves.
  // With `next` >= 0 only the readings followed by a token of that kind are kept.
  // While looking for the first reading, the readings followed by a token of `dead` are
  // left out.
  void NameWayCalc(TqxWayList& ways, int levels, std::int32_t next = -1,
                   const TqxTokenSet* dead = nullptr);
  void dbObjectBeforeWayCalc(TqxWayList& ways, std::int32_t next);
  bool NameChainWayCalc(TqxWayList& ways, int levels, const TqxTokenSet& dead);
  std::int32_t NameRunEnd(std::int32_t tokenIndex) const;
  // expressionUnary of one way standing before a constant or a one-part name; false
  // when the way stands before anything else.
  bool SimpleOperandWayCalc(TqxWayList& ways);
  // The repetitions of expressionFactor and expressionAdd after their first operand.
  void FactorRestWayCalc(TqxWayList& ways);
  void AddRestWayCalc(TqxWayList& ways);
  bool QualifiedOperandWayCalc(TqxWayList& ways);
  // The built-in type form with arguments (index into the forms) whose tokens follow
  // `tokenIndex` and are followed by ")", with `end` its last token; -1 for none.
  std::int32_t TypeFormAfter(std::int32_t tokenIndex, std::int32_t& end) const;
  // The bracket at token `open` holds a condition rather than a value (see the direct
  // reading); `match` caches the matching ")" of every "(".
  bool BracketsHoldCondition(std::int32_t open, std::vector<std::int32_t>& match) const;
  // The last token of the name chain of one-token parts that starts at token `first`;
  // -1 when a part is no such name.
  std::int32_t NameChainEnd(std::int32_t first) const;
  // An integer literal that fits a type size stands at `tokenIndex`.
  bool SizeAt(std::int32_t tokenIndex) const;
  // Number of name parts that the tokens after `start` up to `end` stand for.
  std::int32_t NameParts(std::int32_t start, std::int32_t end) const;
  // Drops the ways (each below one of `starts`) whose name stands for too many parts.
  void DropLongNames(TqxWayList& ways, const TqxWayList& starts, std::int32_t maxParts);

  // Runs `calc` for production `production`, or reuses its earlier result at that token.
  template <class F>
  void Reuse(int production, TqxWayList& ways, F&& calc);
  // Enters one nesting level for every way of `ways` (leaves it on destruction).
  class Nest;

  struct Worked;
  bool plain_ = false;
  // False while a parse entry looks for the first reading only.
  bool exactErrors_ = true;
  std::int32_t depth_ = 0;
  std::int32_t peakDepth_ = 0;
  std::vector<std::unique_ptr<TqxWayList>> pool_;
  void TakeSpares();
  bool sparesTaken_ = false;
  std::vector<std::uint32_t> stamp_;
  std::uint32_t epoch_ = 0;
  std::vector<std::int32_t> workedIndex_;
  std::vector<Worked> worked_;
  std::vector<const TqxWayPoint*> workedLeaves_;
  std::vector<std::int32_t> workedEnds_;

  // Building helpers.
  std::int32_t Decision() { return NextDecision(); }
  std::string NameText(const TqxToken& token) const;
  void NameParts(const TqxToken& token, TastVector<std::string>& parts) const;
  // Reads alias1 and makes the alias node of the form chosen.
  std::unique_ptr<TSQLAlias> MakeAlias(bool withAs);
};

}  // namespace qorvex
