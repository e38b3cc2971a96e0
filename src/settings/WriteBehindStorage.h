#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ports/SettingsStorage.h"

namespace veloria {

/// Keeps settings in memory and writes them to a slow storage a little later, on a thread of its own: 0.3 s after the
/// last change, and once a second while changes go on. Keys are written in the order in which they were first set. A
/// program that is killed loses the last second at most; one that ends, nothing.  A failed write is reported once in
/// the system log, stays readable, and is tried again with the next change and at the end.
class WriteBehindStorage final : public SettingsStorage {
 public:
  /// `slow` must allow a read() during a write().
  explicit WriteBehindStorage(std::unique_ptr<SettingsStorage> slow);
  /// Waits for flush().
  ~WriteBehindStorage() override;

  /// What was written last, on disk or not.
  std::optional<std::string> read(std::string_view key) override;
  /// Never waits for the slow storage. Always true.
  bool write(std::string_view key, std::string_view bytes) override;
  /// Returns when the slow storage has taken, or refused, everything that was written before the call. Any thread.
  void flush() override;

 private:
  using Clock = std::chrono::steady_clock;
  struct Entry {
    std::string key;
    std::string bytes;
    bool due = false;  ///< not yet in the slow storage
  };

  Entry* find(std::string_view key);
  void run();

  const std::unique_ptr<SettingsStorage> slow_;
  std::mutex writing_;   // held around writes to slow_, so that nothing older comes after something newer
  bool failed_ = false;  // under writing_

  std::mutex mutex_;
  std::condition_variable wake_;
  std::vector<Entry> entries_;
  bool changed_ = false;  // since the thread wrote last
  Clock::time_point quietAt_;
  Clock::time_point latest_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace veloria
