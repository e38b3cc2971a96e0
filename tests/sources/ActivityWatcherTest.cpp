#include "sources/ActivityWatcher.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>
#include <vector>

namespace veloria {
namespace {

[[maybe_unused]] const int diagnosticsOn = setenv("NIMBRA_DEBUG", "1", 1);

using Notification = ActivityWatcher::Notification;

struct HandTimer final : Timer {};

class HandTimerFactory final : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double interval, double tolerance, std::function<void()> newAction) override {
    spans.emplace_back(interval, tolerance);
    action = std::move(newAction);
    auto timer = std::make_unique<HandTimer>();
    return timer;
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
                               .onPoll =
                                   [this] {
                                     ++polls;
                                     if (watcher && duringPoll) duringPoll();
                                   }});
    watcher->onChange = [this] {
      ++changes;
      seen.push_back(watcher->shouldRender());
    };
  }

  NimbraConfig config;
  HandTimerFactory timers;
  bool fullScreen = false;
  bool battery = false;
  int fullScreenProbes = 0;
  int batteryProbes = 0;
  int polls = 0;
  int changes = 0;
  std::vector<bool> seen;
  std::function<void()> duringPoll;
  std::unique_ptr<ActivityWatcher> watcher;
};

TEST_F(ActivityWatcherTest, PollsOnceWhenItStartsAndThenEachSecond) {
  start();
  EXPECT_EQ(timers.spans, (std::vector{std::pair{1.0, 0.5}}));
  EXPECT_EQ(polls, 1);
  EXPECT_EQ(fullScreenProbes, 1);
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(watcher->reason(), "");
  timers.action();
  EXPECT_EQ(polls, 2);
  EXPECT_EQ(changes, 0);
}

TEST_F(ActivityWatcherTest, WhatHoldsWhenItStartsIsSeenAtOnce) {
  fullScreen = true;
  start();
  EXPECT_FALSE(watcher->shouldRender());
}

// Against the two fields alone, for all orders of all notifications.
TEST_F(ActivityWatcherTest, EveryOrderEndsWhereItsLastWordsSay) {
  using enum ActivityNotification;
  std::array order{screensDidSleep, screensDidWake, willSleep, didWake, sessionDidResignActive, sessionDidBecomeActive};
  do {
    start();
    seen.clear();
    bool asleep = false;
    bool active = true;
    std::vector<bool> expected;
    for (const Notification each : order) {
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

TEST_F(ActivityWatcherTest, AProbeThatNobodyAskedForIsNotRun) {
  config.pauseOnBattery = config.pauseInFullScreen = false;
  battery = fullScreen = true;
  start();
  timers.action();
  watcher->notify(Notification::didWake);
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(batteryProbes + fullScreenProbes, 0);
  config.pauseOnBattery = true;
  timers.action();
  EXPECT_EQ(batteryProbes, 1);
  EXPECT_EQ(fullScreenProbes, 0);
  EXPECT_EQ(watcher->reason(), "the computer runs on battery");
}

TEST_F(ActivityWatcherTest, ASettingCountsFromTheNextPollOn) {
  config.pauseInFullScreen = false;
  fullScreen = true;
  start();
  config.pauseInFullScreen = true;
  watcher->recompute();
  EXPECT_TRUE(watcher->shouldRender()) << "recompute() probes nothing";
  timers.action();
  EXPECT_FALSE(watcher->shouldRender());
  config.pauseInFullScreen = false;
  watcher->recompute();
  EXPECT_FALSE(watcher->shouldRender());
  timers.action();
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(changes, 2);
}

TEST_F(ActivityWatcherTest, PausedByTheUser) {
  config.enabled = false;
  start();
  EXPECT_TRUE(watcher->shouldRender()) << "nobody has recomputed yet";
  watcher->recompute();
  EXPECT_FALSE(watcher->shouldRender());
  watcher->recompute();
  EXPECT_EQ(changes, 1);
  config.enabled = true;
  watcher->recompute();
  EXPECT_EQ(changes, 2);
  EXPECT_TRUE(watcher->shouldRender());
}

TEST_F(ActivityWatcherTest, TheReasonIsTheFirstThatApplies) {
  fullScreen = battery = true;
  start();
  watcher->notify(Notification::sessionDidResignActive);
  watcher->notify(Notification::screensDidSleep);
  config.enabled = false;
  watcher->recompute();
  std::vector<std::string> reasons{watcher->reason()};
  const auto note = [&] { reasons.push_back(watcher->reason()); };
  config.enabled = true;
  watcher->recompute();
  note();
  watcher->notify(Notification::screensDidWake);
  note();
  watcher->notify(Notification::sessionDidBecomeActive);
  note();
  fullScreen = false;
  watcher->poll();
  note();
  battery = false;
  watcher->poll();
  note();
  EXPECT_THAT(reasons, testing::ElementsAre("it is paused; 'nimbra resume' goes on", "the displays are asleep",
                                            "this session is not active", "a full-screen window is in front",
                                            "the computer runs on battery", ""));
}

TEST_F(ActivityWatcherTest, AWakeLooksAtEverythingBeforeItTellsAnything) {
  start();
  watcher->notify(Notification::willSleep);
  battery = true;
  watcher->notify(Notification::didWake);
  EXPECT_EQ(changes, 1) << "it went on, only to stop again";
  EXPECT_EQ(watcher->reason(), "the computer runs on battery");
  battery = false;
  watcher->notify(Notification::willSleep);
  duringPoll = [&] { watcher->notify(Notification::screensDidSleep); };
  watcher->notify(Notification::didWake);
  EXPECT_EQ(changes, 1) << "the displays still sleep";
  EXPECT_EQ(watcher->reason(), "the displays are asleep");
}

TEST_F(ActivityWatcherTest, AListenerMaySpeakToIt) {
  start();
  watcher->onChange = [&] {
    ++changes;
    watcher->recompute();
    if (!watcher->shouldRender()) watcher->notify(Notification::screensDidWake);
  };
  watcher->notify(Notification::screensDidSleep);
  EXPECT_TRUE(watcher->shouldRender());
  EXPECT_EQ(changes, 2);
}

TEST_F(ActivityWatcherTest, WorksWithoutProbes) {
  ActivityWatcher bare({.settings = [this]() -> const NimbraConfig& { return config; }, .timers = &timers});
  bare.notify(Notification::didWake);
  EXPECT_TRUE(bare.shouldRender());
}

TEST_F(ActivityWatcherTest, WritesEveryRecomputeToTheDiagnostics) {
  start();
  battery = true;
  testing::internal::CaptureStderr();
  watcher->poll();
  watcher->poll();
  watcher->notify(Notification::sessionDidResignActive);
  config.enabled = false;
  watcher->notify(Notification::screensDidSleep);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[nimbra] activity enabled=true asleep=false session=true fullscreen=false battery=true -> false\n"
            "[nimbra] activity enabled=true asleep=false session=false fullscreen=false battery=true -> false\n"
            "[nimbra] activity enabled=false asleep=true session=false fullscreen=false battery=true -> false\n");
}

}  // namespace
}  // namespace veloria
