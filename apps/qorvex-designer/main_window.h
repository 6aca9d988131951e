#pragma once

#include <QJsonDocument>
#include <QMainWindow>
#include <QString>
#include <memory>
#include <string>

#include "connection.h"
#include "sql_editor.h"

class QAction;
class QKeySequence;
class QPoint;
class QActionGroup;
class QCloseEvent;
class QDockWidget;
class QLabel;
class QMenu;
class QTimer;

namespace qorvex {

class TqxBaseMetadataProvider;
class TqxBaseSyntaxProvider;
class TqxQueryBuilder;
class TqxObjectBrowser;
class TqxQueryFiles;
class TqxResultsPane;

// The designer's main window: the query builder above the SQL editor, kept in step both
// ways, the database's objects beside them, the results of running the statement below,
// and a status bar telling what was done.
class TqxDesignerWindow : public QMainWindow {
  Q_OBJECT
 public:
  TqxDesignerWindow(TqxBaseSyntaxProvider* Syntax, TqxBaseMetadataProvider* Metadata,
                    const QString& Source);
  ~TqxDesignerWindow() override;

  TqxQueryBuilder* Builder() const { return Builder_; }
  TqxSqlEditor* Editor() const { return Editor_; }
  // Assigns the editor's text to the builder now.
  void ApplyText();
  // Draws the links in the style of that name (View menu); false for an unknown one.
  bool SetLinkStyle(const std::string& UserName);
  QActionGroup* LinkStyleActions() const { return LinkStyles_; }
  // File > Open, Save, Save As, Export Diagram and Edit > Undo, Redo.
  TqxQueryFiles* Files() const { return Files_; }
  // Shows an opened statement in the pane as it was written and lays it out with Layout.
  void OpenText(const QString& Sql, const QJsonDocument& Layout);

  // Opens a database and makes it the builder's metadata; the diagram's boxes read their
  // columns again. False, with the database's message in Error, when it cannot be opened
  // (the current connection stays). Remember adds it to the recent connections.
  bool OpenConnection(const TqxConnectionInfo& Info, QString* Error = nullptr,
                      bool Remember = true);
  // The same from a worker thread, for the menus: the window stays usable while a driver
  // connects; a failure is shown in a message box.
  void OpenConnectionInBackground(const TqxConnectionInfo& Info);
  bool IsConnecting() const { return Connecting_; }
  const TqxDesignerConnection* Connection() const { return Connection_.get(); }
  TqxObjectBrowser* Browser() const { return Browser_; }
  TqxResultsPane* Results() const { return Results_; }
  // Adds a table or view (its name as SQL writes it) to the diagram being edited: at
  // Point of the diagram when given, else at a free place; WithLinks joins it along the
  // foreign keys. False when the model refused it (the status bar says why).
  bool AddObject(const QString& SQLName, bool WithLinks, const QPoint* Point = nullptr);
  // Runs the statement in the SQL pane on the connection (F5); false when nothing started.
  bool RunQuery();
  // Opens the properties of the focused box (F2), where its alias is renamed.
  bool RenameFocused();
  // Shows Text in the status bar (also what the status bar shows now).
  void ShowStatus(const QString& Text);
  QString StatusText() const;
  // A menu of the menu bar by its object name ("menuFile", "menuEdit", "menuView",
  // "menuQuery", "menuHelp"), for commands added to it later; else null.
  QMenu* Menu(const char* Name) const;
  // The window's command by its object name ("actionRun", ...), else null.
  QAction* Action(const char* Name) const;

 public slots:
  // A datasource whose fields the metadata provider could not give.
  void ShowMetadataError(const QString& Datasource, const QString& Message);

 protected:
  // Offers to save unsaved changes first.
  void closeEvent(QCloseEvent* Event) override;

 private:
  void SqlChanged(const QString& Sql);
  void SqlError(const QString& Sql, const QString& Errors);
  // Applies text typed but not yet applied before an undo or redo; true when it did not
  // parse and the typing was taken back instead.
  bool SettleTyping();
  void TextEdited();
  void SyncLinkStyleMenu();
  void CreateActions();
  void FillRecentMenu();
  void ChooseSQLite();
  void ChooseODBC();
  void ShowPreferences();
  void RefreshMetadata();
  void UseConnection(std::unique_ptr<TqxDesignerConnection> Opened, bool Remember);
  QAction* MakeAction(const char* Name, const QString& Text, const QKeySequence& Keys);

  TqxBaseSyntaxProvider* Syntax_;
  TqxQueryBuilder* Builder_;
  TqxSqlEditor* Editor_;
  QTimer* Pause_;
  QLabel* Status_;
  QActionGroup* LinkStyles_ = nullptr;
  TqxQueryFiles* Files_ = nullptr;
  TqxBaseMetadataProvider* StartMetadata_;
  std::unique_ptr<TqxDesignerConnection> Connection_;
  TqxObjectBrowser* Browser_ = nullptr;
  QDockWidget* BrowserDock_ = nullptr;
  TqxResultsPane* Results_ = nullptr;
  QDockWidget* ResultsDock_ = nullptr;
  QMenu* RecentMenu_ = nullptr;
  bool Connecting_ = false;
  bool SettingText_ = false;
  bool LastApplyFailed_ = false;
  bool LoadingFromPane_ = false;
  // The application-wide focus signal, let go before the window's children are freed.
  QMetaObject::Connection FocusConnection_;
};

}  // namespace qorvex
