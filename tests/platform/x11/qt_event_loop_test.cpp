#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>

#include "base/MediaClock.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria::tests {
namespace {

class QtEventLoop : public testing::Test {
 protected:
  static bool runUntil(const std::function<bool()>& condition, double seconds = 10) {
    const double end = mediaTime() + seconds;
    while (!condition() && mediaTime() < end) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return condition();
  }
  static void runFor(double seconds) {
    runUntil([] { return false; }, seconds);
  }

  int argumentCount_ = 0;
  QCoreApplication application_{argumentCount_, nullptr};
  QtTimerFactory timers_;
  int calls_ = 0;
};

TEST_F(QtEventLoop, ATimerRepeatsUntilItIsDestroyedMaybeByItsAction) {
  for (const double tolerance : {0.0, 0.005}) {
    calls_ = 0;
    auto timer = timers_.repeating(0.005, tolerance, [&] { ++calls_; });
    EXPECT_TRUE(runUntil([&] { return calls_ >= 5; }));
    calls_ = 0;
    timer = timers_.repeating(0.001, tolerance, [&, text = std::string(100, 'x')] {
      timer.reset();
      calls_ += static_cast<int>(text.size());
    });
    EXPECT_TRUE(runUntil([&] { return calls_ == 100; }));
    runFor(0.02);
    EXPECT_EQ(calls_, 100);
  }
}

TEST_F(QtEventLoop, AOneShotCallsOnceAndMayBeReplacedOrDestroyedByItsCall) {
  OneShot timer;
  std::function<void()> again = [&, text = std::string(100, 'x')] {
    calls_ += static_cast<int>(text.size());
    if (calls_ == 100) timer = timers_.after(0.001, again);
  };
  timer = timers_.after(0.001, again);
  EXPECT_TRUE(runUntil([&] { return calls_ == 200; }));
  auto owned = std::make_unique<OneShot>();
  *owned = timers_.after(0.001, [&] { owned.reset(); });
  EXPECT_TRUE(runUntil([&] { return owned == nullptr; }));
  timer = timers_.after(0.001, again);
  timer.reset();
  runFor(0.02);
  EXPECT_EQ(calls_, 200);
}

TEST_F(QtEventLoop, ARhythmIsNeitherRunTooFastNorMadeUpFor) {
  // Each call comes no earlier than its place in an exact rhythm, though Qt counts whole milliseconds.
  constexpr double interval = 1.0 / 240;
  const double start = mediaTime();
  auto timer = timers_.repeating(interval, 0, [&] { ++calls_; });
  ASSERT_TRUE(runUntil([&] { return calls_ >= 24; }));
  EXPECT_GE(mediaTime() - start, 24 * interval - 0.002);
  calls_ = 0;
  timer = timers_.repeating(0.01, 0, [&] { ++calls_; });
  usleep(100000);
  QCoreApplication::processEvents();
  EXPECT_LE(calls_, 2);
}

}  // namespace
}  // namespace veloria::tests
