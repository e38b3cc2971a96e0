#include "gpu/metal/MetalCompletion.h"

namespace veloria::gpu::metal {

namespace {

constexpr std::chrono::seconds longestWait{1};
// All but the one on the screen and the one that is asked for.
constexpr std::uint32_t maxWaiting = MetalDrawableCount::drawables - 2;

}  // namespace

void MetalCompletion::committed(CompletionClient& client) {
  const std::lock_guard lock(mutex_);
  client.pending_ = true;
  ++outstanding_;
}

void MetalCompletion::finished(CompletionClient& client) {
  // Notifies under the lock: a waiting thread may destroy this object as soon as the count is 0.
  const std::lock_guard lock(mutex_);
  client.pending_ = false;
  --outstanding_;
  changed_.notify_all();
}

void MetalCompletion::waitFor(const CompletionClient& client) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return !client.pending_; });
}

void MetalCompletion::drain() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return outstanding_ == 0; });
}

bool MetalDrawableCount::free(Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  if (waiting_ > maxWaiting && now - last_ >= longestWait) waiting_ = 0;
  return waiting_ <= maxWaiting;
}

void MetalDrawableCount::presented(Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  ++waiting_;
  last_ = now;
}

void MetalDrawableCount::shown() {
  const std::lock_guard lock(mutex_);
  // One that counted as lost may still turn up.
  if (waiting_ > 0) --waiting_;
}

}  // namespace veloria::gpu::metal
