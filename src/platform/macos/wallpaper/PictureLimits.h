#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace veloria {

/// What tells whether a picture file is still the same.
struct PictureFileFacts {
  std::filesystem::path path;
  std::uintmax_t bytes = 0;
  std::filesystem::file_time_type written;
  bool operator==(const PictureFileFacts&) const = default;
};

/// Nothing for what is no regular file (links are followed; nothing is opened), is empty or has more than 256 MiB.
std::optional<PictureFileFacts> pictureFileFacts(const std::filesystem::path& path);

/// Whether a picture of this size may be decoded: 1 to 32768 pixels a side, 128 million in all.
bool mayDecode(double width, double height);

/// The longer side that a decoder may reduce the picture to, before it becomes the thumbnail: most decoders do so while
/// they read, which is much faster.
inline constexpr int decodedSide = 512;

}  // namespace veloria
