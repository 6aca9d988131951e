#pragma once

#include <cstdint>

#include "qorvex/scanner/token.h"

// Token lists of the SQL-92 grammar's choices among single tokens (alternative i is
// entry i) and the forms of the built-in types with arguments. Shared by the way
// calculation and the building pass, which must agree on every decision number.
namespace qorvex::sql92grammar {

inline constexpr std::int32_t kSetOperatorKinds[] = {tkKwUnion, tkKwExcept, tkKwIntersect};
inline constexpr std::int32_t kSelectModeKinds[] = {tkKwAll, tkKwDistinct};
inline constexpr std::int32_t kOrderDirectionKinds[] = {tkKwAsc, tkKwDesc};
inline constexpr std::int32_t kOuterJoinKinds[] = {tkKwLeft, tkKwRight, tkKwFull};
inline constexpr std::int32_t kIdentifierKinds[] = {tkIdentifier, tkQuotedIdentifier};
inline constexpr std::int32_t kComparisonKinds[] = {tkEqual,        tkNotEqual,    tkBangEqual,
                                                    tkLessEqual,    tkBangGreater, tkLess,
                                                    tkGreaterEqual, tkBangLess,    tkGreater};
inline constexpr std::int32_t kSetQuantifierKinds[] = {tkKwAll, tkKwSome, tkKwAny};
inline constexpr std::int32_t kAddKinds[] = {tkPlus, tkMinus};
inline constexpr std::int32_t kFactorKinds[] = {tkStar, tkSlash, tkPercent};
inline constexpr std::int32_t kUnaryKinds[] = {tkMinus, tkPlus, tkTilde};
inline constexpr std::int32_t kConstantKinds[] = {tkInteger, tkDecimal, tkKwNull,
                                                  tkString,  tkHex,     tkEscape};
inline constexpr std::int32_t kOneParamAggregateKinds[] = {tkKwAvg, tkKwMax, tkKwMin, tkKwSum};

// SQLType1word: kinds 66 to 84, then "double" "precision", then kinds 87 to 109.
inline constexpr std::int32_t kType1WordCount =
    (tkKwDate - tkKwBigint + 1) + 1 + (tkKwTimestamptz - tkKwFloat8 + 1);
inline constexpr std::int32_t kDoublePrecisionDecision = tkKwDate - tkKwBigint + 1;
struct Type1WordTable {
  std::int32_t kinds[kType1WordCount];
};
inline constexpr Type1WordTable kType1Words = [] {
  Type1WordTable t{};
  std::int32_t n = 0;
  for (std::int32_t k = tkKwBigint; k <= tkKwDate; ++k)
    t.kinds[n++] = k;
  t.kinds[n++] = tkKwDouble;
  for (std::int32_t k = tkKwFloat8; k <= tkKwTimestamptz; ++k)
    t.kinds[n++] = k;
  return t;
}();
inline constexpr const std::int32_t* kType1WordKinds = kType1Words.kinds;

// A built-in type with arguments: its one or two words, whether a scale follows the
// size, and the word before "time" "zone" (0 for none).
struct TypeForm {
  std::int32_t words[2];
  bool scale;
  std::int32_t zone;
};
inline constexpr TypeForm kTypeForms[] = {
    {{tkKwBit, 0}, false, 0},                  // 1  bit(n)
    {{tkKwVarbit, 0}, false, 0},               // 2  varbit(n)
    {{tkKwCharacter, 0}, false, 0},            // 3  character(n)
    {{tkKwCharacter, tkKwVarying}, false, 0},  // 4  character varying(n)
    {{tkKwChar, 0}, false, 0},                 // 5  char(n)
    {{tkKwVarchar, 0}, false, 0},              // 6  varchar(n)
    {{tkKwNumeric, 0}, false, 0},              // 7  numeric(p)
    {{tkKwNumeric, 0}, true, 0},               // 8  numeric(p, s)
    {{tkKwDecimal, 0}, false, 0},              // 9  decimal(p)
    {{tkKwDecimal, 0}, true, 0},               // 10 decimal(p, s)
    {{tkKwTime, 0}, false, 0},                 // 11 time(p)
    {{tkKwTime, 0}, false, tkKwWith},          // 12 time(p) with time zone
    {{tkKwTime, 0}, false, tkKwWithout},       // 13 time(p) without time zone
    {{tkKwTimestamp, 0}, false, 0},            // 14 timestamp(p)
    {{tkKwTimestamp, 0}, false, tkKwWith},     // 15 timestamp(p) with time zone
    {{tkKwTimestamp, 0}, false, tkKwWithout},  // 16 timestamp(p) without time zone
};
inline constexpr std::int32_t kTypeFormCount = sizeof(kTypeForms) / sizeof(kTypeForms[0]);

// Qualifying parts before the last name: three for an object, four for a column.
inline constexpr int kObjectQualifiers = 3;
inline constexpr int kColumnQualifiers = 4;

// Productions whose worked-out readings are reused at the same token.
enum WorkedProduction : int {
  kWorkedExpression,
  kWorkedExpressionLogical,
  kWorkedQueryExpression,
  kWorkedTableSource,
  kWorkedTableSourceInner,
  kWorkedProductions
};

}  // namespace qorvex::sql92grammar
