#include "settings/GlassTuning.h"

namespace veloria {

namespace {

void tuneForClearGlass(NimbraConfig& c) {
  c.exposure = 1.8;
  c.contrast = 0.92;
  c.saturation = 1.45;
  c.coverGain = 1.4;
  c.glowAmount = 1.05;
  c.rayScale = 6.5;
  c.detailOctaves = 4;
  c.emitScale = 3.0;
}

/// Tinted glass blurs and desaturates more: more light and colour, coarser structure.
void tuneForTintedGlass(NimbraConfig& c) {
  c.exposure = 2.3;
  c.contrast = 0.8;
  c.saturation = 1.85;
  c.coverGain = 1.8;
  c.glowAmount = 1.4;
  c.rayScale = 4.5;
  c.detailOctaves = 3;
  c.emitScale = 2.4;
}

}  // namespace

const std::array<GlassTuning, 2>& GlassTuning::all() {
  static constexpr std::array<GlassTuning, 2> tunings{{
      {"Tune for clear glass", tuneForClearGlass},
      {"Tune for tinted glass", tuneForTintedGlass},
  }};
  return tunings;
}

}  // namespace veloria
