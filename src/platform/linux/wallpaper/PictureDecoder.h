#pragma once

#include <filesystem>

#include "base/Result.h"
#include "ports/DesktopPicture.h"

namespace veloria {

/// The thumbnail of a picture file, or why there is none. Of an animation the first frame counts; transparent pixels
/// are laid over black; colours are converted to sRGB from the colour space that the file names. A JPEG that is cut off
/// counts as far as it goes.
///
/// Refused: pictures above 32768 pixels a side or 512 million in all, and what needs more than 128 MB to decode. More
/// is not bounded here: readers of some formats follow the names of other files, and may wait for ever or end the
/// process on the way. So pictures from outside are decoded by DecoderProcess. Any thread; an SVG picture with text in
/// it needs a QGuiApplication.
Result<DesktopPicture::Pixels> decodePicture(const std::filesystem::path& file);

}  // namespace veloria
