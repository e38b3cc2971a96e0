#include "platform/macos/screens/ScreenList.h"

#include <cmath>

namespace veloria {

namespace {

constexpr double mostPixels = 65535;

bool fits(double length, double scale) {
  return length > 0 && length * scale <= mostPixels;  // false for what is no number
}

bool isUsable(const Screen& screen) {
  return std::isfinite(screen.frame.x) && std::isfinite(screen.frame.y) &&
         fits(screen.frame.width, screen.backingScale) && fits(screen.frame.height, screen.backingScale);
}

}  // namespace

std::vector<Screen> checkedScreens(std::vector<Screen> told) {
  for (Screen& screen : told) {
    if (!(screen.backingScale > 0) || !std::isfinite(screen.backingScale)) screen.backingScale = 1;
  }
  std::erase_if(told, [](const Screen& screen) { return !isUsable(screen); });
  return told;
}

}  // namespace veloria
