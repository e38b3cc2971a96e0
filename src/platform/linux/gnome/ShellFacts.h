#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/Geometry.h"
#include "platform/linux/screens/ScreenDescription.h"

namespace veloria {

/// What Veloria's extension in GNOME Shell tells about a desktop on Wayland, where no program can find it out. Places
/// are shares of all monitors together: from 0 to 1, (x, y) the top left corner, y growing downwards. Anything else
/// that comes over the bus counts as nothing.
///
/// The extension answers only while it is switched on and this process owns the name that GnomePanelClearing takes.
/// Main thread, with a QCoreApplication that outlives it. Uses the session bus; waits for the bus when it is made,
/// never for the shell.
class ShellFacts final {
 public:
  ShellFacts();
  ~ShellFacts();
  ShellFacts(const ShellFacts&) = delete;
  ShellFacts& operator=(const ShellFacts&) = delete;

  /// Called when answers() or panel() has changed.
  void setChangeHandler(std::function<void()> handler);

  bool answers() const;
  /// The panel's place; nothing while it is not known or empty.
  std::optional<Rect> panel() const;
  /// The monitors that a full-screen window covers, 64 at most.
  const std::vector<Rect>& fullScreen() const;
  /// The last known position in the area of watchPointer(), or the first one outside; nothing before that.
  std::optional<Point> pointer() const;
  /// Asks for the pointer's position in this area, up to 60 times a second while it moves. An empty area ends it. No
  /// effect if unchanged.
  void watchPointer(const Rect& area);

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

/// A place in pixels, each edge rounded by itself; `desktop` has all monitors.
PixelRect pixelsOf(const Rect& shares, const PixelRect& desktop);
/// The opposite; empty for an empty `desktop`.
Rect sharesOf(const PixelRect& pixels, const PixelRect& desktop);
/// True if full-screen windows, which cover `covered`, cover more than half of `monitor`.
bool coverMonitor(const std::vector<Rect>& covered, const PixelRect& monitor, const PixelRect& desktop);

}  // namespace veloria
