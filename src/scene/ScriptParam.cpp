#include "scene/ScriptParam.h"

#include <algorithm>
#include <cmath>

namespace veloria {

using P = ScriptParam;
using C = NimbraConfig;

constexpr std::array<ScriptParamInfo, scriptParamCount> scriptParams{{
    {P::exposure, "exposure", 0, 6, &C::exposure},
    {P::opacity, "opacity", 0, 1, &C::opacity},
    {P::contrast, "contrast", 0.1, 3, &C::contrast},
    {P::saturation, "saturation", 0, 3, &C::saturation},
    {P::hue, "hue", 0, 1, &C::hueShift},
    {P::cycle, "cycle", -0.2, 0.2, &C::colorCycle},
    {P::hueSpread, "huespread", 0, 0.5, &C::hueSpread},
    {P::glow, "glow", 0, 4, &C::glowAmount},
    {P::glowSpread, "glowspread", 0.2, 6, &C::glowRadius},
    {P::ambient, "ambient", 0, 0.4, &C::ambientLevel},
    {P::rays, "rays", 0, 1, &C::rayIntensity},
    {P::raySharp, "raysharp", 0.1, 6, &C::raySharpness},
    {P::rayScale, "rayscale", 0.5, 30, &C::rayScale},
    {P::raySpeed, "rayspeed", 0, 1, &C::raySpeed},
    {P::rayFlow, "rayflow", 0, 0.5, &C::rayFlow},
    {P::shimmer, "shimmer", 0, 2, &C::shimmer},
    {P::speed, "speed", 0.02, 4, &C::timeScale},
    {P::tempo, "tempo", 0.15, 2.5, &C::tempo},
    {P::wind, "wind", -6, 6, &C::flowSpeed},
    {P::shear, "shear", 0, 8, &C::flowShear},
    {P::curl, "curl", 0, 10, &C::curlStrength},
    {P::curlScale, "curlscale", 0.2, 12, &C::curlScale},
    {P::vorticity, "vorticity", 0, 6, &C::vorticity},
    {P::buoyancy, "buoyancy", -3, 4, &C::buoyancy},
    {P::emit, "emit", 0, 5, &C::emitRate},
    {P::emitSpread, "emitspread", 0.3, 14, &C::emitScale},
    {P::fade, "fade", 0.9, 0.9999, &C::dyeDissipation},
    {P::tint, "tint", 0, 1, &C::heightTint},
}};

static_assert([] {
  for (std::size_t i = 0; i < scriptParams.size(); ++i) {
    if (static_cast<std::size_t>(scriptParams[i].param) != i) return false;
  }
  return true;
}());

const ScriptParamInfo& info(ScriptParam param) {
  return scriptParams[static_cast<std::size_t>(param)];
}

std::optional<ScriptParam> scriptParamFromKeyword(std::string_view keyword) {
  const auto found = std::ranges::find(scriptParams, keyword, &ScriptParamInfo::keyword);
  return found != scriptParams.end() ? std::optional(found->param) : std::nullopt;
}

double held(ScriptParam param, double value) {
  if (param == ScriptParam::hue) return value - std::floor(value);
  const auto& range = info(param);
  if (!std::isfinite(value) || value <= range.low) return range.low;
  return std::min(value, range.high);
}

void assign(NimbraConfig& config, ScriptParam param, double value) {
  config.*info(param).field = held(param, value);
}

}  // namespace veloria
