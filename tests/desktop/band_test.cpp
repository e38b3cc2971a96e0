// Our windows on real X servers: where they lie among the others, and what they survive.

#include <algorithm>
#include <limits>

#include "X11Fixture.h"

namespace veloria::tests {
namespace {

class Band : public X11Test {
 protected:
  void start(const Desk& desk = {.windowManager = "openbox"}) {
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

  bool isSettledBelow(const X11Band& band) {
    return waitUntil([&] {
      const auto has = [&](const char* state) { return hasAtom(band.window(), "_NET_WM_STATE", state); };
      return bandIsAt(band.place()) && has("_NET_WM_STATE_BELOW") && has("_NET_WM_STATE_SKIP_TASKBAR") &&
             has("_NET_WM_STATE_SKIP_PAGER");
    });
  }
  xcb_window_t activeWindow() {  // some window managers append a second number
    const auto values = desktop().property(desktop().root(), "_NET_ACTIVE_WINDOW");
    return values.empty() ? xcb_window_t{XCB_WINDOW_NONE} : values.front();
  }
  void activate(xcb_window_t window) {
    desktop().runToEnd({"xdotool", "windowactivate", std::to_string(window)});
    ASSERT_TRUE(waitUntil([&] { return stackPosition(window) >= 0 && activeWindow() == window; }));
  }
};

class BandAmongOthers : public Band, public testing::WithParamInterface<Desk> {
 protected:
  void startHere() {
    start(GetParam());
    startPanel();
  }
  bool managed() const { return !GetParam().windowManager.empty(); }
  // tint2 waits long for a window manager if there is none.
  void startPanel() {
    if (managed()) return desktop().startPanel(32);
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
                         testing::Values(Desk{"openbox"}, Desk{"openbox", true}, Desk{"xfwm4"}, Desk{}),
                         [](const auto& each) {
                           const Desk& desk = each.param;
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
  for (int round = 0; round < 2; ++round) {
    band->setLevel(OverlayLevel::aboveMenuBar);
    EXPECT_TRUE(isOverPanel(*band) && isVisibleAt(5, 5) && isVisibleAt(1915, 27)) << round;
    band->setLevel(OverlayLevel::desktop);
    EXPECT_TRUE(isUnder(*band, other)) << round;
  }
  EXPECT_TRUE(bandIsAt(stripPixels));
  band->setLevel(OverlayLevel::aboveMenuBar);
  startPanel();
  EXPECT_TRUE(isOverPanel(*band)) << "a panel that started later is over the band";
  for (const int height : {100, 140}) {
    band->setFrame({0, 1080.0 - height, 1920, 1.0 * height}, 1);
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(300, height - 10); }));
    clicks(other);
    desktop().runToEnd({"xdotool", "mousemove", "300", std::to_string(height - 10), "click", "1"});
    EXPECT_TRUE(waitUntil([&] { return clicks(other) > 0; }, 3)) << height;
  }
}

TEST_P(BandAmongOthers, ItIsOverADesktopWindowAlsoOverANewOne) {
  startHere();
  std::unique_ptr<X11Band> band;
  for (int round = 0; round < 2; ++round) {
    const xcb_window_t wallpaper = openWindow({0, 0, 1920, 1080});
    setType(wallpaper, "DESKTOP");
    unmap(wallpaper);
    waitUntil([&] { return stackPosition(wallpaper) < 0; });
    xcb_map_window(desktop().observer(), wallpaper);
    xcb_flush(desktop().observer());
    waitUntil([&] { return stackPosition(wallpaper) >= 0; });
    if (!band) band = showBand(OverlayLevel::desktop, 64);
    EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), wallpaper) && isVisibleAt(960, 48); }));
  }
  // Without a window manager the new desktop window is over the panel, and so is the band.
  EXPECT_TRUE(!managed() || waitUntil([&] { return isAbove(panelWindow(), band->window()); }));
}

class BandUnderBoth : public Band, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(WindowManagers, BandUnderBoth, testing::Values("openbox", "xfwm4"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(BandUnderBoth, ItTakesNoFocusAndIsOnAllWorkspaces) {
  start({GetParam()});
  const xcb_window_t other = openWindow({400, 400, 300, 200});
  activate(other);
  for (const OverlayLevel level : {OverlayLevel::desktop, OverlayLevel::aboveMenuBar}) {
    const auto band = showBand(level);
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
    runFor(0.3);
    EXPECT_EQ(activeWindow(), other);
    for (const char* state : {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}) {
      EXPECT_TRUE(hasAtom(band->window(), "_NET_WM_STATE", state)) << state;
    }
    desktop().runToEnd({"xdotool", "set_desktop", "1"});
    EXPECT_TRUE(waitUntil([&] { return stackPosition(other) < 0; }));
    EXPECT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); })) << "not on the second workspace";
    desktop().runToEnd({"xdotool", "set_desktop", "0"});
    activate(other);
  }
}

TEST_P(BandUnderBoth, ItComesBackWhenOthersMoveItUnmapItOrAskItToClose) {
  start({GetParam()});
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt(stripPixels); }));
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
  runFor(0.3);
  EXPECT_EQ(brokenWith_, "");
  for (int round = 0; round < 6; ++round) {
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(200, 16); })) << round;
    band->orderOut();
    if (round % 2 == 0) {
      ASSERT_TRUE(waitUntil([&] { return stackPosition(band->window()) < 0; })) << round;
    }
    band->orderFront();
  }
  EXPECT_TRUE(isSettledBelow(*band)) << "after hiding and showing";
}

TEST_F(Band, FramesComeOnlyWhileItIsShownAndNotPaused) {
  start();
  auto band = showBand(OverlayLevel::aboveMenuBar);
  EXPECT_TRUE(framesFlow());
  band->setPaused(true);
  EXPECT_TRUE(framesStop());
  band->setPaused(false);
  EXPECT_TRUE(framesFlow());
  band->orderOut();
  EXPECT_TRUE(framesStop());
  EXPECT_EQ(band->currentDrawable(), nullptr);
  band->orderFront();
  EXPECT_TRUE(framesFlow());
  band->setFrame({0, 0, 0, 0}, 1);
  EXPECT_TRUE(framesStop()) << "an empty frame has nothing to draw";

  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double bad : {nan, std::numeric_limits<double>::infinity(), -1e300, 1e300, 0.0}) {
    band->setFrame({bad, bad, bad, bad}, bad);
    band->setFrame({0, 0, 1e9, 1e9}, bad);
    band->setPreferredFramesPerSecond(bad);
    runFor(0.02);
  }
  band->setFrame({0, 1080 - 32, 1920, 32}, 1);
  EXPECT_TRUE(waitUntil([&] { return bandIsAt(stripPixels) && isVisibleAt(960, 16); }));

  band->setDrawHandler([&band] { band.reset(); });
  EXPECT_TRUE(waitUntil([&] { return band == nullptr; })) << "its own handler may close it";
  runFor(0.1);
  EXPECT_FALSE(isVisibleAt(960, 16));
  EXPECT_EQ(brokenWith_, "");
}

// Windows with an alpha channel are drawn aside by the server and count as visible, whatever covers them.
TEST_F(Band, CoveredAndWithoutAnAlphaChannelItDrawsNothing) {
  start({.windowManager = "openbox", .options = {.serverArguments = {"-extension", "Composite"}}});
  ASSERT_NE(factory_->visual().depth, 32);
  const auto band = showBand(OverlayLevel::desktop);
  EXPECT_TRUE(framesFlow());
  const xcb_window_t cover = openWindow({0, 0, 1920, 200});
  EXPECT_TRUE(waitUntil([&] { return framesStop(); }));
  closeWindow(cover);
  EXPECT_TRUE(framesFlow());
}

TEST_F(Band, ItSurvivesWindowManagersAndCompositorsThatComeAndGo) {
  start({.windowManager = "openbox", .compositor = true});
  int changes = 0;
  const auto subscription = connection_->onCompositorChange([&] { ++changes; });
  EXPECT_TRUE(connection_->compositorRunning());
  const auto band = showBand(OverlayLevel::desktop);
  const xcb_window_t other = openWindow({100, 10, 300, 300});
  const auto isInPlace = [&] {
    return waitUntil([&] { return isAbove(other, band->window()) && isVisibleAt(960, 16); });
  };
  ASSERT_TRUE(isSettledBelow(*band));
  desktop().replaceWindowManager();
  EXPECT_TRUE(isSettledBelow(*band) && isInPlace()) << "after openbox --restart";
  desktop().stopWindowManager();
  EXPECT_TRUE(isInPlace()) << "without any";
  desktop().startWindowManager("xfwm4");
  EXPECT_TRUE(isSettledBelow(*band) && isInPlace()) << "under xfwm4";
  desktop().stopCompositor();
  EXPECT_TRUE(waitUntil([&] { return !connection_->compositorRunning(); }) && isInPlace());
  desktop().startCompositor();
  EXPECT_TRUE(waitUntil([&] { return connection_->compositorRunning(); }) && isInPlace());
  EXPECT_EQ(changes, 2);
}

TEST_F(Band, AWindowThatOthersDestroyIsMadeAgainButNotForEver) {
  start();
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  const xcb_window_t first = band->window();
  closeWindow(first);
  EXPECT_TRUE(waitUntil([&] { return band->window() != first && bandIsAt(stripPixels) && isVisibleAt(960, 16); }));
  EXPECT_TRUE(framesFlow());
  waitUntil(
      [&] {
        if (band->window() != XCB_WINDOW_NONE) closeWindow(band->window());
        return false;
      },
      1);
  EXPECT_EQ(band->window(), xcb_window_t{XCB_WINDOW_NONE});
  EXPECT_TRUE(framesStop());
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(Band, AServerThatDiesOrIsNotThereIsReportedOnceInWords) {
  start();
  const auto band = showBand(OverlayLevel::desktop);
  EXPECT_TRUE(framesFlow());
  desktop().stopServer();
  EXPECT_TRUE(waitUntil([&] { return !brokenWith_.empty(); }));
  runFor(0.2);
  const std::string words = "The connection to the X display was lost";
  EXPECT_EQ(brokenWith_.find(words), brokenWith_.rfind(words)) << brokenWith_;
  EXPECT_EQ(brokenWith_.substr(0, words.size()), words);
  band->setLevel(OverlayLevel::aboveMenuBar);
  band->setFrame({0, 0, 100, 100}, 1);
  band->orderOut();
  EXPECT_EQ(factory_->visibilityHint(Screen{}, OverlayLevel::desktop), "");
  EXPECT_THROW(factory_->makePanel(Screen{}), std::runtime_error);
  for (const char* name : {":987", "nonsense", ":0.77"}) {
    try {
      const X11Connection refused(
          name, [](int, const std::function<void()>&) { return nullptr; }, timers_);
      ADD_FAILURE() << name;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(name), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace veloria::tests
