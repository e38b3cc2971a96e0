// The status item's menu and clicks, without any desktop.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "AppFakes.h"
#include "app/MenuBarController.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

/// One line a menu line: indent, mark, title, key, what it does.
void write(const Menu& menu, const std::string& indent, std::vector<std::string>& lines) {
  for (const MenuItem& item : menu) {
    if (item.separator) {
      lines.push_back(indent + "---");
      continue;
    }
    const std::string mark = item.checked ? (*item.checked ? "[x] " : "[ ] ") : "";
    const std::string key = item.keyEquivalent.empty() ? "" : " (" + item.keyEquivalent + ")";
    lines.push_back(indent + mark + item.title + key + (item.enabled ? "" : " disabled"));
    write(item.submenu, indent + "  ", lines);
  }
}

std::vector<std::string> linesOf(const Menu& menu) {
  std::vector<std::string> lines;
  write(menu, "", lines);
  return lines;
}

/// The titles of one submenu that are checked.
std::vector<std::string> checkedIn(const Menu& menu, const std::string& title) {
  std::vector<std::string> result;
  for (const MenuItem& item : menu) {
    if (item.title != title) continue;
    for (const MenuItem& choice : item.submenu) {
      if (choice.checked.value_or(false)) result.push_back(choice.title);
    }
  }
  return result;
}

const MenuItem* find(const Menu& menu, const std::string& title) {
  for (const MenuItem& item : menu) {
    if (item.title == title) return &item;
    if (const MenuItem* inner = find(item.submenu, title)) return inner;
  }
  return nullptr;
}

using Names = std::vector<std::string>;

TEST(QuickMenu, hasItsLinesInOrder) {
  const Menu menu = quickMenu(NimbraConfig(), "1.2");
  Names lines;
  for (const std::string& line : linesOf(menu)) {
    if (!line.starts_with("  ")) lines.push_back(line);
  }
  EXPECT_EQ(lines,
            (Names{"Veloria 1.2 disabled", "---", "Pause Nimbra", "---", "Preset", "Colour", "Pointer interaction",
                   "---", "Settings… (,)", "Restart Simulation", "---", "Quit Veloria (q)"}));
  EXPECT_EQ(linesOf(find(menu, "Pointer interaction")->submenu),
            (Names{"[ ] None", "[ ] Glow follow", "[ ] Push the fluid", "[x] Swirl", "[ ] Calm"}));
}

TEST(QuickMenu, marksWhatTheSettingsSay) {
  struct Case {
    const char* what;
    void (*edit)(NimbraConfig&);
    const char* toggle;
    Names palette, pointer;
  };
  const Case cases[] = {
      {"paused", [](NimbraConfig& c) { c.enabled = false; }, "Resume Nimbra", {"Classic Nimbra"}, {"Swirl"}},
      {"another palette", [](NimbraConfig& c) { c.paletteName = "Nebula"; }, "Pause Nimbra", {"Nebula"}, {"Swirl"}},
      {"a palette that isn't built in", [](NimbraConfig& c) { c.paletteName = "Mine"; }, "Pause Nimbra", {}, {"Swirl"}},
      {"a custom palette over a named one",
       [](NimbraConfig& c) {
         c.customPalette = Palette{"Mine", {}};
       },
       "Pause Nimbra",
       {},
       {"Swirl"}},
      {"another pointer mode",
       [](NimbraConfig& c) { c.pointerMode = PointerMode::none; },
       "Pause Nimbra",
       {"Classic Nimbra"},
       {"None"}},
  };
  for (const Case& c : cases) {
    NimbraConfig config;
    c.edit(config);
    const Menu menu = quickMenu(config, "1");
    EXPECT_NE(find(menu, c.toggle), nullptr) << c.what;
    EXPECT_EQ(checkedIn(menu, "Colour"), c.palette) << c.what;
    EXPECT_EQ(checkedIn(menu, "Pointer interaction"), c.pointer) << c.what;
  }
}

class FakeStatusItem final : public StatusItem {
 public:
  void setHandlers(Handlers now) override { handlers = std::move(now); }
  void setMenu(const Menu& now) override {
    menu = now;
    ++menusSet;
  }
  void showMenu() override { ++menusShown; }
  std::optional<Rect> place() const override { return Rect{1, 2, 3, 4}; }

  void choose(const std::string& title) {
    const MenuItem* item = find(menu, title);
    ASSERT_NE(item, nullptr) << title;
    handlers.chosen(MenuItem(*item));
  }

  Handlers handlers;
  Menu menu;
  int menusSet = 0;
  int menusShown = 0;
};

class FakePresenter final : public SettingsPresenter {
 public:
  void show(const std::optional<Rect>& at) override {
    shown = true;
    place = at;
    log.push_back("show");
  }
  void close() override {
    shown = false;
    log.push_back("close");
  }
  bool isShown() const override { return shown; }

  bool shown = false;
  std::optional<Rect> place;
  Names log;
};

class MenuBarControllerTest : public testing::Test {
 protected:
  const NimbraConfig& config() const { return settings_.config(); }

  SettingsStore settings_{std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; }};
  SettingsEditor editor_{settings_};
  FakeStatusItem item_;
  FakePresenter presenter_;
  int resets_ = 0;
  int ends_ = 0;
  MenuBarController controller_{{.settings = &editor_,
                                 .statusItem = &item_,
                                 .presenter = &presenter_,
                                 .refreshSystemState = [this] { presenter_.log.push_back("refresh"); },
                                 .terminate = [this] { ++ends_; },
                                 .version = "1.2"}};
};

TEST_F(MenuBarControllerTest, chosenItemsDoWhatTheySay) {
  item_.choose("Pause Nimbra");
  EXPECT_FALSE(config().enabled);
  item_.choose("Resume Nimbra");
  EXPECT_TRUE(config().enabled);

  item_.choose("Calm");
  EXPECT_EQ(config().pointerMode, PointerMode::calm);

  item_.choose("Restart Simulation");
  controller_.onResetSim = [this] { ++resets_; };
  item_.choose("Restart Simulation");
  EXPECT_EQ(resets_, 1);
  item_.choose("Quit Veloria");
  EXPECT_EQ(ends_, 1);
  item_.choose("Settings…");
  item_.choose("Settings…");
  EXPECT_EQ(presenter_.log, (Names{"refresh", "show", "refresh", "show"})) << "the item never closes them";
  EXPECT_EQ(presenter_.place, (Rect{1, 2, 3, 4}));

  const NimbraConfig before = config();
  item_.choose("Veloria 1.2");
  item_.choose("Preset");
  EXPECT_EQ(config(), before);
}

TEST_F(MenuBarControllerTest, aPresetReplacesTheLookAPaletteTheColoursAndBothAreOneStepOfUndo) {
  NimbraConfig edited;
  edited.exposure = 3;
  edited.framesPerSecond = 30;
  edited.customPalette = Palette{"Mine", {{0, 0, 0}, {1, 1, 1}, {0, 0, 0}, {1, 1, 1}}};
  for (const LookPreset& preset : LookPreset::all()) {
    settings_.setConfig(edited);
    controller_.choosePreset(preset.name);
    EXPECT_EQ(config(), choose(edited, preset)) << preset.name;
    EXPECT_EQ(config().framesPerSecond, 30);
    EXPECT_EQ(config().palette().name, config().paletteName) << "not one's own any more";
    editor_.undo();
    EXPECT_EQ(config(), edited);
  }
  controller_.choosePreset("no such preset");
  controller_.choosePointer("no such mode");
  EXPECT_EQ(config(), edited);

  item_.choose(Palette::presets().back().name);
  EXPECT_EQ(config().palette(), Palette::presets().back());
  editor_.undo();
  EXPECT_EQ(config(), edited);
}

TEST_F(MenuBarControllerTest, theMenuFollowsTheSettingsAndNothingElse) {
  EXPECT_EQ(item_.menusSet, 1);
  NimbraConfig changed = config();
  changed.exposure = 2;
  settings_.setConfig(changed);
  EXPECT_EQ(item_.menusSet, 1) << "nothing in the menu depends on it";
  changed.pointerMode = PointerMode::glow;
  settings_.setConfig(changed);
  EXPECT_EQ(item_.menusSet, 2);
  EXPECT_EQ(checkedIn(item_.menu, "Pointer interaction"), Names{"Glow follow"});
  item_.choose("Glow follow");
  EXPECT_EQ(config(), changed) << "chosen again";
}

TEST_F(MenuBarControllerTest, clicksToggleTheSettingsOrShowTheMenu) {
  item_.handlers.clicked(Click::primary, false);
  EXPECT_EQ(presenter_.log, (Names{"refresh", "show"}));
  item_.handlers.clicked(Click::secondary, false);
  item_.handlers.clicked(Click::primary, true);
  EXPECT_EQ(item_.menusShown, 2);
  item_.handlers.clicked(Click::unknown, true);
  EXPECT_TRUE(presenter_.shown) << "they stay as they are";
  item_.handlers.clicked(Click::primary, false);
  EXPECT_FALSE(presenter_.shown);
  item_.handlers.clicked(Click::unknown, false);
  EXPECT_TRUE(presenter_.shown);
  EXPECT_EQ(item_.menusShown, 2);
}

TEST(MenuBarController, leavesTheStatusItemAlone) {
  SettingsStore settings(std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; });
  FakeStatusItem item;
  FakePresenter presenter;
  SettingsEditor editor(settings);
  { MenuBarController controller({.settings = &editor, .statusItem = &item, .presenter = &presenter}); }
  EXPECT_FALSE(item.handlers.clicked);
  NimbraConfig paused;
  paused.enabled = false;
  settings.setConfig(paused);
  EXPECT_EQ(item.menusSet, 1);
}

}  // namespace
}  // namespace veloria::tests
