#include "qorvex/ast/builder.h"

#include <string>

#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"

namespace qorvex {

QX_DEFINE_ABSTRACT_ROOT_CLASS(TSQLBuilder)
QX_DEFINE_ABSTRACT_CLASS(TSQLBuilderStream, TSQLBuilder)
QX_DEFINE_CLASS(TSQLBuilderPlainText, TSQLBuilderStream)
QX_DEFINE_CLASS(TSQLBuilderHTML, TSQLBuilderStream)

namespace {

bool IsIdentStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsIdentPart(char c) {
  return IsIdentStart(c) || (c >= '0' && c <= '9');
}

// A letter or underscore, then letters, digits or underscores (ASCII); never empty.
bool IsPlainIdentifier(std::string_view Text) {
  if (Text.empty() || !IsIdentStart(Text.front()))
    return false;
  for (char c : Text.substr(1)) {
    if (!IsIdentPart(c))
      return false;
  }
  return true;
}

}  // namespace

// ---------------------------------------------------------------------------------------
// TSQLBuilder

void TSQLBuilder::ResetBuilder() {
  ResetBuilderInternal();
  LineStart = true;
  SpaceWritten = true;
}

void TSQLBuilder::Space() {
  if (!SpaceWritten)
    SpaceInternal();
  SpaceWritten = true;
}

void TSQLBuilder::SpaceForce() {
  SpaceInternal();
  SpaceWritten = true;
}

void TSQLBuilder::NewLine() {
  if (!LineStart)
    NewLineInternal();
  LineStart = true;
  SpaceWritten = true;
}

void TSQLBuilder::NewLineOrSpace(bool MultiLine) {
  if (MultiLine)
    NewLine();
  else
    Space();
}

void TSQLBuilder::WriteKeyword(std::string_view Text) {
  WriteKeywordInternal(Text);
  LineStart = false;
  SpaceWritten = false;
}

void TSQLBuilder::WriteSymbol(std::string_view Text) {
  WriteSymbolInternal(Text);
  LineStart = false;
  SpaceWritten = false;
}

void TSQLBuilder::WriteNumber(std::string_view Text) {
  WriteNumberInternal(Text);
  LineStart = false;
  SpaceWritten = false;
}

void TSQLBuilder::WriteString(std::string_view Text) {
  WriteStringInternal(Text);
  LineStart = false;
  SpaceWritten = false;
}

// Beyond the plain-identifier rule, a name is quoted when it was quoted where it came
// from (a quoted name may differ from the bare one by letter case, which dialects that
// fold unquoted names would lose) and when the dialect reserves the word, since the
// grammar would not read it as a name; either way the text parses to the same name.
void TSQLBuilder::WriteIdentifier(std::string_view Text, const TastSyntaxProvider* SyntaxProvider,
                                  bool Quoted) {
  if (!Quoted && IsPlainIdentifier(Text) &&
      (SyntaxProvider == nullptr || !SyntaxProvider->IsReservedWord(Text)))
    WriteIdentifierInternal(Text);
  else
    WriteQuotedIdentifier(Text, SyntaxProvider);
  LineStart = false;
  SpaceWritten = false;
}

void TSQLBuilder::WriteFunctionWord(std::string_view Text,
                                    const TastSyntaxProvider* SyntaxProvider) {
  if (IsPlainIdentifier(Text))
    WriteIdentifierInternal(Text);
  else
    WriteQuotedIdentifier(Text, SyntaxProvider);
  LineStart = false;
  SpaceWritten = false;
}

void TSQLBuilder::WriteQuotedIdentifier(std::string_view Text,
                                        const TastSyntaxProvider* SyntaxProvider) {
  std::string quoted;
  std::string end;
  if (SyntaxProvider != nullptr) {
    quoted = SyntaxProvider->GetQuoteBegin();
    end = SyntaxProvider->GetQuoteEnd();
  }
  // A closing quote inside the name is doubled, so that the text reads back as the
  // same name.
  if (end.empty()) {
    quoted += Text;
  } else {
    for (std::size_t i = 0; i < Text.size();) {
      if (Text.compare(i, end.size(), end) == 0) {
        quoted += end;
        quoted += end;
        i += end.size();
      } else {
        quoted += Text[i++];
      }
    }
  }
  quoted += end;
  WriteIdentifierInternal(quoted);
}

// ---------------------------------------------------------------------------------------
// TSQLBuilderStream

void TSQLBuilderStream::ResetBuilderInternal() {
  if (Stream == nullptr)
    throw EqxError("SQL builder has no stream");
  Stream->clear();
}

void TSQLBuilderStream::WriteToStream(std::string_view Text) {
  if (Text.empty())
    return;
  if (Stream == nullptr)
    throw EqxError("SQL builder has no stream");
  Stream->append(Text);
}

// ---------------------------------------------------------------------------------------
// TSQLBuilderPlainText

TSQLBuilderPlainText::TSQLBuilderPlainText(std::string* Stream)
    : TSQLBuilderStream(Stream), NewLineText("\r\n") {}

// Layout goes through the public symbol writer, as any other piece of text would.
void TSQLBuilderPlainText::SpaceInternal() {
  WriteSymbol(" ");
}

void TSQLBuilderPlainText::NewLineInternal() {
  WriteSymbol(NewLineText);
}

void TSQLBuilderPlainText::WriteKeywordInternal(std::string_view Text) {
  WriteToStream(Text);
}

void TSQLBuilderPlainText::WriteIdentifierInternal(std::string_view Text) {
  WriteToStream(Text);
}

void TSQLBuilderPlainText::WriteSymbolInternal(std::string_view Text) {
  WriteToStream(Text);
}

void TSQLBuilderPlainText::WriteNumberInternal(std::string_view Text) {
  WriteToStream(Text);
}

void TSQLBuilderPlainText::WriteStringInternal(std::string_view Text) {
  WriteToStream(Text);
}

// ---------------------------------------------------------------------------------------
// TSQLBuilderHTML

TSQLBuilderHTML::TSQLBuilderHTML(std::string* Stream)
    : TSQLBuilderStream(Stream),
      KeywordPrefix("<b>"),
      KeywordSuffix("</b>"),
      IdentifierPrefix("<i>"),
      IdentifierSuffix("</i>"),
      SymbolPrefix("<font color=#7f7fff>"),
      SymbolSuffix("</font>") {}

void TSQLBuilderHTML::SpaceInternal() {
  WriteToStream(" ");
}

void TSQLBuilderHTML::NewLineInternal() {
  WriteToStream("<br/>");
}

void TSQLBuilderHTML::WriteKeywordInternal(std::string_view Text) {
  std::string lower(Text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  }
  WriteToStream(KeywordPrefix + lower + KeywordSuffix);
}

void TSQLBuilderHTML::WriteIdentifierInternal(std::string_view Text) {
  WriteToStream(IdentifierPrefix + std::string(Text) + IdentifierSuffix);
}

void TSQLBuilderHTML::WriteSymbolInternal(std::string_view Text) {
  WriteToStream(SymbolPrefix + std::string(Text) + SymbolSuffix);
}

// The HTML fragment has no form for numbers and string literals.
void TSQLBuilderHTML::WriteNumberInternal(std::string_view /*Text*/) {
  throw EqxError("Abstract error");
}

void TSQLBuilderHTML::WriteStringInternal(std::string_view /*Text*/) {
  throw EqxError("Abstract error");
}

}  // namespace qorvex
