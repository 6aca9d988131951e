#pragma once

#include <Qsci/qsciscintilla.h>

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

class QAction;

namespace qorvex {

class EqxSQLError;
class TqxBaseMetadataProvider;
class TqxBaseQueryBuilder;
class TqxSqlLexer;

// The designer's SQL editor: highlighting by the library's scanner, line numbers, the
// syntax error underlined at its token with the message as a tooltip, completion of
// table, alias and column names from the metadata and the query model, and the Format
// and Copy as One Line commands.
class TqxSqlEditor : public QsciScintilla {
  Q_OBJECT
 public:
  explicit TqxSqlEditor(QWidget* Parent = nullptr);
  ~TqxSqlEditor() override;

  // The query builder whose model, syntax provider and metadata provider the editor uses
  // for completion, Format and error places; not owned, it must outlive the editor's use.
  void SetQueryBuilder(TqxBaseQueryBuilder* Builder);

  QString toPlainText() const { return text(); }
  void setPlainText(const QString& Text) { setText(Text); }
  // Replaces the whole text as one undo step, keeping the caret's line and the lines
  // shown where they were (for text rewritten from the diagram).
  void ReplaceText(const QString& Text);

  // Underlines the token the error names in the current text, with Message as its
  // tooltip; false when the text holds no token at the error's place.
  bool MarkError(const EqxSQLError& Error, const QString& Message);
  void ClearError();
  // The text under the error mark; empty without one.
  QString MarkedText() const;
  // The error message when Position (a byte offset) lies under the mark, else empty.
  QString ErrorToolTipAt(int Position) const;

  // The completion list at byte offset Position and the length of the word it completes:
  // after "name." the columns of the datasources so qualified, else tables, views, the
  // model's aliases and object names and the keywords that begin with the word.
  QStringList Completions(int Position, int* WordLength);
  // Shows the completion list at the caret.
  void Complete();

  // Rewrites the text one clause per line; false (with the error marked) when it does not
  // parse.
  bool Format();
  // The statement on one line, or empty with the error marked when it does not parse.
  QString OneLineSql();
  // Puts OneLineSql on the clipboard.
  bool CopyAsOneLine();

  // Forgets the table and view names read from the metadata provider.
  void RefreshObjectNames();

  QAction* CompleteAction() const { return Complete_; }
  QAction* FormatAction() const { return Format_; }
  QAction* CopyOneLineAction() const { return CopyOneLine_; }
  TqxSqlLexer* Lexer() const { return Lexer_; }

 signals:
  // What a command did, for the status bar.
  void statusMessage(const QString& Message);

 protected:
  void keyPressEvent(QKeyEvent* Event) override;
  void contextMenuEvent(QContextMenuEvent* Event) override;

 private:
  void CharAdded(int Ch);
  void UpdateMarginWidth();
  void ShowErrorTip(int Position, int X, int Y);
  // Parses the current text and writes it back; false with the error marked.
  bool Rewrite(bool MultiLine, std::string& Out);
  const std::vector<std::string>& ObjectNames();
  // Whether the text holds a "--" comment.
  bool HasComments() const;
  QString QuoteIfNeeded(const std::string& Name) const;

  TqxSqlLexer* Lexer_;
  TqxBaseQueryBuilder* Builder_ = nullptr;
  QAction* Complete_;
  QAction* Format_;
  QAction* CopyOneLine_;
  int ErrorIndicator_ = -1;
  QString ErrorMessage_;
  int MarginDigits_ = 0;
  // Table and view names of the metadata provider, read on the first completion.
  std::vector<std::string> ObjectNames_;
  const TqxBaseMetadataProvider* NamesOf_ = nullptr;
  bool NamesRead_ = false;
};

}  // namespace qorvex
