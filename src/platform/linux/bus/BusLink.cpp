#include "platform/linux/bus/BusLink.h"

#include <QUuid>
#include <utility>

namespace veloria {

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
