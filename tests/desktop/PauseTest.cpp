// What stops the band, and what it costs while it is stopped.

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "EndToEndFixture.h"
#include "desktop/SoundServer.h"

namespace veloria::desktop {
namespace {

using nlohmann::json;

class Pause : public EndToEnd {
 protected:
  json status() const {
    const auto result = runBeside(VELORIA_BINARY, {"status", "--json"});
    return result.exitCode == 0 ? json::parse(result.output) : json{{"running", false}};
  }

  bool pausedBecause(const std::string& part) const {
    const json now = status();
    return now.value("rendering", true) == false && now["reason"].get<std::string>().find(part) != std::string::npos;
  }

  bool shown() const { return bands() > 0; }

  /// How often any of its threads has gone to sleep since it was started.
  long voluntarySwitches() const {
    long sum = 0;
    const std::string tasks = "/proc/" + std::to_string(veloria_->pid()) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
      std::ifstream lines(task.path() / "status");
      for (std::string word; lines >> word;) {
        if (word != "voluntary_ctxt_switches:") continue;
        long count = 0;
        lines >> count;
        sum += count;
      }
    }
    return sum;
  }

  double switchesPerSecond(int seconds) const {
    const long before = voluntarySwitches();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return static_cast<double>(voluntarySwitches() - before) / seconds;
  }
};

TEST_F(Pause, whileItIsPausedNothingWakesButTheWatcher) {
  if (const auto missing = SoundServer::missing(); !missing.empty()) GTEST_SKIP() << missing;
  startDesktop();
  if (IsSkipped()) return;
  SoundServer sound;
  const auto tone = sound.playSine(100);
  startVeloria(
      [](NimbraConfig& config) {
        config.layerMode = LayerMode::aboveMenuBar;
        config.visualizer = Visualizer::music;
        config.pointerMode = PointerMode::glow;
      },
      sound.environment());
  ASSERT_TRUE(waitForLight(strip)) << veloria_->output();
  EXPECT_GT(switchesPerSecond(1), 30) << "what is measured is there";
  ASSERT_EQ(runBeside(NIMBRA_BINARY, {"pause"}).exitCode, 0);
  ASSERT_TRUE(desktop_->waitUntil([&] { return !shown(); }));
  std::this_thread::sleep_for(std::chrono::seconds(3));  // what was under way ends
  const auto processor = [&] {
    return desktop_->runToEnd({"ps", "-o", "cputimes=", "-p", std::to_string(veloria_->pid())});
  };
  const std::string used = processor();
  EXPECT_LT(switchesPerSecond(10), 5);
  EXPECT_EQ(processor(), used) << "seconds of processor time";
  ASSERT_EQ(runBeside(NIMBRA_BINARY, {"resume"}).exitCode, 0);
  EXPECT_TRUE(waitForLight(strip));
  EXPECT_TRUE(desktop_->waitUntil([&] { return status()["audio"]["bass"] > 0.5; }, 20)) << "listening again";
}

}  // namespace
}  // namespace veloria::desktop
