#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/ScreenProvider.h"
#include "ports/SettingsStorage.h"
#include "ports/Timer.h"

namespace veloria::tests {

class FakeScreens final : public ScreenProvider {
 public:
  std::vector<Screen> screens() override { return list; }
  void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }
  void change(std::vector<Screen> now) {
    list = std::move(now);
    changed();
  }
  std::vector<Screen> list;
  std::function<void()> changed;
};

/// Timers that fire when they are told to.
class ManualTimers final : public TimerFactory {
 public:
  struct Entry {
    double interval;
    std::function<void()> action;
  };
  class Handle final : public Timer {
   public:
    Handle(ManualTimers& owner, std::shared_ptr<Entry> entry) : owner_(owner), entry_(std::move(entry)) {}
    ~Handle() override { std::erase(owner_.entries, entry_); }

   private:
    ManualTimers& owner_;
    std::shared_ptr<Entry> entry_;
  };
  std::unique_ptr<Timer> repeating(double interval, double, std::function<void()> action) override {
    entries.push_back(std::make_shared<Entry>(Entry{interval, std::move(action)}));
    return std::make_unique<Handle>(*this, entries.back());
  }
  /// Fires every timer that is there now, once.
  void fire() {
    for (const auto& entry : std::vector(entries)) entry->action();
  }
  std::vector<std::shared_ptr<Entry>> entries;
};

class MemoryStorage final : public SettingsStorage {
 public:
  std::optional<std::string> read(std::string_view) override { return std::nullopt; }
  bool write(std::string_view, std::string_view) override { return true; }
};

inline Screen screenNamed(const std::string& name, std::uint32_t number, double x) {
  Screen screen;
  screen.number = number;
  screen.name = name;
  screen.frame = {x, 0, 1920, 1080};
  screen.visibleFrame = {x, 0, 1920, 1048};
  return screen;
}

}  // namespace veloria::tests
