#include "system/SystemState.h"

#include <gmock/gmock.h>

#include <limits>
#include <optional>
#include <vector>

#include "SystemFakes.h"

namespace veloria {
namespace {

using testing::ElementsAre;

class SystemStateTest : public testing::Test {
 protected:
  FakeSystem system;
  OneTimer timers;
};

TEST_F(SystemStateTest, KnowsTheSettingsAtOnceAndTellsEachChangeOnce) {
  system.now = {.reduceTransparency = true, .glassTint = 0.25};
  SystemState state(system, timers);
  std::vector<SystemFacts> told;
  const auto subscription = state.facts().subscribe([&](const SystemFacts& facts) { told.push_back(facts); });
  const SystemFacts first = system.now;
  system.now.increaseContrast = true;
  system.changed();
  system.changed();
  state.refresh();
  EXPECT_THAT(told, ElementsAre(first, system.now));
}

TEST_F(SystemStateTest, LooksRegularlyOnlyWhileSomebodyIsInterested) {
  SystemState state(system, timers);
  EXPECT_FALSE(timers.action);
  system.now.glassTint = 0.5;
  state.start();
  EXPECT_EQ(state.facts().get().glassTint, 0.5) << "what nobody told of is there when the interest begins";
  EXPECT_EQ(timers.tolerance, 2);
  state.start();
  system.now.glassTint = 0.75;
  timers.action();
  EXPECT_EQ(state.facts().get().glassTint, 0.75);
  state.stop();
  EXPECT_FALSE(timers.action);
  state.stop();
  state.start();
  EXPECT_TRUE(timers.action);
}

TEST_F(SystemStateTest, ATintThatIsNoNumberIsNone) {
  for (const double tint : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    system.now.glassTint = tint;
    EXPECT_EQ(SystemState(system, timers).facts().get().glassTint, 0);
  }
}

TEST_F(SystemStateTest, LeavesNothingBehind) {
  std::optional<SystemState> state(std::in_place, system, timers);
  state->start();
  EXPECT_EQ(state->open(SystemState::Pane::wallpaper).error(), "No settings program.");
  EXPECT_THAT(system.opened, ElementsAre(SystemPane::wallpaper));
  state.reset();
  EXPECT_FALSE(system.changed);
  EXPECT_FALSE(timers.action);
}

}  // namespace
}  // namespace veloria
