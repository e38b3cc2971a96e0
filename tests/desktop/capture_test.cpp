// What is read of real panels under a real compositor, compared with what the screen shows of them.

#include <xcb/shape.h>

#include "X11Fixture.h"
#include "platform/linux/x11/X11ImageReader.h"
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
  void start(const DesktopSetup& desk = {.windowManager = "openbox", .compositor = true}) {
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
    stream_->start(region, {.started = [](gpu::Size) {},
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

  // Every pixel of the panel's 32 rows.
  bool equalsScreen() {
    return waitUntil([&] {
      const Screenshot screen = desktop().screenshot();
      int alike = 0;
      for (int i = 0; i < 32 * 1920; ++i) alike += shows(i % 1920, i / 1920, screen.at(i % 1920, i / 1920)) ? 1 : 0;
      return alike == 32 * 1920;
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
  // Again and again, for a window manager or compositor that sets a window up clears it.
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
  gpu::Size size_;
  std::vector<std::byte> rows_;
  int pictures_ = 0;
  int emptyPictures_ = 0;
  std::string error_;
};

TEST_F(PanelCapture, TheStripIsThePanelWithoutTheBandOverIt) {
  start();
  desktop().startPanel(32);
  captureStrip();
  EXPECT_TRUE(equalsScreen()) << error_;
  const Shown below = shownAt(960, 40);
  EXPECT_LT(std::abs(below.color.red - shownAt(960, 31).color.red), 8) << "no edge that looks like text";
  const Shown before = shownAt(960, 16);
  const auto band = showBand(OverlayLevel::aboveMenuBar, 48);
  ASSERT_TRUE(waitUntil([&] { return isVisibleAt(960, 16); }));
  rows_.clear();
  captureStrip();
  EXPECT_TRUE(becomes(960, 16, before.color));
  EXPECT_TRUE(X11ImageReader(*connection_).usesSharedMemory());
}

TEST_F(PanelCapture, WithoutSharedMemoryThePictureComesOverTheWire) {
  start({.windowManager = "openbox", .compositor = true, .options = {.serverArguments = {"-extension", "MIT-SHM"}}});
  EXPECT_FALSE(X11ImageReader(*connection_).usesSharedMemory());
  desktop().startPanel(32);
  captureStrip();
  EXPECT_TRUE(equalsScreen()) << error_;
}

TEST_F(PanelCapture, WhatChangesIsReadAtMostThirtyTimesASecond) {
  start();
  const xcb_window_t dock = openDock(32);
  captureStrip();
  ASSERT_TRUE(paints(dock, redArgb, red)) << error_;
  runFor(0.6);  // whatever the windows' changes have started is over
  const int before = pictures_;
  const auto updates = stream_->updateCount();
  runFor(0.3);
  EXPECT_EQ(stream_->updateCount(), updates) << "nothing has changed";
  const double begin = mediaTime();
  std::uint32_t color = 0;
  const auto paintAgain = [&] {
    fill(dock, 0xFF000000U | (color += 0x1111));
    return false;
  };
  waitUntil(paintAgain, 1);
  EXPECT_LE(static_cast<double>(stream_->updateCount() - updates), (mediaTime() - begin) * 30 + 2);
  EXPECT_GT(pictures_ - before, 2);
}

TEST_F(PanelCapture, DocksLieOverEachOtherAsOnTheScreen) {
  start();
  const xcb_window_t left = openFreeDock({0, 0, 1000, 32}, redArgb);
  const xcb_window_t right = openFreeDock({800, 0, 400, 24}, blueArgb);
  openFreeDock({100, 0, 100, 32}, 0x80000080, true);
  captureStrip();
  EXPECT_TRUE(waitUntil([&] { return shows(50, 16, red) && shows(900, 16, blue) && isGround(1300, 16); })) << error_;
  EXPECT_NEAR(shownAt(150, 16).color.blue, 0x90, 2) << "through a translucent one";

  configure(left, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE});
  EXPECT_TRUE(becomes(900, 16, red)) << "after it was raised";
  configure(right, XCB_CONFIG_WINDOW_X, {1400});
  EXPECT_TRUE(becomes(1500, 16, blue) && isGround(1100, 16)) << "after a move";
  configure(right, XCB_CONFIG_WINDOW_HEIGHT, {40});
  EXPECT_TRUE(becomes(1500, 36, blue)) << "after it grew";
  const xcb_rectangle_t half{0, 0, 500, 32};
  xcb_shape_rectangles(desktop().observer(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, left,
                       0, 0, 1, &half);
  xcb_flush(desktop().observer());
  EXPECT_TRUE(waitUntil([&] { return isGround(700, 16); }) && shows(300, 16, red)) << "after it got a shape";
}

TEST_F(PanelCapture, APanelThatRestartsDoesNotFlickerAndOneThatEndsIsLetGo) {
  clockStandsStill_ = true;
  start();
  desktop().startPanel(32);
  ASSERT_TRUE(waitUntil([&] { return screens_->screens()[0].visibleFrame.maxY() == 1080 - 32; }));
  captureStrip();
  ASSERT_TRUE(equalsScreen()) << error_;
  emptyPictures_ = 0;
  desktop().stopPanel();
  desktop().startPanel(32);
  EXPECT_TRUE(equalsScreen());
  desktop().stopPanel();
  runFor(0.2);
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
  const auto updates = stream_->updateCount();
  unmap(dock);
  fill(frame, blueArgb);
  ASSERT_TRUE(waitUntil([&] { return stream_->updateCount() > updates; }));
  runFor(0.1);
  EXPECT_TRUE(shows(960, 16, red));
}

TEST_F(PanelCapture, WithoutACompositorItSaysWhyAndTheNextStartWorksAgain) {
  start({.windowManager = "openbox"});
  const xcb_window_t dock = openDock(32);
  const std::string reason = "no compositor runs";
  captureStrip();
  EXPECT_EQ(error_, reason);
  desktop().startCompositor();
  ASSERT_TRUE(waitUntil([&] { return connection_->compositorRunning(); }));
  captureStrip();
  EXPECT_TRUE(paints(dock, redArgb, red)) << error_;
  desktop().stopCompositor();
  EXPECT_TRUE(waitUntil([&] { return error_ == reason; }));
}

TEST_F(PanelCapture, ItSurvivesPanelsThatComeAndGo) {
  start();
  captureStrip();
  for (int round = 0; round < 24; ++round) {
    const xcb_window_t dock = openFreeDock({round * 7, -5, 300 + round, 20 + round}, redArgb, round % 2 == 0);
    configure(dock, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_WIDTH,
              {static_cast<std::uint32_t>(round % 5 == 0 ? 32000 : round), round % 3 == 0 ? 1U : 30000U});
    if (round % 4 == 0) unmap(dock);
    runFor(0.004 * (round % 7));
    closeWindow(dock);
  }
  EXPECT_TRUE(paints(openDock(32), redArgb, red)) << error_;
  EXPECT_EQ(brokenWith_, "");
}

TEST_F(PanelCapture, ThePictureIsOfTheScreenThatIsNamedElseOfTheFirst) {
  start();
  splitScreen();
  ASSERT_TRUE(waitUntil([&] { return screens_->screens().size() == 2; }));
  openFreeDock({0, 0, 961, 32}, redArgb);
  openFreeDock({961, 0, 959, 32}, blueArgb);
  capture({screens_->screens()[1].number, {0, 0, 959, 40}, 1});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{959, 40} && shows(0, 16, blue) && shows(958, 16, blue); }));
  capture({12345, {0, 0, 961, 40}, 1});
  EXPECT_TRUE(waitUntil([&] { return size_ == gpu::Size{961, 40} && shows(0, 16, red) && shows(960, 16, red); }));
}

}  // namespace
}  // namespace veloria::tests
