// What a real X server, its window manager and its panels say of the screens: places, scales, what panels reserve and
// hide, full-screen windows, the pointer.

#include "X11Fixture.h"
#include "platform/linux/x11/X11Activity.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria::tests {
namespace {

class Screens : public X11Test {
 protected:
  void start(const DesktopSetup& desk = {}) {
    startDesktop(desk);
    connect();
    screens_->setChangeHandler([this] { ++changes_; });
  }
  void TearDown() override {
    probe_.reset();
    X11Test::TearDown();
  }

  bool areNamed(const std::vector<std::string>& names) {
    return waitUntil([&] {
      std::vector<std::string> now;
      for (const Screen& screen : screens_->screens()) now.push_back(screen.name);
      return now == names;
    });
  }
  /// Waits until panels reserve so much at the top of each screen.
  bool panelsReserve(const std::vector<double>& heights) {
    return waitUntil([&] {
      std::vector<double> now;
      for (const Screen& screen : screens_->screens()) now.push_back(screen.frame.maxY() - screen.visibleFrame.maxY());
      return now == heights;
    });
  }
  void expectPointerAt(int x, int y, const Point& expected) {
    desktop().runToEnd({"xdotool", "mousemove", std::to_string(x), std::to_string(y)});
    EXPECT_EQ(x11PointerSource(*connection_, *screens_).location(), expected) << x << ", " << y;
  }

  void watchFullScreen() { probe_ = std::make_unique<X11FullScreen>(*connection_, *screens_); }
  bool fullScreenBecomes(bool active) {
    return waitUntil([&] { return probe_->isActive() == active; });
  }
  bool fullScreenStays(bool active) {
    runFor(0.3);
    return probe_->isActive() == active;
  }

  std::unique_ptr<X11FullScreen> probe_;
  int changes_ = 0;
};

TEST_F(Screens, AMonitorThatComesAndGoesIsReportedOnceForABurst) {
  start();
  ASSERT_TRUE(areNamed({"screen"}));
  const Screen whole = screens_->screens()[0];
  splitScreen();
  ASSERT_TRUE(areNamed({"left", "right"}));
  EXPECT_EQ(changes_, 1) << "two monitors in one burst";
  EXPECT_EQ(screens_->screens()[0].frame, (Rect{0, 0, 961, 1080}));
  EXPECT_EQ(screens_->screens()[1].frame, (Rect{961, 0, 959, 1080}));
  desktop().runToEnd({"xrandr", "--delmonitor", "right"});
  ASSERT_TRUE(areNamed({"left"}));
  desktop().runToEnd({"xrandr", "--delmonitor", "left"});
  ASSERT_TRUE(areNamed({"screen"}));
  EXPECT_EQ(screens_->screens()[0], whole) << "the same output is another screen after it came back";
}

TEST_F(Screens, WhatPanelsReserveIsFollowed) {
  start({"openbox"});
  const xcb_window_t dock = openDock(30);
  EXPECT_TRUE(panelsReserve({30}));
  EXPECT_EQ(screens_->screens().at(0).panelEdge, PanelEdge::top);
  setNumbers(dock, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, {0, 0, 44, 0, 0, 0, 0, 0, 0, 1919, 0, 0});
  EXPECT_TRUE(panelsReserve({44})) << "a strut that changes";
  closeWindow(dock);
  EXPECT_TRUE(panelsReserve({0}));
  splitScreen();
  desktop().startPanel(40, "2");
  EXPECT_TRUE(panelsReserve({0, 40})) << "a panel on the second monitor";
  desktop().stopPanel();
  desktop().stopWindowManager();
  openDock(30);
  EXPECT_TRUE(panelsReserve({30, 30})) << "without a window manager";
}

TEST_F(Screens, ThePointerIsInPointsFromTheFirstScreensBottomAtEveryScale) {
  start();
  expectPointerAt(1919, 1079, {1919, 1});
  setResources("Xft.dpi: 192\n");
  ASSERT_TRUE(waitUntil([&] { return screens_->screens().at(0).backingScale == 2; }));
  EXPECT_EQ(changes_, 1);
  expectPointerAt(100, 30, {50, 525});
}

class FullScreenUnder : public Screens, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(WindowManagers, FullScreenUnder, testing::Values("openbox", "xfwm4"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(FullScreenUnder, FollowsTheWindow) {
  start({GetParam()});
  watchFullScreen();
  EXPECT_FALSE(probe_->isActive()) << "an empty desktop";
  const xcb_window_t window = openWindow({100, 100, 640, 480});
  EXPECT_TRUE(fullScreenStays(false)) << "an ordinary window";
  setFullScreen(window, true);
  EXPECT_TRUE(fullScreenBecomes(true)) << "full-screen";
  ask(window, "WM_CHANGE_STATE", {3});  // iconic
  EXPECT_TRUE(fullScreenBecomes(false)) << "minimised";
  ask(window, "_NET_ACTIVE_WINDOW", {2});
  EXPECT_TRUE(fullScreenBecomes(true)) << "raised again";
  ask(desktop().root(), "_NET_CURRENT_DESKTOP", {1});
  EXPECT_TRUE(fullScreenBecomes(false)) << "another desktop is shown";
  ask(desktop().root(), "_NET_CURRENT_DESKTOP", {0});
  EXPECT_TRUE(fullScreenBecomes(true)) << "and its own again";
  closeWindow(window);
  EXPECT_TRUE(fullScreenBecomes(false)) << "gone";
}

TEST_F(Screens, OurOwnWindowIsNoFullScreenWindow) {
  start();
  watchFullScreen();
  const std::vector<std::uint32_t> fullScreen{desktop().atom("_NET_WM_STATE_FULLSCREEN")};
  const xcb_window_t window = openWindow({0, 0, 1920, 1080});
  EXPECT_TRUE(fullScreenStays(false)) << "as large as the screen, but it says nothing";
  setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, fullScreen);
  EXPECT_TRUE(fullScreenBecomes(true));
  closeWindow(window);
  const auto band = showBand(OverlayLevel::aboveMenuBar, 1080);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 500); }));
  setNumbers(band->window(), "_NET_WM_STATE", XCB_ATOM_ATOM, fullScreen);
  EXPECT_TRUE(fullScreenBecomes(false) && fullScreenStays(false));
  desktop().stopServer();
  ASSERT_TRUE(waitUntil([&] { return connection_->isBroken(); }));
  EXPECT_FALSE(probe_->isActive());
  EXPECT_EQ(x11PointerSource(*connection_, *screens_).location(), std::nullopt);
}

TEST_F(Screens, WhetherAPanelHidesTheLightIsKnown) {
  start({"openbox", true});
  using Kind = Visibility::Kind;
  const auto seen = [&](OverlayLevel level, double height) {
    return factory_->visibility(screens_->screens().at(0), {0, 1080 - height, 1920, height}, level).kind;
  };
  const auto becomes = [&](Kind kind) { return waitUntil([&] { return seen(OverlayLevel::desktop, 32) == kind; }); };
  const xcb_window_t dock = openDock(32);
  EXPECT_TRUE(becomes(Kind::hidden)) << "an opaque panel";
  EXPECT_EQ(seen(OverlayLevel::desktop, 33), Kind::mayBeHidden) << "a line of the band is free";
  EXPECT_EQ(seen(OverlayLevel::aboveMenuBar, 32), Kind::seen);
  setNumbers(dock, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {0x80000000U});
  EXPECT_TRUE(becomes(Kind::seen)) << "made translucent by its opacity";
  closeWindow(dock);
  openDock(32, 0.5);
  EXPECT_TRUE(becomes(Kind::seen)) << "with an alpha channel";
  desktop().stopCompositor();
  EXPECT_TRUE(becomes(Kind::hidden)) << "nothing is translucent without a compositor";
}

}  // namespace
}  // namespace veloria::tests
