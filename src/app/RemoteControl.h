#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "app/AppStatus.h"
#include "settings/SettingsEditor.h"

namespace veloria {

/// Answers requests of this user's other programs over the local socket; base/LocalSocket.h has the protocol. Main
/// thread.
class RemoteControl {
 public:
  struct Ports {
    SettingsEditor* settings = nullptr;
    std::function<AppStatus()> status;
    /// Opens the settings; empty if there is no window for them.
    std::function<void()> showSettings = {};
  };

  explicit RemoteControl(Ports ports) : ports_(std::move(ports)) {}

  /// Always one line of JSON; {"error": text} if the request failed.
  std::string answer(std::string_view question);

 private:
  nlohmann::ordered_json carryOut(std::string_view question);
  nlohmann::ordered_json usePreset(const nlohmann::json& question);
  nlohmann::ordered_json setEnabled(bool enabled);

  Ports ports_;
};

}  // namespace veloria
