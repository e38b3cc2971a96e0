#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <functional>

#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// A screen saver's name on the session bus, and where its object is. Its interface has the same name.
struct SaverName {
  QString service;
  QString path;
};

/// Follows one run of a screen saver.
class SaverWatch final : public QObject {
 public:
  SaverWatch(QDBusConnection bus, const SaverName& name, std::function<void(bool active)> report);

 private:
  void take(const QDBusMessage& message);

  std::function<void(bool)> report_;
  BusSignal changed_;
};

}  // namespace veloria
