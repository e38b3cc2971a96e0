#pragma once

#include "platform/linux/x11/PanelVisibility.h"
#include "platform/linux/x11/X11Docks.h"
#include "platform/linux/x11/X11OverlayPanel.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// Overlay windows on one X server. Main thread.
class X11OverlayPanelFactory final : public OverlayPanelFactory {
 public:
  /// The references must outlive it and its panels. Throws std::runtime_error where the server can't make windows that
  /// let clicks through.
  X11OverlayPanelFactory(X11Connection& connection, X11ScreenProvider& screens, SurfaceMaker makeSurface);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  std::string visibilityHint(const Screen& screen, OverlayLevel level) override;

  const PanelVisual& visual() const { return visual_; }

 private:
  PanelFacts factsOf(const DockWindow& dock);
  std::optional<double> meanAlpha(xcb_window_t topLevel);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
  SurfaceMaker makeSurface_;
  PanelVisual visual_;
};

}  // namespace veloria
