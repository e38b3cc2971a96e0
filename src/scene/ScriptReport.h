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

/// Why a script of this size is refused; nothing when it is not.
std::optional<std::string> scriptSizeError(std::size_t bytes);

/// What a script makes of the default settings record.
struct ScriptReport {
  std::optional<FourStops> palette;  ///< the script's own colours
  bool wallpaper = false;            ///< it asks for the colours of the desktop picture
  /// Every parameter by keyword, in the order of the parameters, with the value of the field that it drives. Hue may be
  /// NaN; everything else is finite.
  std::array<std::pair<std::string_view, double>, scriptParamCount> values;
};

/// Runs `script` once with these channels. The pace is not applied.
ScriptReport reportOn(const NimbraScript& script, const ChannelValues& channels);

}  // namespace veloria
