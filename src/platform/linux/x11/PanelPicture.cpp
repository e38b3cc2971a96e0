#include "platform/linux/x11/PanelPicture.h"

#include <algorithm>
#include <cstring>

namespace veloria {

namespace {

constexpr std::size_t bytesPerPixel = 4;
constexpr std::size_t alphaByte = 3;
constexpr unsigned opaque = 255;

std::size_t pixelCount(const PixelRect& rect) {
  return rect.empty() ? 0 : static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height);
}

std::size_t offsetIn(const PixelRect& picture, int x, int y) {
  return (static_cast<std::size_t>(y - picture.y) * static_cast<std::size_t>(picture.width) +
          static_cast<std::size_t>(x - picture.x)) *
         bytesPerPixel;
}

void copyOpaque(std::byte* to, const std::byte* from, std::size_t bytes) {
  std::memcpy(to, from, bytes);
  for (std::size_t i = alphaByte; i < bytes; i += bytesPerPixel) to[i] = std::byte{opaque};
}

void blendOver(std::byte* to, const std::byte* from, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) {
    const unsigned through = opaque - std::to_integer<unsigned>(from[i | alphaByte]);
    const unsigned below = (std::to_integer<unsigned>(to[i]) * through + opaque / 2) / opaque;
    to[i] = static_cast<std::byte>(std::min(std::to_integer<unsigned>(from[i]) + below, opaque));
  }
}

void drawPart(const PixelRect& strip, const PanelPicture& panel, const PixelRect& part, std::vector<std::byte>& rows) {
  const PixelRect shown = intersection(intersection(part, panel.bounds), strip);
  const auto draw = panel.hasAlpha ? blendOver : copyOpaque;
  for (int y = shown.y; y < shown.bottom(); ++y) {
    draw(rows.data() + offsetIn(strip, shown.x, y), panel.pixels.data() + offsetIn(panel.bounds, shown.x, y),
         static_cast<std::size_t>(shown.width) * bytesPerPixel);
  }
}

}  // namespace

void composePanels(const PixelRect& strip, std::span<const PanelPicture* const> panels, std::vector<std::byte>& rows) {
  rows.assign(pixelCount(strip) * bytesPerPixel, std::byte{0});
  for (const PanelPicture* panel : panels) {
    if (panel->pixels.size() != pixelCount(panel->bounds) * bytesPerPixel) continue;
    if (panel->shape.empty()) drawPart(strip, *panel, panel->bounds, rows);
    for (const PixelRect& part : panel->shape) drawPart(strip, *panel, part, rows);
  }
}

}  // namespace veloria
