#include "gpu/metal/MetalDrawableCount.h"

namespace veloria::gpu::metal {

namespace {

constexpr std::chrono::seconds longestWait{1};
// All but the one on the screen and the one that is asked for.
constexpr std::uint32_t maxWaiting = MetalDrawableCount::drawables - 2;

}  // namespace

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
  // One that was taken for lost may turn up all the same.
  if (waiting_ > 0) --waiting_;
}

}  // namespace veloria::gpu::metal
