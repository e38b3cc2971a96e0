#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The look parameters that a scene script can fix or bind, by keyword.
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
  Range range;                  ///< it is held to; hue is wrapped instead
  double NimbraConfig::*field;  ///< what it drives
};

inline constexpr std::size_t scriptParamCount = 28;

/// Every parameter; the index is the enumerator's value.
extern const std::array<ScriptParamInfo, scriptParamCount> scriptParams;

const ScriptParamInfo& info(ScriptParam param);

/// The parameter with exactly this keyword (lower case).
std::optional<ScriptParam> scriptParamFromKeyword(std::string_view keyword);

/// `value` held to the parameter's range. What is not finite becomes the low bound, also where that is negative (wind,
/// buoyancy). Hue becomes value - floor(value), and stays NaN where that is NaN.
double held(ScriptParam param, double value);

/// Replaces the field that `param` drives with the held value.
void assign(NimbraConfig& config, ScriptParam param, double value);

}  // namespace veloria
