#include <ostream>

#include "X11Fixture.h"

namespace veloria::desktop {
namespace {

constexpr PixelRect strip{0, 0, 1920, 32};
constexpr PixelRect wholeScreen{0, 0, 1920, 1080};

struct Desk {
  std::string windowManager;
  bool compositor;
};

void PrintTo(const Desk& desk, std::ostream* stream) {
  *stream << desk.windowManager << (desk.compositor ? " composited" : "");
}

std::string deskName(const testing::TestParamInfo<Desk>& each) {
  return (each.param.windowManager.empty() ? "noWindowManager" : each.param.windowManager) +
         (each.param.compositor ? "Composited" : "");
}

class PanelStacking : public X11Test, public testing::WithParamInterface<Desk> {
 protected:
  void SetUp() override {
    std::vector<std::string> programs{"xdotool"};
    if (managed()) programs.insert(programs.end(), {"tint2", GetParam().windowManager});
    if (GetParam().windowManager == "xfwm4") programs.push_back("dbus-run-session");
    if (GetParam().compositor) programs.push_back("picom");
    startDesktop(programs);
    if (IsSkipped()) return;
    if (managed()) desktop().startWindowManager(GetParam().windowManager);
    if (GetParam().compositor) desktop().startCompositor();
    connect();
    startPanel();
  }

  bool managed() const { return !GetParam().windowManager.empty(); }

  // tint2 waits long for a window manager where there is none.
  void startPanel() {
    if (managed()) {
      desktop().startPanel(32);
    } else {
      if (ownPanel_ != XCB_WINDOW_NONE) closeWindow(ownPanel_);
      ownPanel_ = openDock(32);
    }
  }

 private:
  xcb_window_t ownPanel_ = XCB_WINDOW_NONE;
};

TEST_P(PanelStacking, theDesktopStripIsUnderThePanelAndUnderWindows) {
  const xcb_window_t other = openWindow(100, 10, 300, 300);
  const auto band = showBand(OverlayLevel::desktop, 64);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt({0, 0, 1920, 64}); }));
  EXPECT_TRUE(waitUntil([&] { return isAbove(panelWindow(), band->window()) && isAbove(other, band->window()); }));
  EXPECT_TRUE(waitUntil([&] { return isVisibleAt(960, 48); })) << "the bleed below the panel is not lit";
  EXPECT_FALSE(isVisibleAt(960, 16)) << "the band is over the panel";
  EXPECT_FALSE(isVisibleAt(200, 48)) << "the band is over a window";
  EXPECT_FALSE(isVisibleAt(960, 66)) << "the band is too tall";
}

TEST_P(PanelStacking, theFullDesktopIsUnderEverything) {
  const xcb_window_t other = openWindow(300, 300, 200, 200);
  const auto band = showBand(OverlayLevel::desktop, 1080);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt(wholeScreen); }));
  EXPECT_TRUE(waitUntil([&] { return isAbove(panelWindow(), band->window()) && isAbove(other, band->window()); }));
  EXPECT_TRUE(waitUntil([&] { return isVisibleAt(5, 1075) && isVisibleAt(1915, 40); }));
  EXPECT_FALSE(isVisibleAt(400, 400));
  EXPECT_FALSE(isVisibleAt(960, 16));
}

TEST_P(PanelStacking, theBandAboveTheBarIsOverThePanelAlsoOverANewOne) {
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt(strip); }));
  EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), panelWindow()); }));
  EXPECT_TRUE(waitUntil([&] { return isVisibleAt(5, 5) && isVisibleAt(1915, 27); }));

  startPanel();
  EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), panelWindow()) && isVisibleAt(960, 16); }))
      << "a panel that started later is over the band";
}

TEST_P(PanelStacking, theLevelCanBeChangedWhileItIsShown) {
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] { return isAbove(panelWindow(), band->window()); }));
  for (int round = 0; round < 3; ++round) {
    band->setLevel(OverlayLevel::aboveMenuBar);
    EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), panelWindow()) && isVisibleAt(960, 16); })) << round;
    band->setLevel(OverlayLevel::desktop);
    EXPECT_TRUE(waitUntil([&] { return isAbove(panelWindow(), band->window()) && !isVisibleAt(960, 16); })) << round;
  }
  EXPECT_TRUE(bandIsAt(strip));
}

TEST_P(PanelStacking, clicksReachWhatIsBeneath) {
  const xcb_window_t other = openWindow(0, 40, 600, 200);
  const auto band = showBand(OverlayLevel::aboveMenuBar, 100);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(300, 80); }));
  band->setFrame({0, 1080 - 140, 1920, 140}, 1);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(300, 130); }));
  clicks(other);
  for (const char* y : {"60", "130"}) {
    desktop().runToEnd({"xdotool", "mousemove", "300", y, "click", "1"});
    EXPECT_TRUE(waitUntil([&] { return clicks(other) > 0; }, 3)) << "at y " << y;
  }
}

TEST_P(PanelStacking, theDesktopStripIsOverADesktopWindowAlsoOverANewOne) {
  const auto openDesktop = [this] {
    const xcb_window_t window = openWindow(0, 0, 1920, 1080);
    setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {desktop().atom("_NET_WM_WINDOW_TYPE_DESKTOP")});
    xcb_unmap_window(desktop().observer(), window);
    xcb_flush(desktop().observer());
    waitUntil([&] { return stackPosition(window) < 0; });
    xcb_map_window(desktop().observer(), window);
    xcb_flush(desktop().observer());
    waitUntil([&] { return stackPosition(window) >= 0; });
    return window;
  };
  const xcb_window_t first = openDesktop();
  const auto band = showBand(OverlayLevel::desktop, 64);
  EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), first) && isVisibleAt(960, 48); }));
  const xcb_window_t second = openDesktop();
  EXPECT_TRUE(waitUntil([&] { return isAbove(band->window(), second) && isVisibleAt(960, 48); }));
  // Without a window manager the new desktop window is over the panel, and so is the band.
  EXPECT_TRUE(!managed() || waitUntil([&] { return isAbove(panelWindow(), band->window()); }));
}

INSTANTIATE_TEST_SUITE_P(Desks, PanelStacking,
                         testing::Values(Desk{"openbox", false}, Desk{"openbox", true}, Desk{"xfwm4", false},
                                         Desk{"", false}),
                         deskName);

}  // namespace
}  // namespace veloria::desktop
