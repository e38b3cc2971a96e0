#pragma once

#include <string>
#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The edge of the screen that the band is at: the panel's, or always the same.
enum class EdgeChoice { automatic, top, bottom };
template <>
inline constexpr std::array<std::string_view, 3> rawValues<EdgeChoice>{"auto", "top", "bottom"};

/// Settings that belong to one desktop, beside the settings record, whose fields are fixed.
struct ExtraSettings {
  EdgeChoice edge = EdgeChoice::automatic;
  bool operator==(const ExtraSettings&) const = default;
};

/// One JSON object with a line feed at its end.
std::string encodeExtraSettings(const ExtraSettings& extra);

/// From bytes of any origin. Whatever is missing or not as expected is at its default.
ExtraSettings decodeExtraSettings(std::string_view bytes);

}  // namespace veloria
