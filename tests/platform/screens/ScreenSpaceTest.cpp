#include "platform/linux/screens/ScreenSpace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace veloria {
namespace {

TEST(ScreenSpace, turnsCoordinatesOverAndBack) {
  for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.75}) {
    const ScreenSpace space{1920, 1280, scale};
    for (const PixelRect& pixels : {PixelRect{1920, 200, 1920, 1080}, PixelRect{0, 0, 1, 1},
                                    PixelRect{-800, -600, 333, 77}, PixelRect{32000, 32000, 767, 767}}) {
      EXPECT_EQ(space.toPixels(space.toPoints(pixels), scale), pixels) << scale << " " << pixels.x;
    }
  }
  EXPECT_EQ((ScreenSpace{0, 1080, 1}.toPoints({0, 0, 1920, 32})), (Rect{0, 1048, 1920, 32}));
}

TEST(ScreenSpace, rectanglesThatTouchInPointsTouchInPixels) {
  for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.25}) {
    const ScreenSpace space{0, 1080, scale};
    const Rect upper{10.3, 500.7, 333.1, 27};
    const Rect beside{upper.maxX(), 500.7, 200, 27};
    const Rect below{10.3, 400.2, 333.1, upper.minY() - 400.2};
    const PixelRect a = space.toPixels(upper, scale);
    EXPECT_EQ(a.right(), space.toPixels(beside, scale).x) << scale;
    EXPECT_EQ(a.bottom(), space.toPixels(below, scale).y) << scale;
  }
}

TEST(ScreenSpace, hostileRectanglesAreEmptyOrCut) {
  const ScreenSpace space{0, 1080, 1};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const Rect& rect : {Rect{nan, 0, 10, 10}, Rect{0, 0, nan, 10}, Rect{0, 0, infinity, 10}, Rect{0, 0, -5, 10},
                           Rect{}, Rect{1e300, 1e300, 1, 1}}) {
    EXPECT_TRUE(space.toPixels(rect, 1).empty());
  }
  const PixelRect cut = space.toPixels({-1e200, -1e200, 3e200, 3e200}, 1);
  EXPECT_LE(cut.width, 32767);
  EXPECT_LE(cut.height, 32767);
  for (const double factor : {nan, infinity, 0.0, -1.0}) {
    EXPECT_EQ(space.toPixels({0, 1048, 100, 32}, factor), (PixelRect{0, 0, 100, 32})) << factor;
  }
}

TEST(ScreenSpace, intersectionsShareNothingAtTheEdges) {
  EXPECT_EQ(intersection({0, 0, 10, 10}, {5, 6, 10, 10}), (PixelRect{5, 6, 5, 4}));
  EXPECT_FALSE(intersects({0, 0, 10, 10}, {10, 0, 10, 10}));
  EXPECT_FALSE(intersects({0, 0, 10, 10}, {0, 0, 0, 10}));
}

}  // namespace
}  // namespace veloria
