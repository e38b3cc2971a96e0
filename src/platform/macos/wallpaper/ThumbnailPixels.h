#pragma once

#include <cstdint>
#include <span>

#include "ports/DesktopPicture.h"

namespace veloria {

/// The pixels of a thumbnail of DesktopPicture::side rows and columns from its bytes: red, green, blue and one more a
/// pixel, rows from the top, encoded sRGB, already laid over black. Nothing when there are too few or too many bytes.
std::optional<DesktopPicture::Pixels> thumbnailPixels(std::span<const std::uint8_t> bytes);

}  // namespace veloria
