#include <gmock/gmock.h>

#include <limits>

#include "render/ScreenGeometry.h"

namespace veloria::tests {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

constexpr Point origin{1920, -300};

/// A screen of 1920 x 1080 points whose panel reserves `reserved` points at the top.
Screen plainScreen(double reserved) {
  Screen screen;
  screen.frame = {origin.x, origin.y, 1920, 1080};
  screen.visibleFrame = {origin.x, origin.y, 1920, 1080 - reserved};
  return screen;
}

/// The same with a camera housing of 200 x 32 points, 860 points from its left edge.
Screen housingScreen() {
  Screen screen = plainScreen(0);
  screen.safeAreaTop = 32;
  screen.auxiliaryTopLeft = Rect{origin.x, origin.y + 1048, 860, 32};
  screen.auxiliaryTopRight = Rect{origin.x + 1060, origin.y + 1048, 860, 32};
  return screen;
}

TEST(ScreenGeometry, TheBarIsAsTallAsTheTallestOfThreeInWholePoints) {
  const struct {
    double safeAreaTop, reserved, thickness, height;
  } cases[] = {{0, 0, 24, 24},          {0, 30, 24, 30},  {0, 23.9, 24, 24}, {0, 30.4, 24, 30},   {0, 30.6, 24, 31},
               {37.5, 30, 24, 38},      {32, 40, 24, 40}, {0, -500, 24, 24}, {0, 1e12, 24, 1080}, {1e12, 0, 24, 1080},
               {0, infinity, 24, 1080}, {0, nan, 24, 24}, {0, 0, 22.5, 23}};
  for (const auto& c : cases) {
    Screen screen = plainScreen(c.reserved);
    screen.safeAreaTop = c.safeAreaTop;
    screen.statusBarThickness = c.thickness;
    EXPECT_EQ(ScreenGeometry::menuBarHeight(screen), c.height) << c.safeAreaTop << ' ' << c.reserved;
  }
}

TEST(ScreenGeometry, TheWindowHangsFromTheTopEdgeAndNeverOutgrowsItsScreen) {
  const struct {
    LayerMode mode;
    double extraHeight, height;
  } cases[] = {{LayerMode::desktopStrip, 12.5, 42.5},     {LayerMode::aboveMenuBar, 100, 130},
               {LayerMode::desktopStrip, -50, 30},        {LayerMode::desktopStrip, 1051, 1080},
               {LayerMode::aboveMenuBar, infinity, 1080}, {LayerMode::desktopStrip, -infinity, 30},
               {LayerMode::desktopStrip, nan, 30},        {LayerMode::desktopFull, 500, 1080}};
  for (const auto& c : cases) {
    NimbraConfig config;
    config.layerMode = c.mode;
    config.extraHeight = c.extraHeight;
    Screen screen = plainScreen(30);
    screen.backingScale = 1.25;
    EXPECT_EQ(ScreenGeometry::geometry(screen, config),
              (StripGeometry{{origin.x, origin.y + 1080 - c.height, 1920, c.height}, 30, std::nullopt, 1.25}))
        << c.extraHeight;
  }
}

TEST(ScreenGeometry, TheStripHangsOnThePanelsEdgeOrOnTheChosenOne) {
  using Edge = std::optional<PanelEdge>;
  constexpr auto automatic = EdgeChoice::automatic;
  const struct {
    Edge panel;
    EdgeChoice choice;
    LayerMode mode;
    PanelEdge edge;
    double y, height, barHeight;
  } cases[] = {{{}, automatic, LayerMode::desktopStrip, PanelEdge::top, 1038, 42, 32},
               {PanelEdge::top, automatic, LayerMode::aboveMenuBar, PanelEdge::top, 1038, 42, 32},
               {PanelEdge::bottom, automatic, LayerMode::desktopStrip, PanelEdge::bottom, 0, 50, 40},
               {PanelEdge::bottom, EdgeChoice::top, LayerMode::desktopStrip, PanelEdge::top, 1038, 42, 32},
               {{}, EdgeChoice::bottom, LayerMode::aboveMenuBar, PanelEdge::bottom, 0, 50, 40},
               {PanelEdge::bottom, EdgeChoice::bottom, LayerMode::desktopFull, PanelEdge::top, 0, 1080, 32}};
  for (const auto& c : cases) {
    Screen screen = housingScreen();
    screen.visibleFrame = {origin.x, origin.y + 40, 1920, 1040};
    screen.panelEdge = c.panel;
    NimbraConfig config;
    config.layerMode = c.mode;
    config.extraHeight = 10;
    const StripGeometry geometry = ScreenGeometry::geometry(screen, config, c.choice);
    EXPECT_EQ(geometry.windowFrame, (Rect{origin.x, origin.y + c.y, 1920, c.height})) << &c - cases;
    EXPECT_EQ(geometry.menuBarHeight, c.barHeight);
    EXPECT_EQ(geometry.edge, c.edge);
    EXPECT_EQ(geometry.notch.has_value(), c.edge == PanelEdge::top) << "the housing is at the top only";
    EXPECT_EQ(screen.edgeOf(geometry.windowFrame), c.edge);
  }
}

TEST(ScreenGeometry, NoHousingWithoutAnInsetBothAreasAndAGapBetweenThem) {
  using Edit = void (*)(Screen&);
  for (const Edit edit :
       {Edit([](Screen& s) { s.safeAreaTop = nan; }), Edit([](Screen& s) { s.safeAreaTop = 0; }),
        Edit([](Screen& s) { s.auxiliaryTopLeft.reset(); }), Edit([](Screen& s) { s.auxiliaryTopRight.reset(); }),
        Edit([](Screen& s) { s.auxiliaryTopLeft->width = 1060; })}) {
    Screen screen = housingScreen();
    edit(screen);
    EXPECT_EQ(ScreenGeometry::description(&screen), "No camera housing detected on this display.");
  }
  Screen screen = housingScreen();
  screen.visibleFrame.height -= 36.6;
  EXPECT_EQ(ScreenGeometry::description(&screen), "Cutout 200 × 32 pt · menu bar 37 pt tall.");
  EXPECT_EQ(ScreenGeometry::description(nullptr), "");
}

TEST(ScreenGeometry, ThePaddedHousingIsLocalToTheWindowAndGrowsSidewaysAndDown) {
  const struct {
    NotchMode mode;
    double padding;
    std::optional<Rect> notch;
  } cases[] = {{NotchMode::mask, 0, Rect{860, 0, 200, 32}},
               {NotchMode::halo, 4, Rect{856, 0, 208, 36}},
               {NotchMode::ignore, 4, std::nullopt},
               {NotchMode::mask, -10, Rect{870, 0, 180, 22}},
               {NotchMode::mask, -32, std::nullopt},
               {NotchMode::mask, -1e12, std::nullopt},
               {NotchMode::mask, nan, Rect{860, 0, 200, 32}},
               {NotchMode::mask, infinity, Rect{860 - 1920, 0, 200 + 2 * 1920, 32 + 1920}}};
  for (const LayerMode layer : {LayerMode::desktopStrip, LayerMode::desktopFull}) {
    for (const auto& c : cases) {
      NimbraConfig config;
      config.layerMode = layer;
      config.notchMode = c.mode;
      config.notchPadding = c.padding;
      EXPECT_EQ(ScreenGeometry::geometry(housingScreen(), config).notch, c.notch) << c.padding;
    }
  }
}

}  // namespace
}  // namespace veloria::tests
