#include "platform/linux/activity/ActivityFacts.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

#include "base/Files.h"

namespace veloria {

using Notification = ActivityNotification;

std::optional<Notification> ActivityFacts::setSystemSleeping(bool sleeping) {
  if (std::exchange(systemSleeping_, sleeping) == sleeping) return std::nullopt;
  if (sleeping) return Notification::willSleep;
  // Displays that are still dark send a notification of their own when they wake.
  return displaysDark() ? std::nullopt : std::optional(Notification::didWake);
}

std::optional<Notification> ActivityFacts::setDisplaysOff(bool off) {
  return setDisplayFact(displaysOff_, off);
}

std::optional<Notification> ActivityFacts::setSaverActive(bool active) {
  return setDisplayFact(saverActive_, active);
}

std::optional<Notification> ActivityFacts::setDisplayFact(bool& fact, bool value) {
  const bool before = systemSleeping_ || displaysDark();
  fact = value;
  const bool after = systemSleeping_ || displaysDark();
  if (before == after) return std::nullopt;
  return after ? Notification::screensDidSleep : Notification::screensDidWake;
}

std::optional<Notification> ActivityFacts::setSessionHidden(bool hidden) {
  if (std::exchange(sessionHidden_, hidden) == hidden) return std::nullopt;
  return hidden ? Notification::sessionDidResignActive : Notification::sessionDidBecomeActive;
}

std::vector<Notification> ActivityFacts::initialNotifications() const {
  std::vector<Notification> result;
  if (systemSleeping_) result.push_back(Notification::willSleep);
  if (displaysDark()) result.push_back(Notification::screensDidSleep);
  if (sessionHidden_) result.push_back(Notification::sessionDidResignActive);
  return result;
}

namespace fs = std::filesystem;

namespace {

constexpr int mostSupplies = 64;
constexpr std::size_t longestAttribute = 4096;

/// The first line of an attribute; empty if it can't be read.
std::string attribute(const fs::path& supply, const char* name) {
  const auto content = readFileBounded(supply / name, longestAttribute);
  return content ? content->substr(0, content->find('\n')) : std::string();
}

enum class SupplyState { irrelevant, external, discharging };

SupplyState stateOf(const fs::path& supply) {
  // The batteries of mice and keyboards have the scope "Device".
  if (attribute(supply, "scope") == "Device") return SupplyState::irrelevant;
  const std::string type = attribute(supply, "type");
  if (type == "Battery" || type == "UPS") {
    return attribute(supply, "status") == "Discharging" ? SupplyState::discharging : SupplyState::irrelevant;
  }
  const std::string online = attribute(supply, "online");
  return !type.empty() && (online == "1" || online == "2") ? SupplyState::external : SupplyState::irrelevant;
}

}  // namespace

bool runsOnBattery(const fs::path& folder) {
  std::error_code error;
  bool discharging = false;
  int seen = 0;
  for (fs::directory_iterator it(folder, error), end; !error && it != end && seen < mostSupplies; ++seen) {
    const SupplyState state = stateOf(it->path());
    if (state == SupplyState::external) return false;
    discharging = discharging || state == SupplyState::discharging;
    it.increment(error);
  }
  return discharging;
}

}  // namespace veloria
