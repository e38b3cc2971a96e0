// All or nothing: what is changed, remembered and put back when desktops, files and users do what they do.

#include "platform/linux/panel/PanelChange.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "PrivateBus.h"
#include "platform/linux/panel/RunningPanel.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Values = std::map<std::string, json>;

enum class Fault { none, refuses, refusesButDoes, forgets, goesSilent };

/// A desktop with two panels' colours and a style, whose `faulty`th write goes wrong.
class FakePanel final : public PanelSettings {
 public:
  Result<std::vector<PanelSetting>> look() override {
    if (silent) return Failure{"It does not answer."};
    std::vector<PanelSetting> settings;
    for (const auto& [key, value] : values) settings.push_back({key, value, clearValues.at(key)});
    return settings;
  }
  Result<Done> write(const std::string& key, const json& value) override {
    const bool bad = ++writes == faulty;
    if (bad && fault == Fault::goesSilent) silent = true;
    if (silent || (bad && fault == Fault::refuses)) return Failure{"It refuses."};
    if (!bad || fault != Fault::forgets) values[key] = value;
    if (bad && fault == Fault::refusesButDoes) return Failure{"It refuses."};
    return Done{};
  }
  void failAt(int write, Fault how) {
    fault = how;
    faulty = write;
    writes = 0;
  }
  bool isClear() const { return values == clearValues; }

  const Values clearValues{{"a/colour", json::array({0.0, 0})}, {"b/colour", 0}, {"style", "clear"}};
  Values values{{"a/colour", nullptr}, {"b/colour", 7}, {"style", "plain"}};
  Fault fault = Fault::none;
  int faulty = 0;
  int writes = 0;
  bool silent = false;
};

class PanelChangeTest : public testing::Test {
 protected:
  std::string remembered() const {
    std::ifstream file(folder.file("Veloria/panel.json"));
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// As in another run of the program.
  PanelOutcome clear(PanelSettings& desktop) const { return clearPanel(desktop, PanelJournal(environment, "fake")); }
  PanelOutcome restore(PanelSettings& desktop) const {
    return restorePanel(desktop, PanelJournal(environment, "fake"));
  }

  TemporaryFolder folder;
  Environment environment = environmentOf({{"XDG_STATE_HOME", folder.path()}});
};

TEST_F(PanelChangeTest, TheFirstValuesComeBackAndOnesOwnStay) {
  FakePanel panel;
  const Values before = panel.values;
  for (int times = 0; times < 2; ++times) {
    const PanelOutcome cleared = clear(panel);
    EXPECT_TRUE(cleared.problem.empty() && cleared.isClear && cleared.canRestore) << cleared.problem;
    EXPECT_TRUE(panel.isClear());
  }
  ASSERT_TRUE(PanelJournal(environment, "another").write({{"key", {1, 2}}}));
  panel.values.erase("b/colour");  // that panel is gone
  EXPECT_EQ(restore(panel).note, "What was changed since stays as it is.");
  EXPECT_EQ(panel.values, (Values{{"a/colour", nullptr}, {"style", "plain"}}));
  EXPECT_EQ(restore(panel).note, "There is nothing to put back.");
  EXPECT_EQ(PanelJournal(environment, "another").read()->size(), 1U) << "other desktops' memories stay";

  panel.values = before;
  EXPECT_TRUE(clear(panel).isClear);
  panel.values["b/colour"] = 5;
  EXPECT_FALSE(lookAtPanel(panel, PanelJournal(environment, "fake")).isClear);
  EXPECT_TRUE(clear(panel).isClear) << "what the user chose in between is what was there before";
  panel.values["style"] = "mine";
  EXPECT_FALSE(restore(panel).canRestore);
  EXPECT_EQ(panel.values, (Values{{"a/colour", nullptr}, {"b/colour", 5}, {"style", "mine"}}));
}

TEST_F(PanelChangeTest, AFailureOfAnyChangeLeavesAllAsItWas) {
  for (const Fault fault : {Fault::refuses, Fault::refusesButDoes, Fault::forgets}) {
    for (int write = 1; write <= 3; ++write) {
      FakePanel panel;
      const Values before = panel.values;
      panel.failAt(write, fault);
      const PanelOutcome failed = clear(panel);
      EXPECT_NE(failed.problem, "");
      EXPECT_FALSE(failed.isClear || failed.canRestore);
      EXPECT_EQ(panel.values, before);
      EXPECT_EQ(remembered(), "");

      ASSERT_TRUE(clear(panel).isClear);
      const std::string memory = remembered();
      panel.failAt(write, fault);
      const PanelOutcome kept = restore(panel);
      EXPECT_NE(kept.problem, "");
      EXPECT_TRUE(panel.isClear() && kept.canRestore);
      EXPECT_EQ(remembered(), memory);
      EXPECT_EQ(restore(panel).problem, "");
      EXPECT_EQ(panel.values, before);
    }
  }
}

TEST_F(PanelChangeTest, ADesktopThatGoesSilentIsPutBackLater) {
  FakePanel panel;
  const Values before = panel.values;
  panel.failAt(2, Fault::goesSilent);
  EXPECT_EQ(clear(panel).problem, "It refuses. The panel may be half changed: put it back later.");
  EXPECT_NE(panel.values, before);
  panel.silent = false;
  EXPECT_EQ(restore(panel).problem, "");
  EXPECT_EQ(panel.values, before);
}

TEST_F(PanelChangeTest, AFileThatCannotBeReadOrWrittenStopsEverything) {
  FakePanel panel;
  const Values before = panel.values;
  fs::create_directories(folder.file("Veloria"));
  const std::string deep(100, '[');
  const std::string many = "{\"fake\": {\"k\": {\"before\": [" + std::string(60000, ' ') + "], \"after\": 1}}}";
  for (const std::string& text :
       {std::string(), std::string("{\"fake\": {\"style\": {\"before\""), std::string("[]"),
        std::string("{\"fake\": 1}"), std::string("{\"fake\": {\"style\": {\"before\": {}, \"after\": 1}}}"),
        std::string("{\"fake\": {\"style\": {\"before\": \"\\u001b\", \"after\": 1}}}"),
        std::string("{\"fake\": {\"style\": {\"after\": 1}}}"), deep, many + many}) {
    folder.write("Veloria/panel.json", text);
    for (const PanelOutcome& outcome : {clear(panel), restore(panel)}) {
      EXPECT_TRUE(outcome.problem.starts_with("The file that remembers")) << text.substr(0, 60) << outcome.problem;
    }
    EXPECT_EQ(panel.values, before);
    EXPECT_EQ(remembered(), text);
  }
  fs::remove_all(folder.file("Veloria"));
  folder.write("Veloria", "no folder");
  EXPECT_TRUE(clear(panel).problem.starts_with("The panel's former look can't be remembered in "));
  environment = environmentOf({{"HOME", "/proc/no/such"}});
  EXPECT_NE(clear(panel).problem, "");
  EXPECT_EQ(panel.values, before);
}

TEST(RunningPanelTest, ItIsTheOneOnThisDisplay) {
  const TemporaryFolder processes;
  int next = 100;
  const auto add = [&](const std::string& name, const std::string& variables) {
    const std::string folder = std::to_string(++next);
    fs::create_directories(processes.file(folder));
    processes.write(folder + "/comm", name + "\n");
    processes.write(folder + "/environ", variables);
  };
  const auto found = [&](const Variables& variables) {
    return runningPanel(environmentOf(variables), processes.path());
  };
  using std::string_literals::operator""s;
  const Variables x11{{"DISPLAY", ":1"}};
  const Variables wayland{{"DISPLAY", ":7"}, {"WAYLAND_DISPLAY", "wayland-1"}};
  EXPECT_EQ(found(x11), std::nullopt);
  add("bash", "DISPLAY=:1");
  add("xfce4-panel", "DISPLAY=:2"s + '\0' + "HOME=/");
  add("waybar", "WAYLAND_DISPLAY=/run/wayland-1"s + '\0' + "DISPLAY=:9");
  EXPECT_EQ(found(x11), std::nullopt) << "others are for other displays";
  EXPECT_EQ(found(wayland), PanelKind::waybar);
  add("tint2", "A=1"s + '\0' + "DISPLAY=:1.0");
  EXPECT_EQ(found(x11), PanelKind::tint2);
  add("gnome-shell", "HOME=/");
  EXPECT_EQ(found(x11), PanelKind::gnome) << "it is the display server";
  EXPECT_EQ(runningPanel(environmentOf(x11), processes.file("none")), std::nullopt);
}

}  // namespace
}  // namespace veloria::tests
