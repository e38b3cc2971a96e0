#pragma once

#include <array>
#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// A named look. It names a palette and some of the look and fluid fields; the others take their defaults.
struct LookPreset {
  std::string_view name;         ///< unique; shown to people
  std::string_view description;  ///< one line for people
  void (*apply)(NimbraConfig&);  ///< sets the fields that it names and no others

  /// All presets, in the order in which they are offered.
  static const std::array<LookPreset, 7>& all();

  /// The preset with exactly this name, or null.
  static const LookPreset* find(std::string_view name);
};

/// The record with this preset: the look is reset to the defaults, the preset applied, and the custom palette removed.
NimbraConfig choose(const NimbraConfig& config, const LookPreset& preset);

/// Adjusts the current look for a translucent menu bar. Unlike a preset it resets nothing.
struct GlassTuning {
  std::string_view title;        ///< shown to people
  void (*apply)(NimbraConfig&);  ///< sets eight look and fluid fields and no others

  /// For clear glass, then the stronger one for tinted glass.
  static const std::array<GlassTuning, 2>& all();
};

}  // namespace veloria
