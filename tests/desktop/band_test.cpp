// Our windows on real X servers: where they lie among the others, and what they survive.

#include "X11Fixture.h"

namespace veloria::tests {
namespace {

class Band : public X11Test {
 protected:
  void start(const DesktopSetup& desk = {.windowManager = "openbox"}) {
    startDesktop(desk);
    connect();
  }

  bool framesFlow() {
    const int before = framesDrawn_;
    return waitUntil([&] { return framesDrawn_ > before + 2; }, 5);
  }
  bool framesStop() {
    runFor(0.1);
    const int before = framesDrawn_;
    runFor(0.2);
    return framesDrawn_ == before;
  }

  bool skipsTaskbarAndPager(const X11Band& band) {
    return hasAtom(band.window(), "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR") &&
           hasAtom(band.window(), "_NET_WM_STATE", "_NET_WM_STATE_SKIP_PAGER");
  }
  bool isSettledBelow(const X11Band& band) {
    return waitUntil([&] {
      return bandIsAt(band.place()) && skipsTaskbarAndPager(band) &&
             hasAtom(band.window(), "_NET_WM_STATE", "_NET_WM_STATE_BELOW");
    });
  }
};

class BandAmongOthers : public Band, public testing::WithParamInterface<DesktopSetup> {
 protected:
  void startHere() {
    start(GetParam());
    startPanel();
  }
  // tint2 waits long for a window manager if there is none.
  void startPanel() {
    if (!GetParam().windowManager.empty()) return desktop().startPanel(32);
    if (ownPanel_ != XCB_WINDOW_NONE) closeWindow(ownPanel_);
    ownPanel_ = openDock(32);
  }
  bool isOverPanel(const X11Band& band) {
    return waitUntil([&] { return isAbove(band.window(), panelWindow()) && isVisibleAt(960, 16); });
  }
  bool isUnder(const X11Band& band, xcb_window_t other) {
    return waitUntil([&] {
      return isAbove(panelWindow(), band.window()) && isAbove(other, band.window()) && !isVisibleAt(960, 16);
    });
  }

 private:
  xcb_window_t ownPanel_ = XCB_WINDOW_NONE;
};

INSTANTIATE_TEST_SUITE_P(Desks, BandAmongOthers,
                         testing::Values(DesktopSetup{"openbox"}, DesktopSetup{"openbox", true}, DesktopSetup{"xfwm4"},
                                         DesktopSetup{}),
                         [](const auto& each) {
                           const DesktopSetup& desk = each.param;
                           return (desk.windowManager.empty() ? "noWindowManager" : desk.windowManager) +
                                  (desk.compositor ? "Composited" : "");
                         });

TEST_P(BandAmongOthers, OnTheDesktopItIsUnderThePanelAndUnderWindows) {
  startHere();
  const xcb_window_t other = openWindow({100, 10, 300, 300});
  const auto band = showBand(OverlayLevel::desktop, 64);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt({0, 0, 1920, 64}); }));
  EXPECT_TRUE(isUnder(*band, other));
  EXPECT_TRUE(waitUntil([&] { return isVisibleAt(960, 48); })) << "the bleed below the panel is not lit";
  EXPECT_FALSE(isVisibleAt(200, 48)) << "it is over a window";
  EXPECT_FALSE(isVisibleAt(960, 66)) << "it is too tall";
  band->setFrame({0, 0, 1920, 1080}, 1);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt({0, 0, 1920, 1080}) && isVisibleAt(5, 1075) && isVisibleAt(1915, 40); }));
  EXPECT_TRUE(isUnder(*band, other));
  EXPECT_FALSE(isVisibleAt(200, 200));
}

TEST_P(BandAmongOthers, AboveTheBarItIsOverThePanelAlsoOverANewOneAndClicksGoThrough) {
  startHere();
  const xcb_window_t other = openWindow({0, 40, 600, 200});
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(isUnder(*band, other));
  band->setLevel(OverlayLevel::aboveMenuBar);
  EXPECT_TRUE(isOverPanel(*band) && isVisibleAt(5, 5) && isVisibleAt(1915, 27));
  band->setLevel(OverlayLevel::desktop);
  EXPECT_TRUE(isUnder(*band, other));
  EXPECT_TRUE(bandIsAt(stripPixels));
  band->setLevel(OverlayLevel::aboveMenuBar);
  startPanel();
  EXPECT_TRUE(isOverPanel(*band)) << "a panel that started later is over the band";
  band->setFrame({0, 1080.0 - 100, 1920, 100}, 1);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(300, 90); }));
  desktop().runToEnd({"xdotool", "mousemove", "300", "90", "click", "1"});
  EXPECT_TRUE(waitUntil([&] { return wasClicked(other); }, 3));
}

TEST_P(BandAmongOthers, ItIsOverADesktopWindowAlsoOverANewOne) {
  startHere();
  std::unique_ptr<X11Band> band;
  for (int round = 0; round < 2; ++round) {
    const xcb_window_t wallpaper = openWindow({0, 0, 1920, 1080}, "DESKTOP");
    if (!band) band = showBand(OverlayLevel::desktop, 64);
    EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), wallpaper) && isVisibleAt(960, 48); }));
  }
}

class BandUnderBoth : public Band, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(WindowManagers, BandUnderBoth, testing::Values("openbox", "xfwm4"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(BandUnderBoth, ItTakesNoFocusAndIsOnAllWorkspaces) {
  start({GetParam()});
  const xcb_window_t other = openWindow({400, 400, 300, 200});
  const auto activeWindow = [&] {  // some window managers append a second number
    const auto values = desktop().property(desktop().root(), "_NET_ACTIVE_WINDOW");
    return values.empty() ? xcb_window_t{XCB_WINDOW_NONE} : values.front();
  };
  for (const OverlayLevel level : {OverlayLevel::desktop, OverlayLevel::aboveMenuBar}) {
    desktop().runToEnd({"xdotool", "windowactivate", std::to_string(other)});
    ASSERT_TRUE(waitUntil([&] { return stackPosition(other) >= 0 && activeWindow() == other; }));
    const auto band = showBand(level);
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
    runFor(0.2);
    EXPECT_EQ(activeWindow(), other);
    EXPECT_TRUE(skipsTaskbarAndPager(*band));
    desktop().runToEnd({"xdotool", "set_desktop", "1"});
    EXPECT_TRUE(waitUntil([&] { return stackPosition(other) < 0; }));
    EXPECT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); })) << "not on the second workspace";
    desktop().runToEnd({"xdotool", "set_desktop", "0"});
  }
}

TEST_P(BandUnderBoth, ItComesBackWhenOthersMoveItUnmapItOrAskItToClose) {
  start({GetParam()});
  const auto band = showBand(OverlayLevel::desktop);
  const PixelRect smaller{100, 0, 640, 57};
  band->setFrame({100, 1080 - 57, 640, 57}, 1);
  EXPECT_TRUE(waitUntil([&] { return bandIsAt(smaller) && isVisibleAt(110, 50); }));
  EXPECT_EQ(band->drawableSize(), (gpu::Size{640, 57}));
  const std::string window = std::to_string(band->window());
  desktop().runToEnd({"xdotool", "windowmove", window, "300", "500"});
  EXPECT_TRUE(waitUntil([&] { return bandIsAt(smaller); })) << "after it was moved";
  desktop().runToEnd({"xdotool", "windowunmap", window});
  EXPECT_TRUE(waitUntil([&] { return stackPosition(band->window()) >= 0; })) << "after it was unmapped";
  EXPECT_TRUE(isSettledBelow(*band));
  ask(band->window(), "_NET_CLOSE_WINDOW", {});
  for (int round = 0; round < 4; ++round) {
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(200, 16); })) << round;
    band->orderOut();
    if (round % 2 == 0) waitUntil([&] { return stackPosition(band->window()) < 0; });
    band->orderFront();
  }
  EXPECT_TRUE(isSettledBelow(*band)) << "after hiding and showing";
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(Band, FramesComeOnlyWhileItIsShownAndNotPaused) {
  start();
  auto band = showBand(OverlayLevel::aboveMenuBar);
  band->setPaused(true);
  EXPECT_TRUE(framesStop());
  band->setPaused(false);
  EXPECT_TRUE(framesFlow());
  band->orderOut();
  EXPECT_TRUE(framesStop());
  band->orderFront();
  EXPECT_TRUE(framesFlow());
  band->setDrawHandler([&band] { band.reset(); });
  EXPECT_TRUE(waitUntil([&] { return band == nullptr; })) << "its own handler may close it";
  runFor(0.1);
  EXPECT_FALSE(isVisibleAt(960, 16));
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(Band, ItSurvivesWindowManagersAndCompositorsThatComeAndGo) {
  start({.windowManager = "openbox", .compositor = true});
  const auto band = showBand(OverlayLevel::desktop);
  const xcb_window_t other = openWindow({100, 10, 300, 300});
  const auto isInPlace = [&] {
    return waitUntil([&] { return isAbove(other, band->window()) && isVisibleAt(960, 16); });
  };
  ASSERT_TRUE(isSettledBelow(*band));
  desktop().stopWindowManager();
  EXPECT_TRUE(isInPlace()) << "without any";
  desktop().startWindowManager("xfwm4");
  EXPECT_TRUE(isSettledBelow(*band) && isInPlace()) << "under xfwm4";
  desktop().stopCompositor();
  EXPECT_TRUE(waitUntil([&] { return !connection_->compositorRunning(); }) && isInPlace());
  desktop().startCompositor();
  EXPECT_TRUE(waitUntil([&] { return connection_->compositorRunning(); }) && isInPlace());
}

TEST_F(Band, AWindowThatOthersDestroyIsMadeAgainButNotForEver) {
  start();
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  const xcb_window_t first = band->window();
  closeWindow(first);
  EXPECT_TRUE(waitUntil([&] { return band->window() != first && isVisibleAt(960, 16); }));
  EXPECT_TRUE(waitUntil([&] {
    if (band->window() != XCB_WINDOW_NONE) closeWindow(band->window());
    return band->window() == XCB_WINDOW_NONE;
  }));
  EXPECT_TRUE(framesStop());
  EXPECT_EQ(brokenWith_, "");
}

}  // namespace
}  // namespace veloria::tests
