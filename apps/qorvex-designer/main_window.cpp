#include "main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTimer>

#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/designer/link_painters.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/syntax/components.h"
#include "query_files.h"
#include "sql_editor.h"

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
  Editor_ = new TqxSqlEditor(splitter);
  Editor_->SetQueryBuilder(Builder_);
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
  Files_->SetBeforeHistory([this] { return SettleTyping(); });
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

  // SQL: the editor's commands.
  QMenu* sql = menuBar()->addMenu(QStringLiteral("&SQL"));
  QAction* apply = sql->addAction(QStringLiteral("&Apply to Diagram"));
  apply->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Return));
  apply->setStatusTip(QStringLiteral("Lay the statement in the editor out as the diagram"));
  connect(apply, &QAction::triggered, this, &TqxDesignerWindow::ApplyText);
  sql->addSeparator();
  sql->addAction(Editor_->CompleteAction());
  sql->addAction(Editor_->FormatAction());
  sql->addAction(Editor_->CopyOneLineAction());
  connect(Editor_, &TqxSqlEditor::statusMessage, Status_, &QLabel::setText);

  Pause_ = new QTimer(this);
  Pause_->setSingleShot(true);
  Pause_->setInterval(kPauseMs);
  connect(Pause_, &QTimer::timeout, this, &TqxDesignerWindow::ApplyText);
  connect(Editor_, &TqxSqlEditor::textChanged, this, &TqxDesignerWindow::TextEdited);
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
  Editor_->ClearError();
  Status_->clear();
  LastApplyFailed_ = false;
  LoadingFromPane_ = true;
  Builder_->setSql(Editor_->toPlainText());
}

bool TqxDesignerWindow::SettleTyping() {
  if (!Pause_->isActive())
    return false;
  // The typing becomes a step of its own, which the command then takes back or not; text
  // that does not parse is not a step, so undo takes back the typing itself.
  ApplyText();
  QCoreApplication::sendPostedEvents(Builder_);
  if (!LastApplyFailed_)
    return false;
  LastApplyFailed_ = false;
  LoadingFromPane_ = false;
  SqlChanged(QString::fromStdString(Builder_->GetSQL()));
  Status_->setText(QStringLiteral("Typing taken back"));
  return true;
}

void TqxDesignerWindow::OpenText(const QString& Sql, const QJsonDocument& Layout) {
  Pause_->stop();
  SettingText_ = true;
  Editor_->setPlainText(Sql);
  SettingText_ = false;
  Editor_->ClearError();
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
  Editor_->ReplaceText(QString(Sql).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
  SettingText_ = false;
  Editor_->ClearError();
}

void TqxDesignerWindow::SqlError(const QString& Sql, const QString& Errors) {
  LastApplyFailed_ = true;
  LoadingFromPane_ = false;
  // The message has no place in it: the parse is repeated for the token.
  if (Syntax_ != nullptr) {
    try {
      Syntax_->ParseSelect(Sql.toStdString());
    } catch (const EqxSQLError& error) {
      if (error.line > 0) {
        QString message = Errors;
        if (!error.tokenText.empty())
          message += QStringLiteral(" near \"%1\"").arg(QString::fromStdString(error.tokenText));
        message += QStringLiteral(" (line %1, column %2)").arg(error.line).arg(error.col);
        Status_->setText(message);
        Editor_->MarkError(error, message);
        return;
      }
    } catch (const std::exception&) {
    }
  }
  Status_->setText(Errors);
}

void TqxDesignerWindow::ShowMetadataError(const QString& Datasource, const QString& Message) {
  Status_->setText(QStringLiteral("No fields for %1: %2").arg(Datasource, Message));
}

}  // namespace qorvex
