#pragma once

#include <algorithm>
#include <cmath>

namespace veloria {

/// A setting as a uniform: narrowed to 32 bits, 0 when it is not finite, held to a magnitude that no arithmetic in a
/// shader can turn into infinity by itself.
inline float uniformFloat(double value) {
  constexpr double limit = 1e9;
  if (!std::isfinite(value)) return 0.0F;
  return static_cast<float>(std::clamp(value, -limit, limit));
}

/// After this many seconds of simulated time the time that shaders see begins again at 0. Their noise repeats with the
/// same period, so nothing jumps; without it 32-bit time would move in visible steps after some days.
inline constexpr double timePeriod = 8192.0;

inline float wrappedTime(double simTime) {
  return uniformFloat(std::fmod(simTime, timePeriod));
}

}  // namespace veloria
