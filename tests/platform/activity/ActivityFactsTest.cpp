#include "platform/linux/activity/ActivityFacts.h"

#include <gmock/gmock.h>

#include <random>

#include "sources/ActivityWatcher.h"

namespace veloria {
namespace {

using Notification = ActivityWatcher::Notification;
using testing::ElementsAre;

TEST(ActivityFactsTest, BringsALateListenerUpToDate) {
  ActivityFacts facts;
  EXPECT_THAT(facts.departures(), ElementsAre());
  facts.setSaverActive(true);
  facts.setSessionHidden(true);
  EXPECT_THAT(facts.departures(), ElementsAre(Notification::screensDidSleep, Notification::sessionDidResignActive));
  facts.setSystemSleeping(true);
  facts.setSaverActive(false);
  EXPECT_THAT(facts.departures(), ElementsAre(Notification::willSleep, Notification::sessionDidResignActive));
}

struct NoTimer final : Timer {};
struct NoTimers final : TimerFactory {
  std::unique_ptr<Timer> repeating(double, double, std::function<void()>) override {
    return std::make_unique<NoTimer>();
  }
};

// Whatever the witnesses say in whatever order, the watcher ends up with their sum, and hears of changes only.
TEST(ActivityFactsTest, TheWatcherAgreesAfterAnyHistory) {
  const NimbraConfig settings;
  NoTimers timers;
  ActivityWatcher watcher({.settings = [&]() -> const NimbraConfig& { return settings; }, .timers = &timers});
  ActivityFacts facts;
  bool told[4] = {};
  std::minstd_rand random(7);
  for (int step = 0; step < 20000; ++step) {
    const auto which = random() % 4;
    const bool before = told[which];
    const bool value = told[which] = random() % 2 == 0;
    const auto notification = which == 0   ? facts.setSystemSleeping(value)
                              : which == 1 ? facts.setDisplaysOff(value)
                              : which == 2 ? facts.setSaverActive(value)
                                           : facts.setSessionHidden(value);
    ASSERT_FALSE(value == before && notification) << "step " << step;
    if (notification) watcher.notify(*notification);
    ASSERT_EQ(watcher.shouldRender(), !(told[0] || told[1] || told[2] || told[3])) << "step " << step;
  }
}

}  // namespace
}  // namespace veloria
