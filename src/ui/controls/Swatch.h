#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <QString>

#include "settings/Palette.h"

namespace veloria {

/// How colours of the band are shown and written in the settings window.

/// The background of pictures of the band: dark, whatever the window's own colours are.
inline constexpr QColor nightColor{11, 13, 20};
/// The corner radius of pictures, in points.
inline constexpr double swatchRadius = 6;

QColor colorOf(const ColorStop& stop);
ColorStop stopOf(const QColor& color);
/// "#rrggbb"
QString hexOf(const ColorStop& stop);

/// Fills a rounded rectangle with the palette from left to right. The palette has at least one stop.
void paintPalette(QPainter& painter, const QRectF& area, const Palette& palette);

}  // namespace veloria
