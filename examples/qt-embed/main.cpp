// A Qt Widgets application embedding the query builder: the diagram above the SQL it writes,
// on a SQLite database the user picks. Typing SQL and pressing Ctrl+Return lays it out.
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <memory>

#include "qorvex/core/errors.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/syntax/components.h"

using namespace qorvex;

// The database the diagram's boxes take their columns from.
struct Database {
  explicit Database(const QString& File) : Connection(File.toStdString()), Metadata(&Connection) {
    Connection.Open();  // raises EqxError with SQLite's message
  }
  TqxSQLiteConnection Connection;
  TqxSQLiteMetadataProvider Metadata;
};

class Window : public QMainWindow {
 public:
  explicit Window(TqxBaseSyntaxProvider* Dialect) {
    auto* splitter = new QSplitter(Qt::Vertical, this);
    Builder_ = new TqxQueryBuilder(splitter);
    Builder_->SetSyntaxProvider(Dialect);
    SqlView_ = new QPlainTextEdit(splitter);
    SqlView_->setPlaceholderText(tr("SELECT statement (Ctrl+Return lays it out)"));
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);
    Status_ = new QLabel(this);
    statusBar()->addWidget(Status_, 1);

    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* open = file->addAction(tr("&Open Database..."), this, [this] { ChooseDatabase(); });
    open->setShortcut(QKeySequence::Open);
    QAction* apply = file->addAction(tr("&Apply SQL"), this,
                                     [this] { Builder_->setSql(SqlView_->toPlainText()); });
    apply->setShortcut(Qt::CTRL | Qt::Key_Return);
    file->addSeparator();
    QAction* quit = file->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    // Every edit of the diagram rewrites the SQL; refused text leaves the diagram as it was.
    connect(Builder_, &TqxQueryBuilder::sqlChanged, this, [this](const QString& Sql) {
      SqlView_->setPlainText(Sql);
      Status_->clear();
    });
    connect(Builder_, &TqxQueryBuilder::sqlError, this,
            [this](const QString&, const QString& Errors) { Status_->setText(Errors); });
    connect(Builder_, &TqxQueryBuilder::metadataError, this,
            [this](const QString& Caption, const QString& Message) {
              Status_->setText(tr("%1: %2").arg(Caption, Message));
            });
    connect(Builder_, &TqxQueryBuilder::errorOccurred, Status_, &QLabel::setText);
    resize(1000, 700);
  }

  ~Window() override {
    // The builder outlives this window's members: it must not keep the provider.
    Builder_->SetMetadataProvider(nullptr);
  }

  bool OpenDatabase(const QString& File) {
    std::unique_ptr<Database> database;
    try {
      database = std::make_unique<Database>(File);
    } catch (const EqxError& e) {
      QMessageBox::warning(this, tr("Open Database"),
                           tr("Cannot open %1:\n%2").arg(File, QString::fromUtf8(e.what())));
      return false;
    }
    Builder_->SetMetadataProvider(&database->Metadata);
    Database_ = std::move(database);
    setWindowTitle(tr("Qorvex example - %1").arg(QFileInfo(File).fileName()));
    // Lay the statement out again with the new database's columns.
    Builder_->setSql(SqlView_->toPlainText());
    return true;
  }

  void LoadSql(const QString& Sql) {
    SqlView_->setPlainText(Sql);
    Builder_->setSql(Sql);
  }

 private:
  void ChooseDatabase() {
    QSettings settings;
    const QString file = QFileDialog::getOpenFileName(
        this, tr("Open Database"), settings.value("lastDatabase").toString(),
        tr("SQLite databases (*.sqlite *.sqlite3 *.db);;All files (*)"));
    if (!file.isEmpty() && OpenDatabase(file))
      settings.setValue("lastDatabase", file);
  }

  TqxQueryBuilder* Builder_;
  QPlainTextEdit* SqlView_;
  QLabel* Status_;
  std::unique_ptr<Database> Database_;
};

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setOrganizationName("Qorvex");
  QApplication::setApplicationName("qorvex-qt-embed-example");
  TqxSQL92SyntaxProvider dialect;
  Window window(&dialect);
  // An optional database file and statement on the command line.
  const QStringList args = QApplication::arguments();
  if (args.size() > 1)
    window.OpenDatabase(args.at(1));
  if (args.size() > 2)
    window.LoadSql(args.at(2));
  window.show();
  return QApplication::exec();
}
