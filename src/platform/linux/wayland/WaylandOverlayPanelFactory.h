#pragma once

#include "platform/linux/wayland/WallpaperPrograms.h"
#include "platform/linux/wayland/WaylandOverlayPanel.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Overlays on one Wayland compositor. Main thread.
class WaylandOverlayPanelFactory final : public OverlayPanelFactory {
 public:
  /// The references must outlive it and its panels. Throws std::runtime_error where the compositor has no layer shell.
  WaylandOverlayPanelFactory(WaylandConnection& connection, WaylandScreenProvider& screens, LayerStacking stacking,
                             WaylandSurfaceMaker makeSurface);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  /// No client can see how opaque another one's surface is, so a panel in front is always a reason for a hint.
  std::string visibilityHint(const Screen& screen, OverlayLevel level) override;

 private:
  WaylandConnection& connection_;
  WaylandScreenProvider& screens_;
  LayerStacking stacking_;
  WaylandSurfaceMaker makeSurface_;
  WallpaperPrograms wallpapers_;
};

}  // namespace veloria
