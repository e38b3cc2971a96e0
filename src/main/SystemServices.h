#pragma once

#include <filesystem>
#include <mutex>

#include "base/Environment.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/posix/process/PosixCommandLine.h"
#include "ports/EventLoop.h"
#include "system/CommandLineTool.h"
#include "system/LoginItem.h"
#include "system/SystemState.h"
#include "ui/cards/CommandLineCard.h"

namespace veloria {

/// The desktop's own settings, the nimbra command on the shell's PATH and the start at login, as the settings window
/// needs them. Main thread; must live until the process ends, as threads of the window's pool may still use the
/// command.
class SystemServices {
 public:
  /// The system's side of it; what the pointers point to must outlive this.
  struct Ports {
    SystemPort* system = nullptr;
    LoginItemPort* loginItem = nullptr;
    TimerFactory* timers = nullptr;
    std::filesystem::path command;  ///< this program's own nimbra, absolute
  };

  SystemServices(const Environment& environment, const Ports& ports)
      : state_(*ports.system, *ports.timers),
        tool_(commandLine_, environment, {.command = ports.command, .home = homeFolder(environment).value_or("")}),
        loginItem_(*ports.loginItem) {}

  SystemState& state() { return state_; }
  LoginItem& loginItem() { return loginItem_; }
  CommandLinePorts commandLinePorts() {
    const auto alone = [this](auto action) {
      return [this, action] {
        const std::scoped_lock lock(toolLock_);
        return action(tool_);
      };
    };
    return {.look = alone([](CommandLineTool& tool) { return tool.look(); }),
            .install = alone([](CommandLineTool& tool) { tool.install(); }),
            .uninstall = alone([](CommandLineTool& tool) { tool.uninstall(); })};
  }

 private:
  SystemState state_;
  PosixCommandLine commandLine_;
  std::mutex toolLock_;  // a card that is gone may still be asking when the next one does
  CommandLineTool tool_;
  LoginItem loginItem_;
};

}  // namespace veloria
