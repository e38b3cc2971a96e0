#include "platform/linux/wayland/FullScreenInquiry.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace veloria {

FullScreenInquiry::FullScreenInquiry(Question question)
    : question_(std::move(question)), thread_([this](const std::stop_token& stop) { work(stop); }) {}

void FullScreenInquiry::ask() {
  const std::lock_guard guard(mutex_);
  wanted_ = true;
  asked_.notify_one();
}

std::optional<CoveredOutputs> FullScreenInquiry::answer() const {
  const std::lock_guard guard(mutex_);
  return answer_;
}

void FullScreenInquiry::work(const std::stop_token& stop) {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);  // signals are the main thread's affair
  std::unique_lock lock(mutex_);
  while (asked_.wait(lock, stop, [this] { return wanted_; })) {
    wanted_ = false;
    lock.unlock();
    auto answer = question_();
    lock.lock();
    answer_ = std::move(answer);
  }
}

}  // namespace veloria
