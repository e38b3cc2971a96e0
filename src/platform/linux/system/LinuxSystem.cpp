#include "platform/linux/system/LinuxSystem.h"

#include <QObject>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusLink.h"
#include "platform/linux/bus/BusService.h"
#include "platform/linux/files/DesktopNames.h"
#include "platform/linux/system/SettingsPanes.h"
#include "platform/posix/process/Programs.h"
#include "platform/qt/WorkerThread.h"

namespace veloria {

namespace {

constexpr double commandSeconds = 2;
constexpr std::size_t commandBytes = 100;

const auto common = QStringLiteral("org.freedesktop.appearance");
const auto gnome = QStringLiteral("org.gnome.desktop.a11y.interface");

/// Empty: the portal doesn't run or has no such setting.
std::optional<bool> contrastIn(const PortalSettings& settings) {
  const QVariant level = settings.value(common).value(QStringLiteral("contrast"));
  const auto high = asBool(settings.value(gnome).value(QStringLiteral("high-contrast")));
  const bool levelKnown = level.typeId() == QMetaType::UInt;
  if (!levelKnown && !high) return std::nullopt;
  return (levelKnown && level.toUInt() == 1) || high.value_or(false);
}

/// For GNOME without its portal.
bool gsettingsWantContrast() {
  return commandOutput({"gsettings", "get", "org.gnome.desktop.a11y.interface", "high-contrast"}, commandSeconds,
                       commandBytes) == "true\n";
}

/// Reads whether the user wants more contrast, on a thread that may wait: from the desktop portal's common setting or
/// GNOME's own high contrast, which the portal passes on, else from GNOME's settings. Runs only on that thread, and
/// only because of update() or a change that the portal reports.
class ContrastWorker final : public QObject {
 public:
  /// `sessionBus` may be empty.
  ContrastWorker(std::string sessionBus, std::function<void(bool increased)> report);

  /// Asks the portal, after connecting to the bus if there is no connection.
  void update();
  void stop();

 private:
  void accept(const PortalSettings& settings);

  std::string sessionBus_;
  std::function<void(bool)> report_;
  std::unique_ptr<BusLink> link_;
  BusReader* portal_ = nullptr;
};

ContrastWorker::ContrastWorker(std::string sessionBus, std::function<void(bool)> report)
    : sessionBus_(std::move(sessionBus)), report_(std::move(report)) {}

void ContrastWorker::update() {
  if (portal_) return portal_->read();
  if (!link_ && !sessionBus_.empty()) {
    const auto follow = [this](const QDBusConnection& bus) {
      auto portal = followPortalSettings(bus, {common, gnome}, [this](const auto& settings) { accept(settings); });
      portal_ = portal.get();
      BusLink::Followers followers;
      followers.push_back(std::move(portal));
      return followers;
    };
    link_ = std::make_unique<BusLink>(sessionBus_, 0, BusLink::Handlers{follow, [this] { portal_ = nullptr; }});
  }
  if (link_) link_->open();
  if (!portal_) accept({});
}

void ContrastWorker::stop() {
  link_.reset();
  portal_ = nullptr;
}

void ContrastWorker::accept(const PortalSettings& settings) {
  const auto increased = contrastIn(settings);
  report_(increased ? *increased : gsettingsWantContrast());
}

}  // namespace

/// The main thread's side.
class LinuxSystem::Parts final : public QObject {
 public:
  explicit Parts(Options options)
      : transparencyReduced_(std::move(options.transparencyReduced)),
        desktops_(desktopNames(options.environment)),
        searchPath_(options.environment("PATH").value_or("")),
        thread_(busAddresses(options.environment).session, [this](bool increased) {
          QMetaObject::invokeMethod(this, [this, increased] { setContrast(increased); });
        }) {}

  SystemFacts facts() {
    if (!updating_.exchange(true)) {
      thread_.post([this](ContrastWorker& worker) {
        updating_ = false;
        worker.update();
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
    return Failure{"Couldn't find the settings program of this desktop. Please open it yourself."};
  }

 private:
  void setContrast(bool increased) {
    if (std::exchange(contrast_, increased) != increased && handler_) handler_();
  }

  std::function<bool()> transparencyReduced_;
  std::vector<std::string> desktops_;
  std::string searchPath_;
  std::function<void()> handler_;
  bool contrast_ = false;
  std::atomic<bool> updating_{false};
  WorkerThread<ContrastWorker> thread_;  ///< last: it reports to the other members until it ends
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
