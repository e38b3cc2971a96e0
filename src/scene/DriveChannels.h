#pragma once

#include <array>
#include <string_view>

#include "scene/Expr.h"

namespace veloria {

/// The live inputs of a scene: named numbers that glide towards what their source last reported. Main thread.
///
/// Setting a name that is there already allocates nothing, and neither does step() once each name was stepped once.
class DriveChannels {
 public:
  /// What sources write, apart from `t` and an agent's own names.
  static constexpr std::array<std::string_view, 18> sourceNames{"level", "bass", "mid",   "treble", "beat",  "wind",
                                                                "gust",  "temp", "cloud", "rain",   "agent", "busy",
                                                                "ok",    "err",  "a0",    "a1",     "a2",    "a3"};

  /// Lets `name` glide to `value` with the time constant `smooth` in seconds; at 0 and below it arrives with the next
  /// step.
  void set(std::string_view name, double value, double smooth);

  /// Puts `name` at `value` at once.
  void setImmediate(std::string_view name, double value);

  /// Moves every channel by `dt` seconds. A channel without a value yet, or whose value is not finite, starts at its
  /// target.
  void step(double dt);

  /// Lets every source channel glide to 0.
  void clearSourceChannels();

  ChannelValues values;     ///< what expressions read
  ChannelValues targets;    ///< what was last reported
  ChannelValues smoothing;  ///< time constants, seconds; 0.25 s for a name that is missing
};

}  // namespace veloria
