// What is read of real panels under a real compositor, compared with what the screen shows of them.

#include <xcb/shape.h>

#include <algorithm>
#include <limits>

#include "X11Fixture.h"
#include "platform/linux/x11/X11PanelCapture.h"

namespace veloria::tests {
namespace {

constexpr Rect wideStrip{0, 0, 1920, 48};  // of a panel of 32 and a bleed of 16
constexpr Pixel red{0xC0, 0x10, 0x20};
constexpr Pixel blue{0x10, 0x20, 0xC0};
constexpr std::uint32_t redArgb = 0xFFC01020;
constexpr std::uint32_t blueArgb = 0xFF1020C0;

struct Shown {
  Pixel color;
  int alpha = 0;
  bool operator==(const Shown&) const = default;
};

class PanelCapture : public X11Test {
 protected:
  void start(const Desk& desk = {.windowManager = "openbox", .compositor = true}) {
    startDesktop(desk);
    connect();
    stream_ = std::make_unique<X11PanelCapture>(*connection_, *screens_, clock_);
  }
  void TearDown() override {
    stream_.reset();
    X11Test::TearDown();
  }

  void capture(const BarRegion& region) {
    error_.clear();
    stream_->start(region, {.started = [this](gpu::Size size) { started_ = size; },
                            .picture = [this](const BarPicture& picture) { keep(picture); },
                            .failed = [this](const std::string& error) { error_ = error; }});
  }
  void captureStrip(const Rect& strip = wideStrip) { capture({screens_->screens().at(0).number, strip, 1}); }
  void keep(const BarPicture& picture) {
    size_ = picture.size;
    rows_.assign(picture.rows.begin(), picture.rows.end());
    ++pictures_;
    if (shownAt(960, 16).alpha == 0) ++emptyPictures_;
  }

  Shown shownAt(int x, int y) const {
    const std::size_t at = (static_cast<std::size_t>(y) * size_.width + static_cast<std::size_t>(x)) * 4;
    if (at + 4 > rows_.size()) return {};
    const auto byte = [&](std::size_t i) { return std::to_integer<std::uint8_t>(rows_[at + i]); };
    return {{byte(2), byte(1), byte(0)}, byte(3)};
  }
  bool shows(int x, int y, const Pixel& color) const { return shownAt(x, y) == Shown{color, 255}; }
  bool becomes(int x, int y, const Pixel& color) {
    return waitUntil([=, this] { return shows(x, y, color); });
  }
  // As the last row of the wide strip, which no panel of these tests reaches.
  bool isGround(int x, int y) const { return !rows_.empty() && shownAt(x, y) == shownAt(1, 47); }
  bool becomesGround(int x, int y) {
    return waitUntil([=, this] { return isGround(x, y); });
  }

  // Every pixel of the panel's 32 rows is as on the screen, and below them all are alike.
  bool equalsScreen() {
    return waitUntil([&] {
      const Screenshot screen = desktop().screenshot();
      if (pictures_ == 0 || static_cast<int>(size_.width) != screen.width) return false;
      for (int y = 0; y < static_cast<int>(size_.height); ++y) {
        for (int x = 0; x < screen.width; ++x) {
          if (shownAt(x, y) != (y < 32 ? Shown{screen.at(x, y), 255} : shownAt(0, 32))) return false;
        }
      }
      return true;
    });
  }

  void fill(xcb_window_t window, std::uint32_t argb) {
    auto* connection = desktop().observer();
    const xcb_rectangle_t area{0, 0, 4000, 4000};
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, window, XCB_GC_FOREGROUND, &argb);
    xcb_poly_fill_rectangle(connection, window, context, 1, &area);
    xcb_free_gc(connection, context);
    xcb_flush(connection);
  }
  // Again and again: a window manager or compositor that sets a window up clears it.
  bool paints(xcb_window_t dock, std::uint32_t argb, const Pixel& color) {
    return waitUntil([&] {
      fill(dock, argb);
      return shows(960, 16, color) && shows(1900, 2, color);
    });
  }
  void configure(xcb_window_t window, int mask, const std::vector<std::uint32_t>& values) {
    xcb_configure_window(desktop().observer(), window, static_cast<std::uint16_t>(mask), values.data());
    xcb_flush(desktop().observer());
  }

  double now_ = mediaTime();
  bool clockStandsStill_ = false;
  MediaClock clock_ = [this] { return clockStandsStill_ ? now_ : mediaTime(); };
  std::unique_ptr<X11PanelCapture> stream_;
  gpu::Size started_;
  gpu::Size size_;
  std::vector<std::byte> rows_;
  int pictures_ = 0;
  int emptyPictures_ = 0;
  std::string error_;
};

class PanelCaptureThrough : public PanelCapture, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Ways, PanelCaptureThrough, testing::Bool(),
                         [](const auto& each) { return each.param ? "SharedMemory" : "Wire"; });

TEST_P(PanelCaptureThrough, TheStripIsThePanelWithoutTheBandOverIt) {
  DesktopSession::Options options;
  if (!GetParam()) options.serverArguments = {"-extension", "MIT-SHM"};
  start({.windowManager = "openbox", .compositor = true, .options = options});
  EXPECT_EQ(X11ImageReader(*connection_).usesSharedMemory(), GetParam());
  desktop().startPanel(32);
  captureStrip();
  EXPECT_EQ(started_, (gpu::Size{1920, 48}));
  EXPECT_TRUE(equalsScreen()) << error_;
  const Shown below = shownAt(960, 40);
  EXPECT_LT(std::abs(below.color.red - shownAt(960, 31).color.red), 8) << "no edge that looks like text";
  EXPECT_EQ(below.alpha, 255);

  const auto before = rows_;
  const auto band = showBand(OverlayLevel::aboveMenuBar, 48);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  const int panelTurns = pictures_;
  captureStrip();
  ASSERT_TRUE(waitUntil([&] { return pictures_ > panelTurns && shownAt(5, 5).alpha != 0; }));
  std::size_t different = 0;
  for (std::size_t i = 0; i < std::min(before.size(), rows_.size()); ++i) different += before[i] != rows_[i] ? 1 : 0;
  EXPECT_LT(different, 2000U) << "no more than another minute on the clock";
}

TEST_F(PanelCapture, WhatChangesIsReadAtMostThirtyTimesASecond) {
  start();
  const xcb_window_t dock = openDock(32);
  captureStrip();
  ASSERT_TRUE(paints(dock, redArgb, red)) << error_;
  runFor(0.6);  // whatever the windows' changes have started is over
  auto updates = stream_->updateCount();
  int before = pictures_;
  runFor(0.5);
  EXPECT_EQ(stream_->updateCount(), updates) << "nothing has changed";
  fill(dock, redArgb);
  ASSERT_TRUE(waitUntil([&] { return stream_->updateCount() > updates; }));
  runFor(0.2);
  EXPECT_EQ(pictures_, before) << "it was drawn anew with the same colours";

  const double begin = mediaTime();
  updates = stream_->updateCount();
  before = pictures_;
  std::uint32_t color = 0;
  waitUntil(
      [&] {
        fill(dock, 0xFF000000U | (color += 0x1111));
        return false;
      },
      1);
  EXPECT_LE(static_cast<double>(stream_->updateCount() - updates), (mediaTime() - begin) * 30 + 2);
  EXPECT_GT(pictures_ - before, 2);
}

TEST_F(PanelCapture, DocksLieOverEachOtherAsOnTheScreen) {
  start();
  const xcb_window_t left = openFreeDock({0, 0, 1000, 32}, redArgb);
  const xcb_window_t right = openFreeDock({800, 0, 400, 24}, blueArgb);
  openFreeDock({100, 0, 100, 32}, 0x80000080, true);
  captureStrip();
  EXPECT_TRUE(waitUntil([&] { return shows(50, 16, red) && shows(900, 16, blue) && shows(1100, 16, blue); })) << error_;
  EXPECT_TRUE(isGround(1100, 30) && shows(900, 30, red) && isGround(1300, 16));
  const Shown mixed = shownAt(150, 16);
  EXPECT_EQ(mixed.alpha, 255);
  EXPECT_NEAR(mixed.color.red, 0x60, 2);
  EXPECT_NEAR(mixed.color.blue, 0x90, 2);

  configure(left, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE});
  EXPECT_TRUE(becomes(900, 16, red) && becomes(150, 16, red)) << "after it was raised";
  configure(right, XCB_CONFIG_WINDOW_X, {1400});
  EXPECT_TRUE(becomes(1500, 16, blue) && becomesGround(1100, 16)) << "after a move";
  configure(right, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, {500, 40});
  EXPECT_TRUE(becomes(1890, 16, blue) && becomes(1500, 36, blue)) << "after it grew";
  configure(right, XCB_CONFIG_WINDOW_Y, {200});
  EXPECT_TRUE(becomesGround(1500, 16)) << "away from the strip";
  const xcb_rectangle_t half{0, 0, 500, 32};
  xcb_shape_rectangles(desktop().observer(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, left,
                       0, 0, 1, &half);
  xcb_flush(desktop().observer());
  EXPECT_TRUE(becomesGround(700, 16) && shows(300, 16, red)) << "after it got a shape";
}

TEST_F(PanelCapture, APanelThatRestartsDoesNotFlickerAndOneThatEndsIsLetGo) {
  clockStandsStill_ = true;
  start();
  desktop().startPanel(32);
  ASSERT_TRUE(waitUntil([&] { return screens_->screens()[0].visibleFrame.maxY() == 1080 - 32; }));
  captureStrip();
  ASSERT_TRUE(equalsScreen()) << error_;
  emptyPictures_ = 0;
  for (int round = 0; round < 2; ++round) {
    desktop().stopPanel();
    desktop().startPanel(32);
    EXPECT_TRUE(equalsScreen()) << round;
  }
  desktop().stopPanel();
  runFor(0.5);
  EXPECT_EQ(emptyPictures_, 0);
  EXPECT_EQ(error_, "");
  now_ += 1.1;
  EXPECT_TRUE(waitUntil([&] { return shownAt(960, 16) == Shown{}; }));
}

// A panel's program that ends leaves its window manager's frame on the screen for a moment, drawn in a plain colour.
TEST_F(PanelCapture, TheFrameThatAPanelHasLeftIsNotTakenForThePanel) {
  clockStandsStill_ = true;
  start({.compositor = true});
  auto* observer = desktop().observer();
  const xcb_window_t frame = openFreeDock({0, 0, 1920, 32}, blueArgb);
  xcb_delete_property(observer, frame, desktop().atom("_NET_WM_WINDOW_TYPE"));
  const xcb_window_t dock = openFreeDock({0, 100, 1920, 32}, redArgb);
  xcb_reparent_window(observer, dock, frame, 0, 0);
  setNumbers(desktop().root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, {dock});
  captureStrip();
  ASSERT_TRUE(becomes(960, 16, red)) << error_;
  for (int round = 0; round < 2; ++round) {
    const auto updates = stream_->updateCount();
    unmap(dock);
    fill(frame, blueArgb);
    ASSERT_TRUE(waitUntil([&] { return stream_->updateCount() > updates; }));
    runFor(0.1);
    EXPECT_TRUE(shows(960, 16, red)) << "in round " << round;
    xcb_map_window(observer, dock);
    ASSERT_TRUE(paints(dock, redArgb, red));
    runFor(0.5);
  }
}

TEST_F(PanelCapture, WithoutACompositorItSaysWhyAndTheNextStartWorksAgain) {
  start({.windowManager = "openbox"});
  const xcb_window_t dock = openDock(32);
  const std::string reason = "no compositor runs";
  captureStrip();
  EXPECT_EQ(error_, reason);
  for (int round = 0; round < 2; ++round) {
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

TEST_F(PanelCapture, ItSurvivesWindowManagersAndPanelsThatComeAndGo) {
  start();
  captureStrip();
  for (int round = 0; round < 24; ++round) {
    const xcb_window_t dock = openFreeDock({round * 7, -5, 300 + round, 20 + round}, redArgb, round % 2 == 0);
    runFor(0.004 * (round % 12));
    configure(dock, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
              {static_cast<std::uint32_t>(round % 5 == 0 ? 32000 : round), round % 3 == 0 ? 1U : 30000U, 1});
    if (round % 4 == 0) unmap(dock);
    runFor(0.004 * (round % 7));
    fill(dock, blueArgb);
    closeWindow(dock);
  }
  const xcb_window_t dock = openDock(32);
  EXPECT_TRUE(paints(dock, redArgb, red)) << error_;
  desktop().stopWindowManager();
  ASSERT_TRUE(waitUntil([&] { return stackPosition(dock) >= 0; }));
  EXPECT_TRUE(paints(dock, blueArgb, blue)) << "without a window manager";
  desktop().startWindowManager("openbox");
  EXPECT_TRUE(paints(dock, redArgb, red)) << "with the next one";
  EXPECT_EQ(error_ + brokenWith_, "");
}

TEST_F(PanelCapture, ThePictureIsOfTheScreenThatIsNamedElseOfTheFirst) {
  start();
  splitScreen();
  ASSERT_TRUE(waitUntil([&] { return screens_->screens().size() == 2; }));
  openFreeDock({0, 0, 961, 32}, redArgb);
  openFreeDock({961, 0, 959, 32}, blueArgb);
  const std::uint32_t right = screens_->screens()[1].number;
  capture({right, {0, 0, 959, 40}, 1});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{959, 40} && shows(0, 16, blue) && shows(958, 16, blue); }));
  capture({12345, {0, 0, 961, 40}, 1});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{961, 40} && shows(0, 16, red) && shows(960, 16, red); }));
  capture({right, {100.4, 0, 200, 10}, 2});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{400, 20} || !error_.empty(); })) << "twice the pixels";
  desktop().runToEnd({"xrandr", "--delmonitor", "right", "--delmonitor", "left"});
  captureStrip({0, 0, 1920, 40});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{1920, 40} && shows(960, 16, red) && shows(961, 16, blue); }));
}

TEST_F(PanelCapture, WhatIsImpossibleIsRefusedInWords) {
  start();
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
  captureStrip();
  EXPECT_NE(error_, "");
  TearDown();

  start({.options = {.serverArguments = {"-extension", "DAMAGE"}}});
  captureStrip();
  EXPECT_NE(error_.find("DAMAGE"), std::string::npos) << error_;
}

}  // namespace
}  // namespace veloria::tests
