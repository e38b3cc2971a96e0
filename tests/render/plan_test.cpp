#include "render/FramePlan.h"
#include "render/RatePlan.h"

#include <gtest/gtest.h>

#include <limits>

namespace veloria::tests {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

TEST(FramePlan, TheGridFollowsShapeQualityAndCaps) {
  const struct {
    gpu::Size drawable;
    double quality, stretch;
    GridSize expected;
  } cases[] = {
      {{1920, 32}, 1, 4, {634, 32}},                                        // strip: rows stop at the drawable's own
      {{3456, 74}, 1, 4, {1140, 74}},                                       // 4 x 74/3456 x 1140 = 97.6, held to 74
      {{3000, 60}, 1, 1, {990, 24}},                                        // 0.02 x 990 = 19.8, raised to 24
      {{3000, 60}, 1, 2, {990, 40}},                                        // 39.6
      {{1000, 800}, 1, 4, {210, 168}},                                      // tall: the stretch does not count
      {{1920, 1080}, 1, 4, {403, 227}},    {{1000, 199}, 1, 1, {330, 66}},  // just a strip
      {{1000, 200}, 1, 1, {210, 42}},                                       // just tall
      {{200, 10}, 1, 4, {128, 24}},                                         // narrow: at least 128 x 24
      {{16384, 3000}, 4, 16, {2048, 384}},                                  // caps of a strip
      {{4000, 4000}, 9, 1, {2048, 1152}},                                   // caps of a tall surface
      {{1, 50}, 1, 1, {128, 50}},                                           // one column: the height is the aspect
      {{1920, 32}, nan, nan, {128, 24}},   {{1920, 32}, inf, inf, {2048, 32}}, {{1920, 32}, -1, -1, {128, 24}},
  };
  for (const auto& c : cases) {
    const GridSize grid = gridSizeFor(c.drawable, c.quality, c.stretch);
    EXPECT_EQ(grid, c.expected) << c.drawable.width << "x" << c.drawable.height << " quality " << c.quality << " gave "
                                << grid.width << "x" << grid.height;
  }
}

TEST(FramePlan, SceneIsSmallerOnTallSurfacesOnly) {
  EXPECT_EQ(sceneScaleFor({3456, 74}, 0.1), 1.0);
  for (const auto& [quality, scale] : {std::pair{1.0, 0.55}, {0.1, 0.3}, {5.0, 1.0}, {nan, 0.3}}) {
    EXPECT_EQ(sceneScaleFor({1000, 800}, quality), scale);
  }
  EXPECT_EQ(sceneSizeFor({1001, 3}, 0.3), (gpu::Size{300, 1}));
  EXPECT_EQ(glowSizeFor({1920, 32}), (gpu::Size{480, 8}));
  EXPECT_EQ(glowSizeFor({3, 3}), (gpu::Size{1, 1}));
}

TEST(FramePlan, AbsurdCountsAreCapped) {
  for (const auto& [wanted, kept] : {std::pair{-5LL, 1LL}, {24, 24}, {9'000'000'000'000'000'000, 200}}) {
    EXPECT_EQ(pressureIterationsFor(wanted), kept);
  }
  for (const auto& [wanted, kept] : {std::pair{0, 60}, {1, 1}, {100000, 240}}) EXPECT_EQ(frameRateFor(wanted), kept);
  EXPECT_EQ(octavesFor(1'000'000'000), 8);
}

TEST(RatePlan, DropsAtOnceComesBackLateAndLearnsFromMistakes) {
  RatePlan plan;
  const auto judge = [&](double load, int times) {
    for (int i = 0; i < times; ++i) plan.judge(load);
    return plan.divisor();
  };
  EXPECT_EQ(judge(0.9, 100), 1);
  EXPECT_EQ(judge(1.5, 1), 1) << "one busy moment is none";
  EXPECT_EQ(judge(1.5, 1), 2);
  EXPECT_EQ(judge(0.8, 100), 2) << "a whole rate would leave no room";
  EXPECT_EQ(judge(2.5, 2), 3);
  EXPECT_EQ(judge(9, 20), 4) << "no less than a quarter";
  EXPECT_EQ(judge(0.1, 6), 3);
  EXPECT_EQ(judge(0.1, 12), 1);
  EXPECT_EQ(judge(1.2, 2), 2);
  EXPECT_EQ(judge(0.5, 11), 2) << "the last try was wrong, so the next waits longer";
  EXPECT_EQ(judge(0.5, 1), 1);
  EXPECT_EQ(judge(0.5, 130), 1);
  EXPECT_EQ(judge(1.2, 2), 2);
  EXPECT_EQ(judge(0.5, 6), 1) << "that was long ago";
}

}  // namespace
}  // namespace veloria::tests
