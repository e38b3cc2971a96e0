#pragma once

#include <filesystem>
#include <string>

#include "base/Result.h"
#include "ports/DesktopPicture.h"

namespace veloria {

/// The thumbnail of a picture file, or why there is none. Of an animation the first frame counts; transparent pixels
/// are laid over black; colours are converted to sRGB from the colour space that the file names. A JPEG that is cut off
/// counts as far as it goes.
///
/// Refused: pictures above 32768 pixels a side or 512 million in all, and what needs more than 128 MB to decode. More
/// is not bounded here: readers of some formats follow the names of other files, and may wait for ever or end the
/// process on the way. So pictures from outside are decoded by decodePictureWith(). Any thread; an SVG picture with
/// text in it needs a QGuiApplication.
Result<DesktopPicture::Pixels> decodePicture(const std::filesystem::path& file);

inline constexpr double decoderSeconds = 20;

/// Decodes a picture in a process of its own, so that none, whatever is in it, takes longer than `seconds` or more than
/// a gigabyte, or harms this process. `program`: one of ours, which calls runAsDecoder() first of all. Any thread;
/// blocks.
Result<DesktopPicture::Pixels> decodePictureWith(const std::string& program, const std::filesystem::path& file,
                                                 double seconds = decoderSeconds);

/// The other side: does nothing unless the program was started to decode a picture; else does that and ends the
/// process.
void runAsDecoder(int argc, char** argv);

}  // namespace veloria
