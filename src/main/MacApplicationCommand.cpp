#include <QApplication>
#include <QTimer>
#include <csignal>
#include <memory>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "app/MenuBarController.h"
#include "app/RemoteControl.h"
#include "base/Log.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "main/GpuSetup.h"
#include "main/LiveSources.h"
#include "main/MacDesktop.h"
#include "main/PopoverSettings.h"
#include "main/SettingsHost.h"
#include "main/SignalWatch.h"
#include "main/SingleInstance.h"
#include "main/StatusReadouts.h"
#include "main/SystemServices.h"
#include "platform/macos/activity/MacActivity.h"
#include "platform/macos/audio/MacAudioTap.h"
#include "platform/macos/files/UserDefaultsStorage.h"
#include "platform/macos/pointer/MacPointer.h"
#include "platform/macos/run/MacApplication.h"
#include "platform/macos/status/MacStatusItem.h"
#include "platform/macos/system/BundlePlaces.h"
#include "platform/macos/system/MacLoginItem.h"
#include "platform/macos/system/MacSystem.h"
#include "platform/macos/system/MainBundle.h"
#include "platform/macos/wallpaper/MacDesktopPicture.h"
#include "platform/qt/QtTimerFactory.h"
#include "render/PointerTracker.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

void runHelper(int, char**) {}

int runApplication(int& argc, char** argv) {
  setSystemLog(writeToSystemLog);
  const Environment environment = processEnvironment();
  const SingleInstance instance(environment);
  if (instance.otherRuns()) return instance.greetTheOther();
  QApplication application(argc, argv);
  keepNumbersPlain();
  QApplication::setQuitOnLastWindowClosed(false);
  becomeAccessory();
  QtTimerFactory timers;
  MacDesktop desktop(environment);
  SettingsStore& settings = SettingsStore::makeShared(std::make_unique<UserDefaultsStorage>(), environment);
  MacDesktopPicture picture;
  LiveSources sources(environment, {.screens = &desktop.screens(), .picture = &picture, .makeAudioTap = [] {
                                      return std::make_unique<MacAudioTap>();
                                    }});
  SceneDriver::Ports driverPorts{.settings = [&]() -> const NimbraConfig& { return settings.config(); },
                                 .timers = &timers};
  sources.addTo(driverPorts);
  SceneDriver driver(std::move(driverPorts));

  MacActivity system;
  ActivityWatcher activity({.settings = [&]() -> const NimbraConfig& { return settings.config(); },
                            .timers = &timers,
                            .isFullScreenSpaceActive = [&] { return desktop.isFullScreen(); },
                            .isOnBattery = [&] { return system.isOnBattery(); }});
  PointerTracker pointer(timers, macPointerSource());
  const auto shaderLibraries = shaderLibraryCandidates(programPlaces());

  SettingsEditor editor(settings);
  int exitCode = done;
  const auto quit = [&](ExitCode code) {
    exitCode = code;
    QTimer::singleShot(0, [&] { QCoreApplication::exit(exitCode); });
  };
  AppDelegate delegate({
      .makeDevice = [&] { return desktop.makeDevice(); },
      .shaderLibraries = shaderLibraries,
      .screens = &desktop.screens(),
      .panels = &desktop.panels(),
      .timers = &timers,
      .settings = &settings,
      .driver = &driver,
      .activity = &activity,
      .pointer = &pointer,
      .captureStream = &desktop.captureStream(),
      .captureProblem = {},
      .pictureError = [&] { return sources.pictureError(); },
      .environment = environment,
      .backendName = "macos",
      .alert = showCriticalAlert,
      .terminate = [&] { quit(cannotRun); },
      .hint = [](const std::string& text) { systemLog("Veloria: " + text); },
  });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });
  if (!delegate.startGpu()) return cannotRun;

  MacSystem displaySettings;
  MacLoginItem loginItem;
  SystemServices services(environment, {.system = &displaySettings,
                                        .loginItem = &loginItem,
                                        .timers = &timers,
                                        .command = bundledCommand(mainBundle())});
  SettingsPresenter* presenter = nullptr;
  SettingsHost host({
      .settings = &editor,
      .readouts =
          [&] {
            const auto screen = desktop.screens().mainScreen();
            return readoutsOf(delegate.status(), screen ? &*screen : nullptr);
          },
      .makeGpu =
          [shaderLibraries] {
            PreviewGpu gpu{makeDevice({}), nullptr};
            gpu.library = loadShaderLibrary(*gpu.device, shaderLibraries);
            return gpu;
          },
      .drivenConfig = [&] { return activity.shouldRender() ? driver.driven() : settings.config().applyingTempo(); },
      .commandLine = services.commandLinePorts(),
      .loginItem = &services.loginItem(),
      .system = &services.state(),
      .panes = {.transparency = SystemPane::accessibilityDisplay, .tintsGlass = true},
      .visibleChanged =
          [&](bool visible) {
            visible ? services.state().start() : services.state().stop();
            if (!visible && presenter != nullptr) presenter->close();  // it was closed from within
          },
  });
  MacStatusItem statusItem;
  PopoverSettings content(host);
  SettingsPopover popover(content, [&] { return statusItem.anchor(); });
  presenter = &popover;
  MenuBarController menuBar({.settings = &editor,
                             .statusItem = &statusItem,
                             .presenter = &popover,
                             .refreshSystemState = [&] { services.state().refresh(); },
                             .terminate = [&] { quit(done); },
                             .version = VELORIA_VERSION});
  menuBar.onResetSim = [&] { delegate.restartSimulation(); };

  delegate.didFinishLaunching();
  system.setHandler([&](auto notification) { activity.notify(notification); });
  RemoteControl remote({.settings = &editor,
                        .status = [&] { return delegate.status(); },
                        .showSettings = [&] { menuBar.openSettings(); }});
  const auto server = instance.listen(timers, remote);
  QCoreApplication::exec();
  presenter = nullptr;
  system.setHandler(nullptr);
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
