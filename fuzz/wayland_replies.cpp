// What a compositor answers over its own socket, from any bytes: the first line is one answer, the rest the other. What
// is reserved can't be negative, nor can it leave less than nothing of a screen.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/StrictJson.h"
#include "platform/linux/wayland/CompositorQuestions.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void follow(const veloria::Result<veloria::ReservedEdges>& edges) {
  if (!edges) return;
  for (const auto& [name, insets] : *edges) {
    require(std::min({insets.left, insets.top, insets.right, insets.bottom}) >= 0);
    const veloria::PixelRect left = veloria::withoutReserved({0, 0, 800, 600}, insets);
    require(left.x >= 0 && left.y >= 0 && left.width >= 0 && left.height >= 0);
    require(left.right() <= 800 && left.bottom() <= 600);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string_view first = bytes.substr(0, bytes.find('\n'));
  const std::string_view rest = bytes.substr(std::min(bytes.size(), first.size() + 1));
  follow(veloria::swayReservedEdges(first, rest));
  follow(veloria::hyprlandReservedEdges(bytes));
  if (const auto covered = veloria::swayCoveredOutputs(bytes)) require(covered->size() <= size);
  if (const auto covered = veloria::hyprlandCoveredOutputs(first, rest)) require(covered->size() <= size);
  if (const auto stacking = veloria::swayLayerStacking(bytes)) require(static_cast<int>(*stacking) <= 1);
  const auto length = veloria::swayPayloadLength(bytes, 1);
  require(!length || *length <= veloria::maximumJsonBytes);
  return 0;
}
