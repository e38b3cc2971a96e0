#include "base/Environment.h"

#include <cstdlib>

namespace veloria {

Environment processEnvironment() {
  return [](std::string_view name) -> std::optional<std::string> {
    const char* value = std::getenv(std::string(name).c_str());
    if (value == nullptr) return std::nullopt;
    return value;
  };
}

}  // namespace veloria
