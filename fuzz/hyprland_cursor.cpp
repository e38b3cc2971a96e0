// Any bytes as Hyprland's answer: a position that can be used, or none.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/linux/hyprland/HyprlandPointer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto position = veloria::cursorPositionFromAnswer({reinterpret_cast<const char*>(data), size});
  if (position && !(std::abs(position->x) <= 1e6 && std::abs(position->y) <= 1e6)) std::abort();
  return 0;
}
