#pragma once

#include <nlohmann/json.hpp>

#include "base/Environment.h"

namespace veloria::cli {

/// Whether the application runs for this user. Waits half a second at most.
bool applicationRuns(const Environment& environment);

/// Has the running application carry a command out (base/LocalSocket.h says which there are). Throws
/// std::runtime_error when none runs, when it does not answer in five seconds, or with what it says is wrong.
void tellApplication(const Environment& environment, const nlohmann::json& question);

}  // namespace veloria::cli
