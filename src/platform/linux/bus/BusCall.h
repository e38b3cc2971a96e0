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

/// Identifies a method of an object on a bus.
struct BusMethod {
  QString service;
  QString path;
  QString interface;
  QString member;
};

struct BusCallOptions {
  int patienceSeconds = 10;
  bool startService = false;  ///< whether the bus may start a service that does not run
};

/// Calls the method without waiting. `then` gets the reply, or an error if there is none in time; it is not called once
/// `owner` is gone.
void callOnBus(QDBusConnection bus, const BusMethod& method, const QVariantList& arguments, QObject* owner,
               std::function<void(const QDBusMessage&)> then, const BusCallOptions& options = {});

/// True if the message is a reply, not an error, and its arguments have this signature.
bool isReply(const QDBusMessage& message, const char* signature);

/// The object path in a reply with nothing else; empty for any other reply and for "/", which means no object.
std::optional<QString> pathIn(const QDBusMessage& reply);

/// The variant in a reply with nothing else; invalid for any other reply.
QVariant variantIn(const QDBusMessage& reply);

/// The properties in a reply with nothing else; empty for any other reply.
std::optional<QVariantMap> propertiesIn(const QDBusMessage& reply);

/// The value if it is a boolean.
std::optional<bool> asBool(const QVariant& value);

}  // namespace veloria
