#include "scene/ColorStops.h"

#include <algorithm>
#include <cstdint>

#include "base/Color.h"

namespace veloria {

namespace {

float component(std::uint32_t rgb, unsigned shift) {
  return static_cast<float>((rgb >> shift) & 0xFFU) / 255.0F;
}

}  // namespace

std::optional<ColorStop> colorFromHex(std::string_view text) {
  const auto rgb = rgbFromHex(text);
  if (!rgb) return std::nullopt;
  return ColorStop{component(*rgb, 16), component(*rgb, 8), component(*rgb, 0)};
}

std::optional<FourStops> fourStops(std::span<const ColorStop> colors) {
  if (colors.size() < 2) return std::nullopt;
  FourStops stops;
  for (std::size_t i = 0; i < stops.size(); ++i) stops[i] = colors[std::min(i, colors.size() - 1)];
  return stops;
}

}  // namespace veloria
