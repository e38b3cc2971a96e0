#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The first picture of a GNOME slideshow, an XML file that a desktop's settings may name instead of a picture: the
/// first `file` (or `from`) in it, and where that lists sizes the first of them. Which picture its clock is at is not
/// worked out. Nothing when there is none or the file is no XML up to there.
std::optional<std::string> slideshowPictureFromText(std::string_view xml);

}  // namespace veloria
