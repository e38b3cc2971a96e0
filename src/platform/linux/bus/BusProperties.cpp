#include "platform/linux/bus/BusProperties.h"

#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

namespace {

QString propertiesInterface() {
  return QStringLiteral("org.freedesktop.DBus.Properties");
}

}  // namespace

BusProperties::BusProperties(QDBusConnection bus, const QString& service, const QString& path, const QString& interface,
                             Handler handler)
    : bus_(std::move(bus)),
      service_(service),
      path_(path),
      interface_(interface),
      handler_(std::move(handler)),
      changed_(bus_, {service, path, propertiesInterface(), QStringLiteral("PropertiesChanged"), {interface}},
               [this](const QDBusMessage&) { read(); }) {
  read();
}

void BusProperties::read() {
  if (reading_) {
    changedMeanwhile_ = true;
    return;
  }
  reading_ = true;
  callOnBus(bus_, {service_, path_, propertiesInterface(), QStringLiteral("GetAll")}, {interface_}, this,
            [this](const QDBusMessage& reply) {
              reading_ = false;
              if (const auto properties = propertiesIn(reply)) handler_(*properties);
              if (std::exchange(changedMeanwhile_, false)) read();
            });
}

}  // namespace veloria
