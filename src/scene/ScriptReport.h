#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "scene/NimbraScript.h"

namespace veloria {

/// Scripts from outside are refused above this size before they are parsed.
inline constexpr std::size_t maxScriptBytes = 1024 * 1024;

/// Why a script of this size is refused; nothing if it is accepted.
std::optional<std::string> scriptSizeError(std::size_t bytes);

/// The result of a script on the default settings record.
struct ScriptReport {
  std::optional<FourStops> palette;  ///< the script's own colors
  bool wallpaper = false;            ///< it asks for the colors of the desktop picture
  /// Every parameter in order: its keyword and the value of its field. Only hue may be NaN; all others are finite.
  std::array<std::pair<std::string_view, double>, scriptParamCount> values;
};

/// Runs `script` once with these channels, without the pace.
ScriptReport reportOn(const NimbraScript& script, const ChannelValues& channels);

}  // namespace veloria
