#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/screens/Pacing.h"
#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/x11/X11Connection.h"
#include "ports/EventLoop.h"
#include "ports/PointerSource.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// The monitors that RandR reports (the whole root window without RandR 1.5), with what panels reserve on them. The
/// list is read when it is made and again 250 ms after the last of a burst of changes (2 s after its first at the
/// latest): outputs, panels that come, go or change their strut, and the resources that hold the scale. Main thread.
class X11ScreenProvider final : public ScreenProvider {
 public:
  /// `connection` must outlive it.
  X11ScreenProvider(X11Connection& connection, const ScreenOverrides& overrides);

  std::vector<Screen> screens() override { return screens_; }
  void setChangeHandler(std::function<void()> handler) override;

  /// The place (root pixels) of a panel that is no window on this server, at the top or the bottom of a monitor;
  /// nothing if there is none. The change handler is called as for other panels.
  void setForeignPanel(const std::optional<PixelRect>& place);

  /// The coordinate system of screens().
  const ScreenSpace& space() const { return space_; }
  /// All screens together, root pixels.
  const PixelRect& root() const { return root_; }
  /// The part of `place` (root pixels) that is on the screen it shares most with; empty if there is none.
  PixelRect clippedToScreen(const PixelRect& place) const;
  /// The desktop's panels when the list was last read.
  const std::vector<xcb_window_t>& panels() const { return watched_; }
  /// Called whenever screens(), panels() and space() have been read again, and before the change handler.
  [[nodiscard]] std::shared_ptr<void> onRefresh(std::function<void()> handler);

 private:
  void handle(const xcb_generic_event_t& event);
  bool concerns(const xcb_generic_event_t& event) const;
  bool concernsProperty(const xcb_property_notify_event_t& event) const;
  void changesSettled();
  void refresh();
  std::vector<MonitorDescription> monitors();
  void subtractPanels(std::vector<MonitorDescription>& monitors);
  void watchPanels(const std::vector<struct DockWindow>& docks);

  X11Connection& connection_;
  ScreenOverrides overrides_;
  std::vector<Screen> screens_;
  std::vector<PixelRect> frames_;  ///< of screens_, root pixels
  ScreenSpace space_;
  PixelRect root_;
  std::vector<xcb_window_t> watched_;
  std::optional<PixelRect> foreignPanel_;
  std::shared_ptr<std::function<void()>> changed_ = std::make_shared<std::function<void()>>();
  std::vector<std::weak_ptr<std::function<void()>>> refreshSubscribers_;
  SettledChanges settling_;
  X11Connection::Subscription events_;
};

/// The pointer on an X server: one round trip per call; absent while it is on another X screen or the connection
/// is broken. Both must outlive it. Main thread.
PointerSource x11PointerSource(X11Connection& connection, const X11ScreenProvider& screens);

}  // namespace veloria
