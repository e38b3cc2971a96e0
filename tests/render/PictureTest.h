#pragma once

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "GpuTest.h"
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
  int brightest(std::uint32_t x, std::uint32_t y) const { return std::max({at(x, y)[0], at(x, y)[1], at(x, y)[2]}); }
  /// The mean of the brightest channels in the columns from `from` to below `to`.
  double mean(std::uint32_t from, std::uint32_t to) const {
    double sum = 0;
    for (std::uint32_t i = 0; i < (to - from) * height; ++i) sum += brightest(from + i / height, i % height);
    return sum / ((to - from) * height);
  }
  double mean() const { return mean(0, width); }
  /// The share of pixels whose brightest channel is above `level`.
  double shareAbove(int level) const {
    double count = 0;
    for (std::uint32_t i = 0; i < width * height; ++i) count += brightest(i % width, i / width) > level ? 1 : 0;
    return count / (width * height);
  }
};

/// The mean difference of two pictures of the same size, 0 to 255.
inline double difference(const Picture& a, const Picture& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.rgba.size(); ++i) sum += std::abs(int{a.rgba[i]} - int{b.rgba[i]});
  return sum / static_cast<double>(a.rgba.size());
}

/// The real pipeline on a clock that the test moves.
class PictureTest : public GpuTest {
 protected:
  void TearDown() override {
    renderer_.reset();
    target_.reset();
    GpuTest::TearDown();
  }

  /// A renderer that has drawn nothing.
  NimbraRenderer& makeRenderer() {
    renderer_.reset();
    renderer_ = std::make_unique<NimbraRenderer>(*device_, *library_, stats_, [this] { return now_; });
    return *renderer_;
  }

  /// The renderer's frame after `seconds`.
  Picture next(double seconds) {
    now_ += seconds;
    renderer_->draw(*target_);
    return shown();
  }

  Picture shown() {
    const auto pixels = target_->pixels();
    return {target_->drawableSize().width, target_->drawableSize().height, {pixels.begin(), pixels.end()}};
  }

  void setSize(gpu::Size size) { target_ = std::make_unique<OffscreenTarget>(*device_, size); }

  /// The frames at the given times (seconds, rising) of one run at 20 frames a second, which is as slow as the renderer
  /// follows.
  std::vector<Picture> pictures(const NimbraConfig& config, gpu::Size size, const std::vector<double>& times) {
    NimbraRenderer& renderer = makeRenderer();
    setSize(size);
    VirtualDriver driver(config, {});
    std::vector<Picture> pictures;
    for (int frame = 0; pictures.size() < times.size(); ++frame) {
      now_ += 1.0 / 20;
      driver.advanceTo(frame / 20.0);
      renderer.config = driver.driven();
      renderer.draw(*target_);
      if (frame / 20.0 + 1e-9 >= times[pictures.size()]) pictures.push_back(shown());
    }
    EXPECT_EQ(renderer.missedFrames(), 0);
    return pictures;
  }

  static NimbraConfig preset(std::string_view name) { return choose(NimbraConfig(), *LookPreset::find(name)); }

  double now_ = 1;
  RenderStats stats_{[this] { return now_; }};
  std::unique_ptr<NimbraRenderer> renderer_;
  std::unique_ptr<OffscreenTarget> target_;
};

}  // namespace veloria::tests
