#include "platform/linux/x11/FullScreenWindow.h"

#include <algorithm>

namespace veloria {

namespace {

constexpr std::uint32_t onAllDesktops = 0xFFFFFFFF;

std::int64_t area(const PixelRect& rect) {
  return rect.empty() ? 0 : static_cast<std::int64_t>(rect.width) * rect.height;
}

bool isShown(const std::optional<std::uint32_t>& desktop, const DesktopsShown& desktops) {
  return desktops.perMonitor || !desktop || !desktops.current || *desktop == onAllDesktops ||
         *desktop == *desktops.current;
}

}  // namespace

DesktopsShown desktopsShown(std::span<const std::uint32_t> current, std::span<const std::uint32_t> viewports) {
  return {current.size() == 1 ? std::optional(current.front()) : std::nullopt,
          std::any_of(viewports.begin(), viewports.end(), [](std::uint32_t value) { return value != 0; })};
}

bool coversScreen(const FullScreenWindow& window, const DesktopsShown& desktops, const PixelRect& screen) {
  if (!window.viewable || window.hidden || window.desktop || !isShown(window.onDesktop, desktops)) return false;
  return 2 * area(intersection(window.bounds, screen)) > area(screen);
}

}  // namespace veloria
