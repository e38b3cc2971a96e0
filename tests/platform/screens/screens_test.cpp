#include <gtest/gtest.h>

#include <limits>

#include "Process.h"
#include "platform/linux/screens/Pacing.h"
#include "platform/linux/screens/ScreenDescription.h"

namespace veloria::tests {
namespace {

TEST(AttemptBudget, EndsAfterItsLimitAndComesBackAfterAPause) {
  AttemptBudget budget(3, 10);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(budget.spend(100 + i));
  EXPECT_FALSE(budget.spend(111.9)) << "the pause counts from the last attempt that was made";
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(budget.spend(112));
  EXPECT_FALSE(budget.spend(112));
}

TEST(ScreenDescription, TheScaleComesFromTheResources) {
  const std::pair<std::string, double> cases[] = {
      {"", 1},
      {"Xcursor.size: 24\nXft.dpi: 192\nXft.hinting: 1\n", 2},
      {"Xft.dpi: 120", 1.25},
      {"  Xft.dpi:   131.5  \r\n", 1.25},
      {"Xft.dpi: 96\nXft.dpi: 144\n", 1.5},
      {"!Xft.dpi: 192", 1},
      {"Xft.dpi: 1e308", 1},
      {"Xft.dpi: 192abc", 1},
      {std::string("Xft.dpi: 19\0002", 13), 1},
      {std::string(100000, '\n'), 1},
  };
  for (const auto& [text, scale] : cases) EXPECT_EQ(scaleFromResources(text), scale) << text.substr(0, 40);
}

TEST(ScreenDescription, BarHeightsAndNotchesAreReadStrictly) {
  EXPECT_EQ(parseBarHeight("27.5"), 27.5);
  EXPECT_EQ(parseBarHeight("1000"), 1000);
  for (const char* text : {"", "0", "-5", "+5", " 32", "32px", "1e2", "1001", "nan", "0x20", "3,5"}) {
    EXPECT_EQ(parseBarHeight(text), std::nullopt) << text;
  }
  EXPECT_EQ(parseNotch("184.5x37"), (Extent{184.5, 37}));
  for (const char* text : {"", "x", "200", "200x", "x32", "200x32x1", "-200x32", "200x0", "99999x32", "nanxnan"}) {
    EXPECT_EQ(parseNotch(text), std::nullopt) << text;
  }
}

TEST(ScreenDescription, OverridesComeFromTheEnvironmentUnlessTheyAreWrong) {
  const EnvironmentChange height("NIMBRA_BAR_HEIGHT", "tall");
  const EnvironmentChange notch("NIMBRA_NOTCH", "200x32");
  const ScreenOverrides overrides = screenOverridesFromEnvironment();
  EXPECT_EQ(overrides.barHeight, std::nullopt);
  EXPECT_EQ(overrides.notch, (Extent{200, 32}));
}

MonitorDescription monitor(const std::string& name, const PixelRect& frame) {
  return {name, frame, frame};
}

TEST(ScreenDescription, NamesAreNumberedByTheirFnvHashAndKeptApart) {
  EXPECT_EQ(screenNumberForName("foobar"), 0xBF9CF968U);
  const auto alike = describeScreens(std::vector(2, monitor("DP-1", {0, 0, 100, 100})), 1, {});
  EXPECT_EQ(alike[0].number, screenNumberForName("DP-1"));
  EXPECT_NE(alike[1].number, alike[0].number);
}

TEST(ScreenDescription, WhatIsNoScreenIsLeftOut) {
  const auto kept = plausibleMonitors({monitor("good", {0, 0, 1920, 1080}), monitor("flat", {0, 0, 1920, 0}),
                                       monitor("mirror", {0, 0, 1920, 1080}), monitor("vast", {0, 0, 65536, 10}),
                                       monitor("far", {32768, 0, 100, 100}), monitor("other", {-800, 200, 800, 600})});
  ASSERT_EQ(kept.size(), 2U);
  EXPECT_EQ(kept[0].name + kept[1].name, "goodother");
}

TEST(ScreenDescription, ScreensAreInPointsFromTheFirstOnesBottomLeft) {
  std::vector<MonitorDescription> monitors{monitor("main", {1920, 200, 2560, 1440}),
                                           monitor("side", {0, 0, 1920, 1080})};
  monitors[0].visible = {1920, 264, 2560, 1376};
  const auto screens = describeScreens(monitors, 2, {});
  EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1280, 720}));
  EXPECT_EQ(screens[0].visibleFrame, (Rect{0, 0, 1280, 688}));
  EXPECT_EQ(screens[1].frame, (Rect{-960, 280, 960, 540}));
  EXPECT_EQ(screens[0].backingScale, 2);
  EXPECT_TRUE(describeScreens({}, 1, {40, Extent{200, 32}}).empty());
}

TEST(ScreenDescription, TheNotchIsOnTheBuiltInDisplayIfItFits) {
  const std::vector<MonitorDescription> monitors{monitor("HDMI-1", {0, 0, 1920, 1080}),
                                                 monitor("eDP-1", {1920, 0, 1512, 982})};
  const auto screens = describeScreens(monitors, 1, {std::nullopt, Extent{200, 32}});
  EXPECT_EQ(screens[1].safeAreaTop, 32);
  const Rect frame = screens[1].frame;
  EXPECT_EQ(screens[1].auxiliaryTopLeft, (Rect{frame.x, frame.maxY() - 32, 656, 32}));
  EXPECT_EQ(screens[1].auxiliaryTopRight, (Rect{frame.x + 856, frame.maxY() - 32, 656, 32}));
  for (const auto& [name, index] : {std::pair{"eDP-1", 1U}, {"LVDS1", 1U}, {"DSI-1", 1U}, {"DP-1", 0U}}) {
    EXPECT_EQ(notchScreenIndex(std::vector{monitors[0], monitor(name, {})}), index) << name;
  }
  EXPECT_FALSE(describeScreens(monitors, 1, {std::nullopt, Extent{1512, 32}})[1].auxiliaryTopLeft);
}

TEST(ScreenDescription, ThePanelIsWhereTheServerSaysOrWhereMoreIsReserved) {
  using Edge = std::optional<PanelEdge>;
  const std::tuple<PixelRect, Edge, Edge> cases[] = {
      {{0, 0, 1920, 1080}, {}, {}},
      {{70, 0, 1850, 1080}, {}, {}},
      {{0, 20, 1920, 1040}, {}, PanelEdge::top},
      {{0, 20, 1920, 1039}, {}, PanelEdge::bottom},
      {{0, 20, 1920, 1039}, PanelEdge::top, PanelEdge::top},
  };
  for (const auto& [visible, told, edge] : cases) {
    const MonitorDescription one{"DP-1", {0, 0, 1920, 1080}, visible, told};
    const Screen screen = describeScreens(std::vector{one}, 1, {})[0];
    EXPECT_EQ(screen.panelEdge, edge) << visible.y;
    const Screen taller = describeScreens(std::vector{one}, 1, {50, std::nullopt})[0];
    EXPECT_EQ(taller.panelEdge, edge.value_or(PanelEdge::top));
    EXPECT_EQ(taller.reserved(*taller.panelEdge), 50);
  }
}

TEST(ScreenDescription, TheBarHeightReplacesWhatPanelsReserve) {
  MonitorDescription withPanel = monitor("DP-1", {0, 0, 1920, 1080});
  withPanel.visible = {0, 60, 1920, 980};  // and 40 at the bottom
  for (const auto& [height, wanted] : {std::pair{20.0, 20.0}, {900.0, 540.0}}) {
    const Screen screen = describeScreens(std::vector{withPanel}, 1, {height, std::nullopt})[0];
    EXPECT_EQ(screen.frame.maxY() - screen.visibleFrame.maxY(), wanted);
    EXPECT_EQ(screen.visibleFrame.minY(), 40);
    EXPECT_LE(screen.statusBarThickness, wanted);
  }
}

TEST(ScreenSpace, TurnsCoordinatesOverAndBackWithoutSeams) {
  for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.25, 3.75}) {
    const ScreenSpace space{1920, 1280, scale};
    for (const PixelRect& pixels :
         {PixelRect{1920, 200, 1920, 1080}, PixelRect{-800, -600, 333, 77}, PixelRect{32000, 32000, 767, 767}}) {
      EXPECT_EQ(space.toPixels(space.toPoints(pixels), scale), pixels) << scale << " " << pixels.x;
    }
    const Rect upper{10.3, 500.7, 333.1, 27};
    const PixelRect a = space.toPixels(upper, scale);
    EXPECT_EQ(a.right(), space.toPixels({upper.maxX(), 500.7, 200, 27}, scale).x) << scale;
    EXPECT_EQ(a.bottom(), space.toPixels({10.3, 400.2, 333.1, upper.minY() - 400.2}, scale).y) << scale;
  }
}

TEST(ScreenSpace, HostileRectanglesAreEmptyOrCut) {
  const ScreenSpace space{0, 1080, 1};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const Rect& rect : {Rect{nan, 0, 10, 10}, Rect{0, 0, nan, 10}, Rect{0, 0, -5, 10}, Rect{1e300, 1e300, 1, 1}}) {
    EXPECT_TRUE(space.toPixels(rect, 1).empty());
  }
  const PixelRect cut = space.toPixels({-1e200, -1e200, 3e200, 3e200}, 1);
  EXPECT_LE(std::max(cut.width, cut.height), 32767);
  EXPECT_EQ(space.toPixels({0, 1048, 100, 32}, nan), (PixelRect{0, 0, 100, 32}));
}

}  // namespace
}  // namespace veloria::tests
