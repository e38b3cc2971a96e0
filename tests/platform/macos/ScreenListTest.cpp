#include "platform/macos/screens/ScreenList.h"

#include <gtest/gtest.h>

#include <limits>

namespace veloria {
namespace {

Screen screen(std::uint32_t number, double width, double height, double scale) {
  Screen made;
  made.number = number;
  made.frame = {0, 0, width, height};
  made.backingScale = scale;
  return made;
}

TEST(ScreenListTest, KeepsWhatCanBeDrawnOnInItsOrder) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const double endless = std::numeric_limits<double>::infinity();
  const auto kept = checkedScreens({screen(1, 1728, 1117, 2), screen(2, 0, 1117, 2), screen(3, 1728, -1, 2),
                                    screen(4, none, 1117, 2), screen(5, endless, 1117, 2), screen(6, 40000, 1000, 2),
                                    screen(7, 32767.5, 1000, 2), screen(8, 1920, 1080, 1)});
  ASSERT_EQ(kept.size(), 3U);
  EXPECT_EQ(kept[0], screen(1, 1728, 1117, 2));
  EXPECT_EQ(kept[1].number, 7U);
  EXPECT_EQ(kept[2].number, 8U);
}

TEST(ScreenListTest, AScaleThatCantBeIsOne) {
  for (const double scale : {0.0, -2.0, std::numeric_limits<double>::quiet_NaN()}) {
    const auto kept = checkedScreens({screen(1, 1920, 1080, scale)});
    ASSERT_EQ(kept.size(), 1U) << scale;
    EXPECT_EQ(kept[0].backingScale, 1) << scale;
  }
}

}  // namespace
}  // namespace veloria
