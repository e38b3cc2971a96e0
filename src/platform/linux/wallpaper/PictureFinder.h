#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Environment.h"

namespace veloria {

/// The desktop that this program runs on, according to the environment. Read once, so that other threads need not read
/// the environment.
struct DesktopSurroundings {
  std::vector<std::string> desktops;          ///< names of the desktop in lower case, the most specific one first
  bool wayland = false;                       ///< a Wayland compositor shows the desktop
  std::string display;                        ///< the X display; empty without one
  std::filesystem::path home;                 ///< empty if unknown
  std::filesystem::path config;               ///< the folder of all programs' settings; empty if unknown
  std::filesystem::path processes = "/proc";  ///< the list of processes
};

/// Names as in DesktopNames.h, folders as in UserFolders.h.
DesktopSurroundings desktopSurroundings(const Environment& environment);

/// What can name the desktop's picture.
enum class PictureSource {
  gnome,       ///< settings of GNOME and of desktops based on it
  cinnamon,    ///< settings of Cinnamon
  mate,        ///< settings of MATE
  plasma,      ///< settings of KDE Plasma
  xfce,        ///< settings of Xfce
  swaybg,      ///< command line of the running swaybg
  swww,        ///< answer of the running swww daemon
  hyprpaper,   ///< settings of hyprpaper
  rootPixmap,  ///< the pixmap that programs set on the X root window
};

/// The sources to ask on a desktop, in order and without repeats: the desktop's own settings if it is known, else the
/// programs that set pictures on Wayland; on X11, then the root window. Wayland never shows the X root, so it is left
/// out there.
std::vector<PictureSource> pictureSources(const DesktopSurroundings& surroundings);

/// The path of an address in settings: a file: URI of this machine (percent-decoded), a path below `~/` or `$HOME/`, or
/// an absolute path. Empty for anything else: other schemes and hosts, relative paths, an address with a NUL or longer
/// than a path can be. The file may not exist.
std::optional<std::filesystem::path> localPath(std::string_view address, const std::filesystem::path& home);

/// A wallpaper package is a folder with one picture in several sizes, in files such as contents/images/1920x1080.jpg.
/// Returns the name of the best one for a thumbnail: the smallest with at least `side` pixels each way, landscape
/// before portrait; empty if no name has such a size.
std::optional<std::string> packagePicture(std::span<const std::string> names, int side);

/// The file of the picture that a source names for the screen called `screen`, or for another screen if it names none
/// for that one. Resolves a wallpaper package or a slideshow to one picture. Empty if the source names none, and always
/// for the root pixmap, which is not a file. The file may be missing or unreadable. Blocks on the disk and on the
/// programs that it runs, two seconds at most each. Any thread.
std::optional<std::filesystem::path> findPicture(PictureSource source, const DesktopSurroundings& surroundings,
                                                 std::string_view screen);

}  // namespace veloria
