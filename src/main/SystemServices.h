#pragma once

#include <filesystem>
#include <functional>
#include <mutex>

#include "base/Environment.h"
#include "base/Timer.h"
#include "platform/linux/system/AutostartLoginItem.h"
#include "platform/linux/system/LinuxCommandLine.h"
#include "platform/linux/system/LinuxSystem.h"
#include "system/CommandLineTool.h"
#include "system/LoginItem.h"
#include "system/SystemState.h"
#include "ui/CommandLineCard.h"
#include "ui/LoginItemCard.h"
#include "ui/SystemFactsCard.h"

namespace veloria {

/// The desktop's own settings, the nimbra command on the shell's PATH and the start at login, as the settings window
/// needs them. Main thread; must live until the process ends, as threads of the window's pool may still ask for the
/// command.
class SystemServices {
 public:
  /// `program` is this executable, absolute. `transparencyReduced` as in LinuxSystem.
  SystemServices(const Environment& environment, const std::filesystem::path& program, TimerFactory& timers,
                 std::function<bool()> transparencyReduced);

  SystemState& state() { return state_; }
  CommandLinePorts commandLinePorts();
  LoginItemPorts loginItemPorts();
  SystemFactsPorts systemFactsPorts();

 private:
  LinuxSystem system_;
  SystemState state_;
  LinuxCommandLine commandLine_;
  std::mutex toolLock_;  // a card that is gone may still be asking when the next one does
  CommandLineTool tool_;
  AutostartLoginItem autostart_;
  LoginItem loginItem_;
};

}  // namespace veloria
