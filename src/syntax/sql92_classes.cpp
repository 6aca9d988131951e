#include "syntax/sql92_classes.h"

#include "qorvex/core/errors.h"
#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex::sql92 {

const TqxScannerClass& ScannerClass() {
  return SQL92Scanner::StaticClass();
}

// Stands until the SQL-92 parser is part of the library.
const TqxParserClass& ParserClass() {
  throw EqxError("The SQL-92 parser is not linked in");
}

}  // namespace qorvex::sql92
