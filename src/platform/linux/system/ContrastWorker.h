#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/bus/BusLink.h"
#include "platform/linux/bus/PortalSettings.h"

namespace veloria {

/// Finds out whether the user wants more contrast, on a thread that may wait: from the desktop portal's common setting
/// or GNOME's own high contrast, which the portal passes on, else from GNOME's settings. Everything happens on that
/// thread, and only because of look() or a change that the portal tells of.
class ContrastWorker final : public QObject {
 public:
  /// `sessionBus` may be empty.
  ContrastWorker(std::string sessionBus, std::function<void(bool increased)> report);

  /// Asks the portal; connects to the bus first when there is no connection.
  void look();
  void stop();

 private:
  void take(const PortalSettings::Values& settings);

  std::string sessionBus_;
  std::function<void(bool)> report_;
  std::unique_ptr<BusLink> link_;
  PortalSettings* portal_ = nullptr;
};

}  // namespace veloria
