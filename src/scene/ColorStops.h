#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "settings/Palette.h"

namespace veloria {

using FourStops = std::array<ColorStop, 4>;

/// The colour that "#rrggbb" or "rrggbb" stands for (six hexadecimal digits of either case), else nothing.
std::optional<ColorStop> colorFromHex(std::string_view text);

/// The first four colours, the last one repeated where there are fewer; nothing when there are fewer than two.
std::optional<FourStops> fourStops(std::span<const ColorStop> colors);

}  // namespace veloria
