#include "platform/linux/wallpaper/PictureFinder.h"

#include <gmock/gmock.h>

#include <map>

namespace veloria {
namespace {

using enum PictureSource;
using Variables = std::map<std::string, std::string, std::less<>>;
using Sources = std::vector<PictureSource>;

Environment environmentOf(const Variables& variables) {
  return [variables](std::string_view name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    return found == variables.end() ? std::nullopt : std::optional(found->second);
  };
}

TEST(PictureSource, FollowsTheDesktopInUse) {
  struct Case {
    Variables variables;
    Sources sources;
  };
  const std::string current = "XDG_CURRENT_DESKTOP";
  const std::string session = "XDG_SESSION_DESKTOP";
  const std::pair<std::string, std::string> x11{"DISPLAY", ":0"};
  const std::pair<std::string, std::string> wayland{"WAYLAND_DISPLAY", "wayland-0"};
  const std::vector<Case> cases{
      {{{current, "ubuntu:GNOME"}, x11}, {gnome, rootPixmap}},
      {{{current, "GNOME"}, x11, wayland}, {gnome}},
      {{{current, "Budgie:GNOME"}, wayland}, {gnome}},
      {{{current, "X-Cinnamon"}, x11}, {cinnamon, rootPixmap}},
      {{{current, "MATE"}, x11}, {mate, rootPixmap}},
      {{{current, "KDE"}, x11, wayland}, {plasma}},
      {{{current, ""}, {session, "plasma"}, x11}, {plasma, rootPixmap}},
      {{{current, "XFCE"}, {session, "gnome"}, x11}, {xfce, rootPixmap}},
      {{{current, "sway"}, x11, wayland}, {swaybg, swww, hyprpaper}},
      {{{current, "Hyprland"}, wayland}, {hyprpaper, swww, swaybg}},
      {{{session, "river"}, wayland}, {swaybg, swww, hyprpaper}},
      {{{current, " : :i3:"}, x11}, {rootPixmap}},
      {{x11}, {rootPixmap}},
      {{{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}}, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(pictureSources(desktopSurroundings(environmentOf(c.variables))), c.sources)
        << testing::PrintToString(c.variables);
  }
}

TEST(PictureSource, KnowsTheFolders) {
  const auto plain = desktopSurroundings(environmentOf({{"HOME", "/home/u"}}));
  EXPECT_EQ(plain.home, "/home/u");
  EXPECT_EQ(plain.config, "/home/u/.config");
  const auto moved = desktopSurroundings(environmentOf({{"HOME", "/home/u"}, {"XDG_CONFIG_HOME", "/c"}}));
  EXPECT_EQ(moved.config, "/c");
}

}  // namespace
}  // namespace veloria
