// How good the picture looks, in figures; docs/look.md tells what they are for.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "PictureFixture.h"

namespace veloria::tests {
namespace {

constexpr int litLevel = 48;  ///< a pixel counts as lit when its brightest channel is above this

double linearOf(double encoded) {
  return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

struct Lab {
  double lightness, a, b;
  double chroma() const { return std::hypot(a, b); }
  double hue() const { return std::atan2(b, a) * 180 / std::numbers::pi; }
};

/// OKLab (Ottosson 2020) of encoded values from 0 to 1.
Lab labOf(double red, double green, double blue) {
  const double r = linearOf(red), g = linearOf(green), b = linearOf(blue);
  const double l = std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
  const double m = std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
  const double s = std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
  return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
          1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
          0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

double degreesBetween(double a, double b) {
  return std::abs(std::remainder(a - b, 360.0));
}

/// Whether a pixel is of a stop's colour: the same hue, or as pale where the stop has hardly any.
bool isOf(const Lab& pixel, const Lab& stop) {
  if (stop.chroma() < 0.06) return pixel.chroma() < 0.09;
  return pixel.chroma() > 0.3 * stop.chroma() && degreesBetween(pixel.hue(), stop.hue()) < 22;
}

double meanOfColumns(const Picture& picture, std::uint32_t from, std::uint32_t to) {
  double sum = 0;
  for (std::uint32_t x = from; x < to; ++x) {
    for (std::uint32_t y = 0; y < picture.height; ++y) sum += picture.brightest(x, y);
  }
  return sum / ((to - from) * picture.height);
}

bool columnsAreEqual(const Picture& picture, std::uint32_t a, std::uint32_t b) {
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    if (!std::equal(picture.at(a, y), picture.at(a, y) + 3, picture.at(b, y))) return false;
  }
  return true;
}

bool rowsAreEqual(const Picture& picture, std::uint32_t a, std::uint32_t b, std::uint32_t from, std::uint32_t to) {
  return std::equal(picture.at(from, a), picture.at(to, a), picture.at(from, b));
}

class LookTest : public PictureTest {};

TEST_F(LookTest, darkGradientsAreDithered) {
  NimbraConfig config;
  config.exposure = 0.1;  // the light of the default look, as dark as its faintest ends
  const Picture picture = take(config, {.size = {960, 32}, .seconds = 6, .fps = 20});
  int dark = 0;
  for (std::uint32_t x = 40; x + 1 < 920; ++x) {
    const double mean = meanOfColumns(picture, x, x + 1);
    if (mean < 3 || mean > 60) continue;
    ++dark;
    EXPECT_FALSE(columnsAreEqual(picture, x, x + 1)) << "columns " << x << " and the next";
  }
  EXPECT_GT(dark, 300) << "too little of the picture is a dark gradient to tell";
  for (std::uint32_t y = 0; y + 1 < picture.height; ++y) {
    EXPECT_FALSE(rowsAreEqual(picture, y, y + 1, 40, 920)) << "rows " << y << " and the next";
  }
}

/// What the lit pixels of some pictures are like: shares of them.
struct LitShares {
  double lit = 0;
  double white = 0;
  std::array<double, 4> stops{};
};

LitShares sharesOf(const std::vector<Picture>& pictures, const Palette& palette) {
  LitShares shares;
  std::array<Lab, 4> stops;
  for (std::size_t i = 0; i < 4; ++i) stops[i] = labOf(palette.stops[i][0], palette.stops[i][1], palette.stops[i][2]);
  for (const Picture& picture : pictures) {
    for (std::size_t i = 0; i < picture.rgba.size(); i += 4) {
      const auto* p = &picture.rgba[i];
      const auto [low, high] = std::minmax({p[0], p[1], p[2]});
      if (high <= litLevel) continue;
      const Lab pixel = labOf(p[0] / 255.0, p[1] / 255.0, p[2] / 255.0);
      shares.lit += 1;
      shares.white += low >= 250 ? 1 : 0;
      for (std::size_t stop = 0; stop < 4; ++stop) shares.stops[stop] += isOf(pixel, stops[stop]) ? 1 : 0;
    }
  }
  shares.white /= shares.lit;
  for (double& stop : shares.stops) stop /= shares.lit;
  return shares;
}

TEST_F(LookTest, presetsShowAllOfTheirPaletteAndHardlyClipToWhite) {
  for (const auto& look : LookPreset::all()) {
    const NimbraConfig config = choose(NimbraConfig(), look);
    const auto pictures = take(config, {.size = {960, 32}, .fps = 20}, {3, 8, 14});
    const LitShares shares = sharesOf(pictures, config.palette());
    ASSERT_GT(shares.lit, 1000) << look.name;
    // Loud by its description, and around the whole circle of hues.
    const bool loud = look.name == "Rave";
    RecordProperty(std::string(look.name) + "White", std::to_string(shares.white));
    EXPECT_LE(shares.white, loud ? 0.03 : 0.01) << look.name;
    for (std::size_t stop = 0; stop < 4 && !loud; ++stop) {
      RecordProperty(std::string(look.name) + std::to_string(stop + 1), std::to_string(shares.stops[stop]));
      EXPECT_GT(shares.stops[stop], 0.002) << look.name << ", stop " << stop + 1;
    }
  }
}

TEST_F(LookTest, calmLooksAreSteadyFromFrameToFrame) {
  for (const auto name : {"Whisper", "Glacier Drift"}) {
    std::vector<double> times;
    for (int i = 0; i < 60; ++i) times.push_back(6 + i / 30.0);
    const auto pictures = take(preset(name), {.fps = 30}, times);
    double worst = 0;
    for (std::size_t i = 1; i < pictures.size(); ++i) {
      worst = std::max(worst, std::abs(pictures[i].mean() / pictures[i - 1].mean() - 1));
    }
    RecordProperty(name, std::to_string(worst));
    EXPECT_LE(worst, 0.01) << name;
  }
}

TEST_F(LookTest, theDefaultLookHasDarkGapsButIsNotMostlyDark) {
  for (const Picture& picture : take(NimbraConfig(), {.size = {960, 32}, .fps = 20}, {5, 10, 20})) {
    const double dark = 1 - picture.shareAbove(75);
    RecordProperty("darkShare", std::to_string(dark));
    EXPECT_GT(dark, 0.15);
    EXPECT_LT(dark, 0.65);
  }
}

TEST_F(LookTest, theEndsAreAsBrightAsTheRest) {
  NimbraConfig config = preset("Deep Nebula");
  config.fadeSide = 0;
  config.emitThreshold = 0;  // light everywhere, so that what differs is the ends' doing
  config.rayIntensity = 0;
  double left = 0, right = 0, all = 0;
  for (const Picture& picture : take(config, {.fps = 20}, {3, 5, 7, 9, 11, 13})) {
    left += meanOfColumns(picture, 0, 24);
    right += meanOfColumns(picture, 936, 960);
    all += meanOfColumns(picture, 0, 960);
  }
  RecordProperty("left", std::to_string(left / all));
  RecordProperty("right", std::to_string(right / all));
  EXPECT_NEAR(left / all, 1, 0.35);
  EXPECT_NEAR(right / all, 1, 0.35);
}

/// A target of floating-point colours, as a surface of extended range is.
class FloatTarget final : public FrameTarget {
 public:
  FloatTarget(std::shared_ptr<gpu::Texture> texture) : texture_(std::move(texture)), drawable_(texture_) {}
  gpu::Size drawableSize() const override { return texture_->size(); }
  gpu::PixelFormat colorPixelFormat() const override { return texture_->format(); }
  gpu::Drawable* currentDrawable() override { return &drawable_; }
  const gpu::Texture& texture() const { return *texture_; }

 private:
  std::shared_ptr<gpu::Texture> texture_;
  gpu::OffscreenDrawable drawable_;
};

TEST_F(LookTest, extendedRangeHoldsMoreThanWhiteWhereTheLightIsStrongest) {
  const NimbraConfig config = preset("Rave");
  double now = 1;
  RenderStats stats([&now] { return now; });
  NimbraRenderer renderer(*device_, *library_, stats, [&now] { return now; });
  FloatTarget target(device_->makeTexture({.format = gpu::PixelFormat::rgba16Float,
                                           .size = {960, 24},
                                           .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::renderTarget,
                                           .storage = gpu::StorageMode::shared,
                                           .label = "extended"}));
  renderer.config = config;
  for (int frame = 0; frame < 60; ++frame) {
    now += 0.05;
    renderer.draw(target);
  }
  const Field field = download(target.texture());
  double strong = 0;
  float strongest = 0;
  for (std::size_t i = 0; i < field.values.size(); i += 4) {
    const float peak = std::max({field.values[i], field.values[i + 1], field.values[i + 2]});
    ASSERT_TRUE(std::isfinite(peak));
    strongest = std::max(strongest, peak);
    strong += peak > 1 ? 1 : 0;
  }
  const double share = strong * 4 / static_cast<double>(field.values.size());
  RecordProperty("aboveWhite", std::to_string(share));
  RecordProperty("strongest", std::to_string(strongest));
  EXPECT_GT(share, 0.01) << "nothing above white";
  EXPECT_LT(share, 0.6) << "everything above white";
  EXPECT_LT(strongest, 4);
}

}  // namespace
}  // namespace veloria::tests
