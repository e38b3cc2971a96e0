#include "gpu/metal/MetalCompletion.h"

namespace veloria::gpu::metal {

void MetalCompletion::committed(CompletionClient& client) {
  const std::lock_guard lock(mutex_);
  client.pending_ = true;
  ++outstanding_;
}

void MetalCompletion::finished(CompletionClient& client) {
  // Told under the lock: whoever waits may destroy this object as soon as the count is 0.
  const std::lock_guard lock(mutex_);
  client.pending_ = false;
  --outstanding_;
  told_.notify_all();
}

void MetalCompletion::waitFor(const CompletionClient& client) {
  std::unique_lock lock(mutex_);
  told_.wait(lock, [&] { return !client.pending_; });
}

void MetalCompletion::drain() {
  std::unique_lock lock(mutex_);
  told_.wait(lock, [&] { return outstanding_ == 0; });
}

}  // namespace veloria::gpu::metal
