#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <optional>

#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// Asks the desktop portal whether the user wants more contrast: the common setting, and GNOME's own high contrast,
/// which the portal passes on. Asks now, on read(), and whenever the portal tells of a change. Never starts the portal.
/// Made and used on a thread that may wait for the bus.
class PortalContrast final : public QObject {
 public:
  /// Nothing: the portal doesn't run or knows no such setting.
  using Report = std::function<void(std::optional<bool> increased)>;
  PortalContrast(QDBusConnection bus, Report report);

  void read();

 private:
  QDBusConnection bus_;
  Report report_;
  bool reading_ = false;
  bool changedMeanwhile_ = false;
  BusSignal commonChanged_;
  BusSignal gnomeChanged_;
};

}  // namespace veloria
