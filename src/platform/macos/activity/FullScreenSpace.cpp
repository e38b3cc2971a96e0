#include "platform/macos/activity/FullScreenSpace.h"

namespace veloria {

namespace {

constexpr double lowestMenuBar = 1;  // points

}  // namespace

bool isFullScreenSpace(std::span<const Screen> screens) {
  if (screens.empty()) return false;
  const Screen& first = screens.front();
  return first.frame.maxY() - first.visibleFrame.maxY() < lowestMenuBar;
}

}  // namespace veloria
