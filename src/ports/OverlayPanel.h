#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Geometry.h"
#include "gpu/Types.h"
#include "ports/FrameTarget.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// Which side of the panels and windows the overlay is on.
enum class OverlayLevel {
  desktop,       ///< above the desktop picture, below panels and all windows
  aboveMenuBar,  ///< above panels and windows
};

/// Port: one borderless, transparent, click-through window on one screen. It takes no focus, stands on all workspaces,
/// and is in no task bar, pager or window cycle. Made hidden. Main thread; nothing here waits for the display server
/// longer than one round trip.
class OverlayPanel : public FrameTarget {
 public:
  /// Places the panel; does nothing where it is there already. `frame` is in points in global coordinates (y up);
  /// `scale` is pixels per point.
  virtual void setFrame(const Rect& frame, double scale) = 0;
  virtual void setLevel(OverlayLevel level) = 0;
  /// What the level is called in diagnostics: the system's number for it, where it has one.
  virtual std::string levelName(OverlayLevel level) const {
    return level == OverlayLevel::desktop ? "desktop" : "aboveMenuBar";
  }
  /// The wanted colour format (rgba16Float or bgra8Unorm); colorPixelFormat() tells what came of it.
  virtual void setPixelFormat(gpu::PixelFormat wanted) = 0;
  /// Above 0.
  virtual void setPreferredFramesPerSecond(double rate) = 0;
  /// While paused nothing asks for frames and nothing wakes up. Starts paused.
  virtual void setPaused(bool paused) = 0;
  /// Called for every frame that is due while the panel is shown and not paused.
  virtual void setDrawHandler(std::function<void()> handler) = 0;
  virtual void orderFront() = 0;
  virtual void orderOut() = 0;
};

/// Port: makes panels, and knows what a person should be told about this desktop.
class OverlayPanelFactory {
 public:
  virtual ~OverlayPanelFactory() = default;
  /// Throws std::runtime_error when the display server refuses.
  virtual std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) = 0;
  /// A sentence for a person when a band at `level` on `screen` can't be seen (an opaque panel in front), and what to
  /// do about it; empty when it can.
  virtual std::string visibilityHint(const Screen& screen, OverlayLevel level) = 0;
};

}  // namespace veloria
