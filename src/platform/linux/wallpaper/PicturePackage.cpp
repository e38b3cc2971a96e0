#include "platform/linux/wallpaper/PicturePackage.h"

#include <charconv>
#include <string_view>
#include <tuple>

namespace veloria {

namespace {

struct PixelSize {
  int width;
  int height;
};

/// "1920x1080.jpg"
std::optional<PixelSize> sizeInName(std::string_view name) {
  const char* const end = name.data() + name.size();
  PixelSize size{};
  const auto width = std::from_chars(name.data(), end, size.width);
  if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return std::nullopt;
  const auto height = std::from_chars(width.ptr + 1, end, size.height);
  if (height.ec != std::errc() || height.ptr == end || *height.ptr != '.') return std::nullopt;
  return size;
}

}  // namespace

std::optional<std::string> packagePicture(std::span<const std::string> names, int side) {
  std::optional<std::string> best;
  std::tuple<bool, long long> bestRank;
  for (const std::string& name : names) {
    const auto size = sizeInName(name);
    if (!size || size->width < side || size->height < side) continue;
    const std::tuple rank(size->width < size->height, static_cast<long long>(size->width) * size->height);
    if (best && bestRank <= rank) continue;
    best = name;
    bestRank = rank;
  }
  return best;
}

}  // namespace veloria
