#pragma once

#include <optional>
#include <utility>

#include "base/Environment.h"
#include "platform/linux/wayland/CompositorReplies.h"

namespace veloria {

/// Asks the compositor over its own socket what no protocol tells: sway ($SWAYSOCK) or Hyprland
/// ($HYPRLAND_INSTANCE_SIGNATURE; written after its documentation, not tried with one). No other compositor is known to
/// answer. Each question waits at most a quarter of a second. Main thread.
class CompositorQuestions {
 public:
  explicit CompositorQuestions(Environment environment) : environment_(std::move(environment)) {}

  /// What panels have reserved now; nothing when nobody tells.
  std::optional<ReservedEdges> reservedEdges() const;

  /// How surfaces that share a layer lie over each other.
  LayerStacking layerStacking() const;

 private:
  std::optional<std::string> swaySocket() const;

  Environment environment_;
};

}  // namespace veloria
