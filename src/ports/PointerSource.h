#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/Geometry.h"

namespace veloria {

/// Port: where the pointer is. Main thread.
struct PointerSource {
  /// The pointer now, in global points (y up); absent while the system doesn't tell. Asked up to 60 times a second from
  /// the thread that draws: may wait for one answer of the display server, and for nothing else. Empty where the system
  /// never tells.
  std::function<std::optional<Point>()> location;
  /// For people: why `location` is empty.
  std::string reason;
};

}  // namespace veloria
