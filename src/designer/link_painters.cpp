// The link painters: the three styles, their registry, the shared fallback painter and
// the cardinality marks.
#include "qorvex/designer/link_painters.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPolygon>
#include <algorithm>
#include <cstdlib>
#include <map>
#include <tuple>
#include <utility>

#include "qorvex/designer/query_builder.h"
#include "qorvex/model/datasources.h"

// The marks live in the library's resources; a static library registers them by hand.
static void InitLinkCardinalityResources() {
  Q_INIT_RESOURCE(link_cardinality);
}

namespace qorvex {

// ---------------------------------------------------------------------------------------
// Class references

const TqxQueryBuilderLinkPainterClass& TqxQueryBuilderLinkPainter::StaticClass() noexcept {
  static const TqxQueryBuilderLinkPainterClass cls("TqxQueryBuilderLinkPainter", nullptr, nullptr,
                                                   "");
  return cls;
}

const TqxQueryBuilderLinkPainterClass& TqxQueryBuilderLinkPainterSimple::StaticClass() noexcept {
  static const TqxQueryBuilderLinkPainterClass cls(
      "TqxQueryBuilderLinkPainterSimple", &TqxQueryBuilderLinkPainter::StaticClass(),
      &TqxQueryBuilderLinkPainterClass::Make<TqxQueryBuilderLinkPainterSimple>, "Simple");
  return cls;
}

const TqxQueryBuilderLinkPainterClass& TqxQueryBuilderLinkPainterMSSQL::StaticClass() noexcept {
  static const TqxQueryBuilderLinkPainterClass cls(
      "TqxQueryBuilderLinkPainterMSSQL", &TqxQueryBuilderLinkPainter::StaticClass(),
      &TqxQueryBuilderLinkPainterClass::Make<TqxQueryBuilderLinkPainterMSSQL>, "MS SQL Style");
  return cls;
}

const TqxQueryBuilderLinkPainterClass& TqxQueryBuilderLinkPainterAccess::StaticClass() noexcept {
  static const TqxQueryBuilderLinkPainterClass cls(
      "TqxQueryBuilderLinkPainterAccess", &TqxQueryBuilderLinkPainter::StaticClass(),
      &TqxQueryBuilderLinkPainterClass::Make<TqxQueryBuilderLinkPainterAccess>, "Access Style");
  return cls;
}

// ---------------------------------------------------------------------------------------
// Base

namespace {

// Whether the painter maps one unit to one device pixel without smoothing: then the
// shapes can be filled as rectangles or copied from kept images, pixel for pixel.
bool PixelExact(const QPainter& Canvas) {
  return Canvas.deviceTransform().type() <= QTransform::TxTranslate &&
         !Canvas.testRenderHint(QPainter::Antialiasing);
}

// The pixels the raster engine sets for a horizontal or vertical stretch from A to B with
// a square-capped pen of Width 1 (both ends included) or 2 (one more before the start,
// and the row or column before the line).
QRect AxisStretch(QPoint A, QPoint B, int Width) {
  const QRect span(QPoint(std::min(A.x(), B.x()), std::min(A.y(), B.y())),
                   QPoint(std::max(A.x(), B.x()), std::max(A.y(), B.y())));
  if (Width == 1)
    return span;
  if (A.y() == B.y())
    return QRect(span.left() - 1, span.top() - 1, span.width() + 1, 2);
  return QRect(span.left() - 1, span.top() - 1, 2, span.height() + 1);
}

bool Axial(QPoint A, QPoint B) {
  return A.x() == B.x() || A.y() == B.y();
}

// A small shape drawn around its centre by Draw with a pen of PenColor and a brush of
// BrushColor. Where the painter is pixel exact, the shape is drawn once into an image
// kept under Key and copied from then on: a diagram paints the same few marks hundreds
// of times.
template <class DrawFn>
void Stamp(QPainter& Canvas, QPoint At, quint32 Key, int Reach, const QColor& PenColor,
           const QColor& BrushColor, DrawFn Draw) {
  if (!PixelExact(Canvas)) {
    Canvas.setPen(QPen(PenColor, 1));
    Canvas.setBrush(BrushColor);
    Draw(Canvas, At);
    return;
  }
  static std::map<std::tuple<quint32, QRgb, QRgb>, QImage> kept;
  const auto key = std::make_tuple(Key, PenColor.rgba(), BrushColor.rgba());
  auto found = kept.find(key);
  if (found == kept.end()) {
    QImage image(2 * Reach + 1, 2 * Reach + 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setPen(QPen(PenColor, 1));
    painter.setBrush(BrushColor);
    Draw(painter, QPoint(Reach, Reach));
    painter.end();
    found = kept.emplace(key, image).first;
  }
  Canvas.drawImage(At - QPoint(Reach, Reach), found->second);
}

}  // namespace

void TqxQueryBuilderLinkPainter::DrawLine(QPainter& Canvas, const TqxQueryBuilderPointArray& Points,
                                          int Width, int YOffset, const QColor& Color) {
  TqxQueryBuilderPointArray moved = Points;
  for (QPoint& point : moved)
    point.ry() += YOffset;
  const QPen pen(Color, Width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin);
  // Straight stretches are filled as rectangles, far cheaper than stroking them; a thin
  // line's slanted stretch is stroked alone, which sets the same pixels.
  const bool fast = PixelExact(Canvas) &&
                    (Width == 1 || (Width == 2 && Axial(moved[0], moved[1]) &&
                                    Axial(moved[1], moved[2]) && Axial(moved[2], moved[3])));
  if (!fast) {
    Canvas.setPen(pen);
    Canvas.drawPolyline(moved.data(), static_cast<int>(moved.size()));
    return;
  }
  for (std::size_t i = 0; i + 1 < moved.size(); ++i) {
    if (Axial(moved[i], moved[i + 1])) {
      Canvas.fillRect(AxisStretch(moved[i], moved[i + 1], Width), Color);
    } else {
      Canvas.setPen(pen);
      Canvas.drawLine(moved[i], moved[i + 1]);
    }
  }
}

QColor TqxQueryBuilderLinkPainter::ToQColor(TqxColor Color) const {
  if (Builder_ != nullptr)
    return Builder_->ToQColor(Color);
  if (!IsSystemColor(Color))
    return QColor((Color >> 16) & 0xFF, (Color >> 8) & 0xFF, Color & 0xFF);
  const QPalette palette = QApplication::palette();
  switch (Color) {
    case clBtnFace:
      return palette.color(QPalette::Button);
    case clBtnShadow:
      return palette.color(QPalette::Dark);
    case clWindow:
      return palette.color(QPalette::Base);
    default:
      return palette.color(QPalette::Window);
  }
}

TqxQueryBuilderLinkConnectType TqxQueryBuilderLinkPainter::LeftType(const TqxLink* Link) {
  return Link != nullptr ? Link->GetLeftType() : ctInner;
}

TqxQueryBuilderLinkConnectType TqxQueryBuilderLinkPainter::RightType(const TqxLink* Link) {
  return Link != nullptr ? Link->GetRightType() : ctInner;
}

namespace {

void DrawTriangle(QPainter& Canvas, QPoint At, int D) {
  const QPoint triangle[3] = {At, QPoint(At.x() + D, At.y() - 4), QPoint(At.x() + D, At.y() + 4)};
  Canvas.drawPolygon(triangle, 3);
}

// The ellipse inside the box from (X1, Y1) to (X2, Y2), whichever way round.
void DrawCircle(QPainter& Canvas, int X1, int Y1, int X2, int Y2) {
  Canvas.drawEllipse(QRect(QPoint(std::min(X1, X2), std::min(Y1, Y2)),
                           QPoint(std::max(X1, X2), std::max(Y1, Y2))));
}

// Keys of the kept marks: the style, the end's join kind and side, and extra flags.
constexpr quint32 kSimpleMark = 0x100;
constexpr quint32 kAccessMark = 0x200;
constexpr quint32 kMSSQLMark = 0x300;
constexpr quint32 kOuterEnd = 0x1;
constexpr quint32 kRightSide = 0x2;

}  // namespace

// ---------------------------------------------------------------------------------------
// Simple

void TqxQueryBuilderLinkPainterSimple::PaintLink(QPainter& Canvas,
                                                 const TqxQueryBuilderPointArray& Points,
                                                 bool Focused,
                                                 TqxQueryBuilderLinkConnectToSide LeftSide,
                                                 TqxQueryBuilderLinkConnectToSide RightSide,
                                                 const TqxLink* Link) {
  const QColor line = ToQColor(LinkColor_);
  DrawLine(Canvas, Points, Focused ? 2 : 1, 0, line);
  const QColor shapes = ToQColor(LinkShapesColor_);
  PaintEndMark(Canvas, Points[0], LeftType(Link), LeftSide, line, shapes);
  PaintEndMark(Canvas, Points[3], RightType(Link), RightSide, line, shapes);
}

void TqxQueryBuilderLinkPainterSimple::PaintEndMark(QPainter& Canvas, QPoint At,
                                                    TqxQueryBuilderLinkConnectType Type,
                                                    TqxQueryBuilderLinkConnectToSide Side,
                                                    const QColor& Line, const QColor& Shapes) {
  const int d = Side == csRight ? 8 : -8;
  const quint32 key =
      kSimpleMark | (Type == ctOuter ? kOuterEnd : 0u) | (Side == csRight ? kRightSide : 0u);
  Stamp(Canvas, At, key, 9, Line, Shapes, [&](QPainter& P, QPoint C) {
    if (Type == ctOuter)
      DrawTriangle(P, C, d);
    else
      DrawCircle(P, C.x(), C.y() - 4, C.x() + d, C.y() + 4);
  });
}

// ---------------------------------------------------------------------------------------
// MS SQL

namespace {

// The band's rows Lo..Hi (offsets from the line) along the slanted stretch A-B whose
// run is at least its rise, as one polygon: one span per scanline instead of a stroked
// line per row. Each column gets the rows a line through the pixel centres would give.
void FillSlantedRows(QPainter& Canvas, QPoint A, QPoint B, int Lo, int Hi, const QColor& Color) {
  if (A.x() > B.x())
    std::swap(A, B);
  const double slope = static_cast<double>(B.y() - A.y()) / (B.x() - A.x());
  const QPointF corners[4] = {
      QPointF(A.x(), A.y() + Lo - slope / 2), QPointF(B.x() + 1, B.y() + Lo + slope / 2),
      QPointF(B.x() + 1, B.y() + Hi + 1 + slope / 2), QPointF(A.x(), A.y() + Hi + 1 - slope / 2)};
  Canvas.setBrush(Color);
  Canvas.drawPolygon(corners, 4);
}

}  // namespace

// The band of a link that is not focused: straight stretches as rectangles, slanted ones
// as filled rows where they run wider than they rise, stroked rows where they are steep.
void TqxQueryBuilderLinkPainterMSSQL::PaintFlatBand(QPainter& Canvas,
                                                    const TqxQueryBuilderPointArray& Points,
                                                    const QColor& Band, const QColor& Lines) {
  const struct {
    int Lo, Hi;
    const QColor& Color;
  } rows[] = {{-1, 1, Band}, {-2, -2, Lines}, {2, 2, Lines}};
  for (std::size_t i = 0; i + 1 < Points.size(); ++i) {
    const QPoint a = Points[i];
    const QPoint b = Points[i + 1];
    if (Axial(a, b)) {
      for (const auto& r : rows) {
        for (int offset = r.Lo; offset <= r.Hi; ++offset)
          Canvas.fillRect(AxisStretch(a + QPoint(0, offset), b + QPoint(0, offset), 1), r.Color);
      }
    } else if (std::abs(b.x() - a.x()) >= std::abs(b.y() - a.y())) {
      Canvas.setPen(Qt::NoPen);
      for (const auto& r : rows)
        FillSlantedRows(Canvas, a, b, r.Lo, r.Hi, r.Color);
    } else {
      for (const auto& r : rows) {
        Canvas.setPen(QPen(r.Color, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        for (int offset = r.Lo; offset <= r.Hi; ++offset)
          Canvas.drawLine(a + QPoint(0, offset), b + QPoint(0, offset));
      }
    }
  }
}

void TqxQueryBuilderLinkPainterMSSQL::PaintLink(QPainter& Canvas,
                                                const TqxQueryBuilderPointArray& Points,
                                                bool Focused,
                                                TqxQueryBuilderLinkConnectToSide /*LeftSide*/,
                                                TqxQueryBuilderLinkConnectToSide /*RightSide*/,
                                                const TqxLink* Link) {
  const QColor band = ToQColor(LinkColor_);
  const QColor lines = ToQColor(LinkLinesColor_);
  if (!Focused && PixelExact(Canvas)) {
    PaintFlatBand(Canvas, Points, band, lines);
  } else {
    for (int offset = -1; offset <= 1; ++offset)
      DrawLine(Canvas, Points, 1, offset, band);
    DrawLine(Canvas, Points, 1, -2, lines);
    // The focused link has a heavier lower edge.
    DrawLine(Canvas, Points, Focused ? 2 : 1, 2, lines);
  }
  const QPoint m((Points[0].x() + Points[3].x()) / 2, (Points[0].y() + Points[3].y()) / 2);
  const int d = Points[3].x() < Points[0].x() ? -7 : 7;
  const bool leftOuter = LeftType(Link) == ctOuter;
  const bool rightOuter = RightType(Link) == ctOuter;
  const quint32 key =
      kMSSQLMark | (leftOuter ? 0x1 : 0) | (rightOuter ? 0x2 : 0) | (d < 0 ? 0x4 : 0);
  Stamp(Canvas, m, key, 8, lines, ToQColor(Focused ? LinkColorFocused_ : LinkColor_),
        [&](QPainter& P, QPoint C) {
          auto half = [&](int Dx) {
            const QPoint rect[4] = {QPoint(C.x(), C.y() - 7), QPoint(C.x() + Dx, C.y() - 7),
                                    QPoint(C.x() + Dx, C.y() + 7), QPoint(C.x(), C.y() + 7)};
            P.drawPolygon(rect, 4);
          };
          if (leftOuter)
            half(-d);
          if (rightOuter)
            half(d);
          const QPoint diamond[4] = {QPoint(C.x(), C.y() - 7), QPoint(C.x() + 7, C.y()),
                                     QPoint(C.x(), C.y() + 7), QPoint(C.x() - 7, C.y())};
          P.drawPolygon(diamond, 4);
        });
}

// ---------------------------------------------------------------------------------------
// Access

QPoint TqxQueryBuilderLinkPainterAccess::CardinalitySymbolOrigin(QPoint At, const QImage& Image) {
  return QPoint(At.x() - Image.width() / 2, At.y() - Image.height() - 4);
}

void TqxQueryBuilderLinkPainterAccess::PaintLink(QPainter& Canvas,
                                                 const TqxQueryBuilderPointArray& Points,
                                                 bool Focused,
                                                 TqxQueryBuilderLinkConnectToSide LeftSide,
                                                 TqxQueryBuilderLinkConnectToSide RightSide,
                                                 const TqxLink* Link) {
  const QColor line = ToQColor(LinkColor_);
  DrawLine(Canvas, Points, Focused ? 2 : 1, 0, line);
  // The stubs at the boxes are always heavy.
  if (PixelExact(Canvas)) {
    Canvas.fillRect(AxisStretch(Points[0], Points[1], 2), line);
    Canvas.fillRect(AxisStretch(Points[3], Points[2], 2), line);
  } else {
    Canvas.setPen(QPen(line, 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    Canvas.drawLine(Points[0], Points[1]);
    Canvas.drawLine(Points[3], Points[2]);
  }
  if (Link != nullptr) {
    PaintCardinalitySymbol(Canvas, QPoint((Points[0].x() + Points[1].x()) / 2, Points[0].y()),
                           Link->GetLeftCardinality());
    PaintCardinalitySymbol(Canvas, QPoint((Points[3].x() + Points[2].x()) / 2, Points[3].y()),
                           Link->GetRightCardinality());
  }
  PaintEndMark(Canvas, Points[0], LeftType(Link), LeftSide, line);
  PaintEndMark(Canvas, Points[3], RightType(Link), RightSide, line);
}

void TqxQueryBuilderLinkPainterAccess::PaintCardinalitySymbol(
    QPainter& Canvas, QPoint At, TqxQueryBuilderLinkCardinality Cardinality) {
  if (Cardinality == qblcUnknown)
    return;
  const QImage& image = LinkCardinalityImage(Cardinality);
  if (!image.isNull())
    Canvas.drawImage(CardinalitySymbolOrigin(At, image), image);
}

void TqxQueryBuilderLinkPainterAccess::PaintEndMark(QPainter& Canvas, QPoint At,
                                                    TqxQueryBuilderLinkConnectType Type,
                                                    TqxQueryBuilderLinkConnectToSide Side,
                                                    const QColor& Line) {
  const quint32 key =
      kAccessMark | (Type == ctOuter ? kOuterEnd : 0u) | (Side == csRight ? kRightSide : 0u);
  Stamp(Canvas, At, key, 7, Line, Line, [&](QPainter& P, QPoint C) {
    if (Type == ctOuter)
      DrawTriangle(P, C, Side == csRight ? 4 : -4);
    else
      DrawCircle(P, C.x(), C.y() - 3, C.x() + (Side == csRight ? 6 : -6), C.y() + 3);
  });
}

// ---------------------------------------------------------------------------------------
// Registry

TqxQueryBuilderLinkPainters::TqxQueryBuilderLinkPainters() {
  RegisterPainter(TqxQueryBuilderLinkPainterSimple::StaticClass());
  RegisterPainter(TqxQueryBuilderLinkPainterMSSQL::StaticClass());
  RegisterPainter(TqxQueryBuilderLinkPainterAccess::StaticClass());
}

TqxQueryBuilderLinkPainters& TqxQueryBuilderLinkPainters::Instance() {
  static TqxQueryBuilderLinkPainters registry;
  return registry;
}

void TqxQueryBuilderLinkPainters::RegisterPainter(const TqxQueryBuilderLinkPainterClass& Class) {
  Classes_.push_back(&Class);
}

std::unique_ptr<TqxQueryBuilderLinkPainter> TqxQueryBuilderLinkPainters::CreateByName(
    std::string_view ClassName, TqxQueryBuilder* Builder) const {
  for (const TqxQueryBuilderLinkPainterClass* cls : Classes_) {
    if (cls->ClassName() == ClassName)
      return cls->IsAbstract() ? nullptr : cls->Create(Builder);
  }
  return nullptr;
}

std::unique_ptr<TqxQueryBuilderLinkPainter> TqxQueryBuilderLinkPainters::CreateByUserName(
    std::string_view UserName, TqxQueryBuilder* Builder) const {
  for (const TqxQueryBuilderLinkPainterClass* cls : Classes_) {
    if (cls->PainterStyle() == UserName)
      return cls->IsAbstract() ? nullptr : cls->Create(Builder);
  }
  return nullptr;
}

void TqxQueryBuilderLinkPainters::GetUserNames(
    const std::function<void(const std::string&)>& Callback) const {
  for (const TqxQueryBuilderLinkPainterClass* cls : Classes_)
    Callback(std::string(cls->PainterStyle()));
}

std::string TqxQueryBuilderLinkPainters::GetPainterStyle(
    const TqxQueryBuilderLinkPainterClass& Class) {
  return std::string(Class.PainterStyle());
}

TqxQueryBuilderLinkPainter& FallbackLinkPainter() {
  static TqxQueryBuilderLinkPainterAccess painter(nullptr);
  return painter;
}

const QImage& LinkCardinalityImage(TqxQueryBuilderLinkCardinality Cardinality) {
  struct Images {
    Images() {
      InitLinkCardinalityResources();
      auto load = [](const char* Name) {
        return QImage(QString::fromLatin1(Name))
            .convertToFormat(QImage::Format_ARGB32_Premultiplied);
      };
      One = load(":/qorvex/QXQBLINKCARDINALITYONE");
      Many = load(":/qorvex/QXQBLINKCARDINALITYMANY");
    }
    QImage One;
    QImage Many;
    QImage None;
  };
  static const Images images;
  switch (Cardinality) {
    case qblcOne:
      return images.One;
    case qblcMany:
      return images.Many;
    default:
      return images.None;
  }
}

}  // namespace qorvex
