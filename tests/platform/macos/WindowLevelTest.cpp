#include "platform/macos/window/WindowLevel.h"

#include <gtest/gtest.h>

#include <limits>

#include "app/NimbraWindow.h"
#include "platform/macos/window/FrameRate.h"

namespace veloria {
namespace {

constexpr SystemLevels levels{.mainMenu = 24, .desktop = -2147483623};

TEST(WindowLevelTest, OneAboveTheSystemsOwn) {
  EXPECT_EQ(windowLevel(OverlayLevel::aboveMenuBar, {}, levels), 25);
  EXPECT_EQ(windowLevel(OverlayLevel::desktop, {}, levels), -2147483622);
}

TEST(WindowLevelTest, TheDebugLevelIsTakenInEveryMode) {
  const struct {
    const char* text;
    int above, desktop;
  } cases[] = {
      {"-5", -5, -5},
      {"+7", 7, 7},
      {"0", 0, 0},
      {"99999999999", std::numeric_limits<int>::max(), std::numeric_limits<int>::max()},
      {"-99999999999", std::numeric_limits<int>::min(), std::numeric_limits<int>::min()},
      // No integers, so the mode decides.
      {"", 25, -2147483622},
      {"5x", 25, -2147483622},
      {" 5", 25, -2147483622},
      {"+-5", 25, -2147483622},
      {"0x10", 25, -2147483622},
      {"99999999999999999999", 25, -2147483622},
  };
  for (const auto& test : cases) {
    const auto level = debugWindowLevel(test.text);
    EXPECT_EQ(windowLevel(OverlayLevel::aboveMenuBar, level, levels), test.above) << test.text;
    EXPECT_EQ(windowLevel(OverlayLevel::desktop, level, levels), test.desktop) << test.text;
  }
  EXPECT_EQ(debugWindowLevel({}), std::nullopt);
}

TEST(FrameRateTest, WholeAndWithinBounds) {
  EXPECT_EQ(viewFrameRate(60), 60);
  EXPECT_EQ(viewFrameRate(29.97), 30);
  EXPECT_EQ(viewFrameRate(0.2), 1);
  EXPECT_EQ(viewFrameRate(-3), 1);
  EXPECT_EQ(viewFrameRate(1e9), 240);
  EXPECT_EQ(viewFrameRate(std::numeric_limits<double>::quiet_NaN()), 1);
}

}  // namespace
}  // namespace veloria
