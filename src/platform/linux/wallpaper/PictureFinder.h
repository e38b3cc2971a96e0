#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "platform/linux/wallpaper/DesktopSurroundings.h"
#include "platform/linux/wallpaper/PictureSource.h"

namespace veloria {

/// The file of the picture that a source names for the screen called `screen`, or for another one where it names none
/// for that. A wallpaper package or a slideshow is resolved to one picture. Nothing when the source is silent, and
/// always for the root pixmap, which is no file. Whether the file can be read is not looked at. Blocks on the disk and,
/// where a program is asked, for two seconds at most each time. Any thread.
std::optional<std::filesystem::path> findPicture(PictureSource source, const DesktopSurroundings& surroundings,
                                                 std::string_view screen);

}  // namespace veloria
