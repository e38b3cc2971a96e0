#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Activity.h"
#include "cli/SessionChoice.h"

/// What the commands do to the agent state file's object. `now` is in seconds since 1970. `state` must be an object;
/// members that a change does not speak of are kept. Every change also drops the sessions that have lapsed and those
/// that say nothing (all values 0), and writes the merge of the others to the top level, 0 for names that no session
/// has any more. No name is ever removed: the application would hold its channel at its last value.
namespace veloria::cli {

/// The session of a channel that is set for some time by a writer that names none: nothing else lapses with it.
std::string lifetimeSession(std::string_view channel);

/// Sets the session's busy, ok and err; in the default one, in place of what their lifetime sessions said. A failure
/// starts the flash; the others end it once no session has failed.
void reportActivity(nlohmann::json& state, Activity activity, const SessionChoice& session, double now);

/// Sets a channel: in the session when one is chosen; else, in place of what its lifetime session said, in the default
/// one when the name belongs to sessions (busy, ok, err, or one that a session has), and at the top level otherwise.
void setChannel(nlohmann::json& state, const std::string& name, double value,
                const std::optional<SessionChoice>& session, double now);

/// Sets a channel to 0 and takes it out of all sessions.
void unsetChannel(nlohmann::json& state, const std::string& name, double now);

/// `colours`: 2 to 4 of "#rrggbb".
void setPalette(nlohmann::json& state, const std::vector<std::string>& colours, double now);
void clearPalette(nlohmann::json& state, double now);

/// Every channel 0, no sessions, no palette, no flash.
void clearState(nlohmann::json& state, double now);

/// Reports the outcome of a program that ran as the session `running`, which ends.
void finishRun(nlohmann::json& state, const std::string& running, Activity outcome, const std::string& session,
               double now);

}  // namespace veloria::cli
