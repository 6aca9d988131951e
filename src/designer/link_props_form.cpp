// The Link Properties dialog.
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QResizeEvent>
#include <QVBoxLayout>

#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"

namespace qorvex {

namespace {

QLineEdit* ReadOnlyLineEdit(QWidget* Parent) {
  auto* edit = new QLineEdit(Parent);
  edit->setReadOnly(true);
  QPalette palette = edit->palette();
  palette.setColor(QPalette::Base, palette.color(QPalette::Button));
  edit->setPalette(palette);
  return edit;
}

// A pane of a label above an edit.
QWidget* LabelledPane(QWidget* Parent, const QString& Caption, QWidget*& Edit, QWidget* Field,
                      bool RightAligned) {
  auto* pane = new QWidget(Parent);
  auto* layout = new QVBoxLayout(pane);
  const int m = DialogScaled(Parent, 4);
  layout->setContentsMargins(m, m, m, 0);
  layout->setSpacing(DialogScaled(Parent, 2));
  auto* label = new QLabel(Caption, pane);
  if (RightAligned)
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  label->setBuddy(Field);
  Field->setParent(pane);
  layout->addWidget(label);
  layout->addWidget(Field);
  Edit = Field;
  return pane;
}

// The two columns of a comparison a.x OP b.y written without brackets; null otherwise.
const TSQLExpressionOperatorBinary* ColumnComparison(const TSQLExpressionItem* Expression,
                                                     const TastSyntaxProvider* Syntax) {
  const auto* binary = dynamic_cast<const TSQLExpressionOperatorBinary*>(Expression);
  if (binary == nullptr || binary->GetOperator() == nullptr)
    return nullptr;
  const auto* left = dynamic_cast<const TSQLExpressionColumn*>(binary->GetInner());
  const auto* right = dynamic_cast<const TSQLExpressionColumn*>(binary->GetRight());
  if (left == nullptr || right == nullptr || left->GetColumn() == nullptr ||
      right->GetColumn() == nullptr)
    return nullptr;
  if (Syntax != nullptr) {
    std::vector<std::string> operators;
    Syntax->GetComparisonOperators(operators);
    bool known = false;
    for (const std::string& op : operators)
      known = known || op == binary->GetOperatorText();
    if (!known)
      return nullptr;
  }
  return binary;
}

QString DatasourceText(const TqxDatasourceBase* DS) {
  if (DS == nullptr)
    return {};
  if (const auto* plain = dynamic_cast<const TqxDatasource*>(DS))
    return QString::fromStdString(plain->GetCaption());
  return DS->GetFromSource() != nullptr
             ? QString::fromStdString(DS->GetFromSource()->GetSimpleSQL())
             : QString();
}

// After a new condition: the link's fields are the two columns when it compares a column
// of each of its datasources, else it has none (it is drawn between the boxes).
void FollowColumns(TqxLink* Link) {
  std::string leftField;
  std::string rightField;
  const auto* binary = ColumnComparison(Link->GetLinkExpression(), nullptr);
  const TqxDatasource* left = TqxLink::CalcDatasource(Link->GetLeftDatasource());
  const TqxDatasource* right = TqxLink::CalcDatasource(Link->GetRightDatasource());
  if (binary != nullptr && left != nullptr && right != nullptr) {
    const TSQLObjectColumn* a =
        static_cast<const TSQLExpressionColumn*>(binary->GetInner())->GetColumn();
    const TSQLObjectColumn* b =
        static_cast<const TSQLExpressionColumn*>(binary->GetRight())->GetColumn();
    if (a->GetFromSource() == left->GetFromSource() &&
        b->GetFromSource() == right->GetFromSource()) {
      leftField = a->GetObjName();
      rightField = b->GetObjName();
    } else if (a->GetFromSource() == right->GetFromSource() &&
               b->GetFromSource() == left->GetFromSource()) {
      leftField = b->GetObjName();
      rightField = a->GetObjName();
    }
  }
  if (leftField == Link->GetLeftField() && rightField == Link->GetRightField())
    return;
  Link->SetLeftField(leftField);
  Link->SetRightField(rightField);
  Link->CalcCardinality();
  Link->UpdateContolParams();
}

}  // namespace

TqxLinkPropsForm::TqxLinkPropsForm(QWidget* Parent) : TqxQBPropertiesForm(Parent) {
  setWindowTitle(QStringLiteral("Link Properties"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);

  // The object panes and the column panes are placed by FormResize.
  pObjects = new QWidget(this);
  pObjects->setFixedHeight(DialogScaled(this, 73));
  QWidget* edit = nullptr;
  pLeftObj =
      LabelledPane(pObjects, QStringLiteral("Left object"), edit, ReadOnlyLineEdit(this), false);
  eLeftObj = static_cast<QLineEdit*>(edit);
  cbAllFromLeft = new QCheckBox(QStringLiteral("Select All From Left"), pLeftObj);
  pLeftObj->layout()->addWidget(cbAllFromLeft);
  pRightObj =
      LabelledPane(pObjects, QStringLiteral("Right object"), edit, ReadOnlyLineEdit(this), true);
  eRightObj = static_cast<QLineEdit*>(edit);
  cbAllFromRight = new QCheckBox(QStringLiteral("Select All From Right"), pRightObj);
  cbAllFromRight->setLayoutDirection(Qt::RightToLeft);  // caption left of the box
  static_cast<QVBoxLayout*>(pRightObj->layout())->addWidget(cbAllFromRight, 0, Qt::AlignRight);
  layout->addWidget(pObjects);

  pSimple = new QWidget(this);
  pSimple->setFixedHeight(DialogScaled(this, 48));
  pLeftCol =
      LabelledPane(pSimple, QStringLiteral("Left column"), edit, ReadOnlyLineEdit(this), false);
  eLeftCol = static_cast<QLineEdit*>(edit);
  cbOperator = new QComboBox(this);
  pOperator = LabelledPane(pSimple, QString(), edit, cbOperator, false);
  pRightCol =
      LabelledPane(pSimple, QStringLiteral("Right column"), edit, ReadOnlyLineEdit(this), true);
  eRightCol = static_cast<QLineEdit*>(edit);
  pSimple->hide();
  layout->addWidget(pSimple);

  pExpression = new QWidget(this);
  pExpression->setFixedHeight(DialogScaled(this, 48));
  auto* expressionLayout = new QVBoxLayout(pExpression);
  expressionLayout->setContentsMargins(0, 0, 0, 0);
  eExpression = new QLineEdit(this);
  expressionLayout->addWidget(
      LabelledPane(pExpression, QStringLiteral("Join expression"), edit, eExpression, false));
  pExpression->hide();
  layout->addWidget(pExpression);

  layout->addStretch(1);
  pButtons = new QWidget(this);
  pButtons->setFixedHeight(DialogScaled(this, 34));
  auto* buttonsLayout = new QHBoxLayout(pButtons);
  const int m = DialogScaled(this, 4);
  buttonsLayout->setContentsMargins(m, m, m, m);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, pButtons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  buttonsLayout->addWidget(buttons);
  layout->addWidget(pButtons);

  setMinimumSize(DialogScaled(this, 360), DialogScaled(this, 120));
  resize(DialogScaled(this, 360), DialogScaled(this, 200));
}

TqxLinkPropsForm::~TqxLinkPropsForm() = default;

void TqxLinkPropsForm::LoadProps(TqxQueryBuilderControlOwner* Owner) {
  Link_ = dynamic_cast<TqxLink*>(Owner);
  NewExpression_.reset();
  if (Link_ == nullptr)
    return;
  eLeftObj->setText(DatasourceText(Link_->GetLeftDatasource()));
  eRightObj->setText(DatasourceText(Link_->GetRightDatasource()));
  cbAllFromLeft->setChecked(Link_->GetLeftType() == ctOuter);
  cbAllFromRight->setChecked(Link_->GetRightType() == ctOuter);

  const TSQLExpressionItem* expression = Link_->GetLinkExpression();
  const TSQLExpressionOperatorBinary* comparison =
      ColumnComparison(expression, GetSyntaxProvider());
  Simple_ = comparison != nullptr;
  int height = pObjects->height() + pButtons->height();
  if (Simple_) {
    eLeftCol->setText(
        QString::fromStdString(static_cast<const TSQLExpressionColumn*>(comparison->GetInner())
                                   ->GetColumn()
                                   ->GetObjName()));
    eRightCol->setText(
        QString::fromStdString(static_cast<const TSQLExpressionColumn*>(comparison->GetRight())
                                   ->GetColumn()
                                   ->GetObjName()));
    cbOperator->clear();
    std::vector<std::string> operators;
    GetSyntaxProvider()->GetComparisonOperators(operators);
    for (const std::string& op : operators)
      cbOperator->addItem(QString::fromStdString(op));
    cbOperator->setCurrentIndex(
        cbOperator->findText(QString::fromStdString(comparison->GetOperatorText())));
    pSimple->show();
    pExpression->hide();
    height += pSimple->height();
    cbOperator->setFocus();
  } else {
    eExpression->setText(expression != nullptr ? QString::fromStdString(expression->GetSimpleSQL())
                                               : QString());
    pExpression->show();
    pSimple->hide();
    height += pExpression->height();
    eExpression->setFocus();
  }
  resize(width(), height);
  FormResize();
}

void TqxLinkPropsForm::CheckCanClose() {
  if (Simple_ || Link_ == nullptr)
    return;
  NewExpression_.reset();
  if (GetSyntaxProvider() == nullptr)
    return;
  std::unique_ptr<TSQLExpressionItem> parsed =
      GetSyntaxProvider()->ParseLogicalExpression(eExpression->text().toStdString());
  if (TqxUnionSubQuery* operand = Link_->GetUnionSubQuery())
    operand->BindNames(*parsed);
  NewExpression_ = std::move(parsed);
}

void TqxLinkPropsForm::SaveProps(TqxQueryBuilderControlOwner* /*Owner*/) {
  if (Link_ == nullptr)
    return;
  TqxUpdateGuard guard(Link_->GetUnionSubQuery());
  std::unique_ptr<TSQLExpressionItem> expression;
  if (Simple_) {
    // The same two columns with the chosen operator.
    const auto* current =
        dynamic_cast<const TSQLExpressionOperatorBinary*>(Link_->GetLinkExpression());
    const std::string op = cbOperator->currentText().toStdString();
    if (current != nullptr && !op.empty() && op != current->GetOperatorText()) {
      auto copy = CloneNode(*current);
      copy->SetOperator(NewNode<TSQLOperator>(copy->GetSyntaxProvider(), op));
      expression = std::move(copy);
    }
  } else {
    expression = std::move(NewExpression_);
  }
  if (expression) {
    Link_->SetLinkExpression(std::move(expression));
    FollowColumns(Link_);
  }
  const bool allLeft = cbAllFromLeft->isChecked();
  const bool allRight = cbAllFromRight->isChecked();
  const TqxDatasourceBase* owner = Link_->GetOwnerDatasource();
  if (owner == nullptr)
    return;
  if (owner->GetJoinKind() == nullptr || allLeft != (Link_->GetLeftType() == ctOuter) ||
      allRight != (Link_->GetRightType() == ctOuter))
    Link_->SetJoinSides(allLeft, allRight);
}

void TqxLinkPropsForm::FormResize() {
  const int w = width();
  const int leftWidth = w / 2;
  pLeftObj->setGeometry(0, 0, leftWidth, pObjects->height());
  pRightObj->setGeometry(leftWidth, 0, w - leftWidth, pObjects->height());
  if (w != 0) {
    const int operatorWidth = DialogScaled(this, 65);
    const int leftCol = w / 2 - operatorWidth / 2;
    pLeftCol->setGeometry(0, 0, leftCol, pSimple->height());
    pOperator->setGeometry(leftCol, 0, operatorWidth, pSimple->height());
    pRightCol->setGeometry(leftCol + operatorWidth, 0, w - leftCol - operatorWidth,
                           pSimple->height());
  }
}

void TqxLinkPropsForm::resizeEvent(QResizeEvent* Event) {
  TqxQBPropertiesForm::resizeEvent(Event);
  FormResize();
}

}  // namespace qorvex
