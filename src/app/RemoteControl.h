#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "app/AppStatus.h"
#include "settings/SettingsEditor.h"

namespace veloria {

/// Answers what this user's other programs ask over the local socket; base/LocalSocket.h has the protocol. Main thread.
class RemoteControl {
 public:
  struct Ports {
    SettingsEditor* settings = nullptr;
    std::function<AppStatus()> status;
    /// Brings up the settings; empty where there is no window for them.
    std::function<void()> showSettings = {};
  };

  explicit RemoteControl(Ports ports) : ports_(std::move(ports)) {}

  /// One line of JSON, whatever the question is: {"error": text} when it could not be done.
  std::string answer(std::string_view question);

 private:
  nlohmann::ordered_json carryOut(std::string_view question);
  nlohmann::ordered_json usePreset(const nlohmann::json& question);
  nlohmann::ordered_json setEnabled(bool enabled);

  Ports ports_;
};

}  // namespace veloria
