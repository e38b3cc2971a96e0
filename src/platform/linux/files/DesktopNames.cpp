#include "platform/linux/files/DesktopNames.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace veloria {

namespace {

std::vector<std::string> namesIn(const std::string& list) {
  std::vector<std::string> names;
  for (const std::string_view part : splitText(list, ':')) {
    std::string name = lowerCased(trimmed(part));
    if (!name.empty()) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace

std::vector<std::string> desktopNames(const Environment& environment) {
  auto names = namesIn(environment("XDG_CURRENT_DESKTOP").value_or(""));
  return names.empty() ? namesIn(environment("XDG_SESSION_DESKTOP").value_or("")) : names;
}

bool isDesktop(const Environment& environment, std::string_view name) {
  const auto names = desktopNames(environment);
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace veloria
