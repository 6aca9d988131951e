#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "qorvex/scanner/base_scanner.h"
#include "qorvex/sql_export.h"

namespace qorvex {

// One entry of the keyword table: the word in lower case and its token kind.
struct QORVEX_SQL_EXPORT TqxKeyword {
  std::string_view word;
  std::int32_t kind;
};

// The token recogniser of the SQL-92 dialect: a state machine over the folded current
// character, started from a table indexed by character. Token texts keep the letter
// case of the input; all decisions are case-blind. It never fails: what it cannot
// accept becomes an error token (tkError) holding what was consumed.
class QORVEX_SQL_EXPORT SQL92Scanner : public TqxBaseScanner {
  QX_CLASS(TqxScannerClass)

 public:
  // The 148 keywords in the order they are tried.
  static std::span<const TqxKeyword> Keywords() noexcept;
  // The keyword kind of `word` (ASCII letter case ignored), or 0 when it is no keyword.
  static std::int32_t FindKeyword(std::string_view word) noexcept;

  // Scanning a script statement by statement, so that each statement's tokens can be
  // parsed while the script is scanned only once. BeginStatements attaches `script`,
  // which the caller keeps alive and unchanged while statements are scanned; each
  // ScanStatement replaces the tokens held by those of the next statement, from the
  // first token after a ";" up to the next ";" token, which becomes the end token
  // ("EOF", in the place of the ";"). Statements without tokens are passed over; false
  // when none is left (the scanner then holds no tokens). The tokens are those of the
  // statement scanned as a text of its own, with their places in the whole script.
  // BeginStatements also turns statement-wise scanning on (SetStatementWise).
  void BeginStatements(std::string_view script);
  bool ScanStatement();
  // Makes Init and ScanInBatches scan each statement as a text of its own (see
  // ScanStatement), as a script split on its ";" tokens is read.
  void SetStatementWise(bool on) noexcept { statementWise_ = on; }

 protected:
  void CheckLiteral(TqxToken& token) override;
  TqxToken NextToken() override;
  void InitInternal() override;
  void ScanTokens() override;

 private:
  // Skips a "--" line comment starting at the current "-"; false (with the "-" current
  // again) when it is not one.
  bool Comment0();
  // NextToken's body, inlined into the scanning loop.
  TqxToken Scan();
  bool ownScan_ = true;
  bool statementsDone_ = false;  // ScanStatement has reached the end of the script
};

}  // namespace qorvex
