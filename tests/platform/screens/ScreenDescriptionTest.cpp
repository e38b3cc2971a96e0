#include "platform/linux/screens/ScreenDescription.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

namespace veloria {
namespace {

MonitorDescription monitor(const std::string& name, const PixelRect& frame) {
  return {name, frame, frame};
}

TEST(ScreenDescription, takesTheScaleFromTheResources) {
  const std::vector<std::pair<std::string, double>> cases{
      {"", 1},
      {"Xft.dpi:\t96\n", 1},
      {"Xcursor.size: 24\nXft.dpi: 192\nXft.hinting: 1\n", 2},
      {"Xft.dpi: 120", 1.25},
      {"  Xft.dpi:   131.5  \r\n", 1.25},
      {"Xft.dpi: 72", 1},
      {"Xft.dpi: 900", 4},
      {"Xft.dpi: 96\nXft.dpi: 144\n", 1.5},
      {"!Xft.dpi: 192", 1},
      {"Xft.dpi:", 1},
      {"Xft.dpi: -192", 1},
      {"Xft.dpi: 1e308", 1},
      {"Xft.dpi: nan", 1},
      {"Xft.dpi: inf", 1},
      {"Xft.dpi: 192abc", 1},
      {"Xft.dpi: 99999999999999999999", 1},
      {std::string("Xft.dpi: 19\0002", 13), 1},
      {std::string(100000, '\n'), 1},
  };
  for (const auto& [text, scale] : cases) EXPECT_EQ(scaleFromResources(text), scale) << text.substr(0, 40);
}

TEST(ScreenDescription, readsBarHeightsStrictly) {
  EXPECT_EQ(parseBarHeight("32"), 32);
  EXPECT_EQ(parseBarHeight("27.5"), 27.5);
  EXPECT_EQ(parseBarHeight("1000"), 1000);
  for (const char* text :
       {"", "0", "-5", "+5", " 32", "32 ", "32px", "1e2", "1001", "nan", "inf", "0x20", "3,5", "."}) {
    EXPECT_EQ(parseBarHeight(text), std::nullopt) << text;
  }
}

TEST(ScreenDescription, readsNotchesStrictly) {
  EXPECT_EQ(parseNotch("200x32"), (Extent{200, 32}));
  EXPECT_EQ(parseNotch("184.5x37"), (Extent{184.5, 37}));
  for (const char* text : {"", "x", "200", "200x", "x32", "200X32", "200x32x1", "200 x 32", "-200x32", "200x0", "0x32",
                           "99999x32", "200x32pt", "nanxnan"}) {
    EXPECT_EQ(parseNotch(text), std::nullopt) << text;
  }
}

TEST(ScreenDescription, reportsAWrongEnvironmentOnceAndIgnoresIt) {
  setenv("NIMBRA_BAR_HEIGHT", "tall", 1);
  setenv("NIMBRA_NOTCH", "200x32", 1);
  testing::internal::CaptureStderr();
  const ScreenOverrides overrides = screenOverridesFromEnvironment();
  const std::string written = testing::internal::GetCapturedStderr();
  unsetenv("NIMBRA_BAR_HEIGHT");
  unsetenv("NIMBRA_NOTCH");
  EXPECT_EQ(overrides.barHeight, std::nullopt);
  EXPECT_EQ(overrides.notch, (Extent{200, 32}));
  EXPECT_NE(written.find("NIMBRA_BAR_HEIGHT"), std::string::npos);
  EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 1) << written;
}

TEST(ScreenDescription, numbersNamesByTheirFnvHash) {
  EXPECT_EQ(screenNumberForName(""), 2166136261U);
  EXPECT_EQ(screenNumberForName("a"), 0xE40C292CU);
  EXPECT_EQ(screenNumberForName("foobar"), 0xBF9CF968U);
}

TEST(ScreenDescription, keepsScreensOfOneNameApart) {
  const std::vector<MonitorDescription> monitors{monitor("DP-1", {0, 0, 100, 100}), monitor("DP-1", {100, 0, 100, 100}),
                                                 monitor("DP-1", {200, 0, 100, 100})};
  std::set<std::uint32_t> numbers;
  for (const Screen& screen : describeScreens(monitors, 1, {})) numbers.insert(screen.number);
  EXPECT_EQ(numbers.size(), 3U);
  EXPECT_TRUE(numbers.contains(screenNumberForName("DP-1")));
}

TEST(ScreenDescription, leavesOutWhatIsNoScreen) {
  const auto kept = plausibleMonitors({monitor("good", {0, 0, 1920, 1080}), monitor("flat", {0, 0, 1920, 0}),
                                       monitor("mirror", {0, 0, 1920, 1080}), monitor("vast", {0, 0, 70000, 10}),
                                       monitor("far", {40000, 0, 100, 100}), monitor("other", {-800, 200, 800, 600})});
  ASSERT_EQ(kept.size(), 2U);
  EXPECT_EQ(kept[0].name, "good");
  EXPECT_EQ(kept[1].name, "other");
}

TEST(ScreenDescription, describesScreensInPointsFromTheFirstOnesBottomLeft) {
  std::vector<MonitorDescription> monitors{monitor("main", {1920, 200, 2560, 1440}),
                                           monitor("side", {0, 0, 1920, 1080})};
  monitors[0].visible = {1920, 264, 2560, 1376};
  const auto screens = describeScreens(monitors, 2, {});
  EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1280, 720}));
  EXPECT_EQ(screens[0].visibleFrame, (Rect{0, 0, 1280, 688}));
  EXPECT_EQ(screens[1].frame, (Rect{-960, 280, 960, 540}));
  EXPECT_EQ(screens[0].backingScale, 2);
  EXPECT_EQ(screens[0].safeAreaTop, 0);
  EXPECT_FALSE(screens[0].auxiliaryTopLeft);
  EXPECT_TRUE(describeScreens({}, 1, {40, Extent{200, 32}}).empty());
}

TEST(ScreenDescription, putsTheNotchOnTheBuiltInPanel) {
  const std::vector<MonitorDescription> monitors{monitor("HDMI-1", {0, 0, 1920, 1080}),
                                                 monitor("eDP-1", {1920, 0, 1512, 982})};
  const auto screens = describeScreens(monitors, 1, {std::nullopt, Extent{200, 32}});
  EXPECT_EQ(screens[0].safeAreaTop, 0);
  EXPECT_EQ(screens[1].safeAreaTop, 32);
  const Rect frame = screens[1].frame;
  EXPECT_EQ(screens[1].auxiliaryTopLeft, (Rect{frame.x, frame.maxY() - 32, 656, 32}));
  EXPECT_EQ(screens[1].auxiliaryTopRight, (Rect{frame.x + 856, frame.maxY() - 32, 656, 32}));
  EXPECT_EQ(notchScreenIndex(std::vector{monitors[0]}), 0U);
}

TEST(ScreenDescription, ignoresANotchThatDoesNotFit) {
  const std::vector<MonitorDescription> monitors{monitor("eDP-1", {0, 0, 800, 600})};
  for (const Extent notch : {Extent{800, 32}, Extent{100, 301}}) {
    EXPECT_FALSE(describeScreens(monitors, 1, {std::nullopt, notch})[0].auxiliaryTopLeft) << notch.width;
  }
}

TEST(ScreenDescription, theBarHeightReplacesWhatPanelsReserve) {
  MonitorDescription withPanel = monitor("DP-1", {0, 0, 1920, 1080});
  withPanel.visible = {0, 60, 1920, 980};  // and 40 at the bottom
  for (const double height : {20.0, 48.0, 900.0}) {
    const Screen screen = describeScreens(std::vector{withPanel}, 1, {height, std::nullopt})[0];
    const double wanted = std::min(height, 540.0);
    EXPECT_EQ(screen.frame.maxY() - screen.visibleFrame.maxY(), wanted);
    EXPECT_EQ(screen.visibleFrame.minY(), 40);
    EXPECT_LE(screen.statusBarThickness, wanted);
  }
}

}  // namespace
}  // namespace veloria
