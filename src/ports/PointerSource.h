#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/Geometry.h"

namespace veloria {

/// Port: where the pointer is. Main thread.
struct PointerSource {
  /// The pointer's position in global points (y up); nothing while it is unknown. Called up to 60 times a second on the
  /// thread that draws: may wait for one reply of the display server, and for nothing else. Empty if the system never
  /// reports it.
  std::function<std::optional<Point>()> location;
  /// For people: why `location` is empty.
  std::string reason;
  /// Called with the place near which positions matter whenever it may have changed, and with an empty one when none
  /// do. May be empty.
  std::function<void(const Rect& place)> follow = {};
};

}  // namespace veloria
