#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scene/ColorStops.h"
#include "scene/Expr.h"
#include "scene/ScriptParam.h"

namespace veloria {

/// A parsed scene script. A plain value. LanguageCard.h summarizes the language.
struct NimbraScript {
  std::optional<FourStops> paletteStops;               ///< of the last `palette` line with colours
  bool paletteFromWallpaper = false;                   ///< there was a `palette wallpaper` line
  std::map<ScriptParam, double> constants;             ///< the `set` values as written, not clamped
  std::vector<std::pair<ScriptParam, Expr>> bindings;  ///< one for each `bind` line, in order
  std::vector<std::string> warnings;                   ///< always empty

  bool operator==(const NimbraScript&) const = default;

  /// The script without any line.
  static const NimbraScript& empty();

  /// The channels that the bindings read, each once.
  std::set<std::string, std::less<>> channels() const;

  /// Parses UTF-8 text; other bytes count as U+FFFD. Throws ScriptError at the first line with an error. Takes time in
  /// proportion to the length: check a script from outside with scriptSizeError() first (ScriptReport.h). Any thread.
  static NimbraScript parse(std::string_view text);
};

}  // namespace veloria
