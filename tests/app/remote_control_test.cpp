// What other programs are told, and what people read of it.

#include "app/RemoteControl.h"

#include <gmock/gmock.h>

#include "../support/MemoryStorage.h"

namespace veloria::tests {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::ordered_json;

AppStatus fullStatus() {
  AppStatus status;
  status.rendering = true;
  status.visualizer = Visualizer::music;
  status.layer = LayerMode::aboveMenuBar;
  status.backend = "x11";
  status.device = "A GPU";
  status.screens = {{"DP-1", {0, 1056, 1920, 24}, 24, Rect{860, 0, 200, 32}, 2, 634, 32, 60, 1.23456}};
  status.scriptError = "Line 2: unknown parameter 'glw'";
  status.audio = {true, std::nullopt, {0.5, 0.25, 0.125, 0.0625, 1}};
  status.weather = WeatherStatus{12, 8, 15, 0.75, 0, "12°C", "timed out"};
  status.pictureError = "a.svg: no reader for .svg pictures is installed";
  status.capture.error = "no compositor runs";
  status.pointer.available = true;
  return status;
}

class RemoteControlTest : public testing::Test {
 protected:
  Json ask(const std::string& question) { return Json::parse(remote_.answer(question)); }

  SettingsStore settings_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  SettingsEditor editor_{settings_};
  RemoteControl remote_{{.settings = &editor_, .status = fullStatus}};
};

TEST_F(RemoteControlTest, PausesResumesAndChangesTheLook) {
  EXPECT_EQ(ask(R"({"command": "pause"})"), Json::object());
  EXPECT_FALSE(settings_.config().enabled);
  EXPECT_EQ(ask(R"({"command": "resume"})"), Json::object());
  EXPECT_TRUE(settings_.config().enabled);
  NimbraConfig own;
  own.customPalette = Palette{"Mine", {4, {1, 0, 0}}};
  settings_.setConfig(own);
  EXPECT_EQ(ask(R"({"command": "preset", "name": "Rave"})"), Json::object());
  EXPECT_EQ(settings_.config(), choose(NimbraConfig(), *LookPreset::find("Rave")));
  editor_.undo();
  EXPECT_EQ(settings_.config(), own) << "the settings window undoes it";
}

TEST_F(RemoteControlTest, SaysWhatIsWrongAndChangesNothing) {
  const std::pair<std::string, const char*> cases[] = {
      {"[]", "one line of JSON"},
      {std::string(3000, '['), "one line of JSON"},
      {R"({"command": 7})", "no command \"\""},
      {R"({"command": ")" + std::string(63, 'x') + "ä\"}", "no command \"xx"},  // cut in a character
      {R"({"command": "preset"})", "no preset \"\"; there are Northern Lights, "},
      {R"({"command": "preset", "name": "rave"})", "no preset \"rave\""},
      {R"({"command": "settings"})", "no settings window"},
  };
  for (const auto& [question, text] : cases) {
    const Json answer = ask(question);
    ASSERT_TRUE(answer.contains("error")) << question;
    EXPECT_THAT(answer["error"].get<std::string>(), HasSubstr(text)) << question;
  }
  EXPECT_EQ(settings_.config(), NimbraConfig());
}

TEST_F(RemoteControlTest, TellsTheStatus) {
  const Json wanted = Json::parse(R"({"running": true, "rendering": true, "reason": "", "visualizer": "music",
      "layer": "aboveMenuBar", "backend": "x11", "device": "A GPU",
      "screens": [{"name": "DP-1", "frame": [0.0, 1056.0, 1920.0, 24.0], "menuBarHeight": 24.0,
                   "notch": [860.0, 0.0, 200.0, 32.0], "scale": 2.0, "grid": [634, 32], "fps": 60, "gpuMs": 1.235}],
      "script": {"error": "Line 2: unknown parameter 'glw'"},
      "audio": {"running": true, "error": null, "level": 0.5, "bass": 0.25, "mid": 0.125, "treble": 0.063, "beat": 1.0},
      "weather": {"temp": 12.0, "wind": 8.0, "gust": 15.0, "cloud": 0.75, "rain": 0.0, "readout": "12°C",
                  "error": "timed out"},
      "desktopPicture": {"error": "a.svg: no reader for .svg pictures is installed"},
      "capture": {"running": false, "error": "no compositor runs"}, "pointer": {"available": true, "reason": ""},
      "hint": ""})");
  EXPECT_EQ(ask(R"({"command": "status"})"), wanted);
}

TEST(StatusText, IsForPeople) {
  EXPECT_EQ(statusText(toJson(fullStatus())),
            "Veloria: drawing\ndrive: music\nlayer: aboveMenuBar\ndevice: A GPU, x11\n"
            "screen: DP-1, 1920x24 points at scale 2.00, bar 24, grid 634x32, 60 frames a second, 1.2 ms GPU\n"
            "script: Line 2: unknown parameter 'glw'\n"
            "sound: listening, level 0.50, bass 0.25, mid 0.12, treble 0.06\n"
            "weather: 12°C\nweather error: timed out\n"
            "desktop picture: a.svg: no reader for .svg pictures is installed\npanel's text: no compositor runs\n");
  AppStatus dark;
  dark.reason = "it is paused";
  dark.device = "A\nGPU\x1b[31m";
  dark.audio.error = "the sound server is gone";
  EXPECT_EQ(statusText(toJson(dark)),
            "Veloria: not drawing: it is paused\ndrive: autonomous\nlayer: desktopStrip\ndevice: A GPU [31m, \n"
            "sound: the sound server is gone\n");
  for (const char* text : {"null", "[]", "7", R"({"screens": 3, "audio": [], "weather": "x", "script": null})",
                           R"({"screens": [1, {"frame": {}, "grid": "x", "fps": 1e308}], "rendering": "yes"})"}) {
    EXPECT_THAT(statusText(Json::parse(text)), HasSubstr("Veloria: not drawing")) << text;
  }
}

}  // namespace
}  // namespace veloria::tests
