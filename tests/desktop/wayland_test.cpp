// The program itself on a Wayland compositor with its own wallpaper program and panel.

#include <algorithm>
#include <csignal>
#include <fstream>

#include "ProgramFixture.h"
#include "desktop/SwaySession.h"

namespace veloria::tests {
namespace {

constexpr Pixel wallpaper{0x20, 0x30, 0x40};
constexpr Pixel black{0, 0, 0};
constexpr Pixel white{255, 255, 255};
constexpr int panelHeight = 32;
constexpr Region strip{40, 0, 860, panelHeight};  // without the workspace's button and the clock
constexpr Region clockPlace{900, 0, 60, panelHeight};
constexpr Region lowStrip{0, 0, 960, 24};  // of an output without a panel
constexpr Region below{0, panelHeight + 4, 960, 400};
const std::string screenLine = "output HEADLESS-1 resolution 960x540 position 0 0\noutput * bg #203040 solid_color\n";

std::string panelLines(const std::string& color, const std::string& edge = "top") {
  // "cat" ends with the panel, which holds the other end of its input.
  return "bar {\n position " + edge + "\n height " + std::to_string(panelHeight) +
         "\n status_command echo 12:34; cat\n colors {\n  background " + color + "\n }\n}\n";
}

double shareOf(const Pixel& color, const Screenshot& picture, const Region& region) {
  return share(picture, region, [&](const Pixel& each) { return each == color; });
}

// The label of the window that has the focus.
std::string focused(const json& node) {
  if (node.value("focused", false)) return node.value("app_id", "");
  for (const char* kind : {"nodes", "floating_nodes"}) {
    for (const auto& child : node.value(kind, json::array())) {
      if (auto found = focused(child); !found.empty()) return found;
    }
  }
  return {};
}

class Wayland : public ProgramTest {
 protected:
  void SetUp() override {
    if (const auto missing = SwaySession::missing({"foot"}); !missing.empty()) GTEST_SKIP() << missing;
  }

  void startSway(const std::string& configuration, int outputs = 1) {
    useDesktop(std::make_unique<SwaySession>(SwaySession::Options{outputs, configuration}));
    const bool panel = configuration.find("bar {") != std::string::npos;
    const bool low = configuration.find("position bottom") != std::string::npos;
    const Region clock{clockPlace.x, low ? 540 - panelHeight : 0, clockPlace.width, clockPlace.height};
    ASSERT_TRUE(session().waitUntil([&] {
      const Screenshot now = session().screenshot();  // the clock comes last
      return now.at(480, 300) == wallpaper && (!panel || shareOf(white, now, clock) > 0.004);
    }));
  }

  static SwaySession& sway() { return static_cast<SwaySession&>(session()); }
  static std::string focus() { return focused(json::parse(sway().message({"-t", "get_tree"}))); }
  static std::unique_ptr<ChildProcess> open(const std::string& name) {
    auto program = session().run({"foot", "--app-id=" + name, "--override=colors.background=000000", "cat"});
    EXPECT_TRUE(session().waitUntil([&] { return focus() == name; })) << name << program->output();
    return program;
  }
  bool waitForScreens(std::size_t number) {
    return waitForStatus([&](const json& now) { return now.contains("screens") && now["screens"].size() == number; });
  }
};

TEST_F(Wayland, TheStripIsAsHighAsThePanelAndUnderIt) {
  startSway(screenLine + panelLines("#00000080"));
  const Screenshot before = session().screenshot();
  startVeloria([](NimbraConfig&) {});
  ASSERT_TRUE(waitForLight(strip, 0.02));
  const Screenshot lit = session().screenshot();
  EXPECT_EQ(difference(before, lit, {0, panelHeight, 960, 540 - panelHeight}), 0) << "nothing outside the band";
  EXPECT_EQ(shareOf(white, lit, clockPlace), shareOf(white, before, clockPlace)) << "the clock is over the light";
  const auto now = status();
  EXPECT_EQ(now["backend"], "wayland");
  EXPECT_EQ(now["screens"][0]["menuBarHeight"], panelHeight);
  EXPECT_TRUE(waitUntilItMoves(strip));
  veloria_->signal(SIGTERM);
  endOfVeloria(0);
  EXPECT_TRUE(session().waitUntil([&] { return difference(before, session().screenshot(), strip) == 0; }));
}

TEST_F(Wayland, TheBleedLiesBetweenWallpaperAndPanelAlsoAfterAReload) {
  startSway(screenLine + panelLines("#000000"));
  const Region bleed{0, panelHeight + 4, 960, 40};
  startVeloria([](NimbraConfig& config) {
    config.extraHeight = 96;
    config.fadeBottom = 0.2;
  });
  ASSERT_TRUE(waitForLight(bleed, 0.05));
  sway().message({"reload"});
  // The new panel covers the band again only after the band was mapped anew.
  EXPECT_TRUE(session().waitUntil([&] {
    const Screenshot now = session().screenshot();
    return shareOf(black, now, strip) == 1 && shareOf(white, now, clockPlace) > 0.004 && litShare(now, bleed) > 0.05;
  })) << veloria_->output();
}

TEST_F(Wayland, OverThePanelWhereverItIsClicksGoThroughTheLight) {
  startSway(screenLine + panelLines("#000000", "bottom") + "focus_follows_mouse no\ndefault_border none\n");
  const auto under = open("under");
  sway().message({"[app_id=under] floating enable, resize set 400 200, move absolute position 100 0"});
  const auto other = open("other");
  startVeloria(overThePanel);
  ASSERT_TRUE(waitForLight({strip.x, 540 - panelHeight, strip.width, panelHeight}));
  EXPECT_EQ(litShare(session().screenshot(), strip), 0);
  ASSERT_EQ(focus(), "other");
  sway().message({"bar bar-0 mode invisible"});
  ASSERT_TRUE(waitForStatus([](const json& now) { return now["screens"][0]["menuBarHeight"] == 24; }));
  ASSERT_TRUE(waitForLight(lowStrip)) << "at the top without a panel";
  for (const char* step : {"set 200 8", "press button1", "release button1"}) {
    sway().message({std::string("seat seat0 cursor ") + step});
  }
  EXPECT_EQ(focus(), "under");
}

TEST_F(Wayland, FullModeFillsTheScreenUnderThePanelAndWindowsHideIt) {
  startSway(screenLine + panelLines("#000000"));
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::desktopFull;
    config.pauseInFullScreen = false;
  });
  ASSERT_TRUE(waitForLight(below, 0.05));
  EXPECT_EQ(litShare(session().screenshot(), strip), 0) << "the panel is above";
  const auto window = open("cover");
  sway().message({"fullscreen enable"});
  ASSERT_TRUE(waitUntilDark(below));
  EXPECT_EQ(status()["rendering"], true) << "it answers while nothing asks it for frames";
  sway().message({"fullscreen disable, floating enable, resize set 100 100"});
  EXPECT_TRUE(waitForLight(below, 0.05) && waitUntilItMoves(below));
}

TEST_F(Wayland, OutputsAtDifferentScalesHaveNoSeam) {
  startSway(screenLine +
                "output HEADLESS-2 resolution 1920x1080 position 960 0 scale 2\n"
                "output HEADLESS-3 resolution 1440x810 position 1920 0 scale 1.5\n",
            3);
  startVeloria([](NimbraConfig& config) {
    overThePanel(config);
    config.allDisplays = true;
    config.fadeSide = 0;
    config.fadeBottom = 0;
    config.framesPerSecond = 20;
  });
  // The band is 24 points high.
  for (const auto& [output, band] : {std::pair{"HEADLESS-1", Region{0, 0, 960, 24}},
                                     {"HEADLESS-2", {0, 0, 1920, 48}},
                                     {"HEADLESS-3", {0, 0, 1440, 36}}}) {
    ASSERT_TRUE(waitForLight(band, 0.05, output)) << output;
    const Screenshot picture = session().screenshot(output);
    EXPECT_EQ(shareOf(wallpaper, picture, band), 0) << output << ": every pixel of the strip is painted";
    EXPECT_EQ(shareOf(wallpaper, picture, {0, band.height, band.width, 40}), 1) << output;
  }
}

// With sway's own word on what is visible, and with the list of windows alone, as on other compositors.
class WaylandFullScreen : public Wayland, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Ways, WaylandFullScreen, testing::Bool(),
                         [](const auto& each) { return each.param ? "Told" : "Listed"; });

TEST_P(WaylandFullScreen, PausesItWhileItIsSeenWhateverHasTheFocus) {
  const bool told = GetParam();
  startSway(screenLine + panelLines("#000000") + "output HEADLESS-2 resolution 960x540 position 960 0\n", 2);
  sway().message({"focus output HEADLESS-1"});
  startVeloria(overThePanel,
               told ? std::map<std::string, std::string>{} : std::map<std::string, std::string>{{"SWAYSOCK", ""}});
  ASSERT_TRUE(waitForLight(strip));
  const auto film = open("film");
  sway().message({"fullscreen enable"});
  EXPECT_TRUE(waitUntilDrawing(false));
  sway().message({"focus output HEADLESS-2"});
  const auto chat = open("chat");
  EXPECT_FALSE(session().waitUntil([&] { return status()["rendering"] == true; }, 1)) << "the film is still seen";
  EXPECT_EQ(litShare(session().screenshot(), strip), 0);
  sway().message({"focus output HEADLESS-1"});
  sway().message({"workspace 9"});
  if (told) {
    EXPECT_TRUE(waitUntilDrawing(true)) << "nobody sees the film";
  }
  const auto other = open("other");
  EXPECT_TRUE(waitUntilDrawing(true));
  sway().message({"[app_id=film] focus"});
  EXPECT_TRUE(waitUntilDrawing(false));
  sway().message({"fullscreen disable"});
  EXPECT_TRUE(waitUntilDrawing(true));
}

TEST_F(Wayland, BandsFollowTheOutputsAndMemoryStaysFlat) {
  const SwaySession host({.configuration = "output HEADLESS-1 resolution 1200x600\n"});
  useDesktop(std::make_unique<SwaySession>(SwaySession::Options{1, "output * bg #203040 solid_color\n", &host}));
  startVeloria([](NimbraConfig& config) {
    overThePanel(config);
    config.allDisplays = true;
    config.framesPerSecond = 20;
  });
  ASSERT_TRUE(waitForScreens(1));
  const auto plugIn = [&](int number) {
    sway().message({"create_output"});
    ASSERT_TRUE(waitForLight({0, 0, 400, 24}, 0.05, "WL-" + std::to_string(number)));
  };
  const auto unplug = [&](int number, std::size_t left) {
    host.message({"[title=WL-" + std::to_string(number) + "] kill"});
    ASSERT_TRUE(waitForScreens(left));
  };
  soak([&](int round) {
    plugIn(round + 2);
    unplug(round + 2, 1);
  });
  unplug(1, 0);
  plugIn(soakRounds() + 2);
  useDesktop(nullptr);
}

TEST_F(Wayland, ACompositorMayHangAndGo) {
  startSway(screenLine);
  startVeloria(overThePanel);
  ASSERT_TRUE(waitForLight(lowStrip));
  sway().signal(SIGSTOP);
  for (int round = 0; round < 5; ++round) EXPECT_EQ(nimbra({"pause"}) + nimbra({"resume"}), 0);
  EXPECT_EQ(status()["rendering"], true) << "it answers while the compositor hangs";
  sway().signal(SIGCONT);
  EXPECT_TRUE(waitForLight(lowStrip) && waitUntilItMoves(lowStrip));

  ASSERT_EQ(nimbra({"preset", "Geomagnetic Storm"}), 0);
  sway().signal(SIGKILL);
  const std::string output = endOfVeloria(1);
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
  EXPECT_NE(output.find("Wayland compositor"), std::string::npos) << output;
  std::ifstream settings(settingsFile());
  EXPECT_EQ(json::parse(settings)["paletteName"], "Solar Storm") << "not lost with the compositor";
}

}  // namespace
}  // namespace veloria::tests
