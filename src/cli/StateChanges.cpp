#include "cli/StateChanges.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "agent/AgentSessions.h"
#include "agent/StateMembers.h"
#include "cli/Operands.h"

namespace veloria::cli {

namespace {

using nlohmann::json;

/// The names that always belong to a session.
constexpr std::array<std::string_view, 3> outcomes{"busy", "ok", "err"};

bool saysNothing(const AgentSession& session) {
  return std::ranges::all_of(session.values, [](const auto& value) { return value.second == 0; });
}

std::set<std::string, std::less<>> namesIn(const AgentSessions& sessions) {
  std::set<std::string, std::less<>> names;
  for (const auto& [_, session] : sessions) {
    for (const auto& [name, value] : session.values) names.insert(name);
  }
  return names;
}

AgentSessions liveSessions(const json& state, double now) {
  AgentSessions sessions = agentSessions(state);
  std::erase_if(sessions, [&](const auto& entry) { return entry.second.expires.value_or(now + 1) <= now; });
  return sessions;
}

/// Changes the sessions and updates the top level.
template <typename Change>
void changeSessions(json& state, double now, const Change& change) {
  auto names = namesIn(agentSessions(state));
  AgentSessions sessions = liveSessions(state, now);
  change(sessions);
  names.merge(namesIn(sessions));
  std::erase_if(sessions, [](const auto& entry) { return saysNothing(entry.second); });
  const auto merged = mergedSessions(sessions, now);
  for (const auto& name : names) {
    const auto found = merged.find(name);
    if (!reservedMeaning(name)) state[name] = found == merged.end() ? 0 : found->second;
  }
  state.erase(sessionsKey);
  if (!sessions.empty()) state[sessionsKey] = toJson(sessions);
}

AgentSession& openSession(AgentSessions& sessions, const SessionChoice& choice, double now) {
  AgentSession& session = sessions[choice.name];
  session.expires.reset();
  if (choice.ttl) session.expires = now + *choice.ttl;
  return session;
}

void startAlert(json& state, double now) {
  state[alertUntilKey] = now + alertSeconds;
  state[alertForKey] = alertSeconds;
  // The agent scene turns the hues of a failure back by about thirty degrees: these become crimson there and stay
  // fiery elsewhere.
  state[alertPaletteKey] = {"#ff9000", "#ff7000", "#ffa000", "#c05800"};
}

void endAlertUnlessFailed(json& state) {
  const auto failure = state.find("err");
  if (failure != state.end() && failure->is_number() && failure->get<double>() > 0) return;
  const auto alert = state.find(alertUntilKey);
  if (alert != state.end()) *alert = 0;
}

void setActivity(AgentSessions& sessions, Activity activity, const SessionChoice& choice, double now) {
  if (choice.name == SessionChoice().name) {
    for (const auto& name : outcomes) sessions.erase(lifetimeSession(name));
  }
  AgentSession& session = openSession(sessions, choice, now);
  session.values["busy"] = activity == Activity::busy ? 1 : 0;
  session.values["ok"] = activity == Activity::ok ? 1 : 0;
  session.values["err"] = activity == Activity::fail ? 1 : 0;
}

void flashFor(json& state, Activity activity, double now) {
  if (activity == Activity::fail) {
    startAlert(state, now);
  } else {
    endAlertUnlessFailed(state);
  }
}

}  // namespace

std::string lifetimeSession(std::string_view channel) {
  return "set-" + std::string(channel);
}

void reportActivity(json& state, Activity activity, const SessionChoice& session, double now) {
  changeSessions(state, now, [&](AgentSessions& sessions) { setActivity(sessions, activity, session, now); });
  flashFor(state, activity, now);
}

void setChannel(json& state, const std::string& name, double value, const std::optional<SessionChoice>& session,
                double now) {
  bool shared = session || std::ranges::find(outcomes, name) != outcomes.end();
  changeSessions(state, now, [&](AgentSessions& sessions) {
    if (!session) sessions.erase(lifetimeSession(name));
    shared = shared || namesIn(sessions).contains(name);
    if (shared) openSession(sessions, session.value_or(SessionChoice()), now).values[name] = value;
  });
  if (!shared) state[name] = value;
}

void unsetChannel(json& state, const std::string& name, double now) {
  changeSessions(state, now, [&](AgentSessions& sessions) {
    for (auto& [_, session] : sessions) session.values.erase(name);
  });
  state[name] = 0;
}

void setPalette(json& state, const std::vector<std::string>& colors, double now) {
  changeSessions(state, now, [](const AgentSessions&) {});
  state[paletteKey] = colors;
}

void clearPalette(json& state, double now) {
  changeSessions(state, now, [](const AgentSessions&) {});
  state.erase(paletteKey);
}

void clearState(json& state, double now) {
  changeSessions(state, now, [](AgentSessions& sessions) { sessions.clear(); });
  for (const char* member : {paletteKey, alertForKey, alertPaletteKey}) state.erase(member);
  for (auto& member : state) {
    if (channelValue(member)) member = 0;
  }
  state[alertUntilKey] = 0;
}

void finishRun(json& state, const std::string& running, Activity outcome, const std::string& session, double now) {
  changeSessions(state, now, [&](AgentSessions& sessions) {
    if (running != session) sessions.erase(running);
    setActivity(sessions, outcome, {session, std::nullopt}, now);
  });
  flashFor(state, outcome, now);
}

}  // namespace veloria::cli
