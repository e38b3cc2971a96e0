#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/bus/BusLink.h"

namespace veloria {

class PortalContrast;

/// Finds out whether the user wants more contrast, on a thread that may wait. Everything happens on that thread, and
/// only because of look() or a change that the portal tells of.
class ContrastWorker final : public QObject {
 public:
  /// `sessionBus` may be empty.
  ContrastWorker(std::string sessionBus, std::function<void(bool increased)> report);
  ~ContrastWorker() override;

  /// Asks the portal; connects to the bus first when there is no connection.
  void look();
  void stop();

 private:
  void take(std::optional<bool> increased);

  std::string sessionBus_;
  std::function<void(bool)> report_;
  std::unique_ptr<BusLink> link_;
  PortalContrast* portal_ = nullptr;
};

}  // namespace veloria
