// Where a real X server says that the pointer is, in global points.

#include "X11Fixture.h"
#include "platform/linux/x11/X11Pointer.h"
#include "render/PointerTracker.h"

namespace veloria::desktop {
namespace {

class PointerLocation : public X11Test {
 protected:
  void start() {
    startDesktop({"xdotool", "xrandr"});
    if (IsSkipped()) return;
    connect();
  }
  void setScale(double scale) {
    const std::string text = "Xft.dpi: " + std::to_string(static_cast<int>(scale * 96)) + "\n";
    xcb_change_property(desktop().observer(), XCB_PROP_MODE_REPLACE, desktop().root(), XCB_ATOM_RESOURCE_MANAGER,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.c_str());
    xcb_flush(desktop().observer());
    ASSERT_TRUE(waitUntil([&] { return screens_->screens()[0].backingScale == scale; }));
  }
  void expectAt(int x, int y, const Point& expected) {
    desktop().runToEnd({"xdotool", "mousemove", std::to_string(x), std::to_string(y)});
    const auto source = x11PointerSource(*connection_, *screens_);
    EXPECT_EQ(source.location(), expected) << x << ", " << y;
  }
};

TEST_F(PointerLocation, pointsGrowUpwardsFromTheFirstScreensBottomAtEveryScale) {
  start();
  if (IsSkipped()) return;
  expectAt(0, 0, {0, 1080});
  expectAt(100, 30, {100, 1050});
  expectAt(1919, 1079, {1919, 1});
  setScale(2);
  expectAt(100, 30, {50, 525});
  expectAt(0, 1079, {0, 0.5});
  const Rect frame = screens_->screens()[0].frame;
  EXPECT_EQ(frame.maxY() - 525, 15) << "30 pixels are 15 points from the top";
}

TEST_F(PointerLocation, theFirstScreenNeedNotBeAtTheTopLeft) {
  start();
  if (IsSkipped()) return;
  desktop().runToEnd({"xrandr", "--setmonitor", "*right", "960/254x800/211+960+280", "screen", "--setmonitor", "left",
                      "960/254x1080/286+0+0", "none"});
  ASSERT_TRUE(waitUntil([&] { return screens_->screens().size() == 2 && screens_->screens()[0].name == "right"; }));
  expectAt(960, 280, {0, 800});
  expectAt(0, 0, {-960, 1080});
  const auto screens = screens_->screens();
  for (const auto& [x, y, screen] : {std::tuple{1000, 300, 0}, std::tuple{10, 10, 1}, std::tuple{959, 1079, 1}}) {
    desktop().runToEnd({"xdotool", "mousemove", std::to_string(x), std::to_string(y)});
    const auto point = x11PointerSource(*connection_, *screens_).location();
    ASSERT_TRUE(point);
    EXPECT_TRUE(screens[static_cast<std::size_t>(screen)].frame.contains(*point)) << x << ", " << y;
  }
}

TEST_F(PointerLocation, theTrackerFollowsItAndNoticesThatItLeaves) {
  start();
  if (IsSkipped()) return;
  desktop().runToEnd({"xdotool", "mousemove", "500", "900"});
  PointerTracker tracker(timers_, x11PointerSource(*connection_, *screens_));
  std::optional<Point> last;
  int samples = 0;
  tracker.onSample = [&](const std::optional<Point>& point, Point) {
    last = point;
    ++samples;
  };
  tracker.interestRect = {0, 1048, 1920, 32};
  tracker.setEnabled(true);
  runFor(0.2);
  EXPECT_EQ(samples, 0);
  desktop().runToEnd({"xdotool", "mousemove", "500", "10"});
  EXPECT_TRUE(waitUntil([&] { return last == Point{500, 1070}; }));
  desktop().runToEnd({"xdotool", "mousemove", "640", "20"});
  EXPECT_TRUE(waitUntil([&] { return last == Point{640, 1060}; }));
  desktop().runToEnd({"xdotool", "mousemove", "640", "700"});
  EXPECT_TRUE(waitUntil([&] { return !last; }));
  const int before = samples;
  runFor(0.2);
  EXPECT_EQ(samples, before);
  desktop().stopServer();
  EXPECT_TRUE(waitUntil([&] { return !brokenWith_.empty(); }));
  runFor(0.1);
  EXPECT_EQ(samples, before);
}

}  // namespace
}  // namespace veloria::desktop
