#include "main/commands/Pictures.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageReader>
#include <algorithm>
#include <string_view>

#include "base/Files.h"
#include "main/commands/Command.h"

namespace veloria {

namespace {

constexpr std::int64_t maximumPixels = 64'000'000;

std::uint8_t ratio(unsigned value, unsigned alpha) {
  return static_cast<std::uint8_t>(std::min(255U, (value * 255U + alpha / 2) / alpha));
}

}  // namespace

void unpremultiply(std::span<std::uint8_t> rgba) {
  for (std::size_t i = 0; i + 3 < rgba.size(); i += 4) {
    const unsigned alpha = rgba[i + 3];
    if (alpha == 0 || alpha == 255) continue;
    for (std::size_t channel = 0; channel < 3; ++channel) rgba[i + channel] = ratio(rgba[i + channel], alpha);
  }
}

void layOver(std::span<std::uint8_t> rgba, std::span<const std::uint8_t> ground) {
  for (std::size_t i = 0; i + 3 < rgba.size(); i += 4) {
    const unsigned rest = 255U - rgba[i + 3];
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const unsigned below = (ground[i + channel] * rest + 127) / 255;
      rgba[i + channel] = static_cast<std::uint8_t>(std::min(255U, rgba[i + channel] + below));
    }
    rgba[i + 3] = 255;
  }
}

std::vector<std::uint8_t> loadPicture(const std::string& path, gpu::Size size) {
  QImageReader reader(QString::fromStdString(path));
  const QSize stored = reader.size();
  if (!reader.canRead()) throw WorkError(path + ": " + reader.errorString().toStdString());
  if (std::int64_t{stored.width()} * stored.height() > maximumPixels)
    throw WorkError(path + ": the picture is too large");
  const QSize wanted(static_cast<int>(size.width), static_cast<int>(size.height));
  reader.setScaledSize(wanted);
  QImage image = reader.read();
  if (image.isNull()) throw WorkError(path + ": " + reader.errorString().toStdString());
  if (image.size() != wanted) image = image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  image = image.convertToFormat(QImage::Format_RGBA8888);
  const std::size_t row = std::size_t{size.width} * 4;
  std::vector<std::uint8_t> rgba(row * size.height);
  for (int y = 0; y < wanted.height(); ++y) {
    std::copy_n(image.constScanLine(y), row,
                rgba.begin() + static_cast<std::ptrdiff_t>(row * static_cast<std::size_t>(y)));
  }
  return rgba;
}

void savePng(const std::string& path, gpu::Size size, std::span<const std::uint8_t> rgba) {
  const QImage image(rgba.data(), static_cast<int>(size.width), static_cast<int>(size.height),
                     static_cast<qsizetype>(size.width) * 4, QImage::Format_RGBA8888);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, "PNG")) throw WorkError(path + ": the picture could not be encoded");
  const auto written =
      writeFileAtomically(path, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  if (!written) throw WorkError(written.error());
}

}  // namespace veloria
