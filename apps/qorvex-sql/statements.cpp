#include "statements.h"

#include <algorithm>

#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex::tool {

std::vector<Statement> SplitStatements(std::string_view input) {
  SQL92Scanner scanner;
  scanner.Init(input);
  const auto size = static_cast<std::int32_t>(input.size());
  std::vector<Statement> statements;
  const TqxToken* first = nullptr;
  for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i) {
    const TqxToken& t = scanner.GetToken(i);
    if (t.kind != tkSemicolon && t.kind != tkEof) {
      if (first == nullptr)
        first = &t;
      continue;
    }
    if (first != nullptr) {
      // The last statement keeps everything up to the end, trailing comments included.
      const std::int32_t begin = std::clamp(first->offset, 0, size);
      const std::int32_t end = std::clamp(t.kind == tkEof ? size : t.offset, begin, size);
      statements.push_back(Statement{
          input.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)),
          begin, first->pos, first->line, first->col});
      first = nullptr;
    }
  }
  return statements;
}

Location ToInputLocation(const Statement& statement, std::int32_t pos, std::int32_t line,
                         std::int32_t col) {
  return Location{statement.pos + pos, statement.line + line - 1,
                  line == 1 ? statement.col + col - 1 : col};
}

}  // namespace qorvex::tool
