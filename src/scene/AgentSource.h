#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "agent/AgentSessions.h"
#include "scene/ColorStops.h"
#include "scene/Expr.h"

namespace veloria {

/// What a state file says. See AgentSource.
struct AgentState {
  ChannelValues channels;
  std::optional<FourStops> palette;
  double alertUntil = 0;  ///< seconds since 1970; 0: no alert
  double alertFor = 0;    ///< seconds; at least 0.1 in a state that was read
  std::optional<FourStops> alertPalette;
  AgentSessions sessions;
};

/// Reads a state file's bytes. Nothing when they are not one JSON object. Members of the wrong type are skipped.
std::optional<AgentState> readAgentState(std::string_view bytes);

/// Follows the small JSON file by which any program can drive the band: its numbers are channels, and it may hold a
/// palette, an alert flash and the sessions of several writers, which lapse by themselves.
///
/// Main thread. Whatever is wrong with the file, what was read last stays, and nothing is reported. Nothing that stands
/// at the path can make poll() wait: only a regular file of at most maximumJsonBytes is read.
class AgentSource {
 public:
  /// With an empty path there is never a file.
  explicit AgentSource(std::filesystem::path file = {});

  /// Catches up with the file. When it did not change this is one query of its attributes and allocates nothing.
  /// `now`: seconds since 1970, for the sessions.
  void poll(double now);

  const ChannelValues& latest() const { return state_.channels; }
  /// Empty: none.
  std::span<const ColorStop> paletteOverride() const;
  double alertUntil() const { return state_.alertUntil; }
  double alertFor() const { return state_.alertFor; }
  /// Empty: none.
  std::span<const ColorStop> alertPalette() const;

 private:
  /// Tells one content of the path from another. The time alone does not: a clock's step may see two writes.
  struct Version {
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    bool operator==(const Version&) const = default;
  };

  std::optional<Version> currentVersion() const;
  void read();
  void letLapse(double now);

  std::filesystem::path file_;
  std::optional<Version> lastModified_;
  AgentState state_;
  std::optional<double> nextExpiry_;
};

}  // namespace veloria
