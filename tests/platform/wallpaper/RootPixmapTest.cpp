#include "platform/linux/wallpaper/RootPixmap.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <atomic>
#include <cmath>
#include <csignal>
#include <string>
#include <thread>

#include "desktop/DesktopSession.h"

namespace veloria {
namespace {

using desktop::DesktopSession;
using Pixels = DesktopPicture::Pixels;

constexpr std::size_t side = DesktopPicture::side;
constexpr ColorStop red{1, 0, 0};
constexpr ColorStop green{0, 1, 0};
constexpr ColorStop blue{0, 0, 1};

MATCHER_P(IsNear, wanted, "") {
  bool near = true;
  for (std::size_t i = 0; i < 3; ++i) near = near && std::fabs(arg[i] - wanted[i]) < 0.02F;
  return near;
}

class RootPixmapTest : public testing::Test {
 protected:
  void start(const DesktopSession::Options& options = {.width = 640, .height = 400, .serverArguments = {}}) {
    if (const auto missing = DesktopSession::missing({"hsetroot"}); !missing.empty()) GTEST_SKIP() << missing;
    std::signal(SIGPIPE, SIG_IGN);  // what the reader asks of its thread
    desktop_ = std::make_unique<DesktopSession>(options);
  }

  std::optional<Pixels> read(const std::string& screen = "") {
    return rootPixmapThumbnail(desktop_->display(), screen);
  }

  xcb_connection_t* server() { return desktop_->observer(); }

  void setRootPixmap(xcb_pixmap_t pixmap, const char* property = "_XROOTPMAP_ID") {
    xcb_change_property(server(), XCB_PROP_MODE_REPLACE, desktop_->root(), desktop_->atom(property), XCB_ATOM_PIXMAP,
                        32, 1, &pixmap);
    sync();
  }

  xcb_pixmap_t makePixmap(std::uint8_t depth, std::uint16_t width, std::uint16_t height, std::uint32_t pixel) {
    const xcb_pixmap_t pixmap = xcb_generate_id(server());
    xcb_create_pixmap(server(), depth, pixmap, desktop_->root(), width, height);
    fill(pixmap, {0, 0, width, height}, pixel);
    return pixmap;
  }

  void fill(xcb_pixmap_t pixmap, const xcb_rectangle_t& area, std::uint32_t pixel) {
    const xcb_gcontext_t context = xcb_generate_id(server());
    xcb_create_gc(server(), context, pixmap, XCB_GC_FOREGROUND, &pixel);
    xcb_poly_fill_rectangle(server(), pixmap, context, 1, &area);
    xcb_free_gc(server(), context);
  }

  void sync() { std::free(xcb_get_input_focus_reply(server(), xcb_get_input_focus(server()), nullptr)); }

  void expectAll(const ColorStop& color, const std::string& screen = "") {
    const auto pixels = read(screen);
    ASSERT_TRUE(pixels);
    ASSERT_EQ(pixels->size(), side * side);
    for (const ColorStop& pixel : *pixels) ASSERT_THAT(pixel, IsNear(color));
  }

  std::unique_ptr<DesktopSession> desktop_;
};

TEST_F(RootPixmapTest, FollowsWhatIsSet) {
  ASSERT_NO_FATAL_FAILURE(start());
  if (IsSkipped()) return;
  EXPECT_EQ(read(), std::nullopt) << "nothing is set yet";
  desktop_->runToEnd({"hsetroot", "-solid", "#20C040"});
  expectAll({0x20 / 255.0F, 0xC0 / 255.0F, 0x40 / 255.0F});
  desktop_->runToEnd({"hsetroot", "-add", "#FF0000", "-add", "#0000FF", "-gradient", "180"});
  const auto gradient = read();
  ASSERT_TRUE(gradient);
  const ColorStop& top = gradient->front();
  const ColorStop& bottom = gradient->back();
  EXPECT_GT(std::fabs(top[0] - bottom[0]), 0.9F);
  EXPECT_GT(std::fabs(top[2] - bottom[2]), 0.9F);
  EXPECT_NEAR((*gradient)[side * side / 2][0], 0.5F, 0.1F);
}

TEST_F(RootPixmapTest, ReadsEveryPartAndAveragesDetail) {
  ASSERT_NO_FATAL_FAILURE(start());
  if (IsSkipped()) return;
  const xcb_pixmap_t pixmap = makePixmap(24, 640, 400, 0xFF0000);
  fill(pixmap, {320, 0, 320, 200}, 0x00FF00);
  fill(pixmap, {0, 200, 320, 200}, 0x0000FF);
  for (std::int16_t x = 320; x < 640; x = static_cast<std::int16_t>(x + 2)) fill(pixmap, {x, 200, 1, 200}, 0xFFFFFF);
  for (std::int16_t x = 321; x < 640; x = static_cast<std::int16_t>(x + 2)) fill(pixmap, {x, 200, 1, 200}, 0x000000);
  setRootPixmap(pixmap);
  const auto pixels = read();
  ASSERT_TRUE(pixels);
  const auto at = [&](std::size_t x, std::size_t y) { return (*pixels)[y * side + x]; };
  EXPECT_THAT(at(0, 0), IsNear(red));
  EXPECT_THAT(at(side - 1, 0), IsNear(green));
  EXPECT_THAT(at(0, side - 1), IsNear(blue));
  EXPECT_NEAR(at(side - 4, side - 4)[0], 0.5F, 0.15F) << "stripes of one pixel";
}

TEST_F(RootPixmapTest, ReadsOtherDepthsAndSizesAndTheOlderName) {
  ASSERT_NO_FATAL_FAILURE(start());
  if (IsSkipped()) return;
  setRootPixmap(makePixmap(32, 640, 400, 0xFF00FF00));
  expectAll(green);
  setRootPixmap(makePixmap(24, 8, 8, 0x0000FF));
  expectAll(blue);
  setRootPixmap(makePixmap(24, 1, 1, 0xFF0000), "ESETROOT_PMAP_ID");
  expectAll(blue);
  setRootPixmap(XCB_PIXMAP_NONE);
  expectAll(red);
  setRootPixmap(makePixmap(1, 640, 400, 1));
  EXPECT_EQ(read(), std::nullopt) << "a bitmap has no colours";
}

TEST_F(RootPixmapTest, ReadsAServerOfThirtyBits) {
  ASSERT_NO_FATAL_FAILURE(start({.width = 640, .height = 400, .serverArguments = {"-screen", "0", "640x400x30"}}));
  if (IsSkipped()) return;
  setRootPixmap(makePixmap(30, 640, 400, 0x3FFU << 20));
  expectAll(red);
}

TEST_F(RootPixmapTest, IsNothingWhenThePropertyLies) {
  ASSERT_NO_FATAL_FAILURE(start());
  if (IsSkipped()) return;
  setRootPixmap(0x1234567);
  EXPECT_EQ(read(), std::nullopt);
  setRootPixmap(desktop_->root());
  EXPECT_NO_FATAL_FAILURE(read()) << "a window instead of a pixmap";
  const xcb_pixmap_t freed = makePixmap(24, 640, 400, 0xFF0000);
  setRootPixmap(freed);
  expectAll(red);
  xcb_free_pixmap(server(), freed);
  sync();
  EXPECT_EQ(read(), std::nullopt);
  const std::string text = "text";
  xcb_change_property(server(), XCB_PROP_MODE_REPLACE, desktop_->root(), desktop_->atom("_XROOTPMAP_ID"),
                      XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
  sync();
  EXPECT_EQ(read(), std::nullopt);
}

TEST_F(RootPixmapTest, TakesTheMonitorsPart) {
  ASSERT_NO_FATAL_FAILURE(start());
  if (IsSkipped()) return;
  if (const auto missing = DesktopSession::missing({"xrandr"}); !missing.empty()) GTEST_SKIP() << missing;
  const xcb_pixmap_t pixmap = makePixmap(24, 640, 400, 0xFF0000);
  fill(pixmap, {320, 0, 320, 400}, 0x0000FF);
  setRootPixmap(pixmap);
  desktop_->runToEnd({"xrandr", "--setmonitor", "*right", "320/85x400/105+320+0", "screen"});
  desktop_->runToEnd({"xrandr", "--setmonitor", "left", "320/85x400/105+0+0", "none"});
  expectAll(red, "left");
  expectAll(blue, "right");
  expectAll(blue, "no such monitor");
  setRootPixmap(makePixmap(24, 320, 400, 0x00FF00));
  expectAll(green, "right");
}

TEST_F(RootPixmapTest, IsNothingWithoutAServer) {
  for (const char* display : {":64999", "", "nonsense", "unknown.invalid:0", ":1.9999999999999"}) {
    EXPECT_EQ(rootPixmapThumbnail(display, ""), std::nullopt) << display;
  }
}

TEST_F(RootPixmapTest, SurvivesPixmapsThatVanishMeanwhile) {
  ASSERT_NO_FATAL_FAILURE(start());
  if (IsSkipped()) return;
  std::atomic<bool> ended = false;
  std::thread setter([&] {
    for (int i = 0; i < 300; ++i) {
      const xcb_pixmap_t pixmap = makePixmap(24, 640, 400, 0xFF0000);
      setRootPixmap(pixmap);
      for (int wait = 0; wait < i % 16; ++wait) sync();
      xcb_free_pixmap(server(), pixmap);
      xcb_free_pixmap(server(), makePixmap(32, 4 * side, 4 * side, 0xFF00FF00));  // leaves green in free memory
      sync();
    }
    ended = true;
  });
  while (!ended) {
    const auto pixels = read();
    if (!pixels) continue;
    EXPECT_THAT(pixels->front(), IsNear(red)) << "never what happens to be in the server's memory";
  }
  setter.join();
}

}  // namespace
}  // namespace veloria
