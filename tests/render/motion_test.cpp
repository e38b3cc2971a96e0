// What moves by itself: steady however long the program has run, whatever is set meanwhile, and lit after a clearing.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "PictureFixture.h"
#include "render/MotionPhases.h"
#include "render/UniformFloat.h"

namespace veloria::tests {
namespace {

struct Speed {
  const char* name;
  double NimbraConfig::*field;
  double highest;  ///< of its slider
};

class MotionTest : public PictureTest {
 protected:
  MotionTest() {
    config_.emitThreshold = 0;  // light everywhere at all times, so that pictures of different times can be compared
    config_.pressureIterations = 4;
    config_.backgroundLift = 0;
  }

  void TearDown() override {
    renderer_.reset();
    target_.reset();
    PictureTest::TearDown();
  }

  /// A band whose simulated time is `simTime` and whose fields are just cleared.
  void start(double simTime) {
    renderer_.reset();
    stats_ = std::make_unique<RenderStats>([this] { return now_; });
    renderer_ = std::make_unique<NimbraRenderer>(*device_, *library_, *stats_, [this] { return now_; });
    target_ = std::make_unique<OffscreenTarget>(*device_, gpu::Size{480, 32});
    renderer_->config = config_;
    // The first frame stands for 1/60 s, so it takes the clock there.
    renderer_->config.timeScale = simTime * 60;
    renderer_->draw(*target_);
    renderer_->sim().needsClear = true;
    renderer_->config = config_;
  }

  Picture next(double seconds) {
    now_ += seconds;
    renderer_->draw(*target_);
    const auto pixels = target_->pixels();
    return {480, 32, {pixels.begin(), pixels.end()}};
  }

  /// The worst mean difference between two frames, 0 to 255, while the speed crosses its range in two seconds.
  double worstFrame(const Speed& speed, double simTime) {
    constexpr int settling = 30;
    constexpr int sweep = 120;
    start(simTime - settling / 60.0 * config_.timeScale);
    for (int frame = 1; frame < settling; ++frame) next(1.0 / 60);
    Picture before = next(1.0 / 60);
    double worst = 0;
    for (int frame = 0; frame < sweep; ++frame) {
      renderer_->config.*speed.field = speed.highest * frame / sweep;
      Picture after = next(1.0 / 60);
      worst = std::max(worst, difference(before, after));
      before = std::move(after);
    }
    return worst;
  }

  NimbraConfig config_;
  double now_ = 1;
  std::unique_ptr<RenderStats> stats_;
  std::unique_ptr<NimbraRenderer> renderer_;
  std::unique_ptr<OffscreenTarget> target_;
};

TEST_F(MotionTest, aChangingSpeedNeverThrowsThePictureAbout) {
  constexpr double ownMotion = 0.2;  // of 255: what the picture moves from frame to frame without any change
  for (const Speed& speed :
       {Speed{"colorCycle", &NimbraConfig::colorCycle, 0.1}, Speed{"raySpeed", &NimbraConfig::raySpeed, 1},
        Speed{"hueSpreadDrift", &NimbraConfig::hueSpreadDrift, 0.1}, Speed{"curlSpeed", &NimbraConfig::curlSpeed, 0.5},
        Speed{"emitSpeed", &NimbraConfig::emitSpeed, 0.5}}) {
    const double early = worstFrame(speed, 2);
    EXPECT_LT(early, 3) << speed.name;
    std::string told = std::to_string(early);
    for (const double simTime : {8 * 3600.0, timePeriod - config_.timeScale}) {
      const double late = worstFrame(speed, simTime);
      told += " " + std::to_string(late);
      EXPECT_LT(late, 3) << speed.name << " at " << simTime << " s";
      EXPECT_LT(late, std::max(1.5 * early, ownMotion)) << speed.name << " at " << simTime << " s";
    }
    RecordProperty(speed.name, told);
  }
}

TEST_F(MotionTest, litWithinASecondAfterAClearingAtAnyTimeUnlessNothingIsBorn) {
  for (const double fps : {60.0, 10.0}) {
    for (const double pace : {0.02, 0.18, 1.9}) {
      for (const double rate : {1.0, 0.0}) {
        config_.timeScale = pace;
        config_.emitRate = rate;
        start(100);
        for (int frame = 1; frame < fps; ++frame) next(1 / fps);
        const double lit = next(1 / fps).shareAbove(70);
        EXPECT_GE(lit, rate > 0 ? 0.3 : 0) << fps << " frames a second, time scale " << pace;
        EXPECT_LE(lit, rate > 0 ? 1 : 0) << "a band without births";
      }
    }
  }
}

TEST(BandMotion, swingsTheHueAsFarAsTheCycleSays) {
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
    EXPECT_GE(-low, c.least) << c.colorCycle;
    EXPECT_GE(high, c.least) << c.colorCycle;
    EXPECT_LE(high, c.most) << c.colorCycle;
    EXPECT_LT(furthest, 0.02) << c.colorCycle;
  }
}

}  // namespace
}  // namespace veloria::tests
