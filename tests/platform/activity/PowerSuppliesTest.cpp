#include "platform/linux/activity/PowerSupplies.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "Process.h"
#include "platform/linux/bus/BusAddresses.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;

using Attributes = std::map<std::string, std::string>;

Attributes mains(const std::string& online) {
  return {{"type", "Mains\n"}, {"online", online + "\n"}};
}
Attributes battery(const std::string& status, const std::string& type = "Battery") {
  return {{"type", type + "\n"}, {"status", status + "\n"}, {"present", "1\n"}};
}
Attributes mouse() {
  return {{"type", "Battery\n"}, {"status", "Discharging\n"}, {"scope", "Device\n"}};
}

void write(const fs::path& folder, const std::vector<Attributes>& supplies) {
  for (std::size_t i = 0; i < supplies.size(); ++i) {
    const fs::path supply = folder / ("supply" + std::to_string(i));
    fs::create_directory(supply);
    for (const auto& [name, value] : supplies[i]) std::ofstream(supply / name, std::ios::binary) << value;
  }
}

TEST(PowerSuppliesTest, TellsBatteryFromMains) {
  struct Case {
    const char* what;
    std::vector<Attributes> supplies;
    bool onBattery;
  };
  const Attributes portIn{{"type", "USB\n"}, {"online", "1\n"}};
  const Attributes portIdle{{"type", "USB\n"}, {"online", "0\n"}};
  const Case cases[] = {
      {"a desktop computer", {}, false},
      {"a laptop, unplugged", {mains("0"), battery("Discharging")}, true},
      {"a laptop, plugged in", {mains("1"), battery("Charging")}, false},
      {"plugged in, but the charger is too weak", {mains("1"), battery("Discharging")}, false},
      {"the battery before the mains", {battery("Discharging"), mains("1")}, false},
      {"unplugged and full", {mains("0"), battery("Full")}, false},
      {"no mains at all", {battery("Discharging")}, true},
      {"two batteries, one in use", {mains("0"), battery("Unknown"), battery("Discharging")}, true},
      {"charged through a port", {mains("0"), portIn, battery("Discharging")}, false},
      {"an idle port", {mains("0"), portIdle, battery("Discharging")}, true},
      {"a fixed program of the charger", {{{"type", "USB\n"}, {"online", "2\n"}}, battery("Discharging")}, false},
      {"a mouse's battery", {mouse()}, false},
      {"an uninterruptible supply in use", {battery("Discharging", "UPS")}, true},
      {"rubbish",
       {{{"type", std::string("\0\xff\n", 3)}, {"online", "99999999999"}}, {{"type", ""}, {"online", "1"}}},
       false},
      {"rubbish beside a battery", {{{"online", "1\n"}}, {{"type", "Mains"}}, battery("Discharging")}, true},
      {"another case", {battery("discharging")}, false},
      {"a huge attribute", {{{"type", "Battery\n"}, {"status", "Discharging\n" + std::string(100000, 'x')}}}, false},
  };
  for (const Case& c : cases) {
    const tests::TemporaryFolder folder;
    write(folder.path(), c.supplies);
    EXPECT_EQ(runsOnBattery(folder.path()), c.onBattery) << c.what;
  }
}

TEST(PowerSuppliesTest, AnythingElseInTheFolderSaysNothingAndHoldsNothingUp) {
  const tests::TemporaryFolder folder;
  write(folder.path(), {battery("Discharging")});
  folder.write("file", "Battery\n");
  fs::create_symlink(folder.path(), folder.file("loop"));
  fs::create_directory(folder.file("pipes"));
  ASSERT_EQ(mkfifo(folder.file("pipes/type").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo(folder.file("pipes/online").c_str(), 0600), 0);
  EXPECT_TRUE(runsOnBattery(folder.path()));
  EXPECT_FALSE(runsOnBattery(folder.file("file")));
  EXPECT_FALSE(runsOnBattery(folder.file("missing")));
}

TEST(BusAddressesTest, ComeFromTheEnvironment) {
  struct Case {
    std::map<std::string, std::string, std::less<>> variables;
    const char* system;
    const char* session;
  };
  const char* usual = "unix:path=/var/run/dbus/system_bus_socket";
  for (const Case& c :
       {Case{{}, usual, ""}, Case{{{"XDG_RUNTIME_DIR", "/run/u"}}, usual, "unix:path=/run/u/bus"},
        Case{{{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/a"},
              {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/b"},
              {"XDG_RUNTIME_DIR", "/run/u"}},
             "unix:path=/a",
             "unix:path=/b"},
        Case{{{"DBUS_SYSTEM_BUS_ADDRESS", ""}, {"DBUS_SESSION_BUS_ADDRESS", "autolaunch:"}}, usual, ""}}) {
    const auto addresses = busAddresses([&](std::string_view name) -> std::optional<std::string> {
      const auto found = c.variables.find(name);
      return found == c.variables.end() ? std::nullopt : std::optional(found->second);
    });
    EXPECT_EQ(addresses.system, c.system);
    EXPECT_EQ(addresses.session, c.session);
  }
}

}  // namespace
}  // namespace veloria
