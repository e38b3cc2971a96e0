// The program itself on a private desktop with a real window manager, panel and compositor.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

#include "desktop/DesktopSession.h"
#include "settings/SettingsCodec.h"

namespace veloria::desktop {
namespace {

constexpr int barHeight = 32;
const Pixel panelColour{0x20, 0x30, 0x40};

struct Region {
  int x;
  int y;
  int width;
  int height;
};

/// The share of pixels that are light: clearly coloured, unlike panel, root window and windows here.
double litShare(const Screenshot& picture, const Region& region) {
  int lit = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) {
      const Pixel p = picture.at(x, y);
      const int high = std::max({p.red, p.green, p.blue});
      const int low = std::min({p.red, p.green, p.blue});
      lit += high > 90 && high - low > 40 ? 1 : 0;
    }
  }
  return static_cast<double>(lit) / (region.width * region.height);
}

double difference(const Screenshot& a, const Screenshot& b, const Region& region) {
  double sum = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) {
      const Pixel p = a.at(x, y);
      const Pixel q = b.at(x, y);
      sum += std::abs(p.red - q.red) + std::abs(p.green - q.green) + std::abs(p.blue - q.blue);
    }
  }
  return sum / (3.0 * region.width * region.height);
}

constexpr Region strip{0, 0, 1920, barHeight};
constexpr Region belowStrip{0, barHeight + 4, 1920, 60};

class EndToEnd : public testing::Test {
 protected:
  void startDesktop(const DesktopSession::Options& options = {}) {
    if (const auto missing = DesktopSession::missing({"xrandr"}); !missing.empty()) GTEST_SKIP() << missing;
    desktop_ = std::make_unique<DesktopSession>(options);
    desktop_->startWindowManager("openbox");
    desktop_->startPanel(barHeight);
    desktop_->startCompositor();
    // A compositor that has just started shows black for a moment.
    ASSERT_TRUE(desktop_->waitUntil([&] { return desktop_->screenshot().at(options.width / 2, 4) == panelColour; }));
  }

  void startVeloria(const std::function<void(NimbraConfig&)>& edit) {
    NimbraConfig config;
    edit(config);
    const auto folder = std::filesystem::path(desktop_->environment().at("XDG_CONFIG_HOME")) / "Veloria";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "NimbraConfig.v1.json") << encodeSettings(config).value();
    // The validation layer keeps memory of its own, so it stays away from the long runs that measure it.
    const bool soaks = std::getenv("VELORIA_SOAK_ROUNDS") != nullptr;
    veloria_ = desktop_->run({VELORIA_BINARY}, {{"VELORIA_VALIDATION", soaks ? "0" : "1"}});
    ASSERT_TRUE(desktop_->waitForWindow("Veloria", 30)) << veloria_->output();
  }

  bool waitForLight(const Region& region, double share = 0.1) {
    return desktop_->waitUntil([&] { return litShare(desktop_->screenshot(), region) > share; }, 30);
  }

  std::size_t bands() const {
    const auto windows = desktop_->windows();
    return static_cast<std::size_t>(std::count_if(windows.begin(), windows.end(),
                                                  [](const auto& window) { return window.windowClass == "Veloria"; }));
  }

  double residentMiB() const {
    std::ifstream statm("/proc/" + std::to_string(veloria_->pid()) + "/statm");
    double total = 0;
    double resident = 0;
    statm >> total >> resident;
    return resident * 4096 / (1 << 20);
  }

  std::unique_ptr<DesktopSession> desktop_;
  std::unique_ptr<ChildProcess> veloria_;
};

TEST_F(EndToEnd, overThePanelTheLightIsSeenAndMoves) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  const Screenshot first = desktop_->screenshot();
  EXPECT_EQ(litShare(first, belowStrip), 0) << "nothing outside the band";
  EXPECT_TRUE(desktop_->waitUntil([&] { return difference(first, desktop_->screenshot(), strip) > 1; }, 20));
  veloria_->signal(SIGTERM);
  EXPECT_EQ(veloria_->wait(10), 0);
  EXPECT_EQ(veloria_->output(), "");
  EXPECT_TRUE(desktop_->waitUntil([&] { return litShare(desktop_->screenshot(), strip) == 0; }));
}

TEST_F(EndToEnd, underThePanelOnlyTheBleedIsSeen) {
  startDesktop();
  if (IsSkipped()) return;
  const Screenshot before = desktop_->screenshot();
  startVeloria([](NimbraConfig& config) {
    config.extraHeight = 96;
    config.fadeBottom = 0.2;
  });
  ASSERT_TRUE(waitForLight(belowStrip, 0.05)) << veloria_->output();
  EXPECT_LT(difference(before, desktop_->screenshot(), {100, 0, 1600, barHeight}), 0.01) << "the panel is above";
  EXPECT_EQ(litShare(desktop_->screenshot(), {0, 140, 1920, 200}), 0);
}

TEST_F(EndToEnd, aHintSaysWhyNothingIsSeenUnderAnOpaquePanel) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig&) {});
  EXPECT_TRUE(desktop_->waitUntil(
      [&] { return veloria_->output().find("NIMBRA_LAYER=aboveMenuBar") != std::string::npos; }, 20))
      << veloria_->output();
}

TEST_F(EndToEnd, fullModeFillsTheScreenBelowThePanel) {
  startDesktop({.width = 960, .height = 540, .serverArguments = {}});
  if (IsSkipped()) return;
  const Screenshot before = desktop_->screenshot();
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::desktopFull; });
  ASSERT_TRUE(waitForLight({0, 60, 960, 400}, 0.2)) << veloria_->output();
  EXPECT_LT(difference(before, desktop_->screenshot(), {100, 0, 700, barHeight}), 0.01);
}

TEST_F(EndToEnd, bandsFollowTheMonitorsAndMemoryStaysFlat) {
  startDesktop();
  if (IsSkipped()) return;
  const auto plugIn = [&] {
    desktop_->runToEnd({"xrandr", "--setmonitor", "right", "960/254x1080/286+960+0", "none"});
  };
  desktop_->runToEnd({"xrandr", "--setmonitor", "left", "960/254x1080/286+0+0", "screen"});
  plugIn();
  startVeloria([](NimbraConfig& config) {
    config.allDisplays = true;
    config.layerMode = LayerMode::aboveMenuBar;
    config.framesPerSecond = 20;
  });
  ASSERT_TRUE(desktop_->waitUntil([&] { return bands() == 2; }, 20)) << veloria_->output();
  const char* wanted = std::getenv("VELORIA_SOAK_ROUNDS");
  const int rounds = wanted != nullptr ? std::atoi(wanted) : 10;
  double early = 0;
  for (int round = 0; round < rounds; ++round) {
    desktop_->runToEnd({"xrandr", "--delmonitor", "right"});
    ASSERT_TRUE(desktop_->waitUntil([&] { return bands() == 1; }, 20)) << "round " << round;
    plugIn();
    ASSERT_TRUE(desktop_->waitUntil([&] { return bands() == 2; }, 20)) << "round " << round;
    if (round == 4) early = residentMiB();
  }
  EXPECT_LT(residentMiB(), early * 1.05 + 8) << "MiB after " << rounds << " rounds, from " << early;
  ASSERT_TRUE(waitForLight({0, 0, 960, barHeight}));
  ASSERT_TRUE(waitForLight({960, 0, 960, barHeight}));
  RecordProperty("earlyMiB", std::to_string(early));
  RecordProperty("residentMiB", std::to_string(residentMiB()));
}

TEST_F(EndToEnd, aServerThatGoesAwayEndsItWithOneLine) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  desktop_->stopServer();
  EXPECT_EQ(veloria_->wait(15), 1);
  const std::string output = veloria_->output();
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
}

TEST_F(EndToEnd, brokenSettingsAreLeftAloneAndTheDefaultsShown) {
  startDesktop();
  if (IsSkipped()) return;
  const auto file =
      std::filesystem::path(desktop_->environment().at("XDG_CONFIG_HOME")) / "Veloria/NimbraConfig.v1.json";
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file) << std::string(50'000'000, '[');
  veloria_ = desktop_->run({VELORIA_BINARY}, {{"NIMBRA_LAYER", "aboveMenuBar"}});
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  EXPECT_EQ(std::filesystem::file_size(file), 50'000'000U);
}

}  // namespace
}  // namespace veloria::desktop
