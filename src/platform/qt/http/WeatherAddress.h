#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

namespace veloria {

/// Where the forecast service is: what NIMBRA_WEATHER_URL says, or the public service when that is not set or empty.
/// An https address, or http on this computer, with a path where the service lies below one; without user, query and
/// fragment. The result is normalised and has no slash at its end. Any thread.
Result<std::string> weatherBaseUrl(const std::optional<std::string>& fromEnvironment);

}  // namespace veloria
