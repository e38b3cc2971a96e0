#include "gpu/cpu/ThreadPool.h"

#include <sys/resource.h>

namespace veloria::gpu::cpu {

namespace {

constexpr int spins = 200;

void pause() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#endif
}

}  // namespace

void lowerPriority() {
#if defined(__linux__)
  setpriority(PRIO_PROCESS, 0, 5);  // on Linux: of this thread
#endif
}

ThreadPool::ThreadPool(unsigned threads) {
  helpers_.reserve(threads - 1);
  for (unsigned number = 1; number < threads; ++number) helpers_.emplace_back([this] { help(); });
}

ThreadPool::~ThreadPool() {
  ending_ = true;
  ++round_;
  round_.notify_all();
  for (auto& helper : helpers_) helper.join();
}

void ThreadPool::start(unsigned count, Job job, const void* context) {
  if (helpers_.empty() || count < 2) {
    for (unsigned portion = 0; portion < count; ++portion) job(context, portion);
    return;
  }
  job_ = job;
  context_ = context;
  done_ = 0;
  ticket_ = std::uint64_t{round_ + 1} << 32 | std::uint64_t{count} << 16;
  ++round_;
  round_.notify_all();
  takePortions();
  while (done_ < count) pause();
}

// A helper that comes late finds no portion left, or those of the next round, which are as good.
void ThreadPool::takePortions() {
  for (;;) {
    std::uint64_t ticket = ticket_;
    if ((ticket & 0xFFFFU) >= (ticket >> 16 & 0xFFFFU)) return;
    if (!ticket_.compare_exchange_weak(ticket, ticket + 1)) continue;
    job_.load()(context_, static_cast<unsigned>(ticket & 0xFFFFU));
    ++done_;
  }
}

void ThreadPool::help() {
  lowerPriority();
  std::uint32_t seen = 0;
  while (!ending_) {
    for (int spin = 0; round_ == seen && spin < spins; ++spin) pause();
    round_.wait(seen);
    seen = round_;
    takePortions();
  }
}

}  // namespace veloria::gpu::cpu
