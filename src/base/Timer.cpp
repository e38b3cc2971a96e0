#include "base/Timer.h"

namespace veloria {

OneShot TimerFactory::after(double delaySeconds, std::function<void()> action, double toleranceSeconds) {
  auto timer = std::make_shared<std::unique_ptr<Timer>>();
  *timer = repeating(delaySeconds, toleranceSeconds, [running = std::weak_ptr(timer), action = std::move(action)] {
    const auto call = action;  // what is captured ends with the timer
    if (const auto fired = running.lock()) fired->reset();
    call();
  });
  return OneShot(std::move(timer));
}

}  // namespace veloria
