#include "object_browser.h"

#include <QAction>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <functional>
#include <string>
#include <vector>

#include "qorvex/ast/metadata_provider.h"
#include "qorvex/designer/dialogs.h"

namespace qorvex {

namespace {

enum ItemRole { irName = Qt::UserRole, irSQLName, irLoaded };
enum ItemType { itFolder = QTreeWidgetItem::UserType, itObject, itColumn, itMessage };

// Objects drag as their SQL name; folders and columns do not drag.
class ObjectTree : public QTreeWidget {
 public:
  using QTreeWidget::QTreeWidget;
  // Return on an item adds it, as a double click does.
  std::function<void(QTreeWidgetItem*)> OnReturn;

 protected:
  void keyPressEvent(QKeyEvent* Event) override {
    if ((Event->key() == Qt::Key_Return || Event->key() == Qt::Key_Enter) && currentItem() &&
        currentItem()->type() == itObject && OnReturn) {
      OnReturn(currentItem());
      return;
    }
    QTreeWidget::keyPressEvent(Event);
  }
  QStringList mimeTypes() const override {
    return {QString::fromLatin1(TqxObjectBrowser::kObjectMimeType)};
  }
  QMimeData* mimeData(const QList<QTreeWidgetItem*>& Items) const override {
    if (Items.isEmpty() || Items.front()->type() != itObject)
      return nullptr;
    auto* data = new QMimeData;
    const QString name = Items.front()->data(0, irSQLName).toString();
    data->setData(QString::fromLatin1(TqxObjectBrowser::kObjectMimeType), name.toUtf8());
    data->setText(name);
    return data;
  }
};

}  // namespace

TqxObjectBrowser::TqxObjectBrowser(QWidget* Parent) : QWidget(Parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(2, 2, 2, 2);
  Filter_ = new QLineEdit(this);
  Filter_->setPlaceholderText(QStringLiteral("Filter"));
  Filter_->setClearButtonEnabled(true);
  Tree_ = new ObjectTree(this);
  Tree_->setHeaderHidden(true);
  Tree_->setDragEnabled(true);
  Tree_->setDragDropMode(QAbstractItemView::DragOnly);
  Tree_->setSelectionMode(QAbstractItemView::SingleSelection);
  Tree_->setToolTip(
      QStringLiteral("Drag a table onto the diagram, or double click it to add it "
                     "with its foreign-key links"));
  layout->addWidget(Filter_);
  layout->addWidget(Tree_);
  setFocusProxy(Tree_);
  connect(Filter_, &QLineEdit::textChanged, this, &TqxObjectBrowser::ApplyFilter);
  connect(Tree_, &QTreeWidget::itemExpanded, this, &TqxObjectBrowser::LoadColumns);
  connect(Tree_, &QTreeWidget::itemDoubleClicked, this,
          [this](QTreeWidgetItem* Item) { Activated(Item); });
  // The same commands on the context menu (and its key): with or without the links.
  auto* add = new QAction(QStringLiteral("&Add with Foreign-Key Links"), Tree_);
  auto* addAlone = new QAction(QStringLiteral("Add &Without Links"), Tree_);
  Tree_->addAction(add);
  Tree_->addAction(addAlone);
  Tree_->setContextMenuPolicy(Qt::ActionsContextMenu);
  auto current = [this]() -> QTreeWidgetItem* {
    QTreeWidgetItem* item = Tree_->currentItem();
    return item != nullptr && item->type() == itObject ? item : nullptr;
  };
  connect(add, &QAction::triggered, this, [this, current] { Activated(current()); });
  connect(addAlone, &QAction::triggered, this, [this, current] {
    if (QTreeWidgetItem* item = current())
      emit addAloneRequested(item->data(0, irSQLName).toString());
  });
  connect(Tree_, &QTreeWidget::currentItemChanged, this, [add, addAlone, current] {
    add->setEnabled(current() != nullptr);
    addAlone->setEnabled(current() != nullptr);
  });
  add->setEnabled(false);
  addAlone->setEnabled(false);
  static_cast<ObjectTree*>(Tree_)->OnReturn = [this](QTreeWidgetItem* Item) { Activated(Item); };
  // Return in the filter goes to the first object shown.
  connect(Filter_, &QLineEdit::returnPressed, this, [this] {
    for (QTreeWidgetItem* folder : {Tables_, Views_}) {
      for (int i = 0; folder != nullptr && i < folder->childCount(); ++i) {
        if (!folder->child(i)->isHidden()) {
          Tree_->setCurrentItem(folder->child(i));
          Tree_->setFocus();
          return;
        }
      }
    }
  });
}

void TqxObjectBrowser::SetMetadata(TqxBaseMetadataProvider* Provider,
                                   const TastSyntaxProvider* Syntax) {
  Provider_ = Provider;
  Syntax_ = Syntax;
  Refresh();
}

QString TqxObjectBrowser::SQLName(const QString& Name) const {
  const std::string name = Name.toStdString();
  return QString::fromStdString(IsPlainSQLName(name, Syntax_) ? name : QuoteSQLName(name, Syntax_));
}

void TqxObjectBrowser::Refresh() {
  Tree_->clear();
  Tables_ = Views_ = nullptr;
  if (Provider_ == nullptr)
    return;
  auto fill = [this](const QString& Caption, bool Tables) {
    auto* folder = new QTreeWidgetItem(Tree_, {Caption}, itFolder);
    folder->setFlags(Qt::ItemIsEnabled);
    std::vector<std::string> names;
    try {
      if (Tables)
        Provider_->GetTableNames(names, false);
      else
        Provider_->GetViewNames(names, false);
    } catch (const std::exception& error) {
      auto* item = new QTreeWidgetItem(folder, {QString::fromStdString(error.what())}, itMessage);
      item->setFlags(Qt::ItemIsEnabled);
      emit metadataError(QString::fromStdString(error.what()));
    }
    for (const std::string& name : names) {
      const QString text = QString::fromStdString(name);
      auto* item = new QTreeWidgetItem(folder, {text}, itObject);
      item->setData(0, irName, text);
      item->setData(0, irSQLName, SQLName(text));
      item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
      item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    }
    folder->setText(0, QStringLiteral("%1 (%2)").arg(Caption).arg(names.size()));
    folder->setExpanded(true);
    return folder;
  };
  Tables_ = fill(QStringLiteral("Tables"), true);
  Views_ = fill(QStringLiteral("Views"), false);
  ApplyFilter(Filter_->text());
}

QTreeWidgetItem* TqxObjectBrowser::FindObject(const QString& Name) const {
  for (QTreeWidgetItem* folder : {Tables_, Views_}) {
    for (int i = 0; folder != nullptr && i < folder->childCount(); ++i) {
      if (folder->child(i)->data(0, irName).toString() == Name)
        return folder->child(i);
    }
  }
  return nullptr;
}

void TqxObjectBrowser::ApplyFilter(const QString& Text) {
  const QString needle = Text.trimmed();
  for (QTreeWidgetItem* folder : {Tables_, Views_}) {
    for (int i = 0; folder != nullptr && i < folder->childCount(); ++i) {
      QTreeWidgetItem* item = folder->child(i);
      if (item->type() == itObject)
        item->setHidden(!needle.isEmpty() &&
                        !item->data(0, irName).toString().contains(needle, Qt::CaseInsensitive));
    }
  }
}

void TqxObjectBrowser::LoadColumns(QTreeWidgetItem* Object) {
  if (Object->type() != itObject || Object->data(0, irLoaded).toBool() || Provider_ == nullptr)
    return;
  Object->setData(0, irLoaded, true);
  std::vector<std::string> fields;
  try {
    Provider_->GetFields("select * from " + Object->data(0, irSQLName).toString().toStdString(),
                         fields);
  } catch (const std::exception& error) {
    auto* item = new QTreeWidgetItem(Object, {QString::fromStdString(error.what())}, itMessage);
    item->setFlags(Qt::ItemIsEnabled);
    emit metadataError(QString::fromStdString(error.what()));
  }
  for (const std::string& field : fields) {
    auto* item = new QTreeWidgetItem(Object, {QString::fromStdString(field)}, itColumn);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
  }
  if (Object->childCount() == 0)
    Object->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
}

void TqxObjectBrowser::Activated(QTreeWidgetItem* Item) {
  if (Item != nullptr && Item->type() == itObject)
    emit addRequested(Item->data(0, irSQLName).toString());
}

}  // namespace qorvex
