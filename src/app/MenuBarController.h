#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ports/Menu.h"
#include "ports/SettingsPresenter.h"
#include "ports/StatusItem.h"
#include "settings/NimbraConfig.h"
#include "settings/SettingsEditor.h"

namespace veloria {

/// The quick menu for these settings. `version` is the program's, as people see it.
Menu quickMenu(const NimbraConfig& config, std::string_view version);

enum class ClickResponse { showMenu, openSettings, closeSettings };

/// What a click does. The menu leaves open settings open.
ClickResponse responseTo(Click click, bool controlHeld, bool settingsShown);

/// The status item, which opens the settings, and its quick menu. It changes settings through the editor only, so that
/// the settings window can undo them. Main thread.
class MenuBarController {
 public:
  /// What the pointers point to must outlive the controller.
  struct Ports {
    SettingsEditor* settings = nullptr;
    StatusItem* statusItem = nullptr;
    SettingsPresenter* presenter = nullptr;
    /// Refreshes the desktop's state before the settings are shown; may be empty.
    std::function<void()> refreshSystemState = {};
    /// Ends the program.
    std::function<void()> terminate = {};
    std::string version = {};  ///< as people see it
  };

  /// Sets the status item's menu and keeps it up to date.
  explicit MenuBarController(Ports ports);
  ~MenuBarController();
  MenuBarController(const MenuBarController&) = delete;
  MenuBarController& operator=(const MenuBarController&) = delete;

  /// Called to clear the fluids.
  std::function<void()> onResetSim;

  void buttonClicked(Click click, bool controlHeld);

  void toggleEnabled();
  /// An unknown name changes nothing.
  void choosePreset(std::string_view name);
  void choosePalette(std::string_view name);
  /// An unknown raw value changes nothing.
  void choosePointer(std::string_view rawValue);
  void openSettings();
  void restartSim();
  void quit();

 private:
  void perform(const MenuItem& item);
  void showMenuFor(const NimbraConfig& config);

  Ports ports_;
  Menu menu_;
  Subscription settingsSubscription_;
};

}  // namespace veloria
