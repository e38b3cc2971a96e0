#include <algorithm>
#include <cstdlib>

#include "X11Fixture.h"

namespace veloria::desktop {
namespace {

int rounds() {
  const char* text = std::getenv("VELORIA_SOAK_ROUNDS");
  return text != nullptr ? std::max(1, std::atoi(text)) : 10;
}

class ScreenChanges : public X11Test {
 protected:
  void start(const std::vector<std::string>& programs, const DesktopSession::Options& options = {}) {
    startDesktop(programs, options);
    if (IsSkipped()) return;
    if (std::count(programs.begin(), programs.end(), "openbox") > 0) desktop().startWindowManager("openbox");
  }

  void connectAndCount() {
    connect();
    screens_->setChangeHandler([this] { ++changes_; });
  }

  void addMonitor(const std::string& name, const std::string& geometry, const std::string& output) {
    desktop().runToEnd({"xrandr", "--setmonitor", name, geometry, output});
  }

  // Two monitors at once: two requests without a pause between them.
  void splitScreen() {
    desktop().runToEnd({"xrandr", "--setmonitor", "left", "961/254x1080/286+0+0", "screen", "--setmonitor", "right",
                        "959/254x1080/286+961+0", "none"});
  }

  std::vector<std::string> names() {
    std::vector<std::string> result;
    for (const Screen& screen : screens_->screens()) result.push_back(screen.name);
    return result;
  }

  double barHeight() {
    const auto screens = screens_->screens();
    return screens.empty() ? -1 : screens[0].frame.maxY() - screens[0].visibleFrame.maxY();
  }

  int changes_ = 0;
};

TEST_F(ScreenChanges, aMonitorThatComesAndGoesIsReportedOnceForABurst) {
  start({"xrandr"});
  if (IsSkipped()) return;
  connectAndCount();
  ASSERT_EQ(names(), std::vector<std::string>{"screen"});
  const Screen whole = screens_->screens()[0];
  EXPECT_EQ(whole.frame, (Rect{0, 0, 1920, 1080}));
  for (int round = 0; round < rounds(); ++round) {
    changes_ = 0;
    splitScreen();
    ASSERT_TRUE(waitUntil([&] { return names() == std::vector<std::string>{"left", "right"}; })) << round;
    EXPECT_EQ(changes_, 1) << "two monitors in one burst, round " << round;
    const auto screens = screens_->screens();
    EXPECT_EQ(screens[0].frame, (Rect{0, 0, 961, 1080}));
    EXPECT_EQ(screens[1].frame, (Rect{961, 0, 959, 1080}));
    EXPECT_NE(screens[0].number, screens[1].number);
    desktop().runToEnd({"xrandr", "--delmonitor", "right"});
    ASSERT_TRUE(waitUntil([&] { return names() == std::vector<std::string>{"left"}; })) << round;
    desktop().runToEnd({"xrandr", "--delmonitor", "left"});
    ASSERT_TRUE(waitUntil([&] { return names() == std::vector<std::string>{"screen"}; })) << round;
    EXPECT_EQ(screens_->screens()[0], whole) << "the same output is another screen after it came back";
  }
}

TEST_F(ScreenChanges, bandsOnNeighboursMeetWithoutASeamAtAFractionalScale) {
  start({"openbox", "xrandr"});
  if (IsSkipped()) return;
  splitScreen();
  const std::string resources = "Xft.dpi:\t120\n";
  xcb_change_property(desktop().observer(), XCB_PROP_MODE_REPLACE, desktop().root(), XCB_ATOM_RESOURCE_MANAGER,
                      XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(resources.size()), resources.data());
  xcb_flush(desktop().observer());
  connectAndCount();
  ASSERT_TRUE(waitUntil([&] { return screens_->screens().size() == 2; }));
  const auto screens = screens_->screens();
  ASSERT_EQ(screens[0].backingScale, 1.25);
  const auto left = showBandOn(screens[0], OverlayLevel::desktop, 27);
  const auto right = showBandOn(screens[1], OverlayLevel::desktop, 27);
  EXPECT_EQ(left->place(), (PixelRect{0, 0, 961, 34}));
  EXPECT_EQ(right->place(), (PixelRect{961, 0, 959, 34}));
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 33) && isVisibleAt(961, 33) && isVisibleAt(1919, 0); }));
  EXPECT_FALSE(isVisibleAt(960, 34));
}

TEST_F(ScreenChanges, theScaleFollowsTheResources) {
  start({"xrandr"});
  if (IsSkipped()) return;
  connectAndCount();
  for (const auto& [text, scale] : {std::pair{"Xft.dpi: 192\n", 2.0}, std::pair{"Xft.dpi: 1e999\n", 1.0}}) {
    xcb_change_property(desktop().observer(), XCB_PROP_MODE_REPLACE, desktop().root(), XCB_ATOM_RESOURCE_MANAGER,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(std::string(text).size()), text);
    xcb_flush(desktop().observer());
    EXPECT_TRUE(waitUntil([&, wanted = scale] { return screens_->screens()[0].backingScale == wanted; })) << text;
  }
  EXPECT_EQ(changes_, 2);
}

TEST_F(ScreenChanges, theBarHeightFollowsThePanel) {
  start({"openbox", "tint2"});
  if (IsSkipped()) return;
  connectAndCount();
  EXPECT_EQ(barHeight(), 0) << "no panel yet";
  for (const int height : {32, 48}) {
    desktop().startPanel(height);
    EXPECT_TRUE(waitUntil([&] { return barHeight() == height; })) << height << " but " << barHeight();
  }
  desktop().stopPanel();
  EXPECT_TRUE(waitUntil([&] { return barHeight() == 0; }));
}

TEST_F(ScreenChanges, aPanelOnTheSecondMonitorCountsThereOnly) {
  start({"openbox", "tint2", "xrandr"});
  if (IsSkipped()) return;
  splitScreen();
  desktop().startPanel(40, "2");
  connectAndCount();
  const auto bars = [this] {
    std::vector<double> result;
    for (const Screen& screen : screens_->screens()) {
      result.push_back(screen.frame.maxY() - screen.visibleFrame.maxY());
    }
    return result;
  };
  EXPECT_TRUE(waitUntil([&] { return bars() == std::vector<double>{0, 40}; })) << testing::PrintToString(bars());
}

TEST_F(ScreenChanges, aPanelWithoutAWindowManagerCountsToo) {
  start({});
  if (IsSkipped()) return;
  connectAndCount();
  const xcb_window_t dock = openDock(30);
  EXPECT_TRUE(waitUntil([&] { return barHeight() == 30; }));
  setNumbers(dock, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, {0, 0, 44, 0, 0, 0, 0, 0, 0, 1919, 0, 0});
  EXPECT_TRUE(waitUntil([&] { return barHeight() == 44; })) << "a strut that changes";
  setNumbers(dock, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, {0, 0, 0xFFFFFFFF, 0, 0, 0, 0, 0, 0, 1919, 0, 0});
  EXPECT_TRUE(waitUntil([&] { return barHeight() == 0; })) << "a strut that can't be";
  closeWindow(dock);
  runFor(0.4);
  EXPECT_EQ(barHeight(), 0);
}

TEST_F(ScreenChanges, aServerWithoutMonitorsIsOneScreen) {
  start({}, {.width = 800, .height = 600, .serverArguments = {"-extension", "RANDR"}});
  if (IsSkipped()) return;
  connectAndCount();
  ASSERT_FALSE(connection_->randr().present);
  ASSERT_EQ(screens_->screens().size(), 1U);
  EXPECT_EQ(screens_->screens()[0].frame, (Rect{0, 0, 800, 600}));
}

TEST_F(ScreenChanges, theBandFollowsTheFirstScreenToOtherPixels) {
  start({"openbox", "xrandr"});
  if (IsSkipped()) return;
  addMonitor("only", "800/200x600/150+0+0", "screen");
  connectAndCount();
  ASSERT_EQ(names(), std::vector<std::string>{"only"});
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt({0, 0, 800, 32}); }));
  desktop().runToEnd({"xrandr", "--delmonitor", "only"});
  addMonitor("only", "800/200x600/150+500+300", "screen");
  EXPECT_TRUE(waitUntil([&] { return bandIsAt({500, 300, 800, 32}); })) << "its frame in points is the same";
}

}  // namespace
}  // namespace veloria::desktop
