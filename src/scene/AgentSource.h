#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "agent/AgentSessions.h"
#include "scene/ColorStops.h"
#include "scene/Expr.h"

namespace veloria {

/// The content of a state file. See AgentSource.
struct AgentState {
  ChannelValues channels;
  std::optional<FourStops> palette;
  double alertUntil = 0;  ///< seconds since 1970; 0: no alert
  double alertFor = 0;    ///< seconds, at least 0.1; 0 before anything was read
  std::optional<FourStops> alertPalette;
  AgentSessions sessions;
};

/// Parses a state file. Nothing if it is not one JSON object. Members of the wrong type are skipped.
std::optional<AgentState> readAgentState(std::string_view bytes);

/// Follows the JSON file with which any program can drive the band. Its numbers are channels; it may also hold a
/// palette, an alert flash and the sessions of several writers, which expire.
///
/// Main thread. If the file is invalid or gone, the last valid content stays; errors are not reported. poll() never
/// blocks: it reads only a regular file of at most maximumJsonBytes.
class AgentSource {
 public:
  /// An empty path means no file.
  explicit AgentSource(std::filesystem::path file = {});

  /// Reads the file if it changed; otherwise one query of its attributes, without allocation. `now`: seconds since
  /// 1970, for the sessions.
  void poll(double now);

  const ChannelValues& latest() const { return state_.channels; }
  /// Empty: none.
  std::span<const ColorStop> paletteOverride() const;
  double alertUntil() const { return state_.alertUntil; }
  double alertFor() const { return state_.alertFor; }
  /// Empty: none.
  std::span<const ColorStop> alertPalette() const;

 private:
  /// Identifies a version of the file. The time alone is not enough: two writes may share a tick of the clock.
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
