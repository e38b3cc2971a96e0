#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ports/EventLoop.h"
#include "ports/SystemActivity.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Decides whether the band is drawn at all: it is enabled, the displays are awake, the session is active, and there is
/// neither a full-screen window nor battery power if the user wants a pause for these. Main thread.
class ActivityWatcher {
 public:
  /// Poll interval and its tolerance for facts without a notification, in seconds.
  static constexpr double pollSeconds = 1;
  static constexpr double pollTolerance = 0.5;

  using Notification = ActivityNotification;

  /// Everything must outlive the watcher. The probes run each second and must return at once.
  struct Ports {
    std::function<const NimbraConfig&()> settings;
    TimerFactory* timers = nullptr;
    /// True if a full-screen window is in front on the first screen. Empty: never. Called only while the settings ask
    /// for a pause.
    std::function<bool()> isFullScreenSpaceActive = {};
    /// True if the computer runs on battery. Empty: never. Called only while the settings ask for a pause.
    std::function<bool()> isOnBattery = {};
    /// Called first in each poll, for sources without events of their own. It may call notify(), but not in the
    /// constructor's poll.
    std::function<void()> onPoll = {};
  };

  /// Polls once, and then each second.
  explicit ActivityWatcher(Ports ports);
  ActivityWatcher(const ActivityWatcher&) = delete;
  ActivityWatcher& operator=(const ActivityWatcher&) = delete;

  /// Applies the notification and recomputes. After a wake it probes first, so that onChange reports the state of now.
  void notify(Notification notification);
  /// Derives shouldRender() again, after a change of the settings for example. Does not probe.
  void recompute();
  /// Probes, and recomputes if something has changed.
  void poll();

  /// True until the first recompute.
  bool shouldRender() const { return shouldRender_; }
  /// Why shouldRender() is false, for people: the first reason in the order above. Empty if it is true.
  const std::string& reason() const { return reason_; }

  /// Called after shouldRender() has changed.
  std::function<void()> onChange;

 private:
  void apply(Notification notification);
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
