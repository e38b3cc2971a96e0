#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/Environment.h"

namespace veloria {

/// What the environment tells about the desktop that this program runs on; taken once, so that other threads need not
/// look at the environment.
struct DesktopSurroundings {
  std::vector<std::string> desktops;          ///< names of the desktop in lower case, the most specific one first
  bool wayland = false;                       ///< a Wayland compositor shows the desktop
  std::string display;                        ///< the X display; empty without one
  std::filesystem::path home;                 ///< empty when nobody knows it
  std::filesystem::path config;               ///< the folder of all programs' settings; empty when nobody knows it
  std::filesystem::path processes = "/proc";  ///< where processes are listed
};

/// Names as in DesktopNames.h, folders as in UserFolders.h.
DesktopSurroundings desktopSurroundings(const Environment& environment);

}  // namespace veloria
