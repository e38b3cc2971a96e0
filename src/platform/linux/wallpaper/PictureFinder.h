#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Environment.h"

namespace veloria {

/// What the environment tells about the desktop that this program runs on; taken once, so that other threads need not
/// read the environment.
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
};

/// Whom to ask on a desktop, in this order, each once: the desktop's own settings if it is a known one, else the
/// programs that set pictures on Wayland; on X11 then the root window. Under Wayland the X root is never shown and so
/// left out.
std::vector<PictureSource> pictureSources(const DesktopSurroundings& surroundings);

/// The path that an address in somebody's settings leads to: a file: URI of this machine (percent-decoded), a path
/// below `~/` or `$HOME/`, or an absolute path. Nothing for anything else: other schemes and hosts, relative paths, an
/// address with a NUL in it or longer than a path can be. There may be no such file.
std::optional<std::filesystem::path> localPath(std::string_view address, const std::filesystem::path& home);

/// A wallpaper package is a folder with one picture in several sizes, in files such as contents/images/1920x1080.jpg.
/// The name of the one to make a thumbnail of: the smallest that is at least `side` pixels each way, a landscape one
/// before a portrait one; nothing when no name says such a size.
std::optional<std::string> packagePicture(std::span<const std::string> names, int side);

/// The file of the picture that a source names for the screen called `screen`, or for another one where it names none
/// for that. A wallpaper package or a slideshow is resolved to one picture. Nothing when the source is silent, and
/// always for the root pixmap, which is no file. The file may be missing or unreadable. Blocks on the disk and,
/// if a program is asked, for two seconds at most each time. Any thread.
std::optional<std::filesystem::path> findPicture(PictureSource source, const DesktopSurroundings& surroundings,
                                                 std::string_view screen);

}  // namespace veloria
