#include "platform/linux/bus/BusService.h"

#include <QDBusArgument>
#include <utility>

namespace veloria {

BusSignal::BusSignal(QDBusConnection bus, const BusSignalName& name, Handler handler) : handler_(std::move(handler)) {
  bus.connect(name.service, name.path, name.interface, name.member, name.arguments, QString(), this,
              SLOT(receive(QDBusMessage)));
}

void BusSignal::receive(const QDBusMessage& message) {
  handler_(message);
}

BusReader::BusReader(QDBusConnection bus, const BusMethod& method, const QVariantList& arguments,
                     const std::vector<BusSignalName>& changes, Handler handler)
    : bus_(std::move(bus)), method_(method), arguments_(arguments), handler_(std::move(handler)) {
  for (const BusSignalName& each : changes) {
    changes_.push_back(std::make_unique<BusSignal>(bus_, each, [this](const QDBusMessage&) { read(); }));
  }
  read();
}

void BusReader::read() {
  if (reading_) {
    changedMeanwhile_ = true;
    return;
  }
  reading_ = true;
  callOnBus(bus_, method_, arguments_, this, [this](const QDBusMessage& reply) {
    reading_ = false;
    handler_(reply);
    if (std::exchange(changedMeanwhile_, false)) read();
  });
}

std::unique_ptr<BusReader> followProperties(const QDBusConnection& bus, const QString& service, const QString& path,
                                            const QString& interface, std::function<void(const QVariantMap&)> handler) {
  const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
  const BusSignalName changed{service, path, properties, QStringLiteral("PropertiesChanged"), {interface}};
  return std::make_unique<BusReader>(bus, BusMethod{service, path, properties, QStringLiteral("GetAll")},
                                     QVariantList{interface}, std::vector{changed},
                                     [handler = std::move(handler)](const QDBusMessage& reply) {
                                       if (const auto values = propertiesIn(reply)) handler(*values);
                                     });
}

std::unique_ptr<BusReader> followPortalSettings(const QDBusConnection& bus, const QStringList& namespaces,
                                                std::function<void(const PortalSettings&)> handler) {
  const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
  const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
  std::vector<BusSignalName> changes;
  for (const QString& each : namespaces) {
    changes.push_back({portalService, path, interface, QStringLiteral("SettingChanged"), {each}});
  }
  return std::make_unique<BusReader>(
      bus, BusMethod{portalService, path, interface, QStringLiteral("ReadAll")}, QVariantList{namespaces}, changes,
      [handler = std::move(handler)](const QDBusMessage& reply) {
        const bool good = isReply(reply, "a{sa{sv}}");
        handler(good ? qdbus_cast<PortalSettings>(reply.arguments().constFirst()) : PortalSettings());
      });
}

ServiceRuns::ServiceRuns(QDBusConnection bus, const QString& service, MakeFollower make, std::function<void()> forget)
    : make_(std::move(make)),
      forget_(std::move(forget)),
      watcher_(service, bus, QDBusServiceWatcher::WatchForOwnerChange),
      follower_(make_()) {
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) { begin(owner); });
}

void ServiceRuns::begin(const QString& owner) {
  follower_.reset();
  forget_();
  if (!owner.isEmpty()) follower_ = make_();
}

}  // namespace veloria
