#pragma once

#include <QAbstractTableModel>
#include <QElapsedTimer>
#include <QStringList>
#include <QVariant>
#include <QWidget>
#include <memory>
#include <vector>

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTableView;
class QThread;
class QTimer;

namespace qorvex {

// The rows of a result as they arrive.
class TqxResultsModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  using QAbstractTableModel::QAbstractTableModel;
  void Reset(const QStringList& Columns);
  void Append(std::vector<QVariantList>&& Rows);

  int rowCount(const QModelIndex& Parent = {}) const override;
  int columnCount(const QModelIndex& Parent = {}) const override;
  QVariant data(const QModelIndex& Index, int Role) const override;
  QVariant headerData(int Section, Qt::Orientation Orientation, int Role) const override;

 private:
  QStringList Columns_;
  std::vector<QVariantList> Rows_;
};

// Where a statement runs: a Qt SQL driver and what it connects to.
struct TqxRunTarget {
  QString driver;
  QString database;
  QString options;
};

// Runs the statement of the editor on the database in a worker thread with a connection
// of its own, and shows the rows as they arrive, their count, the time taken and the
// database's message when it fails. Cancel stops the fetching.
class TqxResultsPane : public QWidget {
  Q_OBJECT
 public:
  // Rows beyond this are not fetched (the count says so).
  static constexpr int kMaxRows = 1000000;

  explicit TqxResultsPane(QWidget* Parent = nullptr);
  ~TqxResultsPane() override;

  // Starts running Sql; false (and nothing started) while a run is going on.
  bool Run(const TqxRunTarget& Target, const QString& Sql);
  void Cancel();
  bool IsRunning() const { return Thread_ != nullptr; }

  QTableView* Table() const { return Table_; }
  TqxResultsModel* Model() const { return Model_; }
  QPushButton* CancelButton() const { return Cancel_; }
  // The count and time line under the table.
  QString Summary() const;
  // The selected cells, a line per row and a tab between columns (Ctrl+C copies it).
  QString SelectionText() const;
  void CopySelection() const;
  // The database's message of the last failed run, else empty.
  QString ErrorText() const { return Error_; }

 signals:
  void started();
  // Rows is the number fetched; Error is empty on success.
  void finished(qint64 Rows, const QString& Error);

 private:
  struct Shared;
  void Finish(const QString& Error, bool Cancelled, bool Truncated);
  void ShowProgress();

  TqxResultsModel* Model_;
  QStackedWidget* Pages_;
  QTableView* Table_;
  QPlainTextEdit* Message_;
  QLabel* Summary_;
  QPushButton* Cancel_;
  QTimer* Ticker_;
  QThread* Thread_ = nullptr;
  std::shared_ptr<Shared> Shared_;
  QElapsedTimer Clock_;
  QString Error_;
};

}  // namespace qorvex
