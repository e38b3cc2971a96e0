#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "X11Fixture.h"

namespace veloria::desktop {
namespace {

constexpr PixelRect strip{0, 0, 1920, 32};

// 10 rounds, or as many as VELORIA_SOAK_ROUNDS says.
int rounds() {
  const char* text = std::getenv("VELORIA_SOAK_ROUNDS");
  return text != nullptr ? std::max(1, std::atoi(text)) : 10;
}

class PanelLife : public X11Test {
 protected:
  void start(const std::string& windowManager = "openbox", bool compositor = false,
             const DesktopSession::Options& options = {}) {
    std::vector<std::string> programs{windowManager, "xdotool"};
    if (windowManager == "xfwm4") programs.push_back("dbus-run-session");
    if (compositor) programs.push_back("picom");
    startDesktop(programs, options);
    if (IsSkipped()) return;
    desktop().startWindowManager(windowManager);
    if (compositor) desktop().startCompositor();
    connect();
  }

  bool framesFlow() {
    const int before = framesDrawn_;
    return waitUntil([&] { return framesDrawn_ > before + 2; }, 5);
  }

  bool framesStop() {
    runFor(0.1);
    const int before = framesDrawn_;
    runFor(0.3);
    return framesDrawn_ == before;
  }

  std::vector<std::string> states(xcb_window_t window) { return desktop().atomProperty(window, "_NET_WM_STATE"); }

  bool isSettledBelow(const X11OverlayPanel& band) {
    return waitUntil([&] {
      const auto now = states(band.window());
      const auto has = [&](const char* state) { return std::find(now.begin(), now.end(), state) != now.end(); };
      return bandIsAt(band.place()) && has("_NET_WM_STATE_BELOW") && has("_NET_WM_STATE_SKIP_TASKBAR") &&
             has("_NET_WM_STATE_SKIP_PAGER");
    });
  }
};

class PanelLifeUnderBoth : public PanelLife, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(WindowManagers, PanelLifeUnderBoth, testing::Values("openbox", "xfwm4"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(PanelLifeUnderBoth, itTakesNoFocusAndStandsOnAllWorkspaces) {
  start(GetParam());
  if (IsSkipped()) return;
  const xcb_window_t other = openWindow(400, 400, 300, 200);
  const auto active = [&] {  // some window managers append a second number
    const auto values = desktop().property(desktop().root(), "_NET_ACTIVE_WINDOW");
    return values.empty() ? xcb_window_t{XCB_WINDOW_NONE} : values.front();
  };
  desktop().runToEnd({"xdotool", "windowactivate", std::to_string(other)});
  ASSERT_TRUE(waitUntil([&] { return active() == other; }));
  for (const OverlayLevel level : {OverlayLevel::desktop, OverlayLevel::aboveMenuBar}) {
    const auto band = showBand(level);
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
    runFor(0.3);
    EXPECT_EQ(active(), other);
    const auto now = states(band->window());
    EXPECT_NE(std::find(now.begin(), now.end(), "_NET_WM_STATE_SKIP_TASKBAR"), now.end());
    EXPECT_NE(std::find(now.begin(), now.end(), "_NET_WM_STATE_SKIP_PAGER"), now.end());
    desktop().runToEnd({"xdotool", "set_desktop", "1"});
    EXPECT_TRUE(waitUntil([&] { return stackPosition(other) < 0; }));
    EXPECT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); })) << "not on the second workspace";
    desktop().runToEnd({"xdotool", "set_desktop", "0"});
    desktop().runToEnd({"xdotool", "windowactivate", std::to_string(other)});
    ASSERT_TRUE(waitUntil([&] { return stackPosition(other) >= 0; }));
  }
}

TEST_P(PanelLifeUnderBoth, itIsMovedAndResizedAndComesBackWhenOthersMoveIt) {
  start(GetParam());
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] { return bandIsAt(strip); }));
  band->setFrame({100, 1080 - 57, 640, 57}, 1);
  EXPECT_TRUE(waitUntil([&] { return bandIsAt({100, 0, 640, 57}) && isVisibleAt(110, 50); }));
  EXPECT_EQ(band->drawableSize(), (gpu::Size{640, 57}));
  desktop().runToEnd({"xdotool", "windowmove", std::to_string(band->window()), "300", "500"});
  EXPECT_TRUE(waitUntil([&] { return bandIsAt({100, 0, 640, 57}); })) << "did not come back";
}

TEST_P(PanelLifeUnderBoth, hidingAndShowingManyTimesLeavesItInPlace) {
  start(GetParam());
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::desktop);
  for (int round = 0; round < rounds(); ++round) {
    ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); })) << round;
    band->orderOut();
    if (round % 2 == 0) {
      ASSERT_TRUE(waitUntil([&] { return stackPosition(band->window()) < 0; })) << round;
    }
    band->orderFront();
  }
  EXPECT_TRUE(isSettledBelow(*band));
}

TEST_F(PanelLife, framesComeOnlyWhileItIsShownAndNotPaused) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::aboveMenuBar);
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
}

// Windows with an alpha channel are drawn aside by the server and count as visible, whatever covers them.
TEST_F(PanelLife, anObscuredBandWithoutAnAlphaChannelDrawsNothing) {
  start("openbox", false, {.serverArguments = {"-extension", "Composite"}});
  if (IsSkipped()) return;
  ASSERT_NE(factory_->visual().depth, 32);
  const auto band = showBand(OverlayLevel::desktop);
  EXPECT_TRUE(framesFlow());
  const xcb_window_t cover = openWindow(0, 0, 1920, 200);
  EXPECT_TRUE(waitUntil([&] { return framesStop(); }));
  closeWindow(cover);
  EXPECT_TRUE(framesFlow());
}

TEST_F(PanelLife, theDrawHandlerMayCloseThePanel) {
  start();
  if (IsSkipped()) return;
  auto band = showBand(OverlayLevel::desktop);
  band->setDrawHandler([&band] { band.reset(); });
  EXPECT_TRUE(waitUntil([&] { return band == nullptr; }));
  runFor(0.1);
  EXPECT_FALSE(isVisibleAt(960, 16));
}

TEST_F(PanelLife, impossibleFramesAndRatesDoNoHarm) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::desktop);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double bad : {nan, std::numeric_limits<double>::infinity(), -1e300, 1e300, 0.0}) {
    band->setFrame({bad, bad, bad, bad}, bad);
    band->setFrame({0, 0, 1e9, 1e9}, bad);
    band->setPreferredFramesPerSecond(bad);
    runFor(0.02);
  }
  band->setFrame({0, 1080 - 32, 1920, 32}, 1);
  EXPECT_TRUE(waitUntil([&] { return bandIsAt(strip) && isVisibleAt(960, 16); }));
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(PanelLife, itSurvivesWindowManagersThatRestartAndChange) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::desktop);
  const xcb_window_t other = openWindow(100, 10, 300, 300);
  ASSERT_TRUE(isSettledBelow(*band));

  desktop().replaceWindowManager();
  EXPECT_TRUE(isSettledBelow(*band)) << "after openbox --restart";
  EXPECT_TRUE(waitUntil([&] { return isAbove(other, band->window()) && isVisibleAt(960, 16); }));

  desktop().stopWindowManager();
  EXPECT_TRUE(waitUntil([&] { return isAbove(other, band->window()) && isVisibleAt(960, 16); })) << "without any";

  if (const auto missing = DesktopSession::missing({"xfwm4", "dbus-run-session"}); !missing.empty()) {
    GTEST_SKIP() << missing;
  }
  desktop().startWindowManager("xfwm4");
  EXPECT_TRUE(isSettledBelow(*band)) << "under xfwm4";
  EXPECT_TRUE(waitUntil([&] { return isAbove(other, band->window()) && isVisibleAt(960, 16); }));
}

TEST_F(PanelLife, itSurvivesACompositorThatComesAndGoes) {
  start("openbox", true);
  if (IsSkipped()) return;
  int changes = 0;
  const auto subscription = connection_->onCompositorChange([&] { ++changes; });
  EXPECT_TRUE(connection_->compositorRunning());
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  desktop().stopCompositor();
  EXPECT_TRUE(waitUntil([&] { return !connection_->compositorRunning() && isVisibleAt(960, 16); }));
  desktop().startCompositor();
  EXPECT_TRUE(waitUntil([&] { return connection_->compositorRunning() && isVisibleAt(960, 16); }));
  EXPECT_EQ(changes, 2);
}

TEST_F(PanelLife, aWindowThatOthersDestroyIsMadeAgain) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  const xcb_window_t first = band->window();
  closeWindow(first);
  EXPECT_TRUE(waitUntil([&] { return band->window() != first && bandIsAt(strip) && isVisibleAt(960, 16); }));
  EXPECT_TRUE(framesFlow());
}

TEST_P(PanelLifeUnderBoth, aWindowThatOthersUnmapComesBack) {
  start(GetParam());
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::desktop);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  desktop().runToEnd({"xdotool", "windowunmap", std::to_string(band->window())});
  EXPECT_TRUE(waitUntil([&] { return stackPosition(band->window()) >= 0; }));
  EXPECT_TRUE(isSettledBelow(*band));
  EXPECT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
}

TEST_F(PanelLife, aProgramThatDestroysItForEverIsNotFoughtForEver) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  int destroyed = 0;
  waitUntil(
      [&] {
        if (band->window() != XCB_WINDOW_NONE) closeWindow(band->window());
        return ++destroyed > 60;
      },
      5);
  EXPECT_TRUE(waitUntil([&] { return band->window() == XCB_WINDOW_NONE; }));
  EXPECT_TRUE(framesStop());
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(PanelLife, aRequestToCloseIsIgnored) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::aboveMenuBar);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = band->window();
  message.type = desktop().atom("_NET_CLOSE_WINDOW");
  xcb_send_event(desktop().observer(), 0, desktop().root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&message));
  xcb_flush(desktop().observer());
  runFor(0.5);
  EXPECT_EQ(brokenWith_, "");
  EXPECT_TRUE(isVisibleAt(960, 16));
}

TEST_F(PanelLife, aServerThatDiesIsReportedOnceInWords) {
  start();
  if (IsSkipped()) return;
  const auto band = showBand(OverlayLevel::desktop);
  int reports = 0;
  connection_->setBrokenHandler([&](const std::string& text) {
    ++reports;
    brokenWith_ = text;
  });
  EXPECT_TRUE(framesFlow());
  desktop().stopServer();
  EXPECT_TRUE(waitUntil([&] { return reports > 0; }));
  EXPECT_NE(brokenWith_.find("The connection to the X display was lost"), std::string::npos) << brokenWith_;
  runFor(0.3);
  EXPECT_EQ(reports, 1);
  band->setLevel(OverlayLevel::aboveMenuBar);
  band->setFrame({0, 0, 100, 100}, 1);
  band->orderOut();
  EXPECT_EQ(factory_->visibilityHint(Screen{}, OverlayLevel::desktop), "");
  EXPECT_THROW(factory_->makePanel(Screen{}), std::runtime_error);
}

TEST_F(PanelLife, aDisplayThatIsNotThereIsSaidSo) {
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
}  // namespace veloria::desktop
