#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The parameters that a scene script can set or bind, named by their keywords.
enum class ScriptParam {
  exposure,
  opacity,
  contrast,
  saturation,
  hue,
  cycle,
  huespread,
  glow,
  glowspread,
  ambient,
  rays,
  raysharp,
  rayscale,
  rayspeed,
  rayflow,
  shimmer,
  speed,
  tempo,
  wind,
  shear,
  curl,
  curlscale,
  vorticity,
  buoyancy,
  emit,
  emitspread,
  fade,
  tint,
};

/// One row of the table of parameters.
struct ScriptParamInfo {
  ScriptParam param;
  std::string_view keyword;
  Range range;                  ///< the limits of its value; hue wraps instead
  double NimbraConfig::*field;  ///< the setting that it drives
};

inline constexpr std::size_t scriptParamCount = 28;

/// All parameters, indexed by the enumerator's value.
extern const std::array<ScriptParamInfo, scriptParamCount> scriptParams;

const ScriptParamInfo& info(ScriptParam param);

/// The parameter with exactly this keyword (lower case).
std::optional<ScriptParam> scriptParamFromKeyword(std::string_view keyword);

/// `value` clamped to the parameter's range. A value that is not finite becomes the low bound, even if that is negative
/// (wind, buoyancy). Hue becomes value - floor(value), which may be NaN.
double clamped(ScriptParam param, double value);

/// Sets the field that `param` drives to the clamped value.
void assign(NimbraConfig& config, ScriptParam param, double value);

}  // namespace veloria
