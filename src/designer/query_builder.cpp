#include "qorvex/designer/query_builder.h"

#include "qorvex/designer/dialogs.h"

#include <QApplication>
#include <QBuffer>
#include <QCoreApplication>
#include <QEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPalette>
#include <QUndoStack>
#include <QVBoxLayout>

#include "designer/designer_p.h"
#include "designer/link_control.h"
#include "designer/select_list_control.h"
#include "designer/union_nav_bar.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/select_list.h"
#include "qorvex/version.h"

namespace qorvex {

namespace {
QString FromStd(const std::string& Text) {
  return QString::fromStdString(Text);
}
}  // namespace

// ---------------------------------------------------------------------------------------
// Control handles

TqxRect TqxControlWidget::ControlBounds() {
  const QRect r = Widget()->geometry();
  return TqxRect{r.x(), r.y(), r.width(), r.height()};
}

void TqxControlWidget::SetControlBounds(const TqxRect& Bounds) {
  Widget()->setGeometry(Bounds.Left, Bounds.Top, Bounds.Width, Bounds.Height);
}

void TqxControlWidget::ControlReleased() {
  Widget()->hide();
  Widget()->deleteLater();
}

TqxWidgetControl::TqxWidgetControl(TqxQueryBuilderControlOwner* Owner, TqxControlWidget* Widget)
    : TqxControl(Owner), Widget_(Widget->Widget()), Interface_(Widget) {}

TqxWidgetControl::~TqxWidgetControl() {
  BeginDestroy();
  if (Widget_)
    Interface_->ControlReleased();
}

TqxRect TqxWidgetControl::GetBounds() const {
  return Widget_ ? Interface_->ControlBounds() : TqxControl::GetBounds();
}

void TqxWidgetControl::SetBounds(const TqxRect& Bounds) {
  TqxControl::SetBounds(Bounds);
  if (Widget_)
    Interface_->SetControlBounds(Bounds);
}

void TqxWidgetControl::Repaint() {
  if (Widget_)
    Interface_->RepaintControl();
}

void TqxWidgetControl::UpdateContent() {
  if (Widget_)
    Interface_->UpdateContent();
}

void TqxWidgetControl::MakeVisible() {
  if (Widget_)
    Interface_->MakeVisible();
}

// ---------------------------------------------------------------------------------------
// Factory

std::vector<std::unique_ptr<TqxControl>> TqxDesignerControlFactory::CreateControls(
    TqxQueryBuilderControlOwner& Owner, TqxControl* ParentControl) {
  std::vector<std::unique_ptr<TqxControl>> controls;
  auto* parent = dynamic_cast<TqxWidgetControl*>(ParentControl);
  QWidget* parentWidget = parent != nullptr ? parent->GetWidget() : nullptr;
  TqxQueryBuilderPrivate* d = TqxQueryBuilderPrivate::Of(Builder_);
  TqxControlWidget* widget = nullptr;
  if (auto* query = dynamic_cast<TqxSubQuery*>(&Owner)) {
    if (ParentControl == nullptr)
      widget = new TqxQueryTabSheet(d->Pages, query);
  } else if (auto* operand = dynamic_cast<TqxUnionSubQuery*>(&Owner)) {
    // The operand's page comes first (its work area is the operand's control), then its
    // button and operator on the tab page's union bar.
    if (auto* sheet = qobject_cast<TqxQueryTabSheet*>(parentWidget)) {
      controls.push_back(std::make_unique<TqxWidgetControl>(
          &Owner, new TqxUnionSubQueryTabSheet(Builder_, sheet, operand)));
      controls.push_back(std::make_unique<TqxWidgetControl>(
          &Owner, new TqxUnionButton(sheet->GetNavBar(), operand)));
      widget = new TqxUnionOperator(sheet->GetNavBar(), operand);
    }
  } else if (auto* group = dynamic_cast<TqxUnionGroup*>(&Owner)) {
    // A nested group: its brackets and its operator. The top group shows nothing itself.
    auto* sheet = qobject_cast<TqxQueryTabSheet*>(parentWidget);
    if (sheet != nullptr && group->GetParentGroup() != nullptr) {
      controls.push_back(std::make_unique<TqxWidgetControl>(
          &Owner, new TqxLeftBracket(sheet->GetNavBar(), group)));
      controls.push_back(std::make_unique<TqxWidgetControl>(
          &Owner, new TqxRightBracket(sheet->GetNavBar(), group)));
      widget = new TqxUnionOperator(sheet->GetNavBar(), group);
    }
  } else if (auto* ds = dynamic_cast<TqxDatasource*>(&Owner)) {
    if (auto* page = qobject_cast<TqxUnionSubQueryTabSheet*>(parentWidget))
      widget = new TqxQueryBuilderDataSourceControl(page->GetWorkArea(), ds);
  } else if (auto* selectList = dynamic_cast<TqxSelectList*>(&Owner)) {
    if (auto* page = qobject_cast<TqxUnionSubQueryTabSheet*>(parentWidget))
      widget = new TqxQueryBuilderSelectListControl(Builder_, page, selectList);
  } else if (auto* link = dynamic_cast<TqxLink*>(&Owner)) {
    if (auto* page = qobject_cast<TqxUnionSubQueryTabSheet*>(parentWidget))
      widget = new TqxQueryBuilderLinkControl(page->GetWorkArea(), link);
  }
  if (widget != nullptr)
    controls.push_back(std::make_unique<TqxWidgetControl>(&Owner, widget));
  return controls;
}

void BuildQMenu(QMenu& Menu, const TqxPopupMenu& Items,
                std::vector<std::pair<QAction*, std::function<void()>>>& Handlers) {
  for (const TqxMenuItem& item : Items) {
    if (item.Caption == "-") {
      Menu.addSeparator();
      continue;
    }
    if (!item.Items.empty()) {
      QMenu* sub = Menu.addMenu(FromStd(item.Caption));
      sub->setEnabled(item.Enabled);
      BuildQMenu(*sub, item.Items, Handlers);
      continue;
    }
    QAction* action = Menu.addAction(FromStd(item.Caption));
    action->setEnabled(item.Enabled);
    if (item.Checked) {
      action->setCheckable(true);
      action->setChecked(true);
    }
    if (item.Default) {
      QFont font = action->font();
      font.setBold(true);
      action->setFont(font);
      Menu.setDefaultAction(action);
    }
    if (!item.ShortCut.empty())
      action->setShortcut(QKeySequence(FromStd(item.ShortCut)));
    Handlers.emplace_back(action, item.OnClick);
  }
}

void TqxDesignerControlFactory::PopupMenu(TqxQueryBuilderControlOwner& /*Owner*/,
                                          const TqxPopupMenu& Items, TqxPoint ScreenPos) {
  QMenu menu(Builder_);
  std::vector<std::pair<QAction*, std::function<void()>>> handlers;
  BuildQMenu(menu, Items, handlers);
  const QPoint at(ScreenPos.X, ScreenPos.Y);
  TqxQueryBuilderPrivate* d = TqxQueryBuilderPrivate::Of(Builder_);
  QAction* chosen = d->MenuExecutor ? d->MenuExecutor(menu, at) : menu.exec(at);
  if (chosen == nullptr)
    return;
  for (const auto& [action, handler] : handlers) {
    if (action == chosen && handler && action->isEnabled()) {
      // The handler may free the object the menu was opened on: nothing of it is used
      // afterwards.
      TqxQueryBuilderPrivate::Run(Builder_, handler);
      return;
    }
  }
}

bool TqxDesignerControlFactory::ExecuteDialog(TqxQueryBuilderControlOwner& Owner,
                                              TqxDialogKind Kind) {
  return ExecuteDesignerDialog(Builder_, Owner, Kind);
}

QString AboutText() {
  return QStringLiteral(
             "<b>Qorvex %1</b><br>A visual SQL query builder: one SELECT statement as a "
             "diagram that you edit, with its SQL kept in step.<br>Built with Qt %2.")
      .arg(QStringLiteral(QORVEX_VERSION_STRING), QString::fromLatin1(qVersion()));
}

void TqxDesignerControlFactory::ShowAbout() {
  QMessageBox::about(Builder_, QStringLiteral("About Qorvex"), AboutText());
}

// ---------------------------------------------------------------------------------------
// Private part

TqxQueryBuilderPrivate::TqxQueryBuilderPrivate(TqxQueryBuilder* Builder) : Q(Builder) {}

bool TqxQueryBuilderPrivate::Run(TqxQueryBuilder* Builder, const std::function<void()>& Operation) {
  try {
    Operation();
    return true;
  } catch (const std::exception& error) {
    if (Builder != nullptr)
      Of(Builder)->ReportError(QString::fromStdString(error.what()));
  } catch (...) {
    if (Builder != nullptr)
      Of(Builder)->ReportError(QStringLiteral("Unknown error"));
  }
  return false;
}

void TqxQueryBuilderPrivate::ReportError(const QString& Message) {
  if (Q->receivers(SIGNAL(errorOccurred(QString))) > 0) {
    emit Q->errorOccurred(Message);
    return;
  }
  QMessageBox::warning(Q, QStringLiteral("Qorvex"), Message);
}

void TqxQueryBuilderPrivate::ModelChanged() {
  if (Q->IsDestroying())
    return;
  for (TqxQueryBuilderDataSourceControl* box : Q->findChildren<TqxQueryBuilderDataSourceControl*>())
    box->SyncChecks();
  for (TqxQueryBuilderSelectListControl* grid :
       Q->findChildren<TqxQueryBuilderSelectListControl*>())
    grid->Refresh();
  if (Pages != nullptr)
    Pages->SyncWithModel();
}

const QPixmap& TqxQueryBuilderPrivate::UserBackground() {
  if (!BkImageCacheValid) {
    BkImageCacheValid = true;
    BkImageCache = QPixmap();
    const TqxPicture& picture = Q->GetBkImage();
    if (!picture.Data.empty()) {
      BkImageCache.loadFromData(picture.Data.data(), static_cast<uint>(picture.Data.size()));
    } else if (!picture.FileName.empty()) {
      BkImageCache.load(QString::fromStdString(picture.FileName));
    }
  }
  return BkImageCache;
}

// ---------------------------------------------------------------------------------------
// The builder

TqxQueryBuilder::TqxQueryBuilder(QWidget* Parent)
    : QWidget(Parent), d_(std::make_unique<TqxQueryBuilderPrivate>(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  d_->Pages = new TqxQueryBuiderPageControl(this);
  layout->addWidget(d_->Pages);
  d_->Writer.SetQueryBuilder(this);
  d_->Writer.OnSQLUpdated = [this](TqxBaseSQLBuilder*) {
    d_->ModelChanged();
    emit sqlChanged(FromStd(d_->Writer.GetSQL()));
    d_->ModelReported();
  };
  d_->Undo = new QUndoStack(this);
  // Each step keeps a whole statement and layout: a bound on what a long session holds.
  d_->Undo->setUndoLimit(500);
  d_->LinkPainter = TqxQueryBuilderLinkPainters::Instance().CreateByName(
      TqxBaseQueryBuilder::GetLinkTypeName(), this);
  d_->Factory = std::make_unique<TqxDesignerControlFactory>(this);
  SetControlFactory(d_->Factory.get());
  d_->Pages->SyncWithModel();
  d_->Recorded = d_->Capture();
}

TqxQueryBuilder::~TqxQueryBuilder() {
  // The history is freed with the widget's children, after this class is gone: whoever
  // follows it must not hear of that.
  if (d_->Undo != nullptr)
    d_->Undo->blockSignals(true);
  // The controls go while their widgets still exist; the model follows in the base.
  d_->Writer.OnSQLUpdated = nullptr;
  SetControlFactory(nullptr);
  d_->Writer.SetQueryBuilder(nullptr);
}

QString TqxQueryBuilder::sql() const {
  return FromStd(GetSQL());
}

void TqxQueryBuilder::setSql(const QString& Text) {
  SetSQL(Text.toStdString());
}

void TqxQueryBuilder::PostLoadSQLMessage() {
  QCoreApplication::postEvent(this, new QEvent(kLoadSQLEvent));
}

bool TqxQueryBuilder::event(QEvent* Event) {
  if (Event->type() != kLoadSQLEvent)
    return QWidget::event(Event);
  // The load reports a refused text through OnSQLError; the Qt signal goes beside it.
  const TqxOnSQLError user = OnSQLError;
  OnSQLError = [this, user](TqxBaseQueryBuilder* Sender, const std::string& Sql,
                            const std::string& Errors) {
    if (user)
      user(Sender, Sql, Errors);
    emit sqlError(FromStd(Sql), FromStd(Errors));
  };
  // Boxes of the new text that were on the diagram before stay where they were.
  d_->KeptLayout =
      d_->Restoring == 0 && !d_->HasPendingLayout ? d_->CaptureLayout() : QJsonObject();
  d_->InLoad = true;
  try {
    SetSQLMsg();
  } catch (const std::exception& error) {
    d_->InLoad = false;
    OnSQLError = user;
    d_->ReportError(QString::fromStdString(error.what()));
    d_->LoadHandled();
    emit sqlLoaded();
    return true;
  }
  d_->InLoad = false;
  OnSQLError = user;
  d_->LoadHandled();
  emit sqlLoaded();
  return true;
}

void TqxQueryBuilder::DoMetadataError(TqxDatasource* ADatasource, const std::string& AMessage) {
  TqxBaseQueryBuilder::DoMetadataError(ADatasource, AMessage);
  if (!IsDestroying())
    emit metadataError(ADatasource != nullptr ? FromStd(ADatasource->GetCaption()) : QString(),
                       FromStd(AMessage));
}

void TqxQueryBuilder::DoLayoutChanged() {
  for (TqxUnionSubQueryTabSheet* page : findChildren<TqxUnionSubQueryTabSheet*>())
    page->UpdateLayout();
  if (d_->Pages != nullptr)
    d_->Pages->ApplyTabLook();
  for (TqxQueryTabSheet* sheet : findChildren<TqxQueryTabSheet*>())
    sheet->PlaceNavBar();
}

void TqxQueryBuilder::DoAddObjectFormOptionsChanged() {
  if (d_->AddObjectForm)
    d_->AddObjectForm->NotifyOptionsChanged();
}

void TqxQueryBuilder::DoRepaintBackground() {
  d_->BkImageCacheValid = false;
  for (TqxQueryBuilderWorkArea* area : findChildren<TqxQueryBuilderWorkArea*>())
    area->Canvas()->update();
}

void TqxQueryBuilder::setGridSize(int Value) {
  TqxQueryBuilderPrivate::Run(this, [&] { SetGridSize(Value); });
}

void TqxQueryBuilder::setSplitterHeight(int Value) {
  TqxQueryBuilderPrivate::Run(this, [&] { SetSplitterHeight(Value); });
}

TqxQueryBuilderControlOwner* TqxQueryBuilder::GetFocusedObject() const {
  const TqxUnionSubQuery* operand = GetActiveUnionSubquery();
  const auto* control =
      operand != nullptr ? dynamic_cast<TqxWidgetControl*>(operand->GetWorkArea()) : nullptr;
  const auto* page =
      control != nullptr ? qobject_cast<TqxUnionSubQueryTabSheet*>(control->GetWidget()) : nullptr;
  const auto* focused =
      page != nullptr && page->GetWorkArea() != nullptr
          ? qobject_cast<TqxWorkAreaControl*>(page->GetWorkArea()->GetFocusedControl())
          : nullptr;
  return focused != nullptr ? focused->GetOwnerObject() : nullptr;
}

TqxQueryBuilderLinkPainter* TqxQueryBuilder::GetLinkPainter() const {
  return d_->LinkPainter.get();
}

void TqxQueryBuilder::SetLinkPainter(std::unique_ptr<TqxQueryBuilderLinkPainter> Painter) {
  if (Painter.get() == d_->LinkPainter.get()) {
    Painter.release();  // already ours
    return;
  }
  d_->LinkPainter = std::move(Painter);
  for (TqxQueryBuilderWorkArea* area : findChildren<TqxQueryBuilderWorkArea*>()) {
    for (TqxQueryBuilderLinkControl* link : area->LinkControls())
      link->update();
  }
}

std::string TqxQueryBuilder::GetLinkTypeName() const {
  return d_->LinkPainter ? std::string(d_->LinkPainter->ClassType().ClassName()) : std::string();
}

void TqxQueryBuilder::SetLinkTypeName(const std::string& Value) {
  TqxBaseQueryBuilder::SetLinkTypeName(Value);
  SetLinkPainter(TqxQueryBuilderLinkPainters::Instance().CreateByName(Value, this));
}

bool TqxQueryBuilder::CreateByUserName(const std::string& UserName) {
  std::unique_ptr<TqxQueryBuilderLinkPainter> painter =
      TqxQueryBuilderLinkPainters::Instance().CreateByUserName(UserName, this);
  if (!painter)
    return false;
  TqxBaseQueryBuilder::SetLinkTypeName(std::string(painter->ClassType().ClassName()));
  SetLinkPainter(std::move(painter));
  return true;
}

void TqxQueryBuilder::GetUserNames(const std::function<void(const std::string&)>& Callback) const {
  TqxQueryBuilderLinkPainters::Instance().GetUserNames(Callback);
}

QColor TqxQueryBuilder::ToQColor(TqxColor Color) const {
  if (!IsSystemColor(Color))
    return QColor((Color >> 16) & 0xFF, (Color >> 8) & 0xFF, Color & 0xFF);
  switch (Color) {
    case clWindow:
      return palette().color(QPalette::Base);
    case clBtnFace:
      return palette().color(QPalette::Button);
    case clBtnShadow:
      return palette().color(QPalette::Dark);
    case clAppWorkSpace:
      return palette().color(QPalette::Mid);
    default:
      return palette().color(QPalette::Window);
  }
}

namespace {
TqxColor FromQColor(const QColor& Color) {
  const QColor rgb = Color.toRgb();
  return (static_cast<TqxColor>(rgb.red()) << 16) | (static_cast<TqxColor>(rgb.green()) << 8) |
         static_cast<TqxColor>(rgb.blue());
}
}  // namespace

QColor TqxQueryBuilder::tableColor() const {
  return ToQColor(GetTableColor());
}

void TqxQueryBuilder::setTableColor(const QColor& Value) {
  SetTableColor(Value.isValid() ? FromQColor(Value) : clWindow);
}

QFont TqxQueryBuilder::tableFont() const {
  const TqxFont& f = GetTableFont();
  QFont font = QWidget::font();
  if (!f.Name.empty())
    font.setFamily(FromStd(f.Name));
  if (f.Size > 0)
    font.setPointSize(f.Size);
  font.setBold(f.Bold);
  font.setItalic(f.Italic);
  font.setUnderline(f.Underline);
  return font;
}

void TqxQueryBuilder::setTableFont(const QFont& Value) {
  TqxFont f;
  f.Name = Value.family().toStdString();
  f.Size = Value.pointSize() > 0 ? Value.pointSize() : 0;
  f.Bold = Value.bold();
  f.Italic = Value.italic();
  f.Underline = Value.underline();
  SetTableFont(f);
}

QPixmap TqxQueryBuilder::bkImage() const {
  return d_->UserBackground();
}

void TqxQueryBuilder::setBkImage(const QPixmap& Value) {
  TqxPicture picture;
  if (!Value.isNull()) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    Value.save(&buffer, "PNG");
    picture.Data.assign(bytes.begin(), bytes.end());
  }
  SetBkImage(picture);
}

QColor TqxQueryBuilder::bkColor() const {
  return ToQColor(GetBkColor());
}

void TqxQueryBuilder::setBkColor(const QColor& Value) {
  SetBkColor(Value.isValid() ? FromQColor(Value) : clWhite);
}

}  // namespace qorvex
