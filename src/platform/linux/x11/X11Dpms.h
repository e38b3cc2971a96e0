#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/x11/X11Connection.h"

namespace veloria {

/// True when power management is on and has put the displays into any state but the first, in which they show
/// something (`level` as DPMS counts: 0 on, 1 standby, 2 suspend, 3 off).
constexpr bool displaysAreOff(bool enabled, std::uint16_t level) {
  return enabled && level != 0;
}

/// Whether the displays are without power. The server tells nobody, so it is asked. Main thread.
class X11Dpms {
 public:
  /// `connection` must outlive it.
  explicit X11Dpms(X11Connection& connection);

  /// False when the server doesn't manage the displays' power; then nothing is ever asked or told.
  bool available() const { return available_; }
  /// Called from poll() with every change; displays are on at first. To be set before the first poll().
  void setHandler(std::function<void(bool off)> handler) { handler_ = std::move(handler); }
  /// Asks; one round trip. Displays of a server that is gone count as on.
  void poll();

 private:
  bool areOff();

  X11Connection& connection_;
  bool available_ = false;
  bool off_ = false;
  std::function<void(bool)> handler_;
};

}  // namespace veloria
