#include "desktop/Screenshot.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace veloria::desktop {

Screenshot screenshotFromPixmap(const std::string& bytes) {
  std::istringstream stream(bytes);
  std::string kind;
  int depth = 0;
  Screenshot shot;
  stream >> kind >> shot.width >> shot.height >> depth;
  if (!stream || kind != "P6" || depth != 255 || shot.width <= 0 || shot.height <= 0) {
    throw std::runtime_error("This is no pixmap as expected.");
  }
  const auto start = static_cast<std::size_t>(stream.tellg()) + 1;
  const std::size_t count = static_cast<std::size_t>(shot.width) * static_cast<std::size_t>(shot.height);
  if (bytes.size() < start + count * 3) throw std::runtime_error("A pixmap is cut off.");
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[start + i]); };
  for (std::size_t i = 0; i < count; ++i) shot.pixels.push_back({byte(3 * i), byte(3 * i + 1), byte(3 * i + 2)});
  return shot;
}

double litShare(const Screenshot& picture, const Region& region) {
  int lit = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) {
      const Pixel p = picture.at(x, y);
      const int high = std::max({p.red, p.green, p.blue});
      const int low = std::min({p.red, p.green, p.blue});
      lit += high > 90 && high - low > 40 ? 1 : 0;
    }
  }
  return static_cast<double>(lit) / (region.width * region.height);
}

double difference(const Screenshot& a, const Screenshot& b, const Region& region) {
  double sum = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) {
      const Pixel p = a.at(x, y);
      const Pixel q = b.at(x, y);
      sum += std::abs(p.red - q.red) + std::abs(p.green - q.green) + std::abs(p.blue - q.blue);
    }
  }
  return sum / (3.0 * region.width * region.height);
}

}  // namespace veloria::desktop
