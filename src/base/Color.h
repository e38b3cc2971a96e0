#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace veloria {

/// Red, green, blue, each 0 to 1, as encoded (sRGB) values.
using ColorStop = std::array<float, 3>;

/// The color "#rrggbb" or "rrggbb" (six hexadecimal digits of either case) as 0xrrggbb; nothing for anything else. Any
/// thread.
inline std::optional<std::uint32_t> rgbFromHex(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6) return std::nullopt;
  std::uint32_t rgb = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return rgb;
}

}  // namespace veloria
