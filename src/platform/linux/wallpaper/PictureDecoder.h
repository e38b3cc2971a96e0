#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "base/Result.h"
#include "ports/DesktopPicture.h"

namespace veloria {

/// The thumbnail of a picture file, or why there is none. Uses the first frame of an animation, lays transparent pixels
/// over black, and converts colors to sRGB from the color space that the file names. A truncated JPEG is read as far as
/// it goes.
///
/// Refuses pictures above 32768 pixels a side or 512 million in all, and those that need more than 128 MB to decode.
/// Nothing else is bounded: readers of some formats open other files that the picture names, and may block for ever or
/// end the process. So use decodePictureWith() for pictures from outside. Any thread; an SVG picture with text needs a
/// QGuiApplication.
Result<DesktopPicture::Pixels> decodePicture(const std::filesystem::path& file);

inline constexpr double decoderSeconds = 20;

/// Decodes a picture in a process of its own, so that no picture takes longer than `seconds` or more than a gigabyte,
/// or harms this process. `program` must call runAsDecoder() first of all. Any thread; blocks.
Result<DesktopPicture::Pixels> decodePictureWith(const std::string& program, const std::filesystem::path& file,
                                                 double seconds = decoderSeconds);

/// The other side: decodes and ends the process if the program was started to decode a picture; else does nothing.
void runAsDecoder(int argc, char** argv);

/// Makes thumbnails of picture files and remembers the last result: an unchanged file (same path, inode, size and time
/// of modification) is not decoded again, whether decoding succeeded or not. Refuses anything but regular files, and
/// files above 256 MiB. One thread at a time; blocks on the disk and the decoder.
class PictureFile {
 public:
  using Pixels = DesktopPicture::Pixels;
  using Decode = std::function<Result<Pixels>(const std::filesystem::path& file)>;

  explicit PictureFile(Decode decode) : decode_(std::move(decode)) {}

  /// The failure names the file.
  Result<Pixels> thumbnail(const std::filesystem::path& path);

 private:
  struct Identity {
    std::filesystem::path path;
    dev_t device;
    ino_t inode;
    off_t size;
    time_t seconds;
    long nanoseconds;
    bool operator==(const Identity&) const = default;
  };

  Decode decode_;
  std::optional<Identity> last_;
  Result<Pixels> lastResult_ = Failure{};
};

}  // namespace veloria
