#include <gmock/gmock.h>

#include <array>
#include <limits>

#include "platform/macos/capture/BarCaptureSettings.h"

namespace veloria {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

gpu::Size picturesOf(double width, double height, double scale) {
  const auto settings = barCaptureSettings({.displayID = 1, .rect = {0, 0, width, height}, .scale = scale});
  return settings ? settings->pictures : gpu::Size{};
}

TEST(BarCaptureSettings, picturesHaveWholePixels) {
  EXPECT_EQ(picturesOf(1512, 37, 2), (gpu::Size{3024, 74}));
  EXPECT_EQ(picturesOf(1920, 24, 1), (gpu::Size{1920, 24}));
  EXPECT_EQ(picturesOf(1000.9, 33.7, 1.5), (gpu::Size{1501, 50}));
  EXPECT_EQ(picturesOf(16384, 1, 1), (gpu::Size{16384, 1}));
}

TEST(BarCaptureSettings, theRegionIsTakenAsItIs) {
  const BarRegion region{.displayID = 1, .rect = {12, 0, 800, 44}, .scale = 2};
  EXPECT_EQ(barCaptureSettings(region)->sourceRect, region.rect);
}

TEST(BarCaptureSettings, whatNoTextureHoldsIsNotCaptured) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [width, height, scale] : {std::array{0.0, 24.0, 2.0},
                                             {1920, -3, 1},
                                             {1920, 24, 0},
                                             {1920, 0.4, 2},
                                             {16385, 24, 1},
                                             {1e300, 24, 1e300},
                                             {infinity, 24, 1},
                                             {1920, nan, 1},
                                             {1920, 24, nan}}) {
    EXPECT_EQ(picturesOf(width, height, scale), gpu::Size{}) << width << " x " << height << " at " << scale;
  }
}

TEST(BarCaptureSettings, theWantedDisplayOrTheFirst) {
  const std::array<std::uint32_t, 3> displays{5, 69, 7};
  EXPECT_EQ(displayToCapture(displays, 69), 1U);
  EXPECT_EQ(displayToCapture(displays, 8), 0U);
  EXPECT_EQ(displayToCapture({}, 5), std::nullopt);
}

TEST(BarCaptureSettings, ourOwnContentIsFoundByItsProcess) {
  const std::array applications{100, 200, 300};
  const std::array owners{300, 0, 42, 42};
  const OwnContent listed = ownContent(applications, owners, 300);
  EXPECT_EQ(listed.application, 2U);
  EXPECT_THAT(listed.windows, IsEmpty());
  const OwnContent unlisted = ownContent(applications, owners, 42);
  EXPECT_EQ(unlisted.application, std::nullopt);
  EXPECT_THAT(unlisted.windows, ElementsAre(2U, 3U));
}

}  // namespace
}  // namespace veloria
