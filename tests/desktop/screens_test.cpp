// What a real X server, its window manager and its panels say of the screens: places, scales, what panels reserve and
// hide, full-screen windows, the pointer.

#include "X11Fixture.h"
#include "platform/linux/x11/X11Activity.h"
#include "platform/linux/x11/X11ScreenProvider.h"

namespace veloria::tests {
namespace {

constexpr std::uint32_t iconicState = 3;
using Names = std::vector<std::string>;

class Screens : public X11Test {
 protected:
  void start(const Desk& desk = {}) {
    startDesktop(desk);
    connect();
    screens_->setChangeHandler([this] { ++changes_; });
  }
  void TearDown() override {
    probe_.reset();
    X11Test::TearDown();
  }

  bool areNamed(const Names& names) {
    return waitUntil([&] {
      Names now;
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
  bool scaleBecomes(double scale) {
    return waitUntil([&] { return screens_->screens().at(0).backingScale == scale; });
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

  std::string hint(OverlayLevel level = OverlayLevel::desktop) {
    return factory_->visibilityHint(screens_->screens().at(0), level);
  }
  bool hintBecomes(const std::string& part) {
    return waitUntil([&] { return part.empty() ? hint().empty() : hint().find(part) != std::string::npos; });
  }

  std::unique_ptr<X11FullScreen> probe_;
  int changes_ = 0;
};

TEST_F(Screens, AMonitorThatComesAndGoesIsReportedOnceForABurst) {
  start();
  ASSERT_TRUE(areNamed({"screen"}));
  const Screen whole = screens_->screens()[0];
  EXPECT_EQ(whole.frame, (Rect{0, 0, 1920, 1080}));
  for (int round = 0; round < 3; ++round) {
    changes_ = 0;
    splitScreen();
    ASSERT_TRUE(areNamed({"left", "right"})) << round;
    EXPECT_EQ(changes_, 1) << "two monitors in one burst, round " << round;
    const auto screens = screens_->screens();
    EXPECT_EQ(screens[0].frame, (Rect{0, 0, 961, 1080}));
    EXPECT_EQ(screens[1].frame, (Rect{961, 0, 959, 1080}));
    EXPECT_NE(screens[0].number, screens[1].number);
    desktop().runToEnd({"xrandr", "--delmonitor", "right"});
    ASSERT_TRUE(areNamed({"left"})) << round;
    desktop().runToEnd({"xrandr", "--delmonitor", "left"});
    ASSERT_TRUE(areNamed({"screen"})) << round;
    EXPECT_EQ(screens_->screens()[0], whole) << "the same output is another screen after it came back";
  }
}

TEST_F(Screens, BandsFollowThemAndMeetWithoutASeamAtAFractionalScale) {
  start({"openbox"});
  desktop().runToEnd({"xrandr", "--setmonitor", "only", "800/200x600/150+0+0", "screen"});
  ASSERT_TRUE(areNamed({"only"}));
  auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt({0, 0, 800, 32}); }));
  desktop().runToEnd({"xrandr", "--delmonitor", "only"});
  desktop().runToEnd({"xrandr", "--setmonitor", "only", "800/200x600/150+500+300", "screen"});
  EXPECT_TRUE(waitUntil([&] { return bandIsAt({500, 300, 800, 32}); })) << "its frame in points is the same";
  band.reset();
  desktop().runToEnd({"xrandr", "--delmonitor", "only"});
  splitScreen();
  setResources("Xft.dpi:\t120\n");
  ASSERT_TRUE(areNamed({"left", "right"}) && scaleBecomes(1.25));
  const auto left = showBand(OverlayLevel::desktop, 27);
  const auto right = showBand(OverlayLevel::desktop, 27, 1);
  EXPECT_EQ(left->place(), (PixelRect{0, 0, 961, 34}));
  EXPECT_EQ(right->place(), (PixelRect{961, 0, 959, 34}));
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 33) && isVisibleAt(961, 33) && isVisibleAt(1919, 0); }));
  EXPECT_FALSE(isVisibleAt(960, 34));
}

TEST_F(Screens, WhatPanelsReserveIsFollowed) {
  start({"openbox"});
  EXPECT_TRUE(panelsReserve({0})) << "no panel yet";
  for (const int height : {32, 48}) {
    desktop().startPanel(height);
    EXPECT_TRUE(panelsReserve({1.0 * height})) << height;
  }
  desktop().stopPanel();
  EXPECT_TRUE(panelsReserve({0}));
  splitScreen();
  desktop().startPanel(40, "2");
  EXPECT_TRUE(panelsReserve({0, 40})) << "a panel on the second monitor";
}

TEST_F(Screens, APanelWithoutAWindowManagerCountsToo) {
  start();
  const xcb_window_t dock = openDock(30);
  EXPECT_TRUE(panelsReserve({30}));
  for (const std::uint32_t top : {44U, 0xFFFFFFFFU}) {
    setNumbers(dock, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, {0, 0, top, 0, 0, 0, 0, 0, 0, 1919, 0, 0});
    EXPECT_TRUE(panelsReserve({top == 44 ? 44.0 : 0.0})) << "a strut that changes, and one that can't be";
  }
  closeWindow(dock);
  runFor(0.3);
  EXPECT_TRUE(panelsReserve({0}));
}

TEST_F(Screens, AServerWithoutMonitorsIsOneScreen) {
  start({.options = {.width = 800, .height = 600, .serverArguments = {"-extension", "RANDR"}}});
  ASSERT_FALSE(connection_->randr().present);
  ASSERT_TRUE(areNamed({screens_->screens().at(0).name}));
  EXPECT_EQ(screens_->screens()[0].frame, (Rect{0, 0, 800, 600}));
}

TEST_F(Screens, ThePointerIsInPointsFromTheFirstScreensBottomAtEveryScale) {
  start();
  expectPointerAt(0, 0, {0, 1080});
  expectPointerAt(1919, 1079, {1919, 1});
  setResources("Xft.dpi: 192\n");
  ASSERT_TRUE(scaleBecomes(2));
  expectPointerAt(100, 30, {50, 525});
  setResources("Xft.dpi: 1e999\n");
  ASSERT_TRUE(scaleBecomes(1));
  EXPECT_EQ(changes_, 2);
  desktop().runToEnd({"xrandr", "--setmonitor", "*right", "960/254x800/211+960+280", "screen", "--setmonitor", "left",
                      "960/254x1080/286+0+0", "none"});
  ASSERT_TRUE(areNamed({"right", "left"}));
  expectPointerAt(960, 280, {0, 800});
  expectPointerAt(0, 0, {-960, 1080});
  desktop().stopServer();
  ASSERT_TRUE(waitUntil([&] { return connection_->isBroken(); }));
  EXPECT_EQ(x11PointerSource(*connection_, *screens_).location(), std::nullopt);
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
  ask(window, "WM_CHANGE_STATE", {iconicState});
  EXPECT_TRUE(fullScreenBecomes(false)) << "minimised";
  ask(window, "_NET_ACTIVE_WINDOW", {2});
  EXPECT_TRUE(fullScreenBecomes(true)) << "raised again";
  ask(desktop().root(), "_NET_CURRENT_DESKTOP", {1});
  EXPECT_TRUE(fullScreenBecomes(false)) << "another desktop is shown";
  ask(desktop().root(), "_NET_CURRENT_DESKTOP", {0});
  EXPECT_TRUE(fullScreenBecomes(true)) << "and its own again";
  setFullScreen(window, false);
  EXPECT_TRUE(fullScreenBecomes(false)) << "an ordinary window again";
  setFullScreen(window, true);
  EXPECT_TRUE(fullScreenBecomes(true));
  closeWindow(window);
  EXPECT_TRUE(fullScreenBecomes(false)) << "gone";
}

TEST_F(Screens, AFullScreenWindowOnTheSecondOneDoesNotCount) {
  start({"openbox"});
  splitScreen(960);
  ASSERT_TRUE(areNamed({"left", "right"}));
  watchFullScreen();
  for (const int x : {1200, 200}) {
    const xcb_window_t film = openWindow({x, 200, 300, 300});
    setFullScreen(film, true);
    ASSERT_TRUE(waitUntil([&] { return hasAtom(film, "_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN"); }));
    EXPECT_TRUE(x == 1200 ? fullScreenStays(false) : fullScreenBecomes(true)) << x;
  }
}

TEST_F(Screens, OurOwnWindowsAndTheDesktopAreNoFullScreenWindows) {
  start();
  watchFullScreen();
  const xcb_window_t window = openWindow({0, 0, 1920, 1080});
  EXPECT_TRUE(fullScreenStays(false)) << "as large as the screen, but it says nothing";
  const std::vector<std::uint32_t> fullScreen{desktop().atom("_NET_WM_STATE_FULLSCREEN")};
  setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, fullScreen);
  ASSERT_TRUE(hasAtom(window, "_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN"));
  EXPECT_TRUE(probe_->isActive()) << "the first question after a change that the server does not report";
  setType(window, "DESKTOP");
  const auto band = showBand(OverlayLevel::aboveMenuBar, 1080);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 500); }));
  setNumbers(band->window(), "_NET_WM_STATE", XCB_ATOM_ATOM, fullScreen);
  EXPECT_TRUE(fullScreenBecomes(false) && fullScreenStays(false));
  setType(window, "NORMAL");
  EXPECT_TRUE(fullScreenBecomes(true));
  desktop().stopServer();
  ASSERT_TRUE(waitUntil([&] { return connection_->isBroken(); }));
  EXPECT_FALSE(probe_->isActive());
  X11Dpms dpms(*connection_);
  dpms.setHandler([](bool) { ADD_FAILURE() << "without a server"; });
  dpms.poll();
}

TEST_F(Screens, AHintSaysThatAPanelHidesTheLight) {
  const std::string hidden = "opaque and hides";
  start({"openbox"});
  auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  EXPECT_EQ(hint(), "") << "our own window is no panel";
  band.reset();
  desktop().startPanel(32);
  ASSERT_TRUE(panelsReserve({32}));
  EXPECT_TRUE(hintBecomes(hidden)) << hint();
  EXPECT_NE(hint().find("start veloria again"), std::string::npos);
  EXPECT_EQ(hint(OverlayLevel::aboveMenuBar), "");
  desktop().startCompositor();
  desktop().startPanel(32);
  ASSERT_TRUE(waitUntil([&] { return connection_->compositorRunning(); }));
  EXPECT_TRUE(hintBecomes(hidden)) << "an opaque panel under a compositor";
  desktop().stopPanel();

  const xcb_window_t dock = openDock(32);
  EXPECT_TRUE(hintBecomes(hidden));
  setNumbers(dock, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {0x80000000U});
  EXPECT_TRUE(hintBecomes("")) << "made translucent by its opacity";
  closeWindow(dock);
  openDock(32, 0.5);
  EXPECT_TRUE(hintBecomes("")) << hint();
  band = showBand(OverlayLevel::desktop);
  EXPECT_TRUE(waitUntil([&] {
    const Pixel pixel = desktop().screenshot().at(960, 16);
    return pixel.green > pixel.red + 40;
  })) << "the band shines through a translucent panel";
  desktop().stopCompositor();
  EXPECT_TRUE(hintBecomes(hidden)) << "nothing is translucent without a compositor";
}

}  // namespace
}  // namespace veloria::tests
