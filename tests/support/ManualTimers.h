#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "ports/EventLoop.h"

namespace veloria::tests {

/// Timers that fire when a test says so.
class ManualTimers final : public TimerFactory {
 public:
  struct Entry {
    double interval;
    double tolerance;
    std::function<void()> action;
  };

  std::unique_ptr<Timer> repeating(double interval, double tolerance, std::function<void()> action) override {
    entries.push_back(std::make_shared<Entry>(Entry{interval, tolerance, std::move(action)}));
    return std::make_unique<Handle>(*this, entries.back());
  }
  /// Fires every timer that there is now, once.
  void fire() {
    for (const auto& entry : std::vector(entries)) entry->action();
  }

  std::vector<std::shared_ptr<Entry>> entries;

 private:
  class Handle final : public Timer {
   public:
    Handle(ManualTimers& owner, std::shared_ptr<Entry> entry) : owner_(owner), entry_(std::move(entry)) {}
    ~Handle() override { std::erase(owner_.entries, entry_); }

   private:
    ManualTimers& owner_;
    std::shared_ptr<Entry> entry_;
  };
};

}  // namespace veloria::tests
