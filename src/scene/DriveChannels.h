#pragma once

#include <array>
#include <string_view>

#include "scene/Expr.h"

namespace veloria {

/// The live inputs of a scene: named numbers that glide to the value that their source last reported. Main thread.
///
/// Setting a known name does not allocate; nor does step() once every name has been stepped.
class DriveChannels {
 public:
  /// The channels of the sources, without `t` and an agent's own names.
  static constexpr std::array<std::string_view, 18> sourceNames{"level", "bass", "mid",   "treble", "beat",  "wind",
                                                                "gust",  "temp", "cloud", "rain",   "agent", "busy",
                                                                "ok",    "err",  "a0",    "a1",     "a2",    "a3"};

  /// Lets `name` glide to `value` with the time constant `smooth`, in seconds; 0 or less sets it at the next step.
  void set(std::string_view name, double value, double smooth);

  /// Sets `name` to `value` at once.
  void setImmediate(std::string_view name, double value);

  /// Moves every channel by `dt` seconds. A channel without a value yet, or whose value is not finite, starts at its
  /// target.
  void step(double dt);

  /// Lets every source channel glide to 0.
  void clearSourceChannels();

  ChannelValues values;     ///< read by expressions
  ChannelValues targets;    ///< last reported
  ChannelValues smoothing;  ///< time constants, seconds; 0.25 s for a name that is missing
};

}  // namespace veloria
