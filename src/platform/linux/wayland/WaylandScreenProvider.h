#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/screens/Pacing.h"
#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/wayland/CompositorQuestions.h"
#include "platform/linux/wayland/LayerSurface.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "ports/EventLoop.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// What panels have reserved on these outputs now; nothing if it is unknown.
using ReservedEdgesQuery = std::function<std::optional<ReservedEdges>(std::span<const MonitorDescription>)>;

/// The compositor's outputs, the one at (0, 0) first, with what panels reserve on them. A point is what the compositor
/// calls a logical pixel. The list is read when it is made and again 250 ms after the last of a burst of changes (2 s
/// after its first at the latest): outputs, and the space that panels leave. Main thread.
class WaylandScreenProvider final : public ScreenProvider {
 public:
  /// `connection` must outlive it.
  WaylandScreenProvider(WaylandConnection& connection, ReservedEdgesQuery reserved, const ScreenOverrides& overrides);

  std::vector<Screen> screens() override { return screens_; }
  void setChangeHandler(std::function<void()> handler) override;
  /// Call it when the query has another answer.
  void reservedEdgesChanged() { settling_.note(); }

  /// The coordinate system of screens(), from the compositor's logical pixels (y downwards).
  const ScreenSpace& space() const { return space_; }
  /// The output of the screen with this number; null if it is gone.
  std::shared_ptr<WaylandOutput> output(std::uint32_t number) const;
  /// True if it is known how much panels have reserved, or the environment sets it.
  bool panelsTold() const { return panelsTold_; }
  /// Called whenever screens() have been read again, and before the change handler.
  [[nodiscard]] std::shared_ptr<void> onRefresh(std::function<void()> handler);
  /// Called after panels have come or gone or changed what they reserve (even when in the end it is the same again),
  /// at most once a refresh and after its handlers.
  [[nodiscard]] std::shared_ptr<void> onPanelsMoved(std::function<void()> handler);

 private:
  struct Found {
    std::shared_ptr<WaylandOutput> output;
    MonitorDescription monitor;
  };
  std::vector<Found> plausibleOutputs() const;
  void outputsChanged();
  void changesSettled();
  void refresh();
  void watchSpace();
  void spaceConfigured(std::uint32_t global, std::uint32_t width, std::uint32_t height);

  WaylandConnection& connection_;
  ReservedEdgesQuery reserved_;
  ScreenOverrides overrides_;
  std::vector<Screen> screens_;
  ScreenSpace space_;
  std::map<std::uint32_t, std::weak_ptr<WaylandOutput>> outputs_;  ///< by the screen's number
  bool panelsTold_ = false;
  struct Space {
    std::unique_ptr<LayerSurface> surface;  ///< never shown
    std::pair<std::uint32_t, std::uint32_t> size;
  };
  std::map<std::uint32_t, Space> spaces_;  ///< by the output's number in the registry
  bool panelsMoved_ = false;
  std::vector<std::weak_ptr<std::function<void()>>> panelSubscribers_;
  std::shared_ptr<std::function<void()>> changed_ = std::make_shared<std::function<void()>>();
  std::vector<std::weak_ptr<std::function<void()>>> refreshSubscribers_;
  SettledChanges settling_;
  WaylandConnection::Subscription changes_;
};

}  // namespace veloria
