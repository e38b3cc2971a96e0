#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace veloria::gpu::metal {

/// Something whose commands are under way.
class CompletionClient {
 protected:
  CompletionClient() = default;
  ~CompletionClient() = default;

 private:
  friend class MetalCompletion;
  bool pending_ = false;  // under MetalCompletion's mutex
};

/// Counts what has been committed and whose handlers have not returned. Any thread.
class MetalCompletion {
 public:
  void committed(CompletionClient& client);
  /// The client's handlers have returned; it may be used again, or be gone, from here on.
  void finished(CompletionClient& client);

  /// Returns when the client is not under way.
  void waitFor(const CompletionClient& client);
  /// Returns when nothing is.
  void drain();

 private:
  std::mutex mutex_;
  std::condition_variable told_;
  std::uint64_t outstanding_ = 0;
};

}  // namespace veloria::gpu::metal
