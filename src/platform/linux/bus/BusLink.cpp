#include "platform/linux/bus/BusLink.h"

#include <QUuid>
#include <utility>

namespace veloria {

namespace {

constexpr const char* wellKnownSystemBus = "unix:path=/var/run/dbus/system_bus_socket";

std::string unlessItLaunches(const std::string& address) {
  return address.find("autolaunch:") == std::string::npos ? address : std::string();
}

std::string valueOf(const Environment& environment, std::string_view name) {
  return environment(name).value_or(std::string());
}

}  // namespace

BusAddresses busAddresses(const Environment& environment) {
  std::string system = valueOf(environment, "DBUS_SYSTEM_BUS_ADDRESS");
  std::string session = valueOf(environment, "DBUS_SESSION_BUS_ADDRESS");
  if (system.empty()) system = wellKnownSystemBus;
  const std::string runtime = valueOf(environment, "XDG_RUNTIME_DIR");
  if (session.empty() && !runtime.empty()) session = "unix:path=" + runtime + "/bus";
  return {unlessItLaunches(system), unlessItLaunches(session)};
}

BusLink::BusLink(const std::string& address, double retrySeconds, Handlers handlers)
    : address_(QString::fromStdString(address)),
      name_(QStringLiteral("veloria-") + QUuid::createUuid().toString(QUuid::WithoutBraces)),
      handlers_(std::move(handlers)),
      retry_(this) {
  retry_.setSingleShot(true);
  retry_.setTimerType(Qt::CoarseTimer);
  retry_.setInterval(static_cast<int>(retrySeconds * 1000));
  connect(&retry_, &QTimer::timeout, this, [this] { open(); });
}

BusLink::~BusLink() {
  close();
}

void BusLink::open() {
  if (isOpen()) return;
  {
    const QDBusConnection bus = QDBusConnection::connectToBus(address_, name_);
    if (bus.isConnected()) {
      // Comes from the library itself, not from the bus.
      disconnected_ = std::make_unique<BusSignal>(
          bus,
          BusSignalName{QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected")},
          [this](const QDBusMessage&) {
            QMetaObject::invokeMethod(
                this, [this] { lost(); }, Qt::QueuedConnection);
          });
      followers_ = handlers_.connected(bus);
      return;
    }
  }
  close();
  retryLater();
}

void BusLink::lost() {
  close();
  handlers_.ended();
  retryLater();
}

void BusLink::retryLater() {
  if (retry_.interval() > 0) retry_.start();
}

void BusLink::close() {
  followers_.clear();
  disconnected_.reset();
  QDBusConnection::disconnectFromBus(name_);
}

}  // namespace veloria
