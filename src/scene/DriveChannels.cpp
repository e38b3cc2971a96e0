#include "scene/DriveChannels.h"

#include <algorithm>
#include <cmath>

namespace veloria {

namespace {

constexpr double shortestTimeConstant = 0.001;
constexpr double defaultTimeConstant = 0.25;

void put(ChannelValues& map, std::string_view name, double value) {
  const auto found = map.find(name);
  if (found != map.end()) {
    found->second = value;
  } else {
    map.emplace(name, value);
  }
}

/// The value after `dt` seconds of gliding. One that is not finite would stay so.
double glided(double current, double target, double dt, double timeConstant) {
  if (!std::isfinite(current)) return target;
  return current + (1 - std::exp(-dt / timeConstant)) * (target - current);
}

}  // namespace

void DriveChannels::set(std::string_view name, double value, double smooth) {
  put(targets, name, value);
  put(smoothing, name, smooth);
}

void DriveChannels::setImmediate(std::string_view name, double value) {
  set(name, value, 0);
  put(values, name, value);
}

void DriveChannels::step(double dt) {
  for (const auto& [name, target] : targets) {
    const auto smooth = smoothing.find(name);
    const double timeConstant = smooth != smoothing.end() ? smooth->second : defaultTimeConstant;
    const auto current = values.find(name);
    if (timeConstant <= 0 || current == values.end()) {
      put(values, name, target);
    } else {
      current->second = glided(current->second, target, dt, std::max(shortestTimeConstant, timeConstant));
    }
  }
}

void DriveChannels::clearSourceChannels() {
  for (const std::string_view name : sourceNames) put(targets, name, 0);
}

}  // namespace veloria
