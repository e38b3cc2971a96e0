// How people and other programs drive the application: menu, notification and commands.

#include <gmock/gmock.h>

#include "../support/MemoryStorage.h"
#include "app/FirstMinute.h"
#include "app/MenuBarController.h"
#include "app/RemoteControl.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using Json = nlohmann::ordered_json;
using Names = std::vector<std::string>;

/// The titles of a menu, the checked ones marked.
Names linesOf(const Menu& menu) {
  Names lines;
  for (const MenuItem& item : menu) lines.push_back((item.checked.value_or(false) ? "[x] " : "") + item.title);
  return lines;
}

const MenuItem* find(const Menu& menu, const std::string& title) {
  for (const MenuItem& item : menu) {
    if (item.title == title) return &item;
    if (const MenuItem* inner = find(item.submenu, title)) return inner;
  }
  return nullptr;
}

TEST(QuickMenu, MarksWhatTheSettingsSay) {
  NimbraConfig config;
  const Menu menu = quickMenu(config, "1.2");
  EXPECT_THAT(linesOf(find(menu, "Pointer interaction")->submenu),
              ElementsAre("None", "Glow follow", "Push the fluid", "[x] Swirl", "Calm"));
  EXPECT_THAT(linesOf(find(menu, "Colour")->submenu), Contains("[x] Classic Nimbra"));
  config.customPalette.emplace();
  EXPECT_THAT(linesOf(find(quickMenu(config, ""), "Colour")->submenu), Contains("Classic Nimbra"));
}

class FakeStatusItem final : public StatusItem {
 public:
  void setHandlers(Handlers now) override { handlers = std::move(now); }
  void setMenu(const Menu& now) override { menu = now; }
  void showMenu() override { ++menusShown; }
  std::optional<Rect> place() const override { return Rect{1, 2, 3, 4}; }

  void choose(const std::string& title) {
    const MenuItem* item = find(menu, title);
    if (item == nullptr) throw std::runtime_error("there is no " + title);
    handlers.chosen(MenuItem(*item));
  }

  Handlers handlers;
  Menu menu;
  int menusShown = 0;
};

class FakePresenter final : public SettingsPresenter {
 public:
  void show(const std::optional<Rect>& at) override { shown = at == Rect{1, 2, 3, 4}; }
  void close() override { shown = false; }
  bool isShown() const override { return shown; }

  bool shown = false;
};

class MenuBarControllerTest : public testing::Test {
 protected:
  const NimbraConfig& config() const { return settings_.config(); }

  SettingsStore settings_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  SettingsEditor editor_{settings_};
  FakeStatusItem item_;
  FakePresenter presenter_;
  int refreshes_ = 0, ends_ = 0;
  MenuBarController controller_{{.settings = &editor_,
                                 .statusItem = &item_,
                                 .presenter = &presenter_,
                                 .refreshSystemState = [this] { ++refreshes_; },
                                 .terminate = [this] { ++ends_; },
                                 .version = "1.2"}};
};

TEST_F(MenuBarControllerTest, ChosenItemsDoWhatTheySay) {
  item_.choose("Pause Nimbra");
  EXPECT_FALSE(config().enabled);
  item_.choose("Resume Nimbra");
  EXPECT_TRUE(config().enabled);
  item_.choose("Calm");
  EXPECT_EQ(config().pointerMode, PointerMode::calm);
  EXPECT_THAT(linesOf(find(item_.menu, "Pointer interaction")->submenu), Contains("[x] Calm"));
  int resets = 0;
  controller_.onResetSim = [&] { ++resets; };
  item_.choose("Restart Simulation");
  EXPECT_EQ(resets, 1);
  item_.choose("Quit Veloria");
  EXPECT_EQ(ends_, 1);
  for (int i = 1; i < 3; ++i) {
    item_.choose("Settings…");
    EXPECT_TRUE(presenter_.shown) << "the item never closes them";
    EXPECT_EQ(refreshes_, i);
  }
}

TEST_F(MenuBarControllerTest, APresetReplacesTheLookAPaletteTheColoursAndBothAreOneStepOfUndo) {
  NimbraConfig edited;
  edited.exposure = 3;
  edited.framesPerSecond = 30;
  edited.customPalette = Palette{"Mine", {4, {1, 1, 1}}};
  settings_.setConfig(edited);
  item_.choose("Rave");
  EXPECT_EQ(config(), choose(edited, *LookPreset::find("Rave")));
  editor_.undo();
  EXPECT_EQ(config(), edited);
  item_.choose(Palette::presets().back().name);
  EXPECT_EQ(config().palette(), Palette::presets().back());
  editor_.undo();
  EXPECT_EQ(config(), edited);
}

TEST_F(MenuBarControllerTest, ClicksToggleTheSettingsOrShowTheMenu) {
  const std::tuple<Click, bool, bool, int> steps[] = {
      // the click, Control, then: settings shown, menus so far
      {Click::primary, false, true, 0}, {Click::secondary, false, true, 1}, {Click::primary, true, true, 2},
      {Click::unknown, true, true, 2},  {Click::primary, false, false, 2},  {Click::unknown, false, true, 2},
  };
  for (const auto& [click, control, shown, menus] : steps) {
    item_.handlers.clicked(click, control);
    EXPECT_EQ(presenter_.shown, shown);
    EXPECT_EQ(item_.menusShown, menus);
  }
}

class FakeNotifier final : public Notifier {
 public:
  void show(Notification notification, std::function<void()> now) override {
    shown.push_back(std::move(notification));
    delivered = std::move(now);
  }

  std::vector<Notification> shown;
  std::function<void()> delivered;
};

class FakeClearing final : public PanelClearing {
 public:
  Offer offer() const override { return now; }
  bool letsLightThrough() const override { return false; }
  bool canRestore() const override { return false; }
  void clear(Answer given) override { answer = std::move(given); }
  void restore(Answer) override {}
  void setChangeHandler(std::function<void()>) override {}

  Offer now;
  Answer answer;
};

class FirstMinuteTest : public testing::Test {
 protected:
  SettingsStore settings_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  FakeNotifier notifier_;
  FakeClearing clearing_;
  bool textCanBeKept_ = true;
  bool told_ = false;
  FirstMinute first_{{.settings = &settings_,
                      .notifier = &notifier_,
                      .clearing = &clearing_,
                      .overIsSeen = [] { return true; },
                      .textCanBeKept = [this] { return textCanBeKept_; },
                      .wasTold = [this] { return told_; },
                      .rememberTold = [this] { told_ = true; }}};
};

TEST(LightOffers, AreMadeOnlyIfTheyHelpAndChangeWhatTheySayOnly) {
  const auto record = [](LayerMode layer, double extraHeight, bool keepsText, double opacity) {
    NimbraConfig config;
    config.layerMode = layer;
    config.extraHeight = extraHeight;
    config.preserveMenuBarText = keepsText;
    config.opacity = opacity;
    return config;
  };
  constexpr auto behind = LayerMode::desktopStrip, above = LayerMode::aboveMenuBar;
  using Way = PanelClearing::Way;
  for (const Way way : {Way::none, Way::byHand, Way::oneClick, Way::afterAsking}) {
    const std::size_t clearing = way == Way::oneClick || way == Way::afterAsking ? 1 : 0;
    EXPECT_EQ(lightOffers(record(behind, 23, false, 1), way, true).size(), 2U + clearing);
    EXPECT_EQ(lightOffers(record(behind, 23, false, 1), way, false).size(), 1U + clearing);
    for (const NimbraConfig& lit : {record(behind, 24, false, 1), record(above, 0, false, 1)}) {
      EXPECT_EQ(lightOffers(lit, way, true).size(), clearing);
    }
  }
  const NimbraConfig before = record(behind, 5, false, 0.9), faint = record(behind, 30, false, 0.2);
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, true), record(above, 5, true, 0.9));
  EXPECT_EQ(withOffer(LightOffer::overPanel, before, false), record(above, 5, false, 0.5)) << "it stays readable";
  EXPECT_EQ(withOffer(LightOffer::overPanel, faint, false), record(above, 30, false, 0.2)) << "never made stronger";
  EXPECT_EQ(withOffer(LightOffer::belowPanel, before, true), record(behind, 24, false, 0.9));
  EXPECT_EQ(withOffer(LightOffer::belowPanel, faint, true), faint);
  EXPECT_EQ(withOffer(LightOffer::clearPanel, record(above, 24, true, 0.9), true), record(behind, 0, true, 0.9));
}

TEST(FirstStart, TakesTheFirstLayerThatShowsLightAndLeavesThePanelReadable) {
  using Kind = Visibility::Kind;
  const NimbraConfig defaults, over = withOffer(LightOffer::overPanel, defaults, true),
                               below = withOffer(LightOffer::belowPanel, defaults, true);
  const std::pair<FirstStartFacts, NimbraConfig> cases[] = {
      {{Kind::seen, Kind::seen, true}, defaults},      {{Kind::mayBeHidden, Kind::seen, true}, over},
      {{Kind::hidden, Kind::seen, true}, over},        {{Kind::hidden, Kind::seen, false}, below},
      {{Kind::mayBeHidden, Kind::seen, false}, below}, {{Kind::mayBeHidden, Kind::mayBeHidden, true}, below},
  };
  for (const auto& [facts, chosen] : cases) EXPECT_EQ(firstStartConfig(facts), chosen) << &facts - &cases[0].first;
}

TEST_F(FirstMinuteTest, OneNotificationAndAButtonDoesTheWork) {
  told_ = true;
  first_.tell();
  EXPECT_TRUE(notifier_.shown.empty()) << "once per installation";
  told_ = false;
  for (int i = 0; i < 2; ++i) first_.tell();
  ASSERT_EQ(notifier_.shown.size(), 1U);
  const Notification& shown = notifier_.shown.front();
  ASSERT_EQ(shown.actions.size(), 2U);
  shown.actions[1].chosen();
  EXPECT_EQ(settings_.config().extraHeight, 24);
  textCanBeKept_ = false;
  shown.actions[0].chosen();
  EXPECT_EQ(settings_.config().layerMode, LayerMode::aboveMenuBar);
  EXPECT_FALSE(settings_.config().preserveMenuBarText) << "asked when it is chosen, not before";
  EXPECT_FALSE(told_) << "it was not delivered yet";
  notifier_.delivered();
  EXPECT_TRUE(told_);
}

TEST_F(FirstMinuteTest, AClearPanelComesFirstAndTheBandGoesBehindItOnceItIsClear) {
  clearing_.now = {PanelClearing::Way::afterAsking, "The panel restarts.", ""};
  const NimbraConfig start = firstStartConfig({Visibility::Kind::hidden, Visibility::Kind::seen, true});
  settings_.setConfig(start);
  first_.tell();
  ASSERT_EQ(notifier_.shown.size(), 1U);
  EXPECT_THAT(notifier_.shown[0].text, HasSubstr("The panel restarts.")) << "the button is the consent to it";
  const auto choose = notifier_.shown[0].actions.at(0).chosen;
  for (const auto& [problem, note] : {std::pair("It failed.", ""), {"", "Log in again."}}) {
    choose();
    clearing_.answer(problem, note);
    EXPECT_EQ(notifier_.shown.back().text, std::string(problem) + note);
    EXPECT_EQ(settings_.config(), start) << "it would not be seen there yet";
  }
  choose();
  clearing_.answer("", "");
  EXPECT_EQ(settings_.config().layerMode, LayerMode::desktopStrip);
}

AppStatus fullStatus() {
  AppStatus status;
  status.rendering = true;
  status.visualizer = Visualizer::music;
  status.layer = LayerMode::aboveMenuBar;
  status.backend = "x11";
  status.device = "A GPU";
  status.screens = {{"DP-1",
                     {0, 1056, 1920, 24},
                     PanelEdge::top,
                     std::nullopt,
                     24,
                     Rect{860, 0, 200, 32},
                     2,
                     634,
                     32,
                     60,
                     2,
                     31,
                     1.23456}};
  status.scriptError = "Line 2: unknown parameter 'glw'";
  status.audio = {true, std::nullopt, {0.5, 0.25, 0.125, 0.0625, 1}};
  status.weather = WeatherStatus{12, 8, 15, 0.75, 0, "12°C", "timed out"};
  status.pictureError = "a.svg: no reader for .svg pictures is installed";
  status.capture.error = "no compositor runs";
  status.panelClear = true;
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
  EXPECT_EQ(ask(R"({"command": "preset", "name": "Rave"})"), Json::object());
  EXPECT_EQ(settings_.config(), choose(NimbraConfig(), *LookPreset::find("Rave")));
  editor_.undo();
  EXPECT_EQ(settings_.config(), NimbraConfig()) << "the settings window undoes it";
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
      "layer": "aboveMenuBar", "backend": "x11", "device": "A GPU", "hdr": {"reason": ""},
      "screens": [{"name": "DP-1", "frame": [0.0, 1056.0, 1920.0, 24.0], "menuBarHeight": 24.0,
                   "edge": "top", "panel": null, "notch": [860.0, 0.0, 200.0, 32.0], "scale": 2.0, "grid": [634, 32], "fps": 31, "wantedFps": 60.0, "rateDivisor": 2, "gpuMs": 1.235}],
      "script": {"error": "Line 2: unknown parameter 'glw'"},
      "audio": {"running": true, "error": null, "level": 0.5, "bass": 0.25, "mid": 0.125, "treble": 0.063, "beat": 1.0},
      "weather": {"temp": 12.0, "wind": 8.0, "gust": 15.0, "cloud": 0.75, "rain": 0.0, "readout": "12°C",
                  "error": "timed out"},
      "desktopPicture": {"error": "a.svg: no reader for .svg pictures is installed"},
      "capture": {"running": false, "error": "no compositor runs"}, "panel": {"clear": true}, "pointer": {"available": true, "reason": ""},
      "hint": ""})");
  EXPECT_EQ(ask(R"({"command": "status"})"), wanted);
}

TEST(StatusText, IsForPeople) {
  EXPECT_EQ(
      statusText(toJson(fullStatus())),
      "Veloria: drawing\ndrive: music\nlayer: aboveMenuBar\ndevice: A GPU, x11\n"
      "screen: DP-1, 1920x24 points at scale 2.00, top edge (no panel at the top or bottom), bar 24, grid 634x32, 31 "
      "frames a second, slowed down from 60 because frames take too long, 1.2 ms GPU\n"
      "script: Line 2: unknown parameter 'glw'\n"
      "sound: listening, level 0.50, bass 0.25, mid 0.12, treble 0.06\n"
      "weather: 12°C\nweather error: timed out\n"
      "desktop picture: a.svg: no reader for .svg pictures is installed\npanel: clear: it lets the light through\n"
      "panel's text: no compositor runs\n");
  AppStatus hostile;
  hostile.device = "A\nGPU\x1b[31m";
  EXPECT_THAT(statusText(toJson(hostile)), HasSubstr("device: A GPU [31m, \n"));
  for (const char* text : {"null", "[]", "7", R"({"screens": 3, "audio": [], "weather": "x", "script": null})",
                           R"({"screens": [1, {"frame": {}, "grid": "x", "fps": 1e308}], "rendering": "yes"})"}) {
    EXPECT_THAT(statusText(Json::parse(text)), HasSubstr("Veloria: not drawing")) << text;
  }
}

}  // namespace
}  // namespace veloria::tests
