#pragma once

#include <string>
#include <string_view>

#include "qorvex/core/metaclass.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TastSyntaxProvider;
class TSQLBuilder;

// Builders are created by class over a string stream (not owned).
using TSQLBuilderClass = TqxClassOf<TSQLBuilder, std::string*>;

// The sink of all SQL text. Nodes hand it typed pieces (keyword, identifier, symbol,
// number, string literal) and layout requests; it never writes two separating spaces in
// a row, a space right after a line break, or two line breaks in a row, so nodes may
// ask for layout freely.
class QORVEX_SQL_EXPORT TSQLBuilder {
  QX_ROOT_CLASS(TSQLBuilderClass)

 public:
  TSQLBuilder() = default;
  TSQLBuilder(const TSQLBuilder&) = delete;
  TSQLBuilder& operator=(const TSQLBuilder&) = delete;
  virtual ~TSQLBuilder() = default;

  void ResetBuilder();
  void Space();
  void SpaceForce();
  void NewLine();
  void NewLineOrSpace(bool MultiLine);
  void WriteKeyword(std::string_view Text);
  void WriteSymbol(std::string_view Text);
  void WriteNumber(std::string_view Text);
  void WriteString(std::string_view Text);
  // Writes a name so that the dialect reads it back as the same name: bare when it is a
  // plain identifier that is no reserved word of the dialect and was not quoted
  // (`Quoted`), else between the provider's quotes with a closing quote inside doubled.
  void WriteIdentifier(std::string_view Text, const TastSyntaxProvider* SyntaxProvider,
                       bool Quoted = false);
  // Writes a word that the grammar itself reads as a function name (an aggregate such as
  // COUNT, a niladic function such as CURRENT_USER) as an identifier: quoted only when it
  // is not a plain identifier, never for being a keyword.
  void WriteFunctionWord(std::string_view Text, const TastSyntaxProvider* SyntaxProvider);

 protected:
  virtual void ResetBuilderInternal() = 0;
  virtual void SpaceInternal() = 0;
  virtual void NewLineInternal() = 0;
  virtual void WriteKeywordInternal(std::string_view Text) = 0;
  virtual void WriteIdentifierInternal(std::string_view Text) = 0;
  virtual void WriteSymbolInternal(std::string_view Text) = 0;
  virtual void WriteNumberInternal(std::string_view Text) = 0;
  virtual void WriteStringInternal(std::string_view Text) = 0;

  bool LineStart = true;
  bool SpaceWritten = true;

 private:
  void WriteQuotedIdentifier(std::string_view Text, const TastSyntaxProvider* SyntaxProvider);
};

// A builder writing to a string stream that its creator owns.
class QORVEX_SQL_EXPORT TSQLBuilderStream : public TSQLBuilder {
  QX_CLASS(TSQLBuilderClass)

 public:
  explicit TSQLBuilderStream(std::string* Stream) : Stream(Stream) {}

 protected:
  void ResetBuilderInternal() override;
  // The raw write used by all internal operations.
  void WriteToStream(std::string_view Text);

  std::string* Stream;
};

// Plain SQL text with CR LF line breaks.
class QORVEX_SQL_EXPORT TSQLBuilderPlainText : public TSQLBuilderStream {
  QX_CLASS(TSQLBuilderClass)

 public:
  explicit TSQLBuilderPlainText(std::string* Stream);

  std::string NewLineText;

 protected:
  void SpaceInternal() override;
  void NewLineInternal() override;
  void WriteKeywordInternal(std::string_view Text) override;
  void WriteIdentifierInternal(std::string_view Text) override;
  void WriteSymbolInternal(std::string_view Text) override;
  void WriteNumberInternal(std::string_view Text) override;
  void WriteStringInternal(std::string_view Text) override;
};

// An HTML fragment: keywords bold and lower-cased, identifiers italic, symbols coloured.
// It has no number or string-literal output: writing one raises EqxError.
class QORVEX_SQL_EXPORT TSQLBuilderHTML : public TSQLBuilderStream {
  QX_CLASS(TSQLBuilderClass)

 public:
  explicit TSQLBuilderHTML(std::string* Stream);

  std::string KeywordPrefix, KeywordSuffix;
  std::string IdentifierPrefix, IdentifierSuffix;
  std::string SymbolPrefix, SymbolSuffix;

 protected:
  void SpaceInternal() override;
  void NewLineInternal() override;
  void WriteKeywordInternal(std::string_view Text) override;
  void WriteIdentifierInternal(std::string_view Text) override;
  void WriteSymbolInternal(std::string_view Text) override;
  void WriteNumberInternal(std::string_view Text) override;
  void WriteStringInternal(std::string_view Text) override;
};

}  // namespace qorvex
