#pragma once

#include <string>

#include "base/Result.h"
#include "platform/linux/wallpaper/DesktopSurroundings.h"
#include "platform/linux/wallpaper/PictureFile.h"

namespace veloria {

/// Finds the desktop's picture and makes its thumbnail: the first source that leads to a readable picture decides.
/// Blocks on the disk, on the X server and, for seconds, on other programs. Any one thread at a time.
class PictureLoader {
 public:
  PictureLoader(DesktopSurroundings surroundings, PictureFile::Decode decode);
  /// `screen`: the name of the screen whose desktop it is; another screen's picture will do where the name is unknown.
  /// The failure is that of the first source that names a picture.
  Result<DesktopPicture::Pixels> load(const std::string& screen);

 private:
  DesktopSurroundings surroundings_;
  PictureFile file_;
};

}  // namespace veloria
