// How good the picture looks and moves, in figures; docs/look.md tells what they are for.

#include <numbers>

#include "GpuTest.h"
#include "main/commands/VirtualDriver.h"
#include "render/MotionPhases.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"
#include "render/Uniforms.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

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
  /// The standard deviation of the brightest channels.
  double contrast() const {
    const double middle = mean();
    double sum = 0;
    for (std::uint32_t i = 0; i < width * height; ++i) {
      const double away = brightest(i % width, i / width) - middle;
      sum += away * away;
    }
    return std::sqrt(sum / (width * height));
  }
  /// The share of pixels whose brightest channel is above `level`.
  double shareAbove(int level) const {
    double count = 0;
    for (std::uint32_t i = 0; i < width * height; ++i) count += brightest(i % width, i / width) > level ? 1 : 0;
    return count / (width * height);
  }
};

/// The mean difference of two pictures of the same size, 0 to 255.
double difference(const Picture& a, const Picture& b) {
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

  /// A renderer that has drawn nothing, and a target.
  NimbraRenderer& makeRenderer(gpu::Size size) {
    target_ = std::make_unique<OffscreenTarget>(*device_, size);
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

  /// The frames at the given times (seconds, rising) of one run at 20 frames a second, which is as slow as the renderer
  /// follows.
  std::vector<Picture> pictures(const NimbraConfig& config, gpu::Size size, const std::vector<double>& times) {
    NimbraRenderer& renderer = makeRenderer(size);
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

constexpr int litLevel = 48;  ///< a pixel counts as lit when its brightest channel is above this

double linearOf(double encoded) {
  return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

struct Lab {
  double a, b;
  double chroma() const { return std::hypot(a, b); }
  double hue() const { return std::atan2(b, a) * 180 / std::numbers::pi; }
};

/// The two colour axes of OKLab (Ottosson 2020) of encoded values from 0 to 1.
Lab labOf(double red, double green, double blue) {
  const double r = linearOf(red), g = linearOf(green), b = linearOf(blue);
  const double l = std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
  const double m = std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
  const double s = std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
  return {1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
          0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

/// Whether a pixel is of a stop's colour: the same hue, or as pale if the stop has hardly any.
bool isOf(const Lab& pixel, const Lab& stop) {
  if (stop.chroma() < 0.06) return pixel.chroma() < 0.09;
  return pixel.chroma() > 0.3 * stop.chroma() && std::abs(std::remainder(pixel.hue() - stop.hue(), 360.0)) < 22;
}

/// How the lit pixels of pictures are spread over a palette.
struct Colors {
  explicit Colors(const Palette& palette) {
    for (const auto& [red, green, blue] : palette.stops) stops.push_back(labOf(red, green, blue));
  }
  void count(const Picture& picture) {
    for (std::size_t i = 0; i < picture.rgba.size(); i += 12) {
      const auto* p = &picture.rgba[i];
      const auto [low, high] = std::minmax({p[0], p[1], p[2]});
      if (high <= litLevel) continue;
      const Lab pixel = labOf(p[0] / 255.0, p[1] / 255.0, p[2] / 255.0);
      lit += 1;
      white += low >= 250 ? 1 : 0;
      for (std::size_t stop = 0; stop < 4; ++stop) ofStop[stop] += isOf(pixel, stops[stop]) ? 1 : 0;
    }
  }
  double share(std::size_t stop) const { return ofStop[stop] / lit; }

  std::vector<Lab> stops;
  double lit = 0, white = 0;
  std::array<double, 4> ofStop{};
};

using LookTest = PictureTest;

TEST_F(LookTest, PresetsShowAllOfTheirPaletteAndHardlyClipToWhite) {
  for (const auto& look : LookPreset::all()) {
    const NimbraConfig config = choose(NimbraConfig(), look);
    Colors colors(config.palette());
    for (const Picture& picture : pictures(config, {960, 32}, {3, 8})) colors.count(picture);
    ASSERT_GT(colors.lit, 500) << look.name;
    // Loud by its description, and around the whole circle of hues.
    const bool loud = look.name == "Rave";
    EXPECT_LE(colors.white / colors.lit, loud ? 0.03 : 0.01) << look.name;
    for (std::size_t stop = 0; stop < 4 && !loud; ++stop) {
      EXPECT_GT(colors.share(stop), 0.002) << look.name << ", stop " << stop + 1;
    }
  }
}

// Two seconds at most: the software driver cuts halves off where they should be rounded, so its dye fades faster.
TEST_F(LookTest, VulkanAndTheCpuShowTheSameLook) {
  for (const auto& look : LookPreset::all()) {
    const NimbraConfig config = choose(NimbraConfig(), look);
    std::array<std::vector<Picture>, 2> films;
    for (std::size_t i = 0; i < 2; ++i) {
      renderer_.reset();
      target_.reset();
      open(i == 0 ? cpuBackend() : vulkanBackend());
      films[i] = pictures(config, {960, 32}, {0.5, 2});
    }
    for (std::size_t i = 0; i < films[0].size(); ++i) {
      const Picture& cpu = films[0][i];
      const Picture& vulkan = films[1][i];
      EXPECT_NEAR(cpu.mean() / vulkan.mean(), 1, 0.02) << look.name;
      EXPECT_NEAR(cpu.contrast() / vulkan.contrast(), 1, 0.02) << look.name;
      Colors cpuColors(config.palette()), vulkanColors(config.palette());
      cpuColors.count(cpu);
      vulkanColors.count(vulkan);
      for (std::size_t stop = 0; stop < 4; ++stop) {
        EXPECT_NEAR(cpuColors.share(stop), vulkanColors.share(stop), 0.02) << look.name << ", stop " << stop + 1;
      }
    }
  }
}

TEST_F(LookTest, DarkGradientsAreDithered) {
  NimbraConfig config;
  config.exposure = 0.1;  // the light of the default look, as dark as its faintest ends
  const Picture picture = pictures(config, {960, 32}, {6}).front();
  const auto equal = [&](std::uint32_t x, std::uint32_t y, std::uint32_t toX, std::uint32_t toY) {
    return std::equal(picture.at(x, y), picture.at(x, y) + 3, picture.at(toX, toY));
  };
  int dark = 0;
  for (std::uint32_t x = 40; x < 920; ++x) {
    const double mean = picture.mean(x, x + 1);
    if (mean < 3 || mean > 60) continue;
    ++dark;
    std::uint32_t y = 0;
    while (y < 32 && equal(x, y, x + 1, y)) ++y;
    EXPECT_LT(y, 32U) << "columns " << x << " and the next";
  }
  EXPECT_GT(dark, 300) << "too little of the picture is a dark gradient to tell";
  for (std::uint32_t y = 0; y + 1 < 32; ++y) {
    std::uint32_t x = 40;
    while (x < 920 && equal(x, y, x, y + 1)) ++x;
    EXPECT_LT(x, 920U) << "rows " << y << " and the next";
  }
}

TEST_F(LookTest, CalmLooksAreSteadyFromFrameToFrameAndYetMove) {
  for (const auto name : {"Whisper", "Glacier Drift"}) {
    std::vector<double> times;
    for (int i = 0; i < 60; ++i) times.push_back(4 + i / 20.0);
    const auto frames = pictures(preset(name), {480, 24}, times);
    double worst = 0;
    for (std::size_t i = 1; i < frames.size(); ++i) {
      worst = std::max(worst, std::abs(frames[i].mean() / frames[i - 1].mean() - 1));
    }
    EXPECT_LE(worst, 0.01) << name;
    EXPECT_GT(difference(frames.front(), frames.back()), 3 * difference(frames[0], frames[1])) << name;
  }
}

TEST_F(LookTest, TheDefaultLookHasDarkGapsAndIsNotMostlyDark) {
  for (const Picture& picture : pictures(NimbraConfig(), {960, 32}, {5, 10})) {
    EXPECT_GT(picture.shareAbove(75), 0.35);
    EXPECT_LT(picture.shareAbove(75), 0.85);
    EXPECT_LT(picture.shareAbove(254), 0.02) << "clipped";
  }
}

/// A target of floating-point colours, as a surface of extended range is.
struct FloatTarget final : FrameTarget {
  explicit FloatTarget(std::shared_ptr<gpu::Texture> texture) : drawable(std::move(texture)) {}
  gpu::Size drawableSize() const override { return drawable.texture().size(); }
  gpu::PixelFormat colorPixelFormat() const override { return drawable.texture().format(); }
  gpu::Drawable* currentDrawable() override { return &drawable; }
  gpu::OffscreenDrawable drawable;
};

TEST_F(LookTest, ExtendedRangeHoldsMoreThanWhiteIfTheLightIsStrong) {
  const auto texture = makeTexture(gpu::PixelFormat::rgba16Float, {960, 24}, drawnAndRead, gpu::StorageMode::shared);
  FloatTarget target(texture);
  NimbraRenderer& renderer = makeRenderer(target.drawableSize());
  renderer.config = preset("Rave");
  for (int frame = 0; frame < 60; ++frame) {
    now_ += 0.05;
    renderer.draw(target);
  }
  const std::vector<float> values = readFloats(*texture);
  double strong = 0;
  for (std::size_t i = 0; i < values.size(); i += 4) {
    strong += std::max({values[i], values[i + 1], values[i + 2]}) > 1 ? 4 : 0;
  }
  const double share = strong / static_cast<double>(values.size());
  EXPECT_GT(share, 0.01) << "nothing above white";
  EXPECT_LT(share, 0.6) << "everything above white";
  EXPECT_LT(std::ranges::max(values), 4);
}

class MotionTest : public PictureTest {
 protected:
  MotionTest() {
    config_.emitThreshold = 0;  // light everywhere at all times, so that pictures of different times can be compared
    config_.pressureIterations = 4;
    config_.backgroundLift = 0;
  }

  /// A band whose simulated time is `simTime` and whose fields are just cleared.
  void start(double simTime) {
    NimbraRenderer& renderer = makeRenderer({320, 32});
    renderer.config = config_;
    // The first frame stands for 1/60 s, so it takes the clock there.
    renderer.config.timeScale = simTime * 60;
    renderer.draw(*target_);
    renderer.sim().needsClear = true;
    renderer.config = config_;
  }

  /// The worst mean difference between two frames, 0 to 255, while the speed crosses its range in a second.
  double worstFrame(double NimbraConfig::*speed, double highest, double simTime) {
    constexpr int settling = 20;
    start(simTime - settling / 60.0 * config_.timeScale);
    for (int frame = 1; frame < settling; ++frame) next(1.0 / 60);
    Picture before = next(1.0 / 60);
    double worst = 0;
    for (int frame = 0; frame < 60; ++frame) {
      renderer_->config.*speed = highest * frame / 60;
      Picture after = next(1.0 / 60);
      worst = std::max(worst, difference(before, after));
      before = std::move(after);
    }
    return worst;
  }

  NimbraConfig config_;
};

TEST_F(MotionTest, AChangingSpeedNeverThrowsThePictureAbout) {
  constexpr double ownMotion = 0.2;  // of 255: what the picture moves from frame to frame without any change
  const struct {
    const char* name;
    double NimbraConfig::*field;
    double highest;  ///< of its slider
  } speeds[] = {{"colorCycle", &NimbraConfig::colorCycle, 0.1},
                {"raySpeed", &NimbraConfig::raySpeed, 1},
                {"hueSpreadDrift", &NimbraConfig::hueSpreadDrift, 0.1},
                {"curlSpeed", &NimbraConfig::curlSpeed, 0.5},
                {"emitSpeed", &NimbraConfig::emitSpeed, 0.5}};
  for (const auto& [name, field, highest] : speeds) {
    const double early = worstFrame(field, highest, 2);
    const double late = worstFrame(field, highest, timePeriod - config_.timeScale / 2);
    EXPECT_LT(early, 3) << name;
    EXPECT_LT(late, 3) << name << " across the wrap of time";
    EXPECT_LT(late, std::max(1.5 * early, ownMotion)) << name;
  }
}

TEST_F(MotionTest, LitWithinASecondAfterAClearing) {
  for (const auto& [fps, timeScale] : {std::pair{60, 0.02}, {60, 1.9}, {10, 0.02}, {10, 1.9}}) {
    config_.timeScale = timeScale;
    start(100);
    for (int frame = 1; frame < fps; ++frame) next(1.0 / fps);
    EXPECT_GE(next(1.0 / fps).shareAbove(70), 0.3) << fps << " frames a second, time scale " << timeScale;
  }
}

TEST(BandMotion, SwingsTheHueAsFarAsTheCycleSays) {
  const struct {
    double colorCycle, timeScale, swing, tolerance;  // to either side, in turns, over an hour
  } cases[] = {{0, 1, 0, 0},
               {0.0003, 0.18, 0.008, 0.001},  // the default: hardly seen
               {0.0015, 0.16, 0.04, 0.001},   // "Flurry" cycles, slowly
               {0.012, 1.6, 0.04, 0.001},     // a drift stays a drift
               {-0.045, 1.9, 0.5, 0.01}};     // all around
  for (const auto& c : cases) {
    NimbraConfig config;
    config.colorCycle = c.colorCycle;
    BandMotion motion;
    double low = 0, high = 0, furthest = 0;
    for (int frame = 0; frame < 3600 * 20; ++frame) {
      const double before = motion.hueSwing();
      motion.advance(config, 0.05 * c.timeScale, 0.05);
      low = std::min<double>(low, motion.hueSwing());
      high = std::max<double>(high, motion.hueSwing());
      furthest = std::max(furthest, std::abs(motion.hueSwing() - before));
    }
    EXPECT_NEAR(high, c.swing, c.tolerance) << c.colorCycle;
    EXPECT_NEAR(-low, c.swing, c.tolerance) << c.colorCycle;
    EXPECT_LT(furthest, 0.02) << c.colorCycle;
  }
}

}  // namespace
}  // namespace veloria::tests
