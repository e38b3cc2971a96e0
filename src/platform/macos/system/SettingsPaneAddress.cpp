#include "platform/macos/system/SettingsPaneAddress.h"

namespace veloria {

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

std::string paneAddress(SystemPane pane) {
  return std::string("x-apple.systempreferences:") + paneIdentifier(pane);
}

}  // namespace veloria
