#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

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

using Script = std::function<void(TSQLBuilder&)>;

std::string Write(const TSQLBuilderClass& Class, const Script& Steps) {
  std::string out;
  std::unique_ptr<TSQLBuilder> b = Class.Create(&out);
  b->ResetBuilder();
  Steps(*b);
  return out;
}

struct LayoutCase {
  const char* what;
  Script steps;
  const char* plain;
  const char* html;
};

const QuotingProvider kQuotes("\"", "\"");

const LayoutCase kLayout[] = {
    {"space twice writes one",
     [](TSQLBuilder& b) {
       b.WriteKeyword("A");
       b.Space();
       b.Space();
       b.WriteKeyword("B");
     },
     "A B", "<b>a</b> <b>b</b>"},
    {"space at the start writes nothing",
     [](TSQLBuilder& b) {
       b.Space();
       b.WriteSymbol("(");
     },
     "(", "<font color=#7f7fff>(</font>"},
    {"space after a line break writes nothing",
     [](TSQLBuilder& b) {
       b.WriteSymbol("x");
       b.NewLine();
       b.Space();
       b.WriteSymbol("y");
     },
     "x\r\ny", "<font color=#7f7fff>x</font><br/><font color=#7f7fff>y</font>"},
    {"new line twice writes one; none at the start",
     [](TSQLBuilder& b) {
       b.NewLine();
       b.WriteIdentifier("a", &kQuotes);
       b.NewLine();
       b.NewLine();
       b.WriteIdentifier("b", &kQuotes);
     },
     "a\r\nb", "<i>a</i><br/><i>b</i>"},
    {"space force after a space",
     [](TSQLBuilder& b) {
       b.WriteNumber("1");
       b.Space();
       b.SpaceForce();
       b.WriteNumber("2");
     },
     "1  2", nullptr},
    {"space force after a line break",
     [](TSQLBuilder& b) {
       b.WriteString("'s'");
       b.NewLine();
       b.SpaceForce();
       b.WriteString("'t'");
     },
     "'s'\r\n 't'", nullptr},
    // The plain-text space is written as a symbol and so ends the line start; the HTML
    // space is written raw and leaves it, so the following line break is dropped there.
    {"space force at the start, then a line break",
     [](TSQLBuilder& b) {
       b.SpaceForce();
       b.NewLine();
       b.WriteKeyword("K");
     },
     " \r\nK", " <b>k</b>"},
    {"multi-line select: one clause per line, no trailing space",
     [](TSQLBuilder& b) {
       b.NewLineOrSpace(true);
       b.WriteKeyword("SELECT");
       b.Space();
       b.WriteIdentifier("a", &kQuotes);
       b.WriteSymbol(",");
       b.Space();
       b.WriteIdentifier("b c", &kQuotes);
       b.NewLineOrSpace(true);
       b.Space();
       b.WriteKeyword("FROM");
       b.Space();
       b.WriteIdentifier("t", &kQuotes);
     },
     "SELECT a, \"b c\"\r\nFROM t",
     "<b>select</b> <i>a</i><font color=#7f7fff>,</font> <i>\"b c\"</i><br/><b>from</b> <i>t</i>"},
    {"nothing is escaped and keywords keep their text in plain text",
     [](TSQLBuilder& b) {
       b.WriteKeyword("Not");
       b.Space();
       b.WriteSymbol("<>");
       b.Space();
       b.WriteIdentifier("a<b", &kQuotes);
     },
     "Not <> \"a<b\"", "<b>not</b> <font color=#7f7fff><></font> <i>\"a<b\"</i>"},
};

TEST(SQLBuilder, LayoutCollapsingPlainTextAndHTML) {
  for (const LayoutCase& c : kLayout) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(), c.steps), c.plain);
    if (c.html != nullptr) {
      EXPECT_EQ(Write(TSQLBuilderHTML::StaticClass(), c.steps), c.html);
    }
  }
}

TEST(SQLBuilder, IdentifierQuoting) {
  const struct {
    const char* name;
    const char* written;
  } cases[] = {
      {"abc", "abc"},       {"_x1", "_x1"},
      {"SELECT", "SELECT"},  // reserved words are not checked
      {"a b", "\"a b\""},   {"1abc", "\"1abc\""},
      {"", "\"\""},         {"a-b", "\"a-b\""},
      {" a", "\" a\""},     {"na\xC3\xAFve", "\"na\xC3\xAFve\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(),
                    [&](TSQLBuilder& b) { b.WriteIdentifier(c.name, &kQuotes); }),
              c.written);
  }
  // Different opening and closing quotes; the quotes sit inside the HTML mark-up.
  const QuotingProvider brackets("[", "]");
  EXPECT_EQ(Write(TSQLBuilderHTML::StaticClass(),
                  [&](TSQLBuilder& b) { b.WriteIdentifier("my col", &brackets); }),
            "<i>[my col]</i>");
  // Empty quotes and no provider at all write the name bare.
  const MinimalDialect none;
  EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(),
                  [&](TSQLBuilder& b) { b.WriteIdentifier("my col", &none); }),
            "my col");
  EXPECT_EQ(Write(TSQLBuilderPlainText::StaticClass(),
                  [&](TSQLBuilder& b) {
                    b.WriteIdentifier("my col", nullptr);
                    b.Space();
                    b.WriteIdentifier("", nullptr);
                    b.WriteSymbol(";");
                  }),
            "my col ;");
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

TEST(SQLBuilder, ResetTruncatesForReuse) {
  std::string out = "left over";
  TSQLBuilderPlainText b(&out);
  b.ResetBuilder();
  EXPECT_EQ(out, "");
  b.WriteKeyword("SELECT");
  b.Space();
  b.WriteSymbol("*");
  EXPECT_EQ(out, "SELECT *");
  b.ResetBuilder();
  b.Space();
  b.NewLine();
  b.WriteSymbol("1");
  EXPECT_EQ(out, "1");
}

TEST(SQLBuilder, PlainTextNewLineTextIsConfigurable) {
  std::string out;
  TSQLBuilderPlainText b(&out);
  EXPECT_EQ(b.NewLineText, "\r\n");
  b.NewLineText = "\n";
  b.ResetBuilder();
  b.WriteKeyword("A");
  b.NewLine();
  b.WriteKeyword("B");
  EXPECT_EQ(out, "A\nB");
}

TEST(SQLBuilder, ClassReferences) {
  EXPECT_TRUE(TSQLBuilderHTML::StaticClass().InheritsFrom(TSQLBuilderStream::StaticClass()));
  EXPECT_TRUE(TSQLBuilderStream::StaticClass().IsAbstract());
  std::string out;
  EXPECT_THROW(TSQLBuilder::StaticClass().Create(&out), EqxError);
  std::unique_ptr<TSQLBuilder> b = TSQLBuilderPlainText::StaticClass().Create(&out);
  EXPECT_EQ(&b->ClassType(), &TSQLBuilderPlainText::StaticClass());
  // A builder without a stream refuses to write instead of crashing.
  std::unique_ptr<TSQLBuilder> none = TSQLBuilderPlainText::StaticClass().Create(nullptr);
  EXPECT_THROW(none->WriteKeyword("A"), EqxError);
  EXPECT_THROW(none->ResetBuilder(), EqxError);
}

}  // namespace
}  // namespace qorvex
