#include "base/Color.h"

#include <charconv>

namespace veloria {

std::optional<std::uint32_t> rgbFromHex(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6) return std::nullopt;
  std::uint32_t rgb = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return rgb;
}

}  // namespace veloria
