#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "agent/AgentSessions.h"

namespace veloria::cli {

/// The content of `nimbra status`.
struct StatusReport {
  std::map<std::string, double, std::less<>> channels;  ///< merged, without expired sessions
  AgentSessions sessions;                               ///< those that have not expired
  std::vector<std::string> palette;                     ///< "#rrggbb"; empty: none
  double alertLeft = 0;                                 ///< seconds left of the flash
  bool running = false;                                 ///< whether the application runs
};

/// The report on any object of a state file. `now`: seconds since 1970.
StatusReport statusReport(const nlohmann::json& state, bool running, double now);

/// Lines for a person, each with a line feed; only values that are not 0.
std::string textOf(const StatusReport& report, double now);

/// {"channels": {NAME: NUMBER}, "sessions": {NAME: {"channels": {NAME: NUMBER}, "remaining": SECONDS or null}},
///  "palette": ["#rrggbb", ...] or null, "running": BOOL}
nlohmann::ordered_json jsonOf(const StatusReport& report, double now);

}  // namespace veloria::cli
