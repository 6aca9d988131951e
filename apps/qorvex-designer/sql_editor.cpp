#include "sql_editor.h"

#include <Qsci/qscicommand.h>
#include <Qsci/qscicommandset.h>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMenu>
#include <QToolTip>
#include <algorithm>
#include <cctype>
#include <memory>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/syntax/components.h"
#include "sql_lexer.h"

namespace qorvex {

namespace {

using Sci = QsciScintillaBase;

constexpr int kDwellMs = 400;
// The completion list's separator: no name holds it.
constexpr char kListSeparator = '\n';

bool IsNameByte(unsigned char C) {
  return std::isalnum(C) != 0 || C == '_' || C == '$' || C >= 0x80;
}

bool StartsWithNoCase(const std::string& Text, const std::string& Prefix) {
  if (Prefix.size() > Text.size())
    return false;
  for (std::size_t i = 0; i < Prefix.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(Text[i])) !=
        std::tolower(static_cast<unsigned char>(Prefix[i])))
      return false;
  return true;
}

bool EqualNoCase(const std::string& A, const std::string& B) {
  return A.size() == B.size() && StartsWithNoCase(A, B);
}

// A quoted name without its quotes ("a""b" and [a] as well); other text as it is.
std::string Unquote(const std::string& Name) {
  if (Name.size() >= 2 &&
      ((Name.front() == '"' && Name.back() == '"') || (Name.front() == '[' && Name.back() == ']') ||
       (Name.front() == '`' && Name.back() == '`'))) {
    std::string inner = Name.substr(1, Name.size() - 2);
    if (Name.front() == '"') {
      for (std::size_t at = inner.find("\"\""); at != std::string::npos;
           at = inner.find("\"\"", at + 1))
        inner.erase(at, 1);
    }
    return inner;
  }
  return Name;
}

// Every datasource of the model, the active operand's first.
std::vector<TqxDatasource*> ModelDatasources(TqxBaseQueryBuilder* Builder) {
  std::vector<TqxDatasource*> all;
  if (Builder == nullptr)
    return all;
  if (TqxUnionSubQuery* active = Builder->GetActiveUnionSubquery())
    all = active->GetDatasources();
  for (int i = 0; i < Builder->GetSubQueriesCount(); ++i) {
    TqxSubQuery* query = Builder->GetSubQueries(i);
    if (query == nullptr || query->GetUnionGroup() == nullptr)
      continue;
    std::vector<TqxUnionSubQuery*> operands;
    query->GetUnionGroup()->GetOperands(operands);
    for (TqxUnionSubQuery* operand : operands) {
      for (TqxDatasource* ds : operand->GetDatasources())
        if (std::find(all.begin(), all.end(), ds) == all.end())
          all.push_back(ds);
    }
  }
  return all;
}

}  // namespace

TqxSqlEditor::TqxSqlEditor(QWidget* Parent) : QsciScintilla(Parent) {
  setUtf8(true);
  setEolMode(EolUnix);
  Lexer_ = new TqxSqlLexer(this);
  setLexer(Lexer_);
  setCaretLineVisible(true);
  setCaretLineBackgroundColor(QColor(0xf3, 0xf6, 0xfb));
  setTabWidth(4);
  setIndentationsUseTabs(false);
  setAutoIndent(true);
  setBraceMatching(SloppyBraceMatch);
  setAutoCompletionSource(AcsNone);
  setWrapMode(WrapNone);
  // The horizontal scroll bar follows the longest line shown instead of a fixed width.
  SendScintilla(SCI_SETSCROLLWIDTH, 1UL);
  SendScintilla(SCI_SETSCROLLWIDTHTRACKING, 1UL);

  // Line numbers, in the editor's font, wide enough for the last line.
  setMarginType(0, NumberMargin);
  setMarginsFont(Lexer_->defaultFont(TqxSqlLexer::Default));
  setMarginsForegroundColor(QColor(0x8a, 0x8a, 0x8a));
  setMarginsBackgroundColor(QColor(0xf4, 0xf4, 0xf4));
  setMarginWidth(1, 0);
  UpdateMarginWidth();
  connect(this, &QsciScintilla::linesChanged, this, &TqxSqlEditor::UpdateMarginWidth);

  ErrorIndicator_ = indicatorDefine(SquiggleIndicator);
  setIndicatorForegroundColor(QColor(0xe0, 0x00, 0x00), ErrorIndicator_);
  setIndicatorDrawUnder(false, ErrorIndicator_);
  SendScintilla(SCI_SETMOUSEDWELLTIME, static_cast<unsigned long>(kDwellMs));
  connect(this, &QsciScintillaBase::SCN_DWELLSTART, this, &TqxSqlEditor::ShowErrorTip);
  connect(this, &QsciScintillaBase::SCN_DWELLEND, this, [] { QToolTip::hideText(); });
  connect(this, &QsciScintillaBase::SCN_CHARADDED, this, &TqxSqlEditor::CharAdded);

  // Undo and redo belong to the diagram's history, which holds each applied text as a step:
  // the editor gives up its own keys for them so that the window's commands receive them.
  for (const QKeyCombination combination :
       {Qt::CTRL | Qt::Key_Z, Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y,
        Qt::ALT | Qt::Key_Backspace, Qt::ALT | Qt::SHIFT | Qt::Key_Backspace}) {
    const int key = combination.toCombined();
    if (QsciCommand* command = standardCommands()->boundTo(key)) {
      if (command->key() == key)
        command->setKey(0);
      else
        command->setAlternateKey(0);
    }
  }

  Complete_ = new QAction(QStringLiteral("&Complete"), this);
  Complete_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Space));
  Complete_->setShortcutContext(Qt::WidgetShortcut);
  Complete_->setStatusTip(QStringLiteral("Table, alias, column and keyword names at the caret"));
  connect(Complete_, &QAction::triggered, this, [this] {
    setFocus();
    Complete();
  });
  addAction(Complete_);

  Format_ = new QAction(QStringLiteral("&Format"), this);
  Format_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
  Format_->setStatusTip(QStringLiteral("Rewrite the statement one clause per line"));
  connect(Format_, &QAction::triggered, this, &TqxSqlEditor::Format);

  CopyOneLine_ = new QAction(QStringLiteral("Copy as &One Line"), this);
  CopyOneLine_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
  CopyOneLine_->setStatusTip(QStringLiteral("Copy the statement to the clipboard on one line"));
  connect(CopyOneLine_, &QAction::triggered, this, &TqxSqlEditor::CopyAsOneLine);
  // Reached by their shortcuts in the editor on its own too; a window adds them to its menu.
  addAction(Format_);
  addAction(CopyOneLine_);
}

TqxSqlEditor::~TqxSqlEditor() = default;

void TqxSqlEditor::SetQueryBuilder(TqxBaseQueryBuilder* Builder) {
  Builder_ = Builder;
  TqxBaseSyntaxProvider* syntax = Builder != nullptr ? Builder->GetSyntaxProvider() : nullptr;
  Lexer_->SetScannerClass(syntax != nullptr && syntax->GetASTSyntaxProvider() != nullptr
                              ? &syntax->GetASTSyntaxProvider()->GetScannerClass()
                              : nullptr);
  RefreshObjectNames();
}

void TqxSqlEditor::UpdateMarginWidth() {
  int digits = 1;
  for (int n = std::max(1, lines()); n >= 10; n /= 10)
    ++digits;
  digits = std::max(digits, 3);
  if (digits == MarginDigits_)
    return;
  MarginDigits_ = digits;
  setMarginWidth(0, QString(digits + 1, QLatin1Char('9')));
}

void TqxSqlEditor::keyPressEvent(QKeyEvent* Event) {
  // Tab indents inside the editor; Ctrl+Tab and Ctrl+Shift+Tab leave it, as in Qt's own
  // text editors.
  if ((Event->key() == Qt::Key_Tab || Event->key() == Qt::Key_Backtab) &&
      (Event->modifiers() & Qt::ControlModifier)) {
    const bool next = Event->key() == Qt::Key_Tab && (Event->modifiers() & Qt::ShiftModifier) == 0;
    QWidget::focusNextPrevChild(next);
    return;
  }
  QsciScintilla::keyPressEvent(Event);
}

void TqxSqlEditor::ReplaceText(const QString& Text) {
  int line = 0;
  int index = 0;
  getCursorPosition(&line, &index);
  const int first = firstVisibleLine();
  beginUndoAction();
  selectAll();
  replaceSelectedText(Text);
  endUndoAction();
  setCursorPosition(std::min(line, lines() - 1), 0);
  setFirstVisibleLine(first);
}

void TqxSqlEditor::contextMenuEvent(QContextMenuEvent* Event) {
  // The standard editing commands, then completion, Format and one-line copy.
  std::unique_ptr<QMenu> menu(createStandardContextMenu());
  if (menu == nullptr)
    return;
  menu->addSeparator();
  menu->addAction(Complete_);
  menu->addAction(Format_);
  menu->addAction(CopyOneLine_);
  menu->exec(Event->globalPos());
}

// --- the error mark -----------------------------------------------------------------

bool TqxSqlEditor::MarkError(const EqxSQLError& Error, const QString& Message) {
  ClearError();
  const QByteArray bytes = text().toUtf8();
  const std::unique_ptr<TqxBaseScanner> scanner = Lexer_->NewScanner();
  scanner->Init(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  int start = -1;
  int length = 0;
  for (std::int32_t i = 0; i < scanner->GetTokenCount(); ++i) {
    const TqxToken& token = scanner->GetToken(i);
    if (token.line != Error.line || token.col != Error.col)
      continue;
    if (token.kind == tkEof) {
      // The statement ended too early: the last token is where it stops.
      if (i == 0)
        return false;
      const TqxToken& last = scanner->GetToken(i - 1);
      start = last.offset;
      length = static_cast<int>(last.val.size());
    } else {
      start = token.offset;
      length = static_cast<int>(token.val.size());
    }
    break;
  }
  if (start < 0 || length <= 0)
    return false;
  SendScintilla(SCI_SETINDICATORCURRENT, static_cast<unsigned long>(ErrorIndicator_));
  SendScintilla(SCI_INDICATORFILLRANGE, static_cast<unsigned long>(start),
                static_cast<long>(length));
  ErrorMessage_ = Message;
  return true;
}

void TqxSqlEditor::ClearError() {
  ErrorMessage_.clear();
  SendScintilla(SCI_SETINDICATORCURRENT, static_cast<unsigned long>(ErrorIndicator_));
  SendScintilla(SCI_INDICATORCLEARRANGE, 0UL, SendScintilla(SCI_GETLENGTH));
}

QString TqxSqlEditor::MarkedText() const {
  const long length = SendScintilla(SCI_GETLENGTH);
  const auto indicator = static_cast<unsigned long>(ErrorIndicator_);
  // The first run of the indicator: at 0, or where the run without it that starts at 0 ends.
  const long start = SendScintilla(SCI_INDICATORVALUEAT, indicator, 0L) != 0
                         ? 0
                         : SendScintilla(SCI_INDICATOREND, indicator, 0L);
  if (start >= length)
    return QString();
  const long end = SendScintilla(SCI_INDICATOREND, indicator, start);
  const QByteArray all = text().toUtf8();
  return QString::fromUtf8(all.mid(static_cast<int>(start), static_cast<int>(end - start)));
}

QString TqxSqlEditor::ErrorToolTipAt(int Position) const {
  if (Position < 0 || ErrorMessage_.isEmpty())
    return QString();
  if (SendScintilla(SCI_INDICATORVALUEAT, static_cast<unsigned long>(ErrorIndicator_),
                    static_cast<long>(Position)) == 0)
    return QString();
  return ErrorMessage_;
}

void TqxSqlEditor::ShowErrorTip(int Position, int X, int Y) {
  const QString tip = ErrorToolTipAt(Position);
  if (!tip.isEmpty())
    QToolTip::showText(viewport()->mapToGlobal(QPoint(X, Y)), tip, viewport());
}

// --- completion ----------------------------------------------------------------------

void TqxSqlEditor::RefreshObjectNames() {
  ObjectNames_.clear();
  NamesRead_ = false;
  NamesOf_ = nullptr;
}

const std::vector<std::string>& TqxSqlEditor::ObjectNames() {
  TqxBaseMetadataProvider* provider =
      Builder_ != nullptr ? Builder_->GetMetadataProvider() : nullptr;
  if (NamesRead_ && provider == NamesOf_)
    return ObjectNames_;
  ObjectNames_.clear();
  NamesRead_ = true;
  NamesOf_ = provider;
  if (provider == nullptr)
    return ObjectNames_;
  try {
    provider->GetTableNames(ObjectNames_, false);
    std::vector<std::string> views;
    provider->GetViewNames(views, false);
    ObjectNames_.insert(ObjectNames_.end(), views.begin(), views.end());
  } catch (const std::exception& error) {
    // Completion goes on with what the model knows; the reason is shown once.
    emit statusMessage(
        QStringLiteral("No table names for completion: %1").arg(QString::fromUtf8(error.what())));
  }
  return ObjectNames_;
}

QString TqxSqlEditor::QuoteIfNeeded(const std::string& Name) const {
  bool plain = !Name.empty() && std::isdigit(static_cast<unsigned char>(Name[0])) == 0;
  for (char c : Name)
    plain = plain && (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_');
  const std::int32_t keyword = SQL92Scanner::FindKeyword(Name);
  if (plain && (keyword == 0 || keyword >= kFirstNonReservedKeyword))
    return QString::fromStdString(Name);
  std::string begin = "\"";
  std::string end = "\"";
  if (Builder_ != nullptr && Builder_->GetSyntaxProvider() != nullptr &&
      !Builder_->GetSyntaxProvider()->GetQuoteBegin().empty()) {
    begin = Builder_->GetSyntaxProvider()->GetQuoteBegin();
    end = Builder_->GetSyntaxProvider()->GetQuoteEnd();
  }
  std::string inner = Name;
  if (end == "\"") {
    for (std::size_t at = inner.find('"'); at != std::string::npos; at = inner.find('"', at + 2))
      inner.insert(at, 1, '"');
  }
  return QString::fromStdString(begin + inner + end);
}

QStringList TqxSqlEditor::Completions(int Position, int* WordLength) {
  const QByteArray all = text().toUtf8();
  Position = std::clamp(Position, 0, static_cast<int>(all.size()));
  const auto* bytes = reinterpret_cast<const unsigned char*>(all.constData());
  int wordStart = Position;
  while (wordStart > 0 && IsNameByte(bytes[wordStart - 1]))
    --wordStart;
  const std::string word(all.constData() + wordStart,
                         static_cast<std::size_t>(Position - wordStart));
  if (WordLength != nullptr)
    *WordLength = Position - wordStart;

  std::vector<QString> found;
  // A name is offered when it begins with the word, quotes left aside.
  auto offer = [&](const QString& Name) {
    if (!Name.isEmpty() && StartsWithNoCase(Unquote(Name.toStdString()), word))
      found.push_back(Name);
  };

  if (wordStart > 0 && bytes[wordStart - 1] == '.') {
    // "qualifier.": the columns of the datasources so named.
    const int qualifierEnd = wordStart - 1;
    int qualifierStart = qualifierEnd;
    const unsigned char close = qualifierEnd > 0 ? bytes[qualifierEnd - 1] : 0;
    if (close == '"' || close == ']' || close == '`') {
      const unsigned char open = close == ']' ? '[' : close;
      qualifierStart = qualifierEnd - 1;
      while (qualifierStart > 0 && bytes[qualifierStart - 1] != open)
        --qualifierStart;
      qualifierStart = std::max(0, qualifierStart - 1);
    } else {
      while (qualifierStart > 0 && IsNameByte(bytes[qualifierStart - 1]))
        --qualifierStart;
    }
    const std::string qualifier = Unquote(std::string(
        all.constData() + qualifierStart, static_cast<std::size_t>(qualifierEnd - qualifierStart)));
    if (qualifier.empty())
      return {};
    for (TqxDatasource* ds : ModelDatasources(Builder_)) {
      if (!EqualNoCase(Unquote(ds->GetAlias()), qualifier) &&
          !EqualNoCase(Unquote(ds->GetQualifier()), qualifier))
        continue;
      for (const std::string& field : ds->GetFields())
        offer(QuoteIfNeeded(field));
    }
  } else {
    for (const std::string& name : ObjectNames())
      offer(QuoteIfNeeded(name));
    for (TqxDatasource* ds : ModelDatasources(Builder_))
      offer(QString::fromStdString(ds->GetAlias().empty() ? ds->GetQualifier() : ds->GetAlias()));
    // Keywords in the letter case being typed: lower case when the word is, else the
    // case of the nearest keyword before it, else upper case.
    bool lower = false;
    if (!word.empty()) {
      lower = std::none_of(word.begin(), word.end(),
                           [](char c) { return std::isupper(static_cast<unsigned char>(c)); });
    } else {
      for (int at = wordStart - 1; at >= 0 && at >= wordStart - 4000; --at) {
        if (SendScintilla(SCI_GETSTYLEAT, static_cast<unsigned long>(at)) == TqxSqlLexer::Keyword &&
            std::isalpha(bytes[at]) != 0) {
          lower = std::islower(bytes[at]) != 0;
          break;
        }
      }
    }
    // Non-reserved keywords stand in a SELECT statement only as names: not offered.
    for (const TqxKeyword& keyword : SQL92Scanner::Keywords()) {
      if (keyword.kind >= kFirstNonReservedKeyword)
        continue;
      const QString text =
          QString::fromLatin1(keyword.word.data(), static_cast<qsizetype>(keyword.word.size()));
      offer(lower ? text : text.toUpper());
    }
  }
  std::sort(found.begin(), found.end(), [](const QString& A, const QString& B) {
    const int c = A.compare(B, Qt::CaseInsensitive);
    return c != 0 ? c < 0 : A < B;
  });
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return QStringList(found.begin(), found.end());
}

void TqxSqlEditor::Complete() {
  int wordLength = 0;
  const int position = static_cast<int>(SendScintilla(SCI_GETCURRENTPOS));
  const QStringList names = Completions(position, &wordLength);
  if (names.isEmpty()) {
    emit statusMessage(QStringLiteral("No completions"));
    return;
  }
  const QByteArray list = names.join(QLatin1Char(kListSeparator)).toUtf8();
  SendScintilla(SCI_AUTOCSETSEPARATOR, static_cast<unsigned long>(kListSeparator));
  SendScintilla(SCI_AUTOCSETIGNORECASE, 1UL);
  SendScintilla(SCI_AUTOCSETORDER, static_cast<unsigned long>(SC_ORDER_CUSTOM));
  SendScintilla(SCI_AUTOCSETAUTOHIDE, 1UL);
  SendScintilla(SCI_AUTOCSETDROPRESTOFWORD, 1UL);
  SendScintilla(SCI_AUTOCSHOW, static_cast<unsigned long>(wordLength), list.constData());
}

void TqxSqlEditor::CharAdded(int Ch) {
  if (Ch != '.')
    return;
  // "name." opens the column list of that datasource.
  const int position = static_cast<int>(SendScintilla(SCI_GETCURRENTPOS));
  if (!Completions(position, nullptr).isEmpty())
    Complete();
}

// --- Format and one-line copy --------------------------------------------------------

bool TqxSqlEditor::Rewrite(bool MultiLine, std::string& Out) {
  ClearError();
  Out.clear();
  if (Builder_ == nullptr || Builder_->GetSyntaxProvider() == nullptr) {
    emit statusMessage(QStringLiteral("No syntax provider!"));
    return false;
  }
  const QString source = text();
  if (source.trimmed().isEmpty()) {
    emit statusMessage(QStringLiteral("No statement"));
    return false;
  }
  try {
    const std::unique_ptr<TSQLSelectStatement> tree =
        Builder_->GetSyntaxProvider()->ParseSelect(source.toStdString());
    TSQLBuilderPlainText writer(&Out);
    writer.NewLineText.assign(1, '\n');
    writer.ResetBuilder();
    tree->BuildSQL(writer, MultiLine);
    return true;
  } catch (const EqxSQLError& error) {
    QString message = QString::fromUtf8(error.what());
    if (!error.tokenText.empty())
      message += QStringLiteral(" near \"%1\"").arg(QString::fromStdString(error.tokenText));
    if (error.line > 0)
      message += QStringLiteral(" (line %1, column %2)").arg(error.line).arg(error.col);
    MarkError(error, message);
    emit statusMessage(message);
  } catch (const std::exception& error) {
    emit statusMessage(QString::fromUtf8(error.what()));
  }
  return false;
}

bool TqxSqlEditor::Format() {
  std::string formatted;
  if (!Rewrite(true, formatted))
    return false;
  const QString result = QString::fromStdString(formatted);
  const bool comments = HasComments();
  if (result != text())
    ReplaceText(result);
  // The statement is written from its tree, which keeps no comments: say so, Undo has them.
  emit statusMessage(comments
                         ? QStringLiteral("Formatted; comments were left out (Undo restores them)")
                         : QStringLiteral("Formatted"));
  return true;
}

bool TqxSqlEditor::HasComments() const {
  const QByteArray bytes = text().toUtf8();
  const std::string_view all(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  const std::unique_ptr<TqxBaseScanner> scanner = Lexer_->NewScanner();
  scanner->Init(all);
  std::size_t done = 0;
  for (std::int32_t i = 0; i < scanner->GetTokenCount(); ++i) {
    const TqxToken& token = scanner->GetToken(i);
    const auto at = static_cast<std::size_t>(token.offset);
    // Between tokens there are only blanks and comments.
    if (at > done && all.substr(done, at - done).find("--") != std::string_view::npos)
      return true;
    done = std::max(done, at + (token.kind == tkEof ? 0 : token.val.size()));
  }
  return false;
}

QString TqxSqlEditor::OneLineSql() {
  std::string line;
  if (!Rewrite(false, line))
    return QString();
  return QString::fromStdString(line);
}

bool TqxSqlEditor::CopyAsOneLine() {
  const QString line = OneLineSql();
  if (line.isEmpty())
    return false;
  QApplication::clipboard()->setText(line);
  emit statusMessage(QStringLiteral("Copied the statement as one line"));
  return true;
}

}  // namespace qorvex
