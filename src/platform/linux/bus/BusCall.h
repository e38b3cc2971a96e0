#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <functional>
#include <optional>

namespace veloria {

/// The method of an object on a bus.
struct BusMethod {
  QString service;
  QString path;
  QString interface;
  QString member;
};

/// Calls it without starting the service when it does not run. `then` gets the reply, or an error when there is none in
/// ten seconds; it is not called once `owner` is gone. Doesn't wait.
void callOnBus(QDBusConnection bus, const BusMethod& method, const QVariantList& arguments, QObject* owner,
               std::function<void(const QDBusMessage&)> then);

/// The object path that a reply consists of; nothing for any other reply and for "/", which stands for no object.
std::optional<QString> pathIn(const QDBusMessage& reply);

/// The variant that a reply consists of; invalid for any other reply.
QVariant variantIn(const QDBusMessage& reply);

/// The properties that a reply consists of; nothing for any other reply.
std::optional<QVariantMap> propertiesIn(const QDBusMessage& reply);

/// The value when it is a boolean.
std::optional<bool> asBool(const QVariant& value);

}  // namespace veloria
