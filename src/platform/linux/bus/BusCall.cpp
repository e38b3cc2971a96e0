#include "platform/linux/bus/BusCall.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <memory>
#include <utility>

namespace veloria {

void callOnBus(QDBusConnection bus, const BusMethod& method, const QVariantList& arguments, QObject* owner,
               std::function<void(const QDBusMessage&)> then, const BusCallOptions& options) {
  QDBusMessage message = QDBusMessage::createMethodCall(method.service, method.path, method.interface, method.member);
  message.setArguments(arguments);
  message.setAutoStartService(options.startService);
  // The owner deletes it unless it has deleted itself.
  auto* watcher =
      std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(message, options.patienceSeconds * 1000), owner)
          .release();
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner, [watcher, then = std::move(then)] {
    watcher->deleteLater();
    then(watcher->reply());
  });
}

bool isReply(const QDBusMessage& message, const char* signature) {
  return message.type() == QDBusMessage::ReplyMessage && message.signature() == QLatin1String(signature);
}

std::optional<QString> pathIn(const QDBusMessage& reply) {
  if (!isReply(reply, "o")) return std::nullopt;
  const QString path = qvariant_cast<QDBusObjectPath>(reply.arguments().constFirst()).path();
  return path.size() > 1 ? std::optional(path) : std::nullopt;
}

QVariant variantIn(const QDBusMessage& reply) {
  if (!isReply(reply, "v")) return {};
  return qvariant_cast<QDBusVariant>(reply.arguments().constFirst()).variant();
}

std::optional<QVariantMap> propertiesIn(const QDBusMessage& reply) {
  if (!isReply(reply, "a{sv}")) return std::nullopt;
  return qdbus_cast<QVariantMap>(reply.arguments().constFirst());
}

std::optional<bool> asBool(const QVariant& value) {
  return value.typeId() == QMetaType::Bool ? std::optional(value.toBool()) : std::nullopt;
}

}  // namespace veloria
