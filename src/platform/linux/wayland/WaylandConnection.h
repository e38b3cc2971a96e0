#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/wayland/WaylandOutput.h"
#include "platform/linux/wayland/WaylandPtr.h"
#include "ports/EventLoop.h"

namespace veloria {

/// One connection to a Wayland compositor, watched by the event loop. A connection that breaks (the compositor ended,
/// or called something we did an error) is reported once, and from then on every request does nothing. Main thread.
class WaylandConnection {
 public:
  /// Ends the subscription when it is destroyed, which a handler may do.
  using Subscription = std::shared_ptr<void>;

  /// Connects to `displayName`, a socket's name in $XDG_RUNTIME_DIR or an absolute path ($WAYLAND_DISPLAY when empty).
  /// Throws std::runtime_error with a sentence for a person, also if there is no answer for `patience` seconds.
  WaylandConnection(const std::string& displayName, const DescriptorWatcher& watch, TimerFactory& timers,
                    double patience = 5);
  ~WaylandConnection();
  WaylandConnection(const WaylandConnection&) = delete;
  WaylandConnection& operator=(const WaylandConnection&) = delete;

  wl_display* raw() const { return display_.get(); }
  wl_compositor* compositor() const { return compositor_.get(); }
  /// Null if the compositor takes no pictures from memory, which they all do.
  wl_shm* shm() const { return shm_.get(); }
  /// Null if the compositor has no layer shell, and so allows no overlays.
  zwlr_layer_shell_v1* layerShell() const { return layerShell_.get(); }
  /// Null if it offers none.
  wp_viewporter* viewporter() const { return viewporter_.get(); }
  const std::vector<std::shared_ptr<WaylandOutput>>& outputs() const { return outputs_; }
  TimerFactory& timers() const { return timers_; }

  /// Called after an output has come, gone or been described anew.
  [[nodiscard]] Subscription onOutputsChange(std::function<void()> handler);
  /// Called once with a sentence for a person; it must not destroy this object.
  void setBrokenHandler(std::function<void(const std::string&)> handler) { broken_ = std::move(handler); }
  bool isBroken() const { return wl_display_get_error(display_.get()) != 0; }

  /// Sends all pending requests; those that the compositor doesn't take now are sent later. Never blocks.
  void flush();

  /// Handles the events that other users of raw() have read. Costs nothing without any; never reads.
  void dispatchQueued();

 private:
  static const wl_registry_listener registryListener;
  void globalAppeared(std::uint32_t number, std::string_view interface, std::uint32_t version);
  void globalGone(std::uint32_t number);
  void addOutput(std::uint32_t number, std::uint32_t version);
  bool roundTrip(double seconds);
  bool readOnce(double seconds);
  void readable();
  void outputsChanged();
  void reportBreak();

  WaylandPtr<wl_display> display_;
  TimerFactory& timers_;
  WaylandPtr<wl_registry> registry_;
  WaylandPtr<wl_compositor> compositor_;
  WaylandPtr<wl_shm> shm_;
  WaylandPtr<zwlr_layer_shell_v1> layerShell_;
  WaylandPtr<wp_viewporter> viewporter_;
  WaylandPtr<zxdg_output_manager_v1> outputManager_;
  std::vector<std::shared_ptr<WaylandOutput>> outputs_;
  std::vector<std::weak_ptr<std::function<void()>>> subscribers_;
  std::function<void(const std::string&)> broken_;
  bool breakReported_ = false;
  bool dispatching_ = false;
  std::unique_ptr<Timer> flushLater_;
  std::shared_ptr<void> watch_;
};

}  // namespace veloria
