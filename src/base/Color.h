#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace veloria {

/// Red, green, blue, each 0 to 1, as encoded (sRGB) values.
using ColorStop = std::array<float, 3>;

/// The colour that "#rrggbb" or "rrggbb" stands for (six hexadecimal digits of either case), as 0xrrggbb; nothing for
/// anything else. Any thread.
std::optional<std::uint32_t> rgbFromHex(std::string_view text);

}  // namespace veloria
