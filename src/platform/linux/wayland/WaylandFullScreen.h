#pragma once

#include <memory>
#include <set>
#include <vector>

#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// Whether a full-screen window has the focus on an output, from the compositor's list of windows (wlr foreign toplevel
/// management). Never where the compositor has no such list. The list does not tell which workspace a window is on, so
/// one that is full-screen but without the focus, which may well be on a hidden workspace, does not count. Main thread.
class WaylandFullScreen {
 public:
  /// `connection` must outlive it.
  explicit WaylandFullScreen(WaylandConnection& connection);
  ~WaylandFullScreen();
  WaylandFullScreen(const WaylandFullScreen&) = delete;
  WaylandFullScreen& operator=(const WaylandFullScreen&) = delete;

  /// Costs nothing: what is known from events.
  bool isActive(const WaylandOutput& output) const;

 private:
  struct Window;
  static const wl_registry_listener registryListener;
  static const zwlr_foreign_toplevel_manager_v1_listener managerListener;
  static const zwlr_foreign_toplevel_handle_v1_listener windowListener;

  void add(zwlr_foreign_toplevel_handle_v1* handle);
  void remove(const Window* window);

  WaylandPtr<wl_registry> registry_;
  WaylandPtr<zwlr_foreign_toplevel_manager_v1> manager_;
  std::vector<std::unique_ptr<Window>> windows_;
};

}  // namespace veloria
