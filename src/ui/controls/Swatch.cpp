#include "ui/controls/Swatch.h"

#include <QLinearGradient>
#include <algorithm>

namespace veloria {

namespace {

constexpr std::size_t drawnStops = 4;

}  // namespace

QColor colorOf(const ColorStop& stop) {
  const auto channel = [](float value) { return std::clamp(value, 0.0F, 1.0F); };
  return QColor::fromRgbF(channel(stop[0]), channel(stop[1]), channel(stop[2]));
}

ColorStop stopOf(const QColor& color) {
  const QColor rgb = color.toRgb();
  return {static_cast<float>(rgb.red()) / 255, static_cast<float>(rgb.green()) / 255,
          static_cast<float>(rgb.blue()) / 255};
}

QString hexOf(const ColorStop& stop) {
  return colorOf(stop).name(QColor::HexRgb);
}

void paintPalette(QPainter& painter, const QRectF& area, const Palette& palette) {
  QLinearGradient gradient(area.topLeft(), area.topRight());
  const std::size_t count = std::min(palette.stops.size(), drawnStops);
  for (std::size_t i = 0; i < count; ++i) {
    const double at = count < 2 ? 0 : static_cast<double>(i) / static_cast<double>(count - 1);
    gradient.setColorAt(at, colorOf(palette.stops[i]));
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(gradient);
  painter.drawRoundedRect(area, swatchRadius, swatchRadius);
}

}  // namespace veloria
