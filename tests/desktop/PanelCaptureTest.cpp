// What is read of real panels under a real compositor, compared with what the screen shows of them.

#include <xcb/shape.h>

#include <algorithm>
#include <cstdio>
#include <limits>

#include "X11Fixture.h"
#include "platform/linux/x11/X11PanelCapture.h"

namespace veloria::desktop {
namespace {

constexpr Rect wideStrip{0, 0, 1920, 48};  // of a panel of 32 and a bleed of 16

struct Shown {
  Pixel colour;
  int alpha = 0;
  bool operator==(const Shown&) const = default;
};
constexpr Shown nothing{};

class PanelCapture : public X11Test {
 protected:
  void start(const std::vector<std::string>& programs, const DesktopSession::Options& options = {}) {
    startDesktop(programs, options);
    if (IsSkipped()) return;
    desktop().startWindowManager("openbox");
    desktop().startCompositor();
    connect();
  }

  void TearDown() override {
    stream_.reset();
    X11Test::TearDown();
  }

  void capture(const BarRegion& region) {
    error_.clear();
    if (!stream_) stream_ = std::make_unique<X11PanelCapture>(*connection_, *screens_, clock_);
    stream_->start(region, {.started = [this](gpu::Size size) { started_ = size; },
                            .picture = [this](const BarPicture& picture) { take(picture); },
                            .failed = [this](const std::string& error) { error_ = error; }});
  }
  void captureStrip(const Rect& strip = wideStrip) { capture({screens_->screens().at(0).number, strip, 1}); }

  void take(const BarPicture& picture) {
    size_ = picture.size;
    rows_.assign(picture.rows.begin(), picture.rows.end());
    ++pictures_;
    if (watched_ && shownAt(watched_->x, watched_->y).alpha == 0) ++flickers_;
  }

  Shown shownAt(int x, int y) const {
    const std::size_t at = (static_cast<std::size_t>(y) * size_.width + static_cast<std::size_t>(x)) * 4;
    if (at + 4 > rows_.size()) return {};
    const auto byte = [&](std::size_t i) { return std::to_integer<std::uint8_t>(rows_[at + i]); };
    return {{byte(2), byte(1), byte(0)}, byte(3)};
  }
  bool shows(int x, int y, const Pixel& colour) const { return shownAt(x, y) == Shown{colour, 255}; }
  // As the last row of the wide strip, where no panel of these tests reaches.
  bool isGround(int x, int y) const { return !rows_.empty() && shownAt(x, y) == shownAt(1, 47); }

  // Every pixel of the panel's rows is as on the screen, and below them all are alike.
  bool equalsScreen(const Screenshot& screen, int panelHeight) const {
    if (pictures_ == 0 || static_cast<int>(size_.width) != screen.width) return false;
    for (int y = 0; y < static_cast<int>(size_.height); ++y) {
      for (int x = 0; x < screen.width; ++x) {
        const Shown expected = y < panelHeight ? Shown{screen.at(x, y), 255} : shownAt(0, panelHeight);
        if (shownAt(x, y) != expected) return false;
      }
    }
    return true;
  }

  void fill(xcb_window_t window, std::uint32_t argb, const xcb_rectangle_t& area = {0, 0, 4000, 4000}) {
    auto* connection = desktop().observer();
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, window, XCB_GC_FOREGROUND, &argb);
    xcb_poly_fill_rectangle(connection, window, context, 1, &area);
    xcb_free_gc(connection, context);
    xcb_flush(connection);
  }
  // Again and again: a window manager or compositor that sets a window up clears it.
  bool paints(xcb_window_t dock, std::uint32_t argb, const Pixel& colour) {
    return waitUntil([&] {
      fill(dock, argb);
      return shows(960, 16, colour) && shows(1900, 2, colour);
    });
  }
  void configure(xcb_window_t window, std::uint16_t mask, const std::vector<std::uint32_t>& values) {
    xcb_configure_window(desktop().observer(), window, mask, values.data());
    xcb_flush(desktop().observer());
  }
  // A dock that no window manager places or stacks.
  xcb_window_t openFreeDock(const PixelRect& place, std::uint32_t argb, bool alpha = false) {
    auto* connection = desktop().observer();
    const PanelVisual visual =
        alpha ? factory_->visual()
              : PanelVisual{connection_->screen().root_depth, connection_->screen().root_visual, 0};
    const xcb_colormap_t colormap = xcb_generate_id(connection);
    xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, desktop().root(), visual.visual);
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t values[] = {argb, 0, 1, colormap};
    xcb_create_window(connection, visual.depth, window, desktop().root(), static_cast<std::int16_t>(place.x),
                      static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
                      static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual.visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {desktop().atom("_NET_WM_WINDOW_TYPE_DOCK")});
    xcb_map_window(connection, window);
    xcb_flush(connection);
    return window;
  }

  MediaClock clock_ = mediaTime;
  std::unique_ptr<X11PanelCapture> stream_;
  gpu::Size started_;
  gpu::Size size_;
  std::vector<std::byte> rows_;
  int pictures_ = 0;
  std::string error_;
  std::optional<PixelRect> watched_;
  int flickers_ = 0;
};

constexpr Pixel red{0xC0, 0x10, 0x20};
constexpr Pixel blue{0x10, 0x20, 0xC0};
constexpr std::uint32_t redArgb = 0xFFC01020;
constexpr std::uint32_t blueArgb = 0xFF1020C0;

class PanelCaptureThrough : public PanelCapture, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Ways, PanelCaptureThrough, testing::Bool(),
                         [](const auto& each) { return each.param ? "SharedMemory" : "Wire"; });

TEST_P(PanelCaptureThrough, theStripIsThePanelWithoutTheBandOverIt) {
  std::vector<std::string> arguments;
  if (!GetParam()) arguments = {"-extension", "MIT-SHM"};
  start({"openbox", "tint2", "picom"}, {.serverArguments = arguments});
  if (IsSkipped()) return;
  EXPECT_EQ(X11ImageReader(*connection_).usesSharedMemory(), GetParam());
  desktop().startPanel(32);
  captureStrip();
  EXPECT_EQ(started_, (gpu::Size{1920, 48}));
  EXPECT_TRUE(waitUntil([&] { return equalsScreen(desktop().screenshot(), 32); })) << error_;
  const auto pixelsOfText = [&] {
    int bright = 0;
    for (int y = 0; y < 32; ++y) {
      for (int x = 0; x < 1920; ++x) bright += shownAt(x, y).colour.red > 200 ? 1 : 0;
    }
    return bright;
  };
  EXPECT_GT(pixelsOfText(), 20) << "the clock";

  const Shown below = shownAt(960, 40);
  EXPECT_LT(std::abs(below.colour.red - shownAt(960, 31).colour.red), 8) << "no edge that looks like text";
  EXPECT_EQ(below.alpha, 255);

  const auto before = rows_;
  const auto band = showBand(OverlayLevel::aboveMenuBar, 48);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  const int panelTurns = pictures_;
  captureStrip();
  ASSERT_TRUE(waitUntil([&] { return pictures_ > panelTurns && shownAt(5, 5) != nothing; }));
  std::size_t different = 0;
  for (std::size_t i = 0; i < std::min(before.size(), rows_.size()); ++i) different += before[i] != rows_[i] ? 1 : 0;
  EXPECT_LT(different, 2000U) << "no more than another minute on the clock";
  EXPECT_EQ(shownAt(960, 40), below);
}

TEST_F(PanelCapture, changesAreSeenSoonAndWithoutAnyNothingIsDone) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  const xcb_window_t dock = openDock(32);
  captureStrip();
  ASSERT_TRUE(paints(dock, redArgb, red)) << error_;

  std::vector<double> milliseconds;
  for (int round = 0; round < 20; ++round) {
    runFor(0.05);
    const bool even = round % 2 == 0;
    const double begin = mediaTime();
    fill(dock, even ? blueArgb : redArgb, {100, 5, 40, 10});
    ASSERT_TRUE(waitUntil([&] { return shows(110, 8, even ? blue : red); })) << round;
    milliseconds.push_back((mediaTime() - begin) * 1000);
  }
  std::sort(milliseconds.begin(), milliseconds.end());
  std::printf("a change is in the picture after %.1f ms (median), %.1f ms (longest)\n", milliseconds[10],
              milliseconds.back());
  RecordProperty("medianMilliseconds", std::to_string(milliseconds[10]));

  runFor(0.6);  // whatever the windows' changes have started is over
  const auto updates = stream_->updateCount();
  const int before = pictures_;
  runFor(0.5);
  EXPECT_EQ(stream_->updateCount(), updates);
  fill(dock, redArgb);
  ASSERT_TRUE(waitUntil([&] { return stream_->updateCount() > updates; }));
  runFor(0.2);
  EXPECT_EQ(pictures_, before) << "it was drawn anew with the same colours";
}

TEST_F(PanelCapture, aPanelThatIsDrawnAllTheTimeIsReadThirtyTimesASecond) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  const xcb_window_t dock = openDock(32);
  captureStrip();
  ASSERT_TRUE(waitUntil([&] { return shownAt(960, 16).alpha == 255; })) << error_;
  const double begin = mediaTime();
  const auto updates = stream_->updateCount();
  const int before = pictures_;
  std::uint32_t colour = 0;
  waitUntil(
      [&] {
        fill(dock, 0xFF000000U | (colour += 0x1111));
        return false;
      },
      1);
  const double most = (mediaTime() - begin) * 30 + 2;
  EXPECT_LE(static_cast<double>(stream_->updateCount() - updates), most);
  EXPECT_GT(pictures_ - before, 2);
}

TEST_F(PanelCapture, docksLieOverEachOtherAsOnTheScreen) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  const xcb_window_t left = openFreeDock({0, 0, 1000, 32}, redArgb);
  const xcb_window_t right = openFreeDock({800, 0, 400, 24}, blueArgb);
  const xcb_window_t glass = openFreeDock({100, 0, 100, 32}, 0x80000080, true);
  captureStrip();
  EXPECT_TRUE(waitUntil([&] { return shows(50, 16, red) && shows(900, 16, blue) && shows(1100, 16, blue); })) << error_;
  EXPECT_TRUE(isGround(1100, 30));
  EXPECT_TRUE(shows(900, 30, red));
  EXPECT_TRUE(isGround(1300, 16));
  const Shown mixed = shownAt(150, 16);
  EXPECT_EQ(mixed.alpha, 255);
  EXPECT_NEAR(mixed.colour.red, 0x60, 2);
  EXPECT_NEAR(mixed.colour.blue, 0x90, 2);

  configure(left, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE});
  EXPECT_TRUE(waitUntil([&] { return shows(900, 16, red) && shows(150, 16, red); })) << "after it was raised";
  EXPECT_TRUE(shows(1100, 16, blue));
  configure(right, XCB_CONFIG_WINDOW_X, {1400});
  EXPECT_TRUE(waitUntil([&] { return shows(1500, 16, blue) && isGround(1100, 16); })) << "after a move";
  configure(right, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, {500, 40});
  EXPECT_TRUE(waitUntil([&] { return shows(1890, 16, blue) && shows(1500, 36, blue); })) << "after it grew";
  configure(right, XCB_CONFIG_WINDOW_Y, {200});
  EXPECT_TRUE(waitUntil([&] { return isGround(1500, 16); })) << "away from the strip";
  const xcb_rectangle_t half{0, 0, 500, 32};
  xcb_shape_rectangles(desktop().observer(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, left,
                       0, 0, 1, &half);
  xcb_flush(desktop().observer());
  EXPECT_TRUE(waitUntil([&] { return isGround(700, 16); })) << "after it got a shape";
  EXPECT_TRUE(shows(300, 16, red));
  closeWindow(glass);
}

TEST_F(PanelCapture, aPanelThatRestartsDoesNotFlickerAndOneThatEndsIsLetGo) {
  start({"openbox", "tint2", "picom"});
  if (IsSkipped()) return;
  double now = mediaTime();
  clock_ = [&now] { return now; };  // stands still, however slow the machine is
  desktop().startPanel(32);
  ASSERT_TRUE(waitUntil([&] { return screens_->screens()[0].visibleFrame.maxY() == 1080 - 32; }));
  captureStrip();
  ASSERT_TRUE(waitUntil([&] { return equalsScreen(desktop().screenshot(), 32); })) << error_;
  watched_ = PixelRect{960, 16, 1, 1};
  for (int round = 0; round < 3; ++round) {
    desktop().stopPanel();
    desktop().startPanel(32);
    EXPECT_TRUE(waitUntil([&] { return equalsScreen(desktop().screenshot(), 32); })) << round;
  }
  EXPECT_EQ(flickers_, 0);
  EXPECT_EQ(error_, "");

  watched_.reset();
  desktop().stopPanel();
  runFor(0.5);
  EXPECT_NE(shownAt(960, 16), nothing);
  now += 1.1;
  EXPECT_TRUE(waitUntil([&] { return shownAt(960, 16) == nothing; }));
}

// A panel's program that ends leaves its window manager's frame on the screen for a moment, drawn in a plain colour.
TEST_F(PanelCapture, theFrameThatAPanelHasLeftIsNotTakenForThePanel) {
  startDesktop({"picom"});
  if (IsSkipped()) return;
  desktop().startCompositor();
  connect();
  double now = mediaTime();
  clock_ = [&now] { return now; };
  auto* observer = desktop().observer();
  const xcb_window_t frame = openFreeDock({0, 0, 1920, 32}, blueArgb);
  xcb_delete_property(observer, frame, desktop().atom("_NET_WM_WINDOW_TYPE"));
  const xcb_window_t dock = openFreeDock({0, 100, 1920, 32}, redArgb);
  xcb_reparent_window(observer, dock, frame, 0, 0);
  setNumbers(desktop().root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, {dock});
  captureStrip();
  ASSERT_TRUE(waitUntil([&] { return shows(960, 16, red); })) << error_;
  for (int round = 0; round < 3; ++round) {
    const auto updates = stream_->updateCount();
    xcb_unmap_window(observer, dock);
    fill(frame, blueArgb);
    ASSERT_TRUE(waitUntil([&] { return stream_->updateCount() > updates; }));
    runFor(0.1);
    EXPECT_TRUE(shows(960, 16, red)) << "in round " << round;
    xcb_map_window(observer, dock);
    ASSERT_TRUE(paints(dock, redArgb, red));
    runFor(0.5);
  }
}

TEST_F(PanelCapture, withoutACompositorItSaysWhyAndTheNextStartWorksAgain) {
  startDesktop({"openbox", "picom"});
  if (IsSkipped()) return;
  desktop().startWindowManager("openbox");
  connect();
  const xcb_window_t dock = openDock(32);
  const std::string reason = "no compositor runs";
  captureStrip();
  EXPECT_EQ(error_, reason);
  for (int round = 0; round < 3; ++round) {
    desktop().startCompositor();
    ASSERT_TRUE(waitUntil([&] { return connection_->compositorRunning(); }));
    rows_.clear();
    captureStrip();
    EXPECT_TRUE(paints(dock, redArgb, red)) << error_;
    desktop().stopCompositor();
    EXPECT_TRUE(waitUntil([&] { return error_ == reason; }));
    const int before = pictures_;
    fill(dock, blueArgb);
    runFor(0.2);
    EXPECT_EQ(pictures_, before);
  }
}

TEST_F(PanelCapture, aPanelKeepsItsPictureWhenTheWindowManagerGoesAndComes) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  const xcb_window_t dock = openDock(32);
  captureStrip();
  ASSERT_TRUE(paints(dock, redArgb, red)) << error_;
  desktop().stopWindowManager();
  ASSERT_TRUE(waitUntil([&] { return stackPosition(dock) >= 0; }));
  EXPECT_TRUE(paints(dock, blueArgb, blue)) << "without a window manager";
  desktop().startWindowManager("openbox");
  EXPECT_TRUE(paints(dock, redArgb, red)) << "with the next one";
  EXPECT_EQ(error_, "");
}

TEST_F(PanelCapture, panelsThatComeAndGoAtAnyMomentDoNoHarm) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  captureStrip();
  for (int round = 0; round < 40; ++round) {
    const xcb_window_t dock = openFreeDock({round * 7, -5, 300 + round, 20 + round}, redArgb, round % 2 == 0);
    runFor(0.004 * (round % 12));
    configure(dock, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
              {static_cast<std::uint32_t>(round % 5 == 0 ? 32000 : round), round % 3 == 0 ? 1U : 30000U, 1});
    if (round % 4 == 0) xcb_unmap_window(desktop().observer(), dock);
    runFor(0.004 * (round % 7));
    if (round % 4 == 0) xcb_map_window(desktop().observer(), dock);
    fill(dock, blueArgb);
    closeWindow(dock);
  }
  EXPECT_TRUE(paints(openDock(32), redArgb, red)) << error_;
  EXPECT_EQ(error_, "");
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(PanelCapture, thePictureIsOfTheScreenThatIsNamedElseOfTheFirst) {
  start({"openbox", "picom", "xrandr"});
  if (IsSkipped()) return;
  desktop().runToEnd({"xrandr", "--setmonitor", "left", "961/254x1080/286+0+0", "screen", "--setmonitor", "right",
                      "959/254x1080/286+961+0", "none"});
  ASSERT_TRUE(waitUntil([&] { return screens_->screens().size() == 2; }));
  openFreeDock({0, 0, 961, 32}, redArgb);
  openFreeDock({961, 0, 959, 32}, blueArgb);
  const auto screens = screens_->screens();
  capture({screens[1].number, {0, 0, 959, 40}, 1});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{959, 40} && shows(0, 16, blue) && shows(958, 16, blue); }));
  capture({12345, {0, 0, 961, 40}, 1});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{961, 40} && shows(0, 16, red) && shows(960, 16, red); }));
  capture({screens[1].number, {100.4, 0, 200, 10}, 2});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{400, 20} || !error_.empty(); })) << "twice the pixels";
  desktop().runToEnd({"xrandr", "--delmonitor", "right", "--delmonitor", "left"});
  captureStrip({0, 0, 1920, 40});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{1920, 40} && shows(960, 16, red) && shows(961, 16, blue); }));
}

TEST_F(PanelCapture, impossibleStripsAreRefusedInWords) {
  start({"openbox", "picom"});
  if (IsSkipped()) return;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const Rect& rect :
       {Rect{}, Rect{nan, nan, nan, nan}, Rect{1e300, 0, 1, 1}, Rect{0, 0, -5, 5}, Rect{0, 5000, 1920, 32}}) {
    capture({0, rect, 1});
    EXPECT_NE(error_.find("empty or too large"), std::string::npos) << error_;
  }
  captureStrip({0, 0, 1e9, 1e9});
  EXPECT_EQ(error_, "");
  EXPECT_EQ(started_, (gpu::Size{1920, 1080})) << "cut to the screen, as windows are";
  desktop().stopServer();
  EXPECT_TRUE(waitUntil([&] { return !brokenWith_.empty(); }));
  runFor(0.2);
  captureStrip();
  EXPECT_NE(error_, "");
}

TEST_F(PanelCapture, withoutTheExtensionsItSaysWhichIsMissing) {
  startDesktop({}, {.serverArguments = {"-extension", "DAMAGE"}});
  if (IsSkipped()) return;
  connect();
  captureStrip();
  EXPECT_NE(error_.find("DAMAGE"), std::string::npos) << error_;
}

}  // namespace
}  // namespace veloria::desktop
