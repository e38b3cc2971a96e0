#include "WantedService.h"

#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>
#include <utility>

namespace veloria {

namespace {

const auto name = QStringLiteral("com.tollmere.Veloria.Panel");
const auto path = QStringLiteral("/com/tollmere/Veloria/Panel");

}  // namespace

WantedService::WantedService(const QDBusConnection& bus) : bus_(bus) {
  bus_.registerObject(path, this, QDBusConnection::ExportAllProperties);
  callBus("RequestName", {name, 0U});
}

WantedService::~WantedService() {
  callBus("ReleaseName", {name});
  bus_.unregisterObject(path);
}

void WantedService::callBus(const char* method, const QVariantList& arguments) {
  const auto bus = QStringLiteral("org.freedesktop.DBus");
  auto message =
      QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, QString::fromLatin1(method));
  message.setArguments(arguments);
  bus_.send(message);
}

void WantedService::setWanted(bool wanted) {
  if (std::exchange(wanted_, wanted) == wanted) return;
  auto message = QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                            QStringLiteral("PropertiesChanged"));
  message.setArguments({name, QVariantMap{{QStringLiteral("Wanted"), wanted}}, QStringList()});
  bus_.send(message);
}

}  // namespace veloria
