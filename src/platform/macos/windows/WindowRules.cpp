#include "platform/macos/windows/WindowRules.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veloria {

namespace {

constexpr double highestFrameRate = 240;
constexpr double lowestMenuBar = 1;  // points
constexpr double mostPixels = 65535;

bool fits(double length, double scale) {
  return length > 0 && length * scale <= mostPixels;  // false for NaN
}

bool isUsable(const Screen& screen) {
  return std::isfinite(screen.frame.x) && std::isfinite(screen.frame.y) &&
         fits(screen.frame.width, screen.backingScale) && fits(screen.frame.height, screen.backingScale);
}

}  // namespace

int windowLevel(OverlayLevel side, std::optional<long> debugLevel, const SystemLevels& system) {
  using Limits = std::numeric_limits<int>;
  if (debugLevel) return static_cast<int>(std::clamp<long>(*debugLevel, Limits::min(), Limits::max()));
  return (side == OverlayLevel::aboveMenuBar ? system.mainMenu : system.desktop) + 1;
}

long viewFrameRate(double wanted) {
  return wanted > 1 ? std::lround(std::min(wanted, highestFrameRate)) : 1;
}

std::string menuBarHint(OverlayLevel side, bool transparencyReduced) {
  if (side == OverlayLevel::aboveMenuBar || !transparencyReduced) return {};
  return "the menu bar hides the light behind it, because Reduce Transparency is on. Turn that off in System Settings, "
         "Accessibility, Display, or put the light over the menu bar in the settings.";
}

std::vector<Screen> checkedScreens(std::vector<Screen> screens) {
  for (Screen& screen : screens) {
    if (!(screen.backingScale > 0) || !std::isfinite(screen.backingScale)) screen.backingScale = 1;
  }
  std::erase_if(screens, [](const Screen& screen) { return !isUsable(screen); });
  return screens;
}

bool isFullScreenSpace(std::span<const Screen> screens) {
  if (screens.empty()) return false;
  const Screen& first = screens.front();
  return first.frame.maxY() - first.visibleFrame.maxY() < lowestMenuBar;
}

}  // namespace veloria
