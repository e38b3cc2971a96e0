#include "ui/controls/SettingCatalogue.h"

#include <cmath>
#include <limits>

#include "UiFixture.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"
#include "ui/controls/SettingValue.h"
#include "ui/window/Pages.h"

namespace veloria::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(SettingCatalogue, HasEveryFieldThatHasNoCardOnce) {
  std::vector<std::string> expected, keys;
  for (const SettingsField& field : settingsFields()) expected.emplace_back(field.key);
  for (const char* card : {"visualizer", "customScript", "paletteName", "customPalette"}) std::erase(expected, card);
  for (const Setting& setting : SettingCatalogue::all()) keys.emplace_back(setting.key);
  EXPECT_THAT(keys, testing::UnorderedElementsAreArray(expected));
}

TEST(SettingCatalogue, TextsArePresentAndGroupsKeepTogether) {
  std::vector<std::string> groups;
  for (const Setting& setting : SettingCatalogue::all()) {
    for (const char* text : {setting.title, setting.help, setting.synonyms, setting.group}) {
      EXPECT_STRNE(text, "") << setting.key;
    }
    const std::string group = std::to_string(static_cast<int>(setting.tab)) + setting.group;
    if (!groups.empty() && groups.back() == group) continue;
    EXPECT_THAT(groups, Not(Contains(group))) << "a group in two pieces";
    groups.push_back(group);
  }
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
    const double initial = valueIn(NimbraConfig(), setting);
    EXPECT_NEAR(valueAt(range, travelOf(range, initial)), initial, 1e-12);

    double value = range.minimum;
    int moves = 0;
    for (; value < range.maximum && moves < 81; ++moves) {
      ASSERT_GT(movedBy(range, value, 0.02), value);
      value = movedBy(range, value, 0.02);
    }
    EXPECT_LE(moves, 80);
    EXPECT_LT(movedBy(range, value, -0.02), value);
    EXPECT_EQ(movedBy(range, value, 0.02), range.maximum);

    EXPECT_EQ(travelOf(range, infinity), 1);
    EXPECT_EQ(travelOf(range, -infinity), 0);
    EXPECT_EQ(travelOf(range, nan), 0);
    EXPECT_LT(movedBy(range, 1e300, -0.02), range.maximum);
    NimbraConfig config;
    setValue(config, setting, nan);
    EXPECT_EQ(config, NimbraConfig());
    setValue(config, setting, infinity);
    EXPECT_EQ(valueIn(config, setting), range.maximum);
  }
}

TEST(SettingSearch, FindsByWordsInAnyOrderCaseAndAccent) {
  struct Case {
    const char* typed;
    std::vector<std::string> found;  ///< among others
    const char* missed;
  };
  const Case cases[] = {
      {"glow", {"glowAmount", "glowRadius", "hdrGlow", "pointerGlow", "pointerMode"}, "quality"},
      {"hueSpread", {"hueSpread", "hueSpreadScale", "hueSpreadDrift"}, "hueShift"},
      {"  SPEED   wind ", {"flowSpeed"}, "raySpeed"},
      {"transparency", {"opacity"}, "exposure"},
      {"swirl", {"pointerMode", "curlStrength"}, "fadeTop"},
      {"éxposure", {"exposure"}, "opacity"},
      {"notch", {"notchMode", "notchFeather", "notchPadding"}, "enabled"},
      {"system resolution", {"quality", "pressureIterations"}, "enabled"},
      {"glow xyzzy", {}, "glowAmount"},
  };
  for (const Case& c : cases) {
    const QStringList words = searchWords(QString::fromUtf8(c.typed));
    std::vector<std::string> keys;
    for (const Setting& setting : SettingCatalogue::all()) {
      if (containsWords(searchText(setting), words)) keys.emplace_back(setting.key);
    }
    EXPECT_THAT(keys, testing::IsSupersetOf(c.found)) << c.typed;
    EXPECT_THAT(keys, Not(Contains(c.missed))) << c.typed;
  }
}

}  // namespace
}  // namespace veloria::tests
