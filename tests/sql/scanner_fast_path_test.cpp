// The scanner reads the common tokens of a text it holds a copy of on a fast path; a
// derived dialect scanner is read token by token through the general recogniser. Both
// must give the same tokens (kind, place, text) for any text, line breaks, comments,
// quotes and multi-byte characters included.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex {
namespace {

// A dialect that adds nothing: it is scanned through NextToken, one token at a time.
class GeneralScanner : public SQL92Scanner {};

std::string Tokens(SQL92Scanner& scanner, const std::string& text) {
  scanner.Init(text);
  std::string out;
  for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i) {
    const TqxToken& t = scanner.GetToken(i);
    out += std::to_string(t.kind) + " " + std::to_string(t.pos) + ":" + std::to_string(t.line) +
           ":" + std::to_string(t.col) + "@" + std::to_string(t.offset) + " [" +
           std::string(t.val) + "]\n";
  }
  return out;
}

TEST(ScannerFastPath, GivesTheTokensOfTheGeneralRecogniser) {
  const std::vector<std::string> pieces = {
      " ",
      "  ",
      "\t",
      "\r",
      "\n",
      "\r\n",
      "\n\r",
      "\n\n",
      "\r\r",
      "-",
      "--",
      "-- c\n",
      "a",
      "Select",
      "FROM",
      "x1",
      "_y",
      "abcdefghi",
      "character_set_catalog",
      "datetime_interval_precisions",
      "0",
      "12",
      "0x1F",
      "1.5",
      ".5",
      "1.",
      "1e5",
      ".",
      ".*",
      "'s'",
      "'it''s'",
      "'open",
      "\"q\"",
      "[b]",
      "@p",
      "{d '2020-01-01'}",
      "<",
      "<>",
      "<=",
      ">",
      ">=",
      "!=",
      "!",
      "=",
      ",",
      "(",
      ")",
      "*",
      "+",
      "/",
      "%",
      "~",
      ";",
      "\xc3\xa9",
      "'\xe2\x82\xac'",
      "\xff",
      std::string(1, '\0'),
      "#",
      "$",
  };
  std::mt19937 random(20261123);
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
  std::uniform_int_distribution<int> length(1, 24);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (int n = length(random); n > 0; --n)
      text += pieces[pick(random)];
    SQL92Scanner fast;
    GeneralScanner general;
    ASSERT_EQ(Tokens(fast, text), Tokens(general, text)) << "text: \"" << text << "\"";
  }
}

}  // namespace
}  // namespace qorvex
