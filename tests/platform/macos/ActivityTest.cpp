// What the Mac tells of sleep, session, power and full-screen spaces, taken to what the activity watcher makes of it.

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "platform/macos/activity/FullScreenSpace.h"
#include "platform/macos/activity/PowerSources.h"
#include "platform/macos/activity/WorkspaceNotifications.h"
#include "sources/ActivityWatcher.h"

namespace veloria {
namespace {

using Notification = ActivityWatcher::Notification;

class NoTimers final : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double, double, std::function<void()>) override { return nullptr; }
};

const std::map<std::string, Notification>& table() {
#define VELORIA_ROW(NAME, NOTIFICATION) {#NAME, Notification::NOTIFICATION},
  static const std::map<std::string, Notification> rows{VELORIA_WORKSPACE_NOTIFICATIONS(VELORIA_ROW)};
#undef VELORIA_ROW
  return rows;
}

/// Whether the band is drawn after these notifications.
bool drawnAfter(const std::vector<std::string>& names) {
  NimbraConfig settings;
  settings.enabled = true;
  NoTimers timers;
  ActivityWatcher watcher({.settings = [&]() -> const NimbraConfig& { return settings; }, .timers = &timers});
  for (const std::string& name : names) watcher.notify(table().at(name));
  return watcher.shouldRender();
}

TEST(WorkspaceNotifications, sleepAndAnotherSessionStopTheBandUntilTheirOpposites) {
  EXPECT_EQ(table().size(), 6U);
  const std::vector<std::pair<std::string, std::string>> pairs{
      {"NSWorkspaceScreensDidSleepNotification", "NSWorkspaceScreensDidWakeNotification"},
      {"NSWorkspaceWillSleepNotification", "NSWorkspaceDidWakeNotification"},
      {"NSWorkspaceSessionDidResignActiveNotification", "NSWorkspaceSessionDidBecomeActiveNotification"}};
  for (const auto& [stops, goesOn] : pairs) {
    EXPECT_FALSE(drawnAfter({stops})) << stops;
    EXPECT_TRUE(drawnAfter({stops, goesOn})) << goesOn;
  }
}

TEST(PowerSources, oneOnBatteryIsEnough) {
  using States = std::vector<std::string>;
  EXPECT_FALSE(isBatteryPower(States{}));
  EXPECT_FALSE(isBatteryPower(States{"AC Power"}));
  EXPECT_TRUE(isBatteryPower(States{"Battery Power"}));
  EXPECT_TRUE(isBatteryPower(States{"", "AC Power", "Battery Power"}));
  EXPECT_FALSE(isBatteryPower(States{"Off Line", "battery power", ""}));
}

Screen screenWithBar(double barHeight) {
  Screen screen;
  screen.frame = {0, 0, 1512, 982};
  screen.visibleFrame = {0, 60, 1512, 982 - 60 - barHeight};
  return screen;
}

TEST(FullScreenSpace, aMenuBarThatTakesNoRoom) {
  EXPECT_FALSE(isFullScreenSpace({}));
  const std::map<double, bool> byHeight{{37, false}, {24, false}, {1, false}, {0.5, true}, {0, true}};
  for (const auto& [height, full] : byHeight) {
    EXPECT_EQ(isFullScreenSpace(std::vector{screenWithBar(height)}), full) << height;
  }
}

TEST(FullScreenSpace, onlyTheFirstScreenCounts) {
  EXPECT_FALSE(isFullScreenSpace(std::vector{screenWithBar(24), screenWithBar(0)}));
  Screen above = screenWithBar(24);
  above.frame.y = above.visibleFrame.y = -982;
  above.visibleFrame.y += 60;
  EXPECT_FALSE(isFullScreenSpace(std::vector{above}));
}

}  // namespace
}  // namespace veloria
