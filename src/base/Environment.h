#pragma once

#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// Looks up an environment variable: its value (any bytes, possibly empty), or nothing if it is not set.
using Environment = std::function<std::optional<std::string>(std::string_view name)>;

/// The environment of this process.
inline Environment processEnvironment() {
  return [](std::string_view name) -> std::optional<std::string> {
    const char* value = std::getenv(std::string(name).c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  };
}

}  // namespace veloria
