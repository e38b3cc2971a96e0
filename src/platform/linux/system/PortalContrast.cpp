#include "PortalContrast.h"

#include <QDBusArgument>
#include <QMap>
#include <QStringList>
#include <QVariantMap>
#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

namespace {

const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
const auto common = QStringLiteral("org.freedesktop.appearance");
const auto gnome = QStringLiteral("org.gnome.desktop.a11y.interface");

using Namespaces = QMap<QString, QVariantMap>;

BusSignalName changeOf(const QString& settings) {
  return {service, path, interface, QStringLiteral("SettingChanged"), {settings}};
}

Namespaces namespacesIn(const QDBusMessage& reply) {
  const bool usable = reply.type() == QDBusMessage::ReplyMessage && reply.signature() == QLatin1String("a{sa{sv}}");
  return usable ? qdbus_cast<Namespaces>(reply.arguments().constFirst()) : Namespaces();
}

std::optional<bool> contrastIn(const Namespaces& settings) {
  const QVariant level = settings.value(common).value(QStringLiteral("contrast"));
  const auto high = asBool(settings.value(gnome).value(QStringLiteral("high-contrast")));
  const bool levelKnown = level.typeId() == QMetaType::UInt;
  if (!levelKnown && !high) return std::nullopt;
  return (levelKnown && level.toUInt() == 1) || high.value_or(false);
}

}  // namespace

PortalContrast::PortalContrast(QDBusConnection bus, Report report)
    : bus_(std::move(bus)),
      report_(std::move(report)),
      commonChanged_(bus_, changeOf(common), [this](const QDBusMessage&) { read(); }),
      gnomeChanged_(bus_, changeOf(gnome), [this](const QDBusMessage&) { read(); }) {
  read();
}

void PortalContrast::read() {
  if (reading_) {
    changedMeanwhile_ = true;
    return;
  }
  reading_ = true;
  callOnBus(bus_, {service, path, interface, QStringLiteral("ReadAll")}, {QStringList{common, gnome}}, this,
            [this](const QDBusMessage& reply) {
              reading_ = false;
              report_(contrastIn(namespacesIn(reply)));
              if (std::exchange(changedMeanwhile_, false)) read();
            });
}

}  // namespace veloria
