#include "X11Fixture.h"
#include "platform/linux/x11/X11Dpms.h"
#include "platform/linux/x11/X11FullScreen.h"

namespace veloria::desktop {
namespace {

constexpr std::uint32_t iconicState = 3;
constexpr std::uint32_t removeState = 0;
constexpr std::uint32_t addState = 1;

using Numbers = std::vector<std::uint32_t>;

class FullScreen : public X11Test {
 protected:
  void start(const std::string& windowManager, const std::vector<std::string>& more = {}) {
    std::vector<std::string> programs = more;
    if (!windowManager.empty()) programs.push_back(windowManager);
    startDesktop(programs);
    if (IsSkipped()) return;
    if (!windowManager.empty()) desktop().startWindowManager(windowManager);
  }

  void watch() {
    connect();
    probe_ = std::make_unique<X11FullScreen>(*connection_, *screens_);
  }

  void TearDown() override {
    probe_.reset();
    X11Test::TearDown();
  }

  bool becomes(bool active) {
    return waitUntil([&] { return probe_->isActive() == active; });
  }
  bool stays(bool active) {
    runFor(0.3);
    return probe_->isActive() == active;
  }

  void tellWindowManager(xcb_window_t window, const std::string& type, const std::array<std::uint32_t, 5>& data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = desktop().atom(type);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(desktop().observer(), 0, desktop().root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(desktop().observer());
  }

  void setFullScreen(xcb_window_t window, bool on) {
    tellWindowManager(window, "_NET_WM_STATE",
                      {on ? addState : removeState, desktop().atom("_NET_WM_STATE_FULLSCREEN"), 0, 1, 0});
  }

  void showDesktop(std::uint32_t number) {
    tellWindowManager(desktop().root(), "_NET_CURRENT_DESKTOP", {number, 0, 0, 0, 0});
  }

  std::unique_ptr<X11FullScreen> probe_;
};

class FullScreenUnder : public FullScreen, public testing::WithParamInterface<const char*> {};

TEST_P(FullScreenUnder, FollowsTheWindow) {
  start(GetParam());
  if (IsSkipped()) return;
  watch();
  EXPECT_FALSE(probe_->isActive()) << "an empty desktop";
  const xcb_window_t window = openWindow(100, 100, 640, 480);
  EXPECT_TRUE(stays(false)) << "an ordinary window";
  setFullScreen(window, true);
  EXPECT_TRUE(becomes(true)) << "full-screen";
  tellWindowManager(window, "WM_CHANGE_STATE", {iconicState, 0, 0, 0, 0});
  EXPECT_TRUE(becomes(false)) << "minimised";
  tellWindowManager(window, "_NET_ACTIVE_WINDOW", {2, 0, 0, 0, 0});
  EXPECT_TRUE(becomes(true)) << "raised again";
  showDesktop(1);
  EXPECT_TRUE(becomes(false)) << "another desktop is shown";
  showDesktop(0);
  EXPECT_TRUE(becomes(true)) << "and its own again";
  setFullScreen(window, false);
  EXPECT_TRUE(becomes(false)) << "an ordinary window again";
  setFullScreen(window, true);
  EXPECT_TRUE(becomes(true));
  closeWindow(window);
  EXPECT_TRUE(becomes(false)) << "gone";
}

INSTANTIATE_TEST_SUITE_P(WindowManagers, FullScreenUnder, testing::Values("openbox", "xfwm4"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_F(FullScreen, CountsOnTheFirstScreenOnly) {
  start("", {"openbox", "xrandr"});
  if (IsSkipped()) return;
  desktop().runToEnd({"xrandr", "--setmonitor", "left", "960/254x1080/286+0+0", "screen", "--setmonitor", "right",
                      "960/254x1080/286+960+0", "none"});
  desktop().startWindowManager("openbox");
  watch();
  ASSERT_EQ(screens_->screens().size(), 2U);
  const xcb_window_t right = openWindow(1200, 200, 300, 300);
  setFullScreen(right, true);
  ASSERT_TRUE(waitUntil([&] { return desktop().atomProperty(right, "_NET_WM_STATE").size() == 1; }));
  EXPECT_TRUE(stays(false)) << "a video on the second screen";
  const xcb_window_t left = openWindow(200, 200, 300, 300);
  setFullScreen(left, true);
  EXPECT_TRUE(becomes(true));
  closeWindow(left);
  EXPECT_TRUE(becomes(false));
}

TEST_F(FullScreen, OurOwnWindowsAndTheDesktopDoNotCount) {
  start("openbox");
  if (IsSkipped()) return;
  const xcb_window_t wallpaper = openWindow(0, 0, 1920, 1080);
  const Numbers fullScreen{desktop().atom("_NET_WM_STATE_FULLSCREEN")};
  xcb_unmap_window(desktop().observer(), wallpaper);
  setNumbers(wallpaper, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {desktop().atom("_NET_WM_WINDOW_TYPE_DESKTOP")});
  ASSERT_TRUE(waitUntil([&] { return desktop().property(wallpaper, "WM_STATE").empty(); }));
  xcb_map_window(desktop().observer(), wallpaper);
  watch();
  const auto band = showBand(OverlayLevel::aboveMenuBar, 1080);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 500) && stackPosition(wallpaper) >= 0; }));
  // What a window manager would refuse them is written by hand.
  for (const xcb_window_t window : {wallpaper, band->window()}) {
    setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, fullScreen);
  }
  EXPECT_TRUE(stays(false));
}

TEST_F(FullScreen, WithoutAWindowManagerTheWindowsOwnWordCounts) {
  start("");
  if (IsSkipped()) return;
  watch();
  const xcb_window_t window = openWindow(0, 0, 1920, 1080);
  EXPECT_TRUE(stays(false)) << "as large as the screen, but it says nothing";
  setNumbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, {desktop().atom("_NET_WM_STATE_FULLSCREEN")});
  ASSERT_EQ(desktop().atomProperty(window, "_NET_WM_STATE").size(), 1U);
  EXPECT_TRUE(probe_->isActive()) << "the first question after a change of which the server tells nobody";
  setNumbers(window, "_NET_WM_STATE", XCB_ATOM_CARDINAL, {});
  EXPECT_TRUE(becomes(false));
}

TEST_F(FullScreen, AServerThatIsGoneShowsNothing) {
  start("openbox");
  if (IsSkipped()) return;
  watch();
  X11Dpms dpms(*connection_);
  bool told = false;
  dpms.setHandler([&](bool) { told = true; });
  dpms.poll();
  setFullScreen(openWindow(100, 100, 640, 480), true);
  ASSERT_TRUE(becomes(true));
  desktop().stopServer();
  ASSERT_TRUE(waitUntil([&] { return connection_->isBroken(); }));
  EXPECT_FALSE(probe_->isActive());
  dpms.poll();
  EXPECT_FALSE(told);
}

// Runs where the server manages its displays' power; virtual servers mostly don't.
TEST_F(FullScreen, FollowsThePowerOfTheDisplays) {
  start("", {"xset"});
  if (IsSkipped()) return;
  watch();
  X11Dpms dpms(*connection_);
  if (!dpms.available()) GTEST_SKIP() << "this X server has no DPMS, so its state can't be changed here";
  std::vector<bool> told;
  dpms.setHandler([&](bool off) { told.push_back(off); });
  for (const char* state : {"off", "on", "standby", "on"}) {
    desktop().runToEnd({"xset", "dpms", "force", state});
    dpms.poll();
    dpms.poll();
  }
  EXPECT_EQ(told, (std::vector<bool>{true, false, true, false}));
}

}  // namespace
}  // namespace veloria::desktop
