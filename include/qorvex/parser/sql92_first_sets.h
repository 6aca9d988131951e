#pragma once

#include "qorvex/parser/token_set.h"
#include "qorvex/scanner/token.h"

// First-token sets of the SQL-92 grammar, each composed from the sets of the parts its
// production can begin with, in the order of the production's alternatives. The way
// calculation drops a way before it records a decision whose part cannot start at the
// way's next token.
namespace qorvex::sql92first {

using S = TqxTokenSet;

// Names.
inline constexpr S kIdentifier{tkIdentifier, tkQuotedIdentifier};
inline constexpr S kKeywordAsIdentifier =
    S::Range(kFirstNonReservedKeyword, kLastNonReservedKeyword);
// part and name of dbObject and dbColumn: identifier | keywordAsIdentifier
inline constexpr S kNamePart = kIdentifier | kKeywordAsIdentifier;
// a qualifying part may be empty, so a name may begin with its point
inline constexpr S kQualifier = kNamePart | S{tkDot};
inline constexpr S kDbObject = kQualifier | kNamePart;
inline constexpr S kDbColumn = kQualifier | kNamePart;
inline constexpr S kStringLiteral{tkString};
// alias1, alias2: identifier | string literal | keywordAsIdentifier
inline constexpr S kAlias = kIdentifier | kStringLiteral | kKeywordAsIdentifier;

// Value expressions.
inline constexpr S kConstant{tkInteger, tkDecimal, tkKwNull, tkString, tkHex, tkEscape};
inline constexpr S kOneParamAggregate{tkKwAvg, tkKwMax, tkKwMin, tkKwSum};
inline constexpr S kAggregate = kOneParamAggregate | S{tkKwCount};
inline constexpr S kSQLfunction = kDbObject;
inline constexpr S kCaseFunction{tkKwCase};
inline constexpr S kCastFunction{tkKwCast};
inline constexpr S kParameterlessFunction = S::Range(tkKwCurrentTimestamp, tkKwSystemUser);
// expressionTerm, alternatives in decision order
inline constexpr S kTermBrackets{tkLParen};
inline constexpr S kTermSubQuery{tkLParen};
inline constexpr S kExpressionTerm = kTermBrackets | kConstant | kDbColumn | kAggregate |
                                     kSQLfunction | kTermSubQuery | kCaseFunction | kCastFunction |
                                     kParameterlessFunction;
inline constexpr S kUnaryOperator{tkMinus, tkPlus, tkTilde};
inline constexpr S kExpressionUnary = kUnaryOperator | kExpressionTerm;
inline constexpr S kExpressionFactor = kExpressionUnary;
inline constexpr S kExpressionAdd = kExpressionFactor;
inline constexpr S kExpression = kExpressionAdd;
inline constexpr S kFactorOperator{tkStar, tkSlash, tkPercent};
inline constexpr S kAddOperator{tkPlus, tkMinus};
inline constexpr S kExpressionsList = kExpression;

// Logical expressions and predicates.
inline constexpr S kComparisonOperator{tkEqual,        tkNotEqual,    tkBangEqual,
                                       tkLessEqual,    tkBangGreater, tkLess,
                                       tkGreaterEqual, tkBangLess,    tkGreater};
inline constexpr S kSetQuantifier{tkKwAll, tkKwSome, tkKwAny};
inline constexpr S kExpressionCompWithSet = kSetQuantifier;
inline constexpr S kPredicateComparison = kComparisonOperator;
inline constexpr S kPredicateIs{tkKwIs};
inline constexpr S kPredicateLike{tkKwNot, tkKwLike};
inline constexpr S kPredicateBetween{tkKwNot, tkKwBetween};
inline constexpr S kPredicateIn{tkKwNot, tkKwIn};
inline constexpr S kPredicate =
    kPredicateComparison | kPredicateIs | kPredicateLike | kPredicateBetween | kPredicateIn;
// expressionLogicalTerm, alternatives in decision order
inline constexpr S kLogicalBrackets{tkLParen};
inline constexpr S kLogicalPredicate = kExpression | kPredicate;  // [expression] predicate
inline constexpr S kLogicalExists{tkKwExists};
inline constexpr S kExpressionLogicalTerm = kLogicalBrackets | kLogicalPredicate | kLogicalExists;
inline constexpr S kExpressionNot = S{tkKwNot} | kExpressionLogicalTerm;
inline constexpr S kExpressionAnd = kExpressionNot;
inline constexpr S kExpressionLogical = kExpressionAnd;

// Types.
inline constexpr S kSQLTypeUser = kIdentifier;
inline constexpr S kSQLType1word =
    S::Range(tkKwBigint, tkKwDate) | S{tkKwDouble} | S::Range(tkKwFloat8, tkKwTimestamptz);
inline constexpr S kSQLTypeWithArguments{tkKwBit,     tkKwVarbit,  tkKwCharacter,
                                         tkKwChar,    tkKwVarchar, tkKwNumeric,
                                         tkKwDecimal, tkKwTime,    tkKwTimestamp};
inline constexpr S kSQLTypeBuiltIn = kSQLType1word | kSQLTypeWithArguments;
inline constexpr S kSQLType = kSQLTypeUser | kSQLTypeBuiltIn;
inline constexpr S kTimeZoneWord{tkKwWith, tkKwWithout};

// Query statements.
inline constexpr S kSelectBlock{tkKwSelect};
inline constexpr S kSubQueryExpression = kSelectBlock | S{tkLParen};
inline constexpr S kQueryExpression = kSubQueryExpression;
inline constexpr S kSubSelectStatement = kQueryExpression;
inline constexpr S kSelectStatement = kQueryExpression;
inline constexpr S kSetOperator{tkKwUnion, tkKwExcept, tkKwIntersect};
inline constexpr S kSelectMode{tkKwAll, tkKwDistinct};
// selectItem, alternatives in decision order
inline constexpr S kSelectItemStar{tkStar};
inline constexpr S kSelectItemAliasEquals = kAlias;    // alias2 "=" expression
inline constexpr S kSelectItemAllColumns = kDbObject;  // dbObject ".*"
inline constexpr S kSelectItemExpression = kExpression;
inline constexpr S kSelectItem =
    kSelectItemStar | kSelectItemAliasEquals | kSelectItemAllColumns | kSelectItemExpression;
inline constexpr S kSelectList = kSelectItem;
inline constexpr S kAsAlias = S{tkKwAs} | kAlias;  // [ "as" ] alias1
inline constexpr S kOrderByClause{tkKwOrder};
inline constexpr S kOrderDirection{tkKwAsc, tkKwDesc};
inline constexpr S kGroupByList{tkKwGroup};
inline constexpr S kFromClause{tkKwFrom};

// FROM clause.
inline constexpr S kSubTableSourceBrackets{tkLParen};
inline constexpr S kSubTableSource = kSubTableSourceBrackets | kSQLfunction | kDbObject;
inline constexpr S kTableSource = kSubTableSource;
inline constexpr S kTableSourceInner = kSubTableSource;
inline constexpr S kJoinKindWord{tkKwInner, tkKwLeft, tkKwRight, tkKwFull};
inline constexpr S kOuterJoinWord{tkKwLeft, tkKwRight, tkKwFull};
inline constexpr S kQualifiedJoin = kJoinKindWord | S{tkKwJoin};
inline constexpr S kJoinedTable = S{tkComma} | S{tkKwCross} | kQualifiedJoin;
inline constexpr S kJoinRight = kSubTableSource | kTableSourceInner;

// Tokens that never follow a complete part, in any context (each set is a subset of the
// complement of the part's follow set): a way ending in front of one of them has no
// future. Together with the error index already standing at or past that token, this
// lets the way calculation drop such a way at once.
inline constexpr S kCannotFollowName{tkDot};
inline constexpr S kCannotFollowColumn{tkDot, tkLParen};
inline constexpr S kCannotFollowFactor{tkDot, tkLParen, tkStar, tkSlash, tkPercent};
inline constexpr S kCannotFollowExpression{tkDot,  tkLParen, tkPlus,   tkMinus,
                                           tkStar, tkSlash,  tkPercent};
// A condition (expressionLogical, expressionAnd) is never followed by "and" (BETWEEN takes
// value expressions) nor by what cannot follow a value expression.
inline constexpr S kCannotFollowCondition = kCannotFollowExpression | S{tkKwAnd};
// What may follow a SELECT block and its FROM clause.
inline constexpr S kFollowSelectBlock{tkKwUnion, tkKwExcept, tkKwIntersect, tkKwOrder,
                                      tkRParen,  tkEof,      tkSemicolon};
inline constexpr S kFollowGroupBy = kFollowSelectBlock | S{tkKwHaving};
inline constexpr S kFollowWhere = kFollowGroupBy | S{tkKwGroup};
inline constexpr S kFollowFromClause = kFollowWhere | S{tkKwWhere};
// What may follow a table source: a join, its "on", the end of a bracketed join and what
// follows the FROM clause.
inline constexpr S kFollowSubTableSource = kJoinedTable | S{tkKwOn, tkRParen} | kFollowFromClause;
// What may follow a select list: the clauses after it, the end of its SELECT block and of
// the statement; a select item may also be followed by the next item.
inline constexpr S kFollowSelectList{tkKwFrom,  tkKwWhere,  tkKwGroup,     tkKwHaving,
                                     tkKwUnion, tkKwExcept, tkKwIntersect, tkKwOrder,
                                     tkRParen,  tkEof,      tkSemicolon};
inline constexpr S kFollowSelectItem = kFollowSelectList | S{tkComma};

}  // namespace qorvex::sql92first
