#pragma once

#include <QJsonDocument>
#include <QObject>
#include <QString>
#include <functional>

class QAction;
class QMenu;
class QWidget;

namespace qorvex {

class TqxQueryBuilder;

// The query file a designer window edits: opening and saving .sql files with the diagram's
// layout in a JSON file beside them (NAME.sql -> NAME.sql.layout.json; the SQL file stays
// plain SQL), and exporting the diagram as PNG or SVG.
class TqxQueryFiles : public QObject {
  Q_OBJECT
 public:
  // Text gives the statement as the window shows it; Show puts an opened statement on
  // screen and into the builder with its layout.
  TqxQueryFiles(QWidget* Window, TqxQueryBuilder* Builder, std::function<QString()> Text,
                std::function<void(const QString& Sql, const QJsonDocument& Layout)> Show);

  // Where the layout of a query file is kept.
  static QString LayoutPathFor(const QString& SqlPath);

  QString FilePath() const { return Path_; }
  // Reads the statement and, when there is one, its layout. A layout that cannot be read
  // is left out (the statement still opens) and reported in Warning.
  bool Open(const QString& Path, QString* Error, QString* Warning = nullptr);
  // Writes the statement and its layout; the file becomes the one being edited.
  bool SaveAs(const QString& Path, QString* Error);
  // Asks whether to save unsaved changes before the window closes; false when the user
  // cancels (or saving fails).
  bool MayClose();
  // Writes the diagram: SVG for a .svg path, else an image at Scale.
  bool ExportDiagram(const QString& Path, qreal Scale, QString* Error);

  QAction* OpenAction() const { return Open_; }
  QAction* SaveAction() const { return Save_; }
  QAction* SaveAsAction() const { return SaveAs_; }
  QAction* ExportAction() const { return Export_; }
  QAction* UndoAction() const { return Undo_; }
  QAction* RedoAction() const { return Redo_; }
  // Runs before Undo and Redo; true when it took the command itself (the history is then
  // left as it is).
  void SetBeforeHistory(std::function<bool()> Hook) { BeforeHistory_ = std::move(Hook); }

 signals:
  // A file was opened or saved (the path may be new), or the message of a failure.
  void statusMessage(const QString& Message);

 private:
  void AskOpen();
  bool AskSave();
  bool AskSaveAs();
  void AskExport();
  void UpdateTitle();

  QWidget* Window_;
  TqxQueryBuilder* Builder_;
  std::function<QString()> Text_;
  std::function<void(const QString&, const QJsonDocument&)> Show_;
  std::function<bool()> BeforeHistory_;
  QString Path_;
  QString BaseTitle_;
  QAction* Open_;
  QAction* Save_;
  QAction* SaveAs_;
  QAction* Export_;
  QAction* Undo_;
  QAction* Redo_;
};

}  // namespace qorvex
