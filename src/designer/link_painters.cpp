// The link painters: the three styles, their registry, the shared fallback painter and
// the cardinality marks.
#include "qorvex/designer/link_painters.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPolygon>

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

void TqxQueryBuilderLinkPainter::DrawLine(QPainter& Canvas, const TqxQueryBuilderPointArray& Points,
                                          int Width, int YOffset, const QColor& Color) {
  TqxQueryBuilderPointArray moved = Points;
  for (QPoint& point : moved)
    point.ry() += YOffset;
  Canvas.setPen(QPen(Color, Width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  Canvas.drawPolyline(moved.data(), static_cast<int>(moved.size()));
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
  Canvas.setBrush(ToQColor(LinkShapesColor_));
  Canvas.setPen(QPen(line, 1));
  PaintEndMark(Canvas, Points[0], LeftType(Link), LeftSide);
  PaintEndMark(Canvas, Points[3], RightType(Link), RightSide);
}

void TqxQueryBuilderLinkPainterSimple::PaintEndMark(QPainter& Canvas, QPoint At,
                                                    TqxQueryBuilderLinkConnectType Type,
                                                    TqxQueryBuilderLinkConnectToSide Side) {
  const int d = Side == csRight ? 8 : -8;
  if (Type == ctOuter)
    DrawTriangle(Canvas, At, d);
  else
    DrawCircle(Canvas, At.x(), At.y() - 4, At.x() + d, At.y() + 4);
}

// ---------------------------------------------------------------------------------------
// MS SQL

void TqxQueryBuilderLinkPainterMSSQL::PaintLink(QPainter& Canvas,
                                                const TqxQueryBuilderPointArray& Points,
                                                bool Focused,
                                                TqxQueryBuilderLinkConnectToSide /*LeftSide*/,
                                                TqxQueryBuilderLinkConnectToSide /*RightSide*/,
                                                const TqxLink* Link) {
  const QColor band = ToQColor(LinkColor_);
  const QColor lines = ToQColor(LinkLinesColor_);
  for (int offset = -1; offset <= 1; ++offset)
    DrawLine(Canvas, Points, 1, offset, band);
  DrawLine(Canvas, Points, 1, -2, lines);
  // The focused link has a heavier lower edge.
  DrawLine(Canvas, Points, Focused ? 2 : 1, 2, lines);
  Canvas.setBrush(ToQColor(Focused ? LinkColorFocused_ : LinkColor_));
  Canvas.setPen(QPen(lines, 1));
  const QPoint m((Points[0].x() + Points[3].x()) / 2, (Points[0].y() + Points[3].y()) / 2);
  const int d = Points[3].x() < Points[0].x() ? -7 : 7;
  auto half = [&](int Dx) {
    const QPoint rect[4] = {QPoint(m.x(), m.y() - 7), QPoint(m.x() + Dx, m.y() - 7),
                            QPoint(m.x() + Dx, m.y() + 7), QPoint(m.x(), m.y() + 7)};
    Canvas.drawPolygon(rect, 4);
  };
  if (LeftType(Link) == ctOuter)
    half(-d);
  if (RightType(Link) == ctOuter)
    half(d);
  const QPoint diamond[4] = {QPoint(m.x(), m.y() - 7), QPoint(m.x() + 7, m.y()),
                             QPoint(m.x(), m.y() + 7), QPoint(m.x() - 7, m.y())};
  Canvas.drawPolygon(diamond, 4);
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
  Canvas.setPen(QPen(line, 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  Canvas.drawLine(Points[0], Points[1]);
  Canvas.drawLine(Points[3], Points[2]);
  if (Link != nullptr) {
    PaintCardinalitySymbol(Canvas, QPoint((Points[0].x() + Points[1].x()) / 2, Points[0].y()),
                           Link->GetLeftCardinality());
    PaintCardinalitySymbol(Canvas, QPoint((Points[3].x() + Points[2].x()) / 2, Points[3].y()),
                           Link->GetRightCardinality());
  }
  Canvas.setBrush(line);
  Canvas.setPen(QPen(line, 1));
  PaintEndMark(Canvas, Points[0], LeftType(Link), LeftSide);
  PaintEndMark(Canvas, Points[3], RightType(Link), RightSide);
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
                                                    TqxQueryBuilderLinkConnectToSide Side) {
  if (Type == ctOuter)
    DrawTriangle(Canvas, At, Side == csRight ? 4 : -4);
  else
    DrawCircle(Canvas, At.x(), At.y() - 3, At.x() + (Side == csRight ? 6 : -6), At.y() + 3);
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
