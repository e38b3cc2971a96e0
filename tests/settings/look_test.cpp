#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>

#include "settings/GlassTuning.h"
#include "settings/LookPreset.h"
#include "settings/NimbraConfig.h"
#include "settings/SettingsCodec.h"

namespace veloria::tests {
namespace {

using Json = nlohmann::ordered_json;

/// The agreed palettes, presets and glass tunings, each with the fields that it sets.
Json agreed(const char* kind) {
  std::ifstream file(VELORIA_TEST_DATA "/looks.json");
  return Json::parse(file)[kind];
}

Json toJson(const NimbraConfig& config) {
  return Json::parse(encodeSettings(config).value_or("null"));
}

NimbraConfig set(NimbraConfig config, const Json& values) {
  for (const auto& [key, value] : values.items()) EXPECT_TRUE(setField(config, key, value.dump())) << key;
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

TEST(Palette, TheBuiltInOnesAreTheAgreedOnes) {
  const Json palettes = agreed("palettes");
  ASSERT_EQ(Palette::presets().size(), palettes.size());
  for (std::size_t i = 0; i < palettes.size(); ++i) {
    EXPECT_EQ(*set({}, {{"customPalette", palettes[i]}}).customPalette, Palette::presets()[i]);
  }
}

TEST(Palette, ACustomOneWinsAndAnUnknownNameGivesTheFirst) {
  NimbraConfig config;
  config.paletteName = "Nebula";
  EXPECT_EQ(config.palette(), Palette::presets()[3]);
  config.customPalette = Palette{"Nebula", Palette::presets()[4].stops};
  EXPECT_EQ(config.palette(), *config.customPalette);
  config.customPalette.reset();
  config.paletteName = "nebula";
  EXPECT_EQ(config.palette().name, "Classic Nimbra");
}

TEST(LookPreset, EachSetsWhatItNamesResetsTheOtherLookFieldsAndKeepsTheRest) {
  const Json presets = agreed("presets");
  ASSERT_EQ(LookPreset::all().size(), presets.size());
  for (std::size_t i = 0; i < presets.size(); ++i) {
    const LookPreset& preset = LookPreset::all()[i];
    EXPECT_EQ(preset.name, presets[i]["name"]);
    EXPECT_EQ(preset.description, presets[i]["description"]);
    NimbraConfig expected = set(unusual().resettingLook(), presets[i]["sets"]);
    expected.customPalette.reset();
    EXPECT_EQ(toJson(choose(unusual(), preset)), toJson(expected)) << preset.name;
    EXPECT_EQ(LookPreset::find(preset.name), &preset);
  }
  EXPECT_EQ(LookPreset::find("rave"), nullptr);
}

TEST(GlassTuning, OverwritesEightFieldsAndResetsNothing) {
  const Json tunings = agreed("glass");
  for (std::size_t i = 0; i < GlassTuning::all().size(); ++i) {
    EXPECT_EQ(GlassTuning::all()[i].title, tunings[i]["name"]);
    NimbraConfig config = unusual();
    GlassTuning::all()[i].apply(config);
    EXPECT_EQ(toJson(config), toJson(set(unusual(), tunings[i]["sets"])));
  }
}

TEST(NimbraConfig, ResettingTheLookTouchesLookAndFluidOnly) {
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

TEST(NimbraConfig, TempoSpeedsUpMoreThanItStirs) {
  NimbraConfig expected = set({}, {{"tempo", 2},
                                   {"timeScale", 2 * 0.18},
                                   {"flowShear", 1.4 * 0.38},
                                   {"vorticity", 1.35 * 0.38},
                                   {"curlStrength", 1.45 * 0.75},
                                   {"shimmer", 2 * 0.015}});
  NimbraConfig actual = set({}, {{"tempo", 2}}).applyingTempo();
  for (const auto field : {&NimbraConfig::timeScale, &NimbraConfig::flowShear, &NimbraConfig::vorticity,
                           &NimbraConfig::curlStrength, &NimbraConfig::shimmer}) {
    EXPECT_DOUBLE_EQ(actual.*field, expected.*field);
    actual.*field = expected.*field;
  }
  EXPECT_EQ(actual, expected) << "the others are kept";
}

TEST(NimbraConfig, TempoIsLimitedAndAUnitTempoChangesNothing) {
  const auto timeScaleAt = [](double tempo) {
    NimbraConfig config;
    config.tempo = tempo;
    return config.applyingTempo().timeScale;
  };
  EXPECT_EQ(timeScaleAt(1.0005), 0.18);
  EXPECT_EQ(timeScaleAt(5), timeScaleAt(2.5));
  EXPECT_EQ(timeScaleAt(0), timeScaleAt(0.15));
  NimbraConfig absurd = unusual();
  absurd.tempo = 1;
  EXPECT_EQ(absurd.applyingTempo(), absurd) << "ranges apply only if the tempo does";
}

TEST(NimbraConfig, WhatTempoChangesStaysInItsRange) {
  const auto folded = [](double value) {
    NimbraConfig config;
    config.tempo = 2;
    config.timeScale = config.flowShear = config.vorticity = config.curlStrength = config.shimmer = value;
    const NimbraConfig result = config.applyingTempo();
    return std::vector{result.timeScale, result.flowShear, result.vorticity, result.curlStrength, result.shimmer};
  };
  EXPECT_EQ(folded(1e300), (std::vector<double>{4, 8, 6, 10, 2}));
  for (const double low : {-1e300, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(folded(low), (std::vector<double>{0.02, 0, 0, 0, 0}));
  }
}

TEST(Modes, EachDriveModeHasItsOwnLine) {
  std::set<std::string_view> lines;
  for (std::size_t i = 0; i < rawValues<Visualizer>.size(); ++i) lines.insert(description(static_cast<Visualizer>(i)));
  EXPECT_EQ(lines.size(), 6U);
  EXPECT_EQ(description(Visualizer::agent), "Driven by coding agents through the nimbra command.");
}

}  // namespace
}  // namespace veloria::tests
