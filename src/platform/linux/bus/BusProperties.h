#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>

#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// Follows the properties of an object on a bus: reads them all now and whenever it says that some have changed. A
/// burst of changes is read twice at most, and an answer that is none changes nothing.
class BusProperties final : public QObject {
 public:
  using Handler = std::function<void(const QVariantMap&)>;
  /// Waits for the bus, not for the service.
  BusProperties(QDBusConnection bus, const QString& service, const QString& path, const QString& interface,
                Handler handler);

 private:
  void read();

  QDBusConnection bus_;
  QString service_;
  QString path_;
  QString interface_;
  Handler handler_;
  bool reading_ = false;
  bool changedMeanwhile_ = false;
  BusSignal changed_;
};

}  // namespace veloria
