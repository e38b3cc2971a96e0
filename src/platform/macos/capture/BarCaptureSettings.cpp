#include "platform/macos/capture/BarCaptureSettings.h"

#include <algorithm>

namespace veloria {

namespace {

/// Whole pixels; 0 for what can't be a texture's side.
std::uint32_t pixels(double points, double scale) {
  const double length = points * scale;
  return length >= 1 && length < gpu::maxTextureLength + 1.0 ? static_cast<std::uint32_t>(length) : 0;
}

std::optional<std::size_t> indexOf(int wanted, std::span<const int> all) {
  const auto found = std::ranges::find(all, wanted);
  return found == all.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - all.begin()));
}

}  // namespace

std::optional<BarCaptureSettings> barCaptureSettings(const BarRegion& region) {
  const gpu::Size size{pixels(region.rect.width, region.scale), pixels(region.rect.height, region.scale)};
  if (size.width == 0 || size.height == 0) return std::nullopt;
  return BarCaptureSettings{region.rect, size};
}

std::optional<std::size_t> displayToCapture(std::span<const std::uint32_t> displays, std::uint32_t wanted) {
  if (displays.empty()) return std::nullopt;
  const auto found = std::ranges::find(displays, wanted);
  return found == displays.end() ? 0 : static_cast<std::size_t>(found - displays.begin());
}

OwnContent ownContent(std::span<const int> applications, std::span<const int> windowOwners, int own) {
  OwnContent content{indexOf(own, applications), {}};
  if (content.application) return content;
  for (std::size_t i = 0; i < windowOwners.size(); ++i) {
    if (windowOwners[i] == own) content.windows.push_back(i);
  }
  return content;
}

}  // namespace veloria
