#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The first picture in ~/.fehbg, the shell script with which feh sets its background again: the first absolute path
/// (or one below `~`) on the first line whose command is feh. The line's quotes are read as a shell does; nothing is
/// run.
std::optional<std::string> fehPictureFromText(std::string_view script);

}  // namespace veloria
