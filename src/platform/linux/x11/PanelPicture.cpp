#include "platform/linux/x11/PanelPicture.h"

#include <algorithm>
#include <array>
#include <cstdint>
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

bool isWhole(const PanelPicture& panel) {
  return panel.pixels.size() == pixelCount(panel.bounds) * bytesPerPixel;
}

template <typename Action>
void forEachPart(const PanelPicture& panel, Action action) {
  if (panel.shape.empty()) action(panel.bounds);
  for (const PixelRect& part : panel.shape) action(part);
}

/// Which pixels of the strip a panel covers, row by row.
class Cover {
 public:
  Cover(const PixelRect& strip, std::span<const PanelPicture* const> panels)
      : strip_(strip), covered_(pixelCount(strip), 0) {
    for (const PanelPicture* panel : panels) {
      if (!isWhole(*panel)) continue;
      forEachPart(*panel, [&](const PixelRect& part) { add(intersection(intersection(part, panel->bounds), strip_)); });
    }
  }

  bool has(int x, int y) const { return covered_[at(x, y)] != 0; }
  bool meetsOpenPixel(int x, int y) const {
    return (x > 0 && !has(x - 1, y)) || (x + 1 < strip_.width && !has(x + 1, y)) || (y > 0 && !has(x, y - 1)) ||
           (y + 1 < strip_.height && !has(x, y + 1));
  }
  template <typename Action>
  void forEach(bool covered, Action action) const {
    for (int y = 0; y < strip_.height; ++y) {
      for (int x = 0; x < strip_.width; ++x) {
        if (has(x, y) == covered) action(x, y, at(x, y) * bytesPerPixel);
      }
    }
  }

 private:
  std::size_t at(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(strip_.width) + static_cast<std::size_t>(x);
  }
  void add(const PixelRect& part) {
    for (int y = part.y; y < part.bottom(); ++y) {
      std::fill_n(covered_.begin() + static_cast<std::ptrdiff_t>(at(part.x - strip_.x, y - strip_.y)), part.width,
                  std::uint8_t{1});
    }
  }

  PixelRect strip_;
  std::vector<std::uint8_t> covered_;
};

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
    if (!isWhole(*panel)) continue;
    forEachPart(*panel, [&](const PixelRect& part) { drawPart(strip, *panel, part, rows); });
  }
}

void hidePanelEdges(const PixelRect& strip, std::span<const PanelPicture* const> panels, std::vector<std::byte>& rows) {
  const Cover cover(strip, panels);
  if (rows.size() != pixelCount(strip) * bytesPerPixel) return;
  std::array<std::uint64_t, bytesPerPixel> sums{};
  std::uint64_t count = 0;
  cover.forEach(true, [&](int x, int y, std::size_t offset) {
    if (!cover.meetsOpenPixel(x, y)) return;
    for (std::size_t i = 0; i < bytesPerPixel; ++i) sums[i] += std::to_integer<std::uint64_t>(rows[offset + i]);
    ++count;
  });
  if (count == 0) return;
  std::array<std::byte, bytesPerPixel> ground{};
  for (std::size_t i = 0; i < bytesPerPixel; ++i) ground[i] = static_cast<std::byte>(sums[i] / count);
  cover.forEach(false,
                [&](int, int, std::size_t offset) { std::memcpy(rows.data() + offset, ground.data(), bytesPerPixel); });
}

}  // namespace veloria
