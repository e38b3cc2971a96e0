#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "scene/SceneDriver.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// A channel's new value at a time.
struct ChannelEvent {
  double t = 0;  ///< seconds
  std::string name;
  double value = 0;
};

/// An agent state file, and the time of day at which the clock begins.
struct VirtualState {
  std::filesystem::path file;  ///< empty: none
  double wallClockStart = 0;   ///< seconds since 1970
};

/// The scene driver on a clock that is moved by hand: it ticks at 30 Hz of that clock, before the frame that a tick
/// falls on, and takes its channels from a list. Same input, same output.
class VirtualDriver {
 public:
  /// `events` in any order. Throws WorkError when the record's script has an error.
  VirtualDriver(NimbraConfig config, std::vector<ChannelEvent> events, const VirtualState& state = {});

  /// Moves the clock to `seconds` (not backwards) and runs the ticks that are due.
  void advanceTo(double seconds);

  /// What to draw with now.
  const NimbraConfig& driven() const { return driven_; }

 private:
  NimbraConfig config_;
  NimbraConfig driven_;
  std::vector<ChannelEvent> events_;
  std::size_t nextEvent_ = 0;
  double now_ = 0;
  long ticks_ = 0;
  SceneDriver driver_;
};

}  // namespace veloria
