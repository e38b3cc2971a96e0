#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace veloria::gpu::metal {

/// Something with commands in flight.
class CompletionClient {
 protected:
  CompletionClient() = default;
  ~CompletionClient() = default;

 private:
  friend class MetalCompletion;
  bool pending_ = false;  // under MetalCompletion's mutex
};

/// Counts commits whose handlers have not returned. Any thread.
class MetalCompletion {
 public:
  void committed(CompletionClient& client);
  /// Call it when the client's handlers have returned; the client may then be reused or destroyed.
  void finished(CompletionClient& client);

  /// Returns when the client has nothing in flight.
  void waitFor(const CompletionClient& client);
  /// Returns when nothing is in flight.
  void drain();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t outstanding_ = 0;
};

/// Whether a layer has a free drawable, so that asking for one never waits. A layer has three: one on the screen, one
/// waiting for its turn, one to draw into. Any thread.
class MetalDrawableCount {
 public:
  using Clock = std::chrono::steady_clock;

  /// Drawables of a layer.
  static constexpr std::uint32_t drawables = 3;

  /// Whether one is free now. A drawable that has not reached the screen within a second counts as lost (the screen may
  /// be off), so this never stays false.
  bool free(Clock::time_point now);
  /// Call it when a drawable is handed over for presenting.
  void presented(Clock::time_point now);
  /// Call it when a drawable has reached the screen or was dropped.
  void shown();

 private:
  std::mutex mutex_;
  std::uint32_t waiting_ = 0;
  Clock::time_point last_{};
};

}  // namespace veloria::gpu::metal
