#include "platform/linux/wayland/OutputFacts.h"

#include <gtest/gtest.h>

namespace veloria::tests {
namespace {

OutputFacts facts(int modeWidth, int modeHeight, double width, double height, int scale) {
  OutputFacts result;
  result.name = "DP-1";
  result.modeWidth = modeWidth;
  result.modeHeight = modeHeight;
  result.logicalSize = Extent{width, height};
  result.scale = scale;
  return result;
}

TEST(OutputFacts, TheScaleIsWhatModeAndLogicalSizeSay) {
  struct Case {
    OutputFacts facts;
    double fractional;
    double whole;
  };
  OutputFacts turned = facts(3840, 2160, 1080, 1920, 2);
  turned.turned = true;
  OutputFacts untold = facts(3840, 2160, 0, 0, 2);
  untold.logicalSize.reset();
  const Case cases[] = {
      {facts(1920, 1080, 1920, 1080, 1), 1, 1},
      {facts(3840, 2160, 1920, 1080, 2), 2, 2},
      {facts(2560, 1440, 1706, 960, 2), 1.5, 2},  // the logical size is cut to whole points
      {facts(2560, 1440, 2048, 1152, 2), 1.25, 2},
      {facts(1366, 768, 1241, 698, 2), 1.1, 2},
      {turned, 2, 2},
      {untold, 2, 2},
      {facts(0, 0, 1920, 1080, 1), 1, 1},
      {facts(100000, 10, 1, 10, -5), 1, 1},
      {facts(1920, 1080, 1, 1, 4000), 8, 8},
  };
  for (const Case& each : cases) {
    EXPECT_DOUBLE_EQ(pixelsPerPoint(each.facts, true), each.fractional) << each.facts.modeWidth;
    EXPECT_DOUBLE_EQ(pixelsPerPoint(each.facts, false), each.whole) << each.facts.modeWidth;
  }
}

TEST(OutputFacts, ImplausibleOutputsAreNoMonitors) {
  EXPECT_EQ(monitorOf(facts(1, 1, 1920, 1080, 1))->frame, (PixelRect{0, 0, 1920, 1080}));
  for (const auto& [width, height] :
       {std::pair{0.0, 0.0}, {1920.0, 0.0}, {-1.0, 1080.0}, {65536.0, 10.0}, {2147483647.0, 1.0}}) {
    EXPECT_FALSE(monitorOf(facts(1920, 1080, width, height, 1))) << width << " x " << height;
  }
  OutputFacts far = facts(1920, 1080, 1920, 1080, 1);
  far.x = -2147483647 - 1;
  EXPECT_FALSE(monitorOf(far));
  far.x = -1920;
  EXPECT_TRUE(monitorOf(far)) << "left of the first one";
  OutputFacts untold = facts(1440, 900, 0, 0, 2);
  untold.logicalSize.reset();
  EXPECT_EQ(monitorOf(untold)->frame, (PixelRect{0, 0, 720, 450}));
}

}  // namespace
}  // namespace veloria::tests
