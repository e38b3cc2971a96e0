#include <gmock/gmock.h>

#include <QImage>
#include <QTcpServer>
#include <QTcpSocket>
#include <cmath>
#include <csignal>
#include <deque>
#include <iterator>
#include <mutex>
#include <thread>

#include "Process.h"
#include "desktop/DesktopSession.h"
#include "platform/linux/wallpaper/LinuxDesktopPicture.h"
#include "platform/linux/wallpaper/RootPixmap.h"

namespace veloria::tests {
namespace {

using Pixels = DesktopPicture::Pixels;

constexpr std::size_t side = DesktopPicture::side;
constexpr ColorStop red{1, 0, 0}, green{0, 1, 0}, blue{0, 0, 1};

MATCHER_P(IsNear, wanted, "") {
  return std::ranges::equal(arg, wanted, [](float a, float b) { return std::fabs(a - b) < 0.02F; });
}

class RootPixmapTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = DesktopSession::missing({"xrandr"}); !missing.empty()) GTEST_SKIP() << missing;
    std::signal(SIGPIPE, SIG_IGN);  // the reader requires this of its thread
    desktop_ = std::make_unique<DesktopSession>(DesktopSession::Options{.width = 640, .height = 400});
  }

  std::optional<Pixels> read(const std::string& screen = "") {
    return rootPixmapThumbnail(desktop_->display(), screen);
  }
  xcb_connection_t* server() { return desktop_->observer(); }
  void sync() { std::free(xcb_get_input_focus_reply(server(), xcb_get_input_focus(server()), nullptr)); }

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

  void expectAll(const ColorStop& color, const std::string& screen = "") {
    const auto pixels = read(screen);
    ASSERT_TRUE(pixels);
    for (const ColorStop& pixel : *pixels) ASSERT_THAT(pixel, IsNear(color));
  }

  std::unique_ptr<DesktopSession> desktop_;
};

TEST_F(RootPixmapTest, ReadsTheWholePixmapAndAveragesDetail) {
  EXPECT_EQ(read(), std::nullopt) << "nothing is set yet";
  const xcb_pixmap_t pixmap = makePixmap(24, 640, 400, 0xFF0000);
  fill(pixmap, {320, 0, 320, 200}, 0x00FF00);
  fill(pixmap, {0, 200, 320, 200}, 0x0000FF);
  for (std::int16_t x = 320; x < 640; ++x) fill(pixmap, {x, 200, 1, 200}, x % 2 ? 0 : 0xFFFFFF);
  setRootPixmap(pixmap);
  const auto pixels = read();
  ASSERT_TRUE(pixels);
  const auto at = [&](std::size_t x, std::size_t y) { return (*pixels)[y * side + x]; };
  EXPECT_THAT(at(0, 0), IsNear(red));
  EXPECT_THAT(at(side - 1, 0), IsNear(green));
  EXPECT_THAT(at(0, side - 1), IsNear(blue));
  EXPECT_NEAR(at(side - 4, side - 4)[0], 0.5F, 0.15F) << "stripes of one pixel";
}

TEST_F(RootPixmapTest, ReadsAnyDepthAndSizeAndTheOlderName) {
  setRootPixmap(makePixmap(32, 640, 400, 0xFF00FF00));
  expectAll(green);
  setRootPixmap(makePixmap(24, 1, 1, 0xFF0000), "ESETROOT_PMAP_ID");
  const xcb_pixmap_t freed = makePixmap(24, 8, 8, 0x0000FF);
  setRootPixmap(freed);
  expectAll(blue);
  xcb_free_pixmap(server(), freed);
  sync();
  expectAll(red);
}

TEST_F(RootPixmapTest, ReadsTheMonitorsPart) {
  const xcb_pixmap_t pixmap = makePixmap(24, 640, 400, 0xFF0000);
  fill(pixmap, {320, 0, 320, 400}, 0x0000FF);
  setRootPixmap(pixmap);
  desktop_->runToEnd({"xrandr", "--setmonitor", "*right", "320/85x400/105+320+0", "screen"});
  desktop_->runToEnd({"xrandr", "--setmonitor", "left", "320/85x400/105+0+0", "none"});
  expectAll(red, "left");
  expectAll(blue, "right");
  expectAll(blue, "no such monitor");
}

std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// With a main loop that runs what other threads post when the test says so.
class LinuxDesktopPictureTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { threadsAtStart_ = threadCount(); }
  static bool isAlone() { return threadCount() == threadsAtStart_; }
  /// A desktop whose settings name the picture.
  std::unique_ptr<LinuxDesktopPicture> makePicture(const std::string& display = "") {
    const Environment environment = [this, display](std::string_view name) -> std::optional<std::string> {
      if (name == "XDG_CURRENT_DESKTOP") return "KDE";
      if (name == "DISPLAY") return display;
      return name == "XDG_CONFIG_HOME" ? std::optional(folder_.path()) : std::nullopt;
    };
    return std::make_unique<LinuxDesktopPicture>(environment, VELORIA_BINARY, [this](std::function<void()> function) {
      const std::lock_guard lock(mutex_);
      functions_.push_back(std::move(function));
    });
  }

  /// Waits for one posted function and runs it; false if none came.
  bool runOne() {
    std::function<void()> function;
    const bool posted = poll(20, [&] {
      const std::lock_guard lock(mutex_);
      if (functions_.empty()) return false;
      function = std::move(functions_.front());
      functions_.pop_front();
      return true;
    });
    if (posted) function();
    return posted;
  }

  void paint(const std::string& name, QColor color) {
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(color);
    image.save(QString::fromStdString(folder_.file(name)));
    folder_.write("plasma-org.kde.plasma.desktop-appletsrc",
                  "[Containments][1][Wallpaper][org.kde.image][General]\nImage=" + folder_.file(name) + "\n");
  }

  Result<Pixels> ask(LinuxDesktopPicture& picture) {
    Result<Pixels> answer = Failure{"no answer"};
    picture.thumbnail({}, [&](Result<Pixels> pixels) { answer = std::move(pixels); });
    EXPECT_TRUE(runOne());
    return answer;
  }

  TemporaryFolder folder_;
  std::mutex mutex_;
  std::deque<std::function<void()>> functions_;
  inline static std::ptrdiff_t threadsAtStart_ = 0;
};

TEST_F(LinuxDesktopPictureTest, AnswersOnTheMainThreadWithThePictureOfNow) {
  auto picture = makePicture();
  for (const auto& [name, color, stop] : {std::tuple{"a.png", Qt::red, red}, {"b.png", Qt::blue, blue}}) {
    paint(name, color);
    const auto pixels = ask(*picture);
    ASSERT_TRUE(pixels) << pixels.error();
    EXPECT_THAT(pixels->front(), IsNear(stop));
  }
  std::filesystem::remove(folder_.file("b.png"));
  EXPECT_EQ(ask(*picture).error(), folder_.file("b.png") + ": No such file or directory");
  std::string answers;
  picture->thumbnail({}, [&](auto) {
    answers += '1';
    picture->thumbnail({}, [&](auto) {
      answers += '3';
      picture.reset();
    });
  });
  picture->thumbnail({}, [&](auto) { answers += '2'; });
  ASSERT_TRUE(runOne());
  ASSERT_TRUE(runOne());
  EXPECT_EQ(answers, "13") << "a second request is dropped, but an answer may ask again or destroy it";
}

TEST_F(LinuxDesktopPictureTest, ShowsTheRootWindowUntilItsServerIsKilled) {
  if (const auto missing = DesktopSession::missing({"hsetroot"}); !missing.empty()) GTEST_SKIP() << missing;
  DesktopSession desktop({.width = 640, .height = 400});
  desktop.runToEnd({"hsetroot", "-solid", "#00FF00"});
  std::signal(SIGPIPE, SIG_DFL);  // as in a program that does not handle it
  auto picture = makePicture(desktop.display());
  auto last = ask(*picture);
  ASSERT_TRUE(last) << last.error();
  EXPECT_EQ(last->front(), green);
  std::thread killer([&] { desktop.stopServer(); });
  while (last) last = ask(*picture);
  killer.join();
  EXPECT_EQ(last.error(), "the desktop does not say which picture it shows");
}

/// A display server that accepts connections and never answers stands for anything that may hang: a disk, a share.
TEST_F(LinuxDesktopPictureTest, LeavesHangingWorkBehind) {
  constexpr int portOfDisplayZero = 6000;
  QTcpServer server;
  ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
  ASSERT_TRUE(poll(20, isAlone)) << "threads of earlier tests end";
  auto picture = makePicture("127.0.0.1:" + std::to_string(server.serverPort() - portOfDisplayZero));
  picture->thumbnail({}, [](auto) { ADD_FAILURE() << "it is gone"; });
  ASSERT_TRUE(server.waitForNewConnection(20000));
  picture.reset();
  EXPECT_FALSE(isAlone()) << "nobody has answered it yet";
  server.nextPendingConnection()->close();
  server.close();
  EXPECT_TRUE(poll(20, isAlone));
  EXPECT_TRUE(functions_.empty());
}

}  // namespace
}  // namespace veloria::tests
