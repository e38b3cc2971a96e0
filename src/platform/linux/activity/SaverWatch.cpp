#include "SaverWatch.h"

#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

// The signal may come from any object of the service: some savers have several.
SaverWatch::SaverWatch(QDBusConnection bus, const SaverName& name, std::function<void(bool)> report)
    : report_(std::move(report)),
      changed_(bus, {name.service, QString(), name.service, QStringLiteral("ActiveChanged")},
               [this](const QDBusMessage& message) { take(message); }) {
  callOnBus(bus, {name.service, name.path, name.service, QStringLiteral("GetActive")}, {}, this,
            [this](const QDBusMessage& reply) {
              if (reply.type() == QDBusMessage::ReplyMessage) take(reply);
            });
}

void SaverWatch::take(const QDBusMessage& message) {
  const auto active = asBool(message.arguments().value(0));
  if (active && message.arguments().size() == 1) report_(*active);
}

}  // namespace veloria
