#include "platform/linux/pulse/Monitor.h"

#include <pulse/def.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace veloria {

Result<Monitor> monitorOf(const Output& output) {
  if (output.monitorIndex == PA_INVALID_INDEX || output.monitorName.empty()) {
    return Failure{"The output \"" + output.description + "\" has no monitor, so its sound can't be captured."};
  }
  return Monitor{output.monitorIndex, output.monitorName};
}

std::size_t deinterleave(std::span<const std::byte> bytes, std::span<float> left, std::span<float> right) {
  using Frame = std::array<float, 2>;
  const std::size_t frames = std::min({bytes.size() / sizeof(Frame), left.size(), right.size()});
  for (std::size_t i = 0; i < frames; ++i) {
    Frame frame;
    std::memcpy(frame.data(), bytes.data() + i * sizeof(Frame), sizeof(Frame));
    left[i] = frame[0];
    right[i] = frame[1];
  }
  return frames;
}

}  // namespace veloria
