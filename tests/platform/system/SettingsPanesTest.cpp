#include "platform/linux/system/SettingsPanes.h"

#include <gmock/gmock.h>

namespace veloria {
namespace {

using testing::Contains;
using testing::Each;
using testing::IsEmpty;
using testing::Not;
using enum SystemPane;

constexpr SystemPane panes[] = {menuBar, appearance, accessibilityDisplay, wallpaper};

std::string firstProgram(const std::vector<std::string>& desktops) {
  const auto commands = paneCommands(desktops, wallpaper);
  return commands.empty() ? "none" : commands.front().front();
}

TEST(SettingsPanesTest, AreThoseOfTheDesktop) {
  EXPECT_EQ(firstProgram({"gnome"}), "gnome-control-center");
  EXPECT_EQ(firstProgram({"ubuntu", "gnome"}), "gnome-control-center");
  EXPECT_EQ(firstProgram({"kde"}), "systemsettings");
  EXPECT_EQ(firstProgram({"xfce"}), "xfdesktop-settings");
  EXPECT_EQ(firstProgram({"x-cinnamon"}), "cinnamon-settings");
  EXPECT_EQ(firstProgram({"mate"}), "mate-appearance-properties");
  EXPECT_EQ(firstProgram({"sway", "wlroots"}), "none");
  EXPECT_EQ(firstProgram({}), "none");
}

TEST(SettingsPanesTest, EveryDesktopHasEveryPane) {
  for (const char* desktop : {"gnome", "kde", "xfce", "cinnamon", "mate"}) {
    for (const SystemPane pane : panes) {
      const auto commands = paneCommands({desktop}, pane);
      EXPECT_THAT(commands, Not(IsEmpty())) << desktop;
      EXPECT_THAT(commands, Each(Not(IsEmpty()))) << desktop;
    }
  }
}

}  // namespace
}  // namespace veloria
