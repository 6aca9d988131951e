#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "parser_test_util.h"
#include "qorvex/scanner/buffer.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/statements.h"

namespace qorvex {
namespace {

using parsertest::ReadCorpus;

// A token as the tests compare it.
struct Tok {
  int kind;
  std::string val;
  int line = 0;  // 0: place not compared
  int col = 0;
  int pos = 0;
  int offset = -1;  // -1: not compared
};

// The tokens of a text, with the scanner whose copy of the text their texts view.
struct ScannedTokens : std::vector<TqxToken> {
  std::shared_ptr<SQL92Scanner> scanner = std::make_shared<SQL92Scanner>();
};

ScannedTokens Scan(std::string_view text) {
  ScannedTokens tokens;
  tokens.scanner->Init(text);
  for (std::int32_t i = 0; i < tokens.scanner->GetTokenCount(); ++i)
    tokens.push_back(tokens.scanner->GetToken(i));
  return tokens;
}

std::string Show(const std::vector<TqxToken>& tokens) {
  std::string s;
  for (const TqxToken& t : tokens) {
    s += std::to_string(t.kind) + ":" + std::string(t.val) + "@" + std::to_string(t.line) + ":" +
         std::to_string(t.col) + "/" + std::to_string(t.pos) + " ";
  }
  return s;
}

// Compares every token; the end token is implied after `expected` unless it names it.
void ExpectTokens(std::string_view text, std::vector<Tok> expected) {
  SCOPED_TRACE("text: \"" + std::string(text) + "\"");
  if (expected.empty() || expected.back().kind != tkEof)
    expected.push_back({tkEof, "EOF"});
  const ScannedTokens tokens = Scan(text);
  ASSERT_EQ(tokens.size(), expected.size()) << Show(tokens);
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
    if (e.offset >= 0) {
      EXPECT_EQ(t.offset, e.offset) << "token " << i;
    }
  }
}

// ---------------------------------------------------------------------------------------
// Buffer

TEST(ScannerBuffer, ReadPeekPositionAndSlices) {
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
// Texts and their tokens (corpus/scan_tokens.txt): places across line breaks, blanks and
// multi-byte characters, the end token, literals, operators, keywords around the table,
// line comments and the step back over a lone "-".

TEST(ScannerCorpus, EveryTextGivesItsTokens) {
  const auto rows = parsertest::ReadRows("scan_tokens.txt");
  EXPECT_GE(rows.size(), 130u);
  for (const std::vector<std::string>& row : rows) {
    std::vector<Tok> tokens;
    for (std::size_t i = 1; i < row.size(); ++i) {
      Tok t{0, row[i].substr(row[i].find(' ') + 1)};
      char* rest = nullptr;
      t.kind = static_cast<int>(std::strtol(row[i].c_str(), &rest, 10));
      if (*rest == '@')
        std::sscanf(rest + 1, "%d:%d/%d/%d", &t.line, &t.col, &t.pos, &t.offset);
      tokens.push_back(t);
    }
    ExpectTokens(row[0], tokens);
  }
}

TEST(ScannerPositions, TextWithoutStorageAndOutOfRangeIndexes) {
  // A view without storage reads as the empty text.
  SQL92Scanner none;
  none.Init(std::string_view{});
  ASSERT_EQ(none.GetTokenCount(), 1);
  EXPECT_EQ(none.GetToken(0).val, "EOF");
  EXPECT_EQ(none.GetToken(0).col, 1);
  EXPECT_EQ(none.GetToken(0).offset, 0);

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

// ---------------------------------------------------------------------------------------
// Operators and start characters

// Every byte alone: what kind of token it starts, classified independently of the
// scanner's start table.
TEST(ScannerOperators, EveryStartCharacter) {
  const std::string single = ",;()*=+-/%~.<>";
  const int singleKinds[] = {12, 9, 19, 20, 26, 27, 51, 52, 53, 54, 55, 65, 174, 177};
  for (int c = 0; c < 256; ++c) {
    const std::string text(1, static_cast<char>(c));
    SCOPED_TRACE("byte " + std::to_string(c));
    const ScannedTokens tokens = Scan(text);
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
  std::istringstream lines(ReadCorpus("scan_keywords.txt"));
  const std::set<int> punctuation = {12, 19, 20, 26, 27, 28, 51, 52, 53, 54, 55, 65};
  std::vector<KeywordEntry> out;
  int kind = 10;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line[0] == '#' ? "" : line);
    for (std::string word; words >> word; ++kind) {
      while (punctuation.count(kind) != 0)
        ++kind;
      out.push_back({word, kind});
    }
  }
  return out;
}
const std::vector<KeywordEntry> kExpectedKeywords = ExpectedKeywords();

std::string Upper(std::string s) {
  for (char& c : s)
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

// The table, its non-reserved range, and words that are no keyword.
TEST(ScannerKeywords, TableHasEveryWordWithItsKindInOrder) {
  const auto table = SQL92Scanner::Keywords();
  ASSERT_EQ(kExpectedKeywords.back().kind, 169);
  ASSERT_EQ(table.size(), kExpectedKeywords.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(table[i].word, kExpectedKeywords[i].word);
    EXPECT_EQ(table[i].kind, kExpectedKeywords[i].kind) << table[i].word;
  }
  int count = 0;
  for (const TqxKeyword& k : SQL92Scanner::Keywords())
    count += k.kind >= kFirstNonReservedKeyword && k.kind <= kLastNonReservedKeyword;
  EXPECT_EQ(count, 50);
  EXPECT_EQ(SQL92Scanner::FindKeyword("ADA"), kFirstNonReservedKeyword);
  EXPECT_EQ(SQL92Scanner::FindKeyword("Unnamed"), kLastNonReservedKeyword);
  EXPECT_EQ(SQL92Scanner::FindKeyword(""), 0);
  EXPECT_EQ(SQL92Scanner::FindKeyword("s\xc3\xa9lect"), 0);
  EXPECT_EQ(SQL92Scanner::FindKeyword("\xc4\xb0n"), 0);  // folding is ASCII only
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

TEST(ScriptStatements, SplitOnSemicolonTokensOnly) {
  const struct {
    std::string script;
    std::vector<std::string> texts;
  } cases[] = {
      {"", {}},
      {" ;; ; ", {}},
      {"select 1", {"select 1"}},
      {"select 1;select 2;", {"select 1", "select 2"}},
      {"select ';' from t; select \"a;b\" -- x;y\n from u",
       {"select ';' from t", "select \"a;b\" -- x;y\n from u"}},
      // A line comment runs to the end of the text, ";" and all.
      {"select 1 ;\n\n  select 2 -- end; select 3", {"select 1 ", "select 2 -- end; select 3"}},
      // A "-" after blank lines does not make the split step back into a string literal.
      {"select 1;\n\nselect 'a;'-1 from t;select 2",
       {"select 1", "select 'a;'-1 from t", "select 2"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.script);
    std::vector<std::string> texts;
    for (const TqxStatementText& statement : SplitStatements(c.script)) {
      // The text starts at the statement's offset in the script.
      EXPECT_EQ(c.script.compare(statement.offset, statement.text.size(), statement.text), 0);
      texts.emplace_back(statement.text);
    }
    EXPECT_EQ(texts, c.texts);
  }
}

// Scripts of several token chunks, split while scanning: the statements, their places and
// the tokens seen in batches agree with a scan that keeps every token, also for
// statements and ";" that lie on a chunk boundary (1030: the 1024th ";" ends the fifth
// chunk) and for a script that ends without one.
TEST(ScriptStatements, LongScriptsSplitAcrossTokenChunks) {
  for (const int count : {340, 409, 1000, 1030}) {  // 409: the end token fills a chunk
    std::string script;
    for (int i = 0; i < count; ++i)
      script += "select a" + std::to_string(i) + " from t" + (i % 7 == 0 ? "\r\n" : " ") + ";";
    script += " select z";
    SCOPED_TRACE(count);
    SQL92Scanner whole;
    whole.Init(script);
    std::vector<std::int32_t> firsts;  // index of each statement's first token
    for (std::int32_t i = 0; i < whole.GetTokenCount(); ++i) {
      if (whole.GetToken(i).kind != tkSemicolon && whole.GetToken(i).kind != tkEof &&
          (i == 0 || whole.GetToken(i - 1).kind == tkSemicolon))
        firsts.push_back(i);
    }
    const std::vector<TqxStatementText> statements = SplitStatements(script);
    ASSERT_EQ(statements.size(), firsts.size());
    for (std::size_t k = 0; k < firsts.size(); ++k) {
      const TqxToken& first = whole.GetToken(firsts[k]);
      EXPECT_EQ(statements[k].offset, first.offset);
      EXPECT_EQ(statements[k].pos, first.pos);
      EXPECT_EQ(statements[k].line, first.line);
      EXPECT_EQ(statements[k].col, first.col);
    }
    EXPECT_EQ(statements.back().text, "select z");

    std::vector<std::pair<std::int32_t, std::string>> seen;
    SQL92Scanner batches;
    batches.ScanInBatches(
        script,
        [](void* context, const TqxToken* tokens, std::int32_t n) {
          for (std::int32_t i = 0; i < n; ++i)
            static_cast<decltype(seen)*>(context)->emplace_back(tokens[i].pos, tokens[i].val);
        },
        &seen);
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(whole.GetTokenCount()));
    for (std::size_t i = 0; i < seen.size(); ++i) {
      const TqxToken& t = whole.GetToken(static_cast<std::int32_t>(i));
      ASSERT_EQ(seen[i], std::make_pair(t.pos, std::string(t.val)));
    }
    EXPECT_EQ(batches.GetTokenCount(), 0);
  }
}

}  // namespace
}  // namespace qorvex
