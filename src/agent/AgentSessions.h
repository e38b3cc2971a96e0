#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace veloria {

/// What one of several writers says in the agent state file.
struct AgentSession {
  std::map<std::string, double, std::less<>> values;  ///< channels; finite
  std::optional<double> expires;                      ///< seconds since 1970 at which it lapses; nothing: never
  bool operator==(const AgentSession&) const = default;
};

/// By the session's name.
using AgentSessions = std::map<std::string, AgentSession, std::less<>>;

/// The sessions in a state file's object, whatever else it holds:
///   "sessions": {"build": {"busy": 1, "expires": 1700000000.5}, "review": {"err": 1}}
/// Members that are no objects, and values that are no numbers or booleans, are skipped.
AgentSessions agentSessions(const nlohmann::json& state);

/// The value for agentSessions() to read back. Sessions without values and expiry are left out.
nlohmann::json toJson(const AgentSessions& sessions);

/// One value for each name that any session has: the largest of those that have not lapsed at `now`, 0 when all have.
/// As a failure outranks, `ok` is 0 when `err` is above 0.
std::map<std::string, double, std::less<>> mergedSessions(const AgentSessions& sessions, double now);

/// The first time after `now` at which a session lapses.
std::optional<double> nextExpiry(const AgentSessions& sessions, double now);

}  // namespace veloria
