// The band among the desktop's other things: the panel's text, full-screen windows, the pointer.

#include <algorithm>
#include <cmath>
#include <ctime>
#include <nlohmann/json.hpp>

#include "EndToEndFixture.h"

namespace veloria::desktop {
namespace {

using nlohmann::json;

double luminance(const Pixel& p) {
  return 0.2126 * p.red + 0.7152 * p.green + 0.0722 * p.blue;
}

class AtHome : public EndToEnd {
 protected:
  json status() const {
    const auto result = runBeside(VELORIA_BINARY, {"status", "--json"});
    return result.exitCode == 0 ? json::parse(result.output) : json{{"rendering", false}, {"reason", "not running"}};
  }
  bool waitForStatus(const std::function<bool(const json&)>& condition) {
    return desktop_->waitUntil([&] { return condition(status()); }, 30);
  }
  bool waitUntilDrawing(bool drawing) {
    return waitForStatus([&](const json& now) { return now["rendering"] == drawing; });
  }
};

// The clock's strokes are white on the panel's colour.
constexpr Region clockPlace{1870, 0, 50, barHeight};

std::vector<bool> strokes(const Screenshot& picture) {
  std::vector<bool> result;
  for (int y = 0; y < clockPlace.height; ++y)
    for (int x = 0; x < clockPlace.width; ++x)
      result.push_back(luminance(picture.at(clockPlace.x + x, clockPlace.y + y)) > 180);
  return result;
}

/// How much lighter the strokes are than what is around them, of 255.
double contrast(const Screenshot& picture, const std::vector<bool>& strokesThere) {
  double inside = 0;
  double outside = 0;
  const auto count = static_cast<double>(std::count(strokesThere.begin(), strokesThere.end(), true));
  std::size_t i = 0;
  for (int y = 0; y < clockPlace.height; ++y) {
    for (int x = 0; x < clockPlace.width; ++x) {
      (strokesThere[i++] ? inside : outside) += luminance(picture.at(clockPlace.x + x, clockPlace.y + y));
    }
  }
  return inside / count - outside / (static_cast<double>(strokesThere.size()) - count);
}

TEST_F(AtHome, thePanelsClockStaysLegibleUnderTheLight) {
  startDesktop();
  if (IsSkipped()) return;
  // Both pictures have to show the same minute.
  ASSERT_TRUE(desktop_->waitUntil([] { return std::time(nullptr) % 60 < 40; }, 25));
  const Screenshot without = desktop_->screenshot();
  const std::vector<bool> text = strokes(without);
  ASSERT_GT(std::count(text.begin(), text.end(), true), 20) << "the clock is where it is expected";
  const double before = contrast(without, text);

  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.preserveMenuBarText = true;
  });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  ASSERT_TRUE(waitForStatus([](const json& now) { return now["capture"]["running"] == true; })) << status().dump(2);
  double after = 0;
  EXPECT_TRUE(desktop_->waitUntil([&] { return (after = contrast(desktop_->screenshot(), text)) > 0.6 * before; }, 15));
  RecordProperty("contrastWithout", std::to_string(before));
  RecordProperty("contrastWith", std::to_string(after));
  std::printf("contrast of the clock: %.0f without the band, %.0f with it\n", before, after);
  EXPECT_GT(litShare(desktop_->screenshot(), {0, 0, 1800, barHeight}), 0.1) << "the light is there all the same";

  desktop_->stopCompositor();
  EXPECT_TRUE(waitForStatus([](const json& now) { return now["capture"]["error"].is_string(); })) << status().dump(2);
  desktop_->startCompositor();
  EXPECT_TRUE(waitForStatus([](const json& now) { return now["capture"]["running"] == true; })) << status().dump(2);
}

TEST_F(AtHome, aFullScreenWindowPausesItWhereThatIsWanted) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  auto window = desktop_->run({"xterm", "-fullscreen"});
  EXPECT_TRUE(waitUntilDrawing(false));
  EXPECT_NE(status()["reason"].get<std::string>().find("full-screen"), std::string::npos) << status();
  EXPECT_TRUE(desktop_->waitUntil([&] { return bands() == 0; })) << "out of the way, not just dark";
  window.reset();
  EXPECT_TRUE(waitUntilDrawing(true));
  EXPECT_TRUE(waitForLight(strip));
}

TEST_F(AtHome, aFullScreenWindowIsLeftAloneWhereNoPauseIsWanted) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.pauseInFullScreen = false;
  });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  const auto window = desktop_->run({"xterm", "-fullscreen", "-bg", "black"});
  ASSERT_TRUE(desktop_->waitForWindow("XTerm", 20));
  EXPECT_FALSE(desktop_->waitUntil([&] { return status()["rendering"] == false; }, 4));
}

TEST_F(AtHome, thePointerLightsTheBand) {
  startDesktop();
  if (IsSkipped()) return;
  desktop_->runToEnd({"xdotool", "mousemove", "900", "800"});
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.pointerMode = PointerMode::glow;
    config.emitRate = 0;
    config.ambientLevel = 0;
  });
  ASSERT_TRUE(
      waitForStatus([](const json& now) { return now["pointer"]["available"] == true && now["rendering"] == true; }));
  const auto brightness = [&](int x) {
    const Screenshot picture = desktop_->screenshot();
    double sum = 0;
    for (int y = 0; y < barHeight; ++y)
      for (int dx = -30; dx < 30; ++dx) sum += luminance(picture.at(x + dx, y));
    return sum / (60.0 * barHeight);
  };
  ASSERT_TRUE(desktop_->waitUntil([&] { return bands() == 1; }, 20));
  for (const int x : {400, 1500}) {
    desktop_->runToEnd({"xdotool", "mousemove", std::to_string(x), "16"});
    EXPECT_TRUE(desktop_->waitUntil([&] { return brightness(x) > brightness(1900 - x) + 15; }, 20))
        << x << ": " << brightness(x) << " against " << brightness(1900 - x);
  }
}

}  // namespace
}  // namespace veloria::desktop
