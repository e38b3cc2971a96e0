#include "platform/linux/wallpaper/PictureSource.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace veloria {

namespace {

using enum PictureSource;

constexpr std::array<std::pair<std::string_view, PictureSource>, 19> desktopsWithSettings{{
    {"gnome", gnome},       {"gnome-classic", gnome}, {"gnome-flashback", gnome},
    {"gnome-xorg", gnome},  {"ubuntu", gnome},        {"unity", gnome},
    {"unity7", gnome},      {"budgie", gnome},        {"budgie-desktop", gnome},
    {"pantheon", gnome},    {"pop", gnome},           {"x-cinnamon", cinnamon},
    {"cinnamon", cinnamon}, {"mate", mate},           {"kde", plasma},
    {"plasma", plasma},     {"plasmax11", plasma},    {"plasmawayland", plasma},
    {"xfce", xfce},
}};

void addOnce(std::vector<PictureSource>& sources, std::initializer_list<PictureSource> more) {
  for (const PictureSource source : more) {
    if (std::ranges::find(sources, source) == sources.end()) sources.push_back(source);
  }
}

}  // namespace

std::vector<PictureSource> pictureSources(const DesktopSurroundings& surroundings) {
  std::vector<PictureSource> sources;
  for (const std::string& name : surroundings.desktops) {
    const auto known = std::ranges::find(desktopsWithSettings, name, [](const auto& entry) { return entry.first; });
    if (known != desktopsWithSettings.end()) addOnce(sources, {known->second});
  }
  const bool unknown = sources.empty();
  const bool onHyprland = std::ranges::find(surroundings.desktops, "hyprland") != surroundings.desktops.end();
  if (surroundings.wayland && onHyprland) addOnce(sources, {hyprpaper, swww, swaybg});
  if (surroundings.wayland && unknown) addOnce(sources, {swaybg, swww, hyprpaper});
  if (!surroundings.wayland && !surroundings.display.empty()) addOnce(sources, {rootPixmap});
  if (!surroundings.wayland && unknown) addOnce(sources, {feh, nitrogen});
  return sources;
}

}  // namespace veloria
