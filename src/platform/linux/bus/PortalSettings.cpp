#include "platform/linux/bus/PortalSettings.h"

#include <QDBusArgument>
#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

namespace {

const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");

}  // namespace

PortalSettings::PortalSettings(QDBusConnection bus, const QStringList& namespaces,
                               std::function<void(const Values&)> handler)
    : bus_(std::move(bus)), namespaces_(namespaces), handler_(std::move(handler)) {
  for (const QString& each : namespaces_) {
    changes_.push_back(std::make_unique<BusSignal>(
        bus_, BusSignalName{portalService, path, interface, QStringLiteral("SettingChanged"), {each}},
        [this](const QDBusMessage&) { read(); }));
  }
  read();
}

void PortalSettings::read() {
  if (reading_) {
    changedMeanwhile_ = true;
    return;
  }
  reading_ = true;
  callOnBus(bus_, {portalService, path, interface, QStringLiteral("ReadAll")}, {namespaces_}, this,
            [this](const QDBusMessage& reply) {
              reading_ = false;
              handler_(isReply(reply, "a{sa{sv}}") ? qdbus_cast<Values>(reply.arguments().constFirst()) : Values());
              if (std::exchange(changedMeanwhile_, false)) read();
            });
}

}  // namespace veloria
