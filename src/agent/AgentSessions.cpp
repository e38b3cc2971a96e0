#include "agent/AgentSessions.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "agent/StateMembers.h"

namespace veloria {

namespace {

bool lapsed(const AgentSession& session, double now) {
  return session.expires && *session.expires <= now;
}

}  // namespace

std::optional<double> channelValue(const nlohmann::json& member) {
  if (member.is_boolean()) return member.get<bool>() ? 1 : 0;
  if (member.is_number() && std::isfinite(member.get<double>())) return member.get<double>();
  return std::nullopt;
}

AgentSessions agentSessions(const nlohmann::json& state) {
  AgentSessions sessions;
  const auto found = state.is_object() ? state.find(sessionsKey) : state.end();
  if (found == state.end() || !found->is_object()) return sessions;
  for (const auto& [name, members] : found->items()) {
    if (!members.is_object()) continue;
    AgentSession& session = sessions[name];
    for (const auto& [key, member] : members.items()) {
      const auto value = channelValue(member);
      if (!value) continue;
      if (key == expiresKey) {
        session.expires = value;
      } else {
        session.values[key] = *value;
      }
    }
  }
  return sessions;
}

nlohmann::json toJson(const AgentSessions& sessions) {
  auto result = nlohmann::json::object();
  for (const auto& [name, session] : sessions) {
    auto members = nlohmann::json::object();
    for (const auto& [key, value] : session.values) members[key] = value;
    if (session.expires) members[expiresKey] = *session.expires;
    if (!members.empty()) result[name] = std::move(members);
  }
  return result;
}

std::map<std::string, double, std::less<>> mergedSessions(const AgentSessions& sessions, double now) {
  std::map<std::string, double, std::less<>> merged;
  for (const auto& [name, session] : sessions) {
    for (const auto& [key, value] : session.values) {
      if (lapsed(session, now)) continue;
      const auto [most, first] = merged.emplace(key, value);
      if (!first) most->second = std::max(most->second, value);
    }
  }
  for (const auto& [name, session] : sessions) {
    for (const auto& [key, value] : session.values) merged.emplace(key, 0);
  }
  const auto failure = merged.find("err");
  const auto success = merged.find("ok");
  if (failure != merged.end() && success != merged.end() && failure->second > 0) success->second = 0;
  return merged;
}

std::optional<double> nextExpiry(const AgentSessions& sessions, double now) {
  std::optional<double> next;
  for (const auto& [name, session] : sessions) {
    if (!session.expires || lapsed(session, now)) continue;
    next = std::min(next.value_or(*session.expires), *session.expires);
  }
  return next;
}

}  // namespace veloria
