#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The changes that the commands make to the object of the agent state file. `now` is in seconds since 1970. `state`
/// must be an object; members that a change does not concern are kept. Every change also removes the sessions that have
/// expired and those whose values are all 0, and writes the merged values of the others to the top level, 0 for names
/// that no session has any more. Names are never removed: the application would keep their last value.
namespace veloria::cli {

/// What a writer reports about its work.
enum class Activity { busy, idle, ok, fail };

/// The session that a command writes to.
struct SessionChoice {
  std::string name = "default";
  std::optional<double> ttl;  ///< seconds until it expires, above 0; nothing: never
};

/// The session of a channel that was set with a lifetime but no session: nothing else expires with it.
std::string lifetimeSession(std::string_view channel);

/// Sets the session's busy, ok and err; in the default session this also ends their lifetime sessions. A failure starts
/// the flash; the others end it once no session has failed.
void reportActivity(nlohmann::json& state, Activity activity, const SessionChoice& session, double now);

/// Sets a channel in the chosen session. Without one it ends the channel's lifetime session and sets the channel in the
/// default session if the name belongs to sessions (busy, ok, err, or a name in a session), else at the top level.
void setChannel(nlohmann::json& state, const std::string& name, double value,
                const std::optional<SessionChoice>& session, double now);

/// Sets a channel to 0 and removes it from all sessions.
void unsetChannel(nlohmann::json& state, const std::string& name, double now);

/// `colors`: 2 to 4 of "#rrggbb".
void setPalette(nlohmann::json& state, const std::vector<std::string>& colors, double now);
void clearPalette(nlohmann::json& state, double now);

/// Sets every channel to 0 and removes the sessions, the palette and the flash.
void clearState(nlohmann::json& state, double now);

/// Reports the outcome of a program in `session`, and ends the session `running` in which it ran.
void finishRun(nlohmann::json& state, const std::string& running, Activity outcome, const std::string& session,
               double now);

}  // namespace veloria::cli
