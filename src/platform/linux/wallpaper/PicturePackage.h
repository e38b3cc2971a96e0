#pragma once

#include <optional>
#include <span>
#include <string>

namespace veloria {

/// A wallpaper package is a folder with one picture in several sizes, in files such as contents/images/1920x1080.jpg.
/// The name of the one to make a thumbnail of: the smallest that is at least `side` pixels each way, a landscape one
/// before a portrait one; nothing when no name says such a size.
std::optional<std::string> packagePicture(std::span<const std::string> names, int side);

}  // namespace veloria
