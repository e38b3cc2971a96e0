#pragma once

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace veloria::gpu::cpu {

/// Work in equal portions for one caller and some helpers. Whoever is free takes the next portion, and nobody waits for
/// a helper that has not begun one, so that on a busy machine it costs no more than the caller alone.
class ThreadPool {
 public:
  /// `threads`: 1 or more, the caller among them. Helpers run at lowered priority.
  explicit ThreadPool(unsigned threads);
  ~ThreadPool();
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  unsigned threads() const { return static_cast<unsigned>(helpers_.size()) + 1; }

  /// Calls `work(portion)` for 0 to `count` - 1 (below 65536), each once, on any of the threads, and returns when all
  /// are done. One caller at a time.
  template <typename Work>
  void run(unsigned count, const Work& work) {
    start(
        count, [](const void* context, unsigned portion) { (*static_cast<const Work*>(context))(portion); }, &work);
  }

 private:
  using Job = void (*)(const void* context, unsigned portion);

  void start(unsigned count, Job job, const void* context);
  void takePortions();
  void help();

  std::atomic<Job> job_{nullptr};
  std::atomic<const void*> context_{nullptr};
  std::atomic<std::uint64_t> ticket_{0};  ///< round, portions, next portion: 32, 16 and 16 bits
  std::atomic<std::uint32_t> round_{0};
  std::atomic<unsigned> done_{0};
  std::atomic<bool> ending_{false};
  std::vector<std::thread> helpers_;
};

/// Lets the calling thread stand back behind the rest of the system.
void lowerPriority();

}  // namespace veloria::gpu::cpu
