#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QIcon>
#include <QMessageBox>
#include <QTimer>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "base/Log.h"
#include "main/Platform.h"
#include "main/commands/Command.h"
#include "main/linux/LinuxDesktop.h"
#include "platform/linux/activity/LinuxActivity.h"
#include "platform/linux/files/FileSettingsStorage.h"
#include "platform/linux/gnome/GnomePanelClearing.h"
#include "platform/linux/notifications/DesktopNotifier.h"
#include "platform/linux/panel/LinuxPanelClearing.h"
#include "platform/linux/pulse/PulseAudioTap.h"
#include "platform/linux/system/AutostartLoginItem.h"
#include "platform/linux/system/LinuxSystem.h"
#include "platform/linux/tray/TrayIcon.h"
#include "platform/linux/wallpaper/LinuxDesktopPicture.h"
#include "platform/linux/wallpaper/PictureDecoder.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/posix/process/PosixCommandLine.h"
#include "platform/qt/QtEventLoop.h"
#include "settings/SettingsStore.h"
#include "settings/WriteBehindStorage.h"
#include "ui/QtText.h"

namespace veloria {

namespace {

constexpr int notificationPatienceMs = 5000;

void showBox(const std::string& message, const std::string& informative) {
  QMessageBox box(QMessageBox::Critical, QStringLiteral("Veloria"), toQString(message), QMessageBox::Close);
  box.setInformativeText(toQString(informative));
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

void notify(Notifier& notifier, const std::string& message, const std::string& informative) {
  const auto wait = std::make_shared<QEventLoop>();  // the desktop may answer after the wait has ended
  notifier.show({.title = message, .text = informative, .actions = {}, .textWithoutActions = informative},
                [wait] { wait->quit(); });
  QTimer::singleShot(notificationPatienceMs, wait.get(), &QEventLoop::quit);
  wait->exec();
}

/// Shows the message until it is read. Without a display for the widget library it asks the desktop for a notification,
/// and waits some seconds for that.
void showCriticalAlert(Notifier& notifier, const std::string& message, const std::string& informative) {
  systemLog(message + "\n" + informative);
  if (QGuiApplication::platformName() == QLatin1String("offscreen")) return notify(notifier, message, informative);
  showBox(message, informative);
}

/// The loss of the display ends the program with one line, whether the band's connection or Qt's notices it first.
void logLossOnce(const std::string& line) {
  static std::atomic_flag told;
  if (!told.test_and_set()) systemLog(line);
}

/// Qt reports the loss of its display and then calls exit(), which would destroy objects that the GPU's and the sound
/// threads still use; so the program ends here. Other messages of Qt's about displays are logged by the band's own
/// connection to them.
void handleQtMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
  const std::string text = message.toStdString();
  const bool lost = text.starts_with("The Wayland connection ") || text.starts_with("The X11 connection ");
  if (!lost) return NimbraLog::debug(text);
  logLossOnce("veloria: " + text);
  SettingsStore::shared().flush();
  std::_Exit(failed);
}

/// Where Qt shows the settings and the icon. The band opens the display itself and reports what is wrong with it, so Qt
/// goes on without one.
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

class LinuxPlatform final : public Platform {
 public:
  explicit LinuxPlatform(const Environment& environment) : environment_(environment) {}

  void prepare() override {
    choosePlatform(environment_);
    qInstallMessageHandler(handleQtMessage);
  }

  std::unique_ptr<SettingsStorage> makeSettingsStorage() override {
    return std::make_unique<WriteBehindStorage>(
        std::make_unique<FileSettingsStorage>(configFolder(environment_).value_or("")));
  }

  std::unique_ptr<Desktop> openDesktop(TimerFactory& timers) override {
    QGuiApplication::setDesktopFileName("com.tollmere.Veloria");
    QGuiApplication::setWindowIcon(QIcon::fromTheme("veloria"));
    return veloria::openDesktop(environment_, watchDescriptor, timers);
  }

  std::unique_ptr<DesktopPicture> makeDesktopPicture() override {
    return std::make_unique<LinuxDesktopPicture>(environment_, "/proc/self/exe", postToMain);
  }
  std::unique_ptr<AudioTap> makeAudioTap() override { return std::make_unique<PulseAudioTap>(); }
  std::unique_ptr<SystemActivity> makeActivity() override {
    return std::make_unique<LinuxActivity>(LinuxActivity::Options{.environment = environment_});
  }
  std::unique_ptr<Notifier> makeNotifier() override { return std::make_unique<DesktopNotifier>(); }
  std::unique_ptr<StatusItem> makeStatusItem() override { return std::make_unique<TrayIcon>(); }

  std::unique_ptr<SystemPort> makeSystem(Desktop& desktop) override {
    return std::make_unique<LinuxSystem>(LinuxSystem::Options{
        .environment = environment_, .transparencyReduced = [&desktop] { return !desktop.showsTranslucency(); }});
  }
  std::unique_ptr<LoginItemPort> makeLoginItem() override {
    return std::make_unique<AutostartLoginItem>(environment_, program());
  }
  std::unique_ptr<PanelClearing> makePanelClearing() override {
    return veloria::makePanelClearing(environment_, [this] { return makeGnomePanelClearing(environment_); });
  }
  SystemServices::Ports services() const override { return {.command = commandBeside(program())}; }

  void alert(Notifier& notifier, const std::string& message, const std::string& informative) override {
    showCriticalAlert(notifier, message, informative);
  }
  void logLoss(const std::string& line) override { logLossOnce(line); }

 private:
  static std::filesystem::path program() { return QCoreApplication::applicationFilePath().toStdString(); }

  Environment environment_;
};

}  // namespace

std::unique_ptr<Platform> makePlatform(const Environment& environment) {
  return std::make_unique<LinuxPlatform>(environment);
}

void runAsHelper(int argc, char** argv) {
  runAsDecoder(argc, argv);
}

}  // namespace veloria
