#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "qorvex/sql_export.h"

namespace qorvex {

// One statement of a script that may hold several, separated by ";" tokens, with the
// place where it starts in the script.
struct QORVEX_SQL_EXPORT TqxStatementText {
  std::string_view text;  // from its first token up to the ";" (or the end of the script)
  std::int32_t offset;    // byte offset of `text` in the script
  std::int32_t pos;       // position, line and column of its first token in the script
  std::int32_t line;
  std::int32_t col;
};

// A position, line and column in a whole script.
struct QORVEX_SQL_EXPORT TqxScriptLocation {
  std::int32_t pos;
  std::int32_t line;
  std::int32_t col;
};

// Splits `script` on the SQL-92 scanner's ";" tokens, so that a ";" inside a string,
// a quoted name or a comment does not split. Each statement is scanned as a text of its
// own would be, so the split agrees with the statements' own tokens. Statements without tokens
// (";;", a trailing
// ";") are left out; the last one keeps what follows its last token (trailing comments).
// The views point into `script`.
QORVEX_SQL_EXPORT std::vector<TqxStatementText> SplitStatements(std::string_view script);

// Converts a position, line and column found by scanning `statement.text` on its own
// (an error's place, a token's) into the whole script's terms.
QORVEX_SQL_EXPORT TqxScriptLocation ToScriptLocation(const TqxStatementText& statement,
                                                     std::int32_t pos, std::int32_t line,
                                                     std::int32_t col);

}  // namespace qorvex
