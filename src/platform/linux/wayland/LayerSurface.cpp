#include "platform/linux/wayland/LayerSurface.h"

#include <utility>

namespace veloria {

namespace {

constexpr const char* name = "Veloria";

}  // namespace

const zwlr_layer_surface_v1_listener LayerSurface::listener = {
    .configure =
        [](void* data, zwlr_layer_surface_v1* surface, std::uint32_t serial, std::uint32_t width,
           std::uint32_t height) {
          zwlr_layer_surface_v1_ack_configure(surface, serial);
          static_cast<LayerSurface*>(data)->handlers_.configured(width, height);
        },
    .closed =
        [](void* data, zwlr_layer_surface_v1*) {
          const auto closed = static_cast<LayerSurface*>(data)->handlers_.closed;
          closed();
        },
};

LayerSurface::LayerSurface(WaylandConnection& connection, wl_output* output, const LayerPlacement& placement,
                           Handlers handlers)
    : handlers_(std::move(handlers)), surface_(wl_compositor_create_surface(connection.compositor())) {
  const WaylandPtr<wl_region> nothing(wl_compositor_create_region(connection.compositor()));
  wl_surface_set_input_region(surface_.get(), nothing.get());
  layerSurface_.reset(
      zwlr_layer_shell_v1_get_layer_surface(connection.layerShell(), surface_.get(), output, placement.layer, name));
  zwlr_layer_surface_v1_add_listener(layerSurface_.get(), &listener, this);
  zwlr_layer_surface_v1_set_size(layerSurface_.get(), placement.width, placement.height);
  zwlr_layer_surface_v1_set_anchor(layerSurface_.get(), placement.anchors);
  zwlr_layer_surface_v1_set_exclusive_zone(layerSurface_.get(), placement.exclusiveZone);
  zwlr_layer_surface_v1_set_keyboard_interactivity(layerSurface_.get(), 0);
  wl_surface_commit(surface_.get());
  connection.flush();
}

}  // namespace veloria
