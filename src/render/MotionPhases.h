#pragma once

#include <optional>

#include "settings/NimbraConfig.h"

namespace veloria {

/// Phases of the motion whose speed is a setting. Each is a sum over time, not time x speed: so a changing speed never
/// makes the picture jump, however long the program has run.
///
/// A phase counts lattice steps of the shaders' noise (rays: steps of the slowest octave / 14) and begins again at 0
/// after a whole number of them, on which the noise repeats. noise.glsl holds the same periods.

inline constexpr double stepPeriod = 1024;  ///< lattice steps
inline constexpr double rayPeriod = 64;     ///< units of raySpeed x seconds

/// `phase` (0 to below `period`) advanced by `steps` (at least 0; 0 if not finite), wrapped.
double advancedPhase(double phase, double steps, double period);

/// A phase as a uniform; below `period` even after rounding.
float phaseUniform(double phase, double period);

/// The phases of the band. Thread: the one that draws.
class BandMotion {
 public:
  /// Advances by a frame of `seconds`; `scaledSeconds` is that times timeScale.
  void advance(const NimbraConfig& config, double scaledSeconds, double seconds);

  float rays() const { return phaseUniform(rays_, rayPeriod); }
  float hueDrift() const { return phaseUniform(hueDrift_, stepPeriod); }

  /// The hue's offset in turns, -0.5 to 0.5: it swings around the palette's own hue.
  float hueSwing() const;

 private:
  double rays_ = 0;
  double hueDrift_ = 0;
  double swing_ = 0;                  ///< turns of the swing's own circle
  std::optional<double> swingWidth_;  ///< follows the setting slowly; absent before the first frame
};

/// How far colorCycle swings the hue to either side, in turns. A drift stays within 15 degrees, so that a look keeps
/// its colours; a fast cycle goes around the whole circle.
double hueSwingWidth(double colorCycle);

}  // namespace veloria
