// The program itself on a real Wayland compositor with its own wallpaper program and panel.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "Process.h"
#include "desktop/SwaySession.h"
#include "settings/NimbraConfig.h"
#include "settings/SettingsCodec.h"

namespace veloria::desktop {
namespace {

constexpr Pixel wallpaper{0x20, 0x30, 0x40};
constexpr Pixel black{0, 0, 0};
constexpr Pixel white{255, 255, 255};
constexpr int bar = 32;
constexpr Region strip{40, 0, 860, bar};  // without the workspace's button and the clock
constexpr Region below{0, bar + 4, 960, 400};
const std::string screenLine = "output HEADLESS-1 resolution 960x540 position 0 0\noutput * bg #203040 solid_color\n";

std::string panelLines(const std::string& colour) {
  // "cat" ends with the panel, whose other end of its input is.
  return "bar {\n position top\n height " + std::to_string(bar) +
         "\n status_command echo 12:34; cat\n colors {\n  background " + colour + "\n }\n}\n";
}

int soakRounds() {
  const char* text = std::getenv("VELORIA_SOAK_ROUNDS");
  return text != nullptr ? std::max(5, std::atoi(text)) : 5;
}

std::size_t count(const Screenshot& picture, const Region& region, const Pixel& wanted) {
  std::size_t found = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) found += picture.at(x, y) == wanted ? 1 : 0;
  }
  return found;
}

// The label of the window that has the focus.
std::string focused(const nlohmann::json& node) {
  if (node.value("focused", false)) return node.value("app_id", "");
  for (const char* kind : {"nodes", "floating_nodes"}) {
    for (const auto& child : node.value(kind, nlohmann::json::array())) {
      if (auto found = focused(child); !found.empty()) return found;
    }
  }
  return {};
}

class Wayland : public testing::Test {
 protected:
  /// Skips the test where sway can't be had: return when IsSkipped().
  void startSway(const std::string& configuration, int outputs = 1, const std::vector<std::string>& programs = {}) {
    if (const auto missing = SwaySession::missing(programs); !missing.empty()) GTEST_SKIP() << missing;
    sway_ = std::make_unique<SwaySession>(SwaySession::Options{outputs, configuration});
    ASSERT_TRUE(sway_->waitUntil([&] { return sway_->screenshot().at(480, 300) == wallpaper; }));
    if (configuration.find("bar {") == std::string::npos) return;
    // The clock comes last.
    const bool up = sway_->waitUntil([&] { return count(sway_->screenshot(), {900, 0, 60, bar}, white) > 8; });
    ASSERT_TRUE(up) << "the panel does not come";
  }

  void startVeloria(const std::function<void(NimbraConfig&)>& edit) {
    NimbraConfig config;
    edit(config);
    const auto folder = std::filesystem::path(sway_->environment().at("XDG_CONFIG_HOME")) / "Veloria";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "NimbraConfig.v1.json") << encodeSettings(config).value();
    const bool soaks = std::getenv("VELORIA_SOAK_ROUNDS") != nullptr;
    variables_["VELORIA_VALIDATION"] = soaks ? "0" : "1";
    veloria_ = sway_->run({VELORIA_BINARY}, variables_);
  }

  bool waitForLight(const Region& region, double share = 0.1, const std::string& output = "HEADLESS-1") {
    return sway_->waitUntil([&] { return litShare(sway_->screenshot(output), region) > share; }, 30);
  }

  bool waitUntilDark(const Region& region) {
    return sway_->waitUntil([&] { return litShare(sway_->screenshot(), region) == 0; }, 30);
  }

  bool moves(const Region& region) {
    const Screenshot first = sway_->screenshot();
    return sway_->waitUntil([&] { return difference(first, sway_->screenshot(), region) > 1; });
  }

  tests::ProcessResult runBeside(const std::string& program, const std::vector<std::string>& arguments) const {
    std::vector<std::string> environment;
    for (const auto& [name, value] : sway_->environment()) environment.push_back(name + "=" + value);
    return tests::runProcess(program, arguments, {}, environment);
  }

  nlohmann::json status() const {
    return nlohmann::json::parse(runBeside(VELORIA_BINARY, {"status", "--json"}).output, nullptr, false);
  }

  bool waitForScreens(std::size_t number) {
    return sway_->waitUntil([&] {
      const auto now = status();
      return now.contains("screens") && now["screens"].size() == number;
    });
  }

  double residentMiB() const {
    std::ifstream statm("/proc/" + std::to_string(veloria_->pid()) + "/statm");
    double total = 0;
    double resident = 0;
    statm >> total >> resident;
    return resident * 4096 / (1 << 20);
  }

  std::unique_ptr<SwaySession> sway_;
  std::map<std::string, std::string> variables_;  ///< Veloria's own
  std::unique_ptr<ChildProcess> veloria_;
};

TEST_F(Wayland, theStripIsAsHighAsThePanelAndUnderIt) {
  startSway(screenLine + panelLines("#00000080"));
  if (IsSkipped()) return;
  const Screenshot before = sway_->screenshot();
  startVeloria([](NimbraConfig&) {});
  ASSERT_TRUE(waitForLight(strip, 0.02)) << veloria_->output();
  const Screenshot lit = sway_->screenshot();
  EXPECT_EQ(difference(before, lit, {0, bar, 960, 540 - bar}), 0) << "nothing outside the band";
  const Region clock{900, 0, 60, bar};
  EXPECT_EQ(count(lit, clock, white), count(before, clock, white)) << "the clock is over the light";
  const auto now = status();
  EXPECT_EQ(now["backend"], "wayland");
  EXPECT_EQ(now["screens"][0]["menuBarHeight"], bar);
  EXPECT_TRUE(sway_->waitUntil([&] { return veloria_->output().find("may hide the light") != std::string::npos; }));
  EXPECT_TRUE(moves(strip));
  veloria_->signal(SIGTERM);
  EXPECT_EQ(veloria_->wait(10), 0);
  EXPECT_TRUE(sway_->waitUntil([&] { return difference(before, sway_->screenshot(), {0, 0, 960, 540}) == 0; }));
}

TEST_F(Wayland, aboveTheMenuBarTheLightIsOverThePanelAndClicksGoThrough) {
  startSway(screenLine + panelLines("#000000") + "focus_follows_mouse no\ndefault_border none\n", 1, {"foot"});
  if (IsSkipped()) return;
  const auto open = [&](const std::string& name) {
    auto program = sway_->run({"foot", "--app-id=" + name, "cat"});
    EXPECT_TRUE(sway_->waitUntil([&] {
      return sway_->message({"-t", "get_tree"}).find(name) != std::string::npos;
    })) << program->output();
    return program;
  };
  const auto under = open("under");
  sway_->message({"[app_id=under] floating enable, resize set 400 200, move absolute position 100 0"});
  const auto other = open("other");
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  const auto focus = [&] { return focused(nlohmann::json::parse(sway_->message({"-t", "get_tree"}))); };
  ASSERT_EQ(focus(), "other");
  sway_->message({"bar bar-0 mode invisible"});
  ASSERT_TRUE(sway_->waitUntil([&] { return status()["screens"][0]["menuBarHeight"] == 24; })) << status();
  ASSERT_TRUE(waitForLight({0, 0, 960, 24})) << veloria_->output();
  for (const char* step : {"set 200 8", "press button1", "release button1"}) {
    sway_->message({std::string("seat seat0 cursor ") + step});
  }
  EXPECT_EQ(focus(), "under");
}

TEST_F(Wayland, fullModeFillsTheScreenUnderThePanelAndWindowsHideIt) {
  startSway(screenLine + panelLines("#000000"), 1, {"foot"});
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::desktopFull;
    config.pauseInFullScreen = false;
  });
  ASSERT_TRUE(waitForLight(below, 0.05)) << veloria_->output();
  EXPECT_EQ(litShare(sway_->screenshot(), strip), 0) << "the panel is above";
  const auto window = sway_->run({"foot", "--app-id=cover", "--override=colors.background=000000", "cat"});
  ASSERT_TRUE(sway_->waitUntil([&] { return sway_->message({"-t", "get_tree"}).find("cover") != std::string::npos; }));
  sway_->message({"[app_id=cover] fullscreen enable"});
  ASSERT_TRUE(waitUntilDark(below));
  EXPECT_TRUE(status().value("rendering", false)) << "it answers while nothing asks it for frames";
  sway_->message({"[app_id=cover] fullscreen disable"});
  sway_->message({"[app_id=cover] floating enable, resize set 100 100"});
  ASSERT_TRUE(waitForLight(below, 0.05)) << veloria_->output();
  EXPECT_TRUE(moves(below));
}

TEST_F(Wayland, twoOutputsAtDifferentScalesHaveNoSeam) {
  startSway(screenLine +
                "output HEADLESS-2 resolution 1920x1080 position 960 0 scale 2\n"
                "output HEADLESS-3 resolution 1440x810 position 1920 0 scale 1.5\n",
            3);
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) {
    config.allDisplays = true;
    config.layerMode = LayerMode::aboveMenuBar;
    config.fadeSide = 0;
    config.fadeBottom = 0;
    config.framesPerSecond = 20;
  });
  struct Case {
    const char* output;
    int width;
    int height;  // of the band: 24 points
  };
  for (const auto& [output, width, height] :
       {Case{"HEADLESS-1", 960, 24}, {"HEADLESS-2", 1920, 48}, {"HEADLESS-3", 1440, 36}}) {
    ASSERT_TRUE(waitForLight({0, 0, width, height}, 0.05, output)) << output << veloria_->output();
    const Screenshot picture = sway_->screenshot(output);
    EXPECT_EQ(count(picture, {0, 0, width, height}, wallpaper), 0U)
        << output << ": every pixel of the strip is painted";
    EXPECT_EQ(count(picture, {0, height, width, 40}, wallpaper), static_cast<std::size_t>(width * 40)) << output;
  }
}

class WaylandFullScreen : public Wayland, public testing::WithParamInterface<bool> {
 protected:
  bool pauses(bool wanted, double seconds = 20) {
    return sway_->waitUntil([&] { return status().value("rendering", !wanted) != wanted; }, seconds);
  }

  std::unique_ptr<ChildProcess> open(const std::string& name) {
    auto program = sway_->run({"foot", "--app-id=" + name, "--override=colors.background=000000", "cat"});
    EXPECT_TRUE(sway_->waitUntil([&] { return focus() == name; }, 30)) << name << program->output();
    return program;
  }

  std::string focus() const { return focused(nlohmann::json::parse(sway_->message({"-t", "get_tree"}))); }
};

// With sway's own word on what is visible, and with the list of windows alone, as on other compositors.
TEST_P(WaylandFullScreen, pausesItForAsLongAsItIsSeenWhereverTheFocusIs) {
  const bool told = GetParam();
  startSway(screenLine + panelLines("#000000") + "output HEADLESS-2 resolution 960x540 position 960 0\n", 2, {"foot"});
  if (IsSkipped()) return;
  if (!told) variables_["SWAYSOCK"] = "";
  sway_->message({"focus output HEADLESS-1"});
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  const auto film = open("film");
  sway_->message({"fullscreen enable"});
  EXPECT_TRUE(pauses(true));
  EXPECT_NE(status()["reason"].get<std::string>().find("full-screen"), std::string::npos) << status();
  sway_->message({"focus output HEADLESS-2"});
  const auto chat = open("chat");
  EXPECT_FALSE(pauses(false, 4)) << "the focus is on the other output, the film still on this one";
  EXPECT_EQ(litShare(sway_->screenshot(), strip), 0);
  sway_->message({"focus output HEADLESS-1"});
  sway_->message({"workspace 9"});
  if (told) {
    EXPECT_TRUE(pauses(false)) << "nobody sees the film";
  }
  const auto other = open("other");
  EXPECT_TRUE(pauses(false));
  EXPECT_TRUE(waitForLight(strip));
  sway_->message({"[app_id=film] focus"});
  EXPECT_TRUE(pauses(true));
  sway_->message({"fullscreen disable"});
  EXPECT_TRUE(pauses(false));
  EXPECT_TRUE(waitForLight(strip));
}

INSTANTIATE_TEST_SUITE_P(FullScreen, WaylandFullScreen, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "told" : "listed"; });

TEST_F(Wayland, anOutputThatIsSwitchedOffPausesIt) {
  startSway(screenLine);
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight({0, 0, 960, 24})) << veloria_->output();
  sway_->message({"output HEADLESS-1 dpms off"});
  const auto switchedOff = [&] {
    return !nlohmann::json::parse(sway_->message({"-t", "get_outputs"}))[0].value("dpms", true);
  };
  if (!sway_->waitUntil(switchedOff, 3)) GTEST_SKIP() << "this sway can't switch its outputs off with this renderer";
  EXPECT_TRUE(sway_->waitUntil([&] { return status().value("rendering", true) == false; }, 20));
  EXPECT_NE(status()["reason"].get<std::string>().find("displays"), std::string::npos) << status();
  sway_->message({"output HEADLESS-1 dpms on"});
  EXPECT_TRUE(sway_->waitUntil([&] { return status().value("rendering", false); }, 20));
  EXPECT_TRUE(waitForLight({0, 0, 960, 24}));
}

TEST_F(Wayland, bandsFollowTheOutputsAndMemoryStaysFlat) {
  if (const auto missing = SwaySession::missing(); !missing.empty()) GTEST_SKIP() << missing;
  const SwaySession host({.configuration = "output HEADLESS-1 resolution 1200x600\n"});
  sway_ = std::make_unique<SwaySession>(
      SwaySession::Options{.outputs = 1, .configuration = "output * bg #203040 solid_color\n", .host = &host});
  startVeloria([](NimbraConfig& config) {
    config.allDisplays = true;
    config.layerMode = LayerMode::aboveMenuBar;
    config.framesPerSecond = 20;
  });
  ASSERT_TRUE(waitForScreens(1)) << veloria_->output();
  double early = 0;
  double late = 0;
  const int rounds = soakRounds();
  for (int round = 0; round < rounds; ++round) {
    sway_->message({"create_output"});
    const std::string added = "WL-" + std::to_string(round + 2);
    ASSERT_TRUE(waitForScreens(2)) << "round " << round << veloria_->output();
    ASSERT_TRUE(waitForLight({0, 0, 400, 24}, 0.05, added)) << added << veloria_->output();
    host.message({"[title=" + added + "] kill"});
    ASSERT_TRUE(waitForScreens(1)) << "round " << round << veloria_->output();
    late = residentMiB();
    if (round == 4) early = late;
  }
  EXPECT_LT(late, early * 1.05 + 8) << "MiB after " << rounds << " rounds, from " << early;
  host.message({"[title=WL-1] kill"});
  ASSERT_TRUE(waitForScreens(0)) << veloria_->output();
  sway_->message({"create_output"});
  ASSERT_TRUE(waitForLight({0, 0, 400, 24}, 0.05, "WL-" + std::to_string(rounds + 2))) << veloria_->output();
  RecordProperty("earlyMiB", std::to_string(early));
  RecordProperty("residentMiB", std::to_string(late));
}

TEST_F(Wayland, aLayoutThatIsReadAgainLeavesTheBandBetweenWallpaperAndPanel) {
  startSway(screenLine + panelLines("#000000"));
  if (IsSkipped()) return;
  const Region bleed{0, bar + 4, 960, 40};
  startVeloria([](NimbraConfig& config) {
    config.extraHeight = 96;
    config.fadeBottom = 0.2;
  });
  ASSERT_TRUE(waitForLight(bleed, 0.05)) << veloria_->output();
  sway_->message({"reload"});
  // The new panel covers the band again only after the band was mapped anew.
  EXPECT_TRUE(sway_->waitUntil([&] {
    const Screenshot now = sway_->screenshot();
    return count(now, strip, black) == 860U * bar && count(now, {900, 0, 60, bar}, white) > 8 &&
           litShare(now, bleed) > 0.05;
  })) << veloria_->output();
}

TEST_F(Wayland, aCompositorThatIsGoneEndsItWithOneLine) {
  startSway(screenLine);
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight({0, 0, 960, 24})) << veloria_->output();
  ASSERT_EQ(runBeside(NIMBRA_BINARY, {"preset", "Geomagnetic Storm"}).exitCode, 0);
  sway_->signal(SIGKILL);
  EXPECT_EQ(veloria_->wait(15), 1);
  const std::string output = veloria_->output();
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
  EXPECT_NE(output.find("Wayland compositor"), std::string::npos) << output;
  std::ifstream settings(sway_->environment().at("XDG_CONFIG_HOME") + "/Veloria/NimbraConfig.v1.json");
  EXPECT_EQ(nlohmann::json::parse(settings)["paletteName"], "Solar Storm") << "not lost with the compositor";
}

TEST_F(Wayland, aCompositorThatHangsHoldsNothingUp) {
  startSway(screenLine);
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight({0, 0, 960, 24})) << veloria_->output();
  sway_->signal(SIGSTOP);
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ(runBeside(NIMBRA_BINARY, {"pause"}).exitCode, 0);
    EXPECT_FALSE(status().value("rendering", true));
    EXPECT_EQ(runBeside(NIMBRA_BINARY, {"resume"}).exitCode, 0);
    EXPECT_TRUE(status().value("rendering", false));
  }
  sway_->signal(SIGCONT);
  ASSERT_TRUE(waitForLight({0, 0, 960, 24})) << veloria_->output();
  EXPECT_TRUE(moves({0, 0, 960, 24}));
}

TEST_F(Wayland, withoutAnyDisplayOneLineSaysSo) {
  startSway(screenLine);
  if (IsSkipped()) return;
  for (const auto& [display, words] :
       {std::pair{"", "there is no display"}, {"/nowhere/wayland-9", "/nowhere/wayland-9"}}) {
    const auto program = sway_->run({VELORIA_BINARY}, {{"WAYLAND_DISPLAY", display}});
    EXPECT_EQ(program->wait(15), 1);
    EXPECT_NE(program->output().find(words), std::string::npos) << program->output();
  }
}

}  // namespace
}  // namespace veloria::desktop
