#include "platform/linux/wallpaper/DesktopSurroundings.h"

#include "platform/linux/files/DesktopNames.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

DesktopSurroundings desktopSurroundings(const Environment& environment) {
  DesktopSurroundings result;
  result.desktops = desktopNames(environment);
  result.wayland = !environment("WAYLAND_DISPLAY").value_or("").empty();
  result.display = environment("DISPLAY").value_or("");
  result.home = homeFolder(environment).value_or("");
  result.config = configFolder(environment).value_or("").parent_path();
  return result;
}

}  // namespace veloria
