#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture's address in plasma-org.kde.plasma.desktop-appletsrc: that of the desktop on the first screen, else of
/// the first desktop that has one. Only what the wallpaper plugin in use shows counts: a single picture or a
/// slideshow's current one. May be a folder (PicturePackage.h). Nothing while the desktop still has the picture it came
/// with, which the file does not tell.
std::optional<std::string> plasmaPictureFromText(std::string_view settings);

}  // namespace veloria
