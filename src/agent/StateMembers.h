#pragma once

#include <nlohmann/json.hpp>
#include <optional>

namespace veloria {

/// The agent state file: one JSON object in the user's data folder. Numbers and booleans are channels, except for the
/// members named here.
inline constexpr const char* stateFileName = "state.json";

/// Two or more colors, "#rrggbb" or "rrggbb", that replace the palette; the first four count.
inline constexpr const char* paletteKey = "palette";
/// The flash of a failure: its end, in seconds since 1970, its length, in seconds, and its colors.
inline constexpr const char* alertUntilKey = "alert_until";
inline constexpr const char* alertForKey = "alert_for";
inline constexpr const char* alertPaletteKey = "alert_palette";
/// The sessions: AgentSessions.h.
inline constexpr const char* sessionsKey = "sessions";
inline constexpr const char* expiresKey = "expires";

/// The length of the flash of a failure, in seconds.
inline constexpr double alertSeconds = 1.5;

/// A member's value as a channel: a finite number, or 1 and 0 for true and false; nothing for anything else.
std::optional<double> channelValue(const nlohmann::json& member);

}  // namespace veloria
