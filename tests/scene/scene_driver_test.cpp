#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "scene/BuiltInScripts.h"
#include "scene/SceneDriver.h"

namespace veloria {
namespace {

/// Timers that fire when the test says so.
class ManualTimers : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double interval, double tolerance, std::function<void()> action) override {
    EXPECT_DOUBLE_EQ(interval, 1.0 / 30);
    EXPECT_EQ(tolerance, 0.01);
    action_ = std::move(action);
    ++made;
    return std::make_unique<Handle>(*this);
  }

  void fire() {
    if (const auto action = action_) action();
  }
  bool running() const { return action_ != nullptr; }

  int made = 0;

 private:
  class Handle : public Timer {
   public:
    explicit Handle(ManualTimers& owner) : owner_(owner) {}
    ~Handle() override { owner_.action_ = nullptr; }

   private:
    ManualTimers& owner_;
  };

  std::function<void()> action_;
};

class SceneDriverTest : public testing::Test {
 protected:
  SceneDriverTest() {
    driver.onConfig = [this](const NimbraConfig& config) { driven.push_back(config); };
  }

  SceneDriver::Ports ports() {
    return {.settings = [this]() -> const NimbraConfig& { return settings; },
            .mediaClock = [this] { return now; },
            .wallClock = [] { return 1.7e9; },
            .timers = &timers};
  }

  const NimbraConfig& tickAfter(double seconds) {
    now += seconds;
    timers.fire();
    return driven.back();
  }

  void choose(Visualizer mode, std::string script = "") {
    settings.visualizer = mode;
    settings.customScript = std::move(script);
    driver.recompile();
  }

  NimbraConfig settings;
  double now = 500;
  ManualTimers timers;
  SceneDriver driver{ports()};
  std::vector<NimbraConfig> driven;
};

TEST_F(SceneDriverTest, AutonomousDrawsTheSettingsButForThePace) {
  settings.exposure = 99;
  driver.recompile();
  EXPECT_EQ(tickAfter(0.03), settings);
  settings.tempo = 2;
  EXPECT_EQ(tickAfter(0.03), settings.applyingTempo());
}

TEST_F(SceneDriverTest, BeforeTheFirstCompileThePlainSettingsAreDrawn) {
  settings.visualizer = Visualizer::music;
  EXPECT_EQ(tickAfter(0.03), settings);
}

TEST_F(SceneDriverTest, TimeIsSecondsSinceTheStart) {
  choose(Visualizer::script, "bind glow = t");
  EXPECT_DOUBLE_EQ(tickAfter(1.5).glowAmount, 1.5);
  EXPECT_DOUBLE_EQ(tickAfter(1.25).glowAmount, 2.75);
}

TEST_F(SceneDriverTest, AStepIsHeld) {
  const auto advance = [&](double seconds) {
    driver.channels.setImmediate("x", 0);
    driver.channels.set("x", 1, 1);
    tickAfter(seconds);
    return -std::log(1 - driver.channels.values.at("x"));
  };
  EXPECT_NEAR(advance(0.1), 0.1, 1e-12);
  EXPECT_NEAR(advance(10), 0.5, 1e-12);
  EXPECT_NEAR(advance(0.0001), 1.0 / 240, 1e-12);
  EXPECT_NEAR(advance(-5), 1.0 / 240, 1e-12);
  EXPECT_NEAR(advance(0.1), 0.1, 1e-12);
}

TEST_F(SceneDriverTest, ThePaceComesAfterTheScript) {
  choose(Visualizer::script, "bind speed = 3");
  settings.tempo = 2;
  EXPECT_EQ(tickAfter(0.03).timeScale, 4);
  settings.tempo = 0.5;
  EXPECT_EQ(tickAfter(0.03).timeScale, 1.5);
  choose(Visualizer::script, "bind speed = 3\nset tempo 2");
  EXPECT_EQ(tickAfter(0.03).timeScale, 4) << "the script's own pace";
}

TEST_F(SceneDriverTest, ABrokenScriptShowsThePlainSettingsAndSaysWhy) {
  choose(Visualizer::script, "set glow 3");
  EXPECT_EQ(tickAfter(0.03).glowAmount, 3);
  choose(Visualizer::script, "set glow 2\nbind glw = 1");
  EXPECT_EQ(driver.scriptError(), "Line 2: unknown parameter 'glw'");
  EXPECT_EQ(tickAfter(0.03), settings);
  choose(Visualizer::script, "set glow 1");
  EXPECT_EQ(driver.scriptError(), std::nullopt);
  EXPECT_EQ(tickAfter(0.03).glowAmount, 1);
}

TEST_F(SceneDriverTest, EachModeRunsItsOwnScript) {
  for (const Visualizer mode : {Visualizer::music, Visualizer::agent, Visualizer::weather, Visualizer::wind}) {
    choose(mode, "bind nonsense");
    EXPECT_EQ(driver.scriptError(), std::nullopt);
    EXPECT_EQ(driver.compiled(), NimbraScript::parse(builtInScript(mode)));
  }
  choose(Visualizer::autonomous, "bind nonsense");
  EXPECT_EQ(driver.compiled(), NimbraScript::empty());
}

TEST_F(SceneDriverTest, LeavingAModeLetsItsChannelsFadeOut) {
  choose(Visualizer::music);
  driver.channels.set("level", 1, 0.08);
  driver.channels.setImmediate("beat", 1);
  driver.channels.set("deploys", 1, 0.3);
  tickAfter(0.03);
  choose(Visualizer::music);
  tickAfter(0.03);
  EXPECT_EQ(driver.channels.values.at("level"), 1);
  choose(Visualizer::autonomous);
  tickAfter(0.08);
  EXPECT_NEAR(driver.channels.values.at("level"), std::exp(-1), 1e-12);
  EXPECT_EQ(driver.channels.values.at("beat"), 0);
  EXPECT_EQ(driver.channels.values.at("deploys"), 1);
}

TEST_F(SceneDriverTest, PalettesComeAndGo) {
  const std::vector<ColorStop> blue(4, ColorStop{0, 0, 1});
  const std::vector<ColorStop> green(4, ColorStop{0, 1, 0});
  const Palette mine{"Mine", std::vector<ColorStop>(4, ColorStop{1, 1, 1})};
  const auto drawn = [&](const std::string& script) {
    choose(Visualizer::script, script);
    return tickAfter(0.03).customPalette;
  };
  const auto custom = [](const std::vector<ColorStop>& stops) { return std::optional(Palette{"Custom", stops}); };
  EXPECT_EQ(drawn("palette #0000ff #0000ff"), custom(blue));
  EXPECT_EQ(drawn(""), std::nullopt);
  settings.customPalette = mine;
  EXPECT_EQ(drawn(""), mine);
  EXPECT_EQ(drawn("palette #0000ff #0000ff"), custom(blue));
  EXPECT_EQ(drawn("palette wallpaper"), mine);
  driver.wallpaper = Palette{"Picture", green};
  EXPECT_EQ(drawn("palette wallpaper\npalette #0000ff #0000ff"), custom(green));
  settings.customPalette.reset();
  EXPECT_EQ(drawn(""), std::nullopt);
  settings.matchWallpaper = true;
  EXPECT_EQ(drawn(""), custom(green));
  EXPECT_EQ(drawn("palette #0000ff #0000ff"), custom(blue));
}

TEST_F(SceneDriverTest, ASuspendedDriverHasNoTimer) {
  EXPECT_EQ(timers.made, 1);
  driver.suspend();
  driver.suspend();
  EXPECT_FALSE(timers.running());
  driver.resume();
  driver.resume();
  EXPECT_TRUE(timers.running());
  EXPECT_EQ(timers.made, 2);
  EXPECT_EQ(tickAfter(3600), settings);
}

TEST_F(SceneDriverTest, ATickMaySuspendTheDriver) {
  driver.onConfig = [this](const NimbraConfig& config) {
    driver.suspend();
    driven.push_back(config);
  };
  EXPECT_EQ(tickAfter(0.03), settings);
  EXPECT_FALSE(timers.running());
}

TEST_F(SceneDriverTest, TheTimerEndsWithTheDriver) {
  ManualTimers others;
  auto short_lived = ports();
  short_lived.timers = &others;
  { const SceneDriver driver2(short_lived); }
  EXPECT_FALSE(others.running());
}

}  // namespace
}  // namespace veloria
