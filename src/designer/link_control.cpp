// Link controls: placement between two boxes, the hit test of the line, painting through
// the builder's painter, and the work area's bookkeeping of its links.
#include "designer/link_control.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"

namespace qorvex {

// ---------------------------------------------------------------------------------------
// Geometry

namespace {
// Edges with the right and bottom exclusive, as the placement rules count them.
int RightOf(const QRect& R) {
  return R.x() + R.width();
}
int BottomOf(const QRect& R) {
  return R.y() + R.height();
}
}  // namespace

TqxLinkPlacement CalcLinkPlacement(const QRect& A, const QRect& B) {
  TqxLinkPlacement result;
  const int aLeft = A.x();
  const int aRight = RightOf(A);
  const int bLeft = B.x();
  const int bRight = RightOf(B);
  int left = 0;
  int width = 0;
  if (bLeft > aRight) {
    // B right of A: the line crosses the gap between them.
    left = aRight;
    width = bLeft - aRight;
    result.LeftSide = csRight;
    result.RightSide = csLeft;
  } else if (aLeft <= bRight) {
    // The rows overlap horizontally: the line loops round the side whose edges are
    // closer together, left on a tie.
    if (std::abs(aLeft - bLeft) > std::abs(aRight - bRight)) {
      // The stubs go right of both edges, so the loop lies right of the farther one.
      left = std::min(aRight, bRight);
      width = std::max(aRight, bRight) + kLinkEnterLength - left;
      result.LeftSide = csRight;
      result.RightSide = csRight;
    } else {
      left = std::min(aLeft, bLeft) - kLinkEnterLength;
      width = std::max(aLeft, bLeft) - left;
      result.LeftSide = csLeft;
      result.RightSide = csLeft;
    }
  } else {
    // B left of A.
    left = bRight;
    width = aLeft - bRight;
    result.LeftSide = csLeft;
    result.RightSide = csRight;
  }
  int top = std::min(A.y(), B.y());
  int height = std::max(BottomOf(A), BottomOf(B)) - top;
  if (width < kLinkEnterLength) {
    // A narrow gap is widened round its middle.
    left = left + width - kLinkEnterLength;
    width = 2 * kLinkEnterLength - width;
  }
  // Room for the end marks and the cardinality marks above the line.
  top -= 20;
  left -= 2;
  height += 41;
  width += 4;
  result.Bounds = QRect(left, top, width, height);
  return result;
}

std::pair<QPoint, QPoint> CalcEnterLine(const QRect& R, TqxQueryBuilderLinkConnectToSide Side) {
  const int y = (R.y() + BottomOf(R)) / 2;
  if (Side == csRight)
    return {QPoint(RightOf(R), y), QPoint(RightOf(R) + kLinkEnterLength, y)};
  return {QPoint(R.x(), y), QPoint(R.x() - kLinkEnterLength, y)};
}

TqxQueryBuilderPointArray CalcLinkPoints(const QRect& A, const QRect& B,
                                         TqxQueryBuilderLinkConnectToSide LeftSide,
                                         TqxQueryBuilderLinkConnectToSide RightSide) {
  const auto [p0, p1] = CalcEnterLine(A, LeftSide);
  const auto [p3, p2] = CalcEnterLine(B, RightSide);
  return {p0, p1, p2, p3};
}

namespace {

bool Between(int Value, int A, int B) {
  return Value >= std::min(A, B) && Value <= std::max(A, B);
}

// An oblique segment: its points are followed along the longer axis one whole step at a
// time, the other coordinate rounded (ties to even); a bisection looks for the step
// nearest P in taxicab distance.
bool HitOblique(QPoint From, QPoint To, QPoint P, double Tolerance) {
  const double dx = To.x() - From.x();
  const double dy = To.y() - From.y();
  const bool alongX = std::abs(dy / dx) <= std::abs(dx / dy);
  const int u0 = alongX ? From.x() : From.y();
  const int u1 = alongX ? To.x() : To.y();
  const int v1 = alongX ? To.y() : To.x();
  const int pu = alongX ? P.x() : P.y();
  const int pv = alongX ? P.y() : P.x();
  const double slope = alongX ? dy / dx : dx / dy;
  auto distance = [&](int T) {
    const double v = std::nearbyint(v1 + (T - u1) * slope);
    return std::abs(T - pu) + std::abs(v - pv);
  };
  int lo = std::min(u0, u1);
  int hi = std::max(u0, u1);
  int mid = lo;
  for (;;) {
    mid = lo + (hi - lo) / 2;
    const double here = distance(mid);
    if (here <= Tolerance)
      return true;
    const bool last = mid == lo;
    if (distance(mid + 1) < here)
      lo = mid;
    else
      hi = mid;
    if (last)
      break;
  }
  return distance(mid + 1) <= Tolerance;
}

}  // namespace

bool LinkLineHitTest(const TqxQueryBuilderPointArray& Points, const QPoint& P, double Tolerance) {
  for (std::size_t i = 0; i + 1 < Points.size(); ++i) {
    const QPoint a = Points[i];
    const QPoint b = Points[i + 1];
    if (a.x() == b.x()) {
      if (Between(P.y(), a.y(), b.y()) && std::abs(a.x() - P.x()) <= Tolerance)
        return true;
    } else if (a.y() == b.y()) {
      if (Between(P.x(), a.x(), b.x()) && std::abs(a.y() - P.y()) <= Tolerance)
        return true;
    } else if (HitOblique(a, b, P, Tolerance)) {
      return true;
    }
  }
  return false;
}

// ---------------------------------------------------------------------------------------
// TqxQueryBuilderLinkControl

TqxQueryBuilderLinkControl::TqxQueryBuilderLinkControl(TqxQueryBuilderWorkArea* WorkArea,
                                                       TqxLink* Link)
    : TqxWorkAreaControl(WorkArea->Canvas()), WorkArea_(WorkArea), Link_(Link) {
  // The canvas passes on what falls on the line; the boxes sit above.
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFocusPolicy(Qt::NoFocus);
  hide();
  lower();
  WorkArea_->AddLinkControl(this);
}

TqxQueryBuilderLinkControl::~TqxQueryBuilderLinkControl() {
  if (WorkArea_ != nullptr)
    WorkArea_->RemoveLinkControl(this);
}

TqxQueryBuilderControlOwner* TqxQueryBuilderLinkControl::GetOwnerObject() const {
  return Link_;
}

void TqxQueryBuilderLinkControl::RepaintControl() {
  Realign();
  update();
}

void TqxQueryBuilderLinkControl::UpdateContent() {
  Realign();
}

void TqxQueryBuilderLinkControl::ControlReleased() {
  if (WorkArea_ != nullptr) {
    if (WorkArea_->GetFocusedControl() == this)
      WorkArea_->SetFocusedControl(nullptr);
    WorkArea_->RemoveLinkControl(this);
    WorkArea_ = nullptr;
  }
  Link_ = nullptr;
  Placed_ = false;
  hide();
  deleteLater();
}

TqxQueryBuilderDataSourceControl* TqxQueryBuilderLinkControl::BoxOf(TqxDatasourceBase* DS) const {
  TqxDatasource* ds = TqxLink::CalcDatasource(DS);
  if (ds == nullptr || WorkArea_ == nullptr)
    return nullptr;
  auto* control = dynamic_cast<TqxWidgetControl*>(ds->GetControl());
  auto* box = control != nullptr
                  ? qobject_cast<TqxQueryBuilderDataSourceControl*>(control->GetWidget())
                  : nullptr;
  if (box == nullptr || box->GetDatasource() != ds || box->GetWorkArea() != WorkArea_ ||
      box->isHidden())
    return nullptr;
  return box;
}

TqxQueryBuilderDataSourceControl* TqxQueryBuilderLinkControl::LeftBox() const {
  return Link_ != nullptr ? BoxOf(Link_->GetLeftDatasource()) : nullptr;
}

TqxQueryBuilderDataSourceControl* TqxQueryBuilderLinkControl::RightBox() const {
  return Link_ != nullptr ? BoxOf(Link_->GetRightDatasource()) : nullptr;
}

bool TqxQueryBuilderLinkControl::Joins(const TqxQueryBuilderDataSourceControl* Box) const {
  if (Link_ == nullptr || Box == nullptr)
    return false;
  const TqxDatasource* ds = Box->GetDatasource();
  return ds != nullptr && (TqxLink::CalcDatasource(Link_->GetLeftDatasource()) == ds ||
                           TqxLink::CalcDatasource(Link_->GetRightDatasource()) == ds);
}

QRect TqxQueryBuilderLinkControl::FieldRect(const TqxQueryBuilderDataSourceControl* Box,
                                            const std::string& Field) {
  const QString name = QString::fromStdString(Field);
  QRect r = Box->CalcFieldRect(name, true);
  if (r.isNull()) {
    // No such row (a field the metadata does not list): the end sits on the caption.
    r = Box->CalcFieldRect(name, false).adjusted(-Box->FrameWidth(), 0, Box->FrameWidth(), 0);
  }
  return r.translated(Box->pos() + Box->ClientOrigin());
}

bool TqxQueryBuilderLinkControl::Realign() {
  TqxQueryBuilderDataSourceControl* left = LeftBox();
  TqxQueryBuilderDataSourceControl* right = RightBox();
  if (left == nullptr || right == nullptr) {
    Placed_ = false;
    if (!isHidden())
      hide();
    return false;
  }
  const QRect a = FieldRect(left, Link_->GetLeftField());
  const QRect b = FieldRect(right, Link_->GetRightField());
  const TqxLinkPlacement placement = CalcLinkPlacement(a, b);
  const QPoint origin = placement.Bounds.topLeft();
  const TqxQueryBuilderPointArray points = CalcLinkPoints(
      a.translated(-origin), b.translated(-origin), placement.LeftSide, placement.RightSide);
  const bool moved = geometry() != placement.Bounds;
  const bool changed = points != Points_ || placement.LeftSide != LeftSide_ ||
                       placement.RightSide != RightSide_ || !Placed_;
  Points_ = points;
  LeftSide_ = placement.LeftSide;
  RightSide_ = placement.RightSide;
  Placed_ = true;
  if (moved)
    setGeometry(placement.Bounds);  // repaints the old and new places
  else if (changed)
    update();
  if (isHidden())
    show();
  return true;
}

bool TqxQueryBuilderLinkControl::HitTest(const QPoint& Pos) const {
  return Placed_ && rect().contains(Pos) && LinkLineHitTest(Points_, Pos);
}

bool TqxQueryBuilderLinkControl::IsFocused() const {
  return WorkArea_ != nullptr && WorkArea_->GetFocusedControl() == this;
}

void TqxQueryBuilderLinkControl::EditProps() {
  TqxLink* link = Link_;
  if (link == nullptr || WorkArea_ == nullptr)
    return;
  TqxQueryBuilderPrivate::Run(WorkArea_->GetBuilder(), [&] { link->EditPropsEvent(); });
}

void TqxQueryBuilderLinkControl::ShowPopupMenu(const QPoint& GlobalPos) {
  TqxLink* link = Link_;
  if (link == nullptr || WorkArea_ == nullptr)
    return;
  TqxQueryBuilderPrivate::Run(WorkArea_->GetBuilder(), [&] {
    link->ShowPopupMenu(TqxPoint{GlobalPos.x(), GlobalPos.y()});
  });
}

QRect TqxQueryBuilderLinkControl::ClientToScreenR(const QRect& R) const {
  return R.translated(mapToGlobal(QPoint(0, 0)));
}

QRect TqxQueryBuilderLinkControl::ScreenToClientR(const QRect& R) const {
  return R.translated(mapFromGlobal(QPoint(0, 0)));
}

void TqxQueryBuilderLinkControl::paintEvent(QPaintEvent* /*Event*/) {
  if (!Placed_ || Link_ == nullptr || WorkArea_ == nullptr)
    return;
  TqxQueryBuilderLinkPainter* painter = WorkArea_->GetBuilder()->GetLinkPainter();
  if (painter == nullptr)
    painter = &FallbackLinkPainter();
  QPainter canvas(this);
  painter->PaintLink(canvas, Points_, IsFocused(), LeftSide_, RightSide_, Link_);
}

// ---------------------------------------------------------------------------------------
// The work area's links

void TqxQueryBuilderWorkArea::AddLinkControl(TqxQueryBuilderLinkControl* Link) {
  Links_.push_back(Link);
}

void TqxQueryBuilderWorkArea::RemoveLinkControl(TqxQueryBuilderLinkControl* Link) {
  Links_.erase(std::remove(Links_.begin(), Links_.end(), Link), Links_.end());
}

void TqxQueryBuilderWorkArea::DetachLinkControls() {
  for (TqxQueryBuilderLinkControl* link : Links_)
    link->DetachWorkArea();
  Links_.clear();
}

void TqxQueryBuilderWorkArea::RealignLinks(const TqxQueryBuilderDataSourceControl* Box) {
  for (TqxQueryBuilderLinkControl* link : Links_) {
    if (Box == nullptr || link->Joins(Box))
      link->Realign();
  }
}

TqxQueryBuilderLinkControl* TqxQueryBuilderWorkArea::LinkAt(const QPoint& CanvasPos) const {
  // Each new link goes to the bottom of the stack, so the oldest lies on top.
  for (TqxQueryBuilderLinkControl* link : Links_) {
    if (link->IsPlaced() && link->geometry().contains(CanvasPos) &&
        link->HitTest(CanvasPos - link->pos()))
      return link;
  }
  return nullptr;
}

}  // namespace qorvex
