#pragma once

#include <filesystem>
#include <optional>

#include "base/Environment.h"

namespace veloria {

/// The panels that this program knows.
enum class PanelKind { gnome, xfce, mate, plasma, cinnamon, lxqt, tint2, polybar, waybar, swaybar };

/// The panel of this session: a known program that runs for this user on the display that the environment names. If
/// several run, the first in the order above. `processes` is a folder as /proc. Blocks for milliseconds. Any thread.
std::optional<PanelKind> runningPanel(const Environment& environment, const std::filesystem::path& processes = "/proc");

}  // namespace veloria
