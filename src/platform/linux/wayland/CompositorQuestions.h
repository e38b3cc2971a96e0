#pragma once

#include <filesystem>
#include <optional>

#include "base/Environment.h"
#include "platform/linux/wayland/CompositorReplies.h"

namespace veloria {

/// Asks the compositor over its own socket what no protocol tells: sway ($SWAYSOCK) or Hyprland
/// ($HYPRLAND_INSTANCE_SIGNATURE; written after its documentation, not tried with one). No other compositor is known to
/// answer. Each question waits at most a quarter of a second. Any thread.
class CompositorQuestions {
 public:
  /// The environment is read here and not again.
  explicit CompositorQuestions(const Environment& environment);

  /// What panels have reserved now; nothing when nobody tells.
  std::optional<ReservedEdges> reservedEdges() const;

  /// Where a full-screen window is seen now; nothing when nobody tells.
  std::optional<CoveredOutputs> coveredOutputs() const;

  /// How surfaces that share a layer lie over each other.
  LayerStacking layerStacking() const;

 private:
  std::optional<std::filesystem::path> sway_;
  std::optional<std::filesystem::path> hyprland_;
};

}  // namespace veloria
