#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>

#include "render/DesktopPicture.h"

namespace veloria {

/// Makes thumbnails of picture files and remembers the last one: a file that has not changed since (same path, inode,
/// size and time of modification) is not read again, one that could not be read neither.
///
/// Refused: what is no regular file (without waiting for it), files above 256 MiB, pictures above 32768 pixels a side
/// or 512 million in all, and what needs more memory to decode than QImageReader's allocation limit for this process
/// (PictureLoader.h). Of an animation the first frame counts; transparent pixels are laid over black; colours are
/// converted to sRGB from the colour space that the file names. A JPEG that is cut off counts as far as it goes.
///
/// Any one thread at a time; blocks as long as the disk and the decoder do.
class PictureFile {
 public:
  std::optional<DesktopPicture::Pixels> thumbnail(const std::filesystem::path& path);

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

  std::optional<Identity> last_;
  std::optional<DesktopPicture::Pixels> pixels_;
};

}  // namespace veloria
