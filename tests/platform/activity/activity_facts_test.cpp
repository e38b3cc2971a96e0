#include "platform/linux/activity/ActivityFacts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using enum ActivityNotification;

TEST(ActivityFacts, NotifyOfChangesOnlyAndNeverWakeWhatAnotherSourceHoldsAsleep) {
  ActivityFacts facts;
  const auto sleeping = [&](bool value) { return facts.setSystemSleeping(value); };
  const auto off = [&](bool value) { return facts.setDisplaysOff(value); };
  const auto saver = [&](bool value) { return facts.setSaverActive(value); };
  const auto hidden = [&](bool value) { return facts.setSessionHidden(value); };
  const struct {
    std::function<std::optional<ActivityNotification>(bool)> set;
    bool value;
    std::optional<ActivityNotification> notification;
    std::vector<ActivityNotification> initial;
  } steps[] = {
      {off, true, screensDidSleep, {screensDidSleep}},
      {saver, true, std::nullopt, {screensDidSleep}},
      {off, false, std::nullopt, {screensDidSleep}},
      {sleeping, true, willSleep, {willSleep, screensDidSleep}},
      {sleeping, false, std::nullopt, {screensDidSleep}},
      {saver, false, screensDidWake, {}},
      {hidden, true, sessionDidResignActive, {sessionDidResignActive}},
      {sleeping, true, willSleep, {willSleep, sessionDidResignActive}},
      {sleeping, false, didWake, {sessionDidResignActive}},
      {hidden, false, sessionDidBecomeActive, {}},
  };
  for (const auto& step : steps) {
    const auto index = &step - steps;
    EXPECT_EQ(step.set(step.value), step.notification) << "step " << index;
    EXPECT_EQ(facts.initialNotifications(), step.initial) << "step " << index;
  }
}

using Attributes = std::map<std::string, std::string>;

void write(const TemporaryFolder& folder, const std::vector<Attributes>& supplies) {
  for (std::size_t i = 0; i < supplies.size(); ++i) {
    const std::string supply = "supply" + std::to_string(i);
    fs::create_directory(folder.file(supply));
    for (const auto& [name, value] : supplies[i]) folder.write(supply + "/" + name, value);
  }
}

TEST(PowerSupplies, TellBatteryFromMains) {
  const auto mains = [](const std::string& online, const std::string& type = "Mains") {
    return Attributes{{"type", type + "\n"}, {"online", online + "\n"}};
  };
  const auto battery = [](const std::string& status, const std::string& type = "Battery") {
    return Attributes{{"type", type + "\n"}, {"status", status + "\n"}, {"present", "1\n"}};
  };
  const Attributes inUse = battery("Discharging");
  const struct {
    const char* what;
    std::vector<Attributes> supplies;
    bool onBattery;
  } cases[] = {
      {"a desktop computer", {}, false},
      {"a laptop, unplugged", {mains("0"), inUse}, true},
      {"a laptop, plugged in", {mains("1"), battery("Charging")}, false},
      {"plugged in, but the charger is too weak", {mains("1"), inUse}, false},
      {"charged through a port", {mains("0"), mains("1", "USB"), inUse}, false},
      {"a mouse's battery", {{{"type", "Battery\n"}, {"status", "Discharging\n"}, {"scope", "Device\n"}}}, false},
      {"an uninterruptible supply in use", {battery("Discharging", "UPS")}, true},
      {"rubbish beside a battery", {{{"online", "1\n"}}, {{"type", std::string("\0\xff", 2)}}, inUse}, true},
      {"a huge attribute", {battery("Discharging\n" + std::string(100000, 'x'))}, false},
  };
  for (const auto& c : cases) {
    const TemporaryFolder folder;
    write(folder, c.supplies);
    EXPECT_EQ(runsOnBattery(folder.path()), c.onBattery) << c.what;
  }
  const TemporaryFolder folder;
  write(folder, {inUse, {}});
  fs::create_symlink(folder.path(), folder.file("loop"));
  ASSERT_EQ(mkfifo(folder.file("supply1/type").c_str(), 0600), 0);
  EXPECT_TRUE(runsOnBattery(folder.path())) << "a pipe blocks nothing";
}

}  // namespace
}  // namespace veloria::tests
