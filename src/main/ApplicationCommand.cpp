#include <QCoreApplication>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "app/RemoteControl.h"
#include "base/LocalSocket.h"
#include "base/Log.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "main/Desktop.h"
#include "main/GpuSetup.h"
#include "main/LiveSources.h"
#include "main/RunningApplication.h"
#include "main/SignalWatch.h"
#include "platform/linux/activity/LinuxActivity.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/linux/files/UserFolders.h"
#include "platform/linux/qt/DescriptorWatch.h"
#include "platform/linux/qt/QtTimerFactory.h"
#include "platform/linux/socket/InstanceLock.h"
#include "platform/linux/socket/LocalServer.h"
#include "render/PointerTracker.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

namespace {

struct Instance {
  bool otherRuns = false;
  std::optional<InstanceLock> lock;  ///< nothing where it can't be had: running without it is better than not running
};

void complainAboutSocket(const std::string& reason) {
  systemLog("veloria: 'veloria status' and 'nimbra' can't reach this one: " + reason);
}

Instance becomeTheOne(const std::optional<std::filesystem::path>& socketPath) {
  if (!socketPath) return complainAboutSocket("XDG_RUNTIME_DIR is too long"), Instance{};
  auto lock = InstanceLock::take(*socketPath);
  if (!lock) return complainAboutSocket(lock.error()), Instance{};
  return {!lock->has_value(), *std::move(lock)};
}

/// Brings up the settings of the one that runs; while it has no window for them, tells how it is.
int greetTheOther() {
  std::puts("Veloria is running already.");
  const auto status = askRunningApplication(R"({"command": "status"})");
  if (status) std::fputs(statusText(*status).c_str(), stdout);
  return done;
}

std::unique_ptr<LocalServer> listenForQuestions(const std::filesystem::path& path, TimerFactory& timers,
                                                RemoteControl& remote) {
  auto server = LocalServer::listen(path, {.watch = watchDescriptor, .timers = &timers, .answer = [&](auto question) {
                                             return remote.answer(question);
                                           }});
  if (server) return *std::move(server);
  complainAboutSocket(server.error());
  return nullptr;
}

}  // namespace

int runApplication(const QStringList&) {
  const Environment environment = processEnvironment();
  const auto socketPath = controlSocketPath(environment);
  const Instance instance = becomeTheOne(socketPath);
  if (instance.otherRuns) return greetTheOther();
  QtTimerFactory timers;
  const auto desktop = openDesktop(environment, watchDescriptor, timers);
  SettingsStore& settings = SettingsStore::makeShared(
      std::make_unique<FileSettingsStorage>(configFolder(environment).value_or("")), environment);
  LiveSources sources(environment, desktop->screens());
  SceneDriver::Ports driverPorts{.settings = [&]() -> const NimbraConfig& { return settings.config(); },
                                 .timers = &timers};
  sources.addTo(driverPorts);
  SceneDriver driver(std::move(driverPorts));

  LinuxActivity system({.environment = environment});
  ActivityWatcher activity({.settings = [&]() -> const NimbraConfig& { return settings.config(); },
                            .timers = &timers,
                            .isFullScreenSpaceActive = [&] { return desktop->isFullScreen(); },
                            .isOnBattery = [&] { return system.isOnBattery(); },
                            .onPoll = [&] { system.setDisplaysOff(desktop->displaysOff()); }});
  PointerTracker pointer(timers, desktop->pointerSource());

  int exitCode = done;
  AppDelegate delegate({
      .makeDevice = [&] { return desktop->makeDevice(); },
      .shaderLibraries = shaderLibraryCandidates(programPlaces()),
      .screens = &desktop->screens(),
      .panels = &desktop->panels(),
      .timers = &timers,
      .settings = &settings,
      .driver = &driver,
      .activity = &activity,
      .pointer = &pointer,
      .captureStream = desktop->captureStream(),
      .captureProblem = desktop->captureProblem(),
      .environment = environment,
      .backendName = desktop->name(),
      .alert = [](const std::string& message, const std::string& text) { systemLog(message + "\n" + text); },
      .terminate =
          [&](bool failure) {
            exitCode = failure ? failed : done;
            QTimer::singleShot(0, [&] { QCoreApplication::exit(exitCode); });
          },
      .hint = [](const std::string& text) { systemLog("Veloria: " + text); },
  });
  desktop->setBrokenHandler([&](const std::string& reason) {
    systemLog("veloria: " + reason);
    exitCode = failed;
    QCoreApplication::exit(failed);
  });
  desktop->setCaptureChanceHandler([&] { delegate.updateCapture(); });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });

  delegate.didFinishLaunching();
  system.setHandler([&](auto notification) { activity.notify(notification); });
  RemoteControl remote({.settings = &settings, .status = [&] { return delegate.status(); }});
  const auto server = instance.lock ? listenForQuestions(*socketPath, timers, remote) : nullptr;
  QCoreApplication::exec();
  system.setHandler(nullptr);
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
