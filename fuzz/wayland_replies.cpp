// What a compositor answers over its own socket, from any bytes: the first line is one answer, the rest the other. What
// is reserved can't be negative, nor can it leave less than nothing of a screen.

#include <algorithm>
#include <array>
#include <cmath>

#include "FuzzTarget.h"
#include "base/StrictJson.h"
#include "platform/linux/hyprland/HyprlandPointer.h"
#include "platform/linux/wayland/CompositorQuestions.h"

namespace veloria {

static void follow(const Result<ReservedEdges>& edges) {
  if (!edges) return;
  for (const auto& [name, insets] : *edges) {
    require(std::min({insets.left, insets.top, insets.right, insets.bottom}) >= 0);
    const PixelRect left = withoutReserved({0, 0, 800, 600}, insets);
    require(left.x >= 0 && left.y >= 0 && left.width >= 0 && left.height >= 0);
    require(left.right() <= 800 && left.bottom() <= 600);
  }
}

void fuzz(std::string_view bytes) {
  const std::string_view first = bytes.substr(0, bytes.find('\n'));
  const std::string_view rest = bytes.substr(std::min(bytes.size(), first.size() + 1));
  follow(swayReservedEdges(first, rest));
  follow(hyprlandReservedEdges(bytes));
  follow(plasmaReservedEdges(bytes, std::array{MonitorDescription{"A", {0, 0, 800, 600}, {}}}));
  for (const auto& covered : {swayCoveredOutputs(bytes), hyprlandCoveredOutputs(first, rest)}) {
    require(!covered || covered->size() <= bytes.size());
  }
  if (const auto stacking = swayLayerStacking(bytes)) require(static_cast<int>(*stacking) <= 1);
  const auto cursor = cursorPositionFromAnswer(bytes);
  require(!cursor || (std::abs(cursor->x) <= 1e6 && std::abs(cursor->y) <= 1e6));
  const auto length = swayPayloadLength(bytes, 1);
  require(!length || *length <= maximumJsonBytes);
}

}  // namespace veloria
