// What needs no compositor; tests/desktop has one.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <limits>
#include <thread>

#include "LocalListener.h"
#include "Process.h"
#include "platform/linux/wayland/WaylandBand.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandOutput.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria::tests {
namespace {

// Frames drawn in ten seconds when a display asks `refresh` times a second.
int framesAt(double refresh, double rate) {
  FramePacing pacing;
  pacing.setRate(rate);
  int drawn = 0;
  for (double now = 100; now < 110; ++drawn) {
    // As a band does it: at once if due, else by a timer; then it waits until the display asks again.
    const double at = pacing.due(now) ? now : now + pacing.wait(now);
    pacing.drawn(at);
    const double frames = (at - 100) * refresh;
    now = 100 + (static_cast<double>(static_cast<long>(frames + 1e-9)) + 1) / refresh;
  }
  return drawn;
}

TEST(FramePacing, TheSlowerOfDisplayAndRateWinsAndMissedFramesAreNotMadeUpFor) {
  for (const auto& [refresh, rate, expected] :
       {std::tuple{60.0, 59.0, 590}, {144.0, 60.0, 600}, {60.0, 240.0, 600}, {75.0, 60.0, 600}}) {
    EXPECT_NEAR(framesAt(refresh, rate), expected, expected * 0.02 + 1) << refresh << " Hz, " << rate << " frames";
  }
  FramePacing pacing;
  pacing.setRate(10);
  pacing.drawn(1);
  pacing.drawn(100);
  EXPECT_FALSE(pacing.due(100.01));
  EXPECT_NEAR(pacing.wait(100.01), 0.065, 0.03);
}

OutputFacts facts(int modeWidth, int modeHeight, std::optional<Extent> logical, int scale) {
  OutputFacts result;
  result.name = "DP-1";
  result.modeWidth = modeWidth;
  result.modeHeight = modeHeight;
  result.logicalSize = logical;
  result.scale = scale;
  return result;
}

TEST(OutputFacts, TheScaleIsWhatModeAndLogicalSizeSay) {
  OutputFacts turned = facts(3840, 2160, Extent{1080, 1920}, 2);
  turned.turned = true;
  const std::tuple<OutputFacts, double, double> cases[] = {
      {facts(2560, 1440, Extent{1706, 960}, 2), 1.5, 2},  // the logical size is cut to whole points
      {facts(1366, 768, Extent{1241, 698}, 2), 1.1, 2},  {turned, 2, 2},
      {facts(3840, 2160, std::nullopt, 2), 2, 2},        {facts(0, 0, Extent{1920, 1080}, 1), 1, 1},
      {facts(100000, 10, Extent{1, 10}, -5), 1, 1},      {facts(1920, 1080, Extent{1, 1}, 4000), 8, 8},
  };
  for (const auto& [facts, fractional, whole] : cases) {
    EXPECT_DOUBLE_EQ(pixelsPerPoint(facts, true), fractional) << facts.modeWidth;
    EXPECT_DOUBLE_EQ(pixelsPerPoint(facts, false), whole) << facts.modeWidth;
  }
}

TEST(OutputFacts, ImplausibleOutputsAreNoMonitors) {
  EXPECT_EQ(monitorOf(facts(1440, 900, std::nullopt, 2))->frame, (PixelRect{0, 0, 720, 450}));
  for (const Extent& size : {Extent{1920, 0}, {-1, 1080}, {65536, 10}, {10, 2147483647}}) {
    EXPECT_FALSE(monitorOf(facts(1920, 1080, size, 1))) << size.width << " x " << size.height;
  }
  OutputFacts placed = facts(1920, 1080, Extent{1920, 1080}, 1);
  placed.x = std::numeric_limits<int>::min();
  EXPECT_FALSE(monitorOf(placed));
}

TEST(WaylandConnection, AServerThatKeepsSilentOrWritesNonsenseIsRefusedInTime) {
  int argumentCount = 0;
  const QCoreApplication application(argumentCount, nullptr);
  QtTimerFactory timers;
  const TemporaryFolder folder;
  for (const char* bytes : {"", "nonsense nonsense nonsense nonsense"}) {
    const std::string path = folder.file("wayland" + std::to_string(*bytes));
    const LocalListener listener(path);
    OwnedDescriptor client;
    const std::jthread server([&] { LocalListener::send(client = listener.accept(), bytes); });
    EXPECT_THROW(WaylandConnection(path, watchDescriptor, timers, 0.2), std::runtime_error) << path;
  }
}

}  // namespace
}  // namespace veloria::tests
