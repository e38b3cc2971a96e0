#include "render/WallpaperPalette.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

namespace veloria::tests {
namespace {

using testing::ElementsAre;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr ColorStop red{1, 0, 0};
constexpr ColorStop green{0, 1, 0};
constexpr ColorStop blue{0, 0, 1};
constexpr ColorStop yellow{1, 1, 0};
constexpr ColorStop cyan{0, 1, 1};

/// The palette of a picture with `count` pixels of each colour; empty if it gives none.
std::vector<ColorStop> stopsOf(const std::vector<std::pair<int, ColorStop>>& parts) {
  std::vector<ColorStop> pixels;
  for (const auto& [count, color] : parts) pixels.insert(pixels.end(), static_cast<std::size_t>(count), color);
  const auto palette = wallpaperPalette(pixels);
  return palette ? palette->stops : std::vector<ColorStop>{};
}

MATCHER_P(IsColor, wanted, "") {
  return testing::Matches(testing::Pointwise(testing::FloatNear(2e-4F), wanted))(arg);
}

auto are(const ColorStop& a, const ColorStop& b, const ColorStop& c, const ColorStop& d) {
  return ElementsAre(IsColor(a), IsColor(b), IsColor(c), IsColor(d));
}

TEST(WallpaperPalette, BoostsToFullBrightnessAndMoreSaturation) {
  const std::pair<ColorStop, ColorStop> cases[] = {{{0.5F, 0.25F, 0.25F}, {1, 0.31034F, 0.31034F}},
                                                   {{0.2F, 0.1F, 0}, {1, 0.5F, 0}},
                                                   {{1, 1, 1}, {1, 1, 1}},
                                                   {{0.0011F, 0, 0}, {1, 0, 0}},
                                                   {{0.001F, 0.001F, 0}, {0.3F, 0.4F, 0.6F}},
                                                   {{0, 0, 0}, {0.3F, 0.4F, 0.6F}}};
  for (const auto& [from, to] : cases) EXPECT_THAT(boosted(from), IsColor(to)) << from[0];
}

TEST(WallpaperPalette, PicturesWithoutTwoHuesGiveNone) {
  EXPECT_THAT(stopsOf({}), ElementsAre());
  EXPECT_THAT(stopsOf({{1000, {0.2F, 0.2F, 0.2F}}, {1304, {0.9F, 0.9F, 0.9F}}}), ElementsAre());
  EXPECT_THAT(stopsOf({{1000, {0.08F, 0, 0}}, {1304, {0, 0, 0.08F}}}), ElementsAre()) << "too dark for a vote";
  EXPECT_THAT(stopsOf({{2304, {0, 0, 0}}, {1, green}}), ElementsAre());
  EXPECT_THAT(stopsOf({{100, {0.4F, 0.4F, 0.4F}}, {5, red}}), ElementsAre()) << "gray counts as red's hue";
  EXPECT_THAT(stopsOf({{1, {0.2F, 0.6F, 1}}, {1, {0, 0.5F, 1}}}), ElementsAre()) << "one azure, pale and full";
  EXPECT_EQ(stopsOf({{1, {0.085F, 0, 0}}, {1, green}}).size(), 4U) << "above 0.08 a pixel has a vote";
}

TEST(WallpaperPalette, TakesTheFourHeaviestHuesInTheOrderOfTheirLuminance) {
  EXPECT_THAT(stopsOf({{1500, green}, {804, blue}}), are(blue, blue, blue, green)) << "filled up with the last";
  EXPECT_THAT(stopsOf({{9, yellow}, {50, green}, {40, red}, {30, blue}, {20, cyan}}), are(blue, red, green, cyan));
  EXPECT_THAT(stopsOf({{10, blue}, {10, cyan}, {10, green}, {10, yellow}, {10, red}}), are(red, green, cyan, yellow))
      << "blue has the highest hue and loses the tie";
  // The picture's luminance counts, not that of the boosted colours.
  EXPECT_THAT(stopsOf({{1, red}, {1, {0.1F, 0.1F, 0}}}), are(yellow, yellow, yellow, red));
  // Red has 0.2126 of white's luminance, the dim green 0.2146; blue 0.0722, the dim red 0.0765.
  EXPECT_THAT(stopsOf({{1, red}, {3, {0, 0.3F, 0}}})[3], IsColor(green));
  EXPECT_THAT(stopsOf({{1, blue}, {3, {0.36F, 0, 0}}})[3], IsColor(red));
}

TEST(WallpaperPalette, VotesDependOnBrightnessAndSaturation) {
  const ColorStop dim{0, 0, 0.3F};
  // As many of the full colour win against a pale one, so the pale one is repeated.
  EXPECT_EQ(std::ranges::count_if(stopsOf({{10, {0.6F, 0.6F, 1}}, {10, green}}), [](auto& c) { return c[2] > 0.9F; }),
            3);
  // 0.02 + 0.42 a pixel against 0.02 + 1: two dim ones lose to one full one, three win.
  EXPECT_THAT(stopsOf({{2, dim}, {1, green}})[1], IsColor(blue));
  EXPECT_THAT(stopsOf({{3, dim}, {1, green}})[1], IsColor(green));
  // A hue takes the weighted mean of its pixels: weights 1.02, and 0.02 + 0.7 / 4 for the gray one.
  const float heavy = 1.02F, light = 0.195F;
  const float gray = 0.25F * light / (heavy + light);
  EXPECT_THAT(stopsOf({{1, red}, {1, {0.5F, 0.25F, 0.25F}}, {9, green}})[0],
              IsColor(boosted({(heavy + 0.5F * light) / (heavy + light), gray, gray})));
}

TEST(WallpaperPalette, HuesWrap) {
  // Just below red (a trace of blue) and just above it are two bins, 17 and 0.
  EXPECT_EQ(stopsOf({{1, {1, 0, 0.01F}}, {1, {1, 0.01F, 0}}}).size(), 4U);
  // So close to red from below that the hue rounds to a whole turn: still the last bin, not one beyond.
  EXPECT_EQ(stopsOf({{1, {1, 0.5F, 0.50000006F}}, {1, green}}).size(), 4U);
}

TEST(WallpaperPalette, PixelsThatAreNoColorsDoNotVoteAndLargeOnesAreHeld) {
  const auto good = stopsOf({{30, green}, {20, blue}});
  std::vector<std::pair<int, ColorStop>> others{{30, green}, {20, blue}};
  for (const float value : {nan, infinity, -infinity}) {
    others.insert(others.end(), {{100, {value, 0, 0}}, {100, {1, value, 0}}, {100, {1, 0, value}}});
  }
  EXPECT_EQ(stopsOf(others), good);
  EXPECT_EQ(stopsOf({{30, {-5, 1e30F, 0}}, {20, {-0.0F, -1e-30F, 7}}}), good);
}

}  // namespace
}  // namespace veloria::tests
