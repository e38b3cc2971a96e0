// The driver with its sources: who is asked when, and what becomes of the answers.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>

#include "Process.h"
#include "scene/BuiltInScripts.h"
#include "scene/SceneDriver.h"
#include "settings/Palette.h"

namespace veloria {
namespace {

/// What a tap does is up to the test; it outlives the source that owns the tap.
struct TapState {
  AudioTap::Handlers handlers;
  int starts = 0;
  bool running = false;
};

class ScriptedTap : public AudioTap {
 public:
  explicit ScriptedTap(std::shared_ptr<TapState> state) : state_(std::move(state)) {}
  ~ScriptedTap() override { stop(); }
  void start(Handlers handlers) override {
    state_->handlers = std::move(handlers);
    state_->running = true;
    ++state_->starts;
  }
  void stop() override { state_->running = false; }

 private:
  std::shared_ptr<TapState> state_;
};

class ScriptedFetcher : public HttpFetcher {
 public:
  void get(const std::string& url, std::size_t, double, Done done) override {
    urls.push_back(url);
    answer = std::move(done);
  }
  std::vector<std::string> urls;
  Done answer;
};

class DriverSources : public testing::Test {
 protected:
  DriverSources() {
    driver.onConfig = [this](const NimbraConfig& config) { driven = config; };
  }

  SceneDriver::Ports ports() {
    return {.settings = [this]() -> const NimbraConfig& { return settings; },
            .mediaClock = [this] { return now; },
            .wallClock = [this] { return wall + now; },
            .agentStateFile = folder.file("state.json"),
            .makeAudioSource =
                [this] {
                  taps.push_back(std::make_shared<TapState>());
                  return std::make_unique<AudioSource>(std::make_unique<ScriptedTap>(taps.back()));
                },
            .weather = {.http = &http, .clock = [this] { return now; }, .baseUrl = "https://weather.example"},
            .sampleWallpaper = [this](auto done) { wallpaperRequests.push_back(std::move(done)); }};
  }

  const NimbraConfig& tickAfter(double seconds) {
    now += seconds;
    driver.tick();
    return driven;
  }

  void choose(Visualizer mode, std::string script = "") {
    settings.visualizer = mode;
    settings.customScript = std::move(script);
    driver.recompile();
  }

  /// Tones in the bass, the middle and the treble, with these amplitudes.
  void play(TapState& tap, double bass, double mid = 0, double treble = 0) {
    std::vector<float> samples(1024);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const double angle = 2 * 3.14159265358979 * static_cast<double>(i) / 48000;
      samples[i] = static_cast<float>(bass * std::sin(140 * angle) + mid * std::sin(1000 * angle) +
                                      treble * std::sin(5000 * angle));
    }
    const std::span<const float> channels[] = {samples, samples};
    tap.handlers.audio({.format = AudioFormat{48000, 2, 0, 32, true}, .unreadable = {}, .channels = channels});
  }

  struct Glide {
    const char* channel;
    double target, timeConstant;
  };
  /// One tick takes each channel as far from 0 towards its target as its time constant says.
  void expectGlides(const std::vector<Glide>& glides) {
    const double seconds = 0.05;
    tickAfter(seconds);
    for (const auto& [name, target, timeConstant] : glides) {
      EXPECT_GT(std::abs(target), 0.01) << name;
      EXPECT_NEAR(channel(name), (1 - std::exp(-seconds / timeConstant)) * target, 1e-6) << name;
    }
  }

  double channel(const char* name) { return driver.channels.values.at(name); }

  tests::TemporaryFolder folder;
  NimbraConfig settings;
  NimbraConfig driven;
  double now = 500;
  double wall = 1.7e9;
  ScriptedFetcher http;
  std::vector<std::shared_ptr<TapState>> taps;
  std::vector<std::function<void(std::optional<Palette>)>> wallpaperRequests;
  SceneDriver driver{ports()};
};

TEST_F(DriverSources, SoundIsListenedToInTheMusicModeOnly) {
  choose(Visualizer::autonomous);
  EXPECT_EQ(driver.audio(), nullptr);
  choose(Visualizer::music);
  ASSERT_EQ(taps.size(), 1U);
  EXPECT_TRUE(taps[0]->running);
  tickAfter(0.03);
  play(*taps[0], 0.5, 0.2, 0.1);
  const AudioSource::Bands bands = driver.audio()->bands();
  expectGlides({{"level", bands.level, 0.08},
                {"bass", bands.bass, 0.06},
                {"mid", bands.mid, 0.09},
                {"treble", bands.treble, 0.07}});
  EXPECT_GT(bands.beat, 0.5);
  EXPECT_EQ(channel("beat"), bands.beat) << "it arrives at once";
  choose(Visualizer::wind);
  EXPECT_FALSE(taps[0]->running);
  EXPECT_EQ(driver.audio(), nullptr);
  tickAfter(0.06);
  EXPECT_LT(channel("bass"), 0.5);
  EXPECT_GT(channel("bass"), 0.1);
  EXPECT_EQ(channel("beat"), 0);
}

TEST_F(DriverSources, AFailedTapIsReplacedByTheNextCompileAndNotBefore) {
  choose(Visualizer::music);
  play(*taps[0], 1);
  tickAfter(0.03);
  taps[0]->handlers.failed("the server is gone");
  for (int i = 0; i < 90; ++i) tickAfter(1.0 / 30);
  ASSERT_EQ(taps.size(), 1U);
  EXPECT_EQ(driver.audio()->lastError(), "the server is gone");
  EXPECT_LT(channel("bass"), 0.01);
  choose(Visualizer::music);
  ASSERT_EQ(taps.size(), 2U);
  EXPECT_TRUE(taps[1]->running);
  choose(Visualizer::music);
  EXPECT_EQ(taps.size(), 2U);
}

TEST_F(DriverSources, ASuspendedDriverListensToNothing) {
  choose(Visualizer::music);
  driver.suspend();
  EXPECT_FALSE(taps[0]->running);
  choose(Visualizer::music);
  EXPECT_EQ(taps.size(), 1U);
  driver.resume();
  ASSERT_EQ(taps.size(), 2U);
  EXPECT_TRUE(taps[1]->running);
}

TEST_F(DriverSources, TheWeatherIsAskedForInItsTwoModesOnly) {
  settings.weatherLatitude = 52.52;
  settings.weatherLongitude = 13.405;
  choose(Visualizer::autonomous);
  tickAfter(0.03);
  EXPECT_TRUE(http.urls.empty());
  choose(Visualizer::wind);
  tickAfter(0.03);
  tickAfter(0.03);
  ASSERT_EQ(http.urls.size(), 1U);
  EXPECT_NE(http.urls[0].find("latitude=52.5200&longitude=13.4050"), std::string::npos);
  http.answer(std::string(R"({"current": {"temperature_2m": 20, "wind_speed_10m": 30, "wind_gusts_10m": 40,
                              "cloud_cover": 80, "precipitation": 2.5}})"));
  const std::vector<Glide> glides{
      {"temp", 20, 2}, {"wind", 30, 2}, {"gust", 40, 2}, {"cloud", 0.8, 2}, {"rain", 0.5, 2}};
  expectGlides(glides);
  choose(Visualizer::weather);
  driver.channels.values.clear();
  for (const Glide& glide : glides) driver.channels.values[glide.channel] = 0;
  expectGlides(glides);
  tickAfter(700);
  EXPECT_EQ(http.urls.size(), 2U) << "ten minutes later";
}

TEST_F(DriverSources, AgentChannelsAreLiveInEveryModeAndItsPaletteWins) {
  std::ofstream(folder.file("state.json")) << R"({"busy": 1, "palette": ["#ff0000", "#00ff00"]})";
  driver.wallpaper = Palette::presets().front();
  settings.matchWallpaper = true;
  for (std::size_t mode = 0; mode < rawValues<Visualizer>.size(); ++mode) {
    choose(static_cast<Visualizer>(mode), "palette #0000ff #0000ff\npalette wallpaper");
    EXPECT_EQ(tickAfter(0.03).customPalette->stops.front(), (ColorStop{1, 0, 0})) << mode;
    EXPECT_EQ(channel("busy"), 1) << mode;
  }
  choose(Visualizer::agent);
  const double busy = tickAfter(0.03).curlStrength;
  EXPECT_NEAR(busy, 1.2 + 4.2, 1e-6);
}

TEST_F(DriverSources, AFailureFlashesAndFadesInASecondAndAHalf) {
  settings.tempo = 2;
  choose(Visualizer::agent);
  const NimbraConfig calm = tickAfter(0.03);
  wall = 1.7e9 - now;  // the wall clock starts here
  const auto wallNow = [this] { return wall + now; };
  std::ofstream(folder.file("state.json"))
      << std::fixed << R"({"alert_until": )" << wallNow() + 1.5 << R"(, "alert_palette": ["#ff0000", "#aa0000"]})";
  const NimbraConfig bright = tickAfter(0.001);
  EXPECT_GT(bright.exposure, calm.exposure + 1.4);
  EXPECT_NEAR(bright.curlStrength, calm.curlStrength + 2.5, 0.01) << "the pace has no part in it";
  EXPECT_EQ(bright.customPalette->stops[0], (ColorStop{1, 0, 0}));
  EXPECT_LT(bright.hueSpread, 0.3 * calm.hueSpread);
  const NimbraConfig half = tickAfter(0.75);
  EXPECT_NEAR(half.exposure, calm.exposure + 0.75, 0.02);
  const NimbraConfig after = tickAfter(0.75);
  EXPECT_EQ(after.exposure, calm.exposure);
  EXPECT_NE(after.customPalette->stops[0], (ColorStop{1, 0, 0}));
}

TEST_F(DriverSources, TheWallpaperIsSampledAtTheStartAndThenEachTwentySecondsWhileWanted) {
  ASSERT_EQ(wallpaperRequests.size(), 1U);
  choose(Visualizer::script, "");
  tickAfter(100);
  EXPECT_EQ(wallpaperRequests.size(), 1U);
  for (const bool byScript : {true, false}) {
    settings.matchWallpaper = !byScript;
    choose(Visualizer::script, byScript ? "palette wallpaper" : "");
    wallpaperRequests.clear();
    tickAfter(100);
    ASSERT_EQ(wallpaperRequests.size(), 1U) << byScript;
    tickAfter(19.9);
    ASSERT_EQ(wallpaperRequests.size(), 1U) << byScript;
    tickAfter(0.2);
    ASSERT_EQ(wallpaperRequests.size(), 2U) << byScript;
  }
  wallpaperRequests.back()(Palette{"Custom", std::vector<ColorStop>(4, ColorStop{0, 1, 0})});
  EXPECT_EQ(tickAfter(0.03).customPalette->stops[2], (ColorStop{0, 1, 0}));
  wallpaperRequests.back()(std::nullopt);  // a picture that can't be read takes nothing away
  ASSERT_TRUE(tickAfter(0.03).customPalette);
  EXPECT_EQ(driven.customPalette->stops[2], (ColorStop{0, 1, 0}));
}

TEST_F(DriverSources, AnAnswerThatComesTooLateIsNobodys) {
  std::function<void(std::optional<Palette>)> late;
  {
    auto mine = ports();
    mine.sampleWallpaper = [&](auto done) { late = std::move(done); };
    const SceneDriver gone(mine);
  }
  late(Palette::presets().front());
}

TEST_F(DriverSources, NamesThatMeanSomethingArriveAmongAnyNumberOfOthers) {
  const auto write = [&](double mine) {
    std::string text = R"({"busy": 1, "a1": 1.7e12, "mine": )" + std::to_string(mine);
    for (int i = 0; i < 5000; ++i) text += ",\"!" + std::to_string(i) + "\": 1";  // before them in any order
    std::ofstream(folder.file("new")) << text << "}";
    ASSERT_EQ(::rename(folder.file("new").c_str(), folder.file("state.json").c_str()), 0);
  };
  write(0);
  choose(Visualizer::script, "bind glow = mine");
  EXPECT_EQ(tickAfter(0.03).glowAmount, 0);
  write(0.5);
  expectGlides({{"mine", 0.5, 0.3}});
  EXPECT_EQ(channel("busy"), 1);
  EXPECT_EQ(channel("a1"), 1.7e12) << "milliseconds since 1970";
  EXPECT_LT(driver.channels.targets.size(), 30U);
  write(1e300);
  for (int i = 0; i < 60; ++i) tickAfter(0.5);
  write(1);
  for (int i = 0; i < 60; ++i) tickAfter(0.5);
  EXPECT_NEAR(driven.glowAmount, 1, 1e-6) << "no number is so large that its channel stays there";
}

TEST_F(DriverSources, DiagnosticsTellEachCompileAndTheSoundNowAndThen) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the switch is read once in a process
  const tests::EnvironmentChange debugging("NIMBRA_DEBUG", "1");
  EXPECT_EXIT(
      {
        choose(Visualizer::script, "oops\u0007");
        choose(Visualizer::music);
        play(*taps[0], 1);
        for (int i = 0; i < 121; ++i) tickAfter(0.03);
        std::exit(0);
      },
      testing::ExitedWithCode(0),
      "^\\[nimbra\\] script script: binds=0 consts=0 error=Line 1: unknown command 'oops\\?'\n"
      "\\[nimbra\\] script music: binds=9 consts=0 error=none\n"
      "(\\[nimbra\\] audio cb=1 audioCb=1 fail=0 level=0\\.[0-9]{3} bass=[01]\\.[0-9]{3} fmt=rate=48000 [^\n]*"
      " err=none\n){3}$");
}

}  // namespace
}  // namespace veloria
