#include "main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStatusBar>
#include <QTextBlock>
#include <QTimer>

#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/designer/link_painters.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/syntax/components.h"
#include "query_files.h"

namespace qorvex {

namespace {
// How long typing must pause before the text is assigned to the diagram.
constexpr int kPauseMs = 700;
}  // namespace

TqxDesignerWindow::TqxDesignerWindow(TqxBaseSyntaxProvider* Syntax,
                                     TqxBaseMetadataProvider* Metadata, const QString& Source)
    : Syntax_(Syntax) {
  setWindowTitle(Source.isEmpty() ? QStringLiteral("Qorvex Designer")
                                  : QStringLiteral("Qorvex Designer - %1").arg(Source));
  auto* splitter = new QSplitter(Qt::Vertical, this);
  Builder_ = new TqxQueryBuilder(splitter);
  Builder_->SetSyntaxProvider(Syntax);
  Builder_->SetMetadataProvider(Metadata);
  Builder_->SetBkImageDarkness(bgidLight);
  Editor_ = new QPlainTextEdit(splitter);
  QFont mono(QStringLiteral("DejaVu Sans Mono"));
  mono.setStyleHint(QFont::Monospace);
  Editor_->setFont(mono);
  Editor_->setPlaceholderText(
      QStringLiteral("SELECT statement (Ctrl+Return applies it to the diagram)"));
  Editor_->installEventFilter(this);
  splitter->addWidget(Builder_);
  splitter->addWidget(Editor_);
  splitter->setStretchFactor(0, 3);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({560, 200});
  setCentralWidget(splitter);

  Status_ = new QLabel(this);
  statusBar()->addWidget(Status_, 1);

  // File and Edit: the query file and the diagram's history.
  Files_ = new TqxQueryFiles(
      this, Builder_, [this] { return Editor_->toPlainText(); },
      [this](const QString& Sql, const QJsonDocument& Layout) { OpenText(Sql, Layout); });
  connect(Files_, &TqxQueryFiles::statusMessage, Status_, &QLabel::setText);
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  file->addActions({Files_->OpenAction(), Files_->SaveAction(), Files_->SaveAsAction()});
  file->addSeparator();
  file->addAction(Files_->ExportAction());
  QMenu* edit = menuBar()->addMenu(QStringLiteral("&Edit"));
  edit->addActions({Files_->UndoAction(), Files_->RedoAction()});

  // View: the link styles, one checked.
  QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
  LinkStyles_ = new QActionGroup(this);
  LinkStyles_->setExclusive(true);
  Builder_->GetUserNames([this, view](const std::string& Name) {
    QAction* action = view->addAction(QString::fromStdString(Name));
    action->setCheckable(true);
    LinkStyles_->addAction(action);
    connect(action, &QAction::triggered, this, [this, Name] { SetLinkStyle(Name); });
  });
  SyncLinkStyleMenu();

  Pause_ = new QTimer(this);
  Pause_->setSingleShot(true);
  Pause_->setInterval(kPauseMs);
  connect(Pause_, &QTimer::timeout, this, &TqxDesignerWindow::ApplyText);
  connect(Editor_, &QPlainTextEdit::textChanged, this, &TqxDesignerWindow::TextEdited);
  connect(Builder_, &TqxQueryBuilder::sqlChanged, this, &TqxDesignerWindow::SqlChanged);
  connect(Builder_, &TqxQueryBuilder::sqlError, this, &TqxDesignerWindow::SqlError);
  connect(Builder_, &TqxQueryBuilder::sqlLoaded, this, [this] { LoadingFromPane_ = false; });
  // Typed text not yet applied goes to the diagram before the diagram is edited, so that
  // neither the text nor the edit is lost.
  FocusConnection_ =
      connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* Now) {
        if (Pause_->isActive() && Now != nullptr &&
            (Now == Builder_ || Builder_->isAncestorOf(Now)))
          ApplyText();
      });
  connect(Builder_, &TqxQueryBuilder::metadataError, this, &TqxDesignerWindow::ShowMetadataError);
  connect(Builder_, &TqxQueryBuilder::errorOccurred, this,
          [this](const QString& Message) { Status_->setText(Message); });
}

bool TqxDesignerWindow::SetLinkStyle(const std::string& UserName) {
  const bool known = Builder_->CreateByUserName(UserName);
  SyncLinkStyleMenu();
  return known;
}

void TqxDesignerWindow::SyncLinkStyleMenu() {
  const QString current = Builder_->GetLinkPainter() != nullptr
                              ? QString::fromStdString(Builder_->GetLinkPainter()->PainterStyle())
                              : QString();
  for (QAction* action : LinkStyles_->actions())
    action->setChecked(action->text() == current);
}

TqxDesignerWindow::~TqxDesignerWindow() {
  // Freeing the children moves the focus; the window is no longer whole by then.
  disconnect(FocusConnection_);
}

void TqxDesignerWindow::TextEdited() {
  if (SettingText_)
    return;
  Pause_->start();
}

void TqxDesignerWindow::ApplyText() {
  Pause_->stop();
  ClearMark();
  Status_->clear();
  LoadingFromPane_ = true;
  Builder_->setSql(Editor_->toPlainText());
}

void TqxDesignerWindow::OpenText(const QString& Sql, const QJsonDocument& Layout) {
  Pause_->stop();
  SettingText_ = true;
  Editor_->setPlainText(Sql);
  SettingText_ = false;
  ClearMark();
  Status_->clear();
  LoadingFromPane_ = true;
  Builder_->OpenQuery(Sql, Layout);
}

void TqxDesignerWindow::SqlChanged(const QString& Sql) {
  // Text the user is typing is not replaced by its formatted form; diagram edits are
  // written into the pane.
  if (LoadingFromPane_)
    return;
  SettingText_ = true;
  Editor_->setPlainText(QString(Sql).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
  SettingText_ = false;
  ClearMark();
}

void TqxDesignerWindow::SqlError(const QString& Sql, const QString& Errors) {
  // The message has no place in it: the parse is repeated for the line and column.
  int line = 0;
  int column = 0;
  QString near;
  if (Syntax_ != nullptr) {
    try {
      Syntax_->ParseSelect(Sql.toStdString());
    } catch (const EqxSQLError& error) {
      line = error.line;
      column = error.col;
      if (!error.tokenText.empty())
        near = QStringLiteral(" near \"%1\"").arg(QString::fromStdString(error.tokenText));
    } catch (const std::exception&) {
    }
  }
  if (line > 0) {
    Status_->setText(
        QStringLiteral("%1%2 (line %3, column %4)").arg(Errors, near).arg(line).arg(column));
    MarkError(line, column);
  } else {
    Status_->setText(Errors);
  }
}

void TqxDesignerWindow::ShowMetadataError(const QString& Datasource, const QString& Message) {
  Status_->setText(QStringLiteral("No fields for %1: %2").arg(Datasource, Message));
}

void TqxDesignerWindow::MarkError(int Line, int Column) {
  QTextBlock block = Editor_->document()->findBlockByNumber(Line - 1);
  if (!block.isValid())
    return;
  // Columns count characters; a character outside the basic plane takes two units.
  const QString text = block.text();
  int unit = 0;
  for (int c = 1; c < Column && unit < text.size(); ++c)
    unit += text.at(unit).isHighSurrogate() ? 2 : 1;
  QTextCursor cursor(block);
  cursor.setPosition(block.position() + unit);
  cursor.movePosition(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
  if (!cursor.hasSelection())
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
  QTextEdit::ExtraSelection mark;
  mark.cursor = cursor;
  mark.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
  mark.format.setUnderlineColor(Qt::red);
  mark.format.setBackground(QColor(255, 220, 220));
  Editor_->setExtraSelections({mark});
}

void TqxDesignerWindow::ClearMark() {
  Editor_->setExtraSelections({});
}

bool TqxDesignerWindow::eventFilter(QObject* Watched, QEvent* Event) {
  if (Watched == Editor_ && Event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(Event);
    if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
        (key->modifiers() & Qt::ControlModifier)) {
      ApplyText();
      return true;
    }
  }
  return QMainWindow::eventFilter(Watched, Event);
}

}  // namespace qorvex
