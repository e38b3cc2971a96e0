#include "platform/linux/screens/Pacing.h"

#include <utility>

#include "base/MediaClock.h"

namespace veloria {

namespace {

constexpr double settleSeconds = 0.25;
constexpr double longestWait = 2;
constexpr double pollSeconds = 0.05;

}  // namespace

SettledChanges::SettledChanges(TimerFactory& timers, std::function<void()> action)
    : timers_(timers), action_(std::move(action)) {}

// A slow poll of two numbers instead of a new timer for every event of a storm.
void SettledChanges::note() {
  lastChange_ = mediaTime();
  if (pending_) return;
  firstChange_ = lastChange_;
  pending_ = timers_.repeating(pollSeconds, 0, [this] { actIfSettled(); });
}

void SettledChanges::actIfSettled() {
  const double now = mediaTime();
  if (now - lastChange_ < settleSeconds && now - firstChange_ < longestWait) return;
  pending_.reset();
  action_();
}

}  // namespace veloria
