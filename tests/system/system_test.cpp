#include <gmock/gmock.h>

#include <limits>
#include <optional>
#include <vector>

#include "../support/ManualTimers.h"
#include "SystemFakes.h"
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
  EXPECT_THAT(told, ElementsAre(first, system.now));
  EXPECT_TRUE(timers.entries.empty());

  system.now.glassTint = 0.5;
  state->start();
  EXPECT_EQ(state->facts().get().glassTint, 0.5) << "asked at the start";
  ASSERT_EQ(timers.entries.size(), 1U);
  EXPECT_EQ(timers.entries[0]->interval, 5);
  system.now.glassTint = std::numeric_limits<double>::infinity();
  timers.fire();
  EXPECT_EQ(state->facts().get().glassTint, 0) << "not finite is none";
  state->stop();
  EXPECT_TRUE(timers.entries.empty());

  state->start();
  state.reset();
  EXPECT_FALSE(system.changed);
  EXPECT_TRUE(timers.entries.empty());
}

}  // namespace
}  // namespace veloria::tests
