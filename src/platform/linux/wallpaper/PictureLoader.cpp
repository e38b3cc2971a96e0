#include "platform/linux/wallpaper/PictureLoader.h"

#include <optional>
#include <utility>

#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/RootPixmap.h"

namespace veloria {

PictureLoader::PictureLoader(DesktopSurroundings surroundings, PictureFile::Decode decode)
    : surroundings_(std::move(surroundings)), file_(std::move(decode)) {}

Result<DesktopPicture::Pixels> PictureLoader::load(const std::string& screen) {
  std::optional<Failure> problem;
  for (const PictureSource source : pictureSources(surroundings_)) {
    if (source == PictureSource::rootPixmap) {
      if (auto pixels = rootPixmapThumbnail(surroundings_.display, screen)) return *std::move(pixels);
    } else if (const auto path = findPicture(source, surroundings_, screen)) {
      auto pixels = file_.thumbnail(*path);
      if (pixels) return pixels;
      if (!problem) problem = Failure{pixels.error()};
    }
  }
  return problem.value_or(Failure{"nobody tells which picture the desktop shows"});
}

}  // namespace veloria
