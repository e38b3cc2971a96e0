#include "platform/linux/wallpaper/PictureLoader.h"

#include <QImageReader>
#include <utility>

#include "platform/linux/wallpaper/PictureFinder.h"
#include "platform/linux/wallpaper/RootPixmap.h"

namespace veloria {

PictureLoader::PictureLoader(DesktopSurroundings surroundings) : surroundings_(std::move(surroundings)) {
  QImageReader::setAllocationLimit(decoderMegabytes);
}

std::optional<DesktopPicture::Pixels> PictureLoader::load(const std::string& screen) {
  for (const PictureSource source : pictureSources(surroundings_)) {
    std::optional<DesktopPicture::Pixels> pixels;
    if (source == PictureSource::rootPixmap) {
      pixels = rootPixmapThumbnail(surroundings_.display, screen);
    } else if (const auto path = findPicture(source, surroundings_, screen)) {
      pixels = file_.thumbnail(*path);
    }
    if (pixels) return pixels;
  }
  return std::nullopt;
}

}  // namespace veloria
