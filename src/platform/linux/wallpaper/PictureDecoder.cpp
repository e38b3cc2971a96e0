#include "platform/linux/wallpaper/PictureDecoder.h"

#include <fcntl.h>
#include <unistd.h>

#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <cerrno>
#include <cstring>
#include <utility>

namespace veloria {

namespace {

constexpr int decoderMegabytes = 128;
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

/// Formats are named by the files' endings, so that a person knows what to install.
Failure unreadable(const std::filesystem::path& file, const QImageReader& reader) {
  const QByteArray dotAndEnding = QByteArray::fromStdString(file.extension().native()).toLower();
  if (dotAndEnding.size() > 1 && !QImageReader::supportedImageFormats().contains(dotAndEnding.sliced(1))) {
    return {"no reader for " + dotAndEnding.toStdString() + " pictures is installed"};
  }
  return {reader.errorString().toStdString()};
}

}  // namespace

Result<DesktopPicture::Pixels> decodePicture(const std::filesystem::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return Failure{std::strerror(errno)};
  QFile opened;
  if (!opened.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    ::close(descriptor);
    return Failure{opened.errorString().toStdString()};
  }
  QImageReader::setAllocationLimit(decoderMegabytes);
  QImageReader reader(&opened);
  if (!reader.canRead()) return unreadable(file, reader);
  if (!isPlausible(reader.size())) return Failure{"the picture is too large"};
  reader.setScaledSize({side, side});
  QImage image = reader.read();
  if (image.isNull()) return unreadable(file, reader);
  if (image.size() != QSize(side, side)) image = image.scaled(side, side, Qt::IgnoreAspectRatio);
  const QImage converted = inSrgb(std::move(image));
  if (converted.size() != QSize(side, side)) return Failure{"the picture is too large"};
  return pixelsOf(converted);
}

}  // namespace veloria
