#include "render/WallpaperPalette.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace veloria {
namespace {

using testing::FloatNear;
using testing::Pointwise;

using Pixels = std::vector<ColorStop>;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr ColorStop red{1, 0, 0};
constexpr ColorStop green{0, 1, 0};
constexpr ColorStop blue{0, 0, 1};
constexpr ColorStop yellow{1, 1, 0};
constexpr ColorStop cyan{0, 1, 1};

/// `count` pixels of each colour.
Pixels picture(const std::vector<std::pair<int, ColorStop>>& parts) {
  Pixels pixels;
  for (const auto& [count, color] : parts) pixels.insert(pixels.end(), static_cast<std::size_t>(count), color);
  return pixels;
}

std::vector<ColorStop> stopsOf(const Pixels& pixels) {
  const auto palette = wallpaperPalette(pixels);
  return palette ? palette->stops : std::vector<ColorStop>{};
}

MATCHER_P(IsColor, wanted, "") {
  return testing::Matches(Pointwise(FloatNear(1e-3F), wanted))(arg);
}

TEST(WallpaperPaletteTest, BoostsToFullBrightnessAndMoreSaturation) {
  struct Case {
    ColorStop from;
    ColorStop to;
  };
  const std::vector<Case> cases{
      {{0.5F, 0.25F, 0.25F}, {1, 0.31034F, 0.31034F}},
      {{0.2F, 0.1F, 0}, {1, 0.5F, 0}},
      {{1, 1, 1}, {1, 1, 1}},
      {{0.0011F, 0, 0}, {1, 0, 0}},
      {{0.001F, 0.001F, 0}, {0.3F, 0.4F, 0.6F}},
      {{0, 0, 0}, {0.3F, 0.4F, 0.6F}},
  };
  for (const Case& c : cases) EXPECT_THAT(boosted(c.from), IsColor(c.to)) << c.from[0];
}

TEST(WallpaperPaletteTest, PicturesWithoutTwoHuesGiveNone) {
  const std::vector<Pixels> cases{
      {},
      picture({{2304, {0.5F, 0.5F, 0.5F}}}),
      picture({{1000, {0.2F, 0.2F, 0.2F}}, {1304, {0.9F, 0.9F, 0.9F}}}),
      picture({{2304, {0.08F, 0, 0}}}),
      picture({{1000, {0.08F, 0, 0}}, {1304, {0, 0, 0.08F}}}),
      picture({{2304, red}}),
      picture({{2304, {0, 0, 0}}, {1, green}}),
      picture({{100, {0.4F, 0.4F, 0.4F}}, {5, red}}),  // grey counts as red's hue
  };
  for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(wallpaperPalette(cases[i]), std::nullopt) << i;
}

TEST(WallpaperPaletteTest, AFewHuesAreFilledUpWithTheLastAndOrderedByLuminance) {
  EXPECT_THAT(stopsOf(picture({{1500, green}, {804, blue}})),
              testing::ElementsAre(IsColor(blue), IsColor(blue), IsColor(blue), IsColor(green)));
  EXPECT_THAT(stopsOf(picture({{804, green}, {1500, blue}})),
              testing::ElementsAre(IsColor(blue), IsColor(green), IsColor(green), IsColor(green)));
  EXPECT_THAT(stopsOf(picture({{30, green}, {20, blue}, {10, red}})),
              testing::ElementsAre(IsColor(blue), IsColor(red), IsColor(red), IsColor(green)));
}

TEST(WallpaperPaletteTest, TheOrderIsThatOfThePictureNotOfTheBoostedColours) {
  const auto stops = stopsOf(picture({{1, red}, {1, {0.1F, 0.1F, 0}}}));
  EXPECT_THAT(stops, testing::ElementsAre(IsColor(yellow), IsColor(yellow), IsColor(yellow), IsColor(red)));
  // Red has 0.2126 of white's luminance, the dim green 0.2146; blue 0.0722, the dim red 0.0765.
  EXPECT_THAT(stopsOf(picture({{1, red}, {3, {0, 0.3F, 0}}}))[3], IsColor(green));
  EXPECT_THAT(stopsOf(picture({{1, blue}, {3, {0.36F, 0, 0}}}))[3], IsColor(red));
}

TEST(WallpaperPaletteTest, OnlyTheFourHeaviestHuesCountAndTiesKeepTheirOrder) {
  EXPECT_THAT(stopsOf(picture({{9, yellow}, {50, green}, {40, red}, {30, blue}, {20, cyan}})),
              testing::ElementsAre(IsColor(blue), IsColor(red), IsColor(green), IsColor(cyan)));
  EXPECT_THAT(stopsOf(picture({{10, blue}, {10, cyan}, {10, green}, {10, yellow}, {10, red}})),
              testing::ElementsAre(IsColor(red), IsColor(green), IsColor(cyan), IsColor(yellow)))
      << "blue has the highest hue and loses the tie";
}

TEST(WallpaperPaletteTest, VotesDependOnBrightnessAndSaturation) {
  // Equal counts: the full colour wins over the pale and the dim one, so each of those is the one repeated.
  const ColorStop pale{0.6F, 0.6F, 1};
  const ColorStop dim{0, 0, 0.3F};
  for (const ColorStop& weak : {pale, dim}) {
    const auto stops = stopsOf(picture({{10, weak}, {10, green}}));
    ASSERT_EQ(stops.size(), 4U);
    EXPECT_EQ(std::ranges::count_if(stops, [](const ColorStop& c) { return c[2] > 0.9F && c[1] < 0.5F; }), 3);
  }
  // 0.02 + 0.42 a pixel against 0.02 + 1: two dim ones lose to one full one, three win.
  EXPECT_THAT(stopsOf(picture({{2, dim}, {1, green}}))[1], IsColor(blue));
  EXPECT_THAT(stopsOf(picture({{3, dim}, {1, green}}))[1], IsColor(green));
  EXPECT_EQ(stopsOf(picture({{1, {0.085F, 0, 0}}, {1, green}})).size(), 4U) << "above 0.08 a pixel has a vote";
}

TEST(WallpaperPaletteTest, AHueTakesTheWeightedMeanOfItsPixels) {
  // Weights 1.02 and 0.02 + 0.7 / 4 in the bin of red; the grey pixels pull the mean off the full colour.
  const auto stops = stopsOf(picture({{1, red}, {1, {0.5F, 0.25F, 0.25F}}, {9, green}}));
  ASSERT_EQ(stops.size(), 4U);
  const float heavy = 1.02F;
  const float light = 0.195F;
  const ColorStop mean{(heavy + 0.5F * light) / (heavy + light), 0.25F * light / (heavy + light),
                       0.25F * light / (heavy + light)};
  EXPECT_THAT(stops[0], IsColor(boosted(mean)));
}

TEST(WallpaperPaletteTest, HuesWrapAndTheirEdgesBelongToOneBin) {
  // Just below red (a trace of blue) and just above it are two bins, 17 and 0.
  EXPECT_EQ(stopsOf(picture({{1, {1, 0, 0.01F}}, {1, {1, 0.01F, 0}}})).size(), 4U);
  // So close to red from below that the hue rounds to a whole turn: still the last bin, not one beyond.
  EXPECT_EQ(stopsOf(picture({{1, {1, 0.5F, 0.50000006F}}, {1, green}})).size(), 4U);
  // One bin is the next twenty degrees, whichever component leads.
  const std::vector<std::array<ColorStop, 3>> cases{{red, {1, 19.0F / 60, 0}, {1, 21.0F / 60, 0}},
                                                    {green, {0, 1, 19.0F / 60}, {19.0F / 60, 1, 0}},
                                                    {blue, {19.0F / 60, 0, 1}, {0, 19.0F / 60, 1}}};
  for (const auto& [color, inside, outside] : cases) {
    EXPECT_TRUE(stopsOf(picture({{1, color}, {1, inside}})).empty()) << color[0] << color[1];
    EXPECT_EQ(stopsOf(picture({{1, color}, {1, outside}})).size(), 4U) << color[0] << color[1];
  }
}

TEST(WallpaperPaletteTest, PixelsThatAreNoColoursDoNotVoteAndLargeOnesAreHeld) {
  const Pixels good = picture({{30, green}, {20, blue}});
  Pixels withOthers = good;
  for (const float value : {nan, infinity, -infinity}) {
    for (std::size_t i = 0; i < 3; ++i) {
      ColorStop pixel = red;
      pixel[i] = value;
      withOthers.insert(withOthers.begin(), 100, pixel);
    }
  }
  EXPECT_EQ(wallpaperPalette(withOthers), wallpaperPalette(good));
  EXPECT_EQ(wallpaperPalette(picture({{30, {-5, 1e30F, 0}}, {20, {-0.0F, -1e-30F, 7}}})), wallpaperPalette(good));
}

TEST(WallpaperPaletteTest, AnyPictureGivesFourStopsInRangeWithOneFullComponent) {
  std::mt19937 random(20);
  for (int round = 0; round < 300; ++round) {
    std::uniform_real_distribution<float> component(0, round % 3 == 0 ? 0.2F : 1.0F);
    Pixels pixels(static_cast<std::size_t>(1 + round * 8));
    for (ColorStop& pixel : pixels) pixel = {component(random), component(random), component(random)};
    const auto palette = wallpaperPalette(pixels);
    if (!palette) continue;
    EXPECT_EQ(palette->name, "Custom");
    ASSERT_EQ(palette->stops.size(), 4U);
    for (const ColorStop& stop : palette->stops) {
      for (const float value : stop) ASSERT_TRUE(value >= 0 && value <= 1) << value;
      ASSERT_NEAR(std::ranges::max(stop), 1, 1e-3);
    }
  }
}

}  // namespace
}  // namespace veloria
