#pragma once

#include <memory>

#include "base/Observable.h"
#include "ports/SystemPort.h"
#include "ports/Timer.h"

namespace veloria {

/// Follows the desktop's display settings, and opens them. Changes that the system tells of are followed all the time;
/// those that it doesn't tell of only between start() and stop(), so that nothing wakes up while nobody looks. Main
/// thread.
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

  /// The settings now; observers are told of each change.
  Observable<SystemFacts>& facts() { return facts_; }

  /// Looks now. An answer that takes time comes later.
  void refresh();
  /// Looks now and from now on regularly, until stop().
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
