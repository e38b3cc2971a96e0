#pragma once

#include <optional>
#include <utility>

#include "base/Environment.h"
#include "platform/linux/wayland/CompositorReplies.h"

namespace veloria {

/// Asks the compositor over its own socket what panels have reserved: sway ($SWAYSOCK) or Hyprland
/// ($HYPRLAND_INSTANCE_SIGNATURE; after its documentation, not tried with one). No other compositor is known to tell.
class CompositorBars {
 public:
  explicit CompositorBars(Environment environment) : environment_(std::move(environment)) {}

  /// Nothing when nobody tells. Waits at most a quarter of a second for a compositor that does not answer.
  std::optional<ReservedEdges> ask() const;

 private:
  Environment environment_;
};

}  // namespace veloria
