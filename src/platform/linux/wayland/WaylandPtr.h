#pragma once

#include <viewporter-client-protocol.h>
#include <wayland-client.h>
#include <wlr-foreign-toplevel-management-unstable-v1-client-protocol.h>
#include <wlr-layer-shell-unstable-v1-client-protocol.h>
#include <wlr-output-power-management-unstable-v1-client-protocol.h>
#include <xdg-output-unstable-v1-client-protocol.h>

#include <memory>

namespace veloria {

/// Destroys an object of the protocol, also in the compositor if the protocol's version allows it.
struct WaylandDestroy {
  void operator()(wl_display* display) const { wl_display_disconnect(display); }
  void operator()(wl_registry* registry) const { wl_registry_destroy(registry); }
  void operator()(wl_compositor* compositor) const { wl_compositor_destroy(compositor); }
  void operator()(wl_callback* callback) const { wl_callback_destroy(callback); }
  void operator()(wl_surface* surface) const { wl_surface_destroy(surface); }
  void operator()(wl_shm* shm) const { wl_shm_destroy(shm); }
  void operator()(wl_shm_pool* pool) const { wl_shm_pool_destroy(pool); }
  void operator()(wl_buffer* buffer) const { wl_buffer_destroy(buffer); }
  void operator()(wl_region* region) const { wl_region_destroy(region); }
  void operator()(wl_output* output) const {
    if (wl_output_get_version(output) >= WL_OUTPUT_RELEASE_SINCE_VERSION) {
      wl_output_release(output);
    } else {
      wl_output_destroy(output);
    }
  }
  void operator()(wp_viewporter* viewporter) const { wp_viewporter_destroy(viewporter); }
  void operator()(wp_viewport* viewport) const { wp_viewport_destroy(viewport); }
  void operator()(zxdg_output_manager_v1* manager) const { zxdg_output_manager_v1_destroy(manager); }
  void operator()(zxdg_output_v1* output) const { zxdg_output_v1_destroy(output); }
  void operator()(zwlr_foreign_toplevel_manager_v1* manager) const {
    zwlr_foreign_toplevel_manager_v1_destroy(manager);
  }
  void operator()(zwlr_foreign_toplevel_handle_v1* window) const { zwlr_foreign_toplevel_handle_v1_destroy(window); }
  void operator()(zwlr_output_power_manager_v1* manager) const { zwlr_output_power_manager_v1_destroy(manager); }
  void operator()(zwlr_output_power_v1* power) const { zwlr_output_power_v1_destroy(power); }
  void operator()(zwlr_layer_surface_v1* surface) const { zwlr_layer_surface_v1_destroy(surface); }
  void operator()(zwlr_layer_shell_v1* shell) const {
    if (zwlr_layer_shell_v1_get_version(shell) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
      zwlr_layer_shell_v1_destroy(shell);
    } else {
      wl_proxy_destroy(reinterpret_cast<wl_proxy*>(shell));
    }
  }
};
template <typename T>
using WaylandPtr = std::unique_ptr<T, WaylandDestroy>;

}  // namespace veloria
