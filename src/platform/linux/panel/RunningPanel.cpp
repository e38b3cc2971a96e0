#include "platform/linux/panel/RunningPanel.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/Files.h"
#include "base/Text.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

using enum PanelKind;

constexpr std::array<std::pair<std::string_view, PanelKind>, 10> programs{{
    {"gnome-shell", gnome},
    {"xfce4-panel", xfce},
    {"mate-panel", mate},
    {"plasmashell", plasma},
    {"cinnamon", cinnamon},
    {"lxqt-panel", lxqt},
    {"tint2", tint2},
    {"polybar", polybar},
    {"waybar", waybar},
    {"swaybar", swaybar},
}};
constexpr std::size_t mostNameBytes = 64;
constexpr std::size_t mostVariableBytes = std::size_t{1} << 20;

bool isOwnProcess(const fs::path& folder) {
  struct stat status {};
  const std::string name = folder.filename().string();
  const bool number = !name.empty() && std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
  return number && ::stat(folder.c_str(), &status) == 0 && status.st_uid == ::geteuid();
}

std::optional<PanelKind> panelIn(const fs::path& process) {
  const auto name = readFileBounded(process / "comm", mostNameBytes);
  if (!name) return std::nullopt;
  const std::string_view program = std::string_view(*name).substr(0, name->find('\n'));
  const auto* const known = std::ranges::find(programs, program, [](const auto& entry) { return entry.first; });
  return known != programs.end() ? std::optional(known->second) : std::nullopt;
}

std::string_view valueOf(std::string_view variables, std::string_view name) {
  for (const std::string_view variable : splitText(variables, '\0')) {
    if (const auto entry = keyAndValue(variable); entry && entry->first == name) return entry->second;
  }
  return {};
}

/// ":0" of ":0.0".
std::string_view withoutScreen(std::string_view display) {
  const auto colon = display.rfind(':');
  return colon == display.npos ? display : display.substr(0, display.find('.', colon));
}

bool contradict(std::string_view a, std::string_view b) {
  return !a.empty() && !b.empty() && a != b;
}

/// A shell that is the display server itself was started without its names, so only another name tells that it belongs
/// to another session; GNOME Shell in a window has that window's X11 display.
bool isOnDisplay(const fs::path& process, PanelKind kind, const Environment& environment) {
  const auto variables = readFileBounded(process / "environ", mostVariableBytes);
  if (!variables) return true;
  const std::string wayland = environment("WAYLAND_DISPLAY").value_or("");
  const std::string x11 = environment("DISPLAY").value_or("");
  const std::string_view theirs = valueOf(*variables, "WAYLAND_DISPLAY");
  if (!wayland.empty() && !theirs.empty()) return fs::path(wayland).filename() == fs::path(theirs).filename();
  if (!wayland.empty() && kind == gnome) return true;
  return !contradict(withoutScreen(x11), withoutScreen(valueOf(*variables, "DISPLAY")));
}

}  // namespace

std::optional<PanelKind> runningPanel(const Environment& environment, const fs::path& processes) {
  std::optional<PanelKind> panel;
  std::error_code error;
  for (fs::directory_iterator entry(processes, error), end; !error && entry != end; entry.increment(error)) {
    if (!isOwnProcess(entry->path())) continue;
    const auto kind = panelIn(entry->path());
    if (kind && (!panel || *kind < *panel) && isOnDisplay(entry->path(), *kind, environment)) panel = kind;
  }
  return panel;
}

}  // namespace veloria
