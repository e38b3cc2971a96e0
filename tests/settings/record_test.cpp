// The record, what is stored of it, and the looks.

#include <gmock/gmock.h>

#include <array>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <span>

#include "base/StrictJson.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"

namespace veloria::tests {
namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;
using testing::StartsWith;

std::string dataFile(const char* name) {
  std::ifstream file(std::string(VELORIA_TEST_DATA "/") + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// What is stored for a record that nobody has changed.
const std::string defaultRecord = dataFile("defaults.json");
/// The agreed palettes, presets and glass tunings, each with the fields that it sets.
const Json agreedLooks = Json::parse(dataFile("looks.json"));

std::string errorOf(const std::string& bytes) {
  const auto result = decodeSettings(bytes);
  return result ? "accepted" : result.error();
}

std::string errorWith(const std::string& key, const Json& value) {
  Json json = Json::parse(defaultRecord);
  json[key] = value;
  return errorOf(json.dump());
}

/// A value of the field's type that is not its default, to tell fields apart by.
template <typename T>
T other(const T& value, int salt) {
  if constexpr (std::is_same_v<T, bool>) {
    return !value;
  } else if constexpr (std::is_same_v<T, std::string>) {
    return "text " + std::to_string(salt) + " \"\\\n\t\x01 é 🌈";
  } else if constexpr (std::is_same_v<T, std::optional<Palette>>) {
    return Palette{"Mine", {{0.1F, 0.2F, 0.3F}, {1, 0, 1.0F / 3}, {0.55F, 1e-30F, 0.7F}, {1, 1, 1}, {0, 0, 0}}};
  } else if constexpr (std::is_enum_v<T>) {
    return static_cast<T>((static_cast<std::size_t>(value) + 1) % rawValues<T>.size());
  } else if constexpr (std::is_same_v<T, double>) {
    return value + 1.0 / (salt + 3);
  } else {
    return value + salt + 1;
  }
}

/// A record in which no field has its default.
NimbraConfig unusual() {
  NimbraConfig config;
  int salt = 0;
#define VELORIA_FIELD(type, name, initial, group) config.name = other(config.name, salt++);
#include "settings/NimbraConfigFields.h"
  return config;
}

NimbraConfig set(NimbraConfig config, const Json& values) {
  for (const auto& [key, value] : values.items()) EXPECT_TRUE(setField(config, key, value.dump())) << key;
  return config;
}

TEST(SettingsCodec, TheDefaultRecordIsTheAgreedOneInTheAgreedOrderAndEveryFieldComesBack) {
  EXPECT_EQ(encodeSettings(NimbraConfig()), defaultRecord);
  EXPECT_EQ(*decodeSettings(defaultRecord), NimbraConfig());
  EXPECT_EQ(*decodeSettings(*encodeSettings(unusual())), unusual());
}

TEST(SettingsCodec, EachMissingValueAndEachOfAWrongKindFailsTheWholeRecord) {
  const std::map<std::string, std::vector<Json>> good{{"true or false", {true}},
                                                      {"a number", {1, 1.5}},
                                                      {"a whole number", {1}},
                                                      {"a text in double quotes", {"text"}}};
  for (const SettingsField& field : settingsFields()) {
    const std::string key(field.key);
    const bool isPalette = key == "customPalette";
    Json json = Json::parse(defaultRecord);
    json.erase(key);
    EXPECT_EQ(errorOf(json.dump()), isPalette ? "accepted" : key + " is missing");
    for (const Json& sample : {Json(), Json(true), Json(1), Json(1.5), Json("text"), Json::array(), Json::object()}) {
      const auto kind = good.find(field.kind);
      const bool taken =
          kind != good.end() ? std::ranges::count(kind->second, sample) > 0 : isPalette && sample.is_null();
      EXPECT_THAT(errorWith(key, sample), StartsWith(taken ? "accepted" : key + " must be ")) << sample;
    }
  }
  for (const char* bytes : {"", "null", "[]", "{}"}) EXPECT_FALSE(decodeSettings(bytes)) << bytes;
}

TEST(SettingsCodec, IntegersAreWholeAndFitSixtyFourBits) {
  using Limits = std::numeric_limits<std::int64_t>;
  const std::pair<const char*, std::optional<std::int64_t>> cases[] = {{"60.0", 60},
                                                                       {"60.5", {}},
                                                                       {"-9223372036854775808", Limits::min()},
                                                                       {"-9223372036854775809", {}},
                                                                       {"9223372036854775807", Limits::max()},
                                                                       {"9223372036854775808", {}},
                                                                       {"9223372036854774784.0", 9223372036854774784},
                                                                       {"9223372036854775808.0", {}}};
  for (const auto& [text, value] : cases) {
    NimbraConfig config;
    EXPECT_EQ(static_cast<bool>(setField(config, "framesPerSecond", text)), value.has_value()) << text;
    EXPECT_EQ(config.framesPerSecond, value.value_or(60)) << text;
  }
}

TEST(SettingsCodec, ACustomPaletteIsDrawableOrTheRecordIsRefused) {
  const Json s = {0, 0.5, 1};
  const auto palette = [](const Json& stops) { return Json{{"name", "Mine"}, {"stops", stops}}; };
  EXPECT_EQ(errorWith("customPalette", palette({s, s, s, s})), "accepted");
  EXPECT_EQ(errorWith("customPalette", palette({s, s, s, s, {0.1, 0.2, 0.3, 0.9}})), "accepted");
  const std::vector<Json> refused{{{"name", "Mine"}},
                                  {{"stops", {s, s, s, s}}},
                                  {{"name", 1}, {"stops", {s, s, s, s}}},
                                  palette(nullptr),
                                  palette({s, s, s}),
                                  palette({s, s, {0, 1}, s}),
                                  palette({s, s, {0, 1.0001, 1}, s}),
                                  palette({s, s, {-0.0001, 1, 1}, s}),
                                  palette({s, s, 7, s})};
  for (const Json& value : refused) {
    EXPECT_THAT(errorWith("customPalette", value), HasSubstr("at least 4 stops")) << value;
  }
}

TEST(SettingsCodec, UnknownKeysAreIgnoredAndTheLastOfADoubleKeyCounts) {
  std::string bytes = defaultRecord;
  bytes.insert(1, R"("futureField": {"a": [1]}, "enabled": "not a truth value",)");
  EXPECT_EQ(*decodeSettings(bytes), NimbraConfig());
}

TEST(SettingsCodec, NothingIsWrittenThatCouldNotBeReadAgain) {
  const ColorStop stop{0, 0.5F, 1};
  const float nan = std::numeric_limits<float>::quiet_NaN();
  std::array<NimbraConfig, 6> bad;
  bad[0].exposure = nan;
  bad[1].customScript = "\xFF";
  bad[2].customScript = std::string(maximumJsonBytes, 'x');
  bad[3].customPalette = Palette{"three", {3, stop}};
  bad[4].customPalette = Palette{"nan", {stop, stop, stop, {nan, 0, 0}}};
  bad[5].customPalette = Palette{"big", {stop, stop, stop, {2, 0, 0}}};
  for (const NimbraConfig& config : bad) EXPECT_FALSE(encodeSettings(config)) << &config - bad.data();
}

TEST(SettingsField, EachIsListedWithItsDefaultAndCanBeSet) {
  const Json defaults = Json::parse(defaultRecord);
  const Json source = Json::parse(*encodeSettings(unusual()));
  NimbraConfig all;
  for (const SettingsField& field : settingsFields()) {
    const std::string key(field.key);
    EXPECT_EQ(Json::parse(field.defaultJson), defaults.contains(key) ? defaults[key] : Json()) << key;
    EXPECT_TRUE(setField(all, key, source[key].dump())) << key;
  }
  EXPECT_EQ(all, unusual());
}

TEST(SettingsField, SaysWhatWouldBeRightAndChangesNothing) {
  const std::array<std::string, 3> cases[] = {
      {"exposure", "\"2\"", "exposure must be a number"},
      {"notchMode", "mask",
       R"(notchMode must be one of "mask", "halo", "ignore", written as JSON (line 1, column 1: invalid literal))"},
      {"exposur", "2", "there is no setting \"exposur\"; did you mean exposure?"},
      {"Exposure", "2", "there is no setting \"Exposure\"; did you mean exposure?"},
      {"fade", "2", "there is no setting \"fade\"; did you mean fadeTop, fadeBottom, fadeSide?"},
      {"", "2", "there is no setting \"\""},
  };
  NimbraConfig config;
  for (const auto& [key, json, error] : cases) {
    const auto result = setField(config, key, json);
    ASSERT_FALSE(result) << key;
    EXPECT_EQ(result.error(), error);
  }
  EXPECT_LT(setField(config, std::string(1'000'000, 'k'), "1").error().size(), 200U);
  EXPECT_EQ(config, NimbraConfig());
}

TEST(Palette, TheBuiltInOnesAreTheAgreedOnesACustomOneWinsAndAnUnknownNameGivesTheFirst) {
  const Json palettes = agreedLooks["palettes"];
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
  const Json presets = agreedLooks["presets"], defaults = Json::parse(defaultRecord);
  const std::set<std::string_view> rate{"tempo", "quality", "verticalStretch", "pressureIterations"};
  Json reset;
  for (const SettingsField& field : std::span(settingsFields()).subspan(30, 44)) {
    if (!rate.contains(field.key)) reset[std::string(field.key)] = defaults[std::string(field.key)];
  }
  ASSERT_EQ(LookPreset::all().size(), presets.size());
  for (std::size_t i = 0; i < presets.size(); ++i) {
    const LookPreset& preset = LookPreset::all()[i];
    EXPECT_EQ(preset.name, presets[i]["name"]);
    EXPECT_EQ(preset.description, presets[i]["description"]);
    NimbraConfig expected = set(set(unusual(), reset), presets[i]["sets"]);
    expected.customPalette.reset();
    EXPECT_EQ(choose(unusual(), preset), expected) << preset.name;
  }
  EXPECT_EQ(LookPreset::find("rave"), nullptr);
}

TEST(GlassTuning, OverwritesEightFieldsAndResetsNothing) {
  const Json tunings = agreedLooks["glass"];
  for (std::size_t i = 0; i < GlassTuning::all().size(); ++i) {
    EXPECT_EQ(GlassTuning::all()[i].title, tunings[i]["name"]);
    NimbraConfig config = unusual();
    GlassTuning::all()[i].apply(config);
    EXPECT_EQ(config, set(unusual(), tunings[i]["sets"]));
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
    EXPECT_EQ(result, config) << "the others are kept";
    return values;
  };
  EXPECT_THAT(folded(2, 0.5), testing::Pointwise(testing::DoubleEq(), Values{1, 0.7, 0.675, 0.725, 1}));
  EXPECT_EQ(folded(1.0005, 99), (Values{99, 99, 99, 99, 99})) << "ranges apply only if the tempo does";
  EXPECT_EQ(folded(5, 0.5), folded(2.5, 0.5));
  EXPECT_EQ(folded(0, 0.5), folded(0.15, 0.5));
  EXPECT_EQ(folded(2, 1e300), (Values{4, 8, 6, 10, 2}));
  EXPECT_EQ(folded(2, -1e300), (Values{0.02, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace veloria::tests
