#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace veloria {

/// The colour that "#rrggbb" or "rrggbb" stands for (six hexadecimal digits of either case), as 0xrrggbb; nothing for
/// anything else. Any thread.
std::optional<std::uint32_t> rgbFromHex(std::string_view text);

}  // namespace veloria
