#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// Looks an environment variable up: its value (any bytes, possibly empty), or nothing when it is not set.
using Environment = std::function<std::optional<std::string>(std::string_view name)>;

/// The environment of this process.
Environment processEnvironment();

}  // namespace veloria
