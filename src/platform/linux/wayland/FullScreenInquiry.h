#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/linux/wayland/CompositorReplies.h"

namespace veloria {

/// Asks a question that may take a while on a thread of its own. Main thread, but for the question.
class FullScreenInquiry {
 public:
  /// Where a full-screen window is seen now; nothing when nobody tells. Must not throw.
  using Question = std::function<std::optional<CoveredOutputs>()>;

  explicit FullScreenInquiry(Question question);
  /// Waits for a question that is under way.
  ~FullScreenInquiry() = default;
  FullScreenInquiry(const FullScreenInquiry&) = delete;
  FullScreenInquiry& operator=(const FullScreenInquiry&) = delete;

  /// Returns at once. What is asked while a question is under way is asked once more after it.
  void ask();
  /// The last answer; nothing before the first one.
  std::optional<CoveredOutputs> answer() const;

 private:
  void work(const std::stop_token& stop);

  Question question_;
  mutable std::mutex mutex_;  // guards the next three
  std::condition_variable_any asked_;
  bool wanted_ = false;
  std::optional<CoveredOutputs> answer_;
  std::jthread thread_;
};

}  // namespace veloria
