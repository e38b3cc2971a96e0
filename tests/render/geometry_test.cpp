#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "render/ScreenGeometry.h"

namespace veloria {
namespace {

using testing::Optional;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A screen of 1920 x 1080 points whose panel reserves `reserved` points at the top.
Screen plainScreen(double reserved, Point origin = {0, 0}) {
  Screen screen;
  screen.frame = {origin.x, origin.y, 1920, 1080};
  screen.visibleFrame = {origin.x, origin.y, 1920, 1080 - reserved};
  return screen;
}

/// The same with a camera housing of 200 x 32 points, 860 points from its left edge.
Screen housingScreen(Point origin = {0, 0}) {
  Screen screen = plainScreen(0, origin);
  screen.safeAreaTop = 32;
  screen.auxiliaryTopLeft = Rect{origin.x, origin.y + 1048, 860, 32};
  screen.auxiliaryTopRight = Rect{origin.x + 1060, origin.y + 1048, 860, 32};
  return screen;
}

TEST(ScreenGeometryTest, TheMenuBarIsAsTallAsTheTallestOfThreeInWholePoints) {
  struct Case {
    double safeAreaTop;
    double reserved;
    double thickness;
    double height;
  };
  const std::vector<Case> cases{
      {0, 0, 24, 24},          {0, 30, 24, 30},  {0, 23.9, 24, 24}, {0, 30.4, 24, 30},   {0, 30.6, 24, 31},
      {37.5, 30, 24, 38},      {32, 40, 24, 40}, {0, -500, 24, 24}, {0, 1e12, 24, 1080}, {1e12, 0, 24, 1080},
      {0, infinity, 24, 1080}, {0, nan, 24, 24}, {0, 0, 22.5, 23},
  };
  for (const Case& c : cases) {
    Screen screen = plainScreen(c.reserved);
    screen.safeAreaTop = c.safeAreaTop;
    screen.statusBarThickness = c.thickness;
    EXPECT_EQ(ScreenGeometry::menuBarHeight(screen), c.height) << c.safeAreaTop << ' ' << c.reserved;
    EXPECT_EQ(ScreenGeometry::geometry(screen, {}).menuBarHeight, c.height);
  }
}

TEST(ScreenGeometryTest, TheWindowHangsFromTheTopEdgeAndNeverOutgrowsItsScreen) {
  struct Case {
    LayerMode mode;
    double extraHeight;
    double height;
  };
  const std::vector<Case> cases{
      {LayerMode::desktopStrip, 0, 30},          {LayerMode::aboveMenuBar, 0, 30},
      {LayerMode::desktopStrip, 12.5, 42.5},     {LayerMode::aboveMenuBar, 100, 130},
      {LayerMode::desktopStrip, -50, 30},        {LayerMode::desktopStrip, 1050, 1080},
      {LayerMode::desktopStrip, 1051, 1080},     {LayerMode::desktopStrip, 1e12, 1080},
      {LayerMode::aboveMenuBar, infinity, 1080}, {LayerMode::desktopStrip, -infinity, 30},
      {LayerMode::desktopStrip, nan, 30},        {LayerMode::desktopFull, 0, 1080},
      {LayerMode::desktopFull, 500, 1080},       {LayerMode::desktopFull, nan, 1080},
  };
  for (const Point origin : {Point{0, 0}, Point{1920, -300}, Point{-2560, 1440}}) {
    for (const Case& c : cases) {
      NimbraConfig config;
      config.layerMode = c.mode;
      config.extraHeight = c.extraHeight;
      const StripGeometry geometry = ScreenGeometry::geometry(plainScreen(30, origin), config);
      EXPECT_EQ(geometry.windowFrame, (Rect{origin.x, origin.y + 1080 - c.height, 1920, c.height})) << c.extraHeight;
      EXPECT_EQ(geometry.menuBarHeight, 30);
      EXPECT_EQ(geometry.notch, std::nullopt);
    }
  }
}

TEST(ScreenGeometryTest, AScreenLowerThanAMenuBarIsCoveredAndNotExceeded) {
  Screen screen;
  screen.frame = screen.visibleFrame = {100, 200, 64, 16};
  const StripGeometry geometry = ScreenGeometry::geometry(screen, {});
  EXPECT_EQ(geometry.windowFrame, screen.frame);
  EXPECT_EQ(geometry.menuBarHeight, 24);
}

TEST(ScreenGeometryTest, TheHousingLiesBetweenTheAuxiliaryAreasUnderTheTopEdge) {
  for (const Point origin : {Point{0, 0}, Point{1920, -300}}) {
    EXPECT_THAT(ScreenGeometry::notchRect(housingScreen(origin)),
                Optional(Rect{origin.x + 860, origin.y + 1048, 200, 32}));
  }
}

TEST(ScreenGeometryTest, NoHousingWithoutAnInsetBothAreasAndAGapBetweenThem) {
  const std::vector<void (*)(Screen&)> edits{
      [](Screen& s) { s.safeAreaTop = 0; },
      [](Screen& s) { s.safeAreaTop = -32; },
      [](Screen& s) { s.safeAreaTop = nan; },
      [](Screen& s) { s.auxiliaryTopLeft.reset(); },
      [](Screen& s) { s.auxiliaryTopRight.reset(); },
      [](Screen& s) { s.auxiliaryTopLeft->width = 1060; },
      [](Screen& s) { s.auxiliaryTopLeft->width = 1500; },
      [](Screen& s) { s.auxiliaryTopRight->x = nan; },
  };
  for (std::size_t i = 0; i < edits.size(); ++i) {
    Screen screen = housingScreen();
    edits[i](screen);
    EXPECT_EQ(ScreenGeometry::notchRect(screen), std::nullopt) << i;
    EXPECT_EQ(ScreenGeometry::geometry(screen, {}).notch, std::nullopt) << i;
    EXPECT_EQ(ScreenGeometry::description(&screen), "No camera housing detected on this display.") << i;
  }
}

TEST(ScreenGeometryTest, ThePaddedNotchIsLocalToTheWindowAndGrowsSidewaysAndDown) {
  struct Case {
    NotchMode mode;
    double padding;
    std::optional<Rect> notch;
  };
  const std::vector<Case> cases{
      {NotchMode::mask, 0, Rect{860, 0, 200, 32}},
      {NotchMode::mask, 4, Rect{856, 0, 208, 36}},
      {NotchMode::halo, 4, Rect{856, 0, 208, 36}},
      {NotchMode::ignore, 4, std::nullopt},
      {NotchMode::mask, -10, Rect{870, 0, 180, 22}},
      {NotchMode::mask, -32, std::nullopt},
      {NotchMode::mask, -1e12, std::nullopt},
      {NotchMode::mask, nan, Rect{860, 0, 200, 32}},
      {NotchMode::mask, infinity, Rect{860 - 1920, 0, 200 + 2 * 1920, 32 + 1920}},
  };
  for (const LayerMode layer : {LayerMode::desktopStrip, LayerMode::desktopFull}) {
    for (const Point origin : {Point{0, 0}, Point{1920, 40}}) {
      for (const Case& c : cases) {
        NimbraConfig config;
        config.layerMode = layer;
        config.notchMode = c.mode;
        config.notchPadding = c.padding;
        EXPECT_EQ(ScreenGeometry::geometry(housingScreen(origin), config).notch, c.notch) << c.padding;
      }
    }
  }
}

TEST(ScreenGeometryTest, EqualMeasuresGiveEqualGeometry) {
  Screen screen = housingScreen();
  const StripGeometry geometry = ScreenGeometry::geometry(screen, {});
  EXPECT_EQ(geometry, ScreenGeometry::geometry(screen, {}));
  screen.backingScale = 1.25;
  EXPECT_EQ(ScreenGeometry::geometry(screen, {}).backingScale, 1.25);
  EXPECT_NE(geometry, ScreenGeometry::geometry(screen, {}));
}

TEST(ScreenGeometryTest, DescribesTheUnpaddedHousing) {
  Screen screen = housingScreen();
  EXPECT_EQ(ScreenGeometry::description(&screen), "Cutout 200 × 32 pt · menu bar 32 pt tall.");
  screen.visibleFrame.height -= 36.6;
  EXPECT_EQ(ScreenGeometry::description(&screen), "Cutout 200 × 32 pt · menu bar 37 pt tall.");
  EXPECT_EQ(ScreenGeometry::description(nullptr), "");
}

}  // namespace
}  // namespace veloria
