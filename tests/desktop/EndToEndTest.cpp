#include <csignal>
#include <filesystem>
#include <fstream>

#include "EndToEndFixture.h"
#include "settings/SettingsCodec.h"

namespace veloria::desktop {
namespace {

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
  EXPECT_EQ(complaints(), "");
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
      [&] { return veloria_->output().find("hides the light. In the settings") != std::string::npos; }, 20))
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
  const std::string output = complaints();
  EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
}

TEST_F(EndToEnd, withoutAGpuAWindowSaysSoAndNothingElseIsShown) {
  if (const auto missing = missingProgram({"xdotool"}); !missing.empty()) GTEST_SKIP() << missing << " is missing";
  startDesktop();
  if (IsSkipped()) return;
  veloria_ =
      desktop_->run({VELORIA_BINARY}, {{"VK_DRIVER_FILES", "/nowhere.json"}, {"VK_ICD_FILENAMES", "/nowhere.json"}});
  const auto box = desktop_->waitForWindow("Veloria", 20);
  ASSERT_TRUE(box) << veloria_->output();
  EXPECT_EQ(bands(), 0U);
  EXPECT_EQ(veloria_->output(),
            "Veloria could not start\nThis computer has no Vulkan device, so Veloria cannot run.\n");
  desktop_->runToEnd({"xdotool", "windowactivate", "--sync", std::to_string(box->id), "key", "Escape"});
  EXPECT_EQ(veloria_->wait(10), 3) << "the service manager does not start it again";
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
