#include "results_pane.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStackedWidget>
#include <QTableView>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <atomic>
#include <mutex>

#if QORVEX_SQLITE_AVAILABLE
#include <sqlite3.h>
#endif

namespace qorvex {

namespace {
// Rows are handed to the window in batches of this many, or sooner when this much time
// has passed, so that the first rows show at once. While the window has not taken the
// batches already sent, rows gather in the next one (up to kMaxBatchRows): a flood of
// posted batches would be handled in one go and keep the window from its timers and
// input.
constexpr int kBatchRows = 500;
constexpr int kBatchMs = 40;
constexpr int kMaxPending = 2;
constexpr int kMaxBatchRows = 20000;

QString DatabaseMessage(const QSqlError& Error) {
  // The driver's text is the database's own; Qt's adds what it was doing.
  QString text = Error.databaseText().trimmed();
  const QString driver = Error.driverText().trimmed();
  if (text.isEmpty())
    text = driver;
  else if (!driver.isEmpty() && !text.contains(driver))
    text += QStringLiteral("\n(") + driver + QStringLiteral(")");
  if (!Error.nativeErrorCode().isEmpty())
    text += QStringLiteral("\nError code: ") + Error.nativeErrorCode();
  return text.isEmpty() ? QStringLiteral("The statement failed without a message.") : text;
}
}  // namespace

void TqxResultsModel::Reset(const QStringList& Columns) {
  beginResetModel();
  Columns_ = Columns;
  Rows_.clear();
  endResetModel();
}

void TqxResultsModel::Append(std::vector<QVariantList>&& Rows) {
  if (Rows.empty())
    return;
  const int first = static_cast<int>(Rows_.size());
  beginInsertRows({}, first, first + static_cast<int>(Rows.size()) - 1);
  for (QVariantList& row : Rows)
    Rows_.push_back(std::move(row));
  endInsertRows();
}

int TqxResultsModel::rowCount(const QModelIndex& Parent) const {
  return Parent.isValid() ? 0 : static_cast<int>(Rows_.size());
}

int TqxResultsModel::columnCount(const QModelIndex& Parent) const {
  return Parent.isValid() ? 0 : static_cast<int>(Columns_.size());
}

QVariant TqxResultsModel::data(const QModelIndex& Index, int Role) const {
  if (!Index.isValid() || Index.row() >= rowCount() || Index.column() >= columnCount())
    return {};
  const QVariantList& row = Rows_[static_cast<std::size_t>(Index.row())];
  const QVariant& value = Index.column() < row.size() ? row.at(Index.column()) : QVariant();
  switch (Role) {
    case Qt::EditRole:
      return value;
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return value.isNull() ? QStringLiteral("NULL") : value;
    case Qt::ForegroundRole:
      return value.isNull() ? QVariant(QPalette().color(QPalette::Disabled, QPalette::Text))
                            : QVariant();
    case Qt::TextAlignmentRole: {
      const int type = value.metaType().id();
      const bool number = type == QMetaType::Int || type == QMetaType::LongLong ||
                          type == QMetaType::Double || type == QMetaType::UInt ||
                          type == QMetaType::ULongLong;
      return QVariant::fromValue(
          Qt::Alignment((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    }
    default:
      return {};
  }
}

QVariant TqxResultsModel::headerData(int Section, Qt::Orientation Orientation, int Role) const {
  if (Role != Qt::DisplayRole)
    return {};
  if (Orientation == Qt::Vertical)
    return Section + 1;
  return Section < Columns_.size() ? Columns_.at(Section) : QVariant();
}

// What the worker and the window share: the stop request and, for SQLite, the handle a
// long step is interrupted on.
struct TqxResultsPane::Shared {
  std::atomic<bool> cancel{false};
  // Batches posted and not yet shown.
  std::atomic<int> pending{0};
  std::mutex lock;
#if QORVEX_SQLITE_AVAILABLE
  sqlite3* sqlite = nullptr;
#endif
  void Interrupt() {
#if QORVEX_SQLITE_AVAILABLE
    std::lock_guard<std::mutex> guard(lock);
    if (sqlite != nullptr)
      sqlite3_interrupt(sqlite);
#endif
  }
  void SetHandle(const QVariant& Handle) {
#if QORVEX_SQLITE_AVAILABLE
    std::lock_guard<std::mutex> guard(lock);
    sqlite = Handle.isValid() && qstrcmp(Handle.typeName(), "sqlite3*") == 0
                 ? *static_cast<sqlite3* const*>(Handle.data())
                 : nullptr;
#else
    Q_UNUSED(Handle);
#endif
  }
};

TqxResultsPane::TqxResultsPane(QWidget* Parent) : QWidget(Parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(2);
  Model_ = new TqxResultsModel(this);
  Pages_ = new QStackedWidget(this);
  Table_ = new QTableView(Pages_);
  Table_->setModel(Model_);
  Table_->setAlternatingRowColors(true);
  Table_->setSelectionBehavior(QAbstractItemView::SelectItems);
  Table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  Table_->verticalHeader()->setDefaultSectionSize(Table_->fontMetrics().height() + 6);
  Table_->horizontalHeader()->setDefaultSectionSize(120);
  Message_ = new QPlainTextEdit(Pages_);
  Message_->setReadOnly(true);
  Message_->setStyleSheet(QStringLiteral("color: #a00000;"));
  // Ctrl+C copies the selected cells as tab-separated lines, as spreadsheets read them.
  auto* copy = new QAction(QStringLiteral("&Copy"), Table_);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  Table_->addAction(copy);
  Table_->setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(copy, &QAction::triggered, this, [this] { CopySelection(); });
  Pages_->addWidget(Table_);
  Pages_->addWidget(Message_);
  layout->addWidget(Pages_, 1);

  auto* bar = new QHBoxLayout;
  bar->setContentsMargins(4, 0, 4, 2);
  Summary_ = new QLabel(QStringLiteral("Press F5 to run the statement."), this);
  Summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  Cancel_ = new QPushButton(QStringLiteral("&Cancel"), this);
  Cancel_->setEnabled(false);
  Cancel_->setFocusPolicy(Qt::TabFocus);
  bar->addWidget(Summary_, 1);
  bar->addWidget(Cancel_);
  layout->addLayout(bar);
  setFocusProxy(Table_);

  Ticker_ = new QTimer(this);
  Ticker_->setInterval(200);
  connect(Ticker_, &QTimer::timeout, this, &TqxResultsPane::ShowProgress);
  connect(Cancel_, &QPushButton::clicked, this, &TqxResultsPane::Cancel);
}

TqxResultsPane::~TqxResultsPane() {
  if (Thread_ != nullptr) {
    Cancel();
    Thread_->wait();
    delete Thread_;
  }
}

QString TqxResultsPane::SelectionText() const {
  QModelIndexList cells = Table_->selectionModel()->selectedIndexes();
  if (cells.isEmpty())
    return {};
  std::sort(cells.begin(), cells.end(), [](const QModelIndex& A, const QModelIndex& B) {
    return A.row() != B.row() ? A.row() < B.row() : A.column() < B.column();
  });
  QString text;
  int row = cells.front().row();
  bool first = true;
  for (const QModelIndex& cell : cells) {
    if (cell.row() != row) {
      text += QLatin1Char('\n');
      row = cell.row();
      first = true;
    }
    if (!first)
      text += QLatin1Char('\t');
    first = false;
    const QVariant value = cell.data(Qt::EditRole);
    text += value.isNull() ? QString() : value.toString();
  }
  return text;
}

void TqxResultsPane::CopySelection() const {
  const QString text = SelectionText();
  if (!text.isEmpty())
    QGuiApplication::clipboard()->setText(text);
}

QString TqxResultsPane::Summary() const {
  return Summary_->text();
}

bool TqxResultsPane::Run(const TqxRunTarget& Target, const QString& Sql) {
  if (Thread_ != nullptr)
    return false;
  Error_.clear();
  Model_->Reset({});
  Pages_->setCurrentWidget(Table_);
  Shared_ = std::make_shared<Shared>();
  std::shared_ptr<Shared> shared = Shared_;
  static std::atomic<int> serial{0};
  const QString name = QStringLiteral("qorvex-run-%1").arg(++serial);

  // Everything the worker hands over is posted to the window's thread; the window waits
  // for the worker before it goes, so `this` outlives every posting.
  Thread_ = QThread::create([this, shared, name, Target, Sql] {
    QString error;
    bool truncated = false;
    {
      QSqlDatabase db = QSqlDatabase::addDatabase(Target.driver, name);
      db.setDatabaseName(Target.database);
      db.setConnectOptions(Target.options);
      if (!db.isValid()) {
        error = QStringLiteral("The Qt SQL driver %1 is not installed.").arg(Target.driver);
      } else if (!db.open()) {
        error = DatabaseMessage(db.lastError());
      } else {
        shared->SetHandle(db.driver()->handle());
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.exec(Sql)) {
          error = DatabaseMessage(query.lastError());
        } else {
          const QSqlRecord record = query.record();
          QStringList columns;
          for (int i = 0; i < record.count(); ++i)
            columns << record.fieldName(i);
          QMetaObject::invokeMethod(
              this, [this, columns] { Model_->Reset(columns); }, Qt::QueuedConnection);
          std::vector<QVariantList> batch;
          QElapsedTimer sinceBatch;
          sinceBatch.start();
          int fetched = 0;
          auto post = [&] {
            if (batch.empty())
              return;
            QMetaObject::invokeMethod(
                this,
                [this, rows = std::move(batch)]() mutable { Model_->Append(std::move(rows)); },
                Qt::QueuedConnection);
            batch = {};
            sinceBatch.restart();
          };
          while (!shared->cancel.load() && query.next()) {
            if (fetched == kMaxRows) {
              truncated = true;
              break;
            }
            QVariantList row;
            row.reserve(record.count());
            for (int i = 0; i < record.count(); ++i)
              row << query.value(i);
            batch.push_back(std::move(row));
            ++fetched;
            const int size = static_cast<int>(batch.size());
            if (size >= kMaxBatchRows) {
              while (shared->pending.load() >= kMaxPending && !shared->cancel.load())
                QThread::msleep(2);
              post();
            } else if ((size >= kBatchRows || sinceBatch.elapsed() >= kBatchMs) &&
                       shared->pending.load() < kMaxPending) {
              post();
            }
          }
          post();
          // A step that failed after the first row ends the loop like the last row does.
          if (!shared->cancel.load() && query.lastError().isValid())
            error = DatabaseMessage(query.lastError());
        }
        shared->SetHandle({});
      }
    }
    QSqlDatabase::removeDatabase(name);
    const bool cancelled = shared->cancel.load();
    QMetaObject::invokeMethod(
        this, [this, error, cancelled, truncated] { Finish(error, cancelled, truncated); },
        Qt::QueuedConnection);
  });
  Clock_.start();
  Cancel_->setEnabled(true);
  Summary_->setText(QStringLiteral("Running..."));
  Ticker_->start();
  Thread_->start();
  emit started();
  return true;
}

void TqxResultsPane::Cancel() {
  if (Shared_ == nullptr || Thread_ == nullptr)
    return;
  Shared_->cancel.store(true);
  // SQLite stops a long step at once; other drivers stop before the next row.
  Shared_->Interrupt();
  Cancel_->setEnabled(false);
  Summary_->setText(QStringLiteral("Cancelling..."));
}

void TqxResultsPane::ShowProgress() {
  Summary_->setText(QStringLiteral("Running... %L1 rows, %2 s")
                        .arg(Model_->rowCount())
                        .arg(Clock_.elapsed() / 1000.0, 0, 'f', 1));
}

void TqxResultsPane::Finish(const QString& Error, bool Cancelled, bool Truncated) {
  const qint64 ms = Clock_.elapsed();
  Ticker_->stop();
  if (Thread_ != nullptr) {
    Thread_->wait();
    delete Thread_;
    Thread_ = nullptr;
  }
  Cancel_->setEnabled(false);
  const QString time = ms < 1000 ? QStringLiteral("%1 ms").arg(ms)
                                 : QStringLiteral("%1 s").arg(ms / 1000.0, 0, 'f', 2);
  const int rows = Model_->rowCount();
  if (!Error.isEmpty() && !Cancelled) {
    Error_ = Error;
    Message_->setPlainText(Error);
    Pages_->setCurrentWidget(Message_);
    Summary_->setText(QStringLiteral("Failed after %1").arg(time));
  } else if (Cancelled) {
    Summary_->setText(QStringLiteral("Cancelled: %L1 rows in %2").arg(rows).arg(time));
  } else if (Truncated) {
    Summary_->setText(
        QStringLiteral("%L1 rows in %2 (the rest was not fetched)").arg(rows).arg(time));
  } else {
    Summary_->setText(QStringLiteral("%L1 %2 in %3")
                          .arg(rows)
                          .arg(rows == 1 ? QStringLiteral("row") : QStringLiteral("rows"))
                          .arg(time));
  }
  emit finished(rows, Error_);
}

}  // namespace qorvex
