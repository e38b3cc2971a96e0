#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/x11/X11Band.h"
#include "platform/linux/x11/X11Docks.h"
#include "ports/OverlayPanel.h"

namespace veloria {

/// What is known about one panel of the desktop.
struct PanelFacts {
  PixelRect bounds;                     ///< root pixels
  std::uint8_t depth = 24;              ///< of its pixels; 32 has an alpha channel
  std::uint32_t opacity = 0xFFFFFFFFU;  ///< _NET_WM_WINDOW_OPACITY
  std::optional<double> meanAlpha;      ///< 0 to 1, of its own pixels; nothing if they can't be read
};

/// Whether a panel lets through what is behind it.
enum class SeeThrough { yes, no, unknown };

SeeThrough seeThrough(const PanelFacts& panel, bool compositorRunning);

/// A hint for a person whose band on `strip` lies under `panels`; empty unless panels that hide it, or may, cover at
/// least half of it.
std::string panelHint(const PixelRect& strip, std::span<const PanelFacts> panels, bool compositorRunning);

/// Bands on one X server. Main thread.
class X11BandFactory final : public OverlayPanelFactory {
 public:
  /// The references must outlive it and its bands. Throws std::runtime_error if the server can't make windows that let
  /// clicks through.
  X11BandFactory(X11Connection& connection, X11ScreenProvider& screens, SurfaceMaker makeSurface);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  std::string visibilityHint(const Screen& screen, OverlayLevel level) override;

  const BandVisual& visual() const { return visual_; }

 private:
  PanelFacts factsOf(const DockWindow& dock);
  std::optional<double> meanAlpha(xcb_window_t topLevel);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
  SurfaceMaker makeSurface_;
  BandVisual visual_;
};

}  // namespace veloria
