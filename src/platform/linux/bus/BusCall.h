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

struct BusCallOptions {
  int patienceSeconds = 10;
  bool startService = false;  ///< whether the bus may start the service when it does not run
};

/// Calls it. `then` gets the reply, or an error when there is none in time; it is not called once `owner` is gone.
/// Doesn't wait.
void callOnBus(QDBusConnection bus, const BusMethod& method, const QVariantList& arguments, QObject* owner,
               std::function<void(const QDBusMessage&)> then, const BusCallOptions& options = {});

/// True for a reply, no error, whose arguments have this signature.
bool isReply(const QDBusMessage& message, const char* signature);

/// The object path that a reply consists of; nothing for any other reply and for "/", which stands for no object.
std::optional<QString> pathIn(const QDBusMessage& reply);

/// The variant that a reply consists of; invalid for any other reply.
QVariant variantIn(const QDBusMessage& reply);

/// The properties that a reply consists of; nothing for any other reply.
std::optional<QVariantMap> propertiesIn(const QDBusMessage& reply);

/// The value when it is a boolean.
std::optional<bool> asBool(const QVariant& value);

}  // namespace veloria
