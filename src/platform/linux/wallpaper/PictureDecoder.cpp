#include "platform/linux/wallpaper/PictureDecoder.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QColorSpace>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/posix/process/Programs.h"

namespace veloria {

namespace {

constexpr int decoderMegabytes = 128;
constexpr int longestSide = 32768;
constexpr long long mostPixels = 512'000'000;
constexpr int side = DesktopPicture::side;

bool isPlausible(const QSize& size) {
  const bool unknown = !size.isValid();  // then the decoder's own limit applies
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

/// Names the format by the file's ending, so that a person knows what to install.
Failure unreadable(const std::filesystem::path& file, const QImageReader& reader) {
  const QByteArray dotAndEnding = QByteArray::fromStdString(file.extension().native()).toLower();
  if (dotAndEnding.size() > 1 && !QImageReader::supportedImageFormats().contains(dotAndEnding.sliced(1))) {
    return {"no reader for " + dotAndEnding.toStdString() + " pictures is installed"};
  }
  return {reader.errorString().toStdString()};
}

constexpr std::string_view option = "--decode-picture";
constexpr std::size_t components = std::size_t{DesktopPicture::side} * DesktopPicture::side * 3;
constexpr std::size_t mostBytes = std::size_t{1} << 16;
constexpr rlim_t mostMemory = rlim_t{1} << 30;
constexpr int firstSignalCode = 128;

/// The sanitizers reserve terabytes of addresses.
constexpr bool memoryCanBeBounded() {
#if defined(__SANITIZE_ADDRESS__)
  return false;
#elif defined(__has_feature)
  return !__has_feature(address_sanitizer);
#else
  return true;
#endif
}

void bound(decltype(RLIMIT_CPU) resource, rlim_t most) {
  const rlimit limit{most, most};
  ::setrlimit(resource, &limit);
}

/// One byte per component.
std::string bytesOf(const DesktopPicture::Pixels& pixels) {
  std::string bytes;
  for (const ColorStop& pixel : pixels) {
    for (const float value : pixel) bytes += static_cast<char>(std::lround(value * 255));
  }
  return bytes;
}

DesktopPicture::Pixels pixelsFrom(std::string_view bytes) {
  DesktopPicture::Pixels pixels;
  const auto at = [&](std::size_t i) { return static_cast<float>(static_cast<unsigned char>(bytes[i])) / 255; };
  for (std::size_t i = 0; i < bytes.size(); i += 3) pixels.push_back({at(i), at(i + 1), at(i + 2)});
  return pixels;
}

constexpr off_t mostFileBytes = off_t{256} << 20;

Failure about(const std::filesystem::path& path, const std::string& problem) {
  return {path.native() + ": " + problem};
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

Result<DesktopPicture::Pixels> decodePictureWith(const std::string& program, const std::filesystem::path& file,
                                                 double seconds) {
  const auto output = runProgram({program, std::string(option), file.native()}, seconds, mostBytes);
  if (!output) return Failure{"decoding takes too long"};
  if (output->exitCode == 0 && output->text.size() == components) return pixelsFrom(output->text);
  if (output->exitCode >= firstSignalCode || output->text.empty()) return Failure{"the decoder failed"};
  return Failure{output->text};
}

void runAsDecoder(int argc, char** argv) {
  if (argc != 3 || argv[1] != option) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  bound(RLIMIT_CORE, 0);
  bound(RLIMIT_CPU, static_cast<rlim_t>(decoderSeconds));
  if (memoryCanBeBounded()) bound(RLIMIT_AS, mostMemory);
  ::qputenv("QT_QPA_PLATFORM", "offscreen");
  ::qunsetenv("QT_QPA_PLATFORMTHEME");
  const QGuiApplication application(argc, argv);
  const auto pixels = decodePicture(argv[2]);
  const std::string text = pixels ? bytesOf(*pixels) : pixels.error();
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
  std::_Exit(pixels ? EXIT_SUCCESS : EXIT_FAILURE);
}

Result<PictureFile::Pixels> PictureFile::thumbnail(const std::filesystem::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return about(path, std::strerror(errno));
  if (!S_ISREG(status.st_mode)) return about(path, "this is not a file");
  if (status.st_size > mostFileBytes) return about(path, "it is too large");
  const Identity identity{path,           status.st_dev,         status.st_ino,
                          status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
  if (last_ != identity) {
    const auto pixels = decode_(path);
    lastResult_ = pixels ? pixels : about(path, pixels.error());
    last_ = identity;
  }
  return lastResult_;
}

}  // namespace veloria
