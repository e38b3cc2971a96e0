#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace veloria {

/// Ends a subscription when destroyed. May outlive the observable. Movable, not copyable.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  ~Subscription() { cancel(); }

  Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    Subscription old(std::exchange(cancel_, std::exchange(other.cancel_, nullptr)));
    return *this;
  }

  /// Ends it now: the observer is not called again, not even by a notification in progress.
  void cancel() {
    if (const auto action = std::exchange(cancel_, nullptr)) action();
  }

 private:
  std::function<void()> cancel_;
};

/// A value that notifies observers when it is set. One thread only. Observers must not throw. During a notification an
/// observer may subscribe, end any subscription (its own too) and set the value again.
template <typename T>
class Observable {
 public:
  using Observer = std::function<void(const T&)>;

  explicit Observable(T value) : value_(std::move(value)) {}
  Observable(const Observable&) = delete;
  Observable& operator=(const Observable&) = delete;

  /// The current value. The reference is valid until the value is set again.
  const T& get() const { return value_; }

  /// Stores the value, then passes it to the observers in the order of their subscription, even if it equals the old
  /// one. If an observer sets the value again, all get the newer one at once, and none gets the older one afterwards.
  void set(T value) {
    value_ = std::move(value);
    const std::uint64_t change = ++changes_;
    const T delivered = value_;
    for (const auto& slot : Slots(*slots_)) {
      if (changes_ != change) return;
      if (slot->active) slot->observer(delivered);
    }
  }

  /// Calls the observer with the current value before returning, and then each time the value is set, until the
  /// subscription ends.
  Subscription subscribe(Observer observer) {
    auto slot = std::make_shared<Slot>(Slot{std::move(observer)});
    slots_->push_back(slot);
    Subscription subscription([slots = std::weak_ptr(slots_), weakSlot = std::weak_ptr(slot)] {
      const auto held = weakSlot.lock();  // released last: it may own objects that end subscriptions
      if (!held) return;
      held->active = false;
      if (const auto all = slots.lock()) std::erase(*all, held);
    });
    slot->observer(T(value_));
    return subscription;
  }

 private:
  struct Slot {
    Observer observer;
    bool active = true;
  };
  using Slots = std::vector<std::shared_ptr<Slot>>;

  T value_;
  std::uint64_t changes_ = 0;
  std::shared_ptr<Slots> slots_ = std::make_shared<Slots>();
};

}  // namespace veloria
