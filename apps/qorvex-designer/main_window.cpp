#include "main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QTextBlock>
#include <QTimer>
#include <QTreeWidget>
#include <QtConcurrent>

#include "connection_dialog.h"
#include "object_browser.h"
#include "preferences_dialog.h"
#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/designer/link_painters.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/syntax/components.h"
#include "query_files.h"
#include "results_pane.h"
#include "sql_editor.h"

namespace qorvex {

namespace {
// How long typing must pause before the text is assigned to the diagram.
constexpr int kPauseMs = 700;
}  // namespace

TqxDesignerWindow::TqxDesignerWindow(TqxBaseSyntaxProvider* Syntax,
                                     TqxBaseMetadataProvider* Metadata, const QString& Source)
    : Syntax_(Syntax), StartMetadata_(Metadata) {
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
  connect(Files_, &TqxQueryFiles::statusMessage, this, &TqxDesignerWindow::ShowStatus);
  Files_->SetBeforeHistory([this] { return SettleTyping(); });

  // The database's objects on the left, the results below.
  Browser_ = new TqxObjectBrowser(this);
  Browser_->SetMetadata(Metadata, Builder_->GetASTSyntaxProvider());
  BrowserDock_ = new QDockWidget(QStringLiteral("Objects"), this);
  BrowserDock_->setObjectName(QStringLiteral("objectsDock"));
  BrowserDock_->setWidget(Browser_);
  addDockWidget(Qt::LeftDockWidgetArea, BrowserDock_);
  Results_ = new TqxResultsPane(this);
  ResultsDock_ = new QDockWidget(QStringLiteral("Results"), this);
  ResultsDock_->setObjectName(QStringLiteral("resultsDock"));
  ResultsDock_->setWidget(Results_);
  addDockWidget(Qt::BottomDockWidgetArea, ResultsDock_);
  resizeDocks({BrowserDock_}, {200}, Qt::Horizontal);
  resizeDocks({ResultsDock_}, {160}, Qt::Vertical);

  CreateActions();

  // View: the link styles, one checked.
  QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
  view->setObjectName(QStringLiteral("menuView"));
  LinkStyles_ = new QActionGroup(this);
  LinkStyles_->setExclusive(true);
  Builder_->GetUserNames([this, view](const std::string& Name) {
    QAction* action = view->addAction(QString::fromStdString(Name));
    action->setCheckable(true);
    LinkStyles_->addAction(action);
    connect(action, &QAction::triggered, this, [this, Name] {
      SetLinkStyle(Name);
      TqxPreferences preferences = TqxPreferences::Load();
      preferences.linkStyle = QString::fromStdString(Name);
      preferences.Save();
      ShowStatus(QStringLiteral("Links drawn in %1").arg(QString::fromStdString(Name)));
    });
  });
  view->addSeparator();
  view->addAction(BrowserDock_->toggleViewAction());
  view->addAction(ResultsDock_->toggleViewAction());
  BrowserDock_->toggleViewAction()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_1));
  ResultsDock_->toggleViewAction()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_2));

  QMenu* query = menuBar()->addMenu(QStringLiteral("&Query"));
  query->setObjectName(QStringLiteral("menuQuery"));
  query->addAction(Action("actionAddTable"));
  query->addAction(Action("actionRename"));
  query->addSeparator();
  query->addAction(Action("actionRun"));
  query->addAction(Action("actionCancel"));
  QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
  help->setObjectName(QStringLiteral("menuHelp"));
  help->addAction(Action("actionAbout"));

  TqxPreferences::Load().ApplyTo(Builder_);
  SyncLinkStyleMenu();

  // SQL: the editor's commands.
  // Before Help, which stays last.
  auto* sql = new QMenu(QStringLiteral("&SQL"), menuBar());
  menuBar()->insertMenu(Menu("menuHelp")->menuAction(), sql);
  sql->setObjectName(QStringLiteral("menuSQL"));
  sql->addAction(Action("actionApply"));
  sql->addSeparator();
  sql->addAction(Editor_->CompleteAction());
  sql->addAction(Editor_->FormatAction());
  sql->addAction(Editor_->CopyOneLineAction());
  connect(Editor_, &TqxSqlEditor::statusMessage, this, &TqxDesignerWindow::ShowStatus);

  // Tab goes from the objects to the diagram, the SQL and the results.
  setTabOrder(Browser_->Filter(), Browser_->Tree());
  setTabOrder(Browser_->Tree(), Builder_);
  setTabOrder(Builder_, Editor_);
  setTabOrder(Editor_, Results_->Table());

  connect(Browser_, &TqxObjectBrowser::addRequested, this,
          [this](const QString& Name) { AddObject(Name, true); });
  connect(Browser_, &TqxObjectBrowser::addAloneRequested, this,
          [this](const QString& Name) { AddObject(Name, false); });
  connect(Browser_, &TqxObjectBrowser::metadataError, this, &TqxDesignerWindow::ShowStatus);
  // Objects dragged from the browser are dropped onto the diagram through the builder.
  Builder_->OnDragOver = [](TqxQueryBuilder*, const QMimeData* Data, TqxUnionSubQuery*, QPoint) {
    return Data != nullptr && Data->hasFormat(QLatin1String(TqxObjectBrowser::kObjectMimeType));
  };
  Builder_->OnDragDrop = [this](TqxQueryBuilder*, const QMimeData* Data, TqxUnionSubQuery*,
                                QPoint Point) {
    const QString name =
        QString::fromUtf8(Data->data(QLatin1String(TqxObjectBrowser::kObjectMimeType)));
    AddObject(name, false, &Point);
  };
  connect(Results_, &TqxResultsPane::started, this, [this] {
    Action("actionRun")->setEnabled(false);
    Action("actionCancel")->setEnabled(true);
  });
  connect(Results_, &TqxResultsPane::finished, this, [this](qint64, const QString& Error) {
    Action("actionRun")->setEnabled(true);
    Action("actionCancel")->setEnabled(false);
    ShowStatus(Error.isEmpty() ? QStringLiteral("Query run: ") + Results_->Summary()
                               : QStringLiteral("The query failed: ") + Error.section('\n', 0, 0));
  });

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

QAction* TqxDesignerWindow::MakeAction(const char* Name, const QString& Text,
                                       const QKeySequence& Keys) {
  auto* action = new QAction(Text, this);
  action->setObjectName(QLatin1String(Name));
  action->setShortcut(Keys);
  action->setShortcutContext(Qt::WindowShortcut);
  addAction(action);
  return action;
}

QMenu* TqxDesignerWindow::Menu(const char* Name) const {
  return menuBar()->findChild<QMenu*>(QLatin1String(Name), Qt::FindDirectChildrenOnly);
}

QAction* TqxDesignerWindow::Action(const char* Name) const {
  return findChild<QAction*>(QLatin1String(Name), Qt::FindDirectChildrenOnly);
}

void TqxDesignerWindow::CreateActions() {
  QAction* openSQLite =
      MakeAction("actionOpenSQLite", QStringLiteral("Open &SQLite Database..."), QKeySequence());
  QAction* openODBC =
      MakeAction("actionOpenODBC", QStringLiteral("Open &ODBC Connection..."), QKeySequence());
  QAction* refresh = MakeAction("actionRefresh", QStringLiteral("Re&fresh Objects"),
                                QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
  QAction* quit = MakeAction("actionQuit", QStringLiteral("&Quit"), QKeySequence::Quit);
  QAction* preferences = MakeAction("actionPreferences", QStringLiteral("&Preferences..."),
                                    QKeySequence(Qt::CTRL | Qt::Key_Comma));
  preferences->setMenuRole(QAction::PreferencesRole);
  QAction* addTable = MakeAction("actionAddTable", QStringLiteral("Add &Table..."),
                                 QKeySequence(Qt::CTRL | Qt::Key_T));
  QAction* rename =
      MakeAction("actionRename", QStringLiteral("&Rename Alias..."), QKeySequence(Qt::Key_F2));
  QAction* apply = MakeAction("actionApply", QStringLiteral("&Apply SQL to Diagram"),
                              QKeySequence(Qt::CTRL | Qt::Key_Return));
  QAction* run = MakeAction("actionRun", QStringLiteral("&Run"), QKeySequence(Qt::Key_F5));
  QAction* cancel =
      MakeAction("actionCancel", QStringLiteral("&Cancel Run"), QKeySequence(Qt::Key_Escape));
  cancel->setEnabled(false);
  QAction* about = MakeAction("actionAbout", QStringLiteral("&About Qorvex..."), QKeySequence());

  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  file->setObjectName(QStringLiteral("menuFile"));
  file->addAction(openSQLite);
  file->addAction(openODBC);
  RecentMenu_ = file->addMenu(QStringLiteral("Recent &Connections"));
  connect(RecentMenu_, &QMenu::aboutToShow, this, &TqxDesignerWindow::FillRecentMenu);
  FillRecentMenu();
  file->addAction(refresh);
  file->addSeparator();
  file->addActions({Files_->OpenAction(), Files_->SaveAction(), Files_->SaveAsAction()});
  file->addSeparator();
  file->addAction(Files_->ExportAction());
  file->addSeparator();
  file->addAction(quit);
  QMenu* edit = menuBar()->addMenu(QStringLiteral("&Edit"));
  edit->setObjectName(QStringLiteral("menuEdit"));
  edit->addActions({Files_->UndoAction(), Files_->RedoAction()});
  edit->addSeparator();
  edit->addAction(preferences);

  connect(openSQLite, &QAction::triggered, this, &TqxDesignerWindow::ChooseSQLite);
  connect(openODBC, &QAction::triggered, this, &TqxDesignerWindow::ChooseODBC);
  connect(refresh, &QAction::triggered, this, &TqxDesignerWindow::RefreshMetadata);
  connect(quit, &QAction::triggered, this, &QWidget::close);
  connect(preferences, &QAction::triggered, this, &TqxDesignerWindow::ShowPreferences);
  connect(addTable, &QAction::triggered, this, [this] {
    if (Builder_->ShowAddObjectForm())
      ShowStatus(QStringLiteral("Objects added"));
  });
  connect(rename, &QAction::triggered, this, &TqxDesignerWindow::RenameFocused);
  connect(apply, &QAction::triggered, this, &TqxDesignerWindow::ApplyText);
  connect(run, &QAction::triggered, this, &TqxDesignerWindow::RunQuery);
  connect(cancel, &QAction::triggered, this, [this] {
    if (Results_->IsRunning())
      Results_->Cancel();
  });
  connect(about, &QAction::triggered, this, [this] {
    if (Builder_->GetControlFactory() != nullptr)
      Builder_->GetControlFactory()->ShowAbout();
  });
}

void TqxDesignerWindow::FillRecentMenu() {
  RecentMenu_->clear();
  int number = 0;
  for (const QString& key : RecentConnectionKeys()) {
    TqxConnectionInfo info;
    if (!TqxConnectionInfo::FromKey(key, info))
      continue;
    ++number;
    const QString text =
        info.kind == TqxConnectionInfo::ckSQLite ? info.target : info.DisplayName();
    QAction* action =
        RecentMenu_->addAction(number < 10 ? QStringLiteral("&%1 %2").arg(number).arg(text) : text);
    connect(action, &QAction::triggered, this, [this, info] { OpenConnectionInBackground(info); });
  }
  RecentMenu_->setEnabled(number > 0);
}

void TqxDesignerWindow::ChooseSQLite() {
  const QString file = QFileDialog::getOpenFileName(
      this, QStringLiteral("Open SQLite Database"), QString(),
      QStringLiteral("SQLite databases (*.sqlite *.sqlite3 *.db *.db3);;All files (*)"));
  if (file.isEmpty())
    return;
  QString error;
  if (!OpenConnection({TqxConnectionInfo::ckSQLite, file}, &error))
    QMessageBox::warning(this, QStringLiteral("Open SQLite Database"), error);
}

void TqxDesignerWindow::ChooseODBC() {
  TqxConnectionDialog dialog(this);
  if (Connection_ != nullptr && Connection_->Info().kind == TqxConnectionInfo::ckODBC)
    dialog.SetConnectionString(Connection_->Info().target);
  if (dialog.exec() != QDialog::Accepted)
    return;
  OpenConnectionInBackground({TqxConnectionInfo::ckODBC, dialog.ConnectionString()});
}

bool TqxDesignerWindow::OpenConnection(const TqxConnectionInfo& Info, QString* Error,
                                       bool Remember) {
  std::unique_ptr<TqxDesignerConnection> opened;
  try {
    opened = TqxDesignerConnection::Open(Info);
  } catch (const std::exception& error) {
    const QString message = QString::fromStdString(error.what());
    ShowStatus(QStringLiteral("Cannot open %1: %2").arg(Info.DisplayName(), message));
    if (Error != nullptr)
      *Error = message;
    return false;
  }
  UseConnection(std::move(opened), Remember);
  return true;
}

void TqxDesignerWindow::OpenConnectionInBackground(const TqxConnectionInfo& Info) {
  if (Connecting_)
    return;
  // A driver may take long to connect (a server that does not answer): the window
  // stays usable meanwhile.
  struct Outcome {
    std::unique_ptr<TqxDesignerConnection> connection;
    QString error;
  };
  auto* watcher = new QFutureWatcher<std::shared_ptr<Outcome>>(this);
  Connecting_ = true;
  ShowStatus(QStringLiteral("Connecting to %1...").arg(Info.DisplayName()));
  connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, Info] {
    watcher->deleteLater();
    Connecting_ = false;
    const std::shared_ptr<Outcome> outcome = watcher->result();
    if (outcome->connection == nullptr) {
      ShowStatus(QStringLiteral("Cannot open %1: %2").arg(Info.DisplayName(), outcome->error));
      QMessageBox::warning(this, QStringLiteral("Open Connection"), outcome->error);
      return;
    }
    UseConnection(std::move(outcome->connection), true);
  });
  watcher->setFuture(QtConcurrent::run([Info] {
    auto outcome = std::make_shared<Outcome>();
    try {
      outcome->connection = TqxDesignerConnection::Open(Info);
    } catch (const std::exception& error) {
      outcome->error = QString::fromStdString(error.what());
    }
    return outcome;
  }));
}

void TqxDesignerWindow::UseConnection(std::unique_ptr<TqxDesignerConnection> Opened,
                                      bool Remember) {
  const TqxConnectionInfo info = Opened->Info();
  // The builder lets go of the old provider before it is freed.
  Builder_->SetMetadataProvider(Opened->Provider());
  Browser_->SetMetadata(Opened->Provider(), Builder_->GetASTSyntaxProvider());
  Connection_ = std::move(Opened);
  RefreshMetadata();
  if (Remember)
    RememberConnection(info);
  setWindowTitle(QStringLiteral("Qorvex Designer - %1").arg(info.DisplayName()));
  ShowStatus(QStringLiteral("Connected to %1").arg(info.DisplayName()));
}

void TqxDesignerWindow::RefreshMetadata() {
  Browser_->Refresh();
  // Every box of every sub-query reads its columns from the provider again; the
  // statement and the layout stay.
  std::vector<TqxQueryBuilderControlOwner*> owners;
  if (Builder_->GetQuery() != nullptr)
    owners.push_back(Builder_->GetQuery());
  while (!owners.empty()) {
    TqxQueryBuilderControlOwner* owner = owners.back();
    owners.pop_back();
    if (auto* ds = dynamic_cast<TqxDatasource*>(owner))
      ds->RefreshMetadata();
    owner->GetChildOwners(owners);
  }
  ShowStatus(QStringLiteral("Objects read again"));
}

bool TqxDesignerWindow::AddObject(const QString& SQLName, bool WithLinks, const QPoint* Point) {
  TqxUnionSubQuery* operand = Builder_->GetActiveUnionSubquery();
  if (operand == nullptr || SQLName.isEmpty() || Builder_->IsSQLLoading())
    return false;
  // Text typed but not yet applied reaches the diagram first, so that it is not lost.
  if (Pause_->isActive())
    ApplyText();
  const std::string name = SQLName.toStdString();
  try {
    TqxDataSourceObject* added = nullptr;
    {
      // The box and its links are one change of the query.
      TqxUpdateGuard guard(operand);
      added = Point != nullptr ? operand->AddObjectAt(name, TqxPoint{Point->x(), Point->y()})
                               : operand->AddObject(name);
      if (added != nullptr && WithLinks)
        operand->AddFKLinksForObject(added);
    }
    if (added == nullptr)
      return false;
    ShowStatus(QStringLiteral("Added %1").arg(QString::fromStdString(added->GetCaption())));
    return true;
  } catch (const std::exception& error) {
    ShowStatus(
        QStringLiteral("Cannot add %1: %2").arg(SQLName, QString::fromStdString(error.what())));
    return false;
  }
}

bool TqxDesignerWindow::RunQuery() {
  if (Results_->IsRunning())
    return false;
  if (Connection_ == nullptr) {
    ShowStatus(QStringLiteral("No database to run on: open one from the File menu"));
    return false;
  }
  const QString sql = Editor_->toPlainText().trimmed();
  if (sql.isEmpty()) {
    ShowStatus(QStringLiteral("Nothing to run: the SQL pane is empty"));
    return false;
  }
  ResultsDock_->show();
  const bool started = Results_->Run(
      {Connection_->QtDriver(), Connection_->QtDatabaseName(), Connection_->QtConnectOptions()},
      sql);
  if (started)
    ShowStatus(
        QStringLiteral("Running the statement on %1").arg(Connection_->Info().DisplayName()));
  return started;
}

bool TqxDesignerWindow::RenameFocused() {
  auto* datasource = dynamic_cast<TqxDatasource*>(Builder_->GetFocusedObject());
  if (datasource == nullptr) {
    ShowStatus(QStringLiteral("Click a box first to rename its alias"));
    return false;
  }
  const QString before = QString::fromStdString(datasource->GetCaption());
  bool changed = false;
  try {
    changed = datasource->EditProps();
  } catch (const std::exception& error) {
    ShowStatus(QString::fromStdString(error.what()));
    return false;
  }
  if (changed)
    ShowStatus(QStringLiteral("Renamed %1").arg(before));
  return changed;
}

void TqxDesignerWindow::ShowPreferences() {
  TqxPreferences current = TqxPreferences::Load();
  // The style shown now is the one the dialog starts from.
  if (Builder_->GetLinkPainter() != nullptr)
    current.linkStyle = QString::fromStdString(Builder_->GetLinkPainter()->PainterStyle());
  TqxPreferencesDialog dialog(Builder_, current, this);
  if (dialog.exec() != QDialog::Accepted)
    return;
  const TqxPreferences chosen = dialog.Values();
  chosen.Save();
  chosen.ApplyTo(Builder_);
  SyncLinkStyleMenu();
  ShowStatus(QStringLiteral("Preferences saved"));
}

void TqxDesignerWindow::ShowStatus(const QString& Text) {
  Status_->setText(Text);
}

QString TqxDesignerWindow::StatusText() const {
  return Status_->text();
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

void TqxDesignerWindow::closeEvent(QCloseEvent* Event) {
  // Typing not yet applied counts as a change of the query.
  if (Pause_->isActive()) {
    ApplyText();
    QCoreApplication::sendPostedEvents(Builder_);
  }
  if (Files_->MayClose())
    Event->accept();
  else
    Event->ignore();
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
