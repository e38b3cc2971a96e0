#include "main/commands/VirtualDriver.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "main/commands/Command.h"

namespace veloria {

namespace {

/// The time constants that the sources themselves use.
double smoothingOf(std::string_view name) {
  constexpr std::pair<std::string_view, double> known[] = {
      {"t", 0},    {"level", 0.08}, {"bass", 0.06}, {"mid", 0.09}, {"treble", 0.07}, {"beat", 0},
      {"temp", 2}, {"wind", 2},     {"gust", 2},    {"cloud", 2},  {"rain", 2}};
  for (const auto& [channel, seconds] : known) {
    if (channel == name) return seconds;
  }
  return 0.3;
}

}  // namespace

VirtualDriver::VirtualDriver(NimbraConfig config, std::vector<ChannelEvent> events, const VirtualState& state)
    : config_(std::move(config)),
      driven_(config_),
      events_(std::move(events)),
      driver_({.settings = [this]() -> const NimbraConfig& { return config_; },
               .mediaClock = [this] { return now_; },
               .wallClock = [this, start = state.wallClockStart] { return start + now_; },
               .timers = nullptr,
               .agentStateFile = state.file}) {
  std::stable_sort(events_.begin(), events_.end(), [](const auto& a, const auto& b) { return a.t < b.t; });
  driver_.onConfig = [this](const NimbraConfig& driven) { driven_ = driven; };
  driver_.recompile();
  if (driver_.scriptError()) throw WorkError(printable(*driver_.scriptError()));
}

void VirtualDriver::advanceTo(double seconds) {
  // A little slack, so that a tick and a frame at the same moment are not parted by rounding.
  constexpr double slack = SceneDriver::tickSeconds / 1024;
  for (double due = static_cast<double>(ticks_) * SceneDriver::tickSeconds; due <= seconds + slack;
       due = static_cast<double>(++ticks_) * SceneDriver::tickSeconds) {
    now_ = due;
    for (; nextEvent_ < events_.size() && events_[nextEvent_].t <= due + slack; ++nextEvent_) {
      const ChannelEvent& event = events_[nextEvent_];
      driver_.channels.set(event.name, event.value, smoothingOf(event.name));
    }
    driver_.tick();
  }
}

}  // namespace veloria
