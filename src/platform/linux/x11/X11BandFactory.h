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
  /// All of `bounds` shows the panel's own pixels and nothing of what is behind it; known from the screen itself, as
  /// compositors have rules of their own.
  bool covers = false;
};

/// Whether a panel lets through what is behind it.
enum class SeeThrough { yes, no, unknown };

SeeThrough seeThrough(const PanelFacts& panel, bool compositorRunning);

/// Whether a band on `strip`, at `edge` of its screen, is seen under `panels`: hidden if panels cover all of it; with a
/// hint if panels that hide it, or may, cover at least half of it.
Visibility visibilityUnder(const PixelRect& strip, PanelEdge edge, std::span<const PanelFacts> panels,
                           bool compositorRunning);

/// Bands on one X server. Main thread.
class X11BandFactory final : public OverlayPanelFactory {
 public:
  /// The references must outlive it and its bands. Throws std::runtime_error if the server can't make windows that let
  /// clicks through.
  X11BandFactory(X11Connection& connection, X11ScreenProvider& screens, SurfaceMaker makeSurface);

  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override;
  /// A panel that is reserved room for but is no window counts as one that may hide the band, also from above.
  Visibility visibility(const Screen& screen, const Rect& band, OverlayLevel level) override;

  const BandVisual& visual() const { return visual_; }

 private:
  PanelFacts factsOf(const DockWindow& dock, const PixelRect& strip);
  std::optional<double> meanAlpha(xcb_window_t topLevel);
  bool isShownAsItIs(xcb_window_t topLevel, const PixelRect& area);

  X11Connection& connection_;
  X11ScreenProvider& screens_;
  SurfaceMaker makeSurface_;
  BandVisual visual_;
};

}  // namespace veloria
