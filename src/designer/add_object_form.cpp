// The Add object dialog: the metadata's tables and views, a filter, and adding the chosen
// objects to the builder's current union operand.
#include <QAbstractListModel>
#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QSortFilterProxyModel>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "designer/designer_p.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/model/query.h"

namespace qorvex {

// The names of one list with the image every item shows. Cheaper than list-widget items
// on catalogues of many thousand objects.
class TqxObjectListModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  void SetNames(QStringList Names) {
    beginResetModel();
    Names_ = std::move(Names);
    endResetModel();
  }
  void SetImage(const QIcon& Image) {
    Image_ = Image;
    if (!Names_.isEmpty())
      emit dataChanged(index(0), index(static_cast<int>(Names_.size()) - 1), {Qt::DecorationRole});
  }
  int rowCount(const QModelIndex& Parent) const override {
    return Parent.isValid() ? 0 : static_cast<int>(Names_.size());
  }
  QVariant data(const QModelIndex& Index, int Role) const override {
    if (!Index.isValid() || Index.row() >= Names_.size())
      return {};
    if (Role == Qt::DisplayRole || Role == Qt::ToolTipRole)
      return Names_[Index.row()];
    if (Role == Qt::DecorationRole && !Image_.isNull())
      return Image_;
    return {};
  }

 private:
  QStringList Names_;
  QIcon Image_;
};

namespace {

QSortFilterProxyModel* NewFilter(QObject* Parent, QAbstractItemModel* Source) {
  auto* filter = new QSortFilterProxyModel(Parent);
  filter->setSourceModel(Source);
  filter->setFilterCaseSensitivity(Qt::CaseInsensitive);
  filter->setFilterRole(Qt::DisplayRole);
  return filter;
}

QListView* NewObjectList(QWidget* Parent, QAbstractItemModel* Model) {
  auto* list = new QListView(Parent);
  list->setModel(Model);
  list->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list->setUniformItemSizes(true);
  return list;
}

QPixmap PictureToPixmap(const TqxPicture& Picture) {
  QPixmap pixmap;
  if (!Picture.Data.empty())
    pixmap.loadFromData(Picture.Data.data(), static_cast<uint>(Picture.Data.size()));
  else if (!Picture.FileName.empty())
    pixmap.load(QString::fromStdString(Picture.FileName));
  return pixmap;
}

QIcon ImageOf(const TqxImageList& Images, int Index) {
  if (Index < 0 || Index >= static_cast<int>(Images.Images.size()))
    return {};
  const QPixmap pixmap = PictureToPixmap(Images.Images[static_cast<std::size_t>(Index)]);
  return pixmap.isNull() ? QIcon() : QIcon(pixmap);
}

}  // namespace

std::string TqxAddObjectForm::ObjectNameForSQL(const std::string& Name,
                                               const TastSyntaxProvider* Syntax) {
  return IsPlainSQLName(Name, Syntax) ? Name : QuoteSQLName(Name, Syntax);
}

TqxAddObjectForm::TqxAddObjectForm(TqxQueryBuilder* Builder, QWidget* Parent)
    : QDialog(Parent != nullptr ? Parent : Builder), Builder_(Builder) {
  setWindowTitle(QStringLiteral("Add new object"));
  setModal(true);
  auto* layout = new QVBoxLayout(this);
  const int m = DialogScaled(this, 6);
  layout->setContentsMargins(m, m, m, m);
  layout->setSpacing(DialogScaled(this, 4));

  Label1 = new QLabel(QStringLiteral("Select an object and press the \"Add Object\" button to add "
                                     "new object to the query"),
                      this);
  Label1->setWordWrap(true);
  layout->addWidget(Label1);
  eFilter = new QLineEdit(this);
  eFilter->setPlaceholderText(QStringLiteral("Filter"));
  eFilter->setClearButtonEnabled(true);
  layout->addWidget(eFilter);

  TablesModel_ = new TqxObjectListModel(this);
  ViewsModel_ = new TqxObjectListModel(this);
  TablesFilter_ = NewFilter(this, TablesModel_);
  ViewsFilter_ = NewFilter(this, ViewsModel_);

  pcObjects = new QTabWidget(this);
  tsTables = new QWidget(pcObjects);
  auto* tablesLayout = new QVBoxLayout(tsTables);
  tablesLayout->setContentsMargins(0, 0, 0, DialogScaled(this, 4));
  lTables = NewObjectList(tsTables, TablesFilter_);
  tablesLayout->addWidget(lTables, 1);
  cbAddFK = new QCheckBox(QStringLiteral("Create Links From Foreign Keys"), tsTables);
  cbAddFK->setChecked(true);
  tablesLayout->addWidget(cbAddFK);
  pcObjects->addTab(tsTables, QStringLiteral("Tables"));
  tsViews = new QWidget(pcObjects);
  auto* viewsLayout = new QVBoxLayout(tsViews);
  viewsLayout->setContentsMargins(0, 0, 0, 0);
  lViews = NewObjectList(tsViews, ViewsFilter_);
  viewsLayout->addWidget(lViews);
  pcObjects->addTab(tsViews, QStringLiteral("Views"));
  pcObjects->setCurrentIndex(0);
  layout->addWidget(pcObjects, 1);

  auto* buttons = new QHBoxLayout;
  bAdd = new QPushButton(QStringLiteral("&Add Object"), this);
  bAdd->setAutoDefault(false);
  bClose = new QPushButton(QStringLiteral("Close"), this);
  bClose->setDefault(true);  // Escape closes a dialog anyway (reject)
  buttons->addWidget(bAdd);
  buttons->addStretch(1);
  buttons->addWidget(bClose);
  layout->addLayout(buttons);

  connect(bAdd, &QPushButton::clicked, this, &TqxAddObjectForm::bAddClick);
  connect(bClose, &QPushButton::clicked, this, &QDialog::reject);
  connect(lTables, &QListView::doubleClicked, this, &TqxAddObjectForm::AddIndex);
  connect(lViews, &QListView::doubleClicked, this, &TqxAddObjectForm::AddIndex);
  connect(eFilter, &QLineEdit::textChanged, this, &TqxAddObjectForm::SetFilter);
  setTabOrder(eFilter, pcObjects);
  eFilter->setFocus();

  LoadOptions();
}

TqxAddObjectForm::~TqxAddObjectForm() = default;

void TqxAddObjectForm::FillLists() {
  TqxBaseMetadataProvider* metadata = Builder_->GetMetadataProvider();
  std::vector<std::string> names;
  if (metadata != nullptr)
    metadata->GetTableNames(names, false);
  AddNames(names, true);
  const TqxBaseSyntaxProvider* syntax = Builder_->GetSyntaxProvider();
  const bool views = syntax != nullptr && syntax->IsSupportViews();
  const int viewsPage = pcObjects->indexOf(tsViews);
  if (views) {
    names.clear();
    if (metadata != nullptr)
      metadata->GetViewNames(names, false);
    AddNames(names, false);
    if (viewsPage < 0)
      pcObjects->addTab(tsViews, QStringLiteral("Views"));
  } else {
    ViewsModel_->SetNames({});
    if (viewsPage >= 0)
      pcObjects->removeTab(viewsPage);
  }
}

void TqxAddObjectForm::AddNames(const std::vector<std::string>& Names, bool Tables) {
  QStringList list;
  list.reserve(static_cast<qsizetype>(Names.size()));
  for (const std::string& name : Names)
    list.push_back(QString::fromStdString(name));
  (Tables ? TablesModel_ : ViewsModel_)->SetNames(std::move(list));
}

void TqxAddObjectForm::ApplyListStyle(QListView* List) {
  const TqxAddObjectFormOptions& options = Builder_->GetAddObjectFormOptions();
  const int small = DialogScaled(this, 16);
  const int large = DialogScaled(this, 32);
  List->setIconSize(QSize(small, small));
  switch (options.ListViewStyle) {
    case vsIcon:
      List->setViewMode(QListView::IconMode);
      List->setIconSize(QSize(large, large));
      List->setMovement(QListView::Static);
      break;
    case vsSmallIcon:
      List->setViewMode(QListView::ListMode);
      List->setFlow(QListView::LeftToRight);
      List->setWrapping(true);
      break;
    case vsList:
      List->setViewMode(QListView::ListMode);
      List->setFlow(QListView::TopToBottom);
      List->setWrapping(true);
      break;
    case vsReport:
      List->setViewMode(QListView::ListMode);
      List->setFlow(QListView::TopToBottom);
      List->setWrapping(false);
      break;
  }
  List->setResizeMode(QListView::Adjust);
}

void TqxAddObjectForm::LoadOptions() {
  if (WritingSize_)
    return;
  LoadingOptions_ = true;
  const TqxAddObjectFormOptions& options = Builder_->GetAddObjectFormOptions();
  const TqxAddObjectSizeConstraints& limits = options.Constraints;
  setMinimumSize(DialogScaled(this, std::max(0, limits.MinWidth)),
                 DialogScaled(this, std::max(0, limits.MinHeight)));
  setMaximumSize(limits.MaxWidth > 0 ? DialogScaled(this, limits.MaxWidth) : QWIDGETSIZE_MAX,
                 limits.MaxHeight > 0 ? DialogScaled(this, limits.MaxHeight) : QWIDGETSIZE_MAX);
  resize(DialogScaled(this, options.Width), DialogScaled(this, options.Height));
  ApplyListStyle(lTables);
  ApplyListStyle(lViews);
  const TqxImageList& images =
      options.ListViewStyle == vsIcon ? options.ImageListLarge : options.ImageListSmall;
  TablesModel_->SetImage(ImageOf(images, options.ImageIndexTables));
  ViewsModel_->SetImage(ImageOf(images, options.ImageIndexViews));
  // Placement: centred on the screen, on the builder's window, or on the builder.
  QWidget* around = nullptr;
  if (options.Position == poMainFormCenter)
    around = Builder_->window();
  else if (options.Position == poOwnerFormCenter)
    around = Builder_;
  QRect area;
  if (around != nullptr && around->isVisible())
    area = QRect(around->mapToGlobal(QPoint(0, 0)), around->size());
  else if (options.Position != poDesigned && screen() != nullptr)
    area = screen()->availableGeometry();
  if (area.isValid())
    move(area.center() - QPoint(width() / 2, height() / 2));
  LoadingOptions_ = false;
}

int TqxAddObjectForm::ShowModal() {
  FillLists();
  LoadOptions();
  eFilter->setFocus();
  return exec();
}

void TqxAddObjectForm::SetFilter(const QString& Text) {
  TablesFilter_->setFilterFixedString(Text);
  ViewsFilter_->setFilterFixedString(Text);
}

void TqxAddObjectForm::bAddClick() {
  QListView* list = pcObjects->currentWidget() == tsViews ? lViews : lTables;
  QModelIndexList rows = list->selectionModel()->selectedIndexes();
  if (rows.isEmpty()) {
    if (!list->currentIndex().isValid())
      return;
    rows.push_back(list->currentIndex());
  }
  std::sort(rows.begin(), rows.end(),
            [](const QModelIndex& A, const QModelIndex& B) { return A.row() < B.row(); });
  const bool tables = list == lTables;
  const bool withKeys = tables && cbAddFK->isChecked();
  std::vector<std::string> names;
  for (const QModelIndex& row : rows)
    names.push_back(row.data(Qt::DisplayRole).toString().toStdString());
  TqxUnionSubQuery* operand = Builder_->GetActiveUnionSubquery();
  if (operand == nullptr)
    return;
  const TastSyntaxProvider* syntax = Builder_->GetASTSyntaxProvider();
  TqxQueryBuilderPrivate::Run(Builder_, [&] {
    // Several objects are one change of the query.
    TqxUpdateGuard guard(operand);
    for (const std::string& name : names) {
      TqxDataSourceObject* ds = operand->AddObject(ObjectNameForSQL(name, syntax));
      if (ds != nullptr)
        ++AddedCount_;
      if (ds != nullptr && withKeys)
        operand->AddFKLinksForObject(ds);
    }
  });
}

void TqxAddObjectForm::AddIndex(const QModelIndex& Index) {
  if (!Index.isValid())
    return;
  auto* list = qobject_cast<QListView*>(sender());
  if (list == nullptr)
    return;
  list->selectionModel()->setCurrentIndex(Index, QItemSelectionModel::ClearAndSelect);
  bAddClick();
}

void TqxAddObjectForm::FormResize() {
  if (LoadingOptions_ || !isVisible())
    return;
  TqxAddObjectFormOptions options = Builder_->GetAddObjectFormOptions();
  const double scale = DialogScale(this);
  options.Width = static_cast<int>(std::lround(width() / scale));
  options.Height = static_cast<int>(std::lround(height() / scale));
  WritingSize_ = true;
  Builder_->SetAddObjectFormOptions(options);
  WritingSize_ = false;
}

void TqxAddObjectForm::resizeEvent(QResizeEvent* Event) {
  QDialog::resizeEvent(Event);
  FormResize();
}

}  // namespace qorvex
