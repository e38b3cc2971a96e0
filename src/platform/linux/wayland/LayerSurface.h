#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// The place of a layer surface on its output.
struct LayerPlacement {
  std::uint32_t layer = ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND;
  std::uint32_t anchors = 0;  ///< zwlr_layer_surface_v1_anchor
  std::uint32_t width = 0;    ///< points; 0: from edge to edge, between two anchors
  std::uint32_t height = 0;
  std::int32_t exclusiveZone = 0;  ///< -1: over what others have reserved; 0: beside it
};

/// A surface of the layer shell: it takes no clicks and no keys. Main thread.
class LayerSurface {
 public:
  struct Handlers {
    std::function<void(std::uint32_t width, std::uint32_t height)> configured;  ///< the size to take, points
    std::function<void()> closed;  ///< it will not be shown any more; may destroy this object
  };

  /// The connection must have a layer shell, and outlive this. `configured` gets its size later.
  LayerSurface(WaylandConnection& connection, wl_output* output, const LayerPlacement& placement, Handlers handlers);
  LayerSurface(const LayerSurface&) = delete;
  LayerSurface& operator=(const LayerSurface&) = delete;

  wl_surface* surface() const { return surface_.get(); }

 private:
  static const zwlr_layer_surface_v1_listener listener;

  Handlers handlers_;
  WaylandPtr<wl_surface> surface_;
  WaylandPtr<zwlr_layer_surface_v1> layerSurface_;
};

}  // namespace veloria
