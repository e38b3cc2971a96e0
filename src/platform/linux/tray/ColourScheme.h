#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>
#include <functional>

#include "TrayPicture.h"
#include "platform/linux/bus/BusSignal.h"

namespace veloria {

/// The shade of panel that a desktop with this preference is taken to have: light where it prefers light windows, dark
/// where it prefers dark ones, has no preference or says something unknown. `colourScheme` is the value of the desktop
/// portal's setting "color-scheme".
PanelShade panelShade(const QVariant& colourScheme);

/// Follows that setting. Main thread.
class ColourScheme final : public QObject {
 public:
  /// `changed` is called with every answer, later; never where there is no portal.
  ColourScheme(const QDBusConnection& bus, std::function<void(PanelShade)> changed);

 private:
  void ask();
  void takeSignal(const QDBusMessage& message);

  QDBusConnection bus_;
  std::function<void(PanelShade)> changed_;
  QDBusServiceWatcher portal_;
  BusSignal settingChanged_;
};

}  // namespace veloria
