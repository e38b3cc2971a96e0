#include "platform/macos/wallpaper/ThumbnailPixels.h"

namespace veloria {

namespace {

constexpr std::size_t pixelCount = std::size_t{DesktopPicture::side} * DesktopPicture::side;

float component(std::uint8_t byte) {
  return static_cast<float>(byte) / 255;
}

}  // namespace

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
