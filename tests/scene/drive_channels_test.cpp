#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "scene/DriveChannels.h"

namespace veloria {
namespace {

TEST(DriveChannels, AChannelStartsAtItsTargetAndThenGlides) {
  DriveChannels channels;
  channels.set("bass", 1, 0.5);
  EXPECT_THAT(channels.values, testing::IsEmpty());
  channels.step(0.1);
  EXPECT_EQ(channels.values.at("bass"), 1);
  channels.set("bass", 3, 0.5);
  channels.step(0.1);
  EXPECT_DOUBLE_EQ(channels.values.at("bass"), 1 + (1 - std::exp(-0.1 / 0.5)) * 2);
}

TEST(DriveChannels, TimeConstants) {
  struct Case {
    double smooth, expected;
  };
  const double dt = 0.01;
  for (const auto& [smooth, expected] :
       {Case{0, 1}, Case{-1, 1}, Case{1e-9, 1 - std::exp(-dt / 0.001)}, Case{0.3, 1 - std::exp(-dt / 0.3)}}) {
    DriveChannels channels;
    channels.setImmediate("x", 0);
    channels.set("x", 1, smooth);
    channels.step(dt);
    EXPECT_DOUBLE_EQ(channels.values.at("x"), expected) << smooth;
  }
}

TEST(DriveChannels, WithoutATimeConstantItIsAQuarterSecond) {
  DriveChannels channels;
  channels.values["x"] = 0;
  channels.targets["x"] = 1;
  channels.step(0.25);
  EXPECT_DOUBLE_EQ(channels.values.at("x"), 1 - std::exp(-1));
}

TEST(DriveChannels, SetImmediateNeedsNoStep) {
  DriveChannels channels;
  channels.setImmediate("beat", 1);
  EXPECT_EQ(channels.values.at("beat"), 1);
  EXPECT_EQ(channels.targets.at("beat"), 1);
  EXPECT_EQ(channels.smoothing.at("beat"), 0);
}

TEST(DriveChannels, ClearingTouchesTheSourcesOnly) {
  DriveChannels channels;
  for (const char* name : {"t", "level", "a3", "deploys"}) channels.set(name, 1, 0.3);
  channels.step(0.1);
  channels.clearSourceChannels();
  EXPECT_EQ(channels.values.at("level"), 1);
  channels.step(0.3);
  EXPECT_DOUBLE_EQ(channels.values.at("level"), std::exp(-1));
  EXPECT_DOUBLE_EQ(channels.values.at("a3"), std::exp(-1));
  EXPECT_EQ(channels.values.at("t"), 1);
  EXPECT_EQ(channels.values.at("deploys"), 1);
  EXPECT_EQ(channels.targets.size(), 18U + 2U);
}

TEST(DriveChannels, RecoversFromWhatIsNotFinite) {
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    DriveChannels channels;
    channels.set("x", bad, 0.3);
    channels.step(0.1);
    channels.set("x", 2, 0.3);
    channels.step(0.1);
    EXPECT_EQ(channels.values.at("x"), 2);
  }
}

}  // namespace
}  // namespace veloria
