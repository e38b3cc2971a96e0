#include "platform/macos/window/WindowLevel.h"

#include <algorithm>
#include <limits>

namespace veloria {

int windowLevel(OverlayLevel side, std::optional<long> debugLevel, const SystemLevels& system) {
  using Limits = std::numeric_limits<int>;
  if (debugLevel) return static_cast<int>(std::clamp<long>(*debugLevel, Limits::min(), Limits::max()));
  return (side == OverlayLevel::aboveMenuBar ? system.mainMenu : system.desktop) + 1;
}

}  // namespace veloria
