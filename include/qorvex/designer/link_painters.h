#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qorvex/core/metaclass.h"
#include "qorvex/model/types.h"
#include "qorvex/widgets_export.h"

class QPainter;

namespace qorvex {

class TqxLink;
class TqxQueryBuilder;
class TqxQueryBuilderLinkPainter;

// The four points of a link line, in the link control's coordinates: on the left box's
// edge, 16 pixels out from it, 16 pixels out from the right box's edge, on that edge.
using TqxQueryBuilderPointArray = std::array<QPoint, 4>;

// The class reference of a painter class: its class name, its parent, a factory taking
// the builder, and the style text shown to users.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainterClass
    : public TqxClassOf<TqxQueryBuilderLinkPainter, TqxQueryBuilder*> {
 public:
  constexpr TqxQueryBuilderLinkPainterClass(std::string_view Name,
                                            const TqxQueryBuilderLinkPainterClass* Parent,
                                            Factory Make, std::string_view Style) noexcept
      : TqxClassOf(Name, Parent, Make), Style_(Style) {}
  std::string_view PainterStyle() const noexcept { return Style_; }

 private:
  std::string_view Style_;
};

// Draws one link between two boxes. A builder owns the painter it uses; painter classes
// are registered with TqxQueryBuilderLinkPainters and created by name.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainter {
  QX_ROOT_CLASS(TqxQueryBuilderLinkPainterClass)
 public:
  explicit TqxQueryBuilderLinkPainter(TqxQueryBuilder* Builder) : Builder_(Builder) {}
  virtual ~TqxQueryBuilderLinkPainter() = default;

  TqxQueryBuilder* GetBuilder() const { return Builder_; }
  // The style's user name ("Simple", "MS SQL Style", "Access Style").
  std::string PainterStyle() const { return std::string(ClassType().PainterStyle()); }

  // Draws the link through Points. Link gives the join kind of each end (inner or outer)
  // and the cardinalities; null draws both ends as inner ends of unknown cardinality.
  virtual void PaintLink(QPainter& Canvas, const TqxQueryBuilderPointArray& Points, bool Focused,
                         TqxQueryBuilderLinkConnectToSide LeftSide,
                         TqxQueryBuilderLinkConnectToSide RightSide, const TqxLink* Link) = 0;

  // The polyline through Points moved down by YOffset, in Color with a pen of Width.
  static void DrawLine(QPainter& Canvas, const TqxQueryBuilderPointArray& Points, int Width,
                       int YOffset, const QColor& Color);

 protected:
  // A colour of the model as the builder's palette shows it (the application's palette
  // for a painter without a builder).
  QColor ToQColor(TqxColor Color) const;
  static TqxQueryBuilderLinkConnectType LeftType(const TqxLink* Link);
  static TqxQueryBuilderLinkConnectType RightType(const TqxLink* Link);

 private:
  TqxQueryBuilder* Builder_;
};

// A thin line with a white circle on each inner end and a white arrow on each outer end.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainterSimple : public TqxQueryBuilderLinkPainter {
  QX_CLASS(TqxQueryBuilderLinkPainterClass)
 public:
  using TqxQueryBuilderLinkPainter::TqxQueryBuilderLinkPainter;
  void PaintLink(QPainter& Canvas, const TqxQueryBuilderPointArray& Points, bool Focused,
                 TqxQueryBuilderLinkConnectToSide LeftSide,
                 TqxQueryBuilderLinkConnectToSide RightSide, const TqxLink* Link) override;

  TqxColor GetLinkColor() const { return LinkColor_; }
  void SetLinkColor(TqxColor Value) { LinkColor_ = Value; }
  TqxColor GetLinkShapesColor() const { return LinkShapesColor_; }
  void SetLinkShapesColor(TqxColor Value) { LinkShapesColor_ = Value; }

 private:
  void PaintEndMark(QPainter& Canvas, QPoint At, TqxQueryBuilderLinkConnectType Type,
                    TqxQueryBuilderLinkConnectToSide Side, const QColor& Line,
                    const QColor& Shapes);
  TqxColor LinkColor_ = clBlack;
  TqxColor LinkShapesColor_ = clWhite;
};

// A band with dark edges and a diamond in the middle; a half rectangle beside the diamond
// marks each outer end.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainterMSSQL : public TqxQueryBuilderLinkPainter {
  QX_CLASS(TqxQueryBuilderLinkPainterClass)
 public:
  using TqxQueryBuilderLinkPainter::TqxQueryBuilderLinkPainter;
  void PaintLink(QPainter& Canvas, const TqxQueryBuilderPointArray& Points, bool Focused,
                 TqxQueryBuilderLinkConnectToSide LeftSide,
                 TqxQueryBuilderLinkConnectToSide RightSide, const TqxLink* Link) override;

  TqxColor GetLinkColor() const { return LinkColor_; }
  void SetLinkColor(TqxColor Value) { LinkColor_ = Value; }
  TqxColor GetLinkColorFocused() const { return LinkColorFocused_; }
  void SetLinkColorFocused(TqxColor Value) { LinkColorFocused_ = Value; }
  TqxColor GetLinkLinesColor() const { return LinkLinesColor_; }
  void SetLinkLinesColor(TqxColor Value) { LinkLinesColor_ = Value; }

 private:
  void PaintFlatBand(QPainter& Canvas, const TqxQueryBuilderPointArray& Points, const QColor& Band,
                     const QColor& Lines);
  TqxColor LinkColor_ = clBtnFace;
  TqxColor LinkColorFocused_ = clBtnShadow;
  TqxColor LinkLinesColor_ = clBlack;
};

// A line with heavy stubs at the boxes, small end marks and the one / many marks of the
// foreign key above the stubs. The default style.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainterAccess : public TqxQueryBuilderLinkPainter {
  QX_CLASS(TqxQueryBuilderLinkPainterClass)
 public:
  using TqxQueryBuilderLinkPainter::TqxQueryBuilderLinkPainter;
  void PaintLink(QPainter& Canvas, const TqxQueryBuilderPointArray& Points, bool Focused,
                 TqxQueryBuilderLinkConnectToSide LeftSide,
                 TqxQueryBuilderLinkConnectToSide RightSide, const TqxLink* Link) override;

  TqxColor GetLinkColor() const { return LinkColor_; }
  void SetLinkColor(TqxColor Value) { LinkColor_ = Value; }

  // Where the mark of a cardinality at (X, Y) goes: centred above, 4 pixels up.
  static QPoint CardinalitySymbolOrigin(QPoint At, const QImage& Image);

 private:
  void PaintCardinalitySymbol(QPainter& Canvas, QPoint At,
                              TqxQueryBuilderLinkCardinality Cardinality);
  void PaintEndMark(QPainter& Canvas, QPoint At, TqxQueryBuilderLinkConnectType Type,
                    TqxQueryBuilderLinkConnectToSide Side, const QColor& Line);
  TqxColor LinkColor_ = clBlack;
};

// The process-wide list of painter classes, in registration order. Simple, MS SQL and
// Access styles are registered when it is first used.
class QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainters {
 public:
  static TqxQueryBuilderLinkPainters& Instance();

  void RegisterPainter(const TqxQueryBuilderLinkPainterClass& Class);
  // A painter of the first class whose class name is exactly ClassName; null if none.
  std::unique_ptr<TqxQueryBuilderLinkPainter> CreateByName(std::string_view ClassName,
                                                           TqxQueryBuilder* Builder) const;
  // The same, by style text ("Access Style").
  std::unique_ptr<TqxQueryBuilderLinkPainter> CreateByUserName(std::string_view UserName,
                                                               TqxQueryBuilder* Builder) const;
  // Calls Callback with each class's style text, in registration order.
  void GetUserNames(const std::function<void(const std::string&)>& Callback) const;
  static std::string GetPainterStyle(const TqxQueryBuilderLinkPainterClass& Class);

 private:
  TqxQueryBuilderLinkPainters();
  std::vector<const TqxQueryBuilderLinkPainterClass*> Classes_;
};

// The Access-style painter, owned by no builder, that draws the links of a builder
// without a painter of its own.
QORVEX_WIDGETS_EXPORT TqxQueryBuilderLinkPainter& FallbackLinkPainter();

// The marks of a known cardinality, transparent where empty: "1" for one, "∞" for many;
// a null image for qblcUnknown. Images rather than pixmaps, so that they can outlive the
// application object.
QORVEX_WIDGETS_EXPORT const QImage& LinkCardinalityImage(
    TqxQueryBuilderLinkCardinality Cardinality);

}  // namespace qorvex
