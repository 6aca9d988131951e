// The properties-dialog base, its registry by class name, and the Datasource Properties and
// SQL-92 query properties dialogs.
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>
#include <map>

#include "qorvex/ast/from.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"

namespace qorvex {

double DialogScale(const QWidget* Widget) {
  // 13 pixels: the line height of the 8-point font the layouts were drawn with at 96 dpi.
  const int height = QFontMetrics(Widget->font()).height();
  return height > 0 ? height / 13.0 : 1.0;
}

int DialogScaled(const QWidget* Widget, int Pixels) {
  return static_cast<int>(std::lround(Pixels * DialogScale(Widget)));
}

// ---------------------------------------------------------------------------------------
// Base

TqxQBPropertiesForm::TqxQBPropertiesForm(QWidget* Parent) : QDialog(Parent) {
  setModal(true);
}

bool TqxQBPropertiesForm::Edit(TqxQueryBuilderControlOwner* Owner,
                               TastSyntaxProvider* SyntaxProvider) {
  Owner_ = Owner;
  SyntaxProvider_ = SyntaxProvider;
  LastError_.clear();
  LoadProps(Owner);
  if (exec() != QDialog::Accepted)
    return false;
  SaveProps(Owner);
  return true;
}

void TqxQBPropertiesForm::done(int Result) {
  if (Result == QDialog::Accepted) {
    try {
      CheckCanClose();
    } catch (const std::exception& error) {
      LastError_ = QString::fromStdString(error.what());
      ShowError(LastError_);
      return;
    }
  }
  QDialog::done(Result);
}

void TqxQBPropertiesForm::ShowError(const QString& Message) {
  QMessageBox::warning(this, windowTitle(), Message);
}

namespace {
std::map<std::string, TqxPropertiesFormFactory>& FormClasses() {
  static std::map<std::string, TqxPropertiesFormFactory> classes = {
      {"TqxSQL92QueryPropsForm",
       [](QWidget* Parent) -> TqxQBPropertiesForm* { return new TqxSQL92QueryPropsForm(Parent); }},
  };
  return classes;
}

QLineEdit* ReadOnlyEdit(QWidget* Parent) {
  auto* edit = new QLineEdit(Parent);
  edit->setReadOnly(true);
  QPalette palette = edit->palette();
  palette.setColor(QPalette::Base, palette.color(QPalette::Button));
  edit->setPalette(palette);
  return edit;
}

QDialogButtonBox* OkCancel(QDialog* Dialog, QWidget* Parent) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Parent);
  QObject::connect(buttons, &QDialogButtonBox::accepted, Dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, Dialog, &QDialog::reject);
  return buttons;
}
}  // namespace

void RegisterPropertiesFormClass(const std::string& ClassName, TqxPropertiesFormFactory Factory) {
  if (Factory)
    FormClasses()[ClassName] = std::move(Factory);
  else
    FormClasses().erase(ClassName);
}

TqxQBPropertiesForm* CreatePropertiesForm(const std::string& ClassName, QWidget* Parent) {
  auto it = FormClasses().find(ClassName);
  return it != FormClasses().end() ? it->second(Parent) : nullptr;
}

bool IsPlainSQLName(const std::string& Name, const TastSyntaxProvider* Syntax) {
  if (Name.empty() || (Name[0] >= '0' && Name[0] <= '9'))
    return false;
  for (char c : Name) {
    const bool ok =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    if (!ok)
      return false;
  }
  return Syntax == nullptr || !Syntax->IsReservedWord(Name);
}

std::string QuoteSQLName(const std::string& Name, const TastSyntaxProvider* Syntax) {
  const std::string begin = Syntax != nullptr ? Syntax->GetQuoteBegin() : "\"";
  const std::string end = Syntax != nullptr ? Syntax->GetQuoteEnd() : "\"";
  std::string quoted = begin;
  for (std::size_t i = 0; i < Name.size();) {
    if (!end.empty() && Name.compare(i, end.size(), end) == 0) {
      quoted += end + end;  // a closing quote inside the name is doubled
      i += end.size();
    } else {
      quoted += Name[i++];
    }
  }
  return quoted + end;
}

// ---------------------------------------------------------------------------------------
// Datasource Properties

TqxDatasourcePropsForm::TqxDatasourcePropsForm(QWidget* Parent) : TqxQBPropertiesForm(Parent) {
  setWindowTitle(QStringLiteral("Datasource Properties"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  pDatasource = new QWidget(this);
  auto* grid = new QGridLayout(pDatasource);
  const int m = DialogScaled(this, 6);
  grid->setContentsMargins(m, m, m, m);
  grid->addWidget(new QLabel(QStringLiteral("Object"), pDatasource), 0, 0, 1, 2);
  eObj = ReadOnlyEdit(pDatasource);
  grid->addWidget(eObj, 1, 0, 1, 2);
  auto* aliasLabel = new QLabel(QStringLiteral("Alias"), pDatasource);
  eAlias = new QLineEdit(pDatasource);
  aliasLabel->setBuddy(eAlias);
  grid->addWidget(aliasLabel, 2, 0);
  grid->addWidget(eAlias, 2, 1);
  grid->setColumnStretch(1, 1);
  layout->addWidget(pDatasource);
  pButtons = new QWidget(this);
  auto* buttons = new QHBoxLayout(pButtons);
  buttons->setContentsMargins(m, 0, m, m);
  buttons->addWidget(OkCancel(this, pButtons));
  layout->addWidget(pButtons);
  setMinimumWidth(DialogScaled(this, 365));
}

void TqxDatasourcePropsForm::LoadProps(TqxQueryBuilderControlOwner* Owner) {
  Datasource_ = dynamic_cast<TqxDatasource*>(Owner);
  const TSQLFromSource* source = Datasource_ != nullptr ? Datasource_->GetFromSource() : nullptr;
  eObj->setText(source != nullptr ? QString::fromStdString(source->GetSimpleExpression())
                                  : QString());
  // A quoted alias is shown with its quotes so that saving it unchanged keeps it quoted.
  QString alias;
  if (source != nullptr && source->GetAlias() != nullptr) {
    const TSQLAlias* node = source->GetAlias();
    alias = QString::fromStdString(node->Quoted ? QuoteSQLName(node->Name, GetSyntaxProvider())
                                                : node->Name);
  }
  eAlias->setText(alias);
  eAlias->setProperty("loaded", alias);
  eAlias->setFocus();
  eAlias->selectAll();
  adjustSize();
  setFixedHeight(pDatasource->sizeHint().height() + pButtons->sizeHint().height());
}

void TqxDatasourcePropsForm::CheckCanClose() {
  const QString text = eAlias->text().trimmed();
  if (text == eAlias->property("loaded").toString())
    return;
  if (Datasource_ == nullptr || Datasource_->GetFromSource() == nullptr)
    throw EqxError("Can't assign alias if astFromSource=nil!");
  if (text.isEmpty())
    return;
  const std::string alias = text.toStdString();
  const TastSyntaxProvider* syntax = GetSyntaxProvider();
  std::string inside;
  if (syntax != nullptr && syntax->ReadQuotedName(alias, inside) && !inside.empty())
    return;
  if (!IsPlainSQLName(alias, syntax))
    throw EqxError("Bad alias \"" + alias +
                   "\": use letters, digits and underscores not starting with a digit and not "
                   "a reserved word, or put the alias in quotes");
}

void TqxDatasourcePropsForm::SaveProps(TqxQueryBuilderControlOwner* /*Owner*/) {
  const QString text = eAlias->text().trimmed();
  if (Datasource_ == nullptr || text == eAlias->property("loaded").toString())
    return;
  Datasource_->SetAlias(text.toStdString());
}

// ---------------------------------------------------------------------------------------
// SQL-92 query properties

TqxSQL92QueryPropsForm::TqxSQL92QueryPropsForm(QWidget* Parent) : TqxQBPropertiesForm(Parent) {
  setWindowTitle(QStringLiteral("Query Properties"));
  auto* layout = new QVBoxLayout(this);
  cbDistinct = new QCheckBox(QStringLiteral("Distinct rows only (DISTINCT)"), this);
  layout->addWidget(cbDistinct);
  auto* row = new QHBoxLayout;
  lUnionOperator = new QLabel(QStringLiteral("Joined to the previous query by"), this);
  cbUnionOperator = new QComboBox(this);
  lUnionOperator->setBuddy(cbUnionOperator);
  row->addWidget(lUnionOperator);
  row->addWidget(cbUnionOperator, 1);
  layout->addLayout(row);
  layout->addStretch(1);
  layout->addWidget(OkCancel(this, this));
  setMinimumWidth(DialogScaled(this, 300));
}

void TqxSQL92QueryPropsForm::LoadProps(TqxQueryBuilderControlOwner* Owner) {
  Operand_ = dynamic_cast<TqxUnionSubQuery*>(Owner);
  cbDistinct->setChecked(Operand_ != nullptr && Operand_->GetDistinct());
  cbDistinct->setEnabled(Operand_ != nullptr);
  // The set operator belongs to an operand that follows another one in its group.
  TqxUnionGroup* group = Operand_ != nullptr ? Operand_->GetParentGroup() : nullptr;
  const TastSyntaxProvider* syntax = GetSyntaxProvider();
  const bool unions =
      syntax != nullptr && group != nullptr && group->IndexOf(Operand_) > 0 &&
      (Operand_->IsMainQuery() ? syntax->IsSupportUnions() : syntax->IsSupportSubQueryUnions());
  cbUnionOperator->clear();
  if (unions) {
    std::vector<std::string> operators;
    syntax->GetUnionOperatorsList(operators);
    for (const std::string& op : operators)
      cbUnionOperator->addItem(QString::fromStdString(op));
    const QString current = QString::fromStdString(Operand_->GetUnionOperator());
    if (cbUnionOperator->findText(current, Qt::MatchFixedString) < 0)
      cbUnionOperator->addItem(current);
    cbUnionOperator->setCurrentIndex(cbUnionOperator->findText(current, Qt::MatchFixedString));
  }
  lUnionOperator->setVisible(unions);
  cbUnionOperator->setVisible(unions);
  cbDistinct->setFocus();
  adjustSize();
}

void TqxSQL92QueryPropsForm::SaveProps(TqxQueryBuilderControlOwner* /*Owner*/) {
  if (Operand_ == nullptr)
    return;
  TqxUpdateGuard guard(Operand_);
  Operand_->SetDistinct(cbDistinct->isChecked());
  if (cbUnionOperator->isVisible() || cbUnionOperator->count() > 0) {
    const std::string op = cbUnionOperator->currentText().toStdString();
    if (!op.empty() && op != Operand_->GetUnionOperator())
      Operand_->SetUnionOperatorEvent(op);
  }
}

}  // namespace qorvex
