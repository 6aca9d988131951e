#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qorvex::tool {

// One statement of an input that may hold several, separated by ";" tokens.
struct Statement {
  std::string_view text;  // from its first token up to the ";" (or the end of the input)
  std::int32_t offset;    // byte offset of `text` in the input
  std::int32_t pos;       // position, line and column of its first token in the input
  std::int32_t line;
  std::int32_t col;
};

// A position, line and column in the whole input.
struct Location {
  std::int32_t pos;
  std::int32_t line;
  std::int32_t col;
};

// Splits `input` on the SQL-92 scanner's ";" tokens. Statements without tokens (";;",
// a trailing ";") are left out. The views point into `input`.
std::vector<Statement> SplitStatements(std::string_view input);

// Converts a position, line and column found by scanning `statement.text` on its own
// into the whole input's terms.
Location ToInputLocation(const Statement& statement, std::int32_t pos, std::int32_t line,
                         std::int32_t col);

}  // namespace qorvex::tool
