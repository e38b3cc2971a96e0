#pragma once

#include <memory>
#include <set>
#include <vector>

#include "platform/linux/wayland/FullScreenInquiry.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// Whether a full-screen window is seen on an output. The compositor's own word counts, where it gives one. It is asked
/// with each call of isActive(), and between two calls once, when its list of windows (wlr foreign toplevel management)
/// has changed, so that the next call knows of it.
///
/// Where nobody says what is visible, only that list is there, which doesn't know workspaces: a full-screen window
/// counts until another one on the same output gets the focus, or it is minimised, closed or no longer full-screen. So
/// an empty workspace on that output counts as covered. Never where there is no such list. Main thread.
class WaylandFullScreen {
 public:
  /// `connection` must outlive it, and `question` what it needs.
  WaylandFullScreen(WaylandConnection& connection, FullScreenInquiry::Question question);
  ~WaylandFullScreen();
  WaylandFullScreen(const WaylandFullScreen&) = delete;
  WaylandFullScreen& operator=(const WaylandFullScreen&) = delete;

  /// What was known last; waits for nobody. To be called about once a second.
  bool isActive(const WaylandOutput& output);

 private:
  struct Window;
  static const wl_registry_listener registryListener;
  static const zwlr_foreign_toplevel_manager_v1_listener managerListener;
  static const zwlr_foreign_toplevel_handle_v1_listener windowListener;

  void add(zwlr_foreign_toplevel_handle_v1* handle);
  void remove(const Window* window);
  void windowsChanged();
  void markHidden();

  WaylandPtr<wl_registry> registry_;
  WaylandPtr<zwlr_foreign_toplevel_manager_v1> manager_;
  std::vector<std::unique_ptr<Window>> windows_;
  bool askAtOnce_ = false;  ///< at the next change: somebody wants to know
  FullScreenInquiry inquiry_;
};

}  // namespace veloria
