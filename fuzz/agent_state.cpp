// The state file that any program may write, from any bytes. What is accepted keeps its bounds, and its sessions lapse
// to an end.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "agent/StateMembers.h"
#include "scene/AgentSource.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void lapse(const veloria::AgentSessions& sessions) {
  double now = -std::numeric_limits<double>::infinity();
  std::size_t lapses = 0;
  while (const auto next = veloria::nextExpiry(sessions, now)) {
    require(*next > now && ++lapses <= sessions.size());
    now = *next;
    if (lapses > 20) return;  // as many again teach nothing
    for (const auto& [name, value] : veloria::mergedSessions(sessions, now)) require(std::isfinite(value));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto state = veloria::readAgentState({reinterpret_cast<const char*>(data), size});
  if (!state) return 0;
  for (const auto& [name, value] : state->channels) require(std::isfinite(value));
  require(state->alertFor >= 0.1 && std::isfinite(state->alertUntil));
  for (const auto& palette : {state->palette, state->alertPalette}) {
    if (!palette) continue;
    for (const auto& stop : *palette)
      for (const float part : stop) require(part >= 0 && part <= 1);
  }
  lapse(state->sessions);
  const auto again = veloria::agentSessions({{veloria::sessionsKey, veloria::toJson(state->sessions)}});
  for (const auto& [name, session] : again) require(state->sessions.at(name) == session);
  return 0;
}
