#include <gmock/gmock.h>

#include <limits>
#include <optional>
#include <vector>

#include "../support/ManualTimers.h"
#include "SystemFakes.h"
#include "system/LoginItem.h"
#include "system/SystemState.h"

namespace veloria::tests {
namespace {

using testing::ElementsAre;

TEST(SystemState, TellsOfEachChangeOnceAndPollsOnlyBetweenStartAndStop) {
  FakeSystem system;
  ManualTimers timers;
  system.now = {.reduceTransparency = true, .glassTint = 0.25};
  std::optional<SystemState> state(std::in_place, system, timers);
  std::vector<SystemFacts> told;
  const auto subscription = state->facts().subscribe([&](const SystemFacts& facts) { told.push_back(facts); });
  const SystemFacts first = system.now;
  system.now.increaseContrast = true;
  system.changed();
  system.changed();
  state->refresh();
  EXPECT_THAT(told, ElementsAre(first, system.now));
  EXPECT_TRUE(timers.entries.empty());

  for (const double tint : {0.5, std::numeric_limits<double>::infinity()}) {
    system.now.glassTint = tint;
    state->start();
    EXPECT_EQ(state->facts().get().glassTint, tint == 0.5 ? tint : 0) << "asked at the start; not finite is none";
    state->start();
    ASSERT_EQ(timers.entries.size(), 1U);
    EXPECT_EQ(timers.entries[0]->interval, 5);
    EXPECT_EQ(timers.entries[0]->tolerance, 2);
    system.now.glassTint = 0.75;
    timers.fire();
    EXPECT_EQ(state->facts().get().glassTint, 0.75);
    state->stop();
    EXPECT_TRUE(timers.entries.empty());
  }

  state->start();
  EXPECT_EQ(state->open(SystemState::Pane::wallpaper).error(), "No settings program.");
  EXPECT_THAT(system.opened, ElementsAre(SystemPane::wallpaper));
  state.reset();
  EXPECT_FALSE(system.changed);
  EXPECT_TRUE(timers.entries.empty());
}

TEST(LoginItem, ReturnsAFailureAndTellsTheSystemLog) {
  FakeLogin port;
  LoginItem item(port);
  EXPECT_TRUE(item.set(true));
  EXPECT_TRUE(item.isEnabled());
  EXPECT_TRUE(item.set(false));
  EXPECT_FALSE(item.isEnabled());
  port.works = false;
  testing::internal::CaptureStderr();
  EXPECT_EQ(item.set(true).error(), "/autostart: No space left on device");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Veloria: login item change failed: /autostart: No space left on device\n");
}

}  // namespace
}  // namespace veloria::tests
