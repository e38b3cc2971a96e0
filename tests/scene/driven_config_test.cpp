#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <map>
#include <string>
#include <string_view>

#include "scene/BuiltInScripts.h"
#include "scene/DrivenConfig.h"
#include "scene/ScriptReport.h"
#include "settings/Palette.h"

namespace veloria {
namespace {

TEST(ScriptParams, DriveTheirFieldWithinTheirRange) {
  using C = NimbraConfig;
  struct Param {
    std::string keyword;
    double C::*field;
    double low, high;
  };
  const Param params[] = {
      {"exposure", &C::exposure, 0, 6},       {"opacity", &C::opacity, 0, 1},
      {"contrast", &C::contrast, 0.1, 3},     {"saturation", &C::saturation, 0, 3},
      {"cycle", &C::colorCycle, -0.2, 0.2},   {"huespread", &C::hueSpread, 0, 0.5},
      {"glow", &C::glowAmount, 0, 4},         {"glowspread", &C::glowRadius, 0.2, 6},
      {"ambient", &C::ambientLevel, 0, 0.4},  {"rays", &C::rayIntensity, 0, 1},
      {"raysharp", &C::raySharpness, 0.1, 6}, {"rayscale", &C::rayScale, 0.5, 30},
      {"rayspeed", &C::raySpeed, 0, 1},       {"rayflow", &C::rayFlow, 0, 0.5},
      {"shimmer", &C::shimmer, 0, 2},         {"speed", &C::timeScale, 0.02, 4},
      {"tempo", &C::tempo, 0.15, 2.5},        {"wind", &C::flowSpeed, -6, 6},
      {"shear", &C::flowShear, 0, 8},         {"curl", &C::curlStrength, 0, 10},
      {"curlscale", &C::curlScale, 0.2, 12},  {"vorticity", &C::vorticity, 0, 6},
      {"buoyancy", &C::buoyancy, -3, 4},      {"emit", &C::emitRate, 0, 5},
      {"emitspread", &C::emitScale, 0.3, 14}, {"fade", &C::dyeDissipation, 0.9, 0.9999},
      {"tint", &C::heightTint, 0, 1},
  };
  const auto expectSet = [](const Param& param, const char* number, double wanted) {
    NimbraConfig config;
    NimbraConfig expected;
    expected.*param.field = wanted;
    assignParameters(config, NimbraScript::parse("set " + param.keyword + number), {});
    EXPECT_EQ(config, expected) << param.keyword << number;
  };
  static_assert(std::size(params) + 1 == scriptParamCount);
  expectSet({"hue", &C::hueShift, 0, 1}, " 3.25", 0.25);  // it wraps
  for (const auto& param : params) {
    expectSet(param, " -1e9", param.low);
    expectSet(param, " nan", param.low);
    expectSet(param, " inf", param.low);
    expectSet(param, " 1e9", param.high);
  }
}

TEST(BuiltInScripts, DriveTheLookByTheirChannels) {
  using Values = std::map<std::string_view, double>;
  const struct {
    Visualizer mode;
    ChannelValues channels;
    Values expected;
  } cases[] = {
      {Visualizer::music,
       {{"t", 10}, {"level", 0.4}, {"bass", 0.5}, {"mid", 0.3}, {"treble", 0.2}},
       {{"exposure", 1.86},
        {"emit", 2.3},
        {"curl", 3.3},
        {"speed", 1.22},
        {"rays", 0.55},
        {"raysharp", 1.82},
        {"glow", 1.4},
        {"hue", 0.124},
        {"shimmer", 0.33}}},
      {Visualizer::agent,
       {{"busy", 0.5}, {"err", 0.5}, {"ok", 0.25}},
       {{"speed", 1.4},
        {"curl", 3.3},
        {"exposure", 1.75},
        {"emit", 1.75},
        {"hue", 0.53},
        {"rays", 0.65},
        {"glow", 1.4}}},
      {Visualizer::agent, {{"err", 1}, {"ok", 1}}, {{"hue", 0}}},  // held at 1, a full turn
      {Visualizer::weather,
       {{"temp", 20}, {"wind", 14}, {"gust", 21}, {"cloud", 0.5}, {"rain", 0.2}},
       {{"hue", 0.355},
        {"wind", 0.25 + 14.0 / 18},
        {"shear", 2.3},
        {"curl", 2.1 + 21.0 / 18},
        {"exposure", 1.025},
        {"ambient", 0.045},
        {"speed", 1.05}}},
      {Visualizer::wind,
       {{"wind", 11}, {"gust", 18}},
       {{"wind", 1.25}, {"shear", 2.6}, {"speed", 1}, {"curl", 2.6}, {"rays", 0.85}, {"exposure", 1.17}}},
      {Visualizer::wind, {{"wind", 50}, {"gust", 50}}, {{"rays", 0.9}, {"exposure", 1.45}}},
  };
  for (const auto& [mode, channels, expected] : cases) {
    const NimbraScript script = NimbraScript::parse(builtInScript(mode));
    const ScriptReport report = reportOn(script, channels);
    const Values values(report.values.begin(), report.values.end());
    for (const auto& [keyword, value] : expected) {
      EXPECT_NEAR(values.at(keyword), value, 1e-12) << rawValue(mode) << " " << keyword;
    }
    EXPECT_EQ(script.paletteStops.has_value(), mode == Visualizer::agent);
    EXPECT_FALSE(script.paletteFromWallpaper);
  }
}

TEST(ApplyTempo, DoesWhatTheRecordsOwnRuleDoes) {
  for (const double tempo : {0.0, 0.5, 1.0005, 1.5, 5.0}) {
    NimbraConfig config;
    config.tempo = tempo;
    config.shimmer = 1.7;
    config.customScript = "set glow 1";
    config.customPalette = Palette::presets().front();
    const NimbraConfig expected = config.applyingTempo();
    applyTempo(config);
    EXPECT_EQ(config, expected) << tempo;
  }
}

TEST(Alert, TheEnvelopeFallsSmoothlyToNothing) {
  const double until = 1000;
  EXPECT_EQ(alertEnvelope(until, 2, 990), 1);
  EXPECT_EQ(alertEnvelope(until, 2, 998), 1);
  EXPECT_EQ(alertEnvelope(until, 2, 999), 0.5);
  EXPECT_DOUBLE_EQ(alertEnvelope(until, 2, 999.5), 0.25 * 0.25 * 2.5);
  EXPECT_EQ(alertEnvelope(until, 2, 999.9985), 0);
  EXPECT_EQ(alertEnvelope(until, 2, 1000), 0);
  EXPECT_EQ(alertEnvelope(until, 2, 1001), 0);
  EXPECT_EQ(alertEnvelope(0, 2, -10), 0);
  EXPECT_EQ(alertEnvelope(std::numeric_limits<double>::quiet_NaN(), 2, 1), 0);
}

TEST(Alert, ThePeak) {
  NimbraConfig config;
  config.exposure = 6;
  config.glowAmount = 4;
  config.emitRate = 5;
  config.hueSpread = 0.5;
  NimbraConfig flash = config;
  applyAlert(flash, 1, true);
  EXPECT_EQ(flash.exposure, 7.5);  // a flash may leave these three ranges
  EXPECT_EQ(flash.glowAmount, 5.2);
  EXPECT_EQ(flash.emitRate, 6.4);
  EXPECT_DOUBLE_EQ(flash.hueSpread, 0.1);
  EXPECT_DOUBLE_EQ(flash.timeScale, 0.18 * 3.5);
  EXPECT_DOUBLE_EQ(flash.curlStrength, 0.75 + 2.5);
  EXPECT_DOUBLE_EQ(flash.rayIntensity, 0.8);
  EXPECT_DOUBLE_EQ(flash.saturation, 1.8);
}

TEST(Alert, ThePeakIsHeldWhereItShouldBe) {
  NimbraConfig config;
  config.timeScale = 3;
  config.curlStrength = 9;
  config.rayIntensity = 0.9;
  config.saturation = 2.9;
  NimbraConfig flash = config;
  applyAlert(flash, 1, false);
  EXPECT_EQ(flash.timeScale, 4);
  EXPECT_EQ(flash.curlStrength, 10);
  EXPECT_EQ(flash.rayIntensity, 1);
  EXPECT_EQ(flash.saturation, 3);
  EXPECT_EQ(flash.hueSpread, config.hueSpread);
}

}  // namespace
}  // namespace veloria
