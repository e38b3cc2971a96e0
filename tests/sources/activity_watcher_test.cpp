#include "sources/ActivityWatcher.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace veloria::tests {
namespace {

[[maybe_unused]] const int diagnosticsOn = setenv("NIMBRA_DEBUG", "1", 1);

using enum ActivityNotification;

struct HandTimers final : TimerFactory {
  std::unique_ptr<Timer> repeating(double interval, double tolerance, std::function<void()> newAction) override {
    struct HandTimer final : Timer {};
    spans.emplace_back(interval, tolerance);
    action = std::move(newAction);
    return std::make_unique<HandTimer>();
  }
  std::vector<std::pair<double, double>> spans;
  std::function<void()> action;
};

class ActivityWatcherTest : public testing::Test {
 protected:
  ActivityWatcherTest() { config.pauseInFullScreen = config.pauseOnBattery = true; }

  void start() {
    watcher = std::make_unique<ActivityWatcher>(
        ActivityWatcher::Ports{.settings = [this]() -> const NimbraConfig& { return config; },
                               .timers = &timers,
                               .isFullScreenSpaceActive = [this] { return ++fullScreenProbes, fullScreen; },
                               .isOnBattery = [this] { return ++batteryProbes, battery; },
                               .onPoll = [this] { ++polls, duringPoll(); }});
    watcher->onChange = [this] { seen.push_back(watcher->shouldRender()); };
  }

  NimbraConfig config;
  HandTimers timers;
  bool fullScreen = false;
  bool battery = false;
  int fullScreenProbes = 0;
  int batteryProbes = 0;
  int polls = 0;
  std::vector<bool> seen;
  std::function<void()> duringPoll = [] {};
  std::unique_ptr<ActivityWatcher> watcher;
};

TEST_F(ActivityWatcherTest, PollsAtTheStartAndThenEachSecond) {
  start();
  EXPECT_EQ(timers.spans, (std::vector{std::pair{1.0, 0.5}}));
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(watcher->reason(), "");
  timers.action();
  EXPECT_EQ(polls, 2);
  EXPECT_TRUE(seen.empty());
  fullScreen = true;
  start();
  EXPECT_FALSE(watcher->shouldRender()) << "a full-screen window from before";
  ActivityWatcher bare({.settings = [this]() -> const NimbraConfig& { return config; }, .timers = &timers});
  bare.notify(didWake);
  EXPECT_TRUE(bare.shouldRender()) << "without probes";
}

// Against the two fields alone, for all orders of all notifications.
TEST_F(ActivityWatcherTest, TheLastNotificationsCountInAnyOrder) {
  std::array order{screensDidSleep, screensDidWake, willSleep, didWake, sessionDidResignActive, sessionDidBecomeActive};
  do {
    start();
    seen.clear();
    bool asleep = false;
    bool active = true;
    std::vector<bool> expected;
    for (const auto each : order) {
      const bool before = !asleep && active;
      if (each == screensDidSleep || each == willSleep) asleep = true;
      if (each == screensDidWake || each == didWake) asleep = false;
      if (each == sessionDidResignActive) active = false;
      if (each == sessionDidBecomeActive) active = true;
      if ((!asleep && active) != before) expected.push_back(!before);
      watcher->notify(each);
      ASSERT_EQ(watcher->shouldRender(), !asleep && active);
    }
    ASSERT_EQ(seen, expected);
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(ActivityWatcherTest, ProbesOnlyForTheSettingsAndOnlyInAPoll) {
  config.pauseOnBattery = config.pauseInFullScreen = false;
  battery = fullScreen = true;
  start();
  timers.action();
  watcher->notify(didWake);
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(batteryProbes + fullScreenProbes, 0);
  for (bool* setting : {&config.pauseInFullScreen, &config.pauseOnBattery}) {
    for (const bool value : {true, false}) {
      *setting = value;
      watcher->recompute();
      EXPECT_EQ(watcher->shouldRender(), value) << "recompute() does not probe";
      timers.action();
      EXPECT_EQ(watcher->shouldRender(), !value);
    }
  }
  EXPECT_EQ(batteryProbes, 1);
  EXPECT_EQ(fullScreenProbes, 1);
  EXPECT_EQ(seen, (std::vector{false, true, false, true}));
}

TEST_F(ActivityWatcherTest, GivesTheFirstReasonThatApplies) {
  fullScreen = battery = true;
  config.enabled = false;
  start();
  EXPECT_EQ(watcher->reason(), "it is paused; 'nimbra resume' goes on");
  watcher->notify(sessionDidResignActive);
  watcher->notify(screensDidSleep);
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[&] { watcher->recompute(); }, "it is paused; 'nimbra resume' goes on"},
      {[&] { config.enabled = true, watcher->recompute(); }, "the displays are asleep"},
      {[&] { watcher->notify(screensDidWake); }, "this session is not active"},
      {[&] { watcher->notify(sessionDidBecomeActive); }, "a full-screen window is in front"},
      {[&] { fullScreen = false, watcher->poll(); }, "the computer runs on battery"},
      {[&] { battery = false, watcher->poll(); }, ""},
      {[&] { config.enabled = false; }, ""},
      {[&] { watcher->recompute(), watcher->recompute(); }, "it is paused; 'nimbra resume' goes on"},
  };
  watcher->onChange = [&] { seen.push_back(watcher->shouldRender()), watcher->recompute(); };
  for (const auto& [step, reason] : steps) {
    step();
    EXPECT_EQ(watcher->reason(), reason);
    EXPECT_EQ(watcher->shouldRender(), *reason == '\0');
  }
  EXPECT_EQ(seen, (std::vector{true, false})) << "changes only, and none before onChange was set";
}

TEST_F(ActivityWatcherTest, ProbesAfterAWakeBeforeItReports) {
  start();
  watcher->notify(willSleep);
  battery = true;
  watcher->notify(didWake);
  EXPECT_EQ(watcher->reason(), "the computer runs on battery");
  battery = false;
  watcher->notify(willSleep);
  duringPoll = [&] { watcher->notify(screensDidSleep); };
  watcher->notify(didWake);
  EXPECT_EQ(watcher->reason(), "the displays are asleep") << "they still sleep";
  EXPECT_EQ(seen, std::vector{false}) << "it went on, only to stop again";
}

TEST_F(ActivityWatcherTest, WritesEveryRecomputeToTheDiagnostics) {
  start();
  battery = true;
  testing::internal::CaptureStderr();
  watcher->poll();
  watcher->poll();
  watcher->notify(sessionDidResignActive);
  config.enabled = false;
  watcher->notify(screensDidSleep);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[nimbra] activity enabled=true asleep=false session=true fullscreen=false battery=true -> false\n"
            "[nimbra] activity enabled=true asleep=false session=false fullscreen=false battery=true -> false\n"
            "[nimbra] activity enabled=false asleep=true session=false fullscreen=false battery=true -> false\n");
}

}  // namespace
}  // namespace veloria::tests
