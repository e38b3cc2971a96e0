#include "platform/linux/wallpaper/PictureFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QImageReader>

namespace veloria {

namespace {

constexpr off_t mostFileBytes = off_t{256} << 20;
constexpr int longestSide = 32768;
constexpr long long mostPixels = 512'000'000;
constexpr int side = DesktopPicture::side;

bool isPlausible(const QSize& size) {
  const bool unknown = !size.isValid();  // the decoder's own limit holds then
  return unknown || (!size.isEmpty() && size.width() <= longestSide && size.height() <= longestSide &&
                     static_cast<long long>(size.width()) * size.height() <= mostPixels);
}

QImage inSrgb(QImage image) {
  const QColorSpace space = image.colorSpace();
  image = std::move(image).convertToFormat(QImage::Format_ARGB32);
  if (space.isValid() && space != QColorSpace(QColorSpace::SRgb)) {
    image.setColorSpace(space);
    image.convertToColorSpace(QColorSpace::SRgb);
  }
  return image;
}

DesktopPicture::Pixels pixelsOf(const QImage& image) {
  // With premultiplied alpha the colours are what lies over black.
  const QImage overBlack = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  DesktopPicture::Pixels pixels;
  pixels.reserve(std::size_t{side} * side);
  for (int y = 0; y < side; ++y) {
    const auto* row = reinterpret_cast<const QRgb*>(overBlack.constScanLine(y));
    for (int x = 0; x < side; ++x) {
      pixels.push_back({static_cast<float>(qRed(row[x])) / 255, static_cast<float>(qGreen(row[x])) / 255,
                        static_cast<float>(qBlue(row[x])) / 255});
    }
  }
  return pixels;
}

std::optional<DesktopPicture::Pixels> decode(QIODevice& file) {
  QImageReader reader(&file);
  if (!reader.canRead() || !isPlausible(reader.size())) return std::nullopt;
  reader.setScaledSize({side, side});
  QImage image = reader.read();
  if (image.isNull()) return std::nullopt;
  if (image.size() != QSize(side, side)) image = image.scaled(side, side, Qt::IgnoreAspectRatio);
  const QImage converted = inSrgb(std::move(image));
  if (converted.size() != QSize(side, side)) return std::nullopt;
  return pixelsOf(converted);
}

}  // namespace

std::optional<DesktopPicture::Pixels> PictureFile::thumbnail(const std::filesystem::path& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return std::nullopt;
  QFile file;
  if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    ::close(descriptor);
    return std::nullopt;
  }
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > mostFileBytes) {
    return std::nullopt;
  }
  const Identity identity{path,           status.st_dev,         status.st_ino,
                          status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
  if (last_ == identity) return pixels_;
  pixels_ = decode(file);
  last_ = identity;
  return pixels_;
}

}  // namespace veloria
