// What moves by itself: steady however long the program has run, whatever is set meanwhile, and lit after a clearing.

#include <string>

#include "PictureTest.h"
#include "render/MotionPhases.h"
#include "render/Uniforms.h"

namespace veloria::tests {
namespace {

class MotionTest : public PictureTest {
 protected:
  MotionTest() {
    config_.emitThreshold = 0;  // light everywhere at all times, so that pictures of different times can be compared
    config_.pressureIterations = 4;
    config_.backgroundLift = 0;
  }

  /// A band whose simulated time is `simTime` and whose fields are just cleared.
  void start(double simTime) {
    NimbraRenderer& renderer = makeRenderer();
    setSize({320, 32});
    renderer.config = config_;
    // The first frame stands for 1/60 s, so it takes the clock there.
    renderer.config.timeScale = simTime * 60;
    renderer.draw(*target_);
    renderer.sim().needsClear = true;
    renderer.config = config_;
  }

  /// The worst mean difference between two frames, 0 to 255, while the speed crosses its range in a second.
  double worstFrame(double NimbraConfig::*speed, double highest, double simTime) {
    constexpr int settling = 20;
    start(simTime - settling / 60.0 * config_.timeScale);
    for (int frame = 1; frame < settling; ++frame) next(1.0 / 60);
    Picture before = next(1.0 / 60);
    double worst = 0;
    for (int frame = 0; frame < 60; ++frame) {
      renderer_->config.*speed = highest * frame / 60;
      Picture after = next(1.0 / 60);
      worst = std::max(worst, difference(before, after));
      before = std::move(after);
    }
    return worst;
  }

  NimbraConfig config_;
};

TEST_F(MotionTest, AChangingSpeedNeverThrowsThePictureAbout) {
  constexpr double ownMotion = 0.2;  // of 255: what the picture moves from frame to frame without any change
  const struct {
    const char* name;
    double NimbraConfig::*field;
    double highest;  ///< of its slider
  } speeds[] = {{"colorCycle", &NimbraConfig::colorCycle, 0.1},
                {"raySpeed", &NimbraConfig::raySpeed, 1},
                {"hueSpreadDrift", &NimbraConfig::hueSpreadDrift, 0.1},
                {"curlSpeed", &NimbraConfig::curlSpeed, 0.5},
                {"emitSpeed", &NimbraConfig::emitSpeed, 0.5}};
  for (const auto& [name, field, highest] : speeds) {
    const double early = worstFrame(field, highest, 2);
    const double late = worstFrame(field, highest, timePeriod - config_.timeScale / 2);
    RecordProperty(name, std::to_string(early) + " " + std::to_string(late));
    EXPECT_LT(early, 3) << name;
    EXPECT_LT(late, 3) << name << " across the wrap of time";
    EXPECT_LT(late, std::max(1.5 * early, ownMotion)) << name;
  }
}

TEST_F(MotionTest, LitWithinASecondAfterAClearingUnlessNothingIsBorn) {
  const struct {
    int fps;
    double timeScale, emitRate;
  } cases[] = {{60, 0.02, 1}, {60, 1.9, 1}, {10, 0.02, 1}, {10, 0.18, 1}, {10, 1.9, 1}, {10, 0.18, 0}};
  for (const auto& c : cases) {
    config_.timeScale = c.timeScale;
    config_.emitRate = c.emitRate;
    start(100);
    for (int frame = 1; frame < c.fps; ++frame) next(1.0 / c.fps);
    const double lit = next(1.0 / c.fps).shareAbove(70);
    if (c.emitRate > 0) {
      EXPECT_GE(lit, 0.3) << c.fps << " frames a second, time scale " << c.timeScale;
    } else {
      EXPECT_EQ(lit, 0);
    }
  }
}

TEST(BandMotion, SwingsTheHueAsFarAsTheCycleSays) {
  const struct {
    double colorCycle, timeScale, least, most;  // of the swing to either side, in turns, over an hour
  } cases[] = {{0, 1, 0, 0},
               {0.0003, 0.18, 0.007, 0.009},  // the default: hardly seen
               {0.0015, 0.16, 0.039, 0.041},  // "Flurry" cycles, slowly
               {0.012, 1.6, 0.039, 0.041},    // a drift stays a drift
               {-0.045, 1.9, 0.49, 0.51}};    // all around
  for (const auto& c : cases) {
    NimbraConfig config;
    config.colorCycle = c.colorCycle;
    BandMotion motion;
    double low = 0, high = 0, before = 0, furthest = 0;
    for (int frame = 0; frame < 3600 * 20; ++frame) {
      motion.advance(config, 0.05 * c.timeScale, 0.05);
      const double hue = motion.hueSwing();
      low = std::min(low, hue);
      high = std::max(high, hue);
      furthest = std::max(furthest, std::abs(hue - before));
      before = hue;
    }
    EXPECT_GE(std::min(-low, high), c.least) << c.colorCycle;
    EXPECT_LE(high, c.most) << c.colorCycle;
    EXPECT_LT(furthest, 0.02) << c.colorCycle;
  }
}

}  // namespace
}  // namespace veloria::tests
