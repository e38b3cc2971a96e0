#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace veloria::desktop {

/// The colour of one pixel on the screen.
struct Pixel {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Pixel&) const = default;
};

/// What a screen shows.
struct Screenshot {
  int width = 0;
  int height = 0;
  std::vector<Pixel> pixels;  ///< rows from the top
  Pixel at(int x, int y) const {
    return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
  }
};

/// Reads a portable pixmap of 8 bits a component. Throws std::runtime_error for anything else.
Screenshot screenshotFromPixmap(const std::string& bytes);

struct Region {
  int x;
  int y;
  int width;
  int height;
};

/// The share of pixels that are light: clearly coloured, unlike panel, root window and windows in these tests.
double litShare(const Screenshot& picture, const Region& region);

/// The mean difference of two pictures' components, of 255.
double difference(const Screenshot& a, const Screenshot& b, const Region& region);

}  // namespace veloria::desktop
