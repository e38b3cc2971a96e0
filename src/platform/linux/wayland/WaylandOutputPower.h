#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// Whether the compositor has switched its outputs off (wlr output power management). Never where it does not tell.
/// Main thread.
class WaylandOutputPower {
 public:
  /// `connection` must outlive it.
  explicit WaylandOutputPower(WaylandConnection& connection);
  ~WaylandOutputPower();
  WaylandOutputPower(const WaylandOutputPower&) = delete;
  WaylandOutputPower& operator=(const WaylandOutputPower&) = delete;

  /// True when there are outputs and all of them are off. Costs nothing: what is known from events.
  bool allOff() const;

 private:
  struct Power;
  static const wl_registry_listener registryListener;
  static const zwlr_output_power_v1_listener powerListener;

  void watchOutputs();

  WaylandConnection& connection_;
  WaylandPtr<wl_registry> registry_;
  WaylandPtr<zwlr_output_power_manager_v1> manager_;
  std::map<std::uint32_t, std::unique_ptr<Power>> powers_;  ///< by the output's number in the registry
  WaylandConnection::Subscription changes_;
};

}  // namespace veloria
