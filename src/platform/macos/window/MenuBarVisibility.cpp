#include "platform/macos/window/MenuBarVisibility.h"

namespace veloria {

std::string menuBarHint(OverlayLevel side, bool transparencyReduced) {
  if (side == OverlayLevel::aboveMenuBar || !transparencyReduced) return {};
  return "the menu bar hides the light behind it, because Reduce Transparency is on. Turn that off in System Settings, "
         "Accessibility, Display, or put the light over the menu bar in the settings.";
}

}  // namespace veloria
