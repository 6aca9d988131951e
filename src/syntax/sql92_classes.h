#pragma once

#include "qorvex/ast/syntax_provider.h"

// The class references of the SQL-92 scanner and parser, kept apart so that the dialect
// provider does not depend on their headers.
namespace qorvex::sql92 {

const TqxScannerClass& ScannerClass();
const TqxParserClass& ParserClass();

}  // namespace qorvex::sql92
