#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "agent/AgentSessions.h"

namespace veloria::cli {

/// What `nimbra status` tells.
struct StatusReport {
  std::map<std::string, double, std::less<>> channels;  ///< of the file, sessions that have lapsed left out
  AgentSessions sessions;                               ///< those that have not lapsed
  std::vector<std::string> palette;                     ///< "#rrggbb"; empty: none
  double alertLeft = 0;                                 ///< seconds that the flash still lasts
  bool running = false;                                 ///< whether the application runs
};

/// The report on a state file's object, whatever it holds. `now`: seconds since 1970.
StatusReport statusReport(const nlohmann::json& state, bool running, double now);

/// Lines for a person, each with its line feed; only what is not 0.
std::string textOf(const StatusReport& report, double now);

/// {"channels": {NAME: NUMBER}, "sessions": {NAME: {"channels": {NAME: NUMBER}, "remaining": SECONDS or null}},
///  "palette": ["#rrggbb", ...] or null, "running": BOOL}
nlohmann::ordered_json jsonOf(const StatusReport& report, double now);

}  // namespace veloria::cli
