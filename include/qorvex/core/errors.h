#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "qorvex/sql_export.h"

namespace qorvex {

// The general exception: misuse of the tree, the model or a component. The message is
// the whole information and is fixed word for word by each raising operation.
class QORVEX_SQL_EXPORT EqxError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A syntax error in SQL text, raised by the parse entries. It carries the offending
// token's position (0-based, in characters), line and column (1-based) and text; all
// stay 0 and empty when no token is known.
class QORVEX_SQL_EXPORT EqxSQLError : public std::runtime_error {
 public:
  explicit EqxSQLError(const std::string& message) : std::runtime_error(message) {}
  EqxSQLError(const std::string& message, std::int32_t pos, std::int32_t line, std::int32_t col,
              std::string tokenText)
      : std::runtime_error(message),
        pos(pos),
        col(col),
        line(line),
        tokenText(std::move(tokenText)) {}

  std::int32_t pos = 0;
  std::int32_t col = 0;
  std::int32_t line = 0;
  std::string tokenText;
};

}  // namespace qorvex
