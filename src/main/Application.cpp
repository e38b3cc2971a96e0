#include <QApplication>
#include <QTimer>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
#include "render/ScreenGeometry.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

namespace {

/// What draws the band.
class LiveBand {
 public:
  LiveBand(const Environment& environment, Platform& platform, SettingsStore& settings, TimerFactory& timers,
           std::function<void()> terminate)
      : environment_(environment),
        platform_(platform),
        settings_(settings),
        timers_(timers),
        terminate_(std::move(terminate)) {
    desktop_->setCaptureChanceHandler([this] { delegate_.panelsChanged(); });
    if (clearing_) clearing_->setChangeHandler([this] { delegate_.panelsChanged(); });
  }

  /// False if no GPU can be used; the user has been told.
  bool startGpu() { return delegate_.startGpu(); }
  void start() {
    delegate_.didFinishLaunching();
    system_->setHandler([this](auto notification) { activity_.notify(notification); });
  }
  void stop() {
    system_->setHandler(nullptr);
    delegate_.willTerminate();
  }

  Desktop& desktop() { return *desktop_; }
  /// Null if nothing can be done about the panel here.
  PanelClearing* clearing() { return clearing_.get(); }
  AppStatus status() { return delegate_.status(); }
  void restartSimulation() { delegate_.restartSimulation(); }
  /// What is drawn now, or would be.
  NimbraConfig drawn() { return delegate_.isDrawing() ? driver_.driven() : settings_.config().applyingTempo(); }
  Readouts readouts() {
    const auto screen = desktop_->mainScreen();
    return readoutsOf(status(), screen ? &*screen : nullptr);
  }
  PreviewGpuFactory previewGpu() const {
    return [libraries = shaderLibraries_] {
      PreviewGpu gpu{makeDevice({}), nullptr};
      gpu.library = loadShaderLibrary(*gpu.device, libraries);
      return gpu;
    };
  }

 private:
  const NimbraConfig& config() const { return settings_.config(); }
  bool overIsSeen() {
    const auto screen = desktop_->mainScreen();
    if (!screen) return true;
    const auto band = ScreenGeometry::geometry(*screen, NimbraConfig(), settings_.extra().edge).windowFrame;
    const auto kind = desktop_->panels().visibility(*screen, band, OverlayLevel::aboveMenuBar).kind;
    return kind == Visibility::Kind::seen;
  }
  bool textCanBeKept() const { return desktop_->captureStream() != nullptr && desktop_->showsTranslucency(); }

  SceneDriver::Ports driverPorts() {
    SceneDriver::Ports ports{.settings = [this]() -> const NimbraConfig& { return config(); }, .timers = &timers_};
    sources_.addTo(ports);
    return ports;
  }

  AppServices appServices() {
    return {
        .makeDevice = [this] { return desktop_->makeDevice(); },
        .makeSubstitute = [this] { return desktop_->makeSubstitute(); },
        .shaderLibraries = shaderLibraries_,
        .screens = &desktop_->screens(),
        .panels = &desktop_->panels(),
        .timers = &timers_,
        .settings = &settings_,
        .driver = &driver_,
        .activity = &activity_,
        .pointer = &pointer_,
        .captureStream = desktop_->captureStream(),
        .captureProblem = desktop_->captureProblem(),
        .clearing = clearing_.get(),
        .textCanBeKept = [this] { return textCanBeKept(); },
        .pictureError = [this] { return sources_.pictureError(); },
        .environment = environment_,
        .backendName = desktop_->name(),
        .alert = [this](const std::string& message,
                        const std::string& informative) { platform_.alert(*notifier_, message, informative); },
        .terminate = terminate_,
        .hint =
            [this](const std::string& text) {
              systemLog("Veloria: " + text);
              firstMinute_.tell();
            },
        .firstLayerTaken = [this] { firstMinute_.tell(); },
    };
  }

  const Environment& environment_;
  Platform& platform_;
  SettingsStore& settings_;
  TimerFactory& timers_;
  std::function<void()> terminate_;

  std::unique_ptr<Desktop> desktop_ = platform_.openDesktop(timers_);
  std::unique_ptr<DesktopPicture> picture_ = platform_.makeDesktopPicture();
  LiveSources sources_{environment_,
                       {.screens = &desktop_->screens(), .picture = picture_.get(), .makeAudioTap = [this] {
                          return platform_.makeAudioTap();
                        }}};
  SceneDriver driver_{driverPorts()};

  std::unique_ptr<SystemActivity> system_ = platform_.makeActivity();
  ActivityWatcher activity_{{.settings = [this]() -> const NimbraConfig& { return config(); },
                             .timers = &timers_,
                             .isFullScreenSpaceActive = [this] { return desktop_->isFullScreen(); },
                             .isOnBattery = [this] { return system_->isOnBattery(); },
                             .onPoll = [this] { system_->setDisplaysOff(desktop_->displaysOff()); }}};
  PointerTracker pointer_{timers_, desktop_->pointerSource()};

  std::unique_ptr<Notifier> notifier_ = platform_.makeNotifier();
  std::unique_ptr<PanelClearing> clearing_ = platform_.makePanelClearing();
  OnceMark told_{stateFolder(environment_), "first-minute"};
  FirstMinute firstMinute_{{.settings = &settings_,
                            .notifier = notifier_.get(),
                            .clearing = clearing_.get(),
                            .overIsSeen = [this] { return overIsSeen(); },
                            .textCanBeKept = [this] { return textCanBeKept(); },
                            .wasTold = [this] { return told_.isSet(); },
                            .rememberTold = [this] { told_.set(); }}};
  std::vector<std::filesystem::path> shaderLibraries_ = shaderLibraryCandidates(programPlaces());
  AppDelegate delegate_{appServices()};
};

/// What the user operates: the settings window, the status icon and its menu.
class Controls {
 public:
  Controls(const Environment& environment, Platform& platform, SettingsEditor& editor, TimerFactory& timers,
           LiveBand& band, std::function<void()> terminate)
      : platform_(platform),
        editor_(editor),
        band_(band),
        desktopSettings_(platform.makeSystem(band.desktop())),
        loginItem_(platform.makeLoginItem()),
        services_(environment, servicePorts(timers)),
        host_(hostPorts()),
        statusItem_(platform.makeStatusItem()),
        popover_(platform.makePopover(host_)),
        menuBar_({.settings = &editor,
                  .statusItem = statusItem_.get(),
                  .presenter = popover_ ? popover_.get() : &host_,
                  .refreshSystemState = [this] { services_.state().refresh(); },
                  .terminate = std::move(terminate),
                  .version = VELORIA_VERSION}) {
    menuBar_.onResetSim = [&band] { band.restartSimulation(); };
  }

  /// From now on a window that closes leaves the popover alone.
  ~Controls() { ending_ = true; }
  Controls(const Controls&) = delete;
  Controls& operator=(const Controls&) = delete;

  void openSettings() { menuBar_.openSettings(); }

 private:
  SystemServices::Ports servicePorts(TimerFactory& timers) {
    auto ports = platform_.services();
    ports.system = desktopSettings_.get();
    ports.loginItem = loginItem_.get();
    ports.timers = &timers;
    return ports;
  }

  SettingsHost::Ports hostPorts() {
    return {.settings = &editor_,
            .readouts = [this] { return band_.readouts(); },
            .makeGpu = band_.previewGpu(),
            .drivenConfig = [this] { return band_.drawn(); },
            .commandLine = services_.commandLinePorts(),
            .loginItem = &services_.loginItem(),
            .system = &services_.state(),
            .panes = platform_.panes(),
            .panel = band_.clearing(),
            .visibleChanged = [this](bool visible) { settingsShown(visible); }};
  }

  void settingsShown(bool visible) {
    visible ? services_.state().start() : services_.state().stop();
    if (!visible && popover_ && !ending_) popover_->close();  // it was closed from within
  }

  Platform& platform_;
  SettingsEditor& editor_;
  LiveBand& band_;
  bool ending_ = false;
  std::unique_ptr<SystemPort> desktopSettings_;
  std::unique_ptr<LoginItemPort> loginItem_;
  SystemServices services_;
  SettingsHost host_;
  std::unique_ptr<StatusItem> statusItem_;
  std::unique_ptr<SettingsPresenter> popover_;
  MenuBarController menuBar_;
};

}  // namespace

int runApplication(int& argc, char** argv) {
  const Environment environment = processEnvironment();
  const auto platform = makePlatform(environment);
  const SingleInstance instance(environment);
  if (instance.otherRuns()) return instance.greetTheOther();
  platform->prepare();
  SettingsStore& settings = SettingsStore::makeShared(platform->makeSettingsStorage(), environment);
  QApplication application(argc, argv);
  keepNumbersPlain();
  QApplication::setQuitOnLastWindowClosed(false);
  QtTimerFactory timers;
  SettingsEditor editor(settings);
  int exitCode = done;
  const auto quit = [&](ExitCode code) {
    exitCode = code;
    QTimer::singleShot(0, [&] { QCoreApplication::exit(exitCode); });
  };

  LiveBand band(environment, *platform, settings, timers, [&] { quit(cannotRun); });
  band.desktop().setBrokenHandler([&](const std::string& reason) {
    platform->logLoss("veloria: " + reason);
    exitCode = failed;
    QCoreApplication::exit(failed);
  });
  const SignalWatch signals({SIGINT, SIGTERM, SIGHUP}, [] { QCoreApplication::exit(done); });
  if (!band.startGpu()) return cannotRun;

  Controls controls(environment, *platform, editor, timers, band, [&] { quit(done); });
  band.start();
  RemoteControl remote(
      {.settings = &editor, .status = [&] { return band.status(); }, .showSettings = [&] { controls.openSettings(); }});
  const auto server = instance.listen(timers, remote);
  QCoreApplication::exec();
  settings.flush();
  band.stop();
  return exitCode;
}

}  // namespace veloria
