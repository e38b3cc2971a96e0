#include "scene/ColorStops.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace veloria {

namespace {

float component(std::uint32_t rgb, unsigned shift) {
  return static_cast<float>((rgb >> shift) & 0xFFU) / 255.0F;
}

}  // namespace

std::optional<ColorStop> colorFromHex(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6) return std::nullopt;
  std::uint32_t rgb = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return ColorStop{component(rgb, 16), component(rgb, 8), component(rgb, 0)};
}

std::optional<FourStops> fourStops(std::span<const ColorStop> colors) {
  if (colors.size() < 2) return std::nullopt;
  FourStops stops;
  for (std::size_t i = 0; i < stops.size(); ++i) stops[i] = colors[std::min(i, colors.size() - 1)];
  return stops;
}

}  // namespace veloria
