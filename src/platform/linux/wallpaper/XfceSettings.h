#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture's path in xfce4-desktop.xml, for the monitor called `screen`, else for monitor 0, else for the first
/// one; of a monitor's workspaces the first one that has a picture counts. Backdrops whose image style is "none" are
/// left out. Nothing when there is none or the file is no XML up to there.
std::optional<std::string> xfcePictureFromText(std::string_view xml, std::string_view screen);

}  // namespace veloria
