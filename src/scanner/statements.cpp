#include "qorvex/scanner/statements.h"

#include <algorithm>

#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex {

std::vector<TqxStatementText> SplitStatements(std::string_view script) {
  SQL92Scanner scanner;
  scanner.Init(script);
  const auto size = static_cast<std::int32_t>(script.size());
  std::vector<TqxStatementText> statements;
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
      statements.push_back(TqxStatementText{
          script.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)),
          begin, first->pos, first->line, first->col});
      first = nullptr;
    }
  }
  return statements;
}

TqxScriptLocation ToScriptLocation(const TqxStatementText& statement, std::int32_t pos,
                                   std::int32_t line, std::int32_t col) {
  return TqxScriptLocation{statement.pos + pos, statement.line + line - 1,
                           line == 1 ? statement.col + col - 1 : col};
}

}  // namespace qorvex
