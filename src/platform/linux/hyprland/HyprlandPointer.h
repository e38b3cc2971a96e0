#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Geometry.h"
#include "base/MediaClock.h"
#include "ports/PointerSource.h"

namespace veloria {

/// Asks Hyprland where the pointer is. It never waits: each call takes up what has come in since the last one and asks
/// again, so a position is as old as the pause between two calls. Main thread.
///
/// Hyprland closes the connection after its answer; the protocol was checked against its description and a server that
/// speaks it, not against Hyprland itself.
class HyprlandPointer {
 public:
  /// An answer that takes longer counts as none.
  static constexpr double patienceSeconds = 0.5;

  explicit HyprlandPointer(std::filesystem::path requestSocket, MediaClock clock = mediaTime);
  ~HyprlandPointer();
  HyprlandPointer(const HyprlandPointer&) = delete;
  HyprlandPointer& operator=(const HyprlandPointer&) = delete;

  /// The newest position in the layout's coordinates (logical pixels, y growing downwards); absent before the first
  /// answer and while Hyprland doesn't give any.
  std::optional<Point> layoutPosition();

 private:
  struct Question;

  void ask();
  void takeAnswer();

  std::filesystem::path requestSocket_;
  MediaClock clock_;
  std::unique_ptr<Question> question_;
  std::optional<Point> position_;
};

/// The pointer of the Hyprland that listens at `requestSocket`. `toGlobal` turns the layout's coordinates into global
/// points (y up from the bottom left corner of the first screen).
PointerSource hyprlandPointerSource(const std::filesystem::path& requestSocket, std::function<Point(Point)> toGlobal);

}  // namespace veloria
