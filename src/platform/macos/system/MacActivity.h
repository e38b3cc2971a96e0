#pragma once

#include <functional>
#include <memory>

#include "ports/SystemActivity.h"

namespace veloria {

/// Reports what happens to this Mac and session, from the workspace's notifications and the list of power sources.
/// Never delays or prevents sleep. Main thread.
class MacActivity final : public SystemActivity {
 public:
  using Notification = ActivityNotification;

  MacActivity();
  ~MacActivity() override;

  /// `handler` gets every change from now on; it must not destroy this object. An empty one ends the calls.
  void setHandler(std::function<void(Notification)> handler) override;

  /// Reads the list of power sources, which the system keeps ready.
  bool isOnBattery() override;

 private:
  struct Observers;
  std::unique_ptr<Observers> observers_;
};

}  // namespace veloria
