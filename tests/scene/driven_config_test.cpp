#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "scene/DrivenConfig.h"
#include "scene/ScriptReport.h"

namespace veloria {
namespace {

const std::vector<ColorStop> agentStops(4, ColorStop{1, 0, 0});
const Palette wallpaperPalette{"Wallpaper", std::vector<ColorStop>(4, ColorStop{0, 1, 0})};
const std::string scriptColors = "palette #0000ff #0000ff\n";
const std::vector<ColorStop> scriptStops(4, ColorStop{0, 0, 1});

TEST(Applying, TheFirstPaletteThereIsWins) {
  struct Case {
    std::string script;
    std::optional<Palette> wallpaper;
    std::vector<ColorStop> agent, expected;
  };
  const std::string both = scriptColors + "palette wallpaper";
  const Case cases[] = {
      {both, wallpaperPalette, agentStops, agentStops},
      {both, wallpaperPalette, {}, wallpaperPalette.stops},
      {both, std::nullopt, {}, scriptStops},
      {scriptColors, wallpaperPalette, {}, scriptStops},
      {"", std::nullopt, agentStops, agentStops},
  };
  for (const Case& c : cases) {
    const NimbraConfig result = applying({}, NimbraScript::parse(c.script), {}, c.wallpaper, c.agent);
    ASSERT_TRUE(result.customPalette) << c.script;
    EXPECT_EQ(*result.customPalette, (Palette{"Custom", c.expected})) << c.script;
  }
}

TEST(Applying, WithoutAnyPaletteTheSettingsKeepTheirs) {
  NimbraConfig config;
  config.customPalette = Palette{"Mine", agentStops};
  for (const char* script : {"", "palette wallpaper", "set glow 1"}) {
    const NimbraConfig result = applying(config, NimbraScript::parse(script), {}, std::nullopt, {});
    EXPECT_EQ(result.customPalette, config.customPalette) << script;
  }
}

TEST(Applying, TheEmptyScriptChangesNothing) {
  NimbraConfig config;
  config.exposure = 1e9;  // out of range, and left so: the script does not mention it
  config.customScript = "set glow 1";
  EXPECT_EQ(applying(config, NimbraScript::empty(), {{"t", 1}}, wallpaperPalette, {}), config);
}

TEST(Applying, ReplacesFieldsByChannelsAndKeepsTheRest) {
  NimbraConfig config;
  config.glowAmount = 3;
  config.rayIntensity = 0.9;
  config.customScript = "kept";
  NimbraConfig expected = config;
  expected.glowAmount = 1.5;
  expected.flowSpeed = -6;
  const NimbraScript script = NimbraScript::parse("set glow 9\nbind glow = bass * 2\nset wind nan");
  EXPECT_EQ(applying(config, script, {{"bass", 0.75}}, std::nullopt, {}), expected);
}

TEST(Applying, TheScriptsTempoSetsThePace) {
  NimbraConfig config = applying({}, NimbraScript::parse("bind speed = 3\nset tempo 2"), {}, std::nullopt, {});
  applyTempo(config);
  EXPECT_EQ(config.timeScale, 4);
  EXPECT_EQ(config.tempo, 2);
}

TEST(ApplyTempo, DoesWhatTheRecordsOwnRuleDoes) {
  for (const double tempo : {0.0, 0.5, 1.0005, 1.5, 5.0}) {
    NimbraConfig config;
    config.tempo = tempo;
    config.shimmer = 1.7;
    config.customScript = "set glow 1";
    config.customPalette = wallpaperPalette;
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

TEST(Alert, NoFlashChangesNothing) {
  const NimbraConfig config;
  EXPECT_EQ(applyingAlert(config, 0, 1.5, agentStops, 100), config);
  EXPECT_EQ(applyingAlert(config, 100, 1.5, agentStops, 100), config);
}

TEST(Alert, ThePeak) {
  NimbraConfig config;
  config.exposure = 6;
  config.glowAmount = 4;
  config.emitRate = 5;
  config.hueSpread = 0.5;
  const NimbraConfig flash = applyingAlert(config, 101, 1, agentStops, 100);
  EXPECT_EQ(flash.exposure, 7.5);  // a flash may leave these three ranges
  EXPECT_EQ(flash.glowAmount, 5.2);
  EXPECT_EQ(flash.emitRate, 6.4);
  EXPECT_DOUBLE_EQ(flash.hueSpread, 0.1);
  EXPECT_DOUBLE_EQ(flash.timeScale, 0.18 * 3.5);
  EXPECT_DOUBLE_EQ(flash.curlStrength, 0.75 + 2.5);
  EXPECT_DOUBLE_EQ(flash.rayIntensity, 0.8);
  EXPECT_DOUBLE_EQ(flash.saturation, 1.8);
  EXPECT_EQ(flash.palette(), (Palette{"Custom", agentStops}));
}

TEST(Alert, ThePeakIsHeldWhereItShouldBe) {
  NimbraConfig config;
  config.timeScale = 3;
  config.curlStrength = 9;
  config.rayIntensity = 0.9;
  config.saturation = 2.9;
  const NimbraConfig flash = applyingAlert(config, 101, 1, {}, 100);
  EXPECT_EQ(flash.timeScale, 4);
  EXPECT_EQ(flash.curlStrength, 10);
  EXPECT_EQ(flash.rayIntensity, 1);
  EXPECT_EQ(flash.saturation, 3);
  EXPECT_EQ(flash.hueSpread, config.hueSpread);
  EXPECT_EQ(flash.customPalette, std::nullopt);
}

TEST(ScriptReport, HoldsEveryParameterOnce) {
  const ScriptReport report =
      reportOn(NimbraScript::parse(scriptColors + "palette wallpaper\nset tempo 2\nset speed 3"), {});
  EXPECT_EQ(report.palette.has_value(), true);
  EXPECT_TRUE(report.wallpaper);
  std::map<std::string_view, double> values(report.values.begin(), report.values.end());
  EXPECT_EQ(values.size(), scriptParamCount);
  EXPECT_EQ(values.at("speed"), 3);  // the pace is not applied
  EXPECT_EQ(values.at("tempo"), 2);
  EXPECT_EQ(values.at("fade"), NimbraConfig().dyeDissipation);
}

}  // namespace
}  // namespace veloria
