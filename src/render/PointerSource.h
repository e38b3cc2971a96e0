#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/Geometry.h"

namespace veloria {

/// Port: where the pointer is. Main thread.
struct PointerSource {
  /// The pointer now, in global points (y up); absent while the system doesn't tell. Waits for one round trip to
  /// the display server at most. Empty where the system never tells.
  std::function<std::optional<Point>()> location;
  /// For people: why `location` is empty.
  std::string reason;
};

}  // namespace veloria
