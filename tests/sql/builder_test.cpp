#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "qorvex/syntax/sql92_syntax_provider.h"
#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

// Quotes with the given marks; the rest is irrelevant to the builders.
class QuotingProvider : public MinimalDialect {
 public:
  QuotingProvider(std::string Begin, std::string End)
      : Begin(std::move(Begin)), End(std::move(End)) {}
  std::string Begin, End;
  std::string GetQuoteBegin() const override { return Begin; }
  std::string GetQuoteEnd() const override { return End; }
};

const QuotingProvider kQuotes("\"", "\"");

// Runs a script of builder steps separated by "|" and returns the text written. "K:x",
// "Y:x", "I:x", "N:x" and "S:x" write x as keyword, symbol, identifier (quoted by
// `quotes`), number or string; "Q:x" writes x as an identifier that was quoted and
// "F:x" as a function word; "space", "force", "nl" and "nl-or-space" call Space,
// SpaceForce, NewLine and NewLineOrSpace(true).
std::string Write(const TSQLBuilderClass& Class, const std::string& script,
                  const TastSyntaxProvider* quotes = &kQuotes) {
  std::string out;
  std::unique_ptr<TSQLBuilder> b = Class.Create(&out);
  b->ResetBuilder();
  std::istringstream steps(script);
  for (std::string step; std::getline(steps, step, '|');) {
    const std::string text = step.size() > 1 && step[1] == ':' ? step.substr(2) : "";
    if (step == "space")
      b->Space();
    else if (step == "force")
      b->SpaceForce();
    else if (step == "nl")
      b->NewLine();
    else if (step == "nl-or-space")
      b->NewLineOrSpace(true);
    else if (step[0] == 'K')
      b->WriteKeyword(text);
    else if (step[0] == 'Y')
      b->WriteSymbol(text);
    else if (step[0] == 'I')
      b->WriteIdentifier(text, quotes);
    else if (step[0] == 'Q')
      b->WriteIdentifier(text, quotes, true);
    else if (step[0] == 'F')
      b->WriteFunctionWord(text, quotes);
    else if (step[0] == 'N')
      b->WriteNumber(text);
    else if (step[0] == 'S')
      b->WriteString(text);
    else
      ADD_FAILURE() << "unknown step " << step;
  }
  return out;
}

TEST(SQLBuilder, LayoutCollapsingPlainTextAndHTML) {
  const struct {
    const char* what;
    const char* script;
    const char* plain;
    const char* html;  // nullptr: numbers or strings, which HTML does not write
  } cases[] = {
      {"space twice writes one", "K:A|space|space|K:B", "A B", "<b>a</b> <b>b</b>"},
      {"space at the start writes nothing", "space|Y:(", "(", "<font color=#7f7fff>(</font>"},
      {"space after a line break writes nothing", "Y:x|nl|space|Y:y", "x\r\ny",
       "<font color=#7f7fff>x</font><br/><font color=#7f7fff>y</font>"},
      {"new line twice writes one; none at the start", "nl|I:a|nl|nl|I:b", "a\r\nb",
       "<i>a</i><br/><i>b</i>"},
      {"space force after a space", "N:1|space|force|N:2", "1  2", nullptr},
      {"space force after a line break", "S:'s'|nl|force|S:'t'", "'s'\r\n 't'", nullptr},
      // The plain-text space is written as a symbol and so ends the line start; the HTML
      // space is written raw and leaves it, so the following line break is dropped there.
      {"space force at the start, then a line break", "force|nl|K:K", " \r\nK", " <b>k</b>"},
      {"multi-line select: one clause per line, no trailing space",
       "nl-or-space|K:SELECT|space|I:a|Y:,|space|I:b c|nl-or-space|space|K:FROM|space|I:t",
       "SELECT a, \"b c\"\r\nFROM t",
       "<b>select</b> <i>a</i><font color=#7f7fff>,</font> <i>\"b c\"</i><br/><b>from</b> "
       "<i>t</i>"},
      {"nothing is escaped and keywords keep their text in plain text",
       "K:Not|space|Y:<>|space|I:a<b", "Not <> \"a<b\"",
       "<b>not</b> <font color=#7f7fff><></font> <i>\"a<b\"</i>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), c.script), c.plain);
    if (c.html != nullptr) {
      EXPECT_EQ(Write(TSQLBuilderHTML::StaticClass(), c.script), c.html);
    }
  }
}

TEST(SQLBuilder, IdentifierQuoting) {
  const struct {
    const char* name;
    const char* written;
  } cases[] = {
      {"abc", "abc"},       {"_x1", "_x1"},
      {"SELECT", "SELECT"},  // this dialect reserves no word
      {"a b", "\"a b\""},   {"1abc", "\"1abc\""},
      {"", "\"\""},         {"a-b", "\"a-b\""},
      {" a", "\" a\""},     {"na\xC3\xAFve", "\"na\xC3\xAFve\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), std::string("I:") + c.name), c.written);
  }
  // Different opening and closing quotes; the quotes sit inside the HTML mark-up.
  const QuotingProvider brackets("[", "]");
  EXPECT_EQ(Write(TSQLBuilderHTML::StaticClass(), "I:my col", &brackets), "<i>[my col]</i>");
  // Empty quotes and no provider at all write the name bare.
  const MinimalDialect none;
  EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), "I:my col", &none), "my col");
  EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), "I:my col|space|I:|Y:;", nullptr),
            "my col ;");
}

// With a dialect that reserves words: a reserved word is quoted as a name but not as a
// function word; a name that was quoted stays quoted whatever it holds.
TEST(SQLBuilder, ReservedWordsAndQuotedNames) {
  const TastSQL92SyntaxProvider sql92;
  const struct {
    const char* script;
    const char* written;
  } cases[] = {
      {"I:select", "\"select\""},
      {"I:Count", "\"Count\""},
      {"I:DATE", "\"DATE\""},
      {"I:current_user", "\"current_user\""},
      {"I:name", "name"},  // not reserved: the grammar takes it as a name
      {"I:ada", "ada"},
      {"I:selected", "selected"},
      {"I:db|Y:.|I:order", "db.\"order\""},
      {"Q:One", "\"One\""},
      {"Q:a\"b", "\"a\"\"b\""},
      {"Q:", "\"\""},
      {"F:Count|Y:(*)", "Count(*)"},
      {"F:CURRENT_TIMESTAMP", "CURRENT_TIMESTAMP"},
      {"F:my f", "\"my f\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.script);
    EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), c.script, &sql92), c.written);
  }
  EXPECT_EQ(Write(TSQLBuilderHTML::StaticClass(), "I:from|space|Q:x", &sql92),
            "<i>\"from\"</i> <i>\"x\"</i>");
  // Without quote characters the dialect has no way to quote: names go out bare.
  const MinimalDialect none;
  EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), "Q:One", &none), "One");
}

TEST(SQLBuilder, HTMLHasNoNumbersOrStrings) {
  std::string out;
  TSQLBuilderHTML b(&out);
  b.ResetBuilder();
  b.WriteKeyword("WHERE");
  b.Space();
  try {
    b.WriteNumber("1");
    FAIL() << "number written";
  } catch (const EqxError& e) {
    EXPECT_STREQ(e.what(), "Abstract error");
  }
  EXPECT_THROW(b.WriteString("'x'"), EqxError);
  // The builder stays usable.
  b.WriteIdentifier("a", nullptr);
  EXPECT_EQ(out, "<b>where</b> <i>a</i>");
}

// A builder made by its class without a stream refuses to write instead of crashing.
TEST(SQLBuilder, WithoutStreamRefusesToWrite) {
  std::unique_ptr<TSQLBuilder> none = TSQLBuilderPlainText::StaticClass().Create(nullptr);
  EXPECT_THROW(none->WriteKeyword("A"), EqxError);
  EXPECT_THROW(none->ResetBuilder(), EqxError);
}

}  // namespace
}  // namespace qorvex
