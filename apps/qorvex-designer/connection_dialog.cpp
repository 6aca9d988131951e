#include "connection_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtConcurrent>

#if QORVEX_ODBC_AVAILABLE
#include <sql.h>
#include <sqlext.h>

#include "qorvex/metadata/odbc_provider.h"
#endif

namespace qorvex {

namespace {

#if QORVEX_ODBC_AVAILABLE
// Walks one of the driver manager's lists (SQLDataSources or SQLDrivers).
template <class Fetch>
QList<TqxODBCEntry> ReadList(Fetch Next) {
  QList<TqxODBCEntry> entries;
  SQLHENV env = SQL_NULL_HENV;
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)))
    return entries;
  SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  SQLCHAR name[512];
  SQLCHAR description[1024];
  SQLSMALLINT nameLength = 0;
  SQLSMALLINT descriptionLength = 0;
  SQLUSMALLINT direction = SQL_FETCH_FIRST;
  while (SQL_SUCCEEDED(Next(env, direction, name, sizeof name, &nameLength, description,
                            sizeof description, &descriptionLength))) {
    entries.push_back({QString::fromUtf8(reinterpret_cast<const char*>(name)),
                       QString::fromUtf8(reinterpret_cast<const char*>(description))});
    direction = SQL_FETCH_NEXT;
  }
  SQLFreeHandle(SQL_HANDLE_ENV, env);
  return entries;
}
#endif

}  // namespace

QList<TqxODBCEntry> ODBCDataSources() {
#if QORVEX_ODBC_AVAILABLE
  return ReadList([](SQLHENV Env, SQLUSMALLINT Direction, SQLCHAR* Name, SQLSMALLINT NameSize,
                     SQLSMALLINT* NameLength, SQLCHAR* Description, SQLSMALLINT DescriptionSize,
                     SQLSMALLINT* DescriptionLength) {
    return SQLDataSources(Env, Direction, Name, NameSize, NameLength, Description, DescriptionSize,
                          DescriptionLength);
  });
#else
  return {};
#endif
}

QList<TqxODBCEntry> ODBCDrivers() {
#if QORVEX_ODBC_AVAILABLE
  // A driver's attributes come as "key=value" strings separated by nulls: the
  // description shown is the name itself, so the attributes are not read.
  return ReadList([](SQLHENV Env, SQLUSMALLINT Direction, SQLCHAR* Name, SQLSMALLINT NameSize,
                     SQLSMALLINT* NameLength, SQLCHAR* Attributes, SQLSMALLINT AttributesSize,
                     SQLSMALLINT* AttributesLength) {
    const SQLRETURN rc = SQLDrivers(Env, Direction, Name, NameSize, NameLength, Attributes,
                                    AttributesSize, AttributesLength);
    if (SQL_SUCCEEDED(rc))
      Attributes[0] = 0;
    return rc;
  });
#else
  return {};
#endif
}

QString TestODBCConnection(const QString& ConnectionString) {
#if QORVEX_ODBC_AVAILABLE
  try {
    TqxODBCConnection connection(ConnectionString.toStdString());
    connection.Open();
    connection.Close();
    return {};
  } catch (const std::exception& error) {
    const QString message = QString::fromStdString(error.what());
    return message.isEmpty() ? QStringLiteral("The driver refused the connection.") : message;
  }
#else
  Q_UNUSED(ConnectionString);
  return QStringLiteral("This build has no ODBC support.");
#endif
}

TqxConnectionDialog::TqxConnectionDialog(QWidget* Parent) : QDialog(Parent) {
  setWindowTitle(QStringLiteral("Open ODBC Connection"));
  auto* layout = new QVBoxLayout(this);
  auto* lists = new QHBoxLayout;
  auto* left = new QVBoxLayout;
  auto* right = new QVBoxLayout;
  DataSources_ = new QListWidget(this);
  Drivers_ = new QListWidget(this);
  auto* sourcesLabel = new QLabel(QStringLiteral("&Data sources:"), this);
  sourcesLabel->setBuddy(DataSources_);
  auto* driversLabel = new QLabel(QStringLiteral("D&rivers:"), this);
  driversLabel->setBuddy(Drivers_);
  left->addWidget(sourcesLabel);
  left->addWidget(DataSources_);
  right->addWidget(driversLabel);
  right->addWidget(Drivers_);
  lists->addLayout(left);
  lists->addLayout(right);
  layout->addLayout(lists);

  for (const TqxODBCEntry& source : ODBCDataSources()) {
    auto* item =
        new QListWidgetItem(source.description.isEmpty()
                                ? source.name
                                : QStringLiteral("%1 (%2)").arg(source.name, source.description),
                            DataSources_);
    item->setData(Qt::UserRole, QStringLiteral("DSN=%1;").arg(source.name));
  }
  for (const TqxODBCEntry& driver : ODBCDrivers()) {
    auto* item = new QListWidgetItem(driver.name, Drivers_);
    item->setData(Qt::UserRole, QStringLiteral("Driver={%1};").arg(driver.name));
  }
  if (DataSources_->count() == 0)
    (new QListWidgetItem(QStringLiteral("(none configured)"), DataSources_))
        ->setFlags(Qt::NoItemFlags);

  auto* form = new QFormLayout;
  String_ = new QLineEdit(this);
  String_->setPlaceholderText(QStringLiteral("DSN=name; or Driver={SQLite3};Database=/path/file"));
  String_->setMinimumWidth(420);
  form->addRow(QStringLiteral("&Connection string:"), String_);
  layout->addLayout(form);

  auto* testRow = new QHBoxLayout;
  Test_ = new QPushButton(QStringLiteral("&Test"), this);
  Test_->setAutoDefault(false);
  Result_ = new QLabel(this);
  Result_->setWordWrap(true);
  Result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  testRow->addWidget(Test_);
  testRow->addWidget(Result_, 1);
  layout->addLayout(testRow);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
  ok->setText(QStringLiteral("&Open"));
  ok->setEnabled(false);

  auto choose = [this](QListWidgetItem* Item) {
    const QString start = Item != nullptr ? Item->data(Qt::UserRole).toString() : QString();
    if (!start.isEmpty())
      String_->setText(start);
  };
  connect(DataSources_, &QListWidget::currentItemChanged, this, choose);
  connect(Drivers_, &QListWidget::currentItemChanged, this, choose);
  connect(DataSources_, &QListWidget::itemDoubleClicked, this, [this, choose](QListWidgetItem* I) {
    choose(I);
    if (!String_->text().isEmpty())
      accept();
  });
  connect(String_, &QLineEdit::textChanged, this, [this, ok](const QString& Text) {
    ok->setEnabled(!Text.trimmed().isEmpty());
    Test_->setEnabled(!Text.trimmed().isEmpty() && !Testing_.isRunning());
    Result_->clear();
  });
  Test_->setEnabled(false);
  connect(Test_, &QPushButton::clicked, this, &TqxConnectionDialog::Test);
  connect(&Testing_, &QFutureWatcher<QString>::finished, this, [this] {
    const QString message = Testing_.result();
    Test_->setEnabled(!String_->text().trimmed().isEmpty());
    Result_->setText(message.isEmpty() ? QStringLiteral("Connected.") : message);
    emit testFinished(message.isEmpty());
  });
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

TqxConnectionDialog::~TqxConnectionDialog() {
  // A driver that is still connecting is waited for: its thread uses nothing of the dialog
  // but the result.
  Testing_.waitForFinished();
}

QString TqxConnectionDialog::ConnectionString() const {
  return String_->text().trimmed();
}

void TqxConnectionDialog::SetConnectionString(const QString& Value) {
  String_->setText(Value);
}

void TqxConnectionDialog::Test() {
  const QString text = ConnectionString();
  if (text.isEmpty() || Testing_.isRunning())
    return;
  Test_->setEnabled(false);
  Result_->setText(QStringLiteral("Connecting..."));
  // A driver may take long to answer (a server that is down): the dialog stays usable.
  Testing_.setFuture(QtConcurrent::run(TestODBCConnection, text));
}

}  // namespace qorvex
