#include "sources/ActivityWatcher.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

#include "ManualTimers.h"

namespace veloria::tests {
namespace {

using enum ActivityNotification;

class ActivityWatcherTest : public testing::Test {
 protected:
  ActivityWatcherTest() { config.pauseInFullScreen = config.pauseOnBattery = true; }

  void start() {
    watcher = std::make_unique<ActivityWatcher>(
        ActivityWatcher::Ports{.settings = [this]() -> const NimbraConfig& { return config; },
                               .timers = &timers,
                               .isFullScreenSpaceActive = [this] { return ++probes, fullScreen; },
                               .isOnBattery = [this] { return ++probes, battery; }});
    watcher->onChange = [this] { seen.push_back(watcher->shouldRender()); };
  }

  NimbraConfig config;
  ManualTimers timers;
  bool fullScreen = false;
  bool battery = false;
  int probes = 0;
  std::vector<bool> seen;
  std::unique_ptr<ActivityWatcher> watcher;
};

// Against the two fields alone, for all orders of all notifications.
TEST_F(ActivityWatcherTest, TheLastNotificationsCountInAnyOrder) {
  std::array order{screensDidSleep, screensDidWake, willSleep, didWake, sessionDidResignActive, sessionDidBecomeActive};
  do {
    start();
    bool asleep = false, active = true;
    for (const auto each : order) {
      if (each == screensDidSleep || each == willSleep) asleep = true;
      if (each == screensDidWake || each == didWake) asleep = false;
      if (each == sessionDidResignActive) active = false;
      if (each == sessionDidBecomeActive) active = true;
      watcher->notify(each);
      ASSERT_EQ(watcher->shouldRender(), !asleep && active);
    }
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(ActivityWatcherTest, ProbesOnlyForTheSettingsAndOnlyInAPoll) {
  config.pauseOnBattery = config.pauseInFullScreen = false;
  battery = fullScreen = true;
  start();
  timers.fire();
  watcher->notify(didWake);
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(probes, 0);
  EXPECT_EQ(timers.entries.at(0)->interval, 1);
  for (bool* setting : {&config.pauseInFullScreen, &config.pauseOnBattery}) {
    for (const bool value : {true, false}) {
      *setting = value;
      watcher->recompute();
      EXPECT_EQ(watcher->shouldRender(), value) << "recompute() does not probe";
      timers.fire();
      EXPECT_EQ(watcher->shouldRender(), !value);
    }
  }
  EXPECT_EQ(probes, 2);
  config.pauseInFullScreen = true;
  start();
  EXPECT_FALSE(watcher->shouldRender()) << "a full-screen window from before";
}

TEST_F(ActivityWatcherTest, GivesTheFirstReasonThatApplies) {
  fullScreen = battery = true;
  config.enabled = false;
  start();
  watcher->notify(sessionDidResignActive);
  watcher->notify(screensDidSleep);
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[&] { watcher->recompute(); }, "it is paused; 'nimbra resume' goes on"},
      {[&] { config.enabled = true, watcher->recompute(); }, "the displays are asleep"},
      {[&] { watcher->notify(screensDidWake); }, "this session is not active"},
      {[&] { watcher->notify(sessionDidBecomeActive); }, "a full-screen window is in front"},
      {[&] { fullScreen = false, watcher->poll(); }, "the computer runs on battery"},
      {[&] { battery = false, watcher->poll(); }, ""},
  };
  watcher->onChange = [&] { seen.push_back(watcher->shouldRender()), watcher->recompute(); };
  for (const auto& [step, reason] : steps) {
    step();
    EXPECT_EQ(watcher->reason(), reason);
    EXPECT_EQ(watcher->shouldRender(), *reason == '\0');
  }
  EXPECT_EQ(seen, std::vector{true}) << "changes only";
}

TEST_F(ActivityWatcherTest, ProbesAfterAWakeBeforeItReports) {
  start();
  watcher->notify(willSleep);
  battery = true;
  watcher->notify(didWake);
  EXPECT_EQ(watcher->reason(), "the computer runs on battery");
  EXPECT_EQ(seen, std::vector{false}) << "it went on, only to stop again";
}

}  // namespace
}  // namespace veloria::tests
