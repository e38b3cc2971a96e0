#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "GpuFixture.h"
#include "main/commands/VirtualDriver.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"
#include "settings/LookPreset.h"

namespace veloria::tests {

/// One frame: premultiplied RGBA, 0 to 255.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgba;

  const std::uint8_t* at(std::uint32_t x, std::uint32_t y) const { return &rgba[(y * width + x) * 4]; }
  int brightest(std::uint32_t x, std::uint32_t y) const {
    const auto* p = at(x, y);
    return std::max({p[0], p[1], p[2]});
  }
  double mean() const {
    double sum = 0;
    for (std::uint32_t i = 0; i < width * height; ++i) sum += rgba[i * 4] + rgba[i * 4 + 1] + rgba[i * 4 + 2];
    return sum / (3.0 * width * height);
  }
  /// The share of pixels whose brightest channel is above `level`.
  double shareAbove(int level) const {
    double count = 0;
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < width; ++x) count += brightest(x, y) > level ? 1 : 0;
    }
    return count / (width * height);
  }
};

/// The mean difference of two pictures of the same size, 0 to 255.
inline double difference(const Picture& a, const Picture& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.rgba.size(); ++i) sum += std::abs(int{a.rgba[i]} - int{b.rgba[i]});
  return sum / static_cast<double>(a.rgba.size());
}

/// Takes pictures with the real pipeline on a virtual clock.
class PictureTest : public GpuFixture {
 protected:
  struct Shot {
    gpu::Size size{960, 24};
    double seconds = 3;
    double fps = 30;
    std::optional<StripGeometry> geometry{};
    std::shared_ptr<TextureBox> backdrop{};
    PointerState pointer{};
  };

  /// The frames at the given times (seconds, rising) of one run.
  std::vector<Picture> take(const NimbraConfig& config, const Shot& shot, const std::vector<double>& times) {
    double now = 1;
    RenderStats stats([&now] { return now; });
    NimbraRenderer renderer(*device_, *library_, stats, [&now] { return now; });
    OffscreenTarget target(*device_, shot.size);
    VirtualDriver driver(config, {});
    renderer.geometry = shot.geometry;
    renderer.backdrop = shot.backdrop;
    renderer.pointer = shot.pointer;
    std::vector<Picture> pictures;
    for (long frame = 0; pictures.size() < times.size(); ++frame) {
      const double t = static_cast<double>(frame) / shot.fps;
      now = 1 + t;
      driver.advanceTo(t);
      renderer.config = driver.driven();
      renderer.draw(target);
      if (t + 1e-9 < times[pictures.size()]) continue;
      const auto pixels = target.pixels();
      pictures.push_back({shot.size.width, shot.size.height, {pixels.begin(), pixels.end()}});
    }
    EXPECT_EQ(renderer.missedFrames(), 0);
    return pictures;
  }

  Picture take(const NimbraConfig& config, const Shot& shot) { return take(config, shot, {shot.seconds}).front(); }

  static NimbraConfig preset(std::string_view name) { return choose(NimbraConfig(), *LookPreset::find(name)); }
};

}  // namespace veloria::tests
