#include "render/MotionPhases.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "render/Uniforms.h"

namespace veloria {

namespace {

constexpr double driftWidth = 0.04;       // turns
constexpr double fullDrift = 0.0015;      // colorCycle from which the drift has its full width
constexpr double cycleBegins = 0.018;     // colorCycle from which the swing leaves the palette
constexpr double wholeCircle = 0.045;     // colorCycle from which it goes around
constexpr double widthPerSecond = 0.015;  // turns; a hue that has gone far comes back without a flash
constexpr double fastestRays = 1;
constexpr double driftSteps = 4;  // lattice steps a second at hueSpreadDrift 1
constexpr double fastestDriftSteps = 64;

double smoothstep(double low, double high, double x) {
  const double f = std::clamp((x - low) / (high - low), 0.0, 1.0);
  return f * f * (3 - 2 * f);
}

/// The magnitude of a speed, at most `limit`; 0 when it is not finite.
double speedOf(double setting, double limit) {
  return std::isfinite(setting) ? std::min(std::abs(setting), limit) : 0;
}

}  // namespace

double advancedPhase(double phase, double steps, double period) {
  const double sum = phase + steps;
  return std::isfinite(sum) ? std::fmod(sum, period) : phase;
}

float phaseUniform(double phase, double period) {
  const auto narrow = static_cast<float>(phase);
  return narrow < static_cast<float>(period) ? narrow : 0;
}

double hueSwingWidth(double colorCycle) {
  const double speed = speedOf(colorCycle, 1);
  return driftWidth * std::min(speed / fullDrift, 1.0) +
         (0.5 - driftWidth) * smoothstep(cycleBegins, wholeCircle, speed);
}

void BandMotion::advance(const NimbraConfig& config, double scaledSeconds, double seconds) {
  rays_ = advancedPhase(rays_, speedOf(config.raySpeed, fastestRays) * scaledSeconds, rayPeriod);
  hueDrift_ = advancedPhase(
      hueDrift_, std::min(speedOf(config.hueSpreadDrift, 1e9) * driftSteps, fastestDriftSteps) * scaledSeconds,
      stepPeriod);

  const double width = hueSwingWidth(config.colorCycle);
  // A swing passes four times its width, so this makes colorCycle the hue's mean speed in turns a second.
  if (width > 0) swing_ = advancedPhase(swing_, speedOf(config.colorCycle, 1) / (4 * width) * scaledSeconds, 1);
  const double most = widthPerSecond * seconds;
  swingWidth_ = swingWidth_ ? *swingWidth_ + std::clamp(width - *swingWidth_, -most, most) : width;
}

float BandMotion::hueSwing() const {
  return static_cast<float>(swingWidth_.value_or(0) * std::sin(2 * std::numbers::pi * swing_));
}

}  // namespace veloria
