#include "platform/linux/x11/FullScreenWindow.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/linux/x11/X11Dpms.h"

namespace veloria {
namespace {

using Numbers = std::vector<std::uint32_t>;

constexpr PixelRect screen{0, 0, 1920, 1080};
constexpr PixelRect besideIt{1920, 0, 1920, 1080};

TEST(FullScreenWindowTest, CoversTheScreenWhileItIsSeenThere) {
  struct Case {
    const char* what;
    FullScreenWindow window;
    bool covers;
  };
  const Case cases[] = {
      {"an ordinary one", {.viewable = true, .onDesktop = 1, .bounds = screen}, true},
      {"on no desktop", {.viewable = true, .bounds = screen}, true},
      {"on all desktops", {.viewable = true, .onDesktop = 0xFFFFFFFF, .bounds = screen}, true},
      {"on a desktop that is not shown", {.viewable = true, .onDesktop = 0, .bounds = screen}, false},
      {"not mapped", {.onDesktop = 1, .bounds = screen}, false},
      {"minimised but mapped", {.viewable = true, .hidden = true, .onDesktop = 1, .bounds = screen}, false},
      {"the desktop itself", {.viewable = true, .desktop = true, .onDesktop = 1, .bounds = screen}, false},
      {"on the screen beside", {.viewable = true, .onDesktop = 1, .bounds = besideIt}, false},
      {"on both screens", {.viewable = true, .onDesktop = 1, .bounds = {0, 0, 3840, 1080}}, true},
      {"cut by a pixel", {.viewable = true, .onDesktop = 1, .bounds = {0, 0, 1920, 1079}}, true},
      {"exactly half of it", {.viewable = true, .onDesktop = 1, .bounds = {960, 0, 1920, 1080}}, false},
      {"of no size", {.viewable = true, .onDesktop = 1, .bounds = {0, 0, 0, 0}}, false},
  };
  for (const Case& c : cases) EXPECT_EQ(coversScreen(c.window, {.current = 1}, screen), c.covers) << c.what;
  EXPECT_FALSE(coversScreen({.viewable = true, .bounds = screen}, {}, {})) << "a screen of no size";
}

TEST(FullScreenWindowTest, DesktopsAreToldApartByTheirViewports) {
  const FullScreenWindow elsewhere{.viewable = true, .onDesktop = 3, .bounds = screen};
  struct Case {
    const char* what;
    Numbers current, viewports;
    bool covers;
  };
  for (const Case& c : {Case{"one desktop for all monitors", {1}, {0, 0, 0, 0}, false},
                        Case{"one for each monitor, the focus is on another", {1}, {0, 0, 1920, 0}, true},
                        Case{"a window manager without desktops", {}, {}, true}, Case{"nonsense", {1, 2}, {}, true},
                        Case{"the current one", {3}, {}, true}}) {
    EXPECT_EQ(coversScreen(elsewhere, desktopsShown(c.current, c.viewports), screen), c.covers) << c.what;
  }
}

TEST(DpmsTest, AnyStateBelowOnIsOff) {
  EXPECT_FALSE(displaysAreOff(true, 0));
  for (const std::uint16_t level : std::initializer_list<std::uint16_t>{1, 2, 3}) {
    EXPECT_TRUE(displaysAreOff(true, level)) << level;
    EXPECT_FALSE(displaysAreOff(false, level)) << "switched off, so the level means nothing";
  }
}

}  // namespace
}  // namespace veloria
