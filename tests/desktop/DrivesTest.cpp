// What drives the band, on a real desktop: a real sound server, a web server, the nimbra command and the desktop's
// picture.

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>

#include "EndToEndFixture.h"
#include "WebServer.h"
#include "desktop/SoundServer.h"

namespace veloria::desktop {
namespace {

using nlohmann::json;

class Drives : public EndToEnd {
 protected:
  json status() const {
    const auto result = runBeside(VELORIA_BINARY, {"status", "--json"});
    return result.exitCode == 0 ? json::parse(result.output) : json{{"running", false}};
  }

  bool waitForStatus(const std::function<bool(const json&)>& condition, double seconds = 30) {
    return desktop_->waitUntil([&] { return condition(status()); }, seconds);
  }

  int nimbra(const std::vector<std::string>& arguments) const { return runBeside(NIMBRA_BINARY, arguments).exitCode; }

  static double band(const json& status, const char* name) { return status["audio"][name].get<double>(); }
};

/// The share of pixels that are clearly lighter in red than in green and blue.
double redShare(const Screenshot& picture, const Region& region) {
  int red = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) {
      const Pixel p = picture.at(x, y);
      red += p.red > 110 && p.red > p.green + 50 && p.red > p.blue + 30 ? 1 : 0;
    }
  }
  return static_cast<double>(red) / (region.width * region.height);
}

TEST_F(Drives, musicMovesTheBandAndASoundServerMayDie) {
  if (const auto missing = SoundServer::missing(); !missing.empty()) GTEST_SKIP() << missing;
  startDesktop();
  if (IsSkipped()) return;
  SoundServer sound({"speakers", "headphones"});
  startVeloria(
      [](NimbraConfig& config) {
        config.layerMode = LayerMode::aboveMenuBar;
        config.visualizer = Visualizer::music;
      },
      sound.environment());
  ASSERT_TRUE(waitForStatus([](const json& s) { return s["audio"]["running"] == true; })) << status().dump(2);
  EXPECT_EQ(band(status(), "level"), 0);

  auto tone = sound.playSine(100);
  EXPECT_TRUE(waitForStatus([](const json& s) { return band(s, "bass") > 0.5 && band(s, "treble") < 0.05; }))
      << status().dump(2);
  tone = sound.playSine(5000);
  EXPECT_TRUE(waitForStatus([](const json& s) { return band(s, "treble") > 0.1 && band(s, "bass") < 0.05; }))
      << status().dump(2);
  sound.setDefaultSink("headphones");
  tone = sound.playSine(100, "headphones");
  EXPECT_TRUE(waitForStatus([](const json& s) { return band(s, "bass") > 0.5; })) << status().dump(2);

  sound.kill();
  EXPECT_TRUE(waitForStatus([](const json& s) {
    return s["audio"]["running"] == false && s["audio"]["error"].is_string() && band(s, "level") == 0;
  })) << status().dump(2);
  EXPECT_EQ(status()["rendering"], true);
  const Screenshot before = desktop_->screenshot();
  EXPECT_TRUE(desktop_->waitUntil([&] { return difference(before, desktop_->screenshot(), strip) > 0.5; }, 20));
}

TEST_F(Drives, anAgentsFailureIsSeen) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.visualizer = Visualizer::agent;
  });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  const double calm = redShare(desktop_->screenshot(), strip);
  ASSERT_EQ(nimbra({"run", "--", "sh", "-c", "exit 3"}), 3);
  // New light alone takes the alert's colour, and a loaded machine draws few frames of it while the alert lasts.
  constexpr double seen = 0.1;
  double most = 0;
  desktop_->waitUntil(
      [&] {
        most = std::max(most, redShare(desktop_->screenshot(), strip));
        return most > calm + seen;
      },
      1.5);
  EXPECT_GT(most, calm + seen) << "from " << calm;
  ASSERT_EQ(nimbra({"idle"}), 0);
  EXPECT_TRUE(desktop_->waitUntil([&] { return redShare(desktop_->screenshot(), strip) < calm + seen / 2; }, 30));
}

TEST_F(Drives, thereIsOneOfItAndItListensToItsUser) {
  startDesktop();
  if (IsSkipped()) return;
  EXPECT_EQ(runBeside(VELORIA_BINARY, {"status"}).exitCode, 1);
  EXPECT_EQ(nimbra({"pause"}), 1);
  startVeloria([](NimbraConfig& config) { config.layerMode = LayerMode::aboveMenuBar; });
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();

  const auto second = runBeside(VELORIA_BINARY, {});
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_EQ(second.output.substr(0, second.output.find('\n')), "Veloria is running already; here are its settings.");
  EXPECT_TRUE(desktop_->waitForWindow("Veloria settings"));
  const json now = status();
  EXPECT_EQ(now["layer"], "aboveMenuBar");
  ASSERT_EQ(now["screens"].size(), 1U);
  EXPECT_EQ(now["screens"][0]["frame"], json::parse("[0.0, 1048.0, 1920.0, 32.0]"));
  EXPECT_TRUE(waitForStatus([](const json& s) { return s["screens"][0]["fps"] > 0 && s["screens"][0]["gpuMs"] > 0; }));

  EXPECT_EQ(nimbra({"pause"}), 0);
  EXPECT_TRUE(desktop_->waitUntil([&] { return bands() == 0; }));
  EXPECT_EQ(status()["rendering"], false);
  EXPECT_NE(status()["reason"].get<std::string>().find("nimbra resume"), std::string::npos);
  EXPECT_EQ(nimbra({"resume"}), 0);
  EXPECT_TRUE(waitForLight(strip));
  EXPECT_EQ(nimbra({"preset", "No such look"}), 1);
  EXPECT_EQ(nimbra({"preset", "Geomagnetic Storm"}), 0);

  veloria_->signal(SIGTERM);
  EXPECT_EQ(veloria_->wait(10), 0) << veloria_->output();
  EXPECT_EQ(status()["running"], false);
}

TEST_F(Drives, theWeatherBlows) {
  startDesktop();
  if (IsSkipped()) return;
  const tests::WebServer web;
  startVeloria([](NimbraConfig& config) { config.visualizer = Visualizer::wind; },
               {{"NIMBRA_WEATHER_URL", web.url("/prefix")}});
  EXPECT_TRUE(waitForStatus([](const json& s) {
    return s["weather"].is_object() && s["weather"]["readout"] == "12°C · wind 8 mph · gusts 16 mph · cloud 75%";
  })) << status().dump(2);
}

TEST_F(Drives, theBandTakesTheColoursOfTheDesktopsPicture) {
  startDesktop();
  if (IsSkipped()) return;
  desktop_->runToEnd({"hsetroot", "-add", "#ff2000", "-add", "#ff2000", "-add", "#c00060", "-gradient", "0"});
  startVeloria([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.matchWallpaper = true;
    config.colorCycle = 0;
    config.hueSpread = 0;
  });
  EXPECT_TRUE(desktop_->waitUntil([&] { return redShare(desktop_->screenshot(), strip) > 0.1; }, 30))
      << redShare(desktop_->screenshot(), strip) << veloria_->output();
}

TEST_F(Drives, itSaysWhyThereAreNoColoursToTake) {
  startDesktop();
  if (IsSkipped()) return;
  startVeloria([](NimbraConfig& config) { config.matchWallpaper = true; });
  EXPECT_TRUE(waitForStatus([](const json& s) {
    return s["desktopPicture"]["error"] == "nobody tells which picture the desktop shows";
  })) << status().dump(2);
}

}  // namespace
}  // namespace veloria::desktop
