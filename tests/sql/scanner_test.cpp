#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "qorvex/scanner/buffer.h"
#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex {
namespace {

using namespace std::string_literals;

// A token as the tests compare it.
struct Tok {
  int kind;
  std::string val;
  int line = 0;  // 0: not compared
  int col = 0;
  int pos = 0;
};

std::vector<TqxToken> Scan(std::string_view text) {
  SQL92Scanner scanner;
  scanner.Init(text);
  std::vector<TqxToken> tokens;
  for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i)
    tokens.push_back(scanner.GetToken(i));
  return tokens;
}

std::string Show(const std::vector<TqxToken>& tokens) {
  std::string s;
  for (const TqxToken& t : tokens) {
    s += std::to_string(t.kind) + ":" + t.val + "@" + std::to_string(t.line) + ":" +
         std::to_string(t.col) + "/" + std::to_string(t.pos) + " ";
  }
  return s;
}

// Compares the tokens before the end token; the end token must come last, once.
void ExpectTokens(std::string_view text, const std::vector<Tok>& expected) {
  SCOPED_TRACE("text: \"" + std::string(text) + "\"");
  const std::vector<TqxToken> tokens = Scan(text);
  ASSERT_FALSE(tokens.empty());
  EXPECT_EQ(tokens.back().kind, tkEof);
  EXPECT_EQ(tokens.back().val, "EOF");
  ASSERT_EQ(tokens.size(), expected.size() + 1) << Show(tokens);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const Tok& e = expected[i];
    const TqxToken& t = tokens[i];
    EXPECT_EQ(t.kind, e.kind) << "token " << i << " " << Show(tokens);
    EXPECT_EQ(t.val, e.val) << "token " << i;
    if (e.line != 0) {
      EXPECT_EQ(t.line, e.line) << "token " << i;
      EXPECT_EQ(t.col, e.col) << "token " << i;
      EXPECT_EQ(t.pos, e.pos) << "token " << i;
    }
  }
}

struct Case {
  std::string text;
  std::vector<Tok> tokens;
};

// ---------------------------------------------------------------------------------------
// Buffer

TEST(ScannerBuffer, ReadPeekAndEndOfInput) {
  TqxBuffer b;
  b.Fill("a\xff");
  EXPECT_EQ(b.GetLen(), 2);
  EXPECT_EQ(b.Peek(), 'a');
  EXPECT_EQ(b.Read(), 'a');
  EXPECT_EQ(b.Read(), 0xff);
  EXPECT_EQ(b.Read(), 256);
  EXPECT_EQ(b.Read(), 256);
  EXPECT_EQ(b.Peek(), 256);
  EXPECT_EQ(b.GetPos(), 2);
}

TEST(ScannerBuffer, SetPosClampsAndGetStringKeepsPosition) {
  TqxBuffer b;
  b.Fill("select");
  b.SetPos(-5);
  EXPECT_EQ(b.GetPos(), 0);
  b.SetPos(6 + 10);
  EXPECT_EQ(b.GetPos(), 6);
  EXPECT_EQ(b.Read(), 256);
  b.SetPos(2);
  EXPECT_EQ(b.GetString(1, 4), "ele");
  EXPECT_EQ(b.GetString(-3, 2), "se");
  EXPECT_EQ(b.GetString(4, 100), "ct");
  EXPECT_EQ(b.GetString(4, 1), "");
  EXPECT_EQ(b.GetPos(), 2);
  b.Fill("");
  EXPECT_EQ(b.Read(), 256);
}

// ---------------------------------------------------------------------------------------
// Lines, columns and positions

TEST(ScannerPositions, LineBreakForms) {
  const std::vector<Case> cases = {
      {"", {}},
      {"a\r\nb", {{4, "a", 1, 1, 0}, {4, "b", 2, 1, 2}}},
      {"a\rb", {{4, "a", 1, 1, 0}, {4, "b", 2, 1, 2}}},
      {"a\nb", {{4, "a", 1, 1, 0}, {4, "b", 2, 1, 2}}},
      // LF CR: the LF is an ordinary character, the CR counts the line.
      {"a\n\rb", {{4, "a", 1, 1, 0}, {4, "b", 2, 1, 3}}},
      // A lone LF becomes a line break and swallows a LF right after it.
      {"a\n\nb", {{4, "a", 1, 1, 0}, {4, "b", 2, 1, 2}}},
      {"a\n\n\nb", {{4, "a", 1, 1, 0}, {4, "b", 3, 1, 3}}},
      {"a\r\rb", {{4, "a", 1, 1, 0}, {4, "b", 3, 1, 3}}},
      {"a\r\n\r\n  b", {{4, "a", 1, 1, 0}, {4, "b", 3, 3, 5}}},
      {"\t x\ty", {{4, "x", 1, 3, 2}, {4, "y", 1, 5, 4}}},
      {"'a\r\nb' x", {{7, "'a\r\nb'", 1, 1, 0}, {4, "x", 2, 4, 6}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
}

// Blanks, control characters and line breaks between tokens, in runs of every mix: all
// fields of every token, the end token included.
TEST(ScannerPositions, RunsBetweenTokens) {
  struct Full {
    int kind;
    std::string val;
    int pos, col, line, offset;
  };
  const struct {
    std::string text;
    std::vector<Full> tokens;
  } cases[] = {
      {"a \t\r\n\t b", {{4, "a", 0, 1, 1, 0}, {4, "b", 6, 3, 2, 7}, {0, "EOF", 7, 4, 2, 8}}},
      // LF CR LF: the LF is an ignored character, CR LF the line break.
      {"a\n\r\n b", {{4, "a", 0, 1, 1, 0}, {4, "b", 4, 2, 2, 5}, {0, "EOF", 5, 3, 2, 6}}},
      {"a \n\r\n\r b", {{4, "a", 0, 1, 1, 0}, {4, "b", 6, 2, 3, 7}, {0, "EOF", 7, 3, 3, 8}}},
      // Each LF LF is one line break.
      {"a\n\n\n\nb", {{4, "a", 0, 1, 1, 0}, {4, "b", 3, 1, 3, 5}, {0, "EOF", 4, 2, 3, 6}}},
      {"a \r\r\n\n b", {{4, "a", 0, 1, 1, 0}, {4, "b", 6, 2, 4, 7}, {0, "EOF", 7, 3, 4, 8}}},
      {"a\x0b\x0c\x1f b", {{4, "a", 0, 1, 1, 0}, {4, "b", 5, 6, 1, 5}, {0, "EOF", 6, 7, 1, 6}}},
      // Line breaks owed by a comment, then more blanks and line breaks.
      {"x --c\n\r  \r\n y",
       {{4, "x", 0, 1, 1, 0}, {4, "y", 11, 2, 3, 12}, {0, "EOF", 12, 3, 3, 13}}},
      {"a \r\n\xc3\xa9 b",
       {{4, "a", 0, 1, 1, 0},
        {178, "\xc3\xa9", 3, 1, 2, 4},
        {4, "b", 5, 3, 2, 7},
        {0, "EOF", 6, 4, 2, 8}}},
      {"a  \r\n", {{4, "a", 0, 1, 1, 0}, {0, "EOF", 4, 1, 2, 5}}},
      {"a \0 b"s,
       {{4, "a", 0, 1, 1, 0},
        {178, "\0"s, 2, 3, 1, 2},
        {4, "b", 4, 5, 1, 4},
        {0, "EOF", 5, 6, 1, 5}}},
      // The step back over a lone "-" lands on the blank after CR LF.
      {"a\r\n -1",
       {{4, "a", 0, 1, 1, 0},
        {178, " ", 3, 2, 2, 3},
        {52, "-", 4, 3, 2, 4},
        {1, "1", 5, 4, 2, 5},
        {0, "EOF", 6, 5, 2, 6}}},
      {"a\r\n\r\n\t-- c", {{4, "a", 0, 1, 1, 0}, {0, "EOF", 8, 6, 3, 10}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("text: \"" + c.text + "\"");
    const std::vector<TqxToken> tokens = Scan(c.text);
    ASSERT_EQ(tokens.size(), c.tokens.size()) << Show(tokens);
    for (std::size_t i = 0; i < tokens.size(); ++i) {
      const Full& e = c.tokens[i];
      const TqxToken& t = tokens[i];
      EXPECT_EQ(t.kind, e.kind) << "token " << i;
      EXPECT_EQ(t.val, e.val) << "token " << i;
      EXPECT_EQ(t.pos, e.pos) << "token " << i;
      EXPECT_EQ(t.col, e.col) << "token " << i;
      EXPECT_EQ(t.line, e.line) << "token " << i;
      EXPECT_EQ(t.offset, e.offset) << "token " << i;
    }
  }
}

TEST(ScannerPositions, EndToken) {
  const struct {
    std::string text;
    int line, col, pos;
  } cases[] = {
      {"", 1, 1, 0},
      {"ab", 1, 3, 2},
      {"ab\r\n", 2, 1, 3},
      {"a\r\n\r\n", 3, 1, 3},
      {"x -- to the end\r\nnext", 2, 5, 20},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const TqxToken end = Scan(c.text).back();
    EXPECT_EQ(end.kind, tkEof);
    EXPECT_EQ(end.val, "EOF");
    EXPECT_EQ(end.line, c.line);
    EXPECT_EQ(end.col, c.col);
    EXPECT_EQ(end.pos, c.pos);
    EXPECT_EQ(end.offset, static_cast<int>(c.text.size()));
  }
  // A view without storage reads as the empty text.
  SQL92Scanner none;
  none.Init(std::string_view{});
  ASSERT_EQ(none.GetTokenCount(), 1);
  EXPECT_EQ(none.GetToken(0).val, "EOF");
  EXPECT_EQ(none.GetToken(0).col, 1);
  EXPECT_EQ(none.GetToken(0).offset, 0);
}

TEST(ScannerPositions, OutOfRangeIndexGivesEndToken) {
  SQL92Scanner scanner;
  EXPECT_EQ(scanner.GetTokenCount(), 0);
  EXPECT_EQ(scanner.GetToken(0).kind, tkEof);
  scanner.Init("select a");
  ASSERT_EQ(scanner.GetTokenCount(), 3);
  const TqxToken* end = &scanner.GetToken(2);
  EXPECT_EQ(end->kind, tkEof);
  EXPECT_EQ(&scanner.GetToken(-1), end);
  EXPECT_EQ(&scanner.GetToken(3), end);
  EXPECT_EQ(&scanner.GetToken(1000), end);
  EXPECT_EQ(scanner.GetToken(0).kind, tkKwSelect);
}

TEST(ScannerPositions, MultiByteCharactersCountOnce) {
  const std::vector<Case> cases = {
      {"\xc3\xa9 x", {{178, "\xc3\xa9", 1, 1, 0}, {4, "x", 1, 3, 2}}},
      {"caf\xc3\xa9", {{4, "caf", 1, 1, 0}, {178, "\xc3\xa9", 1, 4, 3}}},
      {"\xe2\x82\xac\xf0\x9f\x98\x80 y",
       {{178, "\xe2\x82\xac", 1, 1, 0}, {178, "\xf0\x9f\x98\x80", 1, 2, 1}, {4, "y", 1, 4, 3}}},
      {"'\xc3\xa9t\xc3\xa9' x", {{7, "'\xc3\xa9t\xc3\xa9'", 1, 1, 0}, {4, "x", 1, 7, 6}}},
      {"\"\xc3\xa9\" [\xc3\xa9] z",
       {{5, "\"\xc3\xa9\"", 1, 1, 0}, {5, "[\xc3\xa9]", 1, 5, 4}, {4, "z", 1, 9, 8}}},
      // Bytes that are no valid UTF-8 are characters of their own.
      {"\xff\xfe", {{178, "\xff", 1, 1, 0}, {178, "\xfe", 1, 2, 1}}},
      {"\xe2\x82"
       "a",
       {{178, "\xe2", 1, 1, 0}, {178, "\x82", 1, 2, 1}, {4, "a", 1, 3, 2}}},
      {"\xc0\x80", {{178, "\xc0", 1, 1, 0}, {178, "\x80", 1, 2, 1}}},   // overlong
      {"\xed\xa0\x80", {{178, "\xed"}, {178, "\xa0"}, {178, "\x80"}}},  // surrogate
      {"\xf4\x90\x80\x80", {{178, "\xf4"}, {178, "\x90"}, {178, "\x80"}, {178, "\x80"}}},
      {"\xc3", {{178, "\xc3", 1, 1, 0}}},
      {"x\xc3\xa9\r\ny", {{4, "x"}, {178, "\xc3\xa9"}, {4, "y", 2, 1, 3}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
}

// ---------------------------------------------------------------------------------------
// Literals

TEST(ScannerLiterals, Numbers) {
  const std::vector<Case> cases = {
      {"12", {{1, "12"}}},
      {"0", {{1, "0"}}},
      {"007", {{1, "007"}}},
      {"0.5", {{2, "0.5"}}},
      {"1. ", {{178, "1."}}},
      {"1.x", {{178, "1."}, {4, "x"}}},
      {".5", {{2, ".5"}}},
      {".5e3", {{2, ".5e3"}}},
      {"1.5e-3", {{2, "1.5e-3"}}},
      {"1.5E+3", {{2, "1.5E+3"}}},
      {"2.25e10", {{2, "2.25e10"}}},
      {"1.5e", {{178, "1.5e"}}},
      {"1.5e+", {{178, "1.5e+"}}},
      {"1.5e-x", {{178, "1.5e-"}, {4, "x"}}},
      {"1e5", {{1, "1"}, {4, "e5"}}},
      {"1.5.5", {{2, "1.5"}, {2, ".5"}}},
      {"12abc", {{1, "12"}, {4, "abc"}}},
      {"0x1F", {{6, "0x1F"}}},
      {"0X1fab", {{6, "0X1fab"}}},
      {"0x", {{178, "0x"}}},
      {"0xg", {{178, "0x"}, {4, "g"}}},
      {"0x1fg", {{6, "0x1f"}, {4, "g"}}},
      {"00x1", {{1, "00"}, {4, "x1"}}},
      {"0.", {{178, "0."}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
}

TEST(ScannerLiterals, StringsAndQuotedNames) {
  const std::vector<Case> cases = {
      {"'it''s'", {{7, "'it''s'"}}},
      {"''", {{7, "''"}}},
      {"'a' 'b'", {{7, "'a'"}, {7, "'b'"}}},
      {"'a''", {{178, "'a''"}}},
      {"'abc\r\ndef", {{178, "'abc\r\ndef"}}},
      {"'-- not a comment' x", {{7, "'-- not a comment'"}, {4, "x"}}},
      {"\"select\"", {{5, "\"select\""}}},
      {"\"a\"\"b\"", {{5, "\"a\"\"b\""}}},
      {"\"abc", {{178, "\"abc"}}},
      {"[My Table]", {{5, "[My Table]"}}},
      {"[a][b]", {{5, "[a][b]"}}},
      {"[a].[b]", {{5, "[a]"}, {65, "."}, {5, "[b]"}}},
      {"[a[b]", {{5, "[a[b]"}}},
      {"[a][b", {{178, "[a][b"}}},
      {"[abc", {{178, "[abc"}}},
      {"@", {{8, "@"}}},
      {"@P_1x+", {{8, "@P_1x"}, {51, "+"}}},
      {"@@x", {{8, "@"}, {8, "@x"}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
}

TEST(ScannerLiterals, EscapeLiterals) {
  const std::vector<Case> cases = {
      {"{d '2020-01-01'}", {{3, "{d '2020-01-01'}"}}},
      {"{ts '2020-01-01 10:00:00'}", {{3, "{ts '2020-01-01 10:00:00'}"}}},
      {"{t '10:00'}", {{3, "{t '10:00'}"}}},
      {"{ D '2020' }", {{3, "{ D '2020' }"}}},
      {"{\tTS\r\n'x'\r\n}", {{3, "{\tTS\r\n'x'\r\n}"}}},
      {"{dn'x'}", {{3, "{dn'x'}"}}},
      {"{d N'x'}", {{3, "{d N'x'}"}}},
      {"{d 'it''s'}", {{3, "{d 'it''s'}"}}},
      {"{x '1'}", {{178, "{"}, {4, "x"}, {7, "'1'"}, {178, "}"}}},
      {"{d  '1'}", {{178, "{d "}, {7, "'1'"}, {178, "}"}}},
      {"{d '1'  }", {{178, "{d '1' "}, {178, "}"}}},
      {"{d '1' x}", {{178, "{d '1' "}, {4, "x"}, {178, "}"}}},
      {"{d '2020", {{178, "{d '2020"}}},
      {"{d 1}", {{178, "{d "}, {1, "1"}, {178, "}"}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
}

// ---------------------------------------------------------------------------------------
// Operators and start characters

TEST(ScannerOperators, AllForms) {
  const std::vector<Case> cases = {
      {"<>", {{170, "<>"}}},
      {"!=", {{171, "!="}}},
      {"<=", {{172, "<="}}},
      {"!>", {{173, "!>"}}},
      {"<", {{174, "<"}}},
      {">=", {{175, ">="}}},
      {"!<", {{176, "!<"}}},
      {">", {{177, ">"}}},
      {";", {{9, ";"}}},
      {",", {{12, ","}}},
      {"(", {{19, "("}}},
      {")", {{20, ")"}}},
      {"*", {{26, "*"}}},
      {"=", {{27, "="}}},
      {".*", {{28, ".*"}}},
      {"+", {{51, "+"}}},
      {"-", {{52, "-"}}},
      {"/", {{53, "/"}}},
      {"%", {{54, "%"}}},
      {"~", {{55, "~"}}},
      {".", {{65, "."}}},
      {"! ", {{178, "!"}}},
      {"!x", {{178, "!"}, {4, "x"}}},
      {"< >", {{174, "<"}, {177, ">"}}},
      {"<<=", {{174, "<"}, {172, "<="}}},
      {"a.*", {{4, "a"}, {28, ".*"}}},
      {"a . b", {{4, "a"}, {65, "."}, {4, "b"}}},
      {"a.b", {{4, "a"}, {65, "."}, {4, "b"}}},
      {"x=-1", {{4, "x"}, {27, "="}, {52, "-"}, {1, "1"}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
}

// Every byte alone: what kind of token it starts, classified independently of the
// scanner's start table.
TEST(ScannerOperators, EveryStartCharacter) {
  const std::string single = ",;()*=+-/%~.<>";
  const int singleKinds[] = {12, 9, 19, 20, 26, 27, 51, 52, 53, 54, 55, 65, 174, 177};
  for (int c = 0; c < 256; ++c) {
    const std::string text(1, static_cast<char>(c));
    SCOPED_TRACE("byte " + std::to_string(c));
    const std::vector<TqxToken> tokens = Scan(text);
    if (c >= 1 && c <= 32) {
      EXPECT_EQ(tokens.size(), 1u);  // ignored: only the end token
      continue;
    }
    ASSERT_EQ(tokens.size(), 2u);
    int expected = tkError;  // also for the unterminated ' " [ { and a lone !
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_')
      expected = c == 'c' || c == 'C' ? tkKwC : tkIdentifier;
    else if (c >= '0' && c <= '9')
      expected = tkInteger;
    else if (c == '@')
      expected = tkParameter;
    else if (auto at = single.find(static_cast<char>(c)); at != std::string::npos && c != 0)
      expected = singleKinds[at];
    EXPECT_EQ(tokens[0].kind, expected);
    EXPECT_EQ(tokens[0].val, text);
  }
}

// ---------------------------------------------------------------------------------------
// Keywords

struct KeywordEntry {
  std::string word;
  int kind;
};
// The keywords in table order; their kinds are the numbers 10..169 that are not
// punctuation, ascending.
std::vector<KeywordEntry> ExpectedKeywords() {
  std::istringstream words(
      "order by asc desc union except intersect all where having select distinct group as "
      "from cross join inner left right full outer on or and not is null like escape "
      "between in exists some any current_timestamp current_user session_user system_user "
      "case when then else end bigint int8 bigserial serial8 bit varbit varchar character "
      "char interval numeric decimal boolean bool box bytea cidr circle date double "
      "precision float8 inet integer int int4 line lseg macaddr money path point polygon "
      "real float4 smallint int2 serial serial4 text time timetz timestamp timestamptz "
      "varying without zone with avg max min sum count cast ada c catalog_name "
      "character_set_catalog character_set_name character_set_schema class_origin cobol "
      "collation_catalog collation_name collation_schema column_name command_function "
      "committed condition_number connection_name constraint_catalog constraint_name "
      "constraint_schema cursor_name data datetime_interval_code "
      "datetime_interval_precision dynamic_function fortran length message_length "
      "message_octet_length message_text more mumps name nullable number pascal pli "
      "repeatable returned_length returned_octet_length returned_sqlstate row_count scale "
      "schema_name serializable server_name subclass_origin table_name type uncommitted "
      "unnamed");
  const std::set<int> punctuation = {12, 19, 20, 26, 27, 28, 51, 52, 53, 54, 55, 65};
  std::vector<KeywordEntry> out;
  int kind = 10;
  for (std::string word; words >> word; ++kind) {
    while (punctuation.count(kind) != 0)
      ++kind;
    out.push_back({word, kind});
  }
  return out;
}
const std::vector<KeywordEntry> kExpectedKeywords = ExpectedKeywords();

std::string Upper(std::string s) {
  for (char& c : s)
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

TEST(ScannerKeywords, TableHasEveryWordWithItsKindInOrder) {
  const auto table = SQL92Scanner::Keywords();
  ASSERT_EQ(kExpectedKeywords.back().kind, 169);
  ASSERT_EQ(table.size(), kExpectedKeywords.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(table[i].word, kExpectedKeywords[i].word);
    EXPECT_EQ(table[i].kind, kExpectedKeywords[i].kind) << table[i].word;
  }
}

TEST(ScannerKeywords, EveryKeywordInAnyLetterCase) {
  for (const KeywordEntry& k : kExpectedKeywords) {
    std::string mixed = k.word;
    for (std::size_t i = 0; i < mixed.size(); i += 2)
      mixed[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(mixed[i])));
    for (const std::string& text : {k.word, Upper(k.word), mixed}) {
      ExpectTokens(text, {{k.kind, text}});
      EXPECT_EQ(SQL92Scanner::FindKeyword(text), k.kind);
    }
    // Quoted, as a parameter or longer, it is no keyword.
    ExpectTokens("\"" + k.word + "\"", {{5, "\"" + k.word + "\""}});
    ExpectTokens("[" + k.word + "]", {{5, "[" + k.word + "]"}});
    ExpectTokens("@" + k.word, {{8, "@" + k.word}});
    ExpectTokens(k.word + "_", {{4, k.word + "_"}});
    // With more text after it (the word is then compared in place, in wide steps).
    const std::string more = " 12345678901234567890123456789";
    for (const std::string& text : {Upper(k.word), mixed}) {
      ExpectTokens(text + more, {{k.kind, text}, {1, more.substr(1)}});
      ExpectTokens(text + "_" + more, {{4, text + "_"}, {1, more.substr(1)}});
      // Its tail: what the scanner finds in place agrees with the lookup of the word alone.
      const std::string tail = text.substr(1);
      if (tail.empty())
        continue;
      const int tailKind = SQL92Scanner::FindKeyword(tail);
      ExpectTokens(tail + more,
                   {{tailKind != 0 ? tailKind : tkIdentifier, tail}, {1, more.substr(1)}});
    }
  }
}

TEST(ScannerKeywords, WordsAroundTheTable) {
  const std::vector<Case> cases = {
      {"SeLeCt Title FROM [My Table]",
       {{23, "SeLeCt"}, {4, "Title"}, {30, "FROM"}, {5, "[My Table]"}}},
      {"Name", {{151, "Name"}}},  // non-reserved
      {"ada date", {{120, "ada"}, {84, "date"}}},
      {"selects _select select1", {{4, "selects"}, {4, "_select"}, {4, "select1"}}},
      {"DATETIME_INTERVAL_PRECISION", {{142, "DATETIME_INTERVAL_PRECISION"}}},
      {"datetime_interval_precisions", {{4, "datetime_interval_precisions"}}},
      {"_", {{4, "_"}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
  EXPECT_EQ(SQL92Scanner::FindKeyword(""), 0);
  EXPECT_EQ(SQL92Scanner::FindKeyword("s\xc3\xa9lect"), 0);
  // Folding is ASCII only: a dotted capital I is not an i.
  EXPECT_EQ(SQL92Scanner::FindKeyword("\xc4\xb0n"), 0);
  ExpectTokens("\xc4\xb0N", {{178, "\xc4\xb0"}, {4, "N"}});
}

TEST(ScannerKeywords, NonReservedRange) {
  int count = 0;
  for (const TqxKeyword& k : SQL92Scanner::Keywords())
    count += k.kind >= kFirstNonReservedKeyword && k.kind <= kLastNonReservedKeyword;
  EXPECT_EQ(count, 50);
  EXPECT_EQ(SQL92Scanner::FindKeyword("ADA"), kFirstNonReservedKeyword);
  EXPECT_EQ(SQL92Scanner::FindKeyword("Unnamed"), kLastNonReservedKeyword);
}

// A dialect that derives from the SQL-92 scanner keeps its own keyword check: here "qualify"
// becomes the keyword "select" and "select" an identifier.
class RenamingScanner : public SQL92Scanner {
 protected:
  void CheckLiteral(TqxToken& token) override {
    SQL92Scanner::CheckLiteral(token);
    if (token.kind == tkKwSelect)
      token.kind = tkIdentifier;
    else if (token.val == "qualify")
      token.kind = tkKwSelect;
  }
};

TEST(ScannerKeywords, DerivedDialectKeywordCheckIsUsed) {
  RenamingScanner scanner;
  scanner.Init("qualify select from");
  ASSERT_EQ(scanner.GetTokenCount(), 4);
  EXPECT_EQ(scanner.GetToken(0).kind, tkKwSelect);
  EXPECT_EQ(scanner.GetToken(1).kind, tkIdentifier);
  EXPECT_EQ(scanner.GetToken(2).kind, tkKwFrom);
  EXPECT_EQ(scanner.GetToken(2).col, 16);
}

// ---------------------------------------------------------------------------------------
// Line comments

TEST(ScannerComments, LineComments) {
  const std::vector<Case> cases = {
      {"--", {}},
      {"x -- c", {{4, "x"}}},
      {"x --", {{4, "x"}}},
      {"x--y", {{4, "x"}}},
      // Ordinary line breaks don't end a comment: it runs to the end of the text.
      {"x -- c\r\nmore", {{4, "x"}}},
      {"x -- c\nmore\rand\r\nmore", {{4, "x"}}},
      // A LF directly followed by CR ends it.
      {"x --c\n\ry", {{4, "x", 1, 1, 0}, {4, "y", 2, 1, 7}}},
      {"x --c\r\nd\n\ry", {{4, "x", 1, 1, 0}, {4, "y", 3, 1, 9}}},
      {"a --\n\r-- b\n\rc", {{4, "a"}, {121, "c", 3, 1, 12}}},
      {"--x\n\r", {}},
      // One "-" is an operator.
      {"x -1", {{4, "x", 1, 1, 0}, {52, "-", 1, 3, 2}, {1, "1", 1, 4, 3}}},
      {"a - - b", {{4, "a"}, {52, "-"}, {52, "-"}, {4, "b"}}},
      {"x -", {{4, "x"}, {52, "-", 1, 3, 2}}},
      {"1--2", {{1, "1"}}},
      // A line break after the "-" is counted once.
      {"x -\r\ny", {{4, "x", 1, 1, 0}, {52, "-", 1, 3, 2}, {4, "y", 2, 1, 4}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
  EXPECT_EQ(Scan("x -- c\r\nmore").back().line, 2);
  EXPECT_EQ(Scan("--x\n\r").back().line, 2);
}

// The step back over a lone "-" counts characters while the buffer counts bytes: after
// earlier CR LF pairs or multi-byte characters it lands early and re-delivers what lies
// between. This is relied on and kept.
TEST(ScannerComments, StepBackAfterEarlierLineBreaks) {
  const std::vector<Case> cases = {
      {"a\r\nb\r\nc - 1",
       {{4, "a", 1, 1, 0},
        {4, "b", 2, 1, 2},
        {121, "c", 3, 1, 4},
        {121, "c", 3, 3, 6},
        {52, "-", 3, 5, 8},
        {1, "1", 3, 7, 10}}},
      {"a\r\n-1", {{4, "a", 1, 1, 0}, {178, "\n", 3, 0, 2}, {52, "-", 3, 1, 3}, {1, "1", 3, 2, 4}}},
      {"a\r\n-", {{4, "a", 1, 1, 0}, {178, "\n", 3, 0, 2}, {52, "-", 3, 1, 3}}},
      {"a\r\n--x", {{4, "a", 1, 1, 0}}},
      // A blank re-read is an error token as well.
      {"\xc3\xa9 -1",
       {{178, "\xc3\xa9", 1, 1, 0}, {178, " ", 1, 3, 2}, {52, "-", 1, 4, 3}, {1, "1", 1, 5, 4}}},
      // Landing inside a multi-byte character: its bytes are read one by one.
      {"\xc3\xa9\xe2\x82\xac -1",
       {{178, "\xc3\xa9", 1, 1, 0},
        {178, "\xe2\x82\xac", 1, 2, 1},
        {178, "\x82", 1, 4, 3},
        {178, "\xac", 1, 5, 4},
        {52, "-", 1, 7, 6},
        {1, "1", 1, 8, 7}}},
  };
  for (const Case& c : cases)
    ExpectTokens(c.text, c.tokens);
  EXPECT_EQ(Scan("a\r\n-1").back().line, 3);
}

// ---------------------------------------------------------------------------------------
// Whole texts

TEST(ScannerText, TokenTextsAreSlicesOfTheInput) {
  const std::string text =
      "SELECT o.\"Id\", [c].[Name], SUM(l.qty * 1.5e2) AS total -- to the end\n\r"
      "FROM orders o INNER JOIN customers c ON o.cid = c.id\r\n"
      "WHERE o.date >= {d '2020-01-01'} AND o.note <> 'it''s' OR @p != 0x1F;\n"
      "select \"\xc3\xa9\", '\xe2\x82\xac' from t";
  const std::vector<TqxToken> tokens = Scan(text);
  ASSERT_GT(tokens.size(), 40u);
  for (const TqxToken& t : tokens) {
    if (t.kind == tkEof)
      break;
    EXPECT_NE(t.kind, tkError) << t.val;
    ASSERT_LE(static_cast<std::size_t>(t.offset) + t.val.size(), text.size());
    EXPECT_EQ(text.substr(static_cast<std::size_t>(t.offset), t.val.size()), t.val);
  }
  EXPECT_EQ(tokens[0].kind, tkKwSelect);
  EXPECT_EQ(tokens.back().offset, static_cast<int>(text.size()));
}

TEST(ScannerText, CreatedByClass) {
  const TqxScannerClass& cls = SQL92Scanner::StaticClass();
  EXPECT_EQ(cls.ClassName(), "SQL92Scanner");
  EXPECT_TRUE(cls.InheritsFrom(TqxBaseScanner::StaticClass()));
  EXPECT_TRUE(TqxBaseScanner::StaticClass().IsAbstract());
  EXPECT_THROW(TqxBaseScanner::StaticClass().Create(), EqxError);
  std::unique_ptr<TqxBaseScanner> scanner = cls.Create();
  EXPECT_EQ(&scanner->ClassType(), &cls);
  scanner->Init("select 1");
  EXPECT_EQ(scanner->GetTokenCount(), 3);
  EXPECT_EQ(scanner->GetToken(1).kind, tkInteger);
}

}  // namespace
}  // namespace qorvex
