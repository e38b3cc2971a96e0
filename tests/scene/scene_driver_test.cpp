// The driver with its sources and its clock: who is asked when, and what is drawn.

#include "scene/SceneDriver.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>

#include "AllocationCount.h"
#include "Process.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace veloria::tests {
namespace {

constexpr double frame = 0.03;

/// A timer that fires when the test says so.
struct HandTimers : TimerFactory {
  struct Handle : Timer {
    explicit Handle(HandTimers& of) : owner(of) {}
    ~Handle() override { owner.action = nullptr; }
    HandTimers& owner;
  };
  std::unique_ptr<Timer> repeating(double, double, std::function<void()> work) override {
    EXPECT_FALSE(action);
    action = std::move(work);
    return std::make_unique<Handle>(*this);
  }
  std::function<void()> action;
};

/// What a tap was told; it outlives the source that owns the tap.
struct TapState {
  AudioTap::Handlers handlers;
  bool running = false;
};

struct HandTap : AudioTap {
  explicit HandTap(std::shared_ptr<TapState> of) : state(std::move(of)) {}
  ~HandTap() override { stop(); }
  void start(Handlers handlers) override { *state = {std::move(handlers), true}; }
  void stop() override { state->running = false; }
  std::shared_ptr<TapState> state;
};

struct HandFetcher : HttpFetcher {
  void get(const std::string& url, std::size_t, double, Done done) override {
    urls.push_back(url);
    answer = std::move(done);
  }
  std::vector<std::string> urls;
  Done answer;
};

Palette palette(const ColorStop& color, const char* name = "Custom") {
  return {name, std::vector<ColorStop>(4, color)};
}
const ColorStop red{1, 0, 0}, green{0, 1, 0}, blue{0, 0, 1}, white{1, 1, 1};

class SceneDriverTest : public testing::Test {
 protected:
  SceneDriverTest() {
    driver.onConfig = [this](const NimbraConfig& config) { driven = config; };
  }

  SceneDriver::Ports ports() {
    return {.settings = [this]() -> const NimbraConfig& { return settings; },
            .mediaClock = [this] { return now; },
            .wallClock = [this] { return wall + now; },
            .timers = &timers,
            .agentStateFile = folder.file("state.json"),
            .makeAudioSource =
                [this] {
                  taps.push_back(std::make_shared<TapState>());
                  return std::make_unique<AudioSource>(std::make_unique<HandTap>(taps.back()));
                },
            .weather = {.http = &http, .clock = [this] { return now; }, .baseUrl = "https://weather.example"},
            .sampleWallpaper = [this](auto done) { samples.push_back(std::move(done)); }};
  }

  const NimbraConfig& tickAfter(double seconds) {
    now += seconds;
    timers.action();
    return driven;
  }

  void choose(Visualizer mode, std::string script = "") {
    settings.visualizer = mode;
    settings.customScript = std::move(script);
    driver.recompile();
  }

  const NimbraConfig& drawn(const std::string& script) {
    choose(Visualizer::script, script);
    return tickAfter(frame);
  }

  /// Noise: it has bass, middle and treble.
  static void play(TapState& tap) {
    std::vector<float> noise(1024);
    for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<float>(i * i % 997) / 997 - 0.5F;
    const std::span<const float> channels[] = {noise, noise};
    tap.handlers.audio({.format = AudioFormat{48000, 2, 0, 32, true}, .unreadable = {}, .channels = channels});
  }

  struct Glide {
    const char* channel;
    double target, timeConstant;
  };
  /// One tick takes each channel as far from 0 towards its target as its time constant says.
  void expectGlides(const std::vector<Glide>& glides) {
    tickAfter(0.05);
    for (const auto& [name, target, timeConstant] : glides) {
      EXPECT_GT(std::abs(target), 0.01) << name;
      EXPECT_NEAR(channel(name), (1 - std::exp(-0.05 / timeConstant)) * target, 1e-6) << name;
    }
  }

  double channel(const char* name) { return driver.channels.values.at(name); }

  TemporaryFolder folder;
  NimbraConfig settings, driven;
  double now = 500;
  double wall = 1.7e9;
  HandTimers timers;
  HandFetcher http;
  std::vector<std::shared_ptr<TapState>> taps;
  std::vector<std::function<void(std::optional<Palette>)>> samples;
  SceneDriver driver{ports()};
};

TEST_F(SceneDriverTest, ThePaceComesAfterTheScriptAndAutonomousDrawsThePlainSettings) {
  settings.exposure = 99;
  choose(Visualizer::autonomous, "bind nonsense");
  EXPECT_EQ(tickAfter(frame), settings);
  settings.tempo = 2;
  EXPECT_EQ(tickAfter(frame), settings.applyingTempo());
  EXPECT_EQ(drawn("bind speed = 3").timeScale, 4);
  EXPECT_EQ(drawn("bind speed = 3\nset tempo 2").timeScale, 4) << "the script's own pace";
}

TEST_F(SceneDriverTest, TimeIsSecondsSinceTheStartAndAStepIsBounded) {
  choose(Visualizer::script, "bind glow = t");
  EXPECT_DOUBLE_EQ(tickAfter(1.5).glowAmount, 1.5);
  EXPECT_DOUBLE_EQ(tickAfter(1.25).glowAmount, 2.75);
  for (const auto& [seconds, step] :
       {std::pair{0.1, 0.1}, {10, 0.5}, {0.0001, 1.0 / 240}, {-5, 1.0 / 240}, {0.2, 0.2}}) {
    driver.channels.setImmediate("x", 0);
    driver.channels.set("x", 1, 1);
    tickAfter(seconds);
    EXPECT_NEAR(channel("x"), 1 - std::exp(-step), 1e-12) << seconds;
  }
}

TEST_F(SceneDriverTest, ABrokenScriptShowsThePlainSettingsAndSaysWhy) {
  EXPECT_EQ(drawn("set glow 3").glowAmount, 3);
  EXPECT_EQ(drawn("set glow 2\nbind glw = 1"), settings);
  EXPECT_EQ(driver.scriptError(), "Line 2: unknown parameter 'glw'");
  EXPECT_EQ(drawn("set glow 1").glowAmount, 1);
  EXPECT_EQ(driver.scriptError(), std::nullopt);
}

TEST_F(SceneDriverTest, LeavingAModeLetsItsChannelsFadeOut) {
  for (const char* name : {"level", "beat", "deploys"}) driver.channels.set(name, 1, name[0] == 'b' ? 0 : 0.08);
  tickAfter(frame);
  choose(Visualizer::autonomous);
  tickAfter(frame);
  EXPECT_EQ(channel("level"), 1) << "the mode is the same";
  choose(Visualizer::script);
  driver.channels.values["own"] = 0;
  driver.channels.targets["own"] = 1;
  tickAfter(0.08);
  EXPECT_NEAR(channel("own"), 1 - std::exp(-0.08 / 0.25), 1e-12) << "without a smoothing of its own";
  EXPECT_NEAR(channel("level"), std::exp(-1), 1e-12);
  EXPECT_EQ(channel("beat"), 0);
  EXPECT_EQ(channel("deploys"), 1);
}

TEST_F(SceneDriverTest, PalettesComeAndGo) {
  const auto expectPalette = [&](const std::string& script, const std::optional<Palette>& wanted) {
    EXPECT_EQ(drawn(script).customPalette, wanted) << script;
  };
  const std::string own = "palette #0000ff #0000ff", both = "palette wallpaper\n" + own;
  expectPalette(own, palette(blue));
  expectPalette("", std::nullopt);
  settings.customPalette = palette(white, "Mine");
  expectPalette("", settings.customPalette);
  expectPalette(own, palette(blue));
  expectPalette("palette wallpaper", settings.customPalette);
  expectPalette(both, palette(blue));
  driver.wallpaper = palette(green, "Picture");
  expectPalette(both, palette(green));
  settings.customPalette.reset();
  expectPalette("", std::nullopt);
  settings.matchWallpaper = true;
  expectPalette("", palette(green));
  expectPalette(own, palette(blue));
  folder.write("state.json", R"({"palette": ["#ff0000", "#ff0000"]})");
  expectPalette(both, palette(red));
}

TEST_F(SceneDriverTest, TheTimerStopsWithASuspensionAndWithTheDriver) {
  const auto suspend = [this](const NimbraConfig&) { driver.suspend(); };
  driver.onConfig = suspend;  // also from inside a tick
  const auto action = timers.action;
  action();
  EXPECT_FALSE(timers.action);
  driver.onConfig = nullptr;
  for (int i = 0; i < 2; ++i) driver.resume();
  EXPECT_TRUE(timers.action);
  driver.suspend();
  std::function<void(std::optional<Palette>)> late;
  {
    auto mine = ports();
    mine.sampleWallpaper = [&](auto done) { late = std::move(done); };
    const SceneDriver other(mine);
    EXPECT_TRUE(timers.action);
  }
  EXPECT_FALSE(timers.action);
  late(palette(red));  // an answer for a driver that is gone
}

TEST_F(SceneDriverTest, SoundIsListenedToInTheMusicModeOnly) {
  choose(Visualizer::music);
  ASSERT_EQ(taps.size(), 1U);
  EXPECT_TRUE(taps[0]->running);
  tickAfter(frame);
  play(*taps[0]);
  const AudioSource::Bands bands = driver.audio()->bands();
  expectGlides(
      {{"level", bands.level, .08}, {"bass", bands.bass, .06}, {"mid", bands.mid, .09}, {"treble", bands.treble, .07}});
  EXPECT_GT(bands.beat, 0.5);
  EXPECT_EQ(channel("beat"), bands.beat) << "it arrives at once";
  choose(Visualizer::wind);
  EXPECT_FALSE(taps[0]->running);
  EXPECT_EQ(driver.audio(), nullptr);
}

TEST_F(SceneDriverTest, AFailedTapIsReplacedByTheNextCompileAndASuspendedDriverHasNone) {
  choose(Visualizer::music);
  play(*taps[0]);
  tickAfter(frame);
  taps[0]->handlers.failed("the server is gone");
  for (int i = 0; i < 90; ++i) tickAfter(frame);
  ASSERT_EQ(taps.size(), 1U);
  EXPECT_EQ(driver.audio()->lastError(), "the server is gone");
  EXPECT_LT(channel("bass"), 0.01);
  for (int i = 0; i < 2; ++i) choose(Visualizer::music);
  ASSERT_EQ(taps.size(), 2U);
  driver.suspend();
  choose(Visualizer::music);
  EXPECT_FALSE(taps[1]->running);
  driver.resume();
  ASSERT_EQ(taps.size(), 3U);
  EXPECT_TRUE(taps[2]->running);
}

TEST_F(SceneDriverTest, TheWeatherIsAskedForInItsTwoModesOnly) {
  settings.weatherLatitude = 52.52;
  settings.weatherLongitude = 13.405;
  choose(Visualizer::autonomous);
  tickAfter(frame);
  EXPECT_TRUE(http.urls.empty());
  choose(Visualizer::wind);
  for (int i = 0; i < 2; ++i) tickAfter(frame);
  ASSERT_EQ(http.urls.size(), 1U);
  EXPECT_THAT(http.urls[0], testing::HasSubstr("latitude=52.5200&longitude=13.4050"));
  http.answer(std::string(R"({"current": {"temperature_2m": 20, "wind_speed_10m": 30, "wind_gusts_10m": 40,
                              "cloud_cover": 80, "precipitation": 2.5}})"));
  expectGlides({{"temp", 20, 2}, {"wind", 30, 2}, {"gust", 40, 2}, {"cloud", .8, 2}, {"rain", .5, 2}});
  choose(Visualizer::weather);
  tickAfter(700);
  EXPECT_EQ(http.urls.size(), 2U) << "ten minutes later";
}

TEST_F(SceneDriverTest, AFailureFlashesInEveryModeAndFadesInASecondAndAHalf) {
  settings.tempo = 2;
  choose(Visualizer::agent);
  const NimbraConfig calm = tickAfter(frame);
  wall = 1.7e9 - now;  // the wall clock starts here
  folder.write("state.json", R"({"alert_until": 1700000001.5, "alert_palette": ["#ff0000", "#aa0000"]})");
  const NimbraConfig bright = tickAfter(0.001);
  EXPECT_GT(bright.exposure, calm.exposure + 1.4);
  EXPECT_NEAR(bright.curlStrength, calm.curlStrength + 2.5, 0.01) << "the pace has no part in it";
  EXPECT_EQ(bright.customPalette->stops[0], red);
  EXPECT_LT(bright.hueSpread, 0.3 * calm.hueSpread);
  EXPECT_NEAR(tickAfter(0.75).exposure, calm.exposure + 0.75, 0.02);
  EXPECT_EQ(tickAfter(0.75).exposure, calm.exposure);
  EXPECT_NE(driven.customPalette->stops[0], red);
}

TEST_F(SceneDriverTest, TheWallpaperIsSampledAtTheStartAndThenEachTwentySecondsWhileWanted) {
  ASSERT_EQ(samples.size(), 1U);
  for (const bool byScript : {true, false}) {
    settings.matchWallpaper = !byScript;
    choose(Visualizer::script, byScript ? "palette wallpaper" : "");
    samples.clear();
    for (const auto& [seconds, count] : {std::pair{100.0, 1U}, {19.9, 1U}, {0.2, 2U}}) {
      tickAfter(seconds);
      ASSERT_EQ(samples.size(), count) << byScript;
    }
  }
  samples.back()(palette(green));
  EXPECT_EQ(tickAfter(frame).customPalette, palette(green));
  samples.back()(std::nullopt);  // a picture that can't be read takes nothing away
  EXPECT_EQ(tickAfter(frame).customPalette, palette(green));
}

TEST_F(SceneDriverTest, NamesThatMeanSomethingArriveAmongAnyNumberOfOthersInEveryMode) {
  const auto write = [&](double mine) {
    std::string text = R"({"busy": 1, "a1": 1.7e12, "mine": )" + std::to_string(mine);
    for (int i = 0; i < 5000; ++i) text += ",\"!" + std::to_string(i) + "\": 1";  // before them in any order
    std::filesystem::rename(folder.write("new", text + "}"), folder.file("state.json"));
  };
  write(0);
  EXPECT_EQ(drawn("bind glow = mine").glowAmount, 0);
  write(0.5);
  expectGlides({{"mine", 0.5, 0.3}});
  EXPECT_EQ(channel("a1"), 1.7e12) << "milliseconds since 1970";
  EXPECT_LT(driver.channels.targets.size(), 30U);
  for (std::size_t mode = 0; mode < rawValues<Visualizer>.size(); ++mode) {
    choose(static_cast<Visualizer>(mode), "bind glow = mine");
    tickAfter(frame);
    EXPECT_EQ(driver.channels.targets.at("busy"), 1) << mode;
  }
  for (const double value : {1e300, 1.0}) {
    write(value);
    for (int i = 0; i < 60; ++i) tickAfter(0.5);
  }
  EXPECT_NEAR(channel("mine"), 1, 1e-6) << "no number is so large that its channel stays there";
}

#ifdef __GLIBC__
TEST_F(SceneDriverTest, MemoryDoesNotGrowHoweverLongItRuns) {
  if (!countsAllocations()) GTEST_SKIP() << "memory can't be counted under a sanitizer";
  int round = 0;
  const auto runThroughTheModes = [&] {
    for (std::size_t mode = 0; mode < rawValues<Visualizer>.size(); ++mode) {
      folder.write("state.json", "{\"name" + std::to_string(++round) + "\": 1}");
      choose(static_cast<Visualizer>(mode), "bind glow = name1");
      for (int i = 0; i < 40; ++i) tickAfter(1);
    }
    taps.clear(), http.urls.clear(), samples.clear();
  };
  for (int i = 0; i < 3; ++i) runThroughTheModes();
  const std::size_t before = ::mallinfo2().uordblks;
  for (int i = 0; i < 50; ++i) runThroughTheModes();
  EXPECT_LT(::mallinfo2().uordblks, before + 5'000);
}
#endif

TEST_F(SceneDriverTest, NoTickAllocates) {
  if (!countsAllocations()) GTEST_SKIP() << "allocations can't be counted under a sanitizer";
  SceneDriver plain(
      {.settings = [this]() -> const NimbraConfig& { return settings; }, .mediaClock = [this] { return now; }});
  settings.tempo = 1.5;
  settings.paletteName = "a name that is too long for a short string's own buffer";
  settings.customScript = "palette #ff0000 #00ff00\nbind glow = max(bass, a_name_too_long_for_a_small_string, 1, 2, 3)";
  plain.wallpaper = palette(green);
  for (std::size_t round = 0; round < 4 * rawValues<Visualizer>.size(); ++round) {
    settings.visualizer = static_cast<Visualizer>(round / 4);
    settings.matchWallpaper = round % 2 == 1;
    settings.customPalette = round % 4 > 1 ? std::optional(palette(white)) : std::nullopt;
    plain.recompile();
    std::uint64_t before = 0;
    for (int i = 0; i < 60; ++i) {
      if (i == 1) before = allocationsInProcess();
      for (const auto name : DriveChannels::sourceNames) plain.channels.set(name, now, 0.3);
      now += frame;
      plain.tick();
    }
    EXPECT_EQ(allocationsInProcess() - before, 0U) << rawValue(settings.visualizer);
  }
}

}  // namespace
}  // namespace veloria::tests
