#pragma once

#include <functional>
#include <initializer_list>
#include <memory>

namespace veloria {

/// Turns signals into a call on the main thread's event loop, so that the program ends in order. One at a time; the
/// signals' former handling comes back with its end.
class SignalWatch {
 public:
  SignalWatch(std::initializer_list<int> signals, std::function<void()> action);
  ~SignalWatch();
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace veloria
