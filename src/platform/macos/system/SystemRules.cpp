#include "platform/macos/system/SystemRules.h"

#include <algorithm>

namespace veloria {

namespace {

const char* paneIdentifier(SystemPane pane) {
  switch (pane) {
    case SystemPane::menuBar:
      return "com.apple.ControlCenter-Settings.extension";
    case SystemPane::appearance:
      return "com.apple.Appearance-Settings.extension";
    case SystemPane::accessibilityDisplay:
      return "com.apple.Accessibility-Settings.extension?Seeing_Display";
    case SystemPane::wallpaper:
      return "com.apple.Wallpaper-Settings.extension";
  }
  return "";
}

}  // namespace

bool isBatteryPower(std::span<const std::string> states) {
  return std::ranges::find(states, batteryPowerState) != states.end();
}

std::string paneAddress(SystemPane pane) {
  return std::string("x-apple.systempreferences:") + paneIdentifier(pane);
}

std::filesystem::path bundledCommand(const std::filesystem::path& bundle) {
  return bundle / "Contents" / "MacOS" / "nimbra";
}

}  // namespace veloria
