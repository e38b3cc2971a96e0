#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace veloria {

/// Asks the application that this user runs; see base/LocalSocket.h for questions and answers. Nothing when none runs.
/// Throws WorkError when it does not answer, or answers with anything but an object, or with an error.
std::optional<nlohmann::ordered_json> askRunningApplication(const std::string& question);

}  // namespace veloria
