#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace veloria {

/// A picture's address as settings have it, and the screen that they have it for.
struct ScreenPicture {
  std::string screen;
  std::string address;
};

/// The address for `screen`: the last one that names it, else the last one for every screen (`everyScreen` is the name
/// that says so), else the first one at all; nothing when there is none.
std::optional<std::string> choosePicture(std::span<const ScreenPicture> pictures, std::string_view screen,
                                         std::string_view everyScreen);

}  // namespace veloria
