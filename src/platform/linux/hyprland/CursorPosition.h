#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/Environment.h"
#include "base/Geometry.h"

namespace veloria {

/// Reads Hyprland's answer to "j/cursorpos", an object with the numbers "x" and "y": the pointer in the layout's
/// coordinates (logical pixels, y growing downwards). Nothing for any other bytes and for numbers beyond a million.
std::optional<Point> cursorPositionFromAnswer(std::string_view answer);

/// Where the running Hyprland takes requests: .socket.sock in the instance's folder, which is `hypr/<signature>` in
/// $XDG_RUNTIME_DIR, or in /tmp for versions before 0.40. Nothing unless HYPRLAND_INSTANCE_SIGNATURE names an instance.
std::optional<std::filesystem::path> hyprlandRequestSocket(const Environment& environment);

}  // namespace veloria
