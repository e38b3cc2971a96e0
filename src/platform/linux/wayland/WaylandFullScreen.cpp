#include "platform/linux/wayland/WaylandFullScreen.h"

#include <algorithm>
#include <string_view>

namespace veloria {

namespace {

constexpr std::uint32_t managerVersion = 3;
/// A compositor that lists more is not believed.
constexpr std::size_t mostWindows = 4096;

}  // namespace

struct WaylandFullScreen::Window {
  WaylandFullScreen* owner = nullptr;
  WaylandPtr<zwlr_foreign_toplevel_handle_v1> handle;
  std::set<wl_output*> outputs;
  bool covers = false;  ///< full-screen, with the focus, not minimised
};

const zwlr_foreign_toplevel_handle_v1_listener WaylandFullScreen::windowListener = {
    .title = [](void*, zwlr_foreign_toplevel_handle_v1*, const char*) {},
    .app_id = [](void*, zwlr_foreign_toplevel_handle_v1*, const char*) {},
    .output_enter = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                       wl_output* output) { static_cast<Window*>(data)->outputs.insert(output); },
    .output_leave = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                       wl_output* output) { static_cast<Window*>(data)->outputs.erase(output); },
    .state =
        [](void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* states) {
          const auto* first = static_cast<const std::uint32_t*>(states->data);
          const auto* end = first + states->size / sizeof(std::uint32_t);
          const auto has = [&](std::uint32_t state) { return std::find(first, end, state) != end; };
          static_cast<Window*>(data)->covers = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_FULLSCREEN) &&
                                               has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) &&
                                               !has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
        },
    .done = [](void*, zwlr_foreign_toplevel_handle_v1*) {},
    .closed =
        [](void* data, zwlr_foreign_toplevel_handle_v1*) {
          const auto* window = static_cast<Window*>(data);
          window->owner->remove(window);
        },
    .parent = [](void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {},
};

const zwlr_foreign_toplevel_manager_v1_listener WaylandFullScreen::managerListener = {
    .toplevel = [](void* data, zwlr_foreign_toplevel_manager_v1*,
                   zwlr_foreign_toplevel_handle_v1* handle) { static_cast<WaylandFullScreen*>(data)->add(handle); },
    .finished = [](void*, zwlr_foreign_toplevel_manager_v1*) {},
};

const wl_registry_listener WaylandFullScreen::registryListener = {
    .global =
        [](void* data, wl_registry* registry, std::uint32_t number, const char* interface, std::uint32_t version) {
          if (std::string_view(interface) != zwlr_foreign_toplevel_manager_v1_interface.name) return;
          auto* self = static_cast<WaylandFullScreen*>(data);
          self->manager_.reset(static_cast<zwlr_foreign_toplevel_manager_v1*>(wl_registry_bind(
              registry, number, &zwlr_foreign_toplevel_manager_v1_interface, std::min(version, managerVersion))));
          zwlr_foreign_toplevel_manager_v1_add_listener(self->manager_.get(), &managerListener, self);
        },
    .global_remove = [](void*, wl_registry*, std::uint32_t) {},
};

WaylandFullScreen::WaylandFullScreen(WaylandConnection& connection)
    : registry_(wl_display_get_registry(connection.raw())) {
  wl_registry_add_listener(registry_.get(), &registryListener, this);
  connection.flush();
}

WaylandFullScreen::~WaylandFullScreen() = default;

bool WaylandFullScreen::isActive(const WaylandOutput& output) const {
  return std::any_of(windows_.begin(), windows_.end(),
                     [&](const auto& window) { return window->covers && window->outputs.contains(output.raw()); });
}

void WaylandFullScreen::add(zwlr_foreign_toplevel_handle_v1* handle) {
  auto window = std::make_unique<Window>();
  window->owner = this;
  window->handle.reset(handle);
  if (windows_.size() >= mostWindows) return;
  zwlr_foreign_toplevel_handle_v1_add_listener(handle, &windowListener, window.get());
  windows_.push_back(std::move(window));
}

void WaylandFullScreen::remove(const Window* window) {
  std::erase_if(windows_, [&](const auto& each) { return each.get() == window; });
}

}  // namespace veloria
