#include "app/MenuModel.h"

#include <utility>

#include "settings/LookPreset.h"
#include "settings/Modes.h"
#include "settings/Palette.h"

namespace veloria {

namespace {

constexpr std::pair<const char*, PointerMode> pointerTitles[] = {
    {"None", PointerMode::none},    {"Glow follow", PointerMode::glow}, {"Push the fluid", PointerMode::push},
    {"Swirl", PointerMode::vortex}, {"Calm", PointerMode::calm},
};

MenuItem separator() {
  return {.title = {}, .separator = true};
}

MenuItem command(std::string title, MenuAction action, std::string keyEquivalent = {}) {
  return {.title = std::move(title), .keyEquivalent = std::move(keyEquivalent), .action = action};
}

MenuItem group(std::string title, Menu items) {
  return {.title = std::move(title), .submenu = std::move(items)};
}

Menu presetItems() {
  Menu items;
  for (const LookPreset& preset : LookPreset::all()) {
    const std::string name(preset.name);
    items.push_back({.title = name, .action = MenuAction::choosePreset, .value = name});
  }
  return items;
}

Menu paletteItems(const NimbraConfig& config) {
  Menu items;
  for (const Palette& palette : Palette::presets()) {
    items.push_back({.title = palette.name,
                     .checked = !config.customPalette && palette.name == config.paletteName,
                     .action = MenuAction::choosePalette,
                     .value = palette.name});
  }
  return items;
}

Menu pointerItems(const NimbraConfig& config) {
  Menu items;
  for (const auto& [title, mode] : pointerTitles) {
    items.push_back({.title = title,
                     .checked = mode == config.pointerMode,
                     .action = MenuAction::choosePointer,
                     .value = std::string(rawValue(mode))});
  }
  return items;
}

}  // namespace

Menu quickMenu(const NimbraConfig& config, std::string_view version) {
  return {
      {.title = "Veloria " + std::string(version), .enabled = false},
      separator(),
      command(config.enabled ? "Pause Nimbra" : "Resume Nimbra", MenuAction::toggleEnabled),
      separator(),
      group("Preset", presetItems()),
      group("Colour", paletteItems(config)),
      group("Pointer interaction", pointerItems(config)),
      separator(),
      command("Settings…", MenuAction::openSettings, ","),
      command("Restart Simulation", MenuAction::restartSim),
      separator(),
      command("Quit Veloria", MenuAction::quit, "q"),
  };
}

ClickResponse responseTo(Click click, bool controlHeld, bool settingsShown) {
  if (click == Click::unknown) return ClickResponse::openSettings;
  if (click == Click::secondary || controlHeld) return ClickResponse::showMenu;
  return settingsShown ? ClickResponse::closeSettings : ClickResponse::openSettings;
}

}  // namespace veloria
