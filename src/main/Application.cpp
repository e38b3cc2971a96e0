#include <QApplication>
#include <QTimer>
#include <csignal>
#include <memory>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "app/FirstMinute.h"
#include "app/MenuBarController.h"
#include "app/RemoteControl.h"
#include "base/Log.h"
#include "main/GpuSetup.h"
#include "main/LiveSources.h"
#include "main/Platform.h"
#include "main/SettingsHost.h"
#include "main/SignalWatch.h"
#include "main/SingleInstance.h"
#include "main/SystemServices.h"
#include "main/commands/Command.h"
#include "platform/posix/files/OnceMark.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/qt/QtEventLoop.h"
#include "render/PointerTracker.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

int runApplication(int& argc, char** argv) {
  const Environment environment = processEnvironment();
  const auto platform = makePlatform(environment);
  const SingleInstance instance(environment);
  if (instance.otherRuns()) return instance.greetTheOther();
  platform->prepare();
  SettingsStore& settings = SettingsStore::makeShared(platform->makeSettingsStorage(), environment);
  const auto config = [&]() -> const NimbraConfig& { return settings.config(); };
  QApplication application(argc, argv);
  keepNumbersPlain();
  QApplication::setQuitOnLastWindowClosed(false);
  QtTimerFactory timers;
  const auto desktop = platform->openDesktop(timers);
  const auto picture = platform->makeDesktopPicture();
  LiveSources sources(environment, {.screens = &desktop->screens(), .picture = picture.get(), .makeAudioTap = [&] {
                                      return platform->makeAudioTap();
                                    }});
  SceneDriver::Ports driverPorts{.settings = config, .timers = &timers};
  sources.addTo(driverPorts);
  SceneDriver driver(std::move(driverPorts));

  const auto system = platform->makeActivity();
  ActivityWatcher activity({.settings = config,
                            .timers = &timers,
                            .isFullScreenSpaceActive = [&] { return desktop->isFullScreen(); },
                            .isOnBattery = [&] { return system->isOnBattery(); },
                            .onPoll = [&] { system->setDisplaysOff(desktop->displaysOff()); }});
  PointerTracker pointer(timers, desktop->pointerSource());

  const auto notifier = platform->makeNotifier();
  const OnceMark told(stateFolder(environment), "first-minute");
  FirstMinute firstMinute({.settings = &settings,
                           .notifier = notifier.get(),
                           .textCanBeKept = [&] { return desktop->captureStream() != nullptr; },
                           .wasTold = [&] { return told.isSet(); },
                           .rememberTold = [&] { told.set(); }});
  const auto shaderLibraries = shaderLibraryCandidates(programPlaces());

  SettingsEditor editor(settings);
  int exitCode = done;
  const auto quit = [&](ExitCode code) {
    exitCode = code;
    QTimer::singleShot(0, [&] { QCoreApplication::exit(exitCode); });
  };
  AppDelegate delegate({
      .makeDevice = [&] { return desktop->makeDevice(); },
      .shaderLibraries = shaderLibraries,
      .screens = &desktop->screens(),
      .panels = &desktop->panels(),
      .timers = &timers,
      .settings = &settings,
      .driver = &driver,
      .activity = &activity,
      .pointer = &pointer,
      .captureStream = desktop->captureStream(),
      .captureProblem = desktop->captureProblem(),
      .pictureError = [&] { return sources.pictureError(); },
      .environment = environment,
      .backendName = desktop->name(),
      .alert = [&](const std::string& message,
                   const std::string& informative) { platform->alert(*notifier, message, informative); },
      .terminate = [&] { quit(cannotRun); },
      .hint =
          [&](const std::string& text) {
            systemLog("Veloria: " + text);
            firstMinute.lightIsHidden();
          },
  });
  desktop->setBrokenHandler([&](const std::string& reason) {
    platform->logLoss("veloria: " + reason);
    exitCode = failed;
    QCoreApplication::exit(failed);
  });
  desktop->setCaptureChanceHandler([&] { delegate.updateCapture(); });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });
  if (!delegate.startGpu()) return cannotRun;

  const auto desktopSettings = platform->makeSystem(*desktop);
  const auto loginItem = platform->makeLoginItem();
  auto servicePorts = platform->services();
  servicePorts.system = desktopSettings.get();
  servicePorts.loginItem = loginItem.get();
  servicePorts.timers = &timers;
  SystemServices services(environment, servicePorts);
  SettingsPresenter* popover = nullptr;
  SettingsHost host({
      .settings = &editor,
      .readouts =
          [&] {
            const auto screen = desktop->mainScreen();
            return readoutsOf(delegate.status(), screen ? &*screen : nullptr);
          },
      .makeGpu =
          [shaderLibraries] {
            PreviewGpu gpu{makeDevice({}), nullptr};
            gpu.library = loadShaderLibrary(*gpu.device, shaderLibraries);
            return gpu;
          },
      .drivenConfig = [&] { return activity.shouldRender() ? driver.driven() : config().applyingTempo(); },
      .commandLine = services.commandLinePorts(),
      .loginItem = &services.loginItem(),
      .system = &services.state(),
      .panes = platform->panes(),
      .visibleChanged =
          [&](bool visible) {
            visible ? services.state().start() : services.state().stop();
            if (!visible && popover != nullptr) popover->close();  // it was closed from within
          },
  });
  const auto statusItem = platform->makeStatusItem();
  const auto ownPopover = platform->makePopover(host);
  popover = ownPopover.get();
  MenuBarController menuBar({.settings = &editor,
                             .statusItem = statusItem.get(),
                             .presenter = popover != nullptr ? popover : &host,
                             .refreshSystemState = [&] { services.state().refresh(); },
                             .terminate = [&] { quit(done); },
                             .version = VELORIA_VERSION});
  menuBar.onResetSim = [&] { delegate.restartSimulation(); };

  delegate.didFinishLaunching();
  system->setHandler([&](auto notification) { activity.notify(notification); });
  RemoteControl remote({.settings = &editor,
                        .status = [&] { return delegate.status(); },
                        .showSettings = [&] { menuBar.openSettings(); }});
  const auto server = instance.listen(timers, remote);
  QCoreApplication::exec();
  settings.flush();
  popover = nullptr;
  system->setHandler(nullptr);
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
