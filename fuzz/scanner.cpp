// Scans arbitrary bytes and checks what the scanner promises for every input.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "qorvex/scanner/sql92_scanner.h"

namespace {

bool IsKeywordKind(std::int32_t kind) {
  for (const qorvex::TqxKeyword& k : qorvex::SQL92Scanner::Keywords())
    if (k.kind == kind)
      return true;
  return false;
}

void Fail(int line) {
  std::fprintf(stderr, "scanner invariant broken at fuzz/scanner.cpp:%d\n", line);
  std::abort();
}

}  // namespace

// A macro so that the report names the broken check.
#define Check(condition) \
  do {                   \
    if (!(condition))    \
      Fail(__LINE__);    \
  } while (false)

namespace {
// A dialect that adds nothing: scanned token by token through the general recogniser,
// never on the fast path.
class GeneralScanner : public qorvex::SQL92Scanner {};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  qorvex::SQL92Scanner scanner;
  scanner.Init(text);

  // The fast path gives exactly the general recogniser's tokens.
  GeneralScanner general;
  general.Init(text);
  Check(general.GetTokenCount() == scanner.GetTokenCount());
  for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i) {
    const qorvex::TqxToken& a = scanner.GetToken(i);
    const qorvex::TqxToken& b = general.GetToken(i);
    Check(a.kind == b.kind && a.pos == b.pos && a.line == b.line && a.col == b.col &&
          a.offset == b.offset && a.val == b.val);
  }

  const std::int32_t count = scanner.GetTokenCount();
  Check(count >= 1);
  const qorvex::TqxToken& end = scanner.GetToken(count - 1);
  // Exactly one end token, last, and every out-of-range index reaches it.
  Check(end.kind == qorvex::tkEof && end.val == "EOF");
  Check(&scanner.GetToken(-1) == &end && &scanner.GetToken(count) == &end);
  Check(end.offset == static_cast<std::int32_t>(size));

  std::int32_t lastPos = 0;
  std::int32_t lastLine = 1;
  for (std::int32_t i = 0; i < count - 1; ++i) {
    const qorvex::TqxToken& t = scanner.GetToken(i);
    Check(t.kind > 0 && t.kind <= qorvex::tkError);
    // Every token consumed at least one character and holds exactly the bytes it
    // consumed.
    Check(!t.val.empty());
    Check(t.offset >= 0 && static_cast<std::size_t>(t.offset) + t.val.size() <= size);
    Check(text.substr(static_cast<std::size_t>(t.offset), t.val.size()) == t.val);
    // A word is a keyword exactly when the table holds it; nothing else has a keyword
    // kind.
    const char first = t.val[0];
    const bool word =
        (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z') || first == '_';
    const std::int32_t keyword = qorvex::SQL92Scanner::FindKeyword(t.val);
    if (word)
      Check(t.kind == (keyword != 0 ? keyword : qorvex::tkIdentifier));
    else
      Check(!IsKeywordKind(t.kind));
    // Positions and lines never go back, even where a step back re-delivers text.
    Check(t.pos >= lastPos && t.line >= lastLine);
    lastPos = t.pos;
    lastLine = t.line;
  }
  Check(end.pos >= lastPos && end.line >= lastLine);
  return 0;
}
