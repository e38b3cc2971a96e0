#include "platform/linux/wallpaper/LinuxDesktopPicture.h"

#include <gmock/gmock.h>

#include <QImage>
#include <QTcpServer>
#include <QTcpSocket>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <filesystem>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "Process.h"
#include "desktop/DesktopSession.h"
#include "render/WallpaperPalette.h"

namespace veloria {
namespace {

using Pixels = DesktopPicture::Pixels;

/// A main loop: what other threads post is run when the test says so.
class MainLoop {
 public:
  LinuxDesktopPicture::PostToMain poster() {
    return [this](std::function<void()> function) {
      const std::lock_guard lock(mutex_);
      functions_.push_back(std::move(function));
      posted_.notify_all();
    };
  }

  /// Runs one function, waited for; false when none came.
  bool runOne(double seconds = 20) {
    std::unique_lock lock(mutex_);
    const auto longest = std::chrono::duration<double>(seconds);
    if (!posted_.wait_for(lock, longest, [this] { return !functions_.empty(); })) return false;
    const auto function = std::move(functions_.front());
    functions_.pop_front();
    lock.unlock();
    function();
    return true;
  }

  bool isEmpty() {
    const std::lock_guard lock(mutex_);
    return functions_.empty();
  }

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> functions_;
};

std::ptrdiff_t threadCount() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

class LinuxDesktopPictureTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { threadsAtStart_ = threadCount(); }

  /// A desktop without a display server, whose settings name the picture.
  Environment environment() const {
    return [folder = folder_.path()](std::string_view name) -> std::optional<std::string> {
      if (name == "XDG_CURRENT_DESKTOP") return "KDE";
      return name == "XDG_CONFIG_HOME" ? std::optional(folder) : std::nullopt;
    };
  }

  void showPicture(const std::string& path) {
    folder_.write("plasma-org.kde.plasma.desktop-appletsrc",
                  "[Containments][1][Wallpaper][org.kde.image][General]\nImage=" + path + "\n");
  }

  void paint(const std::string& name, QColor left, QColor right) {
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(left);
    for (int y = 0; y < 200; ++y) {
      for (int x = 200; x < 400; ++x) image.setPixelColor(x, y, right);
    }
    ASSERT_TRUE(image.save(QString::fromStdString(folder_.file(name))));
    showPicture(folder_.file(name));
  }

  tests::TemporaryFolder folder_;
  MainLoop main_;
  static inline std::ptrdiff_t threadsAtStart_ = 0;
};

TEST_F(LinuxDesktopPictureTest, AnswersOnTheMainThreadWithThePictureOfNow) {
  paint("a.png", Qt::red, Qt::blue);
  LinuxDesktopPicture picture(environment(), VELORIA_BINARY, main_.poster());
  std::vector<Result<Pixels>> answers;
  std::thread::id where;
  const auto ask = [&] {
    picture.thumbnail({}, [&](Result<Pixels> pixels) {
      answers.push_back(std::move(pixels));
      where = std::this_thread::get_id();
    });
    ASSERT_TRUE(main_.runOne());
  };
  ask();
  ASSERT_EQ(answers.size(), 1U);
  EXPECT_EQ(where, std::this_thread::get_id());
  ASSERT_TRUE(answers.back());
  const auto palette = wallpaperPalette(*answers.back());
  ASSERT_TRUE(palette);
  // The hues where the halves meet vote too, so only the two main ones are certain.
  EXPECT_THAT(palette->stops,
              testing::Contains(testing::ElementsAre(testing::Ge(0.98F), testing::Lt(0.1F), testing::Lt(0.1F))));
  EXPECT_THAT(palette->stops,
              testing::Contains(testing::ElementsAre(testing::Lt(0.1F), testing::Lt(0.1F), testing::Ge(0.98F))));

  paint("b.jpg", Qt::green, Qt::green);
  ask();
  ASSERT_TRUE(answers.back());
  EXPECT_GT(answers.back()->front()[1], 0.9F);
  showPicture("/no/such.png");
  ask();
  ASSERT_FALSE(answers.back());
  EXPECT_EQ(answers.back().error(), "/no/such.png: No such file or directory");
  EXPECT_EQ(answers.size(), 3U);
}

TEST_F(LinuxDesktopPictureTest, DropsASecondRequestWhileOneIsUnderWay) {
  LinuxDesktopPicture picture(environment(), VELORIA_BINARY, main_.poster());
  int first = 0;
  int second = 0;
  int third = 0;
  picture.thumbnail({}, [&](auto) {
    ++first;
    picture.thumbnail({}, [&](auto) { ++third; });
  });
  picture.thumbnail({}, [&](auto) { ++second; });
  ASSERT_TRUE(main_.runOne());
  ASSERT_TRUE(main_.runOne());
  EXPECT_TRUE(main_.isEmpty());
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
  EXPECT_EQ(third, 1) << "asked from within an answer";
}

TEST_F(LinuxDesktopPictureTest, NeverAnswersOnceItIsGone) {
  paint("a.png", Qt::red, Qt::blue);
  int answers = 0;
  for (int i = 0; i < 50; ++i) {
    auto picture = std::make_unique<LinuxDesktopPicture>(environment(), VELORIA_BINARY, main_.poster());
    picture->thumbnail({}, [&](auto) { ++answers; });
    if (i % 2 == 0) picture.reset();
    if (i % 5 == 0) std::this_thread::yield();
  }
  while (!main_.isEmpty()) main_.runOne();
  EXPECT_EQ(answers, 0);
}

TEST_F(LinuxDesktopPictureTest, MayBeDestroyedByItsAnswer) {
  auto picture = std::make_unique<LinuxDesktopPicture>(environment(), VELORIA_BINARY, main_.poster());
  picture->thumbnail({}, [&](auto) { picture.reset(); });
  ASSERT_TRUE(main_.runOne());
  EXPECT_EQ(picture, nullptr);
}

TEST_F(LinuxDesktopPictureTest, ShowsTheRootWindowUntilItsServerIsKilled) {
  if (const auto missing = desktop::DesktopSession::missing({"hsetroot"}); !missing.empty()) GTEST_SKIP() << missing;
  desktop::DesktopSession desktop({.width = 640, .height = 400, .serverArguments = {}});
  desktop.runToEnd({"hsetroot", "-solid", "#00FF00"});
  std::signal(SIGPIPE, SIG_DFL);  // as it is in a program that cares nothing for it
  const auto withDisplay = [&](std::string_view name) {
    return name == "DISPLAY" ? std::optional(desktop.display()) : environment()(name);
  };
  LinuxDesktopPicture picture(withDisplay, VELORIA_BINARY, main_.poster());
  Result<Pixels> last = Failure{};
  const auto ask = [&] {
    picture.thumbnail({}, [&](Result<Pixels> pixels) { last = std::move(pixels); });
    return main_.runOne();
  };
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(ask());
    ASSERT_TRUE(last);
    ASSERT_EQ(last->front(), (ColorStop{0, 1, 0}));
  }
  std::thread killer([&] { desktop.stopServer(); });
  while (last && ask()) continue;
  killer.join();
  EXPECT_EQ(last.error(), "nobody tells which picture the desktop shows");
}

/// A display server that accepts connections and says nothing stands for whatever may hang: a disk, a share, a program.
TEST_F(LinuxDesktopPictureTest, LeavesWorkThatHangsBehind) {
  constexpr int portOfDisplayZero = 6000;
  QTcpServer server;
  ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
  const std::string display = "127.0.0.1:" + std::to_string(server.serverPort() - portOfDisplayZero);
  const auto withDisplay = [&](std::string_view name) {
    return name == "DISPLAY" ? std::optional(display) : environment()(name);
  };
  const auto isAlone = [] { return threadCount() == threadsAtStart_; };
  ASSERT_TRUE(desktop::poll(20, isAlone)) << "threads of earlier tests end";
  std::atomic<int> posts = 0;
  auto picture = std::make_unique<LinuxDesktopPicture>(withDisplay, VELORIA_BINARY, [&](auto) { ++posts; });
  picture->thumbnail({}, [](auto) {});
  ASSERT_TRUE(server.waitForNewConnection(20000));
  picture.reset();
  EXPECT_FALSE(isAlone()) << "nobody has answered it yet";
  server.nextPendingConnection()->close();
  server.close();
  EXPECT_TRUE(desktop::poll(20, isAlone));
  EXPECT_EQ(posts, 0);
}

}  // namespace
}  // namespace veloria
