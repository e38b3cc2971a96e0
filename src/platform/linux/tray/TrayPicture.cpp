#include "TrayPicture.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPixmap>
#include <QPointF>

namespace veloria {

namespace {

constexpr int sizes[] = {16, 22, 24, 32, 44, 48, 64};
constexpr double waist = 0.16;  // how far the sides of a star bend in, as a share of its reach
constexpr double edgeWidth = 0.07;
constexpr int edgeAlpha = 120;

struct Star {
  QPointF centre;  // in a square of side 1, y down
  double reach;
};
const Star stars[] = {{{0.42, 0.56}, 0.40}, {{0.80, 0.22}, 0.18}, {{0.82, 0.83}, 0.13}};

QPainterPath outline(const Star& star) {
  const QPointF& c = star.centre;
  const double r = star.reach;
  const double w = r * waist;
  QPainterPath path(c + QPointF(0, -r));
  path.quadTo(c + QPointF(w, -w), c + QPointF(r, 0));
  path.quadTo(c + QPointF(w, w), c + QPointF(0, r));
  path.quadTo(c + QPointF(-w, w), c + QPointF(-r, 0));
  path.quadTo(c + QPointF(-w, -w), c + QPointF(0, -r));
  return path;
}

QPixmap draw(int size, const QColor& ink, QColor edge) {
  QPixmap picture(size, size);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size, size);
  QPainterPath all;
  for (const Star& star : stars) all.addPath(outline(star));
  edge.setAlpha(edgeAlpha);
  painter.strokePath(all, QPen(edge, edgeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.fillPath(all, ink);
  return picture;
}

}  // namespace

QIcon sparkles(PanelShade panel) {
  const QColor light(0xF2, 0xF2, 0xF2);
  const QColor dark(0x26, 0x26, 0x26);
  const bool onDark = panel == PanelShade::dark;
  QIcon icon;
  for (const int size : sizes) icon.addPixmap(draw(size, onDark ? light : dark, onDark ? dark : light));
  return icon;
}

}  // namespace veloria
