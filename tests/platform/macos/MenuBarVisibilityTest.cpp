#include "platform/macos/window/MenuBarVisibility.h"

#include <gmock/gmock.h>

namespace veloria {
namespace {

TEST(MenuBarVisibilityTest, OnlyAnOpaqueBarHidesTheLightBehindIt) {
  EXPECT_EQ(menuBarHint(OverlayLevel::desktop, false), "");
  EXPECT_EQ(menuBarHint(OverlayLevel::aboveMenuBar, true), "");
  EXPECT_THAT(menuBarHint(OverlayLevel::desktop, true), testing::HasSubstr("Reduce Transparency"));
}

}  // namespace
}  // namespace veloria
