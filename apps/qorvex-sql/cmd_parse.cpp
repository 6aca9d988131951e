// qorvex-sql format, tree, check, expr, logical, object, item: the parse entries.
//
// Each statement of the input (split on ";" tokens) is parsed on its own with the
// entry of the command; SELECT statements are parsed from the tokens of the one scan
// that splits the input. Accepted statements are written back through the SQL builders;
// the plain-text builder breaks lines with "\n" instead of its CR LF, as usual for text
// on this platform (line breaks inside names and strings stay as they are). Statements are
// separated in the output by a line holding ";". A rejected statement gives one line on standard
// error, FILE:LINE:COL: error: MESSAGE near "TOKEN", with positions in the whole input, and the
// exit status 1.
#include <memory>
#include <ostream>
#include <string>

#include "command.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/statements.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::tool {
namespace {

// The SQL-92 grammar with the base provider's identifier quoting (none).
class BaseDialectProvider : public TastSQL92SyntaxProvider {
 public:
  std::string GetQuoteBegin() const override { return TastSyntaxProvider::GetQuoteBegin(); }
  std::string GetQuoteEnd() const override { return TastSyntaxProvider::GetQuoteEnd(); }
};

// The library's HTML builder has no number or string-literal output by design; the tool
// completes it, writing them as they stand (like identifiers, unescaped), so that any
// statement can be shown as a fragment.
class HtmlFragmentBuilder : public TSQLBuilderHTML {
 public:
  using TSQLBuilderHTML::TSQLBuilderHTML;

 protected:
  void WriteNumberInternal(std::string_view Text) override { WriteToStream(Text); }
  void WriteStringInternal(std::string_view Text) override { WriteToStream(Text); }
};

enum class Entry { kSelect, kExpression, kLogical, kObject, kItem };
enum class Output { kFormat, kTree, kNone };

struct Options {
  bool oneLine = false;
  bool html = false;
  bool base = false;
  std::string path;
};

Options ReadOptions(const std::vector<std::string>& args, bool formatting) {
  Options o;
  bool havePath = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (formatting && arg == "--one-line") {
      o.oneLine = true;
    } else if (formatting && arg == "--html") {
      o.html = true;
    } else if (formatting && (arg == "--dialect" || arg.rfind("--dialect=", 0) == 0)) {
      std::string value;
      if (arg == "--dialect") {
        if (i + 1 >= args.size())
          throw UsageError{"--dialect needs sql92 or base"};
        value = args[++i];
      } else {
        value = arg.substr(10);
      }
      if (value == "sql92")
        o.base = false;
      else if (value == "base")
        o.base = true;
      else
        throw UsageError{"unknown dialect " + value};
    } else if (arg.size() > 1 && arg[0] == '-') {
      throw UsageError{"unknown option " + arg};
    } else if (havePath) {
      throw UsageError{"more than one input file"};
    } else {
      o.path = arg;
      havePath = true;
    }
  }
  return o;
}

std::unique_ptr<TastNode> ParseWith(TastSyntaxProvider& provider, Entry entry,
                                    const std::string& text) {
  switch (entry) {
    case Entry::kSelect:
      return provider.ParseSelect(text);
    case Entry::kExpression:
      return provider.ParseExpression(text);
    case Entry::kLogical:
      return provider.ParseLogicalExpression(text);
    case Entry::kObject:
      return provider.ParseObjectName(text);
    case Entry::kItem:
      return provider.ParseSelectItem(text);
  }
  return nullptr;
}

std::string WriteBack(const TastNode& node, const Options& o) {
  std::string text;
  std::unique_ptr<TSQLBuilder> builder;
  if (o.html) {
    builder = std::make_unique<HtmlFragmentBuilder>(&text);
  } else {
    auto plain = std::make_unique<TSQLBuilderPlainText>(&text);
    plain->NewLineText.assign(1, '\n');  // assigning "\n" trips a false GCC 12 -Wrestrict
    builder = std::move(plain);
  }
  builder->ResetBuilder();
  node.BuildSQL(*builder, !o.oneLine);
  return text;
}

int Run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err, Entry entry,
        Output output) {
  const Options o = ReadOptions(args, output == Output::kFormat);
  const Input input = ReadInput(o.path);
  TastSQL92SyntaxProvider sql92;
  BaseDialectProvider base;
  TastSyntaxProvider& provider = o.base ? static_cast<TastSyntaxProvider&>(base) : sql92;

  int status = kExitOk;
  bool first = true;
  // Error lines are gathered and written in large pieces: the error stream is unbuffered.
  std::string errors;
  auto flushErrors = [&](std::size_t above) {
    if (errors.size() > above) {
      err.write(errors.data(), static_cast<std::streamsize>(errors.size()));
      errors.clear();
    }
  };
  auto reject = [&](std::int32_t line, std::int32_t col, const char* message,
                    const std::string* near) {
    errors +=
        input.name + ':' + std::to_string(line) + ':' + std::to_string(col) + ": error: " + message;
    if (near != nullptr)
      errors += " near \"" + *near + '"';
    errors += '\n';
    status = kExitRejected;
  };
  auto emit = [&](const std::string& text) {
    if (output == Output::kNone)
      return;
    if (!first)
      out << ";\n";
    first = false;
    out << text;
    if (text.empty() || text.back() != '\n')
      out << '\n';
  };

  if (entry == Entry::kSelect) {
    // The script is scanned once: each statement's tokens, in the script's places, go
    // straight to the parser.
    SQL92Scanner scanner;
    scanner.BeginStatements(input.text);
    while (scanner.ScanStatement()) {
      flushErrors(1 << 16);
      const TqxToken& start = scanner.GetToken(0);
      std::string text;
      try {
        std::unique_ptr<TastNode> node = provider.ParseSelect(scanner);
        if (output == Output::kFormat)
          text = WriteBack(*node, o);
        else if (output == Output::kTree)
          text = node->Dump();
      } catch (const EqxSQLError& e) {
        if (e.line > 0)
          reject(e.line, e.col, e.what(), &e.tokenText);
        else
          reject(start.line, start.col, e.what(), nullptr);
        continue;
      } catch (const EqxError& e) {
        reject(start.line, start.col, e.what(), nullptr);
        continue;
      }
      emit(text);
    }
    flushErrors(0);
    return status;
  }

  std::string source;  // the statement's text, its storage reused from one to the next
  for (const TqxStatementText& statement : SplitStatements(input.text)) {
    flushErrors(1 << 16);
    std::string text;
    try {
      source.assign(statement.text);
      std::unique_ptr<TastNode> node = ParseWith(provider, entry, source);
      if (output == Output::kFormat)
        text = WriteBack(*node, o);
      else if (output == Output::kTree)
        text = node->Dump();
    } catch (const EqxSQLError& e) {
      if (e.line > 0) {
        const TqxScriptLocation at = ToScriptLocation(statement, e.pos, e.line, e.col);
        reject(at.line, at.col, e.what(), &e.tokenText);
      } else {
        reject(statement.line, statement.col, e.what(), nullptr);
      }
      continue;
    } catch (const EqxError& e) {
      reject(statement.line, statement.col, e.what(), nullptr);
      continue;
    }
    emit(text);
  }
  flushErrors(0);
  return status;
}

constexpr const char* kFormatUsage = "[--one-line] [--html] [--dialect sql92|base] [FILE]";

int RunFormat(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kSelect, Output::kFormat);
}
int RunTree(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kSelect, Output::kTree);
}
int RunCheck(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kSelect, Output::kNone);
}
int RunExpr(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kExpression, Output::kFormat);
}
int RunLogical(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kLogical, Output::kFormat);
}
int RunObject(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kObject, Output::kFormat);
}
int RunItem(const std::vector<std::string>& a, std::ostream& o, std::ostream& e) {
  return Run(a, o, e, Entry::kItem, Output::kFormat);
}

const CommandRegistration kFormat("format", kFormatUsage, RunFormat);
const CommandRegistration kTree("tree", "[FILE]", RunTree);
const CommandRegistration kCheck("check", "[FILE]", RunCheck);
const CommandRegistration kExpr("expr", kFormatUsage, RunExpr);
const CommandRegistration kLogical("logical", kFormatUsage, RunLogical);
const CommandRegistration kObject("object", kFormatUsage, RunObject);
const CommandRegistration kItem("item", kFormatUsage, RunItem);

}  // namespace
}  // namespace qorvex::tool
