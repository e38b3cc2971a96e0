#include "platform/linux/wallpaper/DecoderProcess.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <QGuiApplication>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/linux/wallpaper/PictureDecoder.h"
#include "platform/posix/process/CommandOutput.h"

namespace veloria {

namespace {

constexpr std::string_view option = "--decode-picture";
constexpr std::size_t components = std::size_t{DesktopPicture::side} * DesktopPicture::side * 3;
constexpr std::size_t mostBytes = std::size_t{1} << 16;
constexpr rlim_t mostMemory = rlim_t{1} << 30;
constexpr int firstSignalCode = 128;

/// The sanitizers' own bookkeeping takes terabytes of addresses.
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

/// One byte a component.
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

}  // namespace

Result<DesktopPicture::Pixels> decodePictureWith(const std::string& program, const std::filesystem::path& file,
                                                 double seconds) {
  const auto output = runProgram({program, std::string(option), file.native()}, seconds, mostBytes);
  if (!output) return Failure{"it takes too long to decode"};
  if (output->exitCode == 0 && output->text.size() == components) return pixelsFrom(output->text);
  if (output->exitCode >= firstSignalCode || output->text.empty()) return Failure{"its decoder gave up"};
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

}  // namespace veloria
