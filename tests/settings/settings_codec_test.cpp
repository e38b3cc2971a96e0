#include "settings/SettingsCodec.h"

#include <gmock/gmock.h>

#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "base/StrictJson.h"

namespace veloria::tests {
namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;
using testing::StartsWith;

/// What is stored for a record that nobody has changed.
const std::string& defaultRecord() {
  static const std::string bytes = [] {
    std::ifstream file(VELORIA_TEST_DATA "/defaults.json");
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return bytes;
}

/// The default record with one value changed.
Json recordWith(const std::string& key, const Json& value) {
  Json json = Json::parse(defaultRecord());
  json[key] = value;
  return json;
}

std::string errorOf(const std::string& bytes) {
  const auto result = decodeSettings(bytes);
  return result ? "accepted" : result.error();
}

std::string errorWith(const std::string& key, const Json& value) {
  return errorOf(recordWith(key, value).dump());
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

TEST(SettingsCodec, TheDefaultRecordIsTheAgreedOneInTheAgreedOrder) {
  EXPECT_EQ(encodeSettings(NimbraConfig()), defaultRecord());
  EXPECT_EQ(*decodeSettings(defaultRecord()), NimbraConfig());
}

TEST(SettingsCodec, EveryFieldComesBackAndCountsInTheComparison) {
  const NimbraConfig config = unusual();
  EXPECT_EQ(*decodeSettings(*encodeSettings(config)), config);
#define VELORIA_FIELD(type, name, initial, group)                   \
  {                                                                 \
    NimbraConfig one;                                               \
    one.name = config.name;                                         \
    EXPECT_NE(one, NimbraConfig()) << #name;                        \
    EXPECT_EQ(*decodeSettings(*encodeSettings(one)), one) << #name; \
  }
#include "settings/NimbraConfigFields.h"
}

/// Which of the sample values below a field of this type takes.
template <typename T>
std::vector<Json> acceptable() {
  if constexpr (std::is_same_v<T, bool>) return {true};
  if constexpr (std::is_same_v<T, double>) return {1, 1.5};
  if constexpr (std::is_same_v<T, std::int64_t>) return {1};
  if constexpr (std::is_same_v<T, std::string>) return {"text"};
  if constexpr (std::is_same_v<T, std::optional<Palette>>) return {nullptr};
  return {};
}

TEST(SettingsCodec, EachMissingValueAndEachOfAWrongKindFailsTheWholeRecord) {
  const auto check = [](const std::string& key, const std::vector<Json>& good, bool mayBeMissing) {
    Json json = Json::parse(defaultRecord());
    json.erase(key);
    EXPECT_EQ(errorOf(json.dump()), mayBeMissing ? "accepted" : key + " is missing");
    for (const Json& sample : {Json(), Json(true), Json(1), Json(1.5), Json("text"), Json::array(), Json::object()}) {
      const std::string error = errorWith(key, sample);
      if (std::ranges::count(good, sample) > 0) {
        EXPECT_EQ(error, "accepted") << key << " = " << sample;
      } else {
        EXPECT_THAT(error, StartsWith(key + " must be ")) << sample;
      }
    }
  };
#define VELORIA_FIELD(type, name, initial, group) \
  check(#name, acceptable<type>(), std::is_same_v<type, std::optional<Palette>>);
#include "settings/NimbraConfigFields.h"
  for (const char* bytes : {"", "null", "[]", "{}"}) EXPECT_FALSE(decodeSettings(bytes)) << bytes;
}

TEST(SettingsCodec, EachRawValueIsTakenExactly) {
  const auto check = [](const std::string& key, const auto& raws) {
    for (const std::string_view raw : raws) {
      EXPECT_EQ(errorWith(key, raw), "accepted");
      EXPECT_THAT(errorWith(key, std::string(raw) + " "), HasSubstr("must be one of \"")) << raw;
    }
  };
  check("visualizer", rawValues<Visualizer>);
  check("layerMode", rawValues<LayerMode>);
  check("notchMode", rawValues<NotchMode>);
  check("pointerMode", rawValues<PointerMode>);
}

TEST(SettingsCodec, IntegersAreWholeAndFitSixtyFourBits) {
  const std::vector<std::pair<std::string, std::optional<std::int64_t>>> cases{
      {"60.0", 60},
      {"-0.0", 0},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"9223372036854774784.0", 9223372036854774784},
      {"-9223372036854774784.0", -9223372036854774784},
      {"9223372036854775808", std::nullopt},
      {"9223372036854775808.0", std::nullopt},
      {"-9223372036854775809", std::nullopt},
      {"1e300", std::nullopt},
      {"60.5", std::nullopt},
  };
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
  const auto longer = decodeSettings(recordWith("customPalette", palette({s, s, s, s, {0.1, 0.2, 0.3, 0.9}})).dump());
  EXPECT_EQ(Json::parse(*encodeSettings(*longer))["customPalette"]["stops"][4], Json({0.1, 0.2, 0.3})) << "as typed";
  const std::vector<Json> refused{{{"name", "Mine"}},
                                  {{"stops", {s, s, s, s}}},
                                  {{"name", 1}, {"stops", {s, s, s, s}}},
                                  palette(nullptr),
                                  palette({s, s, s}),
                                  palette({s, s, {0, 1}, s}),
                                  palette({s, s, {0, 1, "1"}, s}),
                                  palette({s, s, {0, 1.0001, 1}, s}),
                                  palette({s, s, {-0.0001, 1, 1}, s}),
                                  palette({s, s, {0, 1, 1, 7}, s}),
                                  palette({s, s, 7, s})};
  for (const Json& value : refused) {
    EXPECT_THAT(errorWith("customPalette", value), HasSubstr("at least 4 stops")) << value;
  }
}

TEST(SettingsCodec, UnknownKeysAreIgnoredAndTheLastOfADoubleKeyCounts) {
  std::string bytes = defaultRecord();
  bytes.insert(1, R"("futureField": {"a": [1]}, "enabled": "not a truth value", "Exposure": "x",)");
  EXPECT_EQ(*decodeSettings(bytes), NimbraConfig());
}

TEST(SettingsCodec, NothingIsWrittenThatCouldNotBeReadAgain) {
  const ColorStop stop{0, 0.5F, 1};
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const std::function<void(NimbraConfig&)> edits[] = {
      [&](auto& c) { c.exposure = nan; },
      [](auto& c) { c.pointerGlow = -std::numeric_limits<double>::infinity(); },
      [](auto& c) { c.customScript = "\xFF"; },
      [](auto& c) { c.customScript = std::string(maximumJsonBytes, 'x'); },
      [&](auto& c) {
        c.customPalette = Palette{"three", {3, stop}};
      },
      [&](auto& c) {
        c.customPalette = Palette{"nan", {stop, stop, stop, {nan, 0, 0}}};
      },
      [&](auto& c) {
        c.customPalette = Palette{"big", {stop, stop, stop, {2, 0, 0}}};
      },
  };
  for (const auto& edit : edits) {
    NimbraConfig config;
    edit(config);
    EXPECT_FALSE(encodeSettings(config)) << &edit - edits;
  }
}

TEST(SettingsField, EachIsListedWithItsKindAndItsDefaultAndCanBeSet) {
  const Json defaults = Json::parse(defaultRecord());
  const Json source = Json::parse(*encodeSettings(unusual()));
  ASSERT_EQ(settingsFields().size(), 79U);
  NimbraConfig all;
  for (const SettingsField& field : settingsFields()) {
    const std::string key(field.key);
    EXPECT_EQ(Json::parse(field.defaultJson), defaults.contains(key) ? defaults[key] : Json()) << key;
    EXPECT_TRUE(setField(all, key, source[key].dump())) << key;
  }
  EXPECT_EQ(all, unusual());
  EXPECT_EQ(settingsFields()[25].kind, R"(one of "mask", "halo", "ignore")");
}

TEST(SettingsField, SaysWhatWouldBeRightAndChangesNothing) {
  const std::vector<std::array<std::string, 3>> cases{
      {"exposure", "\"2\"", "exposure must be a number"},
      {"enabled", "1", "enabled must be true or false"},
      {"curlOctaves", "2.5", "curlOctaves must be a whole number"},
      {"notchMode", "mask",
       R"(notchMode must be one of "mask", "halo", "ignore", written as JSON (line 1, column 1: invalid literal))"},
      {"paletteName", "Flurry",
       "paletteName must be a text in double quotes, written as JSON (line 1, column 1: invalid literal)"},
      {"exposur", "2", "there is no setting \"exposur\"; did you mean exposure?"},
      {"Exposure", "2", "there is no setting \"Exposure\"; did you mean exposure?"},
      {"fps", "2", "there is no setting \"fps\""},
      {"wind", "2", "there is no setting \"wind\""},
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

}  // namespace
}  // namespace veloria::tests
