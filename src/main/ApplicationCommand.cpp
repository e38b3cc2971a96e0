#include <QApplication>
#include <QIcon>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "app/AppDelegate.h"
#include "app/FirstMinute.h"
#include "app/MenuBarController.h"
#include "app/RemoteControl.h"
#include "base/Log.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "main/Desktop.h"
#include "main/DesktopChoice.h"
#include "main/GpuSetup.h"
#include "main/LinuxAlert.h"
#include "main/LiveSources.h"
#include "main/SettingsHost.h"
#include "main/SignalWatch.h"
#include "main/SingleInstance.h"
#include "main/StatusReadouts.h"
#include "main/SystemServices.h"
#include "platform/linux/activity/LinuxActivity.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/linux/notifications/DesktopNotifier.h"
#include "platform/linux/pulse/PulseAudioTap.h"
#include "platform/linux/system/AutostartLoginItem.h"
#include "platform/linux/system/LinuxSystem.h"
#include "platform/linux/tray/TrayIcon.h"
#include "platform/linux/wallpaper/LinuxDesktopPicture.h"
#include "platform/linux/wallpaper/PictureDecoder.h"
#include "platform/posix/files/OnceMark.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/posix/process/PosixCommandLine.h"
#include "platform/qt/DescriptorWatch.h"
#include "platform/qt/QtTimerFactory.h"
#include "render/PointerTracker.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "settings/WriteBehindStorage.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

namespace {

/// The loss of the display ends the program with one line, whoever of the band's connection and Qt's notices it first.
void tellLossOnce(const std::string& line) {
  static std::atomic_flag told;
  if (!told.test_and_set()) systemLog(line);
}

/// Qt ends the program by exit() once it has told of the loss of its display, which would destroy what the threads of
/// the GPU and of sound still use; so the program ends here. What else Qt has to say about displays is said by the
/// band's own connection to them.
void takeFromQt(QtMsgType, const QMessageLogContext&, const QString& message) {
  const std::string text = message.toStdString();
  const bool lost = text.starts_with("The Wayland connection ") || text.starts_with("The X11 connection ");
  if (!lost) return NimbraLog::debug(text);
  tellLossOnce("veloria: " + text);
  SettingsStore::shared().flush();
  std::_Exit(failed);
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

void postToMain(std::function<void()> action) {
  if (auto* application = QCoreApplication::instance()) {
    QMetaObject::invokeMethod(application, std::move(action), Qt::QueuedConnection);
  }
}

}  // namespace

void runHelper(int argc, char** argv) {
  runAsDecoder(argc, argv);
}

int runApplication(int& argc, char** argv) {
  const Environment environment = processEnvironment();
  const SingleInstance instance(environment);
  if (instance.otherRuns()) return instance.greetTheOther();
  choosePlatform(environment);
  SettingsStore& settings =
      SettingsStore::makeShared(std::make_unique<WriteBehindStorage>(
                                    std::make_unique<FileSettingsStorage>(configFolder(environment).value_or(""))),
                                environment);
  qInstallMessageHandler(takeFromQt);
  QApplication application(argc, argv);
  keepNumbersPlain();
  QApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setDesktopFileName("com.tollmere.Veloria");
  QGuiApplication::setWindowIcon(QIcon::fromTheme("veloria"));
  QtTimerFactory timers;
  const auto desktop = openDesktop(environment, watchDescriptor, timers);
  LinuxDesktopPicture picture(environment, "/proc/self/exe", postToMain);
  LiveSources sources(environment, {.screens = &desktop->screens(), .picture = &picture, .makeAudioTap = [] {
                                      return std::make_unique<PulseAudioTap>();
                                    }});
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
      .alert = [&](const std::string& message, const std::string& text) { showCriticalAlert(notifier, message, text); },
      .terminate = [&] { quit(cannotRun); },
      .hint =
          [&](const std::string& text) {
            systemLog("Veloria: " + text);
            firstMinute.lightIsHidden();
          },
  });
  desktop->setBrokenHandler([&](const std::string& reason) {
    tellLossOnce("veloria: " + reason);
    exitCode = failed;
    QCoreApplication::exit(failed);
  });
  desktop->setCaptureChanceHandler([&] { delegate.updateCapture(); });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });
  if (!delegate.startGpu()) return cannotRun;

  const std::filesystem::path program = QCoreApplication::applicationFilePath().toStdString();
  LinuxSystem desktopSettings(
      {.environment = environment, .transparencyReduced = [&] { return !desktop->showsTranslucency(); }});
  AutostartLoginItem autostart(environment, program);
  SystemServices services(
      environment,
      {.system = &desktopSettings, .loginItem = &autostart, .timers = &timers, .command = commandBeside(program)});
  SettingsHost host({
      .settings = &editor,
      .readouts =
          [&] {
            const auto screens = desktop->screens().screens();
            return readoutsOf(delegate.status(), screens.empty() ? nullptr : &screens.front());
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
      .visibleChanged = [&](bool visible) { visible ? services.state().start() : services.state().stop(); },
  });
  TrayIcon trayIcon;
  MenuBarController menuBar({.settings = &editor,
                             .statusItem = &trayIcon,
                             .presenter = &host,
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
  settings.flush();
  system.setHandler(nullptr);
  delegate.willTerminate();
  return exitCode;
}

}  // namespace veloria
