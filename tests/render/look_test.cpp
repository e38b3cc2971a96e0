// How good the picture looks, in figures; docs/look.md tells what they are for.

#include <array>
#include <cstdlib>
#include <numbers>
#include <string>

#include "PictureTest.h"

namespace veloria::tests {
namespace {

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

class LookTest : public PictureTest {};

TEST_F(LookTest, PresetsShowAllOfTheirPaletteAndHardlyClipToWhite) {
  for (const auto& look : LookPreset::all()) {
    const NimbraConfig config = choose(NimbraConfig(), look);
    std::vector<Lab> stops;
    for (const auto& [red, green, blue] : config.palette().stops) stops.push_back(labOf(red, green, blue));
    double lit = 0;
    double white = 0;
    std::array<double, 4> shares{};
    for (const Picture& picture : pictures(config, {960, 32}, {3, 8})) {
      for (std::size_t i = 0; i < picture.rgba.size(); i += 12) {
        const auto* p = &picture.rgba[i];
        const auto [low, high] = std::minmax({p[0], p[1], p[2]});
        if (high <= litLevel) continue;
        const Lab pixel = labOf(p[0] / 255.0, p[1] / 255.0, p[2] / 255.0);
        lit += 1;
        white += low >= 250 ? 1 : 0;
        for (std::size_t stop = 0; stop < 4; ++stop) shares[stop] += isOf(pixel, stops[stop]) ? 1 : 0;
      }
    }
    ASSERT_GT(lit, 500) << look.name;
    // Loud by its description, and around the whole circle of hues.
    const bool loud = look.name == "Rave";
    EXPECT_LE(white / lit, loud ? 0.03 : 0.01) << look.name;
    for (std::size_t stop = 0; stop < 4 && !loud; ++stop) {
      RecordProperty(std::string(look.name) + std::to_string(stop + 1), std::to_string(shares[stop] / lit));
      EXPECT_GT(shares[stop] / lit, 0.002) << look.name << ", stop " << stop + 1;
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
    RecordProperty(name, std::to_string(worst));
    EXPECT_LE(worst, 0.01) << name;
    EXPECT_GT(difference(frames.front(), frames.back()), 3 * difference(frames[0], frames[1])) << name;
  }
}

TEST_F(LookTest, TheDefaultLookHasDarkGapsAndIsNotMostlyDark) {
  NimbraConfig config;
  for (const Picture& picture : pictures(config, {960, 32}, {5, 10})) {
    const double dark = 1 - picture.shareAbove(75);
    RecordProperty("darkShare", std::to_string(dark));
    EXPECT_GT(dark, 0.15);
    EXPECT_LT(dark, 0.65);
    EXPECT_LT(picture.shareAbove(254), 0.02) << "clipped";
  }
}

TEST_F(LookTest, TheEndsAreAsBrightAsTheRest) {
  NimbraConfig config = preset("Deep Nebula");
  config.fadeSide = 0;
  config.emitThreshold = 0;  // light everywhere, so that what differs is the ends' doing
  config.rayIntensity = 0;
  double left = 0, right = 0, all = 0;
  for (const Picture& picture : pictures(config, {960, 24}, {3, 4, 5, 6, 7, 8})) {
    left += picture.mean(0, 24);
    right += picture.mean(936, 960);
    all += picture.mean();
  }
  EXPECT_NEAR(left / all, 1, 0.35);
  EXPECT_NEAR(right / all, 1, 0.35);
}

TEST_F(LookTest, ATransparentBandIsPremultipliedAndLeavesGaps) {
  NimbraConfig config;
  config.opaqueBackground = false;
  config.ambientLevel = 0;
  const Picture picture = pictures(config, {960, 24}, {4}).front();
  double clear = 0;
  for (std::uint32_t i = 0; i < 960 * 24; ++i) {
    ASSERT_LE(picture.brightest(i % 960, i / 960), picture.at(i % 960, i / 960)[3]);
    clear += picture.at(i % 960, i / 960)[3] < 40 ? 1 : 0;
  }
  EXPECT_GT(clear / (960 * 24), 0.05);
  config.exposure = 0;
  EXPECT_EQ(pictures(config, {960, 24}, {0.2}).front().mean(), 0) << "no light, no dither, no cover";
}

/// A target of floating-point colours, as a surface of extended range is.
class FloatTarget final : public FrameTarget {
 public:
  explicit FloatTarget(std::shared_ptr<gpu::Texture> texture) : drawable_(std::move(texture)) {}
  gpu::Size drawableSize() const override { return drawable_.texture().size(); }
  gpu::PixelFormat colorPixelFormat() const override { return drawable_.texture().format(); }
  gpu::Drawable* currentDrawable() override { return &drawable_; }

 private:
  gpu::OffscreenDrawable drawable_;
};

TEST_F(LookTest, ExtendedRangeHoldsMoreThanWhiteIfTheLightIsStrong) {
  const auto texture = makeTexture(gpu::PixelFormat::rgba16Float, {960, 24}, drawnAndRead, gpu::StorageMode::shared);
  FloatTarget target(texture);
  NimbraRenderer& renderer = makeRenderer();
  renderer.config = preset("Rave");
  for (int frame = 0; frame < 60; ++frame) {
    now_ += 0.05;
    renderer.draw(target);
  }
  const std::vector<float> values = readFloats(*texture);
  double strong = 0;
  float strongest = 0;
  for (std::size_t i = 0; i < values.size(); i += 4) {
    const float peak = std::max({values[i], values[i + 1], values[i + 2]});
    strongest = std::max(strongest, peak);
    strong += peak > 1 ? 4 : 0;
  }
  const double share = strong / static_cast<double>(values.size());
  EXPECT_GT(share, 0.01) << "nothing above white";
  EXPECT_LT(share, 0.6) << "everything above white";
  EXPECT_LT(strongest, 4);
}

TEST_F(LookTest, AbsurdSettingsNeitherHangNorSpoilThePictureForGood) {
  NimbraConfig wild;
  const auto spoil = [](auto& field) {
    using Type = std::remove_reference_t<decltype(field)>;
    if constexpr (std::is_same_v<Type, double>) field = 1e12;
    if constexpr (std::is_same_v<Type, std::int64_t>) field = 9'000'000'000'000'000'000;
  };
#define VELORIA_FIELD(type, name, initial, group) spoil(wild.name);
#include "settings/NimbraConfigFields.h"
  setSize({320, 16});
  NimbraRenderer& renderer = makeRenderer();
  renderer.config = wild;
  for (int i = 0; i < 10; ++i) next(1.0 / 30);
  renderer.config = preset("Northern Lights");
  renderer.resizeSimGrid({320, 16});
  for (int i = 0; i < 60; ++i) next(1.0 / 30);
  EXPECT_GT(shown().shareAbove(70), 0.05);
  setenv("NIMBRA_DEBUG_SOLID", "1", 1);
  const Picture solid = next(1.0 / 30);
  unsetenv("NIMBRA_DEBUG_SOLID");
  EXPECT_EQ(solid.shareAbove(254), 1) << "the diagnostic fills the band";
}

}  // namespace
}  // namespace veloria::tests
