#include "platform/linux/system/LinuxSystem.h"

#include <QObject>
#include <QThread>
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "ContrastWorker.h"
#include "platform/linux/bus/BusAddresses.h"
#include "platform/linux/files/DesktopNames.h"
#include "platform/posix/process/Programs.h"
#include "platform/linux/system/SettingsPanes.h"

namespace veloria {

/// The main thread's side.
class LinuxSystem::Desk final : public QObject {
 public:
  explicit Desk(Options options)
      : transparencyReduced_(std::move(options.transparencyReduced)),
        desktops_(desktopNames(options.environment)),
        searchPath_(options.environment("PATH").value_or("")),
        worker_(busAddresses(options.environment).session, [this](bool increased) {
          QMetaObject::invokeMethod(this, [this, increased] { takeContrast(increased); });
        }) {
    worker_.moveToThread(&thread_);
  }

  ~Desk() override {
    if (!thread_.isRunning()) return;
    onWorker([this] {
      worker_.stop();
      thread_.quit();
    });
    thread_.wait();
  }

  SystemFacts facts() {
    if (!thread_.isRunning()) thread_.start();
    if (!looking_.exchange(true)) {
      onWorker([this] {
        looking_ = false;
        worker_.look();
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

  template <typename Action>
  void onWorker(Action action) {
    QMetaObject::invokeMethod(&worker_, std::move(action), Qt::QueuedConnection);
  }

  std::function<bool()> transparencyReduced_;
  std::vector<std::string> desktops_;
  std::string searchPath_;
  std::function<void()> handler_;
  bool contrast_ = false;
  std::atomic<bool> looking_{false};
  QThread thread_;
  ContrastWorker worker_;
};

LinuxSystem::LinuxSystem(Options options) : desk_(std::make_unique<Desk>(std::move(options))) {}

LinuxSystem::~LinuxSystem() = default;

SystemFacts LinuxSystem::facts() {
  return desk_->facts();
}

void LinuxSystem::setChangeHandler(std::function<void()> handler) {
  desk_->setChangeHandler(std::move(handler));
}

Result<Done> LinuxSystem::open(SystemPane pane) {
  return desk_->open(pane);
}

}  // namespace veloria
