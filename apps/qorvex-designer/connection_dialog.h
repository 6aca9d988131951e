#pragma once

#include <QDialog>
#include <QFutureWatcher>
#include <QString>
#include <QStringList>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace qorvex {

// One entry of unixODBC's lists: a data source or a driver, with its description.
struct TqxODBCEntry {
  QString name;
  QString description;
};
// The data sources (user and system) and the drivers the driver manager knows.
QList<TqxODBCEntry> ODBCDataSources();
QList<TqxODBCEntry> ODBCDrivers();
// Connects with the string and disconnects; empty when it worked, else the driver's
// message.
QString TestODBCConnection(const QString& ConnectionString);

// Chooses an ODBC connection: the data sources and drivers unixODBC knows, the connection
// string they start, and a Test button that connects without closing the dialog.
class TqxConnectionDialog : public QDialog {
  Q_OBJECT
 public:
  explicit TqxConnectionDialog(QWidget* Parent = nullptr);
  ~TqxConnectionDialog() override;

  QString ConnectionString() const;
  void SetConnectionString(const QString& Value);
  QListWidget* DataSources() const { return DataSources_; }
  QListWidget* Drivers() const { return Drivers_; }
  QPushButton* TestButton() const { return Test_; }
  // The outcome of the last test ("Connected." or the driver's message).
  QLabel* TestResult() const { return Result_; }

 signals:
  void testFinished(bool Ok);

 private:
  void Test();

  QListWidget* DataSources_;
  QListWidget* Drivers_;
  QLineEdit* String_;
  QPushButton* Test_;
  QLabel* Result_;
  QFutureWatcher<QString> Testing_;
};

}  // namespace qorvex
