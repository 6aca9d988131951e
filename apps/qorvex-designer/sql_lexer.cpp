#include "sql_lexer.h"

#include <Qsci/qsciscintilla.h>

#include <QFontDatabase>
#include <algorithm>
#include <string>
#include <string_view>

#include "qorvex/scanner/sql92_scanner.h"

namespace qorvex {

namespace {

using Sci = QsciScintillaBase;

bool IsPunctuation(std::int32_t Kind) {
  switch (Kind) {
    case tkSemicolon:
    case tkComma:
    case tkLParen:
    case tkRParen:
    case tkStar:
    case tkEqual:
    case tkDotStar:
    case tkPlus:
    case tkMinus:
    case tkSlash:
    case tkPercent:
    case tkTilde:
    case tkDot:
      return true;
    default:
      return Kind >= tkNotEqual && Kind <= tkGreater;
  }
}

// The styles of one scanned stretch of the document: the tokens in their styles, the
// text between them as blanks or "--" comments. They are gathered and handed to the
// editor in one call: a call per token would send a change notice per token.
class Styler {
 public:
  Styler(const char* Text, int Length) : Text_(Text) {
    Styles_.reserve(static_cast<std::size_t>(Length));
  }

  // Styles the bytes up to `Offset` (relative to the stretch) that lie between tokens.
  void Gap(int Offset) {
    while (Done_ < Offset) {
      const char* at = Text_ + Done_;
      const std::string_view rest(at, static_cast<std::size_t>(Offset - Done_));
      const std::size_t dash = rest.find("--");
      if (dash == std::string_view::npos) {
        Run(Offset - Done_, TqxSqlLexer::Default);
        return;
      }
      if (dash > 0)
        Run(static_cast<int>(dash), TqxSqlLexer::Default);
      // The scanner delivers every line break as CR except a LF followed by CR, and a "--"
      // comment ends only there: otherwise it runs to the end of the text.
      const std::string_view comment = rest.substr(dash);
      const std::size_t end = comment.find("\n\r");
      Run(static_cast<int>(end == std::string_view::npos ? comment.size() : end),
          TqxSqlLexer::Comment);
    }
  }

  void Token(const TqxToken& T) {
    Gap(T.offset);
    // Tokens never overlap; should one start inside the last, only its new bytes count.
    Run(T.offset + static_cast<int>(T.val.size()) - std::max(Done_, T.offset),
        TqxSqlLexer::StyleOfKind(T.kind));
  }

  // Writes the styles into the editor from byte `From` on.
  void Flush(QsciScintilla* Editor, int From) const {
    Editor->SendScintilla(Sci::SCI_STARTSTYLING, static_cast<unsigned long>(From), 0L);
    Editor->SendScintilla(Sci::SCI_SETSTYLINGEX, static_cast<unsigned long>(Styles_.size()),
                          Styles_.data());
  }

 private:
  void Run(int Length, int Style) {
    if (Length <= 0)
      return;
    Styles_.append(static_cast<std::size_t>(Length), static_cast<char>(Style));
    Done_ += Length;
  }

  const char* Text_;
  std::string Styles_;
  int Done_ = 0;
};

struct ScanState {
  Styler* Out;
  int LastEnd = 0;  // where the last real token ends
};

}  // namespace

TqxSqlLexer::TqxSqlLexer(QObject* Parent) : QsciLexerCustom(Parent) {
  Font_ = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  Font_.setStyleHint(QFont::Monospace);
}

TqxSqlLexer::Style TqxSqlLexer::StyleOfKind(std::int32_t Kind) {
  switch (Kind) {
    case tkInteger:
    case tkDecimal:
    case tkHex:
      return Number;
    case tkString:
    case tkEscape:
      return String;
    case tkIdentifier:
      return Identifier;
    case tkQuotedIdentifier:
      return QuotedIdentifier;
    case tkParameter:
      return Parameter;
    case tkError:
      return Error;
    case tkEof:
      return Default;
    default:
      break;
  }
  if (IsPunctuation(Kind))
    return Operator;
  // A non-reserved keyword stands in a SELECT statement only as a name ("c", "name",
  // "type"), so it is shown as one.
  if (Kind >= kFirstNonReservedKeyword && Kind <= kLastNonReservedKeyword)
    return Identifier;
  return Kind >= tkKwOrder && Kind < kFirstNonReservedKeyword ? Keyword : Error;
}

void TqxSqlLexer::SetScannerClass(const TqxScannerClass* Class) {
  if (Class == ScannerClass_)
    return;
  ScannerClass_ = Class;
  // Everything is read again by the new scanner.
  if (editor() != nullptr)
    editor()->SendScintilla(Sci::SCI_COLOURISE, 0UL, -1L);
}

std::unique_ptr<TqxBaseScanner> TqxSqlLexer::NewScanner() const {
  if (ScannerClass_ != nullptr)
    return ScannerClass_->Create();
  return std::make_unique<SQL92Scanner>();
}

QString TqxSqlLexer::description(int Style) const {
  switch (Style) {
    case Default:
      return QStringLiteral("Default");
    case Keyword:
      return QStringLiteral("Keyword");
    case Identifier:
      return QStringLiteral("Identifier");
    case QuotedIdentifier:
      return QStringLiteral("Quoted identifier");
    case String:
      return QStringLiteral("String");
    case Number:
      return QStringLiteral("Number");
    case Comment:
      return QStringLiteral("Comment");
    case Operator:
      return QStringLiteral("Operator");
    case Parameter:
      return QStringLiteral("Parameter");
    case Error:
      return QStringLiteral("Error");
    default:
      return QString();
  }
}

QColor TqxSqlLexer::defaultColor(int Style) const {
  switch (Style) {
    case Keyword:
      return QColor(0x00, 0x33, 0x99);
    case Identifier:
      return QColor(0x1a, 0x1a, 0x1a);
    case QuotedIdentifier:
      return QColor(0x6a, 0x3d, 0x9a);
    case String:
      return QColor(0xa3, 0x15, 0x15);
    case Number:
      return QColor(0x09, 0x86, 0x58);
    case Comment:
      return QColor(0x6a, 0x73, 0x7d);
    case Operator:
      return QColor(0x55, 0x55, 0x55);
    case Parameter:
      return QColor(0xb3, 0x5c, 0x00);
    case Error:
      return QColor(0xd0, 0x00, 0x00);
    default:
      return QColor(0x1a, 0x1a, 0x1a);
  }
}

QColor TqxSqlLexer::defaultPaper(int Style) const {
  if (Style == Error)
    return QColor(0xff, 0xe8, 0xe8);
  return QColor(Qt::white);
}

QFont TqxSqlLexer::defaultFont(int Style) const {
  QFont font = Font_;
  if (Style == Keyword)
    font.setBold(true);
  else if (Style == Comment)
    font.setItalic(true);
  return font;
}

void TqxSqlLexer::styleText(int Start, int End) {
  QsciScintilla* ed = editor();
  if (ed == nullptr || End <= Start)
    return;
  const int length = static_cast<int>(ed->SendScintilla(Sci::SCI_GETLENGTH));
  End = std::min(End, length);
  // Back to a line whose preceding line break lies between tokens: a string, quoted
  // name, comment or error token that spans lines is scanned from its start.
  long line = ed->SendScintilla(Sci::SCI_LINEFROMPOSITION, static_cast<unsigned long>(Start));
  int from = static_cast<int>(ed->SendScintilla(Sci::SCI_POSITIONFROMLINE, line));
  while (from > 0 &&
         ed->SendScintilla(Sci::SCI_GETSTYLEAT, static_cast<unsigned long>(from - 1)) != Default) {
    --line;
    from = static_cast<int>(ed->SendScintilla(Sci::SCI_POSITIONFROMLINE, line));
  }
  // Forward to the start of the line after End, so that the last token is whole; when a
  // token still reaches the end of the stretch, the stretch grows until it does not.
  const long lastLine =
      ed->SendScintilla(Sci::SCI_LINEFROMPOSITION, static_cast<unsigned long>(End));
  int to = static_cast<int>(ed->SendScintilla(Sci::SCI_POSITIONFROMLINE, lastLine + 1));
  if (to <= End)
    to = length;
  for (;;) {
    const auto* text = reinterpret_cast<const char*>(ed->SendScintilla(
        Sci::SCI_GETRANGEPOINTER, static_cast<unsigned long>(from), static_cast<long>(to - from)));
    if (text == nullptr)
      return;
    Styler styler(text, to - from);
    ScanState state{&styler};
    const std::unique_ptr<TqxBaseScanner> scanner = NewScanner();
    scanner->ScanInBatches(
        std::string_view(text, static_cast<std::size_t>(to - from)),
        [](void* Context, const TqxToken* Tokens, std::int32_t Count) {
          auto* s = static_cast<ScanState*>(Context);
          for (std::int32_t i = 0; i < Count; ++i) {
            if (Tokens[i].kind == tkEof)
              continue;
            s->Out->Token(Tokens[i]);
            s->LastEnd = Tokens[i].offset + static_cast<int>(Tokens[i].val.size());
          }
        },
        &state);
    if (state.LastEnd == to - from && to < length) {
      to = std::min(length, to + std::max(4096, to - from));
      continue;
    }
    styler.Gap(to - from);
    styler.Flush(ed, from);
    return;
  }
}

}  // namespace qorvex
