#include <QApplication>
#include <QIcon>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "app/FirstMinute.h"
#include "app/MenuBarController.h"
#include "app/RemoteControl.h"
#include "base/LocalSocket.h"
#include "base/Log.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "main/Desktop.h"
#include "main/DesktopChoice.h"
#include "main/GpuSetup.h"
#include "main/LiveSources.h"
#include "main/RunningApplication.h"
#include "main/SettingsHost.h"
#include "main/SignalWatch.h"
#include "main/StatusReadouts.h"
#include "main/SystemServices.h"
#include "platform/linux/activity/LinuxActivity.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/linux/files/OnceMark.h"
#include "platform/linux/files/UserFolders.h"
#include "platform/linux/notifications/DesktopNotifier.h"
#include "platform/linux/qt/DescriptorWatch.h"
#include "platform/linux/qt/QtTimerFactory.h"
#include "platform/linux/socket/InstanceLock.h"
#include "platform/linux/socket/LocalServer.h"
#include "platform/linux/tray/TrayIcon.h"
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

/// Brings up the settings of the one that runs.
int greetTheOther() {
  std::puts("Veloria is running already; here are its settings.");
  try {
    askRunningApplication(R"({"command": "settings"})");
  } catch (const WorkError& error) {
    std::fprintf(stderr, "veloria: its settings can't be shown: %s\n", error.what());
    return failed;
  }
  return done;
}

/// What Qt has to say about displays is said by the band's own connection to them, in one line.
void keepQtQuiet(QtMsgType, const QMessageLogContext&, const QString& message) {
  NimbraLog::debug(message.toStdString());
}

/// Where Qt shows the settings and the icon. The display is opened once more for the band itself, and what is wrong
/// with it is said there, so where Qt finds none it goes on without.
void choosePlatform(const Environment& environment) {
  const auto names = [&](const char* variable) { return !environment(variable).value_or("").empty(); };
  if (names("QT_QPA_PLATFORM")) return;
  if (!names("DISPLAY") && !names("WAYLAND_DISPLAY")) throw WorkError(chooseDesktop({}).problem);
  std::string platforms = "offscreen";
  if (names("DISPLAY")) platforms = "xcb;" + platforms;
  if (names("WAYLAND_DISPLAY")) platforms = "wayland;" + platforms;
  qputenv("QT_QPA_PLATFORM", QByteArray::fromStdString(platforms));
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

int runApplication(int& argc, char** argv) {
  const Environment environment = processEnvironment();
  const auto socketPath = controlSocketPath(environment);
  const Instance instance = becomeTheOne(socketPath);
  if (instance.otherRuns) return greetTheOther();
  choosePlatform(environment);
  qInstallMessageHandler(keepQtQuiet);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName("com.tollmere.Veloria");
  QGuiApplication::setWindowIcon(QIcon::fromTheme("veloria"));
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

  DesktopNotifier notifier;
  const OnceMark told(stateFolder(environment), "first-minute");
  FirstMinute firstMinute({.settings = &settings,
                           .notifier = &notifier,
                           .textCanBeKept = [&] { return desktop->captureStream() != nullptr; },
                           .wasTold = [&] { return told.isSet(); },
                           .rememberTold = [&] { told.set(); }});
  const auto shaderLibraries = shaderLibraryCandidates(programPlaces());

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
      .environment = environment,
      .backendName = desktop->name(),
      .alert = [](const std::string& message, const std::string& text) { systemLog(message + "\n" + text); },
      .terminate = [&](bool failure) { quit(failure ? failed : done); },
      .hint =
          [&](const std::string& text) {
            systemLog("Veloria: " + text);
            firstMinute.lightIsHidden();
          },
  });
  desktop->setBrokenHandler([&](const std::string& reason) {
    systemLog("veloria: " + reason);
    exitCode = failed;
    QCoreApplication::exit(failed);
  });
  desktop->setCaptureChanceHandler([&] { delegate.updateCapture(); });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });

  SystemServices services(environment, QCoreApplication::applicationFilePath().toStdString(), timers,
                          [&] { return !desktop->showsTranslucency(); });
  SettingsHost host({
      .settings = &settings,
      .readouts =
          [&] {
            const auto screens = desktop->screens().screens();
            return readoutsOf(delegate.status(), RenderStats::shared().figures(),
                              screens.empty() ? nullptr : &screens.front());
          },
      .makeGpu =
          [shaderLibraries] {
            PreviewGpu gpu{makeDevice({}), nullptr};
            gpu.library = loadShaderLibrary(*gpu.device, shaderLibraries);
            return gpu;
          },
      .drivenConfig = [&] { return activity.shouldRender() ? driver.driven() : settings.config().applyingTempo(); },
      .commandLine = services.commandLinePorts(),
      .loginItem = services.loginItemPorts(),
      .systemFacts = services.systemFactsPorts(),
      .visibleChanged = [&](bool visible) { visible ? services.state().start() : services.state().stop(); },
  });
  TrayIcon trayIcon;
  MenuBarController menuBar({.settings = &settings,
                             .statusItem = &trayIcon,
                             .presenter = &host,
                             .refreshSystemState = [&] { services.state().refresh(); },
                             .terminate = [&] { quit(done); },
                             .version = VELORIA_VERSION});
  menuBar.onResetSim = [&] { delegate.restartSimulation(); };

  delegate.didFinishLaunching();
  system.setHandler([&](auto notification) { activity.notify(notification); });
  RemoteControl remote({.settings = &settings,
                        .status = [&] { return delegate.status(); },
                        .showSettings = [&] { menuBar.openSettings(); }});
  const auto server = instance.lock ? listenForQuestions(*socketPath, timers, remote) : nullptr;
  QCoreApplication::exec();
  system.setHandler(nullptr);
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
