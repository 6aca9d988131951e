#pragma once

#include <cstdint>

#include "qorvex/parser/sql92_first_sets.h"
#include "qorvex/parser/sql92_parser.h"

// What the direct reading and the direct building share: both decide by the tokens
// ahead, give up at the same places, and go down to the same depth.
namespace qorvex::sql92direct {

// The text needs the way calculation: the direct reading or building gives up.
struct DirectMiss {};

// What may follow a condition: "and", "or", the end of its bracket, "then" of a searched
// CASE, what follows a WHERE or HAVING condition, and what follows a join's ON condition
// (the next join, the "on" of an enclosing join, the end of a bracketed join).
inline constexpr TqxTokenSet kFollowCondition =
    TqxTokenSet{tkKwAnd, tkKwOr, tkRParen, tkKwThen, tkKwOn} | sql92first::kFollowFromClause |
    sql92first::kJoinedTable;

// The direct reading counts nesting levels as the way calculation does along the way it
// takes. The way calculation also enters the readings that the tokens rule out, which
// may go a level or two deeper than the way taken before they die; a text that comes
// within kDirectMargin levels of the bound is therefore left to the way calculation,
// which reports the bound exactly where it is reached.
inline constexpr std::int32_t kDirectMargin = 4;
inline constexpr std::int32_t kDirectNesting = SQL92Parser::kMaxNesting - kDirectMargin;

}  // namespace qorvex::sql92direct
