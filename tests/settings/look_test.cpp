#include <gmock/gmock.h>

#include <array>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

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

TEST(Palette, TheBuiltInOnesAreTheAgreedOnesACustomOneWinsAndAnUnknownNameGivesTheFirst) {
  const Json palettes = agreed("palettes");
  ASSERT_EQ(Palette::presets().size(), palettes.size());
  for (std::size_t i = 0; i < palettes.size(); ++i) {
    const Palette& palette = Palette::presets()[i];
    EXPECT_EQ(*set({}, {{"customPalette", palettes[i]}}).customPalette, palette);
    NimbraConfig config;
    config.paletteName = palette.name;
    EXPECT_EQ(config.palette(), palette);
    config.customPalette = Palette{palette.name, {4, {1, 1, 1}}};
    EXPECT_EQ(config.palette(), *config.customPalette);
  }
  EXPECT_EQ(set({}, {{"paletteName", "nebula"}}).palette(), Palette::presets()[0]);
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

TEST(NimbraConfig, TempoSpeedsUpMoreThanItStirsAndKeepsTheRanges) {
  constexpr std::array fields{&NimbraConfig::timeScale, &NimbraConfig::flowShear, &NimbraConfig::vorticity,
                              &NimbraConfig::curlStrength, &NimbraConfig::shimmer};
  using Values = std::array<double, fields.size()>;
  const auto folded = [&](double tempo, double value) {
    NimbraConfig config;
    config.tempo = tempo;
    for (const auto field : fields) config.*field = value;
    NimbraConfig result = config.applyingTempo();
    Values values;
    for (std::size_t i = 0; i < fields.size(); ++i) values[i] = std::exchange(result.*fields[i], value);
    EXPECT_EQ(toJson(result), toJson(config)) << "the others are kept";
    return values;
  };
  const auto twice = folded(2, 0.5);
  const Values expected{1, 0.7, 0.675, 0.725, 1};
  for (std::size_t i = 0; i < fields.size(); ++i) EXPECT_DOUBLE_EQ(twice[i], expected[i]);
  EXPECT_EQ(folded(1.0005, 99), (Values{99, 99, 99, 99, 99})) << "ranges apply only if the tempo does";
  EXPECT_EQ(folded(5, 0.5), folded(2.5, 0.5));
  EXPECT_EQ(folded(0, 0.5), folded(0.15, 0.5));
  EXPECT_EQ(folded(2, 1e300), (Values{4, 8, 6, 10, 2}));
  EXPECT_EQ(folded(2, -1e300), (Values{0.02, 0, 0, 0, 0}));
  NimbraConfig odd = set({}, {{"tempo", 2}});
  odd.timeScale = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(odd.applyingTempo().timeScale, 0.02);
}

}  // namespace
}  // namespace veloria::tests
