// qorvex-sql tokens: the scanner's token list, one token per line.
#include <ostream>

#include "command.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/statements.h"

namespace qorvex::tool {
namespace {

// Token texts may hold tabs and line breaks: write them escaped so that every token
// stays on one line with five fields.
void WriteEscaped(std::ostream& out, std::string_view text) {
  static const char kHex[] = "0123456789abcdef";
  for (char c : text) {
    const auto b = static_cast<unsigned char>(c);
    switch (c) {
      case '\\':
        out << "\\\\";
        break;
      case '\t':
        out << "\\t";
        break;
      case '\n':
        out << "\\n";
        break;
      case '\r':
        out << "\\r";
        break;
      default:
        if (b < 0x20 || b == 0x7f)
          out << "\\x" << kHex[b >> 4] << kHex[b & 15];
        else
          out << c;
    }
  }
}

void WriteToken(std::ostream& out, const TqxToken& t, const TqxScriptLocation& at) {
  out << t.kind << '\t' << at.line << '\t' << at.col << '\t' << at.pos << '\t';
  WriteEscaped(out, t.val);
  out << '\n';
}

int RunTokens(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  bool perStatement = false;
  std::string path;
  bool havePath = false;
  for (const std::string& arg : args) {
    if (arg == "--statements") {
      perStatement = true;
    } else if (arg.size() > 1 && arg[0] == '-' && arg != "-") {
      throw UsageError{"unknown option " + arg};
    } else if (havePath) {
      throw UsageError{"more than one input file"};
    } else {
      path = arg;
      havePath = true;
    }
  }
  const Input input = ReadInput(path);

  if (!perStatement) {
    SQL92Scanner scanner;
    scanner.Init(input.text);
    for (std::int32_t i = 0; i < scanner.GetTokenCount(); ++i) {
      const TqxToken& t = scanner.GetToken(i);
      WriteToken(out, t, TqxScriptLocation{t.pos, t.line, t.col});
    }
    return kExitOk;
  }

  // Each statement scanned on its own, as the parsing commands read it, with positions
  // in the whole input; a line holding ";" between statements.
  bool firstStatement = true;
  for (const TqxStatementText& statement : SplitStatements(input.text)) {
    if (!firstStatement)
      out << ";\n";
    firstStatement = false;
    SQL92Scanner scanner;
    scanner.Init(statement.text);
    for (std::int32_t i = 0; i + 1 < scanner.GetTokenCount(); ++i) {
      const TqxToken& t = scanner.GetToken(i);
      WriteToken(out, t, ToScriptLocation(statement, t.pos, t.line, t.col));
    }
  }
  return kExitOk;
}

const CommandRegistration kRegistration(
    "tokens",
    "[--statements] [FILE]\n"
    "      one token per line: kind, line, column, position, text (tab-separated;\n"
    "      backslash, tab, CR, LF and control characters escaped as \\\\ \\t \\r \\n \\xNN).\n"
    "      --statements: each statement scanned on its own, statements separated by \";\"",
    RunTokens);

}  // namespace
}  // namespace qorvex::tool
