#pragma once

#include "platform/macos/wallpaper/PictureLimits.h"
#include "ports/DesktopPicture.h"

namespace veloria {

/// Makes thumbnails of picture files and remembers the last one: a file that has not changed since is not read again,
/// one that could not be read neither. Of a picture with several images (a desktop picture that follows the day) the
/// first counts. Any one thread at a time; blocks as long as the disk and the decoder do.
class PictureDecoder {
 public:
  std::optional<DesktopPicture::Pixels> thumbnail(const std::filesystem::path& path);

 private:
  std::optional<PictureFileFacts> last_;
  std::optional<DesktopPicture::Pixels> pixels_;
};

}  // namespace veloria
