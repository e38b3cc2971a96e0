// The state file that any program may write, from any bytes. What is accepted keeps its bounds, and its sessions lapse
// to an end.

#include <cmath>
#include <limits>

#include "FuzzTarget.h"
#include "agent/StateMembers.h"
#include "scene/AgentSource.h"

void veloria::fuzz(std::string_view bytes) {
  const auto state = readAgentState(bytes);
  if (!state) return;
  for (const auto& [name, value] : state->channels) require(std::isfinite(value));
  require(state->alertFor >= 0.1 && std::isfinite(state->alertUntil));
  for (const auto& stop : state->palette.value_or(FourStops{})) {
    for (const float part : stop) require(part >= 0 && part <= 1);
  }
  double now = -std::numeric_limits<double>::infinity();
  for (std::size_t lapses = 1; const auto next = nextExpiry(state->sessions, now); ++lapses) {
    require(*next > now && lapses <= state->sessions.size());
    now = *next;
    if (lapses > 20) break;  // as many again teach nothing
    for (const auto& [name, value] : mergedSessions(state->sessions, now)) require(std::isfinite(value));
  }
  const auto again = agentSessions({{sessionsKey, toJson(state->sessions)}});
  for (const auto& [name, session] : again) require(state->sessions.at(name) == session);
}
