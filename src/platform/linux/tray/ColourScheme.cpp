#include "ColourScheme.h"

#include <QDBusVariant>
#include <utility>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

namespace {

const auto portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto colourScheme = QStringLiteral("color-scheme");
constexpr uint prefersLight = 2;

// Portals wrap the value once or twice, depending on their age.
QVariant unwrapped(QVariant value) {
  for (int i = 0; i < 3 && value.metaType() == QMetaType::fromType<QDBusVariant>(); ++i) {
    value = qvariant_cast<QDBusVariant>(value).variant();
  }
  return value;
}

}  // namespace

PanelShade panelShade(const QVariant& value) {
  const QVariant plain = unwrapped(value);
  const bool light = plain.typeId() == QMetaType::UInt && plain.toUInt() == prefersLight;
  return light ? PanelShade::light : PanelShade::dark;
}

ColourScheme::ColourScheme(const QDBusConnection& bus, std::function<void(PanelShade)> changed)
    : bus_(bus),
      changed_(std::move(changed)),
      portal_(portalService, bus, QDBusServiceWatcher::WatchForRegistration),
      settingChanged_(bus, {portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged")},
                      [this](const QDBusMessage& message) { takeSignal(message); }) {
  connect(&portal_, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(); });
  ask();
}

void ColourScheme::ask() {
  callOnBus(bus_, {portalService, portalPath, settingsInterface, QStringLiteral("Read")}, {appearance, colourScheme},
            this, [this](const QDBusMessage& reply) {
              if (reply.type() == QDBusMessage::ReplyMessage) changed_(panelShade(reply.arguments().value(0)));
            });
}

void ColourScheme::takeSignal(const QDBusMessage& message) {
  const QVariantList arguments = message.arguments();
  if (message.signature() != QLatin1String("ssv")) return;
  if (arguments.at(0) != appearance || arguments.at(1) != colourScheme) return;
  changed_(panelShade(arguments.at(2)));
}

}  // namespace veloria
