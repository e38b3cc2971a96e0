#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture that `swww query` reports for the output called `screen`, else for the first one with a picture. Its
/// lines are "eDP-1: 1920x1080, scale: 1, currently displaying: image: /path", in newer versions with ": " before.
std::optional<std::string> swwwPictureFromText(std::string_view report, std::string_view screen);

}  // namespace veloria
