// An hour of a driver's life on a virtual clock, with writers, sources and people that do as they like.

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <random>

#include "Process.h"
#include "scene/BuiltInScripts.h"
#include "scene/SceneDriver.h"
#include "settings/Palette.h"

namespace veloria {
namespace {

/// Hands over noise, or fails, when the test pleases.
class NoisyTap : public AudioTap {
 public:
  explicit NoisyTap(Handlers& handlers) : handlers_(handlers) {}
  ~NoisyTap() override { handlers_ = {}; }
  void start(Handlers handlers) override { handlers_ = std::move(handlers); }
  void stop() override { handlers_ = {}; }

 private:
  Handlers& handlers_;
};

class PatientFetcher : public HttpFetcher {
 public:
  void get(const std::string&, std::size_t, double, Done done) override { waiting = std::move(done); }
  Done waiting;
};

class Hour : public testing::Test {
 protected:
  Hour() {
    driver_.onConfig = [this](const NimbraConfig& config) {
      driven_ = config;
      for (const double value : {config.exposure, config.glowAmount, config.emitRate, config.timeScale,
                                 config.curlStrength, config.hueShift, config.flowSpeed, config.saturation}) {
        ASSERT_TRUE(std::isfinite(value));
      }
    };
  }

  SceneDriver::Ports ports() {
    return {.settings = [this]() -> const NimbraConfig& { return settings_; },
            .mediaClock = [this] { return now_; },
            .wallClock = [this] { return 1.7e9 + now_; },
            .agentStateFile = path_,
            .makeAudioSource = [this] { return std::make_unique<AudioSource>(std::make_unique<NoisyTap>(tap_)); },
            .weather = {.http = &http_, .clock = [this] { return now_; }, .baseUrl = "https://weather.example"},
            .sampleWallpaper =
                [this](const auto& done) {
                  if (below(3) > 0) done(below(2) > 0 ? std::optional(Palette::presets()[below(5)]) : std::nullopt);
                }};
  }

  std::size_t below(std::size_t count) { return random_() % count; }
  double any() { return std::uniform_real_distribution<>(-2, 2)(random_); }

  std::string randomState() {
    switch (below(8)) {
      case 0:
        return std::string(below(2000), '[');
      case 1:
        return "{\"busy\": 1e400, \"err\": 1}";
      case 2:
        return "{\"busy\": 1.7e308, \"err\": -1.7e308, \"ok\": " + std::to_string(any()) + "}";
      case 3:
        return R"({"sessions": {"a": {"busy": 1, "expires": )" + std::to_string(1.7e9 + now_ + any()) + "}}}";
      case 4: {
        std::string bytes(below(300), ' ');
        for (char& byte : bytes) byte = static_cast<char>(random_());
        return bytes;
      }
      case 5:
        return "{\"n" + std::to_string(below(40)) + "\": 1, \"err\": 1, \"palette\": [\"#123456\", \"#654321\"]}";
      default:
        return R"({"busy": 0.5, "alert_until": )" + std::to_string(1.7e9 + now_ + 1) +
               R"(, "alert_palette": ["#ff0000", "#aa0000"]})";
    }
  }

  void write(const std::string& text) {
    ::rmdir(path_.c_str());
    std::ofstream(folder_.file("new")) << text;
    ASSERT_EQ(::rename(folder_.file("new").c_str(), path_.c_str()), 0);
  }

  void disturb() {
    switch (below(10)) {
      case 0:
        settings_.visualizer = static_cast<Visualizer>(below(rawValues<Visualizer>.size()));
        settings_.customScript = below(2) > 0 ? "bind glow = 1 / (err - 1)\npalette wallpaper" : "bind glow = )";
        settings_.matchWallpaper = below(2) > 0;
        settings_.tempo = 1 + any();
        return driver_.recompile();
      case 1:
        driver_.suspend();
        now_ += 5 * std::abs(any());
        return driver_.resume();
      case 2:
        if (tap_.failed) tap_.failed("gone");
        return;
      case 3:
        if (http_.waiting) std::exchange(http_.waiting, nullptr)(weatherAnswer());
        return;
      case 4:
        ::unlink(path_.c_str());
        if (below(2) > 0) ::mkdir(path_.c_str(), 0700);
        return;
      default:
        return write(randomState());
    }
  }

  Result<std::string> weatherAnswer() {
    if (below(2) > 0) return Failure{"no network"};
    return R"({"current": {"wind_speed_10m": )" + std::to_string(10 * any()) + ", \"cloud_cover\": 400}}";
  }

  void play() {
    if (!tap_.audio) return;
    const float scale = static_cast<float>(any());
    std::vector<float> samples(1024, scale);
    for (std::size_t i = 0; i < samples.size(); i += 1 + below(64)) samples[i] = -scale;
    if (below(50) == 0) samples[5] = std::numeric_limits<float>::quiet_NaN();
    const std::span<const float> channels[] = {samples};
    tap_.audio({.format = AudioFormat{48000, 1, 0, 32, true}, .unreadable = {}, .channels = channels});
  }

  void tick() {
    now_ += SceneDriver::tickSeconds;
    if (ticks_++ % 20 == 0) disturb();
    if (ticks_ % 7 == 0) play();
    driver_.tick();
  }

  tests::TemporaryFolder folder_;
  std::string path_ = folder_.file("state.json");
  std::mt19937 random_{7};
  NimbraConfig settings_;
  NimbraConfig driven_;
  double now_ = 0;
  long ticks_ = 0;
  AudioTap::Handlers tap_;
  PatientFetcher http_;
  SceneDriver driver_{ports()};
};

TEST_F(Hour, EndsAsItBegan) {
  constexpr long minute = 1800;
  std::size_t early = 0;
  for (long i = 0; i < 60 * minute; ++i) {
    tick();
    if (HasFatalFailure()) return;
    if (i == 20 * minute) early = ::mallinfo2().uordblks;
  }
  EXPECT_LT(::mallinfo2().uordblks, early + (1U << 18)) << "bytes in use grow";
  EXPECT_NEAR(driver_.channels.values.at("t"), now_, 1e-6);

  settings_ = {};
  settings_.visualizer = Visualizer::agent;
  write(R"({"busy": 0, "err": 0, "ok": 0})");
  driver_.recompile();
  for (int i = 0; i < 1000; ++i) {
    now_ += SceneDriver::tickSeconds;
    driver_.tick();
  }
  SceneDriver fresh(ports());
  NimbraConfig wanted;
  fresh.onConfig = [&](const NimbraConfig& config) { wanted = config; };
  fresh.recompile();
  fresh.tick();
  EXPECT_EQ(driven_.customPalette, wanted.customPalette);
  EXPECT_NEAR(driven_.exposure, wanted.exposure, 1e-6);
  EXPECT_NEAR(driven_.hueShift, wanted.hueShift, 1e-6);
}

}  // namespace
}  // namespace veloria
