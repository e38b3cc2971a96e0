#include "settings/WriteBehindStorage.h"

#include <algorithm>
#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

constexpr std::chrono::milliseconds quietTime{300};
constexpr std::chrono::milliseconds longestDelay{1000};

}  // namespace

WriteBehindStorage::WriteBehindStorage(std::unique_ptr<SettingsStorage> slow)
    : slow_(std::move(slow)), thread_([this] { run(); }) {}

WriteBehindStorage::~WriteBehindStorage() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  thread_.join();
  flush();
}

std::optional<std::string> WriteBehindStorage::read(std::string_view key) {
  {
    const std::lock_guard lock(mutex_);
    if (const Entry* entry = find(key)) return entry->bytes;
  }
  return slow_->read(key);
}

bool WriteBehindStorage::write(std::string_view key, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  Entry* entry = find(key);
  if (entry == nullptr) entry = &entries_.emplace_back(Entry{std::string(key), {}, false});
  entry->bytes = bytes;
  entry->due = true;
  const auto now = Clock::now();
  quietAt_ = now + quietTime;
  if (std::exchange(changed_, true)) return true;
  latest_ = now + longestDelay;
  wake_.notify_one();
  return true;
}

void WriteBehindStorage::flush() {
  const std::lock_guard turn(writing_);
  bool failed = false;
  std::unique_lock lock(mutex_);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (!std::exchange(entries_[i].due, false)) continue;
    const Entry entry = entries_[i];
    lock.unlock();
    const bool written = slow_->write(entry.key, entry.bytes);
    lock.lock();
    if (written) continue;
    entries_[i].due = true;
    failed = true;
  }
  lock.unlock();
  if (failed && !failed_) {
    systemLog("Veloria: the settings could not be stored; changes last until it quits, unless a later try succeeds");
  }
  failed_ = failed;
}

WriteBehindStorage::Entry* WriteBehindStorage::find(std::string_view key) {
  const auto found = std::ranges::find(entries_, key, &Entry::key);
  return found == entries_.end() ? nullptr : &*found;
}

void WriteBehindStorage::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    wake_.wait(lock, [this] { return changed_ || stopping_; });
    while (!stopping_ && Clock::now() < std::min(quietAt_, latest_)) {
      wake_.wait_until(lock, std::min(quietAt_, latest_));
    }
    if (stopping_) return;
    changed_ = false;
    lock.unlock();
    flush();
    lock.lock();
  }
}

}  // namespace veloria
