#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "settings/GlassTuning.h"
#include "settings/LookPreset.h"
#include "settings/NimbraConfig.h"
#include "settings/SettingsCodec.h"

namespace veloria {
namespace {

using Json = nlohmann::ordered_json;

const Json palettes = Json::parse(R"([
  {"name": "Classic Nimbra", "stops": [[0.05, 1.0, 0.55], [0.15, 0.95, 0.8], [0.35, 0.55, 1.0], [0.85, 0.3, 0.95]]},
  {"name": "Solar Storm", "stops": [[1.0, 0.28, 0.16], [1.0, 0.62, 0.2], [0.95, 0.2, 0.55], [0.55, 0.12, 0.85]]},
  {"name": "Arctic Ice", "stops": [[0.2, 0.95, 1.0], [0.35, 0.65, 1.0], [0.55, 0.45, 1.0], [0.85, 0.92, 1.0]]},
  {"name": "Nebula", "stops": [[0.35, 0.1, 0.75], [0.85, 0.2, 0.7], [0.25, 0.55, 1.0], [1.0, 0.8, 0.45]]},
  {"name": "Dragonfire", "stops": [[1.0, 0.85, 0.25], [1.0, 0.4, 0.08], [0.8, 0.08, 0.2], [0.35, 0.02, 0.3]]},
  {"name": "Bioluminescence", "stops": [[0.1, 1.0, 0.85], [0.05, 0.7, 0.95], [0.45, 0.25, 1.0], [0.9, 0.45, 1.0]]},
  {"name": "Rose Quartz", "stops": [[1.0, 0.55, 0.7], [1.0, 0.75, 0.55], [0.7, 0.5, 1.0], [0.98, 0.9, 0.95]]},
  {"name": "Flurry", "stops": [[1.0, 0.2, 0.55], [1.0, 0.8, 0.15], [0.15, 0.9, 1.0], [0.55, 0.25, 1.0]]},
  {"name": "Monochrome Glass", "stops": [[0.65, 0.78, 0.95], [0.85, 0.92, 1.0], [0.45, 0.55, 0.75], [1.0, 1.0, 1.0]]}
])");

constexpr double _ = std::numeric_limits<double>::quiet_NaN();  // keeps the default

struct FieldOfPresets {
  std::string key;
  std::vector<double> values;  // one for each preset
};

const std::vector<FieldOfPresets>& presetTable() {
  static const std::vector<FieldOfPresets> table{
      {"opacity", {_, _, _, _, 0.7, _, _}},
      {"exposure", {0.9, 1.25, 0.75, 1.05, 0.55, 1.35, 1.35}},
      {"contrast", {_, _, _, _, _, 1.15, _}},
      {"saturation", {1.4, 1.55, 1.1, 1.5, 0.85, 1.7, 1.7}},
      {"colorCycle", {0.004, 0.012, 0.002, 0.018, 0, 0.0015, 0.045}},
      {"heightTint", {0.45, 0.3, 0.6, 0.25, 0.5, 0.08, 0.2}},
      {"hueSpread", {_, _, _, _, _, 0.3, _}},
      {"hueSpreadScale", {_, _, _, _, _, 3.4, _}},
      {"glowAmount", {0.95, 1.2, 1.1, 1.4, 0.7, 1.55, 1.3}},
      {"glowRadius", {_, _, _, _, _, 2.6, _}},
      {"ambientLevel", {_, _, _, _, _, 0.015, _}},
      {"rayIntensity", {0.65, 0.85, 0.4, 0.35, 0.5, 0.72, 0.9}},
      {"raySharpness", {1.6, 2.4, 1.2, 1.1, 1.4, 1.7, 3.0}},
      {"rayScale", {7.0, 11.0, 4.0, 3.5, 6.0, 6.5, 14.0}},
      {"raySpeed", {_, _, _, _, _, 0.03, _}},
      {"rayFlow", {_, _, _, _, _, 0.05, _}},
      {"shimmer", {0.25, 0.55, 0.1, 0.15, 0.08, 0.03, 0.7}},
      {"detailOctaves", {_, _, _, _, _, 4, _}},
      {"timeScale", {1.0, 1.6, 0.6, 0.85, 0.7, 0.16, 1.9}},
      {"vorticity", {1.2, 2.6, 0.6, 2.0, 0.8, 0.7, 3.2}},
      {"curlStrength", {2.2, 4.2, 1.2, 3.0, 1.4, 1.0, 5.0}},
      {"flowSpeed", {0.9, 1.8, 0.4, 0.5, 0.5, 0.12, 2.4}},
      {"flowShear", {1.6, 3.0, 0.9, 1.2, 1.0, 0.45, 3.6}},
      {"emitRate", {1.3, 1.9, 1.2, 1.7, 1.0, 1.8, 2.1}},
      {"paletteSpread", {_, _, _, _, _, 1.6, _}},
  };
  return table;
}

const std::vector<std::vector<std::string>> presetTexts{
    {"Northern Lights", "Calm green curtains with violet tips.", "Classic Nimbra"},
    {"Geomagnetic Storm", "Fast, violent, red and magenta.", "Solar Storm"},
    {"Glacier Drift", "Slow, wide, pale blue.", "Arctic Ice"},
    {"Deep Nebula", "Rich swirling colour, slow bloom.", "Nebula"},
    {"Whisper", "Barely there. For when you want it subtle.", "Monochrome Glass"},
    {"Flurry", "The old OS X screensaver: bright hue-cycling streamers.", "Flurry"},
    {"Rave", "Loud, fast, hue-cycling. You asked for cool.", "Bioluminescence"},
};

Json toJson(const NimbraConfig& config) {
  return Json::parse(encodeSettings(config).value_or("null"));
}

NimbraConfig set(NimbraConfig config, const std::map<std::string, Json>& values) {
  for (const auto& [key, value] : values) EXPECT_TRUE(setField(config, key, value.dump())) << key;
  return config;
}

/// A record in which every number and truth value differs from its default, and some of the rest do.
NimbraConfig unusual() {
  NimbraConfig config;
  const Json defaults = toJson(config);
  for (const auto& [key, value] : defaults.items()) {
    if (value.is_boolean()) config = set(config, {{key, !value.get<bool>()}});
    if (value.is_number()) config = set(config, {{key, value.get<double>() + 5}});
  }
  config.customPalette = Palette{"Flurry", Palette::presets()[3].stops};
  config.paletteName = "Dragonfire";
  config.customScript = "set wind 1";
  config.layerMode = LayerMode::desktopFull;
  config.pointerMode = PointerMode::calm;
  return config;
}

TEST(PaletteTest, TheBuiltInOnesAreTheAgreedOnes) {
  ASSERT_EQ(Palette::presets().size(), palettes.size());
  for (std::size_t i = 0; i < palettes.size(); ++i) {
    NimbraConfig config;
    ASSERT_TRUE(setField(config, "customPalette", palettes[i].dump()));
    EXPECT_EQ(*config.customPalette, Palette::presets()[i]);
  }
}

TEST(PaletteTest, ACustomOneWinsAndAnUnknownNameGivesTheFirst) {
  NimbraConfig config;
  config.paletteName = "Nebula";
  EXPECT_EQ(config.palette(), Palette::presets()[3]);
  config.customPalette = Palette{"Nebula", Palette::presets()[4].stops};
  EXPECT_EQ(config.palette(), *config.customPalette);
  config.customPalette.reset();
  config.paletteName = "nebula";
  EXPECT_EQ(config.palette().name, "Classic Nimbra");
}

TEST(LookPresetTest, EachSetsWhatItNamesResetsTheOtherLookFieldsAndKeepsTheRest) {
  ASSERT_EQ(LookPreset::all().size(), presetTexts.size());
  const NimbraConfig before = unusual();
  for (std::size_t i = 0; i < presetTexts.size(); ++i) {
    const LookPreset& preset = LookPreset::all()[i];
    EXPECT_EQ(preset.name, presetTexts[i][0]);
    EXPECT_EQ(preset.description, presetTexts[i][1]);
    NimbraConfig expected = before.resettingLook();
    expected.paletteName = presetTexts[i][2];
    expected.customPalette.reset();
    for (const auto& [key, values] : presetTable()) {
      ASSERT_EQ(values.size(), presetTexts.size());
      if (!std::isnan(values[i])) expected = set(expected, {{key, values[i]}});
    }
    EXPECT_EQ(toJson(choose(before, preset)), toJson(expected)) << preset.name;
    EXPECT_EQ(choose(choose(before, LookPreset::all()[6]), preset), expected) << "nothing of an earlier one is left";
    EXPECT_EQ(LookPreset::find(preset.name), &preset);
  }
  EXPECT_EQ(LookPreset::find("rave"), nullptr);
}

TEST(NimbraConfigTest, ResettingTheLookTouchesLookAndFluidOnly) {
  const NimbraConfig before = unusual();
  const NimbraConfig after = before.resettingLook();
  const std::set<std::string> rate{"tempo", "quality", "verticalStretch", "pressureIterations"};
  std::size_t index = 0;
  for (const SettingsField& field : settingsFields()) {
    const std::string key(field.key);
    const bool resets = index >= 30 && index <= 73 && !rate.contains(key);
    EXPECT_EQ(toJson(after)[key], toJson(resets ? NimbraConfig() : before)[key]) << key;
    ++index;
  }
}

TEST(NimbraConfigTest, TempoSpeedsUpMoreThanItStirs) {
  NimbraConfig config;
  config.tempo = 2;
  const NimbraConfig expected = set(config, {{"timeScale", 2 * 0.18},
                                             {"flowShear", 1.4 * 0.38},
                                             {"vorticity", 1.35 * 0.38},
                                             {"curlStrength", 1.45 * 0.75},
                                             {"shimmer", 2 * 0.015}});
  const NimbraConfig actual = config.applyingTempo();
  EXPECT_DOUBLE_EQ(actual.timeScale, expected.timeScale);
  EXPECT_DOUBLE_EQ(actual.flowShear, expected.flowShear);
  EXPECT_DOUBLE_EQ(actual.vorticity, expected.vorticity);
  EXPECT_DOUBLE_EQ(actual.curlStrength, expected.curlStrength);
  EXPECT_DOUBLE_EQ(actual.shimmer, expected.shimmer);
  NimbraConfig others = actual;
  others.timeScale = config.timeScale;
  others.flowShear = config.flowShear;
  others.vorticity = config.vorticity;
  others.curlStrength = config.curlStrength;
  others.shimmer = config.shimmer;
  EXPECT_EQ(others, config);
}

TEST(NimbraConfigTest, TempoIsLimitedAndAUnitTempoChangesNothing) {
  const auto timeScaleAt = [](double tempo) {
    NimbraConfig config;
    config.tempo = tempo;
    return config.applyingTempo().timeScale;
  };
  EXPECT_EQ(timeScaleAt(1.0005), 0.18);
  EXPECT_EQ(timeScaleAt(5), timeScaleAt(2.5));
  EXPECT_EQ(timeScaleAt(0), timeScaleAt(0.15));
  EXPECT_EQ(timeScaleAt(-1e300), timeScaleAt(0.15));
  NimbraConfig absurd = unusual();
  absurd.tempo = 1;
  absurd.shimmer = 99;
  EXPECT_EQ(absurd.applyingTempo(), absurd) << "limits apply only where the tempo does";
}

TEST(NimbraConfigTest, WhatTempoChangesStaysInItsRange) {
  const auto folded = [](double value) {
    NimbraConfig config;
    config.tempo = 2;
    config.timeScale = config.flowShear = config.vorticity = config.curlStrength = config.shimmer = value;
    const NimbraConfig result = config.applyingTempo();
    return std::vector{result.timeScale, result.flowShear, result.vorticity, result.curlStrength, result.shimmer};
  };
  EXPECT_EQ(folded(1e300), (std::vector<double>{4, 8, 6, 10, 2}));
  for (const double low : {-1e300, 0.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(folded(low), (std::vector<double>{0.02, 0, 0, 0, 0}));
  }
}

TEST(GlassTuningTest, OverwritesEightFieldsAndResetsNothing) {
  const std::vector<std::map<std::string, Json>> values{
      {{"exposure", 1.8},
       {"contrast", 0.92},
       {"saturation", 1.45},
       {"coverGain", 1.4},
       {"glowAmount", 1.05},
       {"rayScale", 6.5},
       {"detailOctaves", 4},
       {"emitScale", 3.0}},
      {{"exposure", 2.3},
       {"contrast", 0.8},
       {"saturation", 1.85},
       {"coverGain", 1.8},
       {"glowAmount", 1.4},
       {"rayScale", 4.5},
       {"detailOctaves", 3},
       {"emitScale", 2.4}},
  };
  ASSERT_EQ(GlassTuning::all().size(), values.size());
  EXPECT_EQ(GlassTuning::all()[0].title, "Tune for clear glass");
  EXPECT_EQ(GlassTuning::all()[1].title, "Tune for tinted glass");
  for (std::size_t i = 0; i < values.size(); ++i) {
    NimbraConfig config = unusual();
    GlassTuning::all()[i].apply(config);
    EXPECT_EQ(toJson(config), toJson(set(unusual(), values[i])));
  }
}

TEST(ModesTest, EachDriveModeHasItsOwnLine) {
  std::set<std::string_view> lines;
  for (std::size_t i = 0; i < rawValues<Visualizer>.size(); ++i) lines.insert(description(static_cast<Visualizer>(i)));
  EXPECT_EQ(lines.size(), 6U);
  EXPECT_EQ(description(Visualizer::agent), "Driven by coding agents through the nimbra command.");
}

}  // namespace
}  // namespace veloria
