#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "app/MenuModel.h"
#include "ports/SettingsPresenter.h"
#include "ports/StatusItem.h"
#include "settings/SettingsEditor.h"

namespace veloria {

/// The program's only visible control: a status item that opens the settings, and its quick menu. It changes settings
/// through the editor and in no other way, so that the settings window can take its changes back. Main thread.
class MenuBarController {
 public:
  /// What the pointers point to must outlive the controller.
  struct Ports {
    SettingsEditor* settings = nullptr;
    StatusItem* statusItem = nullptr;
    SettingsPresenter* presenter = nullptr;
    /// Looks at the desktop's state anew, before the settings are shown; may be empty.
    std::function<void()> refreshSystemState = {};
    /// Ends the program.
    std::function<void()> terminate = {};
    std::string version = {};  ///< as people see it
  };

  /// Gives the status item its menu, and keeps the menu as the settings are.
  explicit MenuBarController(Ports ports);
  ~MenuBarController();
  MenuBarController(const MenuBarController&) = delete;
  MenuBarController& operator=(const MenuBarController&) = delete;

  /// Empties the fluids; what it does is the delegate's affair.
  std::function<void()> onResetSim;

  void buttonClicked(Click click, bool controlHeld);

  void toggleEnabled();
  /// A name of no preset changes nothing.
  void choosePreset(std::string_view name);
  void choosePalette(std::string_view name);
  /// A raw value of no mode changes nothing.
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
