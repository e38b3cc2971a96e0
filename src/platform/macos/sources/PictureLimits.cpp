#include "platform/macos/sources/PictureLimits.h"

#include <system_error>

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t mostFileBytes = std::uintmax_t{256} << 20;
constexpr double longestSide = 32768;
constexpr double mostPixels = 128e6;

constexpr std::size_t pixelCount = std::size_t{DesktopPicture::side} * DesktopPicture::side;

float component(std::uint8_t byte) {
  return static_cast<float>(byte) / 255;
}

}  // namespace

std::optional<PictureFileFacts> pictureFileFacts(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  PictureFileFacts facts{path, fs::file_size(path, error), {}};
  if (error || facts.bytes == 0 || facts.bytes > mostFileBytes) return std::nullopt;
  facts.written = fs::last_write_time(path, error);
  return error ? std::nullopt : std::optional(facts);
}

bool mayDecode(double width, double height) {
  const auto isSide = [](double length) { return length >= 1 && length <= longestSide; };
  return isSide(width) && isSide(height) && width * height <= mostPixels;
}

std::optional<DesktopPicture::Pixels> thumbnailPixels(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != pixelCount * 4) return std::nullopt;
  DesktopPicture::Pixels pixels;
  pixels.reserve(pixelCount);
  for (std::size_t at = 0; at < bytes.size(); at += 4) {
    pixels.push_back({component(bytes[at]), component(bytes[at + 1]), component(bytes[at + 2])});
  }
  return pixels;
}

}  // namespace veloria
