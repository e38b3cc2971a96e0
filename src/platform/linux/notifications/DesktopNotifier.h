#pragma once

#include <memory>

#include "ports/Notifier.h"

namespace veloria {

/// Notifications through the desktop's notification service, org.freedesktop.Notifications on the session bus, which
/// may be started for it. Main thread, with a QCoreApplication that must outlive it. Waits for the bus itself when it
/// is made, but for no service on it: one that doesn't answer in half a minute counts as absent.
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
