#include "app/MenuBarController.h"

#include <utility>

#include "settings/LookPreset.h"
#include "settings/NimbraConfig.h"
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

MenuBarController::MenuBarController(Ports ports) : ports_(std::move(ports)) {
  ports_.statusItem->setHandlers({.clicked = [this](Click click, bool control) { buttonClicked(click, control); },
                                  .chosen = [this](const MenuItem& item) { perform(item); }});
  settingsSubscription_ = ports_.settings->subscribe([this](const NimbraConfig& config) { showMenuFor(config); });
}

MenuBarController::~MenuBarController() {
  settingsSubscription_.cancel();
  ports_.statusItem->setHandlers({});
}

void MenuBarController::showMenuFor(const NimbraConfig& config) {
  Menu menu = quickMenu(config, ports_.version);
  if (menu == menu_) return;
  menu_ = std::move(menu);
  ports_.statusItem->setMenu(menu_);
}

void MenuBarController::buttonClicked(Click click, bool controlHeld) {
  switch (responseTo(click, controlHeld, ports_.presenter->isShown())) {
    case ClickResponse::showMenu:
      return ports_.statusItem->showMenu();
    case ClickResponse::openSettings:
      return openSettings();
    case ClickResponse::closeSettings:
      return ports_.presenter->close();
  }
}

void MenuBarController::perform(const MenuItem& item) {
  switch (item.action) {
    case MenuAction::none:
      return;
    case MenuAction::toggleEnabled:
      return toggleEnabled();
    case MenuAction::choosePreset:
      return choosePreset(item.value);
    case MenuAction::choosePalette:
      return choosePalette(item.value);
    case MenuAction::choosePointer:
      return choosePointer(item.value);
    case MenuAction::openSettings:
      return openSettings();
    case MenuAction::restartSim:
      return restartSim();
    case MenuAction::quit:
      return quit();
  }
}

void MenuBarController::toggleEnabled() {
  ports_.settings->change("enabled", [](NimbraConfig& config) { config.enabled = !config.enabled; });
}

void MenuBarController::choosePreset(std::string_view name) {
  if (const LookPreset* preset = LookPreset::find(name)) ports_.settings->choosePreset(*preset);
}

void MenuBarController::choosePalette(std::string_view name) {
  ports_.settings->choosePalette(name);
}

void MenuBarController::choosePointer(std::string_view rawValue) {
  const auto mode = fromRawValue<PointerMode>(rawValue);
  if (mode) ports_.settings->change("pointerMode", [&](NimbraConfig& config) { config.pointerMode = *mode; });
}

void MenuBarController::openSettings() {
  if (ports_.refreshSystemState) ports_.refreshSystemState();
  ports_.presenter->show(ports_.statusItem->place());
}

void MenuBarController::restartSim() {
  if (onResetSim) onResetSim();
}

void MenuBarController::quit() {
  if (ports_.terminate) ports_.terminate();
}

}  // namespace veloria
