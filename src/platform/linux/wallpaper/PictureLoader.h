#pragma once

#include <optional>
#include <string>

#include "platform/linux/wallpaper/DesktopSurroundings.h"
#include "platform/linux/wallpaper/PictureFile.h"

namespace veloria {

/// Finds the desktop's picture and makes its thumbnail: the first source that leads to a readable picture decides.
/// Blocks on the disk, on the X server and, for seconds, on other programs. Any one thread at a time, once it is made
/// on the main thread: that sets QImageReader's allocation limit for the whole process to `decoderMegabytes`.
class PictureLoader {
 public:
  static constexpr int decoderMegabytes = 128;

  explicit PictureLoader(DesktopSurroundings surroundings);
  /// `screen`: the name of the screen whose desktop it is; another screen's picture will do where the name is unknown.
  std::optional<DesktopPicture::Pixels> load(const std::string& screen);

 private:
  DesktopSurroundings surroundings_;
  PictureFile file_;
};

}  // namespace veloria
