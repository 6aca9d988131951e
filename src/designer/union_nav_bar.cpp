// The union navigation bar: operand buttons, group brackets and operator icons, and the
// drops between them that reshape the union.
#include "designer/union_nav_bar.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>

#include "qorvex/model/query.h"
#include "qorvex/syntax/components.h"

namespace qorvex {

namespace {

QFont BarFont() {
  QFont font(QStringLiteral("Arial"));
  font.setPointSize(13);
  font.setBold(true);
  return font;
}

// The control of type W among an owner's controls.
template <class W>
W* ControlOf(const TqxQueryBuilderControlOwner* Owner) {
  if (Owner == nullptr)
    return nullptr;
  for (int i = 0; i < Owner->GetControlsCount(); ++i) {
    if (auto* control = dynamic_cast<TqxWidgetControl*>(Owner->GetControls(i))) {
      if (auto* widget = qobject_cast<W*>(control->GetWidget()))
        return widget;
    }
  }
  return nullptr;
}

void AppendControls(const TqxUnionGroup* Group, QList<QWidget*>& List) {
  for (int i = 0; i < Group->GetCount(); ++i) {
    TqxQueryBase* item = Group->GetItems(i);
    if (auto* op = ControlOf<TqxUnionOperator>(item))
      List.push_back(op);
    if (auto* group = dynamic_cast<TqxUnionGroup*>(item)) {
      if (auto* left = ControlOf<TqxLeftBracket>(group))
        List.push_back(left);
      AppendControls(group, List);
      if (auto* right = ControlOf<TqxRightBracket>(group))
        List.push_back(right);
    } else if (auto* button = ControlOf<TqxUnionButton>(item)) {
      List.push_back(button);
    }
  }
}

TqxQueryBuilder* BuilderOf(const TqxQueryBuilderControlOwner* Owner) {
  return Owner != nullptr ? dynamic_cast<TqxQueryBuilder*>(Owner->GetQueryBuilder()) : nullptr;
}

TqxPoint ToPoint(const QPoint& P) {
  return TqxPoint{P.x(), P.y()};
}

}  // namespace

// ---------------------------------------------------------------------------------------
// Dragging

void TqxUnionDragSource::DragPress(const QMouseEvent* Event) {
  PressPoint_ = Event->position().toPoint();
  Dragging_ = false;
}

bool TqxUnionDragSource::DragMove(QWidget* Self, const QMouseEvent* Event) {
  if (!(Event->buttons() & Qt::LeftButton) || PressPoint_.x() < 0)
    return false;
  const QPoint pos = Event->position().toPoint();
  if (!Dragging_) {
    const QPoint delta = pos - PressPoint_;
    if (std::max(std::abs(delta.x()), std::abs(delta.y())) <= kDragThreshold)
      return false;
    Dragging_ = true;
  }
  auto* bar = qobject_cast<TqxUnionNavBar*>(Self->parentWidget());
  QWidget* target = bar != nullptr ? bar->DropTargetAt(Self->mapToGlobal(pos)) : nullptr;
  Self->setCursor(target != nullptr && bar->CanDrop(Self, target) ? Qt::DragMoveCursor
                                                                  : Qt::ForbiddenCursor);
  return true;
}

bool TqxUnionDragSource::DragRelease(QWidget* Self, const QMouseEvent* Event) {
  PressPoint_ = QPoint(-1, -1);
  if (!Dragging_)
    return false;
  Dragging_ = false;
  Self->unsetCursor();
  auto* bar = qobject_cast<TqxUnionNavBar*>(Self->parentWidget());
  if (bar == nullptr || Event->button() != Qt::LeftButton)
    return true;
  if (QWidget* target = bar->DropTargetAt(Self->mapToGlobal(Event->position().toPoint())))
    bar->Drop(Self, target);  // may release Self's model object; Self lives until idle
  return true;
}

// ---------------------------------------------------------------------------------------
// TqxUnionNavBar

TqxUnionNavBar::TqxUnionNavBar(TqxQueryTabSheet* Sheet) : QWidget(Sheet), Sheet_(Sheet) {
  setObjectName(QStringLiteral("qorvexUnionNavBar"));
  setAutoFillBackground(true);
  resize(4, kHeight);
}

void TqxUnionNavBar::paintEvent(QPaintEvent* /*Event*/) {
  // A thin frame sets the bar off from the diagram behind it.
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

TqxSubQuery* TqxUnionNavBar::GetQuery() const {
  return Sheet_->GetQuery();
}

QList<QWidget*> TqxUnionNavBar::BuildControlsList() const {
  QList<QWidget*> list;
  if (TqxSubQuery* query = GetQuery(); query != nullptr && query->GetUnionGroup() != nullptr)
    AppendControls(query->GetUnionGroup(), list);
  return list;
}

int TqxUnionNavBar::CalcWidth() const {
  int width = 4;
  for (QWidget* control : BuildControlsList()) {
    if (!control->isHidden())
      width += control->width();
  }
  return width;
}

bool TqxUnionNavBar::CustomAlignInsertBefore(QWidget* A, QWidget* B) const {
  const QList<QWidget*> list = BuildControlsList();
  return list.indexOf(A) < list.indexOf(B);
}

void TqxUnionNavBar::CustomAlignPosition(const QList<QWidget*>& Controls) {
  int x = 0;
  for (QWidget* control : Controls) {
    if (control->isHidden())
      continue;
    int top = 0;
    int height = control->height();
    if (qobject_cast<TqxBracket*>(control) != nullptr || qobject_cast<TqxUnionButton*>(control))
      height = kHeight;
    else if (qobject_cast<TqxUnionOperator*>(control) != nullptr)
      top = (kHeight - control->height()) / 2;
    control->setGeometry(x, top, control->width(), height);
    x += control->width();
  }
}

void TqxUnionNavBar::AlignControls() {
  if (AlignDisabled_ > 0) {
    AlignPending_ = true;
    return;
  }
  AlignPending_ = false;
  const QList<QWidget*> controls = BuildControlsList();
  // Every query owning a control shows its operator afresh first.
  std::set<TqxQueryBase*> refreshed;
  for (QWidget* control : controls) {
    TqxQueryBase* owner = nullptr;
    if (auto* op = qobject_cast<TqxUnionOperator*>(control))
      owner = op->GetQuery();
    else if (auto* button = qobject_cast<TqxUnionButton*>(control))
      owner = button->GetOperand();
    else if (auto* bracket = qobject_cast<TqxBracket*>(control))
      owner = bracket->GetGroup();
    if (owner != nullptr && refreshed.insert(owner).second)
      owner->UpdateUnionOperator();
  }
  CustomAlignPosition(controls);
  resize(CalcWidth(), kHeight);
  ++AlignCount_;
  Sheet_->PlaceNavBar();
}

void TqxUnionNavBar::EnableAlign() {
  if (AlignDisabled_ > 0 && --AlignDisabled_ == 0 && AlignPending_)
    AlignControls();
}

bool TqxUnionNavBar::FindQueryBounds(const TqxQueryBase* Item, int& First, int& Last) const {
  First = Last = -1;
  TqxSubQuery* query = GetQuery();
  if (query == nullptr || query->GetUnionGroup() == nullptr)
    return false;
  std::vector<TqxQueryBase*> list;
  query->GetUnionGroup()->BuildList(list);
  for (int i = 0; i < static_cast<int>(list.size()); ++i) {
    if (list[static_cast<std::size_t>(i)] != Item)
      continue;
    if (First < 0)
      First = i;
    Last = i;
  }
  return First >= 0;
}

QWidget* TqxUnionNavBar::DropTargetAt(const QPoint& GlobalPos) const {
  QWidget* child = childAt(mapFromGlobal(GlobalPos));
  while (child != nullptr && child->parentWidget() != this)
    child = child->parentWidget();
  return child;
}

QWidget* TqxUnionNavBar::ResolveTarget(QWidget* Target) const {
  auto* op = qobject_cast<TqxUnionOperator*>(Target);
  if (op == nullptr)
    return Target;
  if (auto* operand = dynamic_cast<TqxUnionSubQuery*>(op->GetQuery()))
    return ControlOf<TqxUnionButton>(operand);
  if (auto* group = dynamic_cast<TqxUnionGroup*>(op->GetQuery()))
    return ControlOf<TqxLeftBracket>(group);
  return nullptr;
}

bool TqxUnionNavBar::AcceptBracketOn(const TqxUnionGroup* Group, bool Left,
                                     const TqxQueryBase* Operand) const {
  if (Group == nullptr || Operand == nullptr)
    return false;
  if (Group->Contains(Operand))
    return true;
  const TqxUnionGroup* parent = Group->GetParentGroup();
  if (parent == nullptr || Operand->GetParentGroup() != parent)
    return false;
  const int at = parent->IndexOf(Operand);
  const int group = parent->IndexOf(Group);
  return Left ? at < group : at > group;
}

bool TqxUnionNavBar::CanDrop(QWidget* Source, QWidget* Target) const {
  Target = ResolveTarget(Target);
  if (Source == nullptr || Target == nullptr || Source == Target)
    return false;
  const QList<QWidget*> controls = BuildControlsList();
  if (!controls.contains(Source) || !controls.contains(Target))
    return false;
  auto* sourceButton = qobject_cast<TqxUnionButton*>(Source);
  auto* sourceBracket = qobject_cast<TqxBracket*>(Source);
  auto* targetButton = qobject_cast<TqxUnionButton*>(Target);
  auto* targetBracket = qobject_cast<TqxBracket*>(Target);
  if (targetButton != nullptr) {
    if (sourceButton != nullptr)
      return sourceButton->GetOperand() != targetButton->GetOperand();
    if (sourceBracket != nullptr)
      return AcceptBracketOn(sourceBracket->GetGroup(), sourceBracket->IsLeft(),
                             targetButton->GetOperand());
    return false;
  }
  if (targetBracket != nullptr) {
    if (sourceButton != nullptr)
      return true;
    // A bracket on a bracket acts on the target group's first (last) operand.
    if (sourceBracket != nullptr && sourceBracket->GetGroup() != targetBracket->GetGroup()) {
      std::vector<TqxUnionSubQuery*> operands;
      targetBracket->GetGroup()->GetOperands(operands);
      if (operands.empty())
        return false;
      return AcceptBracketOn(sourceBracket->GetGroup(), sourceBracket->IsLeft(),
                             targetBracket->IsLeft() ? operands.front() : operands.back());
    }
  }
  return false;
}

bool TqxUnionNavBar::Drop(QWidget* Source, QWidget* Target) {
  if (!CanDrop(Source, Target))
    return false;
  Target = ResolveTarget(Target);
  auto* sourceButton = qobject_cast<TqxUnionButton*>(Source);
  auto* sourceBracket = qobject_cast<TqxBracket*>(Source);
  auto* targetButton = qobject_cast<TqxUnionButton*>(Target);
  auto* targetBracket = qobject_cast<TqxBracket*>(Target);

  // The bracket rule: an operand outside the group is taken in, else the group gives up
  // its first (last) item.
  auto bracketOn = [](TqxUnionGroup* Group, bool Left, TqxQueryBase* Operand) {
    if (!Group->Contains(Operand))
      Left ? Group->AddToBegin(Operand) : Group->AddToEnd(Operand);
    else
      Left ? Group->RemoveFromBegin() : Group->RemoveFromEnd();
  };
  std::function<void()> change;
  if (targetButton != nullptr && sourceButton != nullptr) {
    TqxUnionSubQuery* item = sourceButton->GetOperand();
    TqxUnionSubQuery* target = targetButton->GetOperand();
    int itemAt = 0, targetAt = 0, last = 0;
    FindQueryBounds(item, itemAt, last);
    FindQueryBounds(target, targetAt, last);
    change = [=] {
      if (itemAt < targetAt)
        TqxUnionGroup::InsertAfter(item, target);
      else
        TqxUnionGroup::InsertBefore(item, target);
    };
  } else if (targetButton != nullptr && sourceBracket != nullptr) {
    TqxUnionGroup* group = sourceBracket->GetGroup();
    const bool left = sourceBracket->IsLeft();
    TqxUnionSubQuery* operand = targetButton->GetOperand();
    change = [=] { bracketOn(group, left, operand); };
  } else if (targetBracket != nullptr && sourceButton != nullptr) {
    TqxUnionGroup* group = targetBracket->GetGroup();
    TqxUnionSubQuery* operand = sourceButton->GetOperand();
    int itemAt = 0, itemLast = 0, groupFirst = 0, groupLast = 0;
    FindQueryBounds(operand, itemAt, itemLast);
    FindQueryBounds(group, groupFirst, groupLast);
    if (targetBracket->IsLeft()) {
      // From before the bracket the operand becomes the group's first member; from
      // elsewhere it goes just before the group.
      change = [=] {
        if (itemAt <= groupFirst)
          group->AddToBegin(operand);
        else
          TqxUnionGroup::InsertBefore(operand, group);
      };
    } else {
      change = [=] {
        if (itemAt >= groupLast)
          group->AddToEnd(operand);
        else
          TqxUnionGroup::InsertAfter(operand, group);
      };
    }
  } else if (targetBracket != nullptr && sourceBracket != nullptr) {
    std::vector<TqxUnionSubQuery*> operands;
    targetBracket->GetGroup()->GetOperands(operands);
    TqxUnionGroup* group = sourceBracket->GetGroup();
    const bool left = sourceBracket->IsLeft();
    TqxUnionSubQuery* operand = targetBracket->IsLeft() ? operands.front() : operands.back();
    change = [=] { bracketOn(group, left, operand); };
  }
  if (!change)
    return false;

  TqxSubQuery* query = GetQuery();
  auto* builder = BuilderOf(query);
  DisableAlign();
  const bool done = TqxQueryBuilderPrivate::Run(builder, [&] {
    TqxUpdateGuard guard(query);
    change();
  });
  EnableAlign();
  return done;
}

// ---------------------------------------------------------------------------------------
// TqxUnionButton

TqxUnionButton::TqxUnionButton(TqxUnionNavBar* Bar, TqxUnionSubQuery* Operand)
    : QToolButton(Bar), Operand_(Operand) {
  setCheckable(true);
  setAutoExclusive(true);  // the bar's buttons form one group: one is down
  setAutoRaise(true);
  setFocusPolicy(Qt::NoFocus);
  setFont(BarFont());
  setText(QStringLiteral("Q"));
  resize(sizeHint().width(), TqxUnionNavBar::kHeight);
  connect(this, &QToolButton::clicked, this, &TqxUnionButton::Click);
  show();
}

void TqxUnionButton::UpdateContent() {
  if (Operand_ == nullptr)
    return;
  const QString caption = QString::fromStdString(Operand_->GetName());
  if (caption != text()) {
    setText(caption);
    resize(std::max(sizeHint().width(), TqxUnionNavBar::kHeight), TqxUnionNavBar::kHeight);
  }
  TqxSubQuery* query = Operand_->GetSubQuery();
  if (query != nullptr && query->GetActiveUnionSubquery() == Operand_ && !isChecked())
    setChecked(true);
}

void TqxUnionButton::MakeVisible() {
  setChecked(true);
}

void TqxUnionButton::ControlReleased() {
  Operand_ = nullptr;
  TqxControlWidget::ControlReleased();
}

void TqxUnionButton::Click() {
  if (Operand_ == nullptr || IsDragging())
    return;
  TqxUnionSubQuery* operand = Operand_;
  TqxQueryBuilderPrivate::Run(BuilderOf(operand), [operand] {
    if (TqxSubQuery* query = operand->GetSubQuery())
      query->SetActiveUnionSubquery(operand);
  });
}

void TqxUnionButton::ShowPopupMenu(const QPoint& GlobalPos) {
  if (Operand_ == nullptr)
    return;
  TqxUnionSubQuery* operand = Operand_;
  TqxQueryBuilderPrivate::Run(BuilderOf(operand),
                              [&] { operand->ShowPopupMenu(ToPoint(GlobalPos)); });
}

void TqxUnionButton::mousePressEvent(QMouseEvent* Event) {
  if (Event->button() == Qt::LeftButton) {
    setChecked(true);
    DragPress(Event);
  }
  QToolButton::mousePressEvent(Event);
}

void TqxUnionButton::mouseMoveEvent(QMouseEvent* Event) {
  if (DragMove(this, Event))
    return;
  QToolButton::mouseMoveEvent(Event);
}

void TqxUnionButton::mouseReleaseEvent(QMouseEvent* Event) {
  if (DragRelease(this, Event)) {
    setDown(false);
    UpdateContent();
    return;
  }
  QToolButton::mouseReleaseEvent(Event);
}

void TqxUnionButton::mouseDoubleClickEvent(QMouseEvent* Event) {
  if (Event->button() != Qt::LeftButton || Operand_ == nullptr) {
    QToolButton::mouseDoubleClickEvent(Event);
    return;
  }
  TqxUnionSubQuery* operand = Operand_;
  TqxQueryBuilderPrivate::Run(BuilderOf(operand), [operand] { operand->EditPropsEvent(); });
}

void TqxUnionButton::contextMenuEvent(QContextMenuEvent* Event) {
  ShowPopupMenu(Event->globalPos());
}

// ---------------------------------------------------------------------------------------
// Brackets

TqxBracket::TqxBracket(TqxUnionNavBar* Bar, TqxUnionGroup* Group, bool Left)
    : QLabel(Bar), Group_(Group), Left_(Left) {
  setText(Left ? QStringLiteral("(") : QStringLiteral(")"));
  setAlignment(Qt::AlignCenter);
  setFont(BarFont());
  resize(kWidth, TqxUnionNavBar::kHeight);
  setCursor(Qt::SizeHorCursor);
  show();
}

void TqxBracket::ControlReleased() {
  Group_ = nullptr;
  TqxControlWidget::ControlReleased();
}

void TqxBracket::ShowPopupMenu(const QPoint& GlobalPos) {
  if (Group_ == nullptr)
    return;
  TqxUnionGroup* group = Group_;
  TqxQueryBuilderPrivate::Run(BuilderOf(group), [&] { group->ShowPopupMenu(ToPoint(GlobalPos)); });
}

void TqxBracket::mousePressEvent(QMouseEvent* Event) {
  if (Event->button() == Qt::LeftButton)
    DragPress(Event);
  QLabel::mousePressEvent(Event);
}

void TqxBracket::mouseMoveEvent(QMouseEvent* Event) {
  if (!DragMove(this, Event))
    QLabel::mouseMoveEvent(Event);
}

void TqxBracket::mouseReleaseEvent(QMouseEvent* Event) {
  if (DragRelease(this, Event)) {
    setCursor(Qt::SizeHorCursor);
    return;
  }
  QLabel::mouseReleaseEvent(Event);
}

void TqxBracket::contextMenuEvent(QContextMenuEvent* Event) {
  ShowPopupMenu(Event->globalPos());
}

// ---------------------------------------------------------------------------------------
// TqxUnionOperator

TqxUnionOperator::TqxUnionOperator(TqxUnionNavBar* Bar, TqxQueryBase* Query)
    : QWidget(Bar), Query_(Query) {
  setFont(BarFont());
  setFixedSize(kSize, kSize);
  Rebuild();
  show();
}

void TqxUnionOperator::SetUnionOperator(const QString& Text) {
  const QString value = Text.isEmpty() ? QStringLiteral("union") : Text;
  if (value == Operator_)
    return;
  Operator_ = value;
  Rebuild();
  update();
}

void TqxUnionOperator::SetAll(bool Value) {
  if (Value == All_)
    return;
  All_ = Value;
  Rebuild();
  update();
}

void TqxUnionOperator::Rebuild() {
  const QString lower = Operator_.toLower();
  Caption_ = lower.left(1) + (All_ ? QStringLiteral("a") : QString());
  setToolTip(lower + (All_ ? QStringLiteral(" all") : QString()));
}

void TqxUnionOperator::UpdateContent() {
  if (Query_ == nullptr)
    return;
  // The model keeps "Union All"; the control shows the operator and the ALL flag apart.
  QString op = QString::fromStdString(Query_->GetUnionOperator()).simplified();
  const bool all = op.endsWith(QStringLiteral(" all"), Qt::CaseInsensitive);
  if (all)
    op.chop(4);
  SetUnionOperator(op);
  SetAll(all);
}

void TqxUnionOperator::RepaintControl() {
  UpdateContent();
  update();
}

void TqxUnionOperator::ControlReleased() {
  Query_ = nullptr;
  TqxControlWidget::ControlReleased();
}

QPixmap TqxUnionOperator::Icon() const {
  const TqxBaseQueryBuilder* builder = Query_ != nullptr ? Query_->GetQueryBuilder() : nullptr;
  const TqxBaseSyntaxProvider* provider =
      builder != nullptr ? builder->GetSyntaxProvider() : nullptr;
  if (provider == nullptr)
    return {};
  const std::string name = provider->GetUnionOperatorIcon(
      (Operator_ + (All_ ? QStringLiteral(" all") : QString())).toStdString());
  return UnionOperatorImage(QString::fromStdString(name));
}

void TqxUnionOperator::paintEvent(QPaintEvent* /*Event*/) {
  QPainter painter(this);
  const QPixmap icon = Icon();
  if (!icon.isNull()) {
    painter.drawPixmap(0, 0, icon);
    return;
  }
  painter.setPen(palette().color(QPalette::WindowText));
  painter.setBrush(palette().color(QPalette::Base));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void TqxUnionOperator::GetPopupMenu(TqxPopupMenu& Menu) {
  if (Query_ == nullptr)
    return;
  TqxBaseQueryBuilder* builder = Query_->GetQueryBuilder();
  const TqxBaseSyntaxProvider* provider =
      builder != nullptr ? builder->GetSyntaxProvider() : nullptr;
  if (provider != nullptr) {
    std::vector<std::string> operators;
    provider->GetUnionOperatorsList(operators);
    const QString current = (Operator_ + (All_ ? QStringLiteral(" all") : QString())).toUpper();
    for (const std::string& op : operators) {
      TqxMenuItem item;
      item.Caption = op;
      item.Checked = QString::fromStdString(op).toUpper() == current;
      TqxQueryBase* query = Query_;
      item.OnClick = [query, op] { query->SetUnionOperatorEvent(op); };
      Menu.push_back(std::move(item));
    }
  }
  if (builder != nullptr)
    builder->PopupMenuCompleted(Menu);
}

void TqxUnionOperator::ShowPopupMenu(const QPoint& GlobalPos) {
  if (Query_ == nullptr)
    return;
  TqxQueryBase* query = Query_;
  TqxBaseQueryBuilder* builder = query->GetQueryBuilder();
  TqxControlFactory* factory = builder != nullptr ? builder->GetControlFactory() : nullptr;
  if (factory == nullptr)
    return;
  TqxPopupMenu menu;
  GetPopupMenu(menu);
  TqxQueryBuilderPrivate::Run(BuilderOf(query),
                              [&] { factory->PopupMenu(*query, menu, ToPoint(GlobalPos)); });
}

void TqxUnionOperator::mouseReleaseEvent(QMouseEvent* Event) {
  // A plain left click opens the operator menu.
  if (Event->button() == Qt::LeftButton &&
      (Event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier)) == 0) {
    ShowPopupMenu(Event->globalPosition().toPoint());
    return;
  }
  QWidget::mouseReleaseEvent(Event);
}

void TqxUnionOperator::contextMenuEvent(QContextMenuEvent* Event) {
  ShowPopupMenu(Event->globalPos());
}

}  // namespace qorvex
