#pragma once

#include <memory>

#include "base/Observable.h"
#include "ports/EventLoop.h"
#include "ports/SystemPort.h"

namespace veloria {

/// Follows the desktop's display settings, and opens them. Changes that the system reports are followed all the time;
/// the others are polled between start() and stop(), so that nothing wakes up while the window is closed. Main thread.
class SystemState {
 public:
  using Pane = SystemPane;
  static constexpr double pollSeconds = 5;
  static constexpr double pollTolerance = 2;

  /// Refreshes once. Both must outlive this object.
  SystemState(SystemPort& port, TimerFactory& timers);
  ~SystemState();
  SystemState(const SystemState&) = delete;
  SystemState& operator=(const SystemState&) = delete;

  /// The current settings; observers are notified of each change.
  Observable<SystemFacts>& facts() { return facts_; }

  /// Reads the settings now; slow answers arrive later.
  void refresh();
  /// Reads the settings now and then regularly, until stop().
  void start();
  void stop();

  /// Shows a pane of the desktop's settings. The error is a sentence for the user.
  Result<Done> open(Pane pane) { return port_.open(pane); }

 private:
  SystemPort& port_;
  TimerFactory& timers_;
  Observable<SystemFacts> facts_{SystemFacts{}};
  std::unique_ptr<Timer> timer_;
};

}  // namespace veloria
