#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Result.h"
#include "platform/linux/screens/ScreenDescription.h"

/// What compositors answer over their own sockets, from any bytes.
namespace veloria {

/// What panels reserve at the edges of an output, points.
struct EdgeInsets {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  bool operator==(const EdgeInsets&) const = default;
};

/// By the output's name.
using ReservedEdges = std::map<std::string, EdgeInsets>;

/// How surfaces that share a layer lie over each other. In most compositors the newest is on top; sway before
/// version 1.10 puts it at the bottom.
enum class LayerStacking { newestHighest, newestLowest };

/// A message as sway takes it (i3's format): magic, length and type in the machine's byte order, payload.
std::string swayMessage(std::uint32_t type, std::string_view payload);

inline constexpr std::size_t swayHeaderBytes = 14;

/// The payload's length from a message's first bytes; nothing if they are not a header of this type, or the payload is
/// longer than maximumJsonBytes.
std::optional<std::size_t> swayPayloadLength(std::string_view header, std::uint32_t type);

/// From sway's answers to get_outputs and get_workspaces: what the visible workspace leaves free of its output. A gap
/// around the workspace is not a panel: what is free on all four sides is taken off each.
Result<ReservedEdges> swayReservedEdges(std::string_view outputs, std::string_view workspaces);

/// From sway's answer to get_version.
Result<LayerStacking> swayLayerStacking(std::string_view version);

/// From Hyprland's answer to j/monitors, whose "reserved" is left, top, right, bottom.
Result<ReservedEdges> hyprlandReservedEdges(std::string_view monitors);

/// From plasmashell's answer to PlasmaPanels: what its panels reserve on `monitors`, whose frames are in the
/// compositor's logical pixels. Panels that hide or give way reserve nothing.
Result<ReservedEdges> plasmaReservedEdges(std::string_view answer, std::span<const MonitorDescription> monitors);

/// The names of the outputs on which a full-screen window is seen.
using CoveredOutputs = std::set<std::string>;

/// From sway's answer to get_tree. A container that fills its output with several windows counts too, and one that
/// fills all outputs counts on each.
Result<CoveredOutputs> swayCoveredOutputs(std::string_view tree);

/// From Hyprland's answers to j/monitors and j/clients. A maximised window, which leaves panels in view, does not
/// count.
Result<CoveredOutputs> hyprlandCoveredOutputs(std::string_view monitors, std::string_view clients);

/// `frame` (points) without what is reserved; an edge that would take more than half of it is ignored.
PixelRect withoutReserved(const PixelRect& frame, const EdgeInsets& reserved);

/// Questions that no Wayland protocol answers, put to the compositor over its own socket: sway ($SWAYSOCK) or Hyprland
/// ($HYPRLAND_INSTANCE_SIGNATURE; written from its documentation, never tried with it). Other compositors have no such
/// socket that we know. Each question waits at most a quarter of a second. Any thread.
class CompositorQuestions {
 public:
  /// The environment is read here and not again.
  explicit CompositorQuestions(const Environment& environment);

  /// What panels have reserved now; nothing if the compositor does not say.
  std::optional<ReservedEdges> reservedEdges() const;

  /// Where a full-screen window is seen now; nothing if the compositor does not say.
  std::optional<CoveredOutputs> coveredOutputs() const;

  /// How surfaces that share a layer lie over each other.
  LayerStacking layerStacking() const;

 private:
  std::optional<std::filesystem::path> sway_;
  std::optional<std::filesystem::path> hyprland_;
};

}  // namespace veloria
