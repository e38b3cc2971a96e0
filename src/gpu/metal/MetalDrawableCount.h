#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

namespace veloria::gpu::metal {

/// Tells whether a layer has a drawable free, so that asking for one never waits. A layer has three: one is on the
/// screen, one may wait for its turn there, and one is free to be drawn into. Any thread.
class MetalDrawableCount {
 public:
  using Clock = std::chrono::steady_clock;

  /// Drawables of a layer.
  static constexpr std::uint32_t drawables = 3;

  /// Whether one can be taken now. One that has not been seen on the screen within a second is taken for lost (the
  /// screen was switched off, say), so this never stays false for ever.
  bool free(Clock::time_point now);
  /// One was taken and handed over to be presented.
  void presented(Clock::time_point now);
  /// One has come to the screen, or was dropped.
  void shown();

 private:
  std::mutex mutex_;
  std::uint32_t waiting_ = 0;
  Clock::time_point last_{};
};

}  // namespace veloria::gpu::metal
