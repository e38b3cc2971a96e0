#pragma once

#include <span>

#include "ports/ScreenProvider.h"

namespace veloria {

/// Whether a full-screen space shows on the first of `screens` (the one with the menu bar): its menu bar takes no room
/// at the top. A menu bar that hides itself looks the same. False without a screen.
bool isFullScreenSpace(std::span<const Screen> screens);

}  // namespace veloria
