#include "platform/linux/system/SettingsPanes.h"

#include <gmock/gmock.h>

namespace veloria {
namespace {

using testing::Each;
using testing::IsEmpty;
using testing::Not;
using enum SystemPane;

constexpr SystemPane panes[] = {menuBar, appearance, accessibilityDisplay, wallpaper};

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
