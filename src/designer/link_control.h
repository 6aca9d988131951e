#pragma once

// The link control: one join of the model drawn between the field rows of two boxes.

#include <utility>

#include "designer/designer_p.h"
#include "qorvex/designer/link_painters.h"

namespace qorvex {

class TqxDatasourceBase;
class TqxLink;

// How far from its line a point may be and still be on a link.
inline constexpr double kLinkHitTolerance = 6.0;
// The length of the line's stub out of a box.
inline constexpr int kLinkEnterLength = 16;

// Where a link goes between two field rows A and B (work-area coordinates, frame
// included): the control's bounds and the side of each box the line leaves from.
struct TqxLinkPlacement {
  QRect Bounds;
  TqxQueryBuilderLinkConnectToSide LeftSide = csRight;
  TqxQueryBuilderLinkConnectToSide RightSide = csLeft;
};
TqxLinkPlacement CalcLinkPlacement(const QRect& A, const QRect& B);

// The stub of one end: from the edge of field row R on Side, 16 pixels out, at the
// row's middle.
std::pair<QPoint, QPoint> CalcEnterLine(const QRect& R, TqxQueryBuilderLinkConnectToSide Side);

// The four line points for field rows A and B (in the coordinates the points are wanted in).
TqxQueryBuilderPointArray CalcLinkPoints(const QRect& A, const QRect& B,
                                         TqxQueryBuilderLinkConnectToSide LeftSide,
                                         TqxQueryBuilderLinkConnectToSide RightSide);

// Whether P lies within the tolerance of the polyline through Points.
bool LinkLineHitTest(const TqxQueryBuilderPointArray& Points, const QPoint& P,
                     double Tolerance = kLinkHitTolerance);

// A transparent control on the work area's canvas, kept below the boxes. It takes no
// mouse input itself: the canvas asks it (HitTest) and passes on presses, double clicks
// and menus that fall on its line, so everything else under its bounds stays clickable.
class TqxQueryBuilderLinkControl : public TqxWorkAreaControl, public TqxControlWidget {
  Q_OBJECT
 public:
  TqxQueryBuilderLinkControl(TqxQueryBuilderWorkArea* WorkArea, TqxLink* Link);
  ~TqxQueryBuilderLinkControl() override;

  QWidget* Widget() override { return this; }
  // The bounds follow the boxes; the model's bounds are not used.
  void SetControlBounds(const TqxRect& /*Bounds*/) override {}
  void RepaintControl() override;
  void UpdateContent() override;
  void ControlReleased() override;
  TqxQueryBuilderControlOwner* GetOwnerObject() const override;

  TqxLink* GetLink() const { return Link_; }
  TqxQueryBuilderWorkArea* GetWorkArea() const { return WorkArea_; }
  // The work area is going: the control forgets it.
  void DetachWorkArea() { WorkArea_ = nullptr; }

  // Re-places the control from its two boxes; hides it when either box is missing.
  // Returns whether the link can be drawn.
  bool Realign();
  bool IsPlaced() const { return Placed_; }
  const TqxQueryBuilderPointArray& GetPoints() const { return Points_; }
  TqxQueryBuilderLinkConnectToSide GetLeftSide() const { return LeftSide_; }
  TqxQueryBuilderLinkConnectToSide GetRightSide() const { return RightSide_; }
  // Whether the line passes within 6 pixels of Pos (control coordinates).
  bool HitTest(const QPoint& Pos) const;
  bool IsFocused() const;
  // The boxes of the two ends on this work area; null when missing or going.
  TqxQueryBuilderDataSourceControl* LeftBox() const;
  TqxQueryBuilderDataSourceControl* RightBox() const;
  bool Joins(const TqxQueryBuilderDataSourceControl* Box) const;

  void EditProps();
  void ShowPopupMenu(const QPoint& GlobalPos);

  QRect ClientToScreenR(const QRect& R) const;
  QRect ScreenToClientR(const QRect& R) const;

 protected:
  void paintEvent(QPaintEvent* Event) override;

 private:
  TqxQueryBuilderDataSourceControl* BoxOf(TqxDatasourceBase* DS) const;
  // The field row of an end in canvas coordinates, frame included; an unknown field
  // takes the caption bar.
  static QRect FieldRect(const TqxQueryBuilderDataSourceControl* Box, const std::string& Field);

  TqxQueryBuilderWorkArea* WorkArea_;
  TqxLink* Link_;
  TqxQueryBuilderPointArray Points_{};
  TqxQueryBuilderLinkConnectToSide LeftSide_ = csRight;
  TqxQueryBuilderLinkConnectToSide RightSide_ = csLeft;
  bool Placed_ = false;
};

}  // namespace qorvex
