#pragma once

#include <nlohmann/json.hpp>
#include <optional>

namespace veloria {

/// The agent state file: one JSON object in the user's data folder. Numbers and booleans are channels, except for the
/// members named here.
inline constexpr const char* stateFileName = "state.json";

/// Two or more colours, "#rrggbb" or "rrggbb", in place of the palette's; the first four count.
inline constexpr const char* paletteKey = "palette";
/// The flash of a failure: when it ends, in seconds since 1970, how long it lasts, in seconds, and its colours.
inline constexpr const char* alertUntilKey = "alert_until";
inline constexpr const char* alertForKey = "alert_for";
inline constexpr const char* alertPaletteKey = "alert_palette";
/// The sessions: AgentSessions.h.
inline constexpr const char* sessionsKey = "sessions";
inline constexpr const char* expiresKey = "expires";

/// How long a failure flashes, in seconds.
inline constexpr double alertSeconds = 1.5;

/// A member's value as a channel's: a finite number, 1 and 0 for true and false; nothing for all else.
std::optional<double> channelValue(const nlohmann::json& member);

}  // namespace veloria
