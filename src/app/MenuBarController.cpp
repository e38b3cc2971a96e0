#include "app/MenuBarController.h"

#include <utility>

#include "settings/LookPreset.h"

namespace veloria {

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
  NimbraConfig config = ports_.settings->config();
  config.enabled = !config.enabled;
  ports_.settings->setConfig(std::move(config));
}

void MenuBarController::choosePreset(std::string_view name) {
  if (const LookPreset* preset = LookPreset::find(name)) {
    ports_.settings->setConfig(choose(ports_.settings->config(), *preset));
  }
}

void MenuBarController::choosePalette(std::string_view name) {
  NimbraConfig config = ports_.settings->config();
  config.paletteName = name;
  ports_.settings->setConfig(std::move(config));
}

void MenuBarController::choosePointer(std::string_view rawValue) {
  const auto mode = fromRawValue<PointerMode>(rawValue);
  if (!mode) return;
  NimbraConfig config = ports_.settings->config();
  config.pointerMode = *mode;
  ports_.settings->setConfig(std::move(config));
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
