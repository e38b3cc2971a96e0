#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Geometry.h"
#include "gpu/Types.h"
#include "ports/FrameTarget.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// Where the overlay is relative to panels and windows.
enum class OverlayLevel {
  desktop,       ///< above the desktop picture, below panels and all windows
  aboveMenuBar,  ///< above panels and windows
};

/// Port: one borderless, transparent, click-through window on one screen. It never takes the focus, appears on all
/// workspaces, and in no task bar, pager or window switcher. Starts hidden. Main thread; no call waits longer than one
/// round trip to the display server.
class OverlayPanel : public FrameTarget {
 public:
  /// Places the window; no effect if it is there already. `frame` is in points in global coordinates (y up); `scale` is
  /// pixels per point.
  virtual void setFrame(const Rect& frame, double scale) = 0;
  virtual void setLevel(OverlayLevel level) = 0;
  /// The level's name in diagnostics: the system's number for it, if it has one.
  virtual std::string levelName(OverlayLevel level) const {
    return level == OverlayLevel::desktop ? "desktop" : "aboveMenuBar";
  }
  /// Requests a colour format (rgba16Float or bgra8Unorm); colorPixelFormat() is the one in use.
  virtual void setPixelFormat(gpu::PixelFormat wanted) = 0;
  /// Above 0.
  virtual void setPreferredFramesPerSecond(double rate) = 0;
  /// While paused no frames are requested and nothing wakes up. Starts paused.
  virtual void setPaused(bool paused) = 0;
  /// Called for every frame that is due while the panel is shown and not paused.
  virtual void setDrawHandler(std::function<void()> handler) = 0;
  virtual void orderFront() = 0;
  virtual void orderOut() = 0;
};

/// Whether a band can be seen on this desktop.
struct Visibility {
  enum class Kind {
    seen,
    mayBeHidden,  ///< it can't be known
    hidden,       ///< all of it is certainly covered
  };
  Kind kind = Kind::seen;
  std::string hint;  ///< for people: what hides the band, and what to do; empty if it is seen
};

/// Port: makes overlays, and knows what this desktop hides.
class OverlayPanelFactory {
 public:
  virtual ~OverlayPanelFactory() = default;
  /// Throws std::runtime_error when the display server refuses.
  virtual std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) = 0;
  /// Whether panels hide a band at `level` on `screen`. `band`: its place in global points, without a bleed.
  virtual Visibility visibility(const Screen& screen, const Rect& band, OverlayLevel level) = 0;
};

}  // namespace veloria
