#include "platform/linux/wallpaper/DesktopSurroundings.h"

#include <algorithm>

#include "platform/linux/files/UserFolders.h"
#include "platform/linux/wallpaper/TextLines.h"

namespace veloria {

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::vector<std::string> desktopNames(const std::string& list) {
  std::vector<std::string> names;
  for (const std::string_view part : splitText(list, ':')) {
    std::string name(trimmed(part));
    std::ranges::transform(name, name.begin(), lower);
    if (!name.empty()) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace

DesktopSurroundings desktopSurroundings(const Environment& environment) {
  DesktopSurroundings result;
  result.desktops = desktopNames(environment("XDG_CURRENT_DESKTOP").value_or(""));
  if (result.desktops.empty()) result.desktops = desktopNames(environment("XDG_SESSION_DESKTOP").value_or(""));
  result.wayland = !environment("WAYLAND_DISPLAY").value_or("").empty();
  result.display = environment("DISPLAY").value_or("");
  result.home = homeFolder(environment).value_or("");
  result.config = configFolder(environment).value_or("").parent_path();
  return result;
}

}  // namespace veloria
