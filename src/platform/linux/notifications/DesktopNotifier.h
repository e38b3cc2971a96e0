#pragma once

#include <memory>

#include "ports/Notifier.h"

namespace veloria {

/// Shows notifications through org.freedesktop.Notifications on the session bus, which may start that service. Main
/// thread, with a QCoreApplication that must outlive it. The constructor waits for the bus but for no service; one that
/// doesn't answer in half a minute counts as absent.
class DesktopNotifier final : public Notifier {
 public:
  DesktopNotifier();
  ~DesktopNotifier() override;

  void show(Notification notification, std::function<void()> delivered) override;

 private:
  class Service;
  std::unique_ptr<Service> service_;
};

}  // namespace veloria
