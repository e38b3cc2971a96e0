#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace veloria {

/// A repeating timer on the main thread. It stops when it is destroyed.
class Timer {
 public:
  virtual ~Timer() = default;
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

 protected:
  Timer() = default;
};

/// A pending call, or none. Move-only; destroying it cancels the call.
class OneShot {
 public:
  OneShot() = default;
  /// True until the call begins.
  explicit operator bool() const { return timer_ && *timer_; }
  void reset() { timer_.reset(); }

 private:
  friend class TimerFactory;
  using Running = std::shared_ptr<std::unique_ptr<Timer>>;
  explicit OneShot(Running timer) : timer_(std::move(timer)) {}

  Running timer_;
};

/// Makes timers on the main thread's event loop.
class TimerFactory {
 public:
  virtual ~TimerFactory() = default;
  /// Calls `action` every `intervalSeconds` (above 0) until the timer is destroyed, which `action` itself may do. The
  /// system may delay a call by up to `toleranceSeconds` to save power. Missed calls are not made up for.
  virtual std::unique_ptr<Timer> repeating(double intervalSeconds, double toleranceSeconds,
                                           std::function<void()> action) = 0;

  /// Calls `action` once, `delaySeconds` (above 0) from now. It may destroy what is returned, or put another in its
  /// place.
  OneShot after(double delaySeconds, std::function<void()> action, double toleranceSeconds = 0);
};

inline OneShot TimerFactory::after(double delaySeconds, std::function<void()> action, double toleranceSeconds) {
  auto timer = std::make_shared<std::unique_ptr<Timer>>();
  *timer = repeating(delaySeconds, toleranceSeconds, [running = std::weak_ptr(timer), action = std::move(action)] {
    const auto call = action;  // what is captured ends with the timer
    if (const auto fired = running.lock()) fired->reset();
    call();
  });
  return OneShot(std::move(timer));
}

/// Calls `onReadable` whenever the descriptor can be read, until the returned object is destroyed.
using DescriptorWatcher = std::function<std::shared_ptr<void>(int descriptor, std::function<void()> onReadable)>;

}  // namespace veloria
