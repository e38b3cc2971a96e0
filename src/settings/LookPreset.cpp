#include "settings/LookPreset.h"

#include <algorithm>

namespace veloria {

namespace {

void northernLights(NimbraConfig& c) {
  c.paletteName = "Classic Nimbra";
  c.exposure = 0.9;
  c.saturation = 1.4;
  c.colorCycle = 0.004;
  c.heightTint = 0.45;
  c.glowAmount = 0.95;
  c.rayIntensity = 0.65;
  c.raySharpness = 1.6;
  c.rayScale = 7.0;
  c.shimmer = 0.25;
  c.timeScale = 1.0;
  c.vorticity = 1.2;
  c.curlStrength = 2.2;
  c.flowSpeed = 0.9;
  c.flowShear = 1.6;
  c.emitRate = 1.3;
}

void geomagneticStorm(NimbraConfig& c) {
  c.paletteName = "Solar Storm";
  c.exposure = 1.25;
  c.saturation = 1.55;
  c.colorCycle = 0.012;
  c.heightTint = 0.3;
  c.glowAmount = 1.2;
  c.rayIntensity = 0.85;
  c.raySharpness = 2.4;
  c.rayScale = 11.0;
  c.shimmer = 0.55;
  c.timeScale = 1.6;
  c.vorticity = 2.6;
  c.curlStrength = 4.2;
  c.flowSpeed = 1.8;
  c.flowShear = 3.0;
  c.emitRate = 1.9;
}

void glacierDrift(NimbraConfig& c) {
  c.paletteName = "Arctic Ice";
  c.exposure = 0.75;
  c.saturation = 1.1;
  c.colorCycle = 0.002;
  c.heightTint = 0.6;
  c.glowAmount = 1.1;
  c.rayIntensity = 0.4;
  c.raySharpness = 1.2;
  c.rayScale = 4.0;
  c.shimmer = 0.1;
  c.timeScale = 0.6;
  c.vorticity = 0.6;
  c.curlStrength = 1.2;
  c.flowSpeed = 0.4;
  c.flowShear = 0.9;
  c.emitRate = 1.2;
}

void deepNebula(NimbraConfig& c) {
  c.paletteName = "Nebula";
  c.exposure = 1.05;
  c.saturation = 1.5;
  c.colorCycle = 0.018;
  c.heightTint = 0.25;
  c.glowAmount = 1.4;
  c.rayIntensity = 0.35;
  c.raySharpness = 1.1;
  c.rayScale = 3.5;
  c.shimmer = 0.15;
  c.timeScale = 0.85;
  c.vorticity = 2.0;
  c.curlStrength = 3.0;
  c.flowSpeed = 0.5;
  c.flowShear = 1.2;
  c.emitRate = 1.7;
}

void whisper(NimbraConfig& c) {
  c.paletteName = "Monochrome Glass";
  c.opacity = 0.7;
  c.exposure = 0.55;
  c.saturation = 0.85;
  c.colorCycle = 0;
  c.heightTint = 0.5;
  c.glowAmount = 0.7;
  c.rayIntensity = 0.5;
  c.raySharpness = 1.4;
  c.rayScale = 6.0;
  c.shimmer = 0.08;
  c.timeScale = 0.7;
  c.vorticity = 0.8;
  c.curlStrength = 1.4;
  c.flowSpeed = 0.5;
  c.flowShear = 1.0;
  c.emitRate = 1.0;
}

void flurry(NimbraConfig& c) {
  c.paletteName = "Flurry";
  c.exposure = 1.35;
  c.contrast = 1.15;
  c.saturation = 1.7;
  c.colorCycle = 0.0015;
  c.heightTint = 0.08;
  c.hueSpread = 0.3;
  c.hueSpreadScale = 3.4;
  c.glowAmount = 1.55;
  c.glowRadius = 2.6;
  c.ambientLevel = 0.015;
  c.rayIntensity = 0.72;
  c.raySharpness = 1.7;
  c.rayScale = 6.5;
  c.raySpeed = 0.03;
  c.rayFlow = 0.05;
  c.shimmer = 0.03;
  c.detailOctaves = 4;
  c.timeScale = 0.16;
  c.vorticity = 0.7;
  c.curlStrength = 1.0;
  c.flowSpeed = 0.12;
  c.flowShear = 0.45;
  c.emitRate = 1.8;
  c.paletteSpread = 1.6;
}

void rave(NimbraConfig& c) {
  c.paletteName = "Bioluminescence";
  c.exposure = 1.35;
  c.saturation = 1.7;
  c.colorCycle = 0.045;
  c.heightTint = 0.2;
  c.glowAmount = 1.3;
  c.rayIntensity = 0.9;
  c.raySharpness = 3.0;
  c.rayScale = 14.0;
  c.shimmer = 0.7;
  c.timeScale = 1.9;
  c.vorticity = 3.2;
  c.curlStrength = 5.0;
  c.flowSpeed = 2.4;
  c.flowShear = 3.6;
  c.emitRate = 2.1;
}

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

const std::array<LookPreset, 7>& LookPreset::all() {
  static constexpr std::array<LookPreset, 7> presets{{
      {"Northern Lights", "Calm green curtains with violet tips.", northernLights},
      {"Geomagnetic Storm", "Fast, violent, red and magenta.", geomagneticStorm},
      {"Glacier Drift", "Slow, wide, pale blue.", glacierDrift},
      {"Deep Nebula", "Rich swirling colour, slow bloom.", deepNebula},
      {"Whisper", "Barely there. For when you want it subtle.", whisper},
      {"Flurry", "The old OS X screensaver: bright hue-cycling streamers.", flurry},
      {"Rave", "Loud, fast, hue-cycling. You asked for cool.", rave},
  }};
  return presets;
}

const LookPreset* LookPreset::find(std::string_view name) {
  const auto found = std::ranges::find(all(), name, &LookPreset::name);
  return found != all().end() ? &*found : nullptr;
}

NimbraConfig choose(const NimbraConfig& config, const LookPreset& preset) {
  NimbraConfig result = config.resettingLook();
  result.customPalette.reset();
  preset.apply(result);
  return result;
}

const std::array<GlassTuning, 2>& GlassTuning::all() {
  static constexpr std::array<GlassTuning, 2> tunings{{
      {"Tune for clear glass", tuneForClearGlass},
      {"Tune for tinted glass", tuneForTintedGlass},
  }};
  return tunings;
}

}  // namespace veloria
