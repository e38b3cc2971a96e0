#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace veloria {

/// The part of the agent state file that belongs to one of several writers.
struct AgentSession {
  std::map<std::string, double, std::less<>> values;  ///< channels; finite
  std::optional<double> expires;                      ///< seconds since 1970; nothing: never
  bool operator==(const AgentSession&) const = default;
};

/// By name.
using AgentSessions = std::map<std::string, AgentSession, std::less<>>;

/// The sessions in a state file's object:
///   "sessions": {"build": {"busy": 1, "expires": 1700000000.5}, "review": {"err": 1}}
/// Skips members that are not objects and values that are not numbers or booleans.
AgentSessions agentSessions(const nlohmann::json& state);

/// The value that agentSessions() reads back, without the sessions that have neither values nor an expiry.
nlohmann::json toJson(const AgentSessions& sessions);

/// One value for each name in any session: the largest of the sessions that have not expired at `now`, 0 if all have.
/// `ok` is 0 if `err` is above 0, because a failure outranks a success.
std::map<std::string, double, std::less<>> mergedSessions(const AgentSessions& sessions, double now);

/// The first time after `now` at which a session expires.
std::optional<double> nextExpiry(const AgentSessions& sessions, double now);

}  // namespace veloria
