#pragma once

#include <array>
#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// A named look. It names a palette and some of the look and fluid fields; the others take their defaults.
struct LookPreset {
  std::string_view name;         ///< its identity, and what people see
  std::string_view description;  ///< one line for people
  void (*apply)(NimbraConfig&);  ///< sets the fields that it names and no others

  /// All presets, in the order in which they are offered.
  static const std::array<LookPreset, 7>& all();

  /// The preset of exactly this name, or null.
  static const LookPreset* find(std::string_view name);
};

/// The record after a preset was chosen: its look put back to the defaults, then the preset applied. Its palette is the
/// preset's, not a custom one.
NimbraConfig choose(const NimbraConfig& config, const LookPreset& preset);

}  // namespace veloria
