#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "ports/EventLoop.h"

namespace veloria::tests {

/// Timers that fire when a test says so.
class ManualTimers final : public TimerFactory {
 public:
  struct Entry final : Timer {
    Entry(ManualTimers& owner, double seconds, std::function<void()> work)
        : timers(owner), interval(seconds), action(std::move(work)) {
      timers.entries.push_back(this);
    }
    ~Entry() override { std::erase(timers.entries, this); }

    ManualTimers& timers;
    double interval;
    std::function<void()> action;
  };

  std::unique_ptr<Timer> repeating(double interval, double, std::function<void()> action) override {
    return std::make_unique<Entry>(*this, interval, std::move(action));
  }
  /// Fires every timer that there is now, once.
  void fire() {
    for (Entry* entry : std::vector(entries)) {
      if (std::ranges::count(entries, entry) > 0) std::function(entry->action)();
    }
  }

  std::vector<Entry*> entries;
};

}  // namespace veloria::tests
