#pragma once

#include <filesystem>
#include <string>

#include "base/Result.h"
#include "ports/DesktopPicture.h"

namespace veloria {

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
