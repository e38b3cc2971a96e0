#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/bus/BusCall.h"

namespace veloria {

// Classes that follow a service. Each waits for the bus when it is made, never for the service, and calls back on the
// thread that it was made on.

/// Identifies a signal of a D-Bus service.
struct BusSignalName {
  QString service;
  QString path;  ///< empty: any object of the service
  QString interface;
  QString member;
  QStringList arguments = {};  ///< required values of the first arguments
};

/// Receives one signal of one service, from whoever owns the service's name at the time. The arguments may be anything.
class BusSignal final : public QObject {
  Q_OBJECT

 public:
  using Handler = std::function<void(const QDBusMessage&)>;
  BusSignal(QDBusConnection bus, const BusSignalName& name, Handler handler);

 private Q_SLOTS:
  void receive(const QDBusMessage& message);

 private:
  Handler handler_;
};

/// Calls a method that reads something: now, on read(), and whenever one of `changes` arrives. A burst of changes
/// causes two reads at most.
class BusReader final : public QObject {
 public:
  using Handler = std::function<void(const QDBusMessage& reply)>;
  /// `handler` gets every reply, errors included.
  BusReader(QDBusConnection bus, const BusMethod& method, const QVariantList& arguments,
            const std::vector<BusSignalName>& changes, Handler handler);

  void read();

 private:
  QDBusConnection bus_;
  BusMethod method_;
  QVariantList arguments_;
  Handler handler_;
  bool reading_ = false;
  bool changedMeanwhile_ = false;
  std::vector<std::unique_ptr<BusSignal>> changes_;
};

/// Follows the properties of an object. A reply of another type changes nothing.
std::unique_ptr<BusReader> followProperties(const QDBusConnection& bus, const QString& service, const QString& path,
                                            const QString& interface, std::function<void(const QVariantMap&)> handler);

inline const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");

/// Settings of the desktop portal by namespace, then by key.
using PortalSettings = QMap<QString, QVariantMap>;

/// Follows settings of the desktop portal. `handler` gets none if the portal doesn't run or its reply is of another
/// type. Never starts the portal.
std::unique_ptr<BusReader> followPortalSettings(const QDBusConnection& bus, const QStringList& namespaces,
                                                std::function<void(const PortalSettings&)> handler);

/// Keeps one follower for each run of a service: services come late, end, and start again with another state. The first
/// follower is made at once, whether the service runs or not.
class ServiceRuns final : public QObject {
 public:
  using MakeFollower = std::function<std::unique_ptr<QObject>()>;
  /// `forget` is called when a run has ended, after its follower is gone.
  ServiceRuns(QDBusConnection bus, const QString& service, MakeFollower make, std::function<void()> forget);

 private:
  void begin(const QString& owner);

  MakeFollower make_;
  std::function<void()> forget_;
  QDBusServiceWatcher watcher_;
  std::unique_ptr<QObject> follower_;
};

}  // namespace veloria
