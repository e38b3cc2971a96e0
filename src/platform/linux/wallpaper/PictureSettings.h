#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace veloria {

// Find the address of the picture in the settings of desktops and programs; localPath() turns it into a path. The text
// may be anything; no function here reads a file or runs a program.

/// A picture's address in settings, and the screen that it is for.
struct ScreenPicture {
  std::string screen;
  std::string address;
};

/// The address for `screen`: the last one that names it, else the last one for every screen (named `everyScreen`), else
/// the first one at all; empty if there is none.
std::optional<std::string> choosePicture(std::span<const ScreenPicture> pictures, std::string_view screen,
                                         std::string_view everyScreen);

/// The picture's address in what `gsettings list-recursively` prints for a desktop's background: the value of
/// picture-uri, or picture-filename on desktops that use that. With `dark`, picture-uri-dark comes first. Empty if
/// there is none or picture-options is "none".
std::optional<std::string> gsettingsPictureFromText(std::string_view listing, bool dark);

/// True if the output of `gsettings get org.gnome.desktop.interface color-scheme` asks for the dark style.
bool gsettingsPrefersDark(std::string_view value);

/// The picture's address in plasma-org.kde.plasma.desktop-appletsrc: that of the desktop on the first screen, else of
/// the first desktop that has one. Reads only the wallpaper plugin in use: a single picture or a slideshow's current
/// one. May be a wallpaper package (PictureFinder.h). Empty while the desktop has its default picture, which is not in
/// the file.
std::optional<std::string> plasmaPictureFromText(std::string_view settings);

/// The picture's path in xfce4-desktop.xml, for the monitor called `screen`, else for monitor 0, else for the first
/// one; taken from the monitor's first workspace that has a picture. Skips backdrops whose image style is "none". Empty
/// if there is none or the XML is invalid before it.
std::optional<std::string> xfcePictureFromText(std::string_view xml, std::string_view screen);

/// The picture that swaybg shows on the output called `screen`, else on every output, else on the first one with a
/// picture. `arguments`: the command lines of one or more swaybg processes, with a NUL after each argument and another
/// after each process.
std::optional<std::string> swaybgPictureFromText(std::string_view arguments, std::string_view screen);

/// The picture that `swww query` reports for the output called `screen`, else for the first one with a picture. Its
/// lines are "eDP-1: 1920x1080, scale: 1, currently displaying: image: /path", in newer versions with ": " before.
std::optional<std::string> swwwPictureFromText(std::string_view report, std::string_view screen);

/// The picture in hyprpaper.conf for the monitor called `screen`, else for every monitor, else the first one. Both
/// forms are read: `wallpaper = DP-1, contain:~/picture.png` and a `wallpaper { monitor = DP-1 path = ... }` block (one
/// key per line). Variables and included files are not.
std::optional<std::string> hyprpaperPictureFromText(std::string_view settings, std::string_view screen);

/// The first picture of a GNOME slideshow, an XML file that settings may name instead of a picture: the first `file`
/// (or `from`) in it, and the first size if that lists sizes. Ignores the slideshow's clock. Empty if there is none or
/// the XML is invalid before it.
std::optional<std::string> slideshowPictureFromText(std::string_view xml);

}  // namespace veloria
