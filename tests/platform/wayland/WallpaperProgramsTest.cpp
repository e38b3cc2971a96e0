#include "platform/linux/wayland/WallpaperPrograms.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <filesystem>

#include "Process.h"
#include "base/MediaClock.h"
#include "desktop/ChildProcess.h"
#include "platform/qt/QtTimerFactory.h"

namespace veloria::tests {
namespace {

template <typename Condition>
bool spinUntil(Condition condition, double seconds = 20) {
  const double end = mediaTime() + seconds;
  while (!condition()) {
    if (mediaTime() > end) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
  }
  return true;
}

TEST(WallpaperPrograms, AStartIsToldTwiceAndOnlyWhileSomebodyListens) {
  int argumentCount = 0;
  QCoreApplication application(argumentCount, nullptr);
  QtTimerFactory timers;
  const TemporaryFolder folder;
  std::filesystem::copy_file("/bin/sleep", folder.file("swaybg"));
  const auto start = [&](const std::string& program) {
    return std::make_unique<desktop::ChildProcess>(std::vector<std::string>{program, "60"},
                                                   std::map<std::string, std::string>{}, folder.file("log"));
  };
  WallpaperPrograms programs(timers);
  int told = 0;
  auto listening = programs.onStart([&](double) { ++told; });
  const auto other = start("/bin/sleep");
  const auto wallpaper = start(folder.file("swaybg"));
  EXPECT_TRUE(spinUntil([&] { return told == 2; }));
  EXPECT_FALSE(spinUntil([&] { return told > 2; }, 1.6)) << "only for a start";
  listening.reset();
  const auto second = start(folder.file("swaybg"));
  EXPECT_FALSE(spinUntil([&] { return told > 2; }, 1.5));
}

}  // namespace
}  // namespace veloria::tests
