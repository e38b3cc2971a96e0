#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

#include "base/Result.h"
#include "ports/DesktopPicture.h"

namespace veloria {

/// Makes thumbnails of picture files and remembers the last one: a file that has not changed since (same path, inode,
/// size and time of modification) is not decoded again, one that could not be decoded neither. Refused: what is no
/// regular file, and files above 256 MiB. Any one thread at a time; blocks as long as the disk and the decoder do.
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
