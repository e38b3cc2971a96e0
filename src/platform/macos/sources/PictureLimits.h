#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

#include "ports/DesktopPicture.h"

namespace veloria {

/// Differs once a picture file has changed.
struct PictureFileFacts {
  std::filesystem::path path;
  std::uintmax_t bytes = 0;
  std::filesystem::file_time_type written;
  bool operator==(const PictureFileFacts&) const = default;
};

/// Nothing for an empty file, one of more than 256 MiB, and anything but a regular file. Links are followed; nothing is
/// opened.
std::optional<PictureFileFacts> pictureFileFacts(const std::filesystem::path& path);

/// Whether a picture of this size in pixels may be decoded: sides of 1 to 32768, 128 million pixels in all.
bool mayDecode(double width, double height);

/// The longer side, in pixels, to which a decoder may reduce the picture before it becomes the thumbnail: most decoders
/// do so while they read, which is much faster.
inline constexpr int decodedSide = 512;

/// The pixels of a thumbnail of DesktopPicture::side rows and columns from its bytes: red, green, blue and an ignored
/// one per pixel, rows from the top, encoded sRGB, already over black. Nothing for a wrong number of bytes.
std::optional<DesktopPicture::Pixels> thumbnailPixels(std::span<const std::uint8_t> bytes);

}  // namespace veloria
