#include "syntax/sql92_classes.h"

#include "qorvex/parser/sql92_parser.h"
#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex::sql92 {

const TqxScannerClass& ScannerClass() {
  return SQL92Scanner::StaticClass();
}

const TqxParserClass& ParserClass() {
  return SQL92Parser::StaticClass();
}

}  // namespace qorvex::sql92
