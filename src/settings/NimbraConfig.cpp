#include "settings/NimbraConfig.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace veloria {

namespace {

enum class FieldGroup { placement, drive, text, notch, palette, look, resolution, fluid, pointer };

constexpr bool belongsToLook(FieldGroup group) {
  return group == FieldGroup::look || group == FieldGroup::fluid;
}

constexpr std::string_view fieldNames[] = {
#define VELORIA_FIELD(type, name, initial, group) #name,
#include "settings/NimbraConfigFields.h"
};
static_assert(std::size(fieldNames) == 79, "the stored record has exactly these fields; a change needs a new key");

}  // namespace

const Palette& NimbraConfig::palette() const {
  if (customPalette) return *customPalette;
  const auto& presets = Palette::presets();
  const auto found = std::ranges::find(presets, paletteName, &Palette::name);
  return found != presets.end() ? *found : presets.front();
}

NimbraConfig NimbraConfig::resettingLook() const {
  const NimbraConfig defaults;
  NimbraConfig result = *this;
#define VELORIA_FIELD(type, name, initial, group) \
  if constexpr (belongsToLook(FieldGroup::group)) result.name = defaults.name;
#include "settings/NimbraConfigFields.h"
  return result;
}

NimbraConfig NimbraConfig::applyingTempo() const {
  const double t = bounded(tempo, ranges::tempo);
  if (std::abs(t - 1) <= 0.001) return *this;
  NimbraConfig result = *this;
  result.timeScale = bounded(t * timeScale, ranges::timeScale);
  result.flowShear = bounded((0.4 * t + 0.6) * flowShear, ranges::flowShear);
  result.vorticity = bounded((0.35 * t + 0.65) * vorticity, ranges::vorticity);
  result.curlStrength = bounded((0.45 * t + 0.55) * curlStrength, ranges::curlStrength);
  result.shimmer = bounded(t * shimmer, ranges::shimmer);
  return result;
}

std::string_view description(Visualizer mode) {
  static constexpr std::array<std::string_view, 6> lines{
      "Curl noise drives it forever. No inputs, no permissions.",
      "Reacts to whatever is playing. Captures system audio.",
      "Driven by coding agents through the nimbra command.",
      "Colour and motion follow the current conditions.",
      "Wind speed and gusts drive the flow directly.",
      "Your own script, in the language below.",
  };
  static_assert(lines.size() == rawValues<Visualizer>.size());
  return lines[static_cast<std::size_t>(mode)];
}

}  // namespace veloria
