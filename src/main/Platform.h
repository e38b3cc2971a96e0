#pragma once

#include <memory>
#include <string>

#include "base/Environment.h"
#include "base/Log.h"
#include "main/Desktop.h"
#include "main/SystemServices.h"
#include "ports/AudioTap.h"
#include "ports/DesktopPicture.h"
#include "ports/EventLoop.h"
#include "ports/Notifier.h"
#include "ports/PanelClearing.h"
#include "ports/SettingsPresenter.h"
#include "ports/SettingsStorage.h"
#include "ports/StatusItem.h"
#include "ports/SystemActivity.h"
#include "ports/SystemPort.h"
#include "ui/cards/SystemFactsCard.h"

namespace veloria {

class SettingsHost;

/// What an operating system provides to the application. Main thread. Must outlive all that it makes.
class Platform {
 public:
  virtual ~Platform() = default;
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  /// Before there is a QApplication, in the one process that shows the band. Throws WorkError if there is no
  /// display.
  virtual void prepare() {}
  virtual std::unique_ptr<SettingsStorage> makeSettingsStorage() = 0;

  /// The rest needs a QApplication, which must outlive what is made. The desktop comes first. `timers` must outlive it.
  /// Throws WorkError if there is none, and std::runtime_error for one that can't be used.
  virtual std::unique_ptr<Desktop> openDesktop(TimerFactory& timers) = 0;
  virtual std::unique_ptr<DesktopPicture> makeDesktopPicture() = 0;
  virtual std::unique_ptr<AudioTap> makeAudioTap() = 0;
  virtual std::unique_ptr<SystemActivity> makeActivity() = 0;
  virtual std::unique_ptr<Notifier> makeNotifier() = 0;
  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
  /// Shows the settings window by the status item, which was made before; null if the window does so itself.
  virtual std::unique_ptr<SettingsPresenter> makePopover(SettingsHost&) { return nullptr; }
  /// `desktop`: what openDesktop() returned; must outlive it.
  virtual std::unique_ptr<SystemPort> makeSystem(Desktop& desktop) = 0;
  virtual std::unique_ptr<LoginItemPort> makeLoginItem() = 0;
  /// Needs no more than a QCoreApplication. Null on a system whose panel can't be changed.
  virtual std::unique_ptr<PanelClearing> makePanelClearing() { return nullptr; }
  /// The plain values alone; the pointers are null.
  virtual SystemServices::Ports services() const = 0;
  virtual SystemPanes panes() const { return {}; }

  /// Shows a critical message until it is read.
  virtual void alert(Notifier& notifier, const std::string& message, const std::string& informative) = 0;
  /// Logs that the display server is gone.
  virtual void logLoss(const std::string& line) { systemLog(line); }

 protected:
  Platform() = default;
};

/// The system that this is. From now on systemLog() writes to its log.
std::unique_ptr<Platform> makePlatform(const Environment& environment);

/// Call this first in main(): if this process was started as a helper of the program, it does that work and ends the
/// process.
void runAsHelper(int argc, char** argv);

}  // namespace veloria
