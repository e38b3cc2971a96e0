#include "platform/linux/bus/BusSignal.h"

#include <utility>

namespace veloria {

BusSignal::BusSignal(QDBusConnection bus, const BusSignalName& name, Handler handler) : handler_(std::move(handler)) {
  bus.connect(name.service, name.path, name.interface, name.member, name.arguments, QString(), this,
              SLOT(receive(QDBusMessage)));
}

void BusSignal::receive(const QDBusMessage& message) {
  handler_(message);
}

}  // namespace veloria
