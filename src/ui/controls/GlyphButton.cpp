#include "ui/controls/GlyphButton.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionToolButton>

namespace veloria {

namespace {

/// In a square of side 2 around the origin: an arc that starts at `from` degrees and spans `span` counter-clockwise,
/// with an arrow head at its end.
QPainterPath arcWithHead(double from, double span, const QRectF& circle) {
  QPainterPath path;
  path.arcMoveTo(circle, from);
  path.arcTo(circle, from, span);
  const QPointF tip = path.currentPosition();
  QTransform turn;
  turn.translate(tip.x(), tip.y());
  turn.rotate(-(from + span) - 90);
  path.moveTo(turn.map(QPointF(-0.36, -0.36)));
  path.lineTo(tip);
  path.lineTo(turn.map(QPointF(-0.36, 0.36)));
  return path;
}

QPainterPath glyphPath(Glyph glyph) {
  if (glyph == Glyph::toDefault) return arcWithHead(195, 300, QRectF(-0.7, -0.7, 1.4, 1.4));
  const QPainterPath undo = arcWithHead(-35, 215, QRectF(-0.75, -0.45, 1.5, 1.3));
  return glyph == Glyph::undo ? undo : QTransform::fromScale(-1, 1).map(undo);
}

}  // namespace

GlyphButton::GlyphButton(Glyph glyph, const QString& words, QWidget* parent) : QToolButton(parent), glyph_(glyph) {
  setAutoRaise(true);
  setFocusPolicy(Qt::StrongFocus);
  setToolTip(words);
  setAccessibleName(words);
}

QSize GlyphButton::sizeHint() const {
  const int side = fontMetrics().height() + 8;
  return {side, side};
}

void GlyphButton::paintEvent(QPaintEvent*) {
  if (glyph_ == Glyph::toDefault && !isEnabled()) return;
  QPainter painter(this);
  QStyleOptionToolButton option;
  initStyleOption(&option);
  style()->drawComplexControl(QStyle::CC_ToolButton, &option, &painter, this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(QRectF(rect()).center());
  const double half = 0.4 * fontMetrics().height();
  painter.scale(half, half);
  const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
  painter.setPen(QPen(palette().color(group, QPalette::ButtonText), 0.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(glyphPath(glyph_));
}

}  // namespace veloria
