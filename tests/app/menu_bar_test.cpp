// The status item's menu and clicks, without any desktop.

#include <gmock/gmock.h>

#include "../support/MemoryStorage.h"
#include "app/MenuBarController.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

using testing::ElementsAre;
using Names = std::vector<std::string>;

/// One line a menu line: mark, title, key.
Names linesOf(const Menu& menu) {
  Names lines;
  for (const MenuItem& item : menu) {
    const std::string mark = item.checked ? (*item.checked ? "[x] " : "[ ] ") : "";
    const std::string key = item.keyEquivalent.empty() ? "" : " (" + item.keyEquivalent + ")";
    lines.push_back(item.separator ? "---" : mark + item.title + key + (item.enabled ? "" : " disabled"));
  }
  return lines;
}

const MenuItem* find(const Menu& menu, const std::string& title) {
  for (const MenuItem& item : menu) {
    if (item.title == title) return &item;
    if (const MenuItem* inner = find(item.submenu, title)) return inner;
  }
  return nullptr;
}

/// The titles of a submenu that are checked.
Names checkedIn(const Menu& menu, const std::string& title) {
  Names result;
  for (const MenuItem& choice : find(menu, title)->submenu) {
    if (choice.checked.value_or(false)) result.push_back(choice.title);
  }
  return result;
}

TEST(QuickMenu, HasItsLinesInOrderAndMarksWhatTheSettingsSay) {
  NimbraConfig config;
  Menu menu = quickMenu(config, "1.2");
  EXPECT_THAT(linesOf(menu), ElementsAre("Veloria 1.2 disabled", "---", "Pause Nimbra", "---", "Preset", "Colour",
                                         "Pointer interaction", "---", "Settings… (,)", "Restart Simulation", "---",
                                         "Quit Veloria (q)"));
  EXPECT_THAT(linesOf(find(menu, "Pointer interaction")->submenu),
              ElementsAre("[ ] None", "[ ] Glow follow", "[ ] Push the fluid", "[x] Swirl", "[ ] Calm"));
  EXPECT_EQ(checkedIn(menu, "Colour"), Names{"Classic Nimbra"});
  config.customPalette.emplace();
  menu = quickMenu(config, "1.2");
  EXPECT_EQ(checkedIn(menu, "Colour"), Names());
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
  EXPECT_EQ(checkedIn(item_.menu, "Pointer interaction"), Names{"Calm"});
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
  for (const LookPreset& preset : LookPreset::all()) {
    item_.choose(std::string(preset.name));
    EXPECT_EQ(config(), choose(edited, preset)) << preset.name;
    editor_.undo();
    EXPECT_EQ(config(), edited);
  }
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

}  // namespace
}  // namespace veloria::tests
