#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture in hyprpaper.conf for the monitor called `screen`, else for every monitor, else the first one. Both
/// forms are read: `wallpaper = DP-1, contain:~/picture.png` and a `wallpaper { monitor = DP-1 path = ... }` block (one
/// key a line). Variables and included files are not followed.
std::optional<std::string> hyprpaperPictureFromText(std::string_view settings, std::string_view screen);

}  // namespace veloria
