#include "syntax/sql92_classes.h"

#include "qorvex/core/errors.h"

namespace qorvex::sql92 {

const TqxScannerClass& ScannerClass() {
  throw EqxError("The SQL-92 scanner is not linked in");
}

const TqxParserClass& ParserClass() {
  throw EqxError("The SQL-92 parser is not linked in");
}

}  // namespace qorvex::sql92
