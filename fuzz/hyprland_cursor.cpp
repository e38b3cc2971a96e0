// Any bytes as Hyprland's answer: a position that can be used, or none.

#include <cmath>

#include "FuzzTarget.h"
#include "platform/linux/hyprland/HyprlandPointer.h"

void veloria::fuzz(std::string_view bytes) {
  const auto position = cursorPositionFromAnswer(bytes);
  require(!position || (std::abs(position->x) <= 1e6 && std::abs(position->y) <= 1e6));
}
