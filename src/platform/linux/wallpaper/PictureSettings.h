#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace veloria {

// What desktops and programs have written about the picture that they show, as the address that their text holds
// (PictureFinder.h says where that leads). Text may be anything; nothing here reads a file or runs a program.

/// A picture's address as settings have it, and the screen that they have it for.
struct ScreenPicture {
  std::string screen;
  std::string address;
};

/// The address for `screen`: the last one that names it, else the last one for every screen (`everyScreen` is the name
/// that says so), else the first one at all; nothing when there is none.
std::optional<std::string> choosePicture(std::span<const ScreenPicture> pictures, std::string_view screen,
                                         std::string_view everyScreen);

/// The picture's address in what `gsettings list-recursively` prints for a desktop's background: the value of
/// picture-uri, or picture-filename where the desktop has that instead. With `dark`, picture-uri-dark comes first.
/// Nothing when there is none or picture-options says that none is shown.
std::optional<std::string> gsettingsPictureFromText(std::string_view listing, bool dark);

/// True when what `gsettings get org.gnome.desktop.interface color-scheme` prints asks for the dark style.
bool gsettingsPrefersDark(std::string_view value);

/// The picture's address in plasma-org.kde.plasma.desktop-appletsrc: that of the desktop on the first screen, else of
/// the first desktop that has one. Only what the wallpaper plugin in use shows counts: a single picture or a
/// slideshow's current one. May be a wallpaper package (PictureFinder.h). Nothing while the desktop still has the
/// picture it came with, which the file does not tell.
std::optional<std::string> plasmaPictureFromText(std::string_view settings);

/// The picture's path in xfce4-desktop.xml, for the monitor called `screen`, else for monitor 0, else for the first
/// one; of a monitor's workspaces the first one that has a picture counts. Backdrops whose image style is "none" are
/// left out. Nothing when there is none or the file is no XML up to there.
std::optional<std::string> xfcePictureFromText(std::string_view xml, std::string_view screen);

/// The picture that swaybg shows on the output called `screen`, else on every output, else on the first one that it has
/// a picture for. `arguments`: the command lines of one or several swaybg processes, each argument ended by a NUL and
/// each process by one more.
std::optional<std::string> swaybgPictureFromText(std::string_view arguments, std::string_view screen);

/// The picture that `swww query` reports for the output called `screen`, else for the first one with a picture. Its
/// lines are "eDP-1: 1920x1080, scale: 1, currently displaying: image: /path", in newer versions with ": " before.
std::optional<std::string> swwwPictureFromText(std::string_view report, std::string_view screen);

/// The picture in hyprpaper.conf for the monitor called `screen`, else for every monitor, else the first one. Both
/// forms are read: `wallpaper = DP-1, contain:~/picture.png` and a `wallpaper { monitor = DP-1 path = ... }` block (one
/// key a line). Variables and included files are not followed.
std::optional<std::string> hyprpaperPictureFromText(std::string_view settings, std::string_view screen);

/// The first picture of a GNOME slideshow, an XML file that a desktop's settings may name instead of a picture: the
/// first `file` (or `from`) in it, and where that lists sizes the first of them. Which picture its clock is at is not
/// worked out. Nothing when there is none or the file is no XML up to there.
std::optional<std::string> slideshowPictureFromText(std::string_view xml);

}  // namespace veloria
