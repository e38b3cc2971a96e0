#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "base/Color.h"
#include "settings/Palette.h"

namespace veloria {

using FourStops = std::array<ColorStop, 4>;

/// The color of "#rrggbb" or "rrggbb" (six hexadecimal digits of either case); nothing for anything else.
inline std::optional<ColorStop> colorFromHex(std::string_view text) {
  const auto rgb = rgbFromHex(text);
  if (!rgb) return std::nullopt;
  const auto component = [&](unsigned shift) { return static_cast<float>((*rgb >> shift) & 0xFFU) / 255.0F; };
  return ColorStop{component(16), component(8), component(0)};
}

/// The first four colors; the last one is repeated if there are fewer. Nothing for fewer than two.
inline std::optional<FourStops> fourStops(std::span<const ColorStop> colors) {
  if (colors.size() < 2) return std::nullopt;
  FourStops stops;
  for (std::size_t i = 0; i < stops.size(); ++i) stops[i] = colors[std::min(i, colors.size() - 1)];
  return stops;
}

}  // namespace veloria
