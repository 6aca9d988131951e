#include "query_files.h"

#include <QAction>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QJsonParseError>
#include <QMessageBox>
#include <QSaveFile>
#include <QUndoStack>
#include <QWidget>

#include "qorvex/designer/query_builder.h"

namespace qorvex {

namespace {
const QString kSqlFilter = QStringLiteral("SQL files (*.sql);;All files (*)");
const QString kPngFilter = QStringLiteral("PNG image (*.png)");
const QString kPng2xFilter = QStringLiteral("PNG image, twice the size (*.png)");
const QString kSvgFilter = QStringLiteral("SVG drawing (*.svg)");

bool WriteFile(const QString& Path, const QByteArray& Data, QString* Error) {
  QSaveFile file(Path);
  if (file.open(QIODevice::WriteOnly) && file.write(Data) == Data.size() && file.commit())
    return true;
  if (Error != nullptr)
    *Error = QStringLiteral("Cannot write %1: %2").arg(Path, file.errorString());
  return false;
}
}  // namespace

TqxQueryFiles::TqxQueryFiles(
    QWidget* Window, TqxQueryBuilder* Builder, std::function<QString()> Text,
    std::function<void(const QString& Sql, const QJsonDocument& Layout)> Show)
    : QObject(Window),
      Window_(Window),
      Builder_(Builder),
      Text_(std::move(Text)),
      Show_(std::move(Show)),
      BaseTitle_(QStringLiteral("Qorvex Designer")) {
  Open_ = new QAction(QStringLiteral("&Open..."), this);
  Open_->setShortcut(QKeySequence::Open);
  connect(Open_, &QAction::triggered, this, &TqxQueryFiles::AskOpen);
  Save_ = new QAction(QStringLiteral("&Save"), this);
  Save_->setShortcut(QKeySequence::Save);
  connect(Save_, &QAction::triggered, this, &TqxQueryFiles::AskSave);
  SaveAs_ = new QAction(QStringLiteral("Save &As..."), this);
  SaveAs_->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+S")));
  connect(SaveAs_, &QAction::triggered, this, &TqxQueryFiles::AskSaveAs);
  Export_ = new QAction(QStringLiteral("&Export Diagram..."), this);
  Export_->setShortcut(QKeySequence(QStringLiteral("Ctrl+E")));
  connect(Export_, &QAction::triggered, this, &TqxQueryFiles::AskExport);

  // The builder's history, each item named after its step. The window may first settle
  // text typed but not yet applied (BeforeHistory), so that undo takes back the typing.
  QUndoStack* history = Builder_->UndoStack();
  Undo_ = new QAction(this);
  Undo_->setShortcut(QKeySequence(QStringLiteral("Ctrl+Z")));
  connect(Undo_, &QAction::triggered, this, [this, history] {
    if (!BeforeHistory_ || !BeforeHistory_())
      history->undo();
  });
  Redo_ = new QAction(this);
  Redo_->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+Z")));
  connect(Redo_, &QAction::triggered, this, [this, history] {
    if (!BeforeHistory_ || !BeforeHistory_())
      history->redo();
  });
  const auto name = [](const QString& Verb, const QString& Step) {
    return Step.isEmpty() ? Verb : QStringLiteral("%1 %2").arg(Verb, Step);
  };
  const auto sync = [this, history, name] {
    Undo_->setText(name(QStringLiteral("&Undo"), history->undoText()));
    Undo_->setEnabled(history->canUndo());
    Redo_->setText(name(QStringLiteral("&Redo"), history->redoText()));
    Redo_->setEnabled(history->canRedo());
  };
  connect(history, &QUndoStack::indexChanged, this, sync);
  connect(history, &QUndoStack::undoTextChanged, this, sync);
  connect(history, &QUndoStack::redoTextChanged, this, sync);
  sync();
  connect(history, &QUndoStack::cleanChanged, this, &TqxQueryFiles::UpdateTitle);
  UpdateTitle();
}

QString TqxQueryFiles::LayoutPathFor(const QString& SqlPath) {
  return SqlPath + QStringLiteral(".layout.json");
}

bool TqxQueryFiles::Open(const QString& Path, QString* Error, QString* Warning) {
  QFile file(Path);
  if (!file.open(QIODevice::ReadOnly)) {
    if (Error != nullptr)
      *Error = QStringLiteral("Cannot read %1: %2").arg(Path, file.errorString());
    return false;
  }
  const QString sql = QString::fromUtf8(file.readAll());
  QJsonDocument layout;
  QFile layoutFile(LayoutPathFor(Path));
  if (layoutFile.exists()) {
    QJsonParseError parse{};
    if (layoutFile.open(QIODevice::ReadOnly))
      layout = QJsonDocument::fromJson(layoutFile.readAll(), &parse);
    if (!layout.isObject() && Warning != nullptr) {
      const QString why = !layoutFile.isOpen() ? layoutFile.errorString()
                          : parse.error != QJsonParseError::NoError
                              ? parse.errorString()
                              : QStringLiteral("not a layout");
      *Warning = QStringLiteral("The layout %1 was not read: %2").arg(layoutFile.fileName(), why);
    }
  }
  Path_ = Path;
  Show_(sql, layout);
  UpdateTitle();
  return true;
}

bool TqxQueryFiles::SaveAs(const QString& Path, QString* Error) {
  if (!WriteFile(Path, Text_().toUtf8(), Error) ||
      !WriteFile(LayoutPathFor(Path), Builder_->SaveLayout().toJson(QJsonDocument::Indented),
                 Error))
    return false;
  Path_ = Path;
  Builder_->UndoStack()->setClean();
  UpdateTitle();
  return true;
}

bool TqxQueryFiles::ExportDiagram(const QString& Path, qreal Scale, QString* Error) {
  if (QFileInfo(Path).suffix().compare(QStringLiteral("svg"), Qt::CaseInsensitive) == 0)
    return Builder_->ExportSvg(Path, Error);
  return Builder_->ExportImage(Path, Scale, Error);
}

void TqxQueryFiles::UpdateTitle() {
  Window_->setWindowTitle(Path_.isEmpty() ? BaseTitle_ + QStringLiteral("[*]")
                                          : QStringLiteral("%1 - %2[*]").arg(BaseTitle_, Path_));
  Window_->setWindowModified(!Builder_->UndoStack()->isClean());
}

void TqxQueryFiles::AskOpen() {
  if (!Builder_->UndoStack()->isClean() &&
      QMessageBox::question(Window_, QStringLiteral("Open"),
                            QStringLiteral("The query has changes that are not saved. Open "
                                           "another one and lose them?")) != QMessageBox::Yes)
    return;
  const QString path = QFileDialog::getOpenFileName(Window_, QStringLiteral("Open Query"),
                                                    QFileInfo(Path_).absolutePath(), kSqlFilter);
  if (path.isEmpty())
    return;
  QString error;
  QString warning;
  if (!Open(path, &error, &warning)) {
    QMessageBox::warning(Window_, QStringLiteral("Open"), error);
    return;
  }
  emit statusMessage(warning.isEmpty() ? QStringLiteral("Opened %1").arg(path) : warning);
}

bool TqxQueryFiles::MayClose() {
  if (Builder_->UndoStack()->isClean())
    return true;
  const auto answer = QMessageBox::question(
      Window_, QStringLiteral("Close"),
      QStringLiteral("The query has changes that are not saved. Save them first?"),
      QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
  if (answer == QMessageBox::Save)
    return AskSave();
  return answer == QMessageBox::Discard;
}

bool TqxQueryFiles::AskSave() {
  if (Path_.isEmpty())
    return AskSaveAs();
  QString error;
  if (!SaveAs(Path_, &error)) {
    QMessageBox::warning(Window_, QStringLiteral("Save"), error);
    return false;
  }
  emit statusMessage(QStringLiteral("Saved %1").arg(Path_));
  return true;
}

bool TqxQueryFiles::AskSaveAs() {
  QString path = QFileDialog::getSaveFileName(Window_, QStringLiteral("Save Query As"),
                                              Path_.isEmpty() ? QStringLiteral("query.sql") : Path_,
                                              kSqlFilter);
  if (path.isEmpty())
    return false;
  if (QFileInfo(path).suffix().isEmpty())
    path += QStringLiteral(".sql");
  QString error;
  if (!SaveAs(path, &error)) {
    QMessageBox::warning(Window_, QStringLiteral("Save As"), error);
    return false;
  }
  emit statusMessage(QStringLiteral("Saved %1").arg(path));
  return true;
}

void TqxQueryFiles::AskExport() {
  const QString base = Path_.isEmpty() ? QStringLiteral("diagram") : QFileInfo(Path_).baseName();
  QString filter = kPngFilter;
  QString path = QFileDialog::getSaveFileName(
      Window_, QStringLiteral("Export Diagram"), base + QStringLiteral(".png"),
      QStringList{kPngFilter, kPng2xFilter, kSvgFilter}.join(QStringLiteral(";;")), &filter);
  if (path.isEmpty())
    return;
  if (QFileInfo(path).suffix().isEmpty())
    path += filter == kSvgFilter ? QStringLiteral(".svg") : QStringLiteral(".png");
  const qreal scale = filter == kPng2xFilter ? 2.0 : Window_->devicePixelRatioF();
  QString error;
  if (!ExportDiagram(path, scale, &error)) {
    QMessageBox::warning(Window_, QStringLiteral("Export Diagram"), error);
    return;
  }
  emit statusMessage(QStringLiteral("Exported the diagram to %1").arg(path));
}

}  // namespace qorvex
