#pragma once

#include <array>
#include <string_view>

#include "settings/NimbraConfig.h"

namespace veloria {

/// Retunes the current look for the translucent system menu bar. Unlike a preset it resets nothing first.
struct GlassTuning {
  std::string_view title;        ///< what people see
  void (*apply)(NimbraConfig&);  ///< sets eight look and fluid fields and no others

  /// For clear glass, then the stronger one for tinted glass.
  static const std::array<GlassTuning, 2>& all();
};

}  // namespace veloria
