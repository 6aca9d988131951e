#include "qorvex/scanner/statements.h"

#include <algorithm>

#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex {

// The tokens are looked at in batches as the scanner makes them, so that splitting a
// long script does not hold all of its tokens at once.
std::vector<TqxStatementText> SplitStatements(std::string_view script) {
  struct Splitter {
    std::string_view script;
    std::vector<TqxStatementText> statements;
    bool open = false;  // a statement has begun: `first` is its first token
    TqxStatementText first{};

    void Take(const TqxToken* tokens, std::int32_t count) {
      const auto size = static_cast<std::int32_t>(script.size());
      for (const TqxToken* t = tokens; t != tokens + count; ++t) {
        if (t->kind != tkSemicolon && t->kind != tkEof) {
          if (!open) {
            open = true;
            first = TqxStatementText{{}, t->offset, t->pos, t->line, t->col};
          }
          continue;
        }
        if (!open)
          continue;
        // The last statement keeps everything up to the end, trailing comments included.
        const std::int32_t begin = std::clamp(first.offset, 0, size);
        const std::int32_t end = std::clamp(t->kind == tkEof ? size : t->offset, begin, size);
        first.text =
            script.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
        first.offset = begin;
        statements.push_back(first);
        open = false;
      }
    }
  } splitter{script, {}};
  SQL92Scanner scanner;
  scanner.SetStatementWise(true);
  scanner.ScanInBatches(
      script,
      [](void* context, const TqxToken* tokens, std::int32_t count) {
        static_cast<Splitter*>(context)->Take(tokens, count);
      },
      &splitter);
  return std::move(splitter.statements);
}

TqxScriptLocation ToScriptLocation(const TqxStatementText& statement, std::int32_t pos,
                                   std::int32_t line, std::int32_t col) {
  return TqxScriptLocation{statement.pos + pos, statement.line + line - 1,
                           line == 1 ? statement.col + col - 1 : col};
}

}  // namespace qorvex
