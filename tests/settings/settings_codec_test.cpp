#include "settings/SettingsCodec.h"

#include <gmock/gmock.h>

#include <cctype>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "base/StrictJson.h"

namespace veloria {
namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;
using testing::StartsWith;

/// What is stored for a record that nobody has changed.
constexpr std::string_view defaultRecord = R"({
  "enabled": true,
  "framesPerSecond": 60,
  "pauseInFullScreen": true,
  "pauseOnBattery": false,
  "allDisplays": false,
  "hdrGlow": true,
  "layerMode": "desktopStrip",
  "extraHeight": 0.0,
  "fadeTop": 0.0,
  "fadeBottom": 0.35,
  "fadeSide": 0.015,
  "visualizer": "autonomous",
  "customScript": "",
  "matchWallpaper": false,
  "weatherLatitude": 39.7392,
  "weatherLongitude": -104.9903,
  "preserveMenuBarText": false,
  "textThreshold": 0.055,
  "textSoftness": 0.09,
  "textDilate": 2.2,
  "textBlur": 7.0,
  "opaqueBackground": true,
  "backgroundLift": 0.1,
  "textShadow": 0.0,
  "textShadowSpread": 5.0,
  "notchMode": "mask",
  "notchFeather": 0.014,
  "notchPadding": 0.0,
  "paletteName": "Classic Nimbra",
  "opacity": 0.85,
  "exposure": 1.25,
  "contrast": 0.95,
  "saturation": 1.4,
  "hueShift": 0.0,
  "colorCycle": 0.0003,
  "heightTint": 0.28,
  "hueSpread": 0.2,
  "hueSpreadScale": 2.6,
  "hueSpreadDrift": 0.005,
  "additive": 0.0,
  "coverGain": 1.0,
  "glowAmount": 0.8,
  "glowRadius": 1.6,
  "ambientLevel": 0.035,
  "rayIntensity": 0.5,
  "raySharpness": 1.1,
  "rayScale": 4.2,
  "raySpeed": 0.004,
  "rayFlow": 0.02,
  "shimmer": 0.015,
  "detailOctaves": 3,
  "tempo": 1.0,
  "quality": 1.0,
  "verticalStretch": 4.0,
  "pressureIterations": 24,
  "timeScale": 0.18,
  "velDissipation": 0.995,
  "dyeDissipation": 0.9965,
  "vorticity": 0.38,
  "curlStrength": 0.75,
  "curlScale": 2.4,
  "curlSpeed": 0.011,
  "curlOctaves": 3,
  "buoyancy": 0.16,
  "flowSpeed": 0.12,
  "flowShear": 0.38,
  "emitRate": 2.2,
  "emitScale": 2.4,
  "emitSpeed": 0.016,
  "emitHeight": 0.45,
  "emitCenter": 0.45,
  "emitThreshold": 0.2,
  "paletteSpread": 1.6,
  "pointerMode": "vortex",
  "pointerStrength": 1.0,
  "pointerRadius": 0.12,
  "pointerGlow": 0.5,
  "pointerOnlyInStrip": true
}
)";

Json defaultJson() {
  return Json::parse(defaultRecord);
}

std::string errorOf(const std::string& bytes) {
  const auto result = decodeSettings(bytes);
  return result ? "accepted" : result.error();
}

std::string errorWith(const std::string& key, const Json& value) {
  Json json = defaultJson();
  json[key] = value;
  return errorOf(json.dump());
}

NimbraConfig decoded(const Json& json) {
  const auto result = decodeSettings(json.dump());
  EXPECT_TRUE(result) << result.error();
  return result ? *result : NimbraConfig();
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

TEST(SettingsCodecTest, TheDefaultRecordIsTheAgreedOneInTheAgreedOrder) {
  EXPECT_EQ(encodeSettings(NimbraConfig()), defaultRecord);
  EXPECT_EQ(*decodeSettings(defaultRecord), NimbraConfig());
}

TEST(SettingsCodecTest, EveryFieldComesBackAndCountsInTheComparison) {
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

TEST(SettingsCodecTest, AbsurdButValidValuesAreKeptAsTheyAre) {
  NimbraConfig config;
  config.framesPerSecond = std::numeric_limits<std::int64_t>::min();
  config.detailOctaves = -5;
  config.extraHeight = -std::numeric_limits<double>::max();
  config.weatherLatitude = 4000;
  config.paletteName = "No such palette";
  EXPECT_EQ(*decodeSettings(*encodeSettings(config)), config);
}

TEST(SettingsCodecTest, EachMissingKeyFailsTheWholeRecord) {
  for (const SettingsField& field : settingsFields()) {
    if (field.key == "customPalette") continue;
    Json json = defaultJson();
    json.erase(std::string(field.key));
    EXPECT_EQ(errorOf(json.dump()), std::string(field.key) + " is missing");
  }
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

TEST(SettingsCodecTest, EachValueOfAWrongKindFailsTheWholeRecord) {
  const std::vector<Json> samples{nullptr, true, 1, 1.5, "text", "1", Json::array(), Json::object(), Json::array({1})};
  const auto check = [&](const std::string& key, const std::vector<Json>& good, bool anyText) {
    for (const Json& sample : samples) {
      const bool fits = std::ranges::count(good, sample) > 0 || (anyText && sample.is_string());
      const std::string error = errorWith(key, sample);
      if (fits) {
        EXPECT_EQ(error, "accepted") << key << " = " << sample;
      } else {
        EXPECT_THAT(error, StartsWith(key + " must be ")) << sample;
      }
    }
  };
#define VELORIA_FIELD(type, name, initial, group) check(#name, acceptable<type>(), std::is_same_v<type, std::string>);
#include "settings/NimbraConfigFields.h"
}

TEST(SettingsCodecTest, EachRawValueIsTakenExactlyAndNothingLikeIt) {
  const auto check = [](const std::string& key, const auto& raws) {
    for (const std::string_view raw : raws) {
      const std::string text(raw);
      EXPECT_EQ(errorWith(key, text), "accepted");
      std::string shouted = text;
      shouted[0] = static_cast<char>(std::toupper(shouted[0]));
      for (const std::string& wrong : {shouted, text + " ", text.substr(1), text + std::string(1, '\0')}) {
        EXPECT_THAT(errorWith(key, wrong), HasSubstr("must be one of \"")) << wrong;
      }
    }
  };
  check("visualizer", rawValues<Visualizer>);
  check("layerMode", rawValues<LayerMode>);
  check("notchMode", rawValues<NotchMode>);
  check("pointerMode", rawValues<PointerMode>);
}

TEST(SettingsCodecTest, IntegersAreWholeAndFitSixtyFourBits) {
  struct Case {
    std::string text;
    std::optional<std::int64_t> value;
  };
  const std::vector<Case> cases{
      {"60.0", 60},
      {"6e1", 60},
      {"-0.0", 0},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"9223372036854774784.0", 9223372036854774784},
      {"-9223372036854774784.0", -9223372036854774784},
      {"9223372036854775808", std::nullopt},
      {"9223372036854775808.0", std::nullopt},
      {"18446744073709551615", std::nullopt},
      {"-9223372036854775809", std::nullopt},
      {"1e300", std::nullopt},
      {"60.5", std::nullopt},
      {"1e-9", std::nullopt},
  };
  for (const Case& c : cases) {
    NimbraConfig config;
    const bool taken = static_cast<bool>(setField(config, "framesPerSecond", c.text));
    EXPECT_EQ(taken, c.value.has_value()) << c.text;
    EXPECT_EQ(config.framesPerSecond, c.value.value_or(60)) << c.text;
  }
}

TEST(SettingsCodecTest, ACustomPaletteIsDrawableOrTheRecordIsRefused) {
  const Json stop = {0, 0.5, 1};
  const auto palette = [](const Json& stops) { return Json{{"name", "Mine"}, {"stops", stops}}; };
  const Json good = palette({stop, stop, stop, stop});
  EXPECT_EQ(errorWith("customPalette", good), "accepted");

  const auto with = [&](const char* key, const Json& value) {
    Json json = good;
    json[key] = value;
    return json;
  };
  const auto withStop = [&](const Json& odd) { return palette({stop, stop, odd, stop}); };
  const std::vector<Json> refused{
      Json{{"name", "Mine"}},
      Json{{"stops", good["stops"]}},
      with("name", 1),
      with("name", nullptr),
      with("stops", nullptr),
      palette(Json::array()),
      palette({stop, stop, stop}),
      palette({stop, stop, stop, Json::array()}),
      withStop({0, 1}),
      withStop({0, 1, "1"}),
      withStop({0, 1, nullptr}),
      withStop({0, true, 1}),
      withStop({0, 1.0001, 1}),
      withStop({-0.0001, 1, 1}),
      withStop({0, 1, 1, 7}),
      withStop(7),
      withStop(Json{{"r", 1}}),
  };
  for (const Json& value : refused) {
    EXPECT_THAT(errorWith("customPalette", value), HasSubstr("at least 4 stops")) << value;
  }
}

TEST(SettingsCodecTest, ACustomPaletteKeepsAllStopsAndTheFirstThreeChannels) {
  Json json = defaultJson();
  json["customPalette"] = Json::parse(
      R"({"note": 1, "name": "", "stops": [[0.1, 0.2, 0.3, 0.9], [0, 0, 0], [1, 1, 1], [0, 1, 0], [0.5, 0.5, 0.5]]})");
  const NimbraConfig config = decoded(json);
  ASSERT_TRUE(config.customPalette);
  EXPECT_EQ(config.customPalette->stops.size(), 5U);
  EXPECT_EQ(config.customPalette->stops[0], (ColorStop{0.1F, 0.2F, 0.3F}));
  EXPECT_EQ(Json::parse(*encodeSettings(config))["customPalette"]["stops"][0], Json({0.1, 0.2, 0.3}))
      << "written as short as it was typed";

  json["customPalette"] = nullptr;
  EXPECT_FALSE(decoded(json).customPalette);
}

TEST(SettingsCodecTest, NoTruncationPasses) {
  const std::string whole = *encodeSettings(unusual());
  const std::size_t end = whole.rfind('}');
  for (std::size_t length = 0; length <= end; ++length) {
    ASSERT_FALSE(decodeSettings(whole.substr(0, length))) << length;
  }
  EXPECT_TRUE(decodeSettings(whole.substr(0, end + 1)));
}

TEST(SettingsCodecTest, RefusesWhatIsNoRecordAtAll) {
  for (const char* bytes : {"", "null", "[]", "1", "\"text\"", "{}", "\xFF\xFE{"}) {
    EXPECT_FALSE(decodeSettings(bytes)) << bytes;
  }
}

TEST(SettingsCodecTest, UnknownKeysAreIgnoredAndTheLastOfADoubleKeyCounts) {
  std::string bytes(defaultRecord);
  bytes.insert(1, R"("futureField": {"a": [1]}, "enabled": "not a truth value", "Exposure": "x",)");
  EXPECT_EQ(*decodeSettings(bytes), NimbraConfig());
}

TEST(SettingsCodecTest, NothingIsWrittenThatCouldNotBeReadAgain) {
  const auto refuses = [](auto edit) {
    NimbraConfig config;
    edit(config);
    return !encodeSettings(config).has_value();
  };
  const ColorStop stop{0, 0.5F, 1};
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(refuses([&](auto& c) { c.exposure = nan; }));
  EXPECT_TRUE(refuses([](auto& c) { c.pointerGlow = -std::numeric_limits<double>::infinity(); }));
  EXPECT_TRUE(refuses([](auto& c) { c.customScript = "\xFF"; }));
  EXPECT_TRUE(refuses([](auto& c) { c.customScript = std::string(maximumJsonBytes, 'x'); }));
  EXPECT_TRUE(refuses([&](auto& c) { c.customPalette = Palette{"three", {stop, stop, stop}}; }));
  EXPECT_TRUE(refuses([&](auto& c) { c.customPalette = Palette{"nan", {stop, stop, stop, {nan, 0, 0}}}; }));
  EXPECT_TRUE(refuses([&](auto& c) { c.customPalette = Palette{"big", {stop, stop, stop, {2, 0, 0}}}; }));
  EXPECT_TRUE(refuses([&](auto& c) { c.customPalette = Palette{"\xC0", {stop, stop, stop, stop}}; }));
}

TEST(SettingsFieldTest, EveryFieldIsListedWithItsKindAndItsDefault) {
  const Json defaults = defaultJson();
  ASSERT_EQ(settingsFields().size(), 79U);
  for (const SettingsField& field : settingsFields()) {
    const std::string key(field.key);
    EXPECT_EQ(Json::parse(field.defaultJson), defaults.contains(key) ? defaults[key] : Json()) << key;
    NimbraConfig config;
    EXPECT_TRUE(setField(config, field.key, field.defaultJson)) << key;
    EXPECT_EQ(config, NimbraConfig()) << key;
  }
  EXPECT_EQ(settingsFields()[25].kind, R"(one of "mask", "halo", "ignore")");
}

TEST(SettingsFieldTest, SetsAnyFieldFromJson) {
  const Json source = Json::parse(*encodeSettings(unusual()));
  NimbraConfig config;
  for (const auto& [key, value] : source.items()) EXPECT_TRUE(setField(config, key, value.dump())) << key;
  EXPECT_EQ(config, unusual());
  EXPECT_TRUE(setField(config, "customPalette", "null"));
  EXPECT_FALSE(config.customPalette);
}

TEST(SettingsFieldTest, SaysWhatWouldBeRightAndChangesNothing) {
  struct Case {
    std::string key;
    std::string json;
    std::string error;
  };
  const std::vector<Case> cases{
      {"exposure", "\"2\"", "exposure must be a number"},
      {"enabled", "1", "enabled must be true or false"},
      {"curlOctaves", "2.5", "curlOctaves must be a whole number"},
      {"notchMode", "\"Mask\"", R"(notchMode must be one of "mask", "halo", "ignore")"},
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
  for (const Case& c : cases) {
    NimbraConfig config;
    const auto result = setField(config, c.key, c.json);
    ASSERT_FALSE(result) << c.key;
    EXPECT_EQ(result.error(), c.error);
    EXPECT_EQ(config, NimbraConfig());
  }
  NimbraConfig config;
  EXPECT_LT(setField(config, std::string(1'000'000, 'k'), "1").error().size(), 200U);
}

}  // namespace
}  // namespace veloria
