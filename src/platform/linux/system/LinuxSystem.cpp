#include "platform/linux/system/LinuxSystem.h"

#include <QObject>
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "ContrastWorker.h"
#include "platform/linux/bus/BusAddresses.h"
#include "platform/linux/files/DesktopNames.h"
#include "platform/linux/system/SettingsPanes.h"
#include "platform/posix/process/Programs.h"
#include "platform/qt/WorkerThread.h"

namespace veloria {

/// The main thread's side.
class LinuxSystem::Parts final : public QObject {
 public:
  explicit Parts(Options options)
      : transparencyReduced_(std::move(options.transparencyReduced)),
        desktops_(desktopNames(options.environment)),
        searchPath_(options.environment("PATH").value_or("")),
        thread_(busAddresses(options.environment).session, [this](bool increased) {
          QMetaObject::invokeMethod(this, [this, increased] { takeContrast(increased); });
        }) {}

  SystemFacts facts() {
    if (!looking_.exchange(true)) {
      thread_.post([this](ContrastWorker& worker) {
        looking_ = false;
        worker.look();
      });
    }
    return {.reduceTransparency = transparencyReduced_ && transparencyReduced_(), .increaseContrast = contrast_};
  }

  void setChangeHandler(std::function<void()> handler) { handler_ = std::move(handler); }

  Result<Done> open(SystemPane pane) {
    for (const SettingsCommand& command : paneCommands(desktops_, pane)) {
      if (const auto program = findProgram(command.front(), searchPath_)) {
        return startDetached(*program, {command.begin() + 1, command.end()});
      }
    }
    return Failure{"No settings program of this desktop was found. Open its settings yourself."};
  }

 private:
  void takeContrast(bool increased) {
    if (std::exchange(contrast_, increased) != increased && handler_) handler_();
  }

  std::function<bool()> transparencyReduced_;
  std::vector<std::string> desktops_;
  std::string searchPath_;
  std::function<void()> handler_;
  bool contrast_ = false;
  std::atomic<bool> looking_{false};
  WorkerThread<ContrastWorker> thread_;  ///< the last one: it reports to the others until it ends
};

LinuxSystem::LinuxSystem(Options options) : parts_(std::make_unique<Parts>(std::move(options))) {}

LinuxSystem::~LinuxSystem() = default;

SystemFacts LinuxSystem::facts() {
  return parts_->facts();
}

void LinuxSystem::setChangeHandler(std::function<void()> handler) {
  parts_->setChangeHandler(std::move(handler));
}

Result<Done> LinuxSystem::open(SystemPane pane) {
  return parts_->open(pane);
}

}  // namespace veloria
