#pragma once

#include <QJsonDocument>
#include <QMainWindow>
#include <QString>
#include <string>

#include "sql_editor.h"

class QActionGroup;
class QLabel;
class QTimer;

namespace qorvex {

class TqxBaseMetadataProvider;
class TqxBaseSyntaxProvider;
class TqxQueryBuilder;
class TqxQueryFiles;

// The designer's main window: the query builder above the SQL editor, kept in step both
// ways, and a status bar for errors.
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

 public slots:
  // A datasource whose fields the metadata provider could not give.
  void ShowMetadataError(const QString& Datasource, const QString& Message);

 private:
  void SqlChanged(const QString& Sql);
  void SqlError(const QString& Sql, const QString& Errors);
  // Applies text typed but not yet applied before an undo or redo; true when it did not
  // parse and the typing was taken back instead.
  bool SettleTyping();
  void TextEdited();
  void SyncLinkStyleMenu();

  TqxBaseSyntaxProvider* Syntax_;
  TqxQueryBuilder* Builder_;
  TqxSqlEditor* Editor_;
  QTimer* Pause_;
  QLabel* Status_;
  QActionGroup* LinkStyles_ = nullptr;
  TqxQueryFiles* Files_ = nullptr;
  bool SettingText_ = false;
  bool LastApplyFailed_ = false;
  bool LoadingFromPane_ = false;
  // The application-wide focus signal, let go before the window's children are freed.
  QMetaObject::Connection FocusConnection_;
};

}  // namespace qorvex
