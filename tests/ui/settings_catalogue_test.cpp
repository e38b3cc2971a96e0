#include "ui/controls/SettingCatalogue.h"

#include <cmath>

#include "UiFixture.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"
#include "ui/controls/SettingValue.h"
#include "ui/window/Pages.h"

namespace veloria::tests {
namespace {

TEST(SettingCatalogue, HasEveryFieldThatHasNoCardOnce) {
  std::vector<std::string> expected, keys{"visualizer", "customScript", "paletteName", "customPalette"};
  for (const SettingsField& field : settingsFields()) expected.emplace_back(field.key);
  for (const Setting& setting : SettingCatalogue::all()) keys.emplace_back(setting.key);
  EXPECT_THAT(keys, testing::UnorderedElementsAreArray(expected));
}

TEST(SettingCatalogue, RangesHoldTheDefaultsThePresetsAndTheGlassTunings) {
  std::vector<NimbraConfig> looks{NimbraConfig()};
  for (const LookPreset& preset : LookPreset::all()) looks.push_back(choose(NimbraConfig(), preset));
  for (const GlassTuning& tuning : GlassTuning::all()) tuning.apply(looks.emplace_back());
  for (const Setting& setting : SettingCatalogue::all()) {
    for (const NimbraConfig& look : looks) {
      NimbraConfig held = look;
      setValue(held, setting, valueIn(look, setting));
      EXPECT_EQ(held, look) << setting.key;
    }
  }
}

TEST(SettingValue, ATravelGoesOverTheWholeRangeEachMoveMovesAndNothingLeavesTheRange) {
  for (const Setting& setting : SettingCatalogue::all()) {
    if (kindOf(setting) != SettingKind::number) continue;
    SCOPED_TRACE(setting.key);
    const NumberRange& range = setting.range;
    EXPECT_EQ(valueAt(range, 0), range.minimum);
    EXPECT_EQ(valueAt(range, 1), range.maximum);
    double before = range.minimum;
    for (int i = 1; i <= 100; ++i) {
      const double value = valueAt(range, i / 100.0);
      EXPECT_GE(value, std::exchange(before, value));
      EXPECT_NEAR(travelOf(range, value), i / 100.0, 0.1);
    }
    double value = range.minimum;
    for (int moves = 0; moves < 80 && value < range.maximum; ++moves) {
      before = value;
      value = movedBy(range, value, 0.02);
      ASSERT_GT(value, before);
    }
    EXPECT_EQ(value, range.maximum);
    EXPECT_LT(movedBy(range, value, -0.02), value);
    EXPECT_EQ(travelOf(range, NAN), 0);
    NimbraConfig config;
    setValue(config, setting, NAN);
    EXPECT_EQ(config, NimbraConfig());
    setValue(config, setting, INFINITY);
    EXPECT_EQ(valueIn(config, setting), range.maximum);
  }
}

TEST(SettingSearch, FindsByWordsInAnyOrderCaseAndAccent) {
  const std::tuple<const char*, std::vector<std::string>, const char*> cases[] = {
      // what is typed, what is found among others, and what is not
      {"glow", {"glowAmount", "glowRadius", "hdrGlow", "pointerGlow", "pointerMode"}, "quality"},
      {"  SPEED   wind ", {"flowSpeed"}, "raySpeed"},
      {"transparency", {"opacity"}, "exposure"},
      {"éxposure", {"exposure"}, "opacity"},
      {"notch", {"notchMode", "notchFeather", "notchPadding"}, "enabled"},
      {"glow xyzzy", {}, "glowAmount"},
  };
  for (const auto& [typed, found, missed] : cases) {
    const QStringList words = searchWords(QString::fromUtf8(typed));
    std::vector<std::string> keys;
    for (const Setting& setting : SettingCatalogue::all()) {
      if (containsWords(searchText(setting), words)) keys.emplace_back(setting.key);
    }
    EXPECT_THAT(keys, testing::IsSupersetOf(found)) << typed;
    EXPECT_THAT(keys, testing::Not(testing::Contains(missed))) << typed;
  }
}

}  // namespace
}  // namespace veloria::tests
