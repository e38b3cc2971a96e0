#include "platform/linux/activity/PowerSupplies.h"

#include <algorithm>
#include <string>
#include <system_error>

#include "base/Files.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr int mostSupplies = 64;
constexpr std::size_t longestAttribute = 4096;

/// The first line of an attribute; empty without one.
std::string attribute(const fs::path& supply, const char* name) {
  const auto content = readFileBounded(supply / name, longestAttribute);
  return content ? content->substr(0, content->find('\n')) : std::string();
}

enum class Says { nothing, suppliedFromOutside, discharging };

Says testimony(const fs::path& supply) {
  // The batteries of mice and keyboards have the scope "Device".
  if (attribute(supply, "scope") == "Device") return Says::nothing;
  const std::string type = attribute(supply, "type");
  if (type == "Battery" || type == "UPS") {
    return attribute(supply, "status") == "Discharging" ? Says::discharging : Says::nothing;
  }
  const std::string online = attribute(supply, "online");
  return !type.empty() && (online == "1" || online == "2") ? Says::suppliedFromOutside : Says::nothing;
}

}  // namespace

bool runsOnBattery(const fs::path& folder) {
  std::error_code error;
  bool discharging = false;
  int seen = 0;
  for (fs::directory_iterator it(folder, error), end; !error && it != end && seen < mostSupplies; ++seen) {
    const Says says = testimony(it->path());
    if (says == Says::suppliedFromOutside) return false;
    discharging = discharging || says == Says::discharging;
    it.increment(error);
  }
  return discharging;
}

}  // namespace veloria
