#include "ui/controls/SettingCatalogue.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "ConfigDifference.h"
#include "settings/GlassTuning.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"
#include "ui/controls/SettingSearch.h"
#include "ui/controls/SettingValue.h"

namespace veloria {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// What the settings window offers otherwise.
const std::vector<std::string_view> fieldsWithCards{"visualizer", "customScript", "paletteName", "customPalette"};

std::vector<const Setting*> numbers() {
  std::vector<const Setting*> found;
  for (const Setting& setting : SettingCatalogue::all()) {
    if (kindOf(setting) == SettingKind::number) found.push_back(&setting);
  }
  return found;
}

TEST(SettingCatalogue, HasEveryFieldThatHasNoCardOnce) {
  std::vector<std::string_view> expected;
  for (const SettingsField& field : settingsFields()) {
    if (std::find(fieldsWithCards.begin(), fieldsWithCards.end(), field.key) == fieldsWithCards.end()) {
      expected.push_back(field.key);
    }
  }
  std::vector<std::string_view> keys;
  for (const Setting& setting : SettingCatalogue::all()) keys.push_back(setting.key);
  EXPECT_THAT(keys, testing::UnorderedElementsAreArray(expected));
}

TEST(SettingCatalogue, WritesTheFieldOfItsKeyAndNoOther) {
  for (const Setting& setting : SettingCatalogue::all()) {
    NimbraConfig config;
    const double before = valueIn(config, setting);
    setValue(config, setting, kindOf(setting) == SettingKind::toggle ? 1 - before : before + 1);
    if (config == NimbraConfig()) setValue(config, setting, before - 1);
    EXPECT_THAT(differingKeys(config, NimbraConfig()), ElementsAre(std::string(setting.key)));
    EXPECT_FALSE(isDefault(config, setting));
    resetToDefault(config, setting);
    EXPECT_EQ(config, NimbraConfig());
  }
}

TEST(SettingCatalogue, TextsArePresentAndKeepTogether) {
  std::vector<std::string> groups;
  for (const Setting& setting : SettingCatalogue::all()) {
    for (const char* text : {setting.title, setting.help, setting.synonyms, setting.group}) {
      EXPECT_STRNE(text, "") << setting.key;
    }
    EXPECT_LE(std::string_view(setting.title).size(), 32U) << setting.title;
    const std::string group = std::to_string(static_cast<int>(setting.tab)) + setting.group;
    if (groups.empty() || groups.back() != group) {
      EXPECT_THAT(groups, Not(Contains(group))) << "a group in two pieces";
      groups.push_back(group);
    }
  }
}

TEST(SettingCatalogue, RangesHoldTheDefaultsThePresetsAndTheGlassTunings) {
  std::vector<NimbraConfig> looks{NimbraConfig()};
  for (const LookPreset& preset : LookPreset::all()) looks.push_back(choose(NimbraConfig(), preset));
  for (const GlassTuning& tuning : GlassTuning::all()) {
    looks.emplace_back();
    tuning.apply(looks.back());
  }
  for (const Setting* setting : numbers()) {
    for (const NimbraConfig& look : looks) {
      NimbraConfig held = look;
      setValue(held, *setting, valueIn(look, *setting));
      EXPECT_EQ(held, look) << setting->key;
    }
  }
}

TEST(SettingValue, ATravelGoesOverTheWholeRangeAndOnlyUp) {
  for (const Setting* setting : numbers()) {
    const NumberRange& range = setting->range;
    EXPECT_EQ(valueAt(range, 0), range.minimum) << setting->key;
    EXPECT_EQ(valueAt(range, 1), range.maximum) << setting->key;
    double before = range.minimum;
    for (int i = 1; i <= 100; ++i) {
      const double value = valueAt(range, i / 100.0);
      EXPECT_GE(value, before) << setting->key;
      EXPECT_NEAR(travelOf(range, value), i / 100.0, 0.1) << setting->key;
      before = value;
    }
  }
}

TEST(SettingValue, ThePlaceOfAValueIsTheValuesOwn) {
  for (const Setting* setting : numbers()) {
    const double initial = valueIn(NimbraConfig(), *setting);
    EXPECT_NEAR(valueAt(setting->range, travelOf(setting->range, initial)), initial, 1e-12) << setting->key;
  }
}

TEST(SettingValue, AMoveAlwaysMovesAndStaysInside) {
  for (const Setting* setting : numbers()) {
    const NumberRange& range = setting->range;
    double value = range.minimum;
    int moves = 0;
    while (value < range.maximum && ++moves < 1000) {
      const double next = movedBy(range, value, 0.02);
      ASSERT_GT(next, value) << setting->key;
      value = next;
    }
    EXPECT_EQ(value, range.maximum) << setting->key;
    EXPECT_LE(moves, 80) << setting->key;
    EXPECT_LT(movedBy(range, value, -0.02), value) << setting->key;
    EXPECT_EQ(movedBy(range, value, 0.02), value) << setting->key;
  }
}

TEST(SettingValue, ValuesOutsideStandAtTheEndsAndComeInsideWhenMoved) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const Setting* setting : numbers()) {
    const NumberRange& range = setting->range;
    EXPECT_EQ(travelOf(range, infinity), 1) << setting->key;
    EXPECT_EQ(travelOf(range, -infinity), 0) << setting->key;
    EXPECT_EQ(travelOf(range, nan), 0) << setting->key;
    EXPECT_EQ(movedBy(range, 1e300, 0.02), range.maximum) << setting->key;
    EXPECT_LT(movedBy(range, 1e300, -0.02), range.maximum) << setting->key;
    NimbraConfig config;
    setValue(config, *setting, nan);
    EXPECT_EQ(config, NimbraConfig()) << setting->key;
    setValue(config, *setting, infinity);
    EXPECT_EQ(valueIn(config, *setting), range.maximum) << setting->key;
  }
}

struct SearchCase {
  const char* typed;
  std::vector<std::string> found;  ///< among others
  std::vector<std::string> missed;
};

class SettingSearch : public testing::TestWithParam<SearchCase> {};

TEST_P(SettingSearch, Finds) {
  const QStringList words = searchWords(QString::fromUtf8(GetParam().typed));
  std::vector<std::string> keys;
  for (const Setting& setting : SettingCatalogue::all()) {
    if (containsWords(searchText(setting), words)) keys.emplace_back(setting.key);
  }
  EXPECT_THAT(keys, testing::IsSupersetOf(GetParam().found));
  for (const std::string& key : GetParam().missed) EXPECT_THAT(keys, Not(Contains(key)));
}

INSTANTIATE_TEST_SUITE_P(
    Words, SettingSearch,
    testing::Values(
        SearchCase{"glow", {"glowAmount", "glowRadius", "hdrGlow", "pointerGlow", "pointerMode"}, {"quality"}},
        SearchCase{"saturation", {"saturation"}, {"contrast"}},
        SearchCase{"hueSpread", {"hueSpread", "hueSpreadScale", "hueSpreadDrift"}, {"hueShift"}},
        SearchCase{"  SPEED   wind ", {"flowSpeed"}, {"raySpeed"}},
        SearchCase{"wind speed", {"flowSpeed"}, {"raySpeed"}}, SearchCase{"transparency", {"opacity"}, {"exposure"}},
        SearchCase{"swirl", {"pointerMode", "curlStrength"}, {"fadeTop"}},
        SearchCase{"éxposure", {"exposure"}, {"opacity"}},
        SearchCase{"notch", {"notchMode", "notchFeather", "notchPadding"}, {"enabled"}},
        SearchCase{"fps", {"framesPerSecond"}, {"tempo"}},
        SearchCase{"system resolution", {"quality", "pressureIterations"}, {"enabled"}},
        SearchCase{"glow xyzzy", {}, {"glowAmount"}}));

}  // namespace
}  // namespace veloria
