#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ports/ActivityNotification.h"
#include "ports/Timer.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Decides whether the band is drawn at all: enabled, displays awake, session active, and neither behind a full-screen
/// window nor on battery where the user wants a pause for these. Main thread.
class ActivityWatcher {
 public:
  /// How often is looked at what no notification tells.
  static constexpr double pollSeconds = 1;
  static constexpr double pollTolerance = 0.5;

  using Notification = ActivityNotification;

  /// Everything must outlive the watcher. The probes are plain reads of something known: they run each second.
  struct Ports {
    std::function<const NimbraConfig&()> settings;
    TimerFactory* timers = nullptr;
    /// Whether a full-screen window is in front on the first screen. Empty: never. Only called while the settings ask
    /// for a pause.
    std::function<bool()> isFullScreenSpaceActive = {};
    /// Whether the computer runs on battery. Empty: never. Only called while the settings ask for a pause.
    std::function<bool()> isOnBattery = {};
    /// Called first in each poll, in the constructor too: what has no events of its own is asked here, and may call
    /// notify() (but in the constructor, where the watcher is not known to anybody yet).
    std::function<void()> onPoll = {};
  };

  /// Polls once, and then each second.
  explicit ActivityWatcher(Ports ports);
  ActivityWatcher(const ActivityWatcher&) = delete;
  ActivityWatcher& operator=(const ActivityWatcher&) = delete;

  /// Takes it in and recomputes. After a wake everything is probed again first, so that onChange tells what is true
  /// now.
  void notify(Notification notification);
  /// Derives shouldRender() again, after the settings changed for instance. Probes nothing.
  void recompute();
  /// Probes, and recomputes when something is not as it was.
  void poll();

  /// True until the first recompute.
  bool shouldRender() const { return shouldRender_; }
  /// Why shouldRender() is false, for people: the first that applies, in the order of the rule. Empty when it is true.
  const std::string& reason() const { return reason_; }

  /// Called after shouldRender() has changed.
  std::function<void()> onChange;

 private:
  void take(Notification notification);
  bool probe();

  Ports ports_;
  bool shouldRender_ = true;
  std::string reason_;
  bool displayAsleep_ = false;
  bool sessionActive_ = true;
  bool fullScreenCovering_ = false;
  bool onBattery_ = false;
  std::unique_ptr<Timer> timer_;
};

}  // namespace veloria
