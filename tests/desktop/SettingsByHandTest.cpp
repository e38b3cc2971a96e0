// The settings window of the running program, moved by a real keyboard and pointer.

#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "EndToEndFixture.h"

namespace veloria::desktop {
namespace {

using nlohmann::json;

class SettingsByHand : public EndToEnd {
 protected:
  void openSettings() {
    ASSERT_EQ(runBeside(VELORIA_BINARY, {}).exitCode, 0);
    window_ = desktop_->waitForWindow("Veloria settings");
    ASSERT_TRUE(window_) << veloria_->output();
    desktop_->runToEnd({"xdotool", "windowactivate", "--sync", std::to_string(window_->id)});
  }

  void key(const std::string& name) { desktop_->runToEnd({"xdotool", "key", name}); }

  /// What is stored; nothing when it is not there or not whole.
  std::optional<json> stored() const {
    std::ifstream file(desktop_->environment().at("XDG_CONFIG_HOME") + "/Veloria/NimbraConfig.v1.json");
    std::stringstream text;
    text << file.rdbuf();
    json record = json::parse(text.str(), nullptr, false);
    if (record.is_discarded() || !record.is_object()) return std::nullopt;
    return record;
  }

  double opacity() const {
    const auto record = stored();
    return record ? record->value("opacity", -1.0) : -1.0;
  }

  /// Looks for the setting and goes from field to field until the arrow keys move it.
  bool focusSlider(const std::string& words) {
    key("ctrl+f");
    desktop_->runToEnd({"xdotool", "type", words});
    const double before = opacity();
    for (int i = 0; i < 15; ++i) {
      key("Tab");
      key("Left");
      if (desktop_->waitUntil([&] { return opacity() != before; }, 1)) return true;
    }
    return false;
  }

  std::optional<WindowInfo> window_;
};

TEST_F(SettingsByHand, aSliderThatIsHeldDownMovesTheBandAndLosesNothing) {
  if (const auto missing = missingProgram({"xdotool"}); !missing.empty()) GTEST_SKIP() << missing << " is missing";
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.opacity = 0.9;
  });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  ASSERT_NO_FATAL_FAILURE(openSettings());
  ASSERT_TRUE(focusSlider("opacity")) << veloria_->output();

  auto held = desktop_->run({"xdotool", "key", "--repeat", "150", "--delay", "30", "shift+Left"});
  int looks = 0, torn = 0;
  while (held->running()) {
    ++looks;
    torn += stored() ? 0 : 1;
  }
  EXPECT_GT(looks, 100);
  EXPECT_EQ(torn, 0) << "the file is whole at every moment";
  EXPECT_LT(opacity(), 0.89);

  key("Home");
  EXPECT_TRUE(desktop_->waitUntil([&] { return opacity() == 0; }));
  EXPECT_TRUE(desktop_->waitUntil([&] { return litShare(desktop_->screenshot(), strip) < 0.02; }))
      << "the band follows";
  key("End");
  EXPECT_TRUE(waitForLight(strip)) << "and comes back";
  ASSERT_TRUE(desktop_->waitUntil([&] { return opacity() == 1; }));

  held = desktop_->run({"xdotool", "key", "--repeat", "500", "--delay", "20", "shift+Left"});
  ASSERT_TRUE(desktop_->waitUntil([&] { return opacity() < 1; }));
  const double early = opacity();
  EXPECT_TRUE(desktop_->waitUntil([&] { return opacity() < early; })) << "what is set reaches the disk on the way";
  const double last = opacity();
  veloria_->signal(SIGKILL);
  veloria_->wait(5);
  held->stop();
  ASSERT_TRUE(stored()) << "killed in the middle";
  EXPECT_LE(opacity(), last);
}

TEST_F(SettingsByHand, undoAndEscapeWorkFromTheKeyboard) {
  if (const auto missing = missingProgram({"xdotool"}); !missing.empty()) GTEST_SKIP() << missing << " is missing";
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_NO_FATAL_FAILURE(openSettings());
  const double before = opacity();
  ASSERT_TRUE(focusSlider("opacity"));
  key("ctrl+z");
  EXPECT_TRUE(desktop_->waitUntil([&] { return opacity() == before; }));
  key("Escape");
  key("Escape");
  EXPECT_TRUE(desktop_->waitUntil([&] {
    for (const auto& window : desktop_->windows()) {
      if (window.name == "Veloria settings") return false;
    }
    return true;
  }));
  EXPECT_TRUE(veloria_->running()) << "closing the window does not end the band";
}

}  // namespace
}  // namespace veloria::desktop
