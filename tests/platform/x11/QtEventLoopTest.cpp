#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <array>
#include <limits>

#include "base/MediaClock.h"
#include "platform/qt/DescriptorWatch.h"
#include "platform/qt/QtTimerFactory.h"

namespace veloria {
namespace {

class QtEventLoop : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
  }

  template <typename Condition>
  static bool runUntil(Condition condition, double seconds = 10) {
    const double end = mediaTime() + seconds;
    while (!condition() && mediaTime() < end) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return condition();
  }

  QtTimerFactory timers_;
};

TEST_F(QtEventLoop, aTimerRepeatsUntilItIsDestroyed) {
  for (const double tolerance : {0.0, 0.005}) {
    int calls = 0;
    auto timer = timers_.repeating(0.005, tolerance, [&] { ++calls; });
    EXPECT_TRUE(runUntil([&] { return calls >= 5; }));
    timer.reset();
    const int before = calls;
    runUntil([] { return false; }, 0.05);
    EXPECT_EQ(calls, before);
  }
}

TEST_F(QtEventLoop, anActionMayDestroyItsTimer) {
  for (const double tolerance : {0.0, 0.001}) {
    int calls = 0;
    std::unique_ptr<Timer> timer;
    timer = timers_.repeating(0.001, tolerance, [&, text = std::string(100, 'x')] {
      timer.reset();
      calls += static_cast<int>(text.size());
    });
    EXPECT_TRUE(runUntil([&] { return calls == 100; }));
    runUntil([] { return false; }, 0.02);
    EXPECT_EQ(calls, 100);
  }
}

TEST_F(QtEventLoop, aOneShotCallsOnceAndMayBeReplacedOrDestroyedByItsCall) {
  int calls = 0;
  OneShot timer;
  std::function<void()> again = [&, text = std::string(100, 'x')] {
    EXPECT_FALSE(timer);
    calls += static_cast<int>(text.size());
    if (calls == 100) timer = timers_.after(0.001, again);
  };
  timer = timers_.after(0.001, again);
  EXPECT_TRUE(timer);
  EXPECT_TRUE(runUntil([&] { return calls == 200; }));
  auto owned = std::make_unique<OneShot>();
  *owned = timers_.after(0.001, [&] {
    owned.reset();
    ++calls;
  });
  timer = timers_.after(0.001, again);
  timer.reset();
  EXPECT_TRUE(runUntil([&] { return calls > 200; }));
  runUntil([] { return false; }, 0.02);
  EXPECT_EQ(calls, 201);
}

// Each call comes no earlier than its place in an exact rhythm, though Qt counts whole milliseconds.
TEST_F(QtEventLoop, aRhythmThatIsNoWholeNumberOfMillisecondsIsNotRunTooFast) {
  constexpr double interval = 1.0 / 240;
  int calls = 0;
  const double start = mediaTime();
  const auto timer = timers_.repeating(interval, 0, [&] { ++calls; });
  ASSERT_TRUE(runUntil([&] { return calls >= 48; }));
  EXPECT_GE(mediaTime() - start, 48 * interval - 0.002);
}

TEST_F(QtEventLoop, missedCallsAreNotMadeUpFor) {
  int calls = 0;
  const auto timer = timers_.repeating(0.01, 0, [&] { ++calls; });
  usleep(200000);
  QCoreApplication::processEvents();
  EXPECT_LE(calls, 2);
}

TEST_F(QtEventLoop, impossibleIntervalsNeitherHangNorCrash) {
  for (const double interval : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), 1e300}) {
    const auto timer = timers_.repeating(interval, interval, [] {});
    runUntil([] { return false; }, 0.01);
  }
}

TEST_F(QtEventLoop, aDescriptorIsWatchedUntilTheWatchIsLetGo) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  int calls = 0;
  std::shared_ptr<void> watch;
  watch = watchDescriptor(ends[0], [&, text = std::string(100, 'x')] {
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1);
    if (++calls == 2) watch.reset();
    EXPECT_EQ(text.size(), 100U);
  });
  for (int i = 0; i < 3; ++i) ASSERT_EQ(write(ends[1], "x", 1), 1);
  EXPECT_TRUE(runUntil([&] { return calls == 2; }));
  runUntil([] { return false; }, 0.03);
  EXPECT_EQ(calls, 2);
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace veloria
