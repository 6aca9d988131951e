#pragma once

#include <Qsci/qscilexercustom.h>

#include <cstdint>
#include <memory>

#include "qorvex/scanner/base_scanner.h"

namespace qorvex {

// Highlighting for the SQL editor, from the tokens of the dialect's scanner (SQL-92 by
// default): what is coloured as a keyword, a name or a string is exactly what the parser
// will read.
// Styling restarts at the first line before the requested range that begins outside a
// token, so an edit restyles only from its own line on (or from the start of a string or
// quoted name that spans lines).
class TqxSqlLexer : public QsciLexerCustom {
  Q_OBJECT
 public:
  enum Style : int {
    Default = 0,  // blanks and line breaks
    Keyword,
    Identifier,
    QuotedIdentifier,
    String,
    Number,
    Comment,
    Operator,  // operators and punctuation
    Parameter,
    Error,  // what the scanner accepts as no token
    StyleCount
  };

  explicit TqxSqlLexer(QObject* Parent = nullptr);

  const char* language() const override { return "SQL"; }
  QString description(int Style) const override;
  QColor defaultColor(int Style) const override;
  QColor defaultPaper(int Style) const override;
  QFont defaultFont(int Style) const override;
  void styleText(int Start, int End) override;

  // The style of a scanned token of that kind.
  static Style StyleOfKind(std::int32_t Kind);

  // The scanner class of the dialect being edited (the one its parser reads with); null
  // for the SQL-92 scanner.
  void SetScannerClass(const TqxScannerClass* Class);
  std::unique_ptr<TqxBaseScanner> NewScanner() const;

 private:
  QFont Font_;
  const TqxScannerClass* ScannerClass_ = nullptr;
};

}  // namespace qorvex
