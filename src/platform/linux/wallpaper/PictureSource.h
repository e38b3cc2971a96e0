#pragma once

#include <vector>

#include "platform/linux/wallpaper/DesktopSurroundings.h"

namespace veloria {

/// Who may know the desktop's picture.
enum class PictureSource {
  gnome,       ///< settings of GNOME and of what is built on it
  cinnamon,    ///< settings of Cinnamon
  mate,        ///< settings of MATE
  plasma,      ///< settings of KDE Plasma
  xfce,        ///< settings of Xfce
  swaybg,      ///< command line of the running swaybg
  swww,        ///< answer of the running swww daemon
  hyprpaper,   ///< settings of hyprpaper
  rootPixmap,  ///< what programs have put on the X root window
  feh,         ///< what feh has set last
  nitrogen,    ///< what nitrogen has set last
};

/// Whom to ask on a desktop, in this order, each once: the desktop's own settings if it is a known one, else the
/// programs that set pictures on Wayland; on X11 then the root window, which tells what is really shown, and last, on
/// unknown desktops, what programs have noted there. Under Wayland the X root is never shown and so left out.
std::vector<PictureSource> pictureSources(const DesktopSurroundings& surroundings);

}  // namespace veloria
