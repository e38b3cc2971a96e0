// The program itself on an X11 desktop with a real window manager, panel and compositor, and what drives it: a sound
// server, a web server, the nimbra command, the desktop's picture, the pointer and the keyboard.

#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>

#include "ProgramFixture.h"
#include "WebServer.h"
#include "desktop/DesktopSession.h"
#include "desktop/SoundServer.h"

namespace veloria::tests {
namespace {

constexpr int width = 960;
constexpr int panelHeight = 32;
constexpr Region strip{0, 0, width, panelHeight};
constexpr Region belowStrip{0, panelHeight + 4, width, 60};
constexpr Region clockPlace{width - 50, 0, 50, panelHeight};  // white strokes on the panel's colour

double luminance(const Pixel& p) {
  return 0.2126 * p.red + 0.7152 * p.green + 0.0722 * p.blue;
}

class EndToEnd : public ProgramTest {
 protected:
  void SetUp() override {
    const auto missing = DesktopSession::missing({"openbox", "tint2", "picom", "xdotool", "xrandr", "xterm"});
    if (!missing.empty()) GTEST_SKIP() << missing;
    if (hasDesktop()) return;
    useDesktop(std::make_unique<DesktopSession>(DesktopSession::Options{.width = width, .height = 540}));
    desktop().startWindowManager("openbox");
    desktop().startPanel(panelHeight);
    desktop().startCompositor();
    // A compositor that has just started shows black for a moment.
    ASSERT_TRUE(session().waitUntil([&] {
      return session().screenshot().at(width / 2, 4) == Pixel{0x20, 0x30, 0x40};
    }));
  }

  static DesktopSession& desktop() { return static_cast<DesktopSession&>(session()); }
  static std::size_t bands() { return desktop().count("Veloria"); }
  static bool waitForBands(std::size_t number) {
    return desktop().waitUntil([&] { return bands() == number; });
  }

  /// What the program has written, but for the line that no panel of these tests shows status icons.
  std::string complaints() const {
    std::istringstream output(veloria_->output());
    std::string rest;
    for (std::string line; std::getline(output, line);) {
      if (line.find("shows no status icons") == std::string::npos) rest += line + '\n';
    }
    return rest;
  }
};

TEST_F(EndToEnd, ThereIsOneOfItAndItListensToItsUser) {
  EXPECT_EQ(nimbra({"pause"}), 1);
  startVeloria(overThePanel);
  ASSERT_TRUE(waitForLight(strip));
  EXPECT_EQ(litShare(session().screenshot(), belowStrip), 0) << "nothing outside the band";
  EXPECT_TRUE(waitUntilItMoves(strip));

  const json now = status();
  EXPECT_EQ(now["pointer"]["available"], true);
  EXPECT_EQ(now["screens"][0]["frame"], json::parse("[0.0, 508.0, 960.0, 32.0]"));
  EXPECT_TRUE(waitForStatus([](const json& s) { return s["screens"][0]["fps"] > 0 && s["screens"][0]["gpuMs"] > 0; }));
  EXPECT_EQ(nimbra({"preset", "No such look"}), 1);
  EXPECT_EQ(nimbra({"preset", "Geomagnetic Storm"}), 0);

  auto film = session().run({"xterm", "-fullscreen"});
  EXPECT_TRUE(waitUntilDrawing(false));
  EXPECT_TRUE(waitForBands(0)) << "out of the way, not just dark";
  film.reset();
  EXPECT_TRUE(waitUntilDrawing(true));

  EXPECT_EQ(complaints(), "");
  const auto second = session().finish({VELORIA_BINARY});
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_TRUE(desktop().waitForWindow("Veloria settings"));
  veloria_->signal(SIGTERM);
  endOfVeloria(0);
  EXPECT_TRUE(waitUntilDark(strip));
}

TEST_F(EndToEnd, TheBandIsWhereThePanelIsAndDarkUnderAnOpaqueOne) {
  constexpr Region lowerStrip{0, 540 - panelHeight, width, panelHeight};
  desktop().startPanel(panelHeight, "all", "bottom");
  startVeloria(overThePanel);
  ASSERT_TRUE(waitForLight(lowerStrip));
  EXPECT_EQ(litShare(session().screenshot(), {0, 0, width, 540 - panelHeight}), 0) << "nothing outside the band";
  EXPECT_EQ(status()["screens"][0]["edge"], "bottom");
  desktop().startPanel(panelHeight);
  EXPECT_TRUE(waitForLight(strip) && waitUntilDark(lowerStrip)) << "it follows the panel";
  veloria_->signal(SIGTERM);
  endOfVeloria(0);

  startVeloria([](NimbraConfig&) {});
  EXPECT_TRUE(waitForStatus([](const json& now) {
    return now["reason"] == "the panel at the top of the screen is opaque and covers the band";
  }));
  EXPECT_TRUE(waitForBands(0));
  desktop().stopPanel();
  EXPECT_TRUE(waitForLight(strip)) << "it is lit when the panel goes";
  veloria_->signal(SIGTERM);
  endOfVeloria(0);
  desktop().startPanel(panelHeight);

  std::filesystem::remove(settingsFile());
  veloria_ = session().run({VELORIA_BINARY});
  EXPECT_TRUE(waitForLight(strip)) << "a first start is seen";
  EXPECT_TRUE(waitForStatus([](const json& now) { return now["capture"]["running"] == true; }));
  EXPECT_TRUE(session().waitUntil([&] { return std::filesystem::exists(settingsFile()); }));
}

TEST_F(EndToEnd, ThePanelsClockStaysLegibleUnderTheLight) {
  const Screenshot without = session().screenshot();
  const auto isStroke = [&](int x, int y) { return luminance(without.at(x, y)) > 180; };
  // How much lighter the strokes are than their surroundings, of 255.
  const auto contrast = [&](const Screenshot& picture) {
    double sum[2] = {}, number[2] = {};
    for (int y = 0; y < clockPlace.height; ++y) {
      for (int x = clockPlace.x; x < width; ++x) {
        sum[isStroke(x, y)] += luminance(picture.at(x, y));
        ++number[isStroke(x, y)];
      }
    }
    return number[1] > 20 ? sum[1] / number[1] - sum[0] / number[0] : 0;
  };
  const double before = contrast(without);
  ASSERT_GT(before, 50) << "the clock is where it is expected";
  startVeloria([](NimbraConfig& config) {
    overThePanel(config);
    config.preserveMenuBarText = true;
  });
  ASSERT_TRUE(waitForLight(strip));
  ASSERT_TRUE(waitForStatus([](const json& now) { return now["capture"]["running"] == true; }));
  EXPECT_TRUE(session().waitUntil([&] { return contrast(session().screenshot()) > 0.6 * before; }));
  EXPECT_GT(litShare(session().screenshot(), {0, 0, width - 120, panelHeight}), 0.1) << "the light is there, too";
}

TEST_F(EndToEnd, BandsFollowTheMonitorsAndMemoryStaysFlat) {
  const auto plugIn = [] { desktop().runToEnd({"xrandr", "--setmonitor", "right", "480/127x540/143+480+0", "none"}); };
  desktop().runToEnd({"xrandr", "--setmonitor", "left", "480/127x540/143+0+0", "screen"});
  plugIn();
  startVeloria([](NimbraConfig& config) {
    overThePanel(config);
    config.allDisplays = true;
    config.framesPerSecond = 20;
  });
  ASSERT_TRUE(waitForBands(2)) << veloria_->output();
  soak([&](int) {
    desktop().runToEnd({"xrandr", "--delmonitor", "right"});
    ASSERT_TRUE(waitForBands(1));
    plugIn();
    ASSERT_TRUE(waitForBands(2));
  });
  EXPECT_TRUE(waitForLight({0, 0, 480, panelHeight}) && waitForLight({480, 0, 480, panelHeight}));
  desktop().runToEnd({"xrandr", "--delmonitor", "right", "--delmonitor", "left"});
}

TEST_F(EndToEnd, AWindowSaysThatThereIsNoSuchGpuAndTheServiceManagerDoesNotStartItAgain) {
  veloria_ = session().run({VELORIA_BINARY}, {{"NIMBRA_GPU", "no such device"}});
  const auto box = desktop().waitForWindow("Veloria", 20);
  ASSERT_TRUE(box) << veloria_->output();
  desktop().runToEnd({"xdotool", "windowactivate", "--sync", std::to_string(box->id), "key", "Escape"});
  endOfVeloria(3);
}

/// Clearly lighter in red than in green and blue.
bool isRed(const Pixel& p) {
  return p.red > 110 && p.red > p.green + 50 && p.red > p.blue + 30;
}

TEST_F(EndToEnd, AnAgentsFailureIsSeen) {
  startVeloria([](NimbraConfig& config) {
    overThePanel(config);
    config.visualizer = Visualizer::agent;
  });
  ASSERT_TRUE(waitForLight(strip));
  const auto red = [] { return share(session().screenshot(), strip, isRed); };
  const double calm = red();
  ASSERT_EQ(nimbra({"run", "--", "sh", "-c", "exit 3"}), 3);
  // New light alone takes the alert's colour, and a loaded machine draws few frames of it while the alert lasts.
  constexpr double seen = 0.1;
  EXPECT_TRUE(session().waitUntil([&] { return red() > calm + seen; }, 1.5)) << "from " << calm;
  ASSERT_EQ(nimbra({"idle"}), 0);
  EXPECT_TRUE(session().waitUntil([&] { return red() < calm + seen / 2; }, 30));
}

TEST_F(EndToEnd, TheWeatherBlowsAndTheBandTakesTheColorsOfTheDesktopsPicture) {
  const WebServer web;
  startVeloria(
      [](NimbraConfig& config) {
        overThePanel(config);
        config.visualizer = Visualizer::wind;
        config.matchWallpaper = true;
        config.colorCycle = 0;
        config.hueSpread = 0;
      },
      {{"NIMBRA_WEATHER_URL", web.url("/prefix")}});
  EXPECT_TRUE(waitForStatus([](const json& s) { return s["weather"].is_object(); }));
  desktop().runToEnd({"hsetroot", "-add", "#ff2000", "-add", "#ff2000", "-add", "#c00060", "-gradient", "0"});
  veloria_->signal(SIGTERM);
  endOfVeloria(0);
  veloria_ = session().run({VELORIA_BINARY}, {{"NIMBRA_WEATHER_URL", web.url("/prefix")}});
  EXPECT_TRUE(session().waitUntil([&] { return share(session().screenshot(), strip, isRed) > 0.1; }, 30));
}

/// How often any of a process's threads has gone to sleep since it was started.
long voluntarySwitches(pid_t process) {
  long sum = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::ifstream lines(task.path() / "status");
    for (std::string word; lines >> word;) {
      long count = 0;
      if (word == "voluntary_ctxt_switches:" && lines >> count) sum += count;
    }
  }
  return sum;
}

TEST_F(EndToEnd, MusicMovesTheBandAndAPauseSilencesEverything) {
  if (const auto missing = SoundServer::missing(); !missing.empty()) GTEST_SKIP() << missing;
  SoundServer sound;
  startVeloria(
      [](NimbraConfig& config) {
        overThePanel(config);
        config.visualizer = Visualizer::music;
        config.pointerMode = PointerMode::glow;
      },
      sound.environment());
  const auto hears = [&](const char* loud, double least, const char* quiet) {
    return waitForStatus([&](const json& s) { return s["audio"][loud] > least && s["audio"][quiet] < 0.05; });
  };
  ASSERT_TRUE(waitForStatus([](const json& s) { return s["audio"]["running"] == true; }));
  auto tone = sound.playSine(5000);
  EXPECT_TRUE(hears("treble", 0.1, "bass"));
  tone = sound.playSine(100);
  EXPECT_TRUE(hears("bass", 0.5, "treble"));

  const auto switchesPerSecond = [&](double seconds) {
    const long before = voluntarySwitches(veloria_->pid());
    session().waitUntil([] { return false; }, seconds);
    return static_cast<double>(voluntarySwitches(veloria_->pid()) - before) / seconds;
  };
  EXPECT_GT(switchesPerSecond(0.5), 30) << "what is measured is there";
  ASSERT_EQ(nimbra({"pause"}), 0);
  ASSERT_TRUE(waitForBands(0));
  switchesPerSecond(1.5);  // what was under way ends
  EXPECT_LT(switchesPerSecond(3), 8);
  ASSERT_EQ(nimbra({"resume"}), 0);
  EXPECT_TRUE(hears("bass", 0.5, "treble")) << "listening again";

  sound.kill();
  EXPECT_TRUE(waitForStatus([](const json& s) {
    return s["audio"]["running"] == false && s["audio"]["error"].is_string() && s["audio"]["level"] == 0;
  }));
  EXPECT_TRUE(waitUntilItMoves(strip));
}

TEST_F(EndToEnd, ASettingsSliderMovesTheBandAndIsStored) {
  startVeloria([](NimbraConfig& config) {
    overThePanel(config);
    config.opacity = 0.9;
  });
  ASSERT_TRUE(waitForLight(strip));
  const auto opacity = [&] { return json::parse(std::ifstream(settingsFile()))["opacity"].get<double>(); };
  const auto key = [](const std::string& name) { desktop().runToEnd({"xdotool", "key", name}); };

  ASSERT_EQ(session().finish({VELORIA_BINARY}).exitCode, 0);
  const auto window = desktop().waitForWindow("Veloria settings");
  ASSERT_TRUE(window) << veloria_->output();
  desktop().runToEnd({"xdotool", "windowactivate", "--sync", std::to_string(window->id)});
  key("ctrl+f");
  desktop().runToEnd({"xdotool", "type", "opacity"});
  // From field to field until the arrow keys move it.
  for (int i = 0; i < 15 && opacity() == 0.9; ++i) {
    key("Tab");
    key("Left");
    session().waitUntil([&] { return opacity() != 0.9; }, 1);
  }
  ASSERT_LT(opacity(), 0.9) << veloria_->output();
  key("Home");
  EXPECT_TRUE(session().waitUntil([&] { return litShare(session().screenshot(), strip) < 0.02; }))
      << "the band follows";
  key("End");

  EXPECT_TRUE(session().waitUntil([&] { return opacity() == 1; }));
}

TEST_F(EndToEnd, AServerThatGoesAwayEndsItWithOneLine) {
  startVeloria(overThePanel);
  ASSERT_TRUE(waitForLight(strip));
  desktop().stopServer();
  endOfVeloria(1);
  const std::string output = complaints();
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
  useDesktop(nullptr);
}

}  // namespace
}  // namespace veloria::tests
