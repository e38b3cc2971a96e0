#include "platform/linux/tray/TrayIcon.h"

#include <QCursor>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QSystemTrayIcon>
#include <utility>

#include "TrayHosts.h"
#include "TrayMenu.h"
#include "TrayPicture.h"
#include "platform/linux/bus/PortalSettings.h"
#include "platform/linux/bus/ServiceRuns.h"

namespace veloria {

namespace {

constexpr const char* noTray =
    "Veloria: this desktop shows no status icons now, so there is none to click. To reach the settings, start veloria "
    "again.";

const auto appearance = QStringLiteral("org.freedesktop.appearance");
constexpr uint prefersLight = 2;

/// The shade of panel that a desktop with this preference is taken to have: light if it prefers light windows, dark if
/// it prefers dark ones, has no preference or says something unknown.
PanelShade panelShade(const QVariant& colorScheme) {
  const bool light = colorScheme.typeId() == QMetaType::UInt && colorScheme.toUInt() == prefersLight;
  return light ? PanelShade::light : PanelShade::dark;
}

bool onX11() {
  return qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr;
}

bool controlHeld() {
  return onX11() && (QGuiApplication::queryKeyboardModifiers() & Qt::ControlModifier) != 0;
}

std::optional<Rect> pointerPlace() {
  if (!onX11()) return std::nullopt;
  const QPoint point = QCursor::pos();
  return Rect{static_cast<double>(point.x()), static_cast<double>(point.y()), 1, 1};
}

}  // namespace

class TrayIcon::Parts {
 public:
  explicit Parts(std::function<void(std::string_view)> log)
      : log_(std::move(log)),
        menu_([this](const MenuItem& item) { chosen(item); }),
        hosts_(QDBusConnection::sessionBus(), [this](TrayHosts hosts) { hostsChanged(hosts); }),
        portal_(
            QDBusConnection::sessionBus(), portalService, [this] { return followPortal(); }, [] {}) {}

  void setHandlers(Handlers handlers) { handlers_ = std::move(handlers); }
  TrayMenu& menu() { return menu_; }

  std::optional<Rect> place() const {
    const QRect icon = icon_ ? icon_->geometry() : QRect();
    if (icon.isEmpty()) return lastClick_;
    return Rect{static_cast<double>(icon.x()), static_cast<double>(icon.y()), static_cast<double>(icon.width()),
                static_cast<double>(icon.height())};
  }

  void showMenu() {
    if (onX11() && !menu_.widget().isVisible()) menu_.widget().popup(QCursor::pos());
  }

 private:
  // Not before there is a host: the library settles for good which kind of icon it makes when the first one is made.
  void hostsChanged(TrayHosts hosts) {
    if (icon_) return;
    if (hosts.statusNotifier || hosts.x11) return makeIcon();
    if (!std::exchange(complained_, true)) log_(noTray);
  }

  void makeIcon() {
    icon_ = std::make_unique<QSystemTrayIcon>(sparkles(shade_));
    icon_->setToolTip(QStringLiteral("Veloria — click for settings"));
    icon_->setContextMenu(&menu_.widget());
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(), [this](auto reason) { activated(reason); });
    icon_->show();
  }

  std::unique_ptr<QObject> followPortal() {
    return std::make_unique<PortalSettings>(
        QDBusConnection::sessionBus(), QStringList{appearance}, [this](const PortalSettings::Values& settings) {
          if (!settings.contains(appearance)) return;
          setShade(panelShade(settings.value(appearance).value(QStringLiteral("color-scheme"))));
        });
  }

  void setShade(PanelShade shade) {
    if (std::exchange(shade_, shade) != shade && icon_) icon_->setIcon(sparkles(shade_));
  }

  void activated(QSystemTrayIcon::ActivationReason reason) {
    switch (reason) {
      case QSystemTrayIcon::Trigger:
        return clicked(Click::primary);
      case QSystemTrayIcon::Context:
        return clicked(Click::secondary);
      case QSystemTrayIcon::Unknown:
      case QSystemTrayIcon::DoubleClick:
      case QSystemTrayIcon::MiddleClick:
        return;
    }
  }

  void clicked(Click click) {
    lastClick_ = pointerPlace();
    if (handlers_.clicked) handlers_.clicked(click, controlHeld());
  }

  void chosen(const MenuItem& item) {
    lastClick_ = pointerPlace();
    if (handlers_.chosen) handlers_.chosen(item);
  }

  std::function<void(std::string_view)> log_;
  Handlers handlers_;
  bool complained_ = false;
  PanelShade shade_ = PanelShade::dark;
  std::optional<Rect> lastClick_;
  TrayMenu menu_;
  std::unique_ptr<QSystemTrayIcon> icon_;
  TrayHostsWatch hosts_;
  ServiceRuns portal_;
};

TrayIcon::TrayIcon(std::function<void(std::string_view)> log) : parts_(std::make_unique<Parts>(std::move(log))) {}

TrayIcon::~TrayIcon() = default;

void TrayIcon::setHandlers(Handlers handlers) {
  parts_->setHandlers(std::move(handlers));
}

void TrayIcon::setMenu(const Menu& menu) {
  parts_->menu().set(menu);
}

void TrayIcon::showMenu() {
  parts_->showMenu();
}

std::optional<Rect> TrayIcon::place() const {
  return parts_->place();
}

}  // namespace veloria
