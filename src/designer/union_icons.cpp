// The six 16 x 16 images of the set operators, drawn once: two overlapping circles with
// the part the operator keeps filled; the ALL forms carry a small plus sign.
#include <QHash>
#include <QPainter>
#include <QPainterPath>

#include "designer/union_nav_bar.h"

namespace qorvex {

namespace {

enum class TqxSetOp { Union, Except, Intersect };

QPixmap DrawOperator(TqxSetOp Op, bool All) {
  QPixmap pixmap(16, 16);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF left(1.5, 3.5, 9, 9);
  const QRectF right(5.5, 3.5, 9, 9);
  QPainterPath a;
  a.addEllipse(left);
  QPainterPath b;
  b.addEllipse(right);
  QPainterPath kept;
  switch (Op) {
    case TqxSetOp::Union:
      kept = a.united(b);
      break;
    case TqxSetOp::Except:
      kept = a.subtracted(b);
      break;
    case TqxSetOp::Intersect:
      kept = a.intersected(b);
      break;
  }
  const QColor fill = All ? QColor(0x1f, 0x6f, 0xc4) : QColor(0x3c, 0x9a, 0x4a);
  painter.fillPath(kept, fill);
  painter.setPen(QPen(QColor(0x20, 0x20, 0x20), 1));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(left);
  painter.drawEllipse(right);
  if (All) {
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(QColor(0xb0, 0x10, 0x10), 2));
    painter.drawLine(QPointF(12, 0), QPointF(12, 5));
    painter.drawLine(QPointF(9.5, 2.5), QPointF(14.5, 2.5));
  }
  return pixmap;
}

}  // namespace

QPixmap UnionOperatorImage(const QString& Name) {
  static const QHash<QString, QPixmap> images = [] {
    QHash<QString, QPixmap> map;
    map.insert(QStringLiteral("QXQB_UNION"), DrawOperator(TqxSetOp::Union, false));
    map.insert(QStringLiteral("QXQB_UNIONALL"), DrawOperator(TqxSetOp::Union, true));
    map.insert(QStringLiteral("QXQB_EXCEPT"), DrawOperator(TqxSetOp::Except, false));
    map.insert(QStringLiteral("QXQB_EXCEPTALL"), DrawOperator(TqxSetOp::Except, true));
    map.insert(QStringLiteral("QXQB_INTERSECT"), DrawOperator(TqxSetOp::Intersect, false));
    map.insert(QStringLiteral("QXQB_INTERSECTALL"), DrawOperator(TqxSetOp::Intersect, true));
    return map;
  }();
  return images.value(Name);
}

}  // namespace qorvex
