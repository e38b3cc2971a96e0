#include "platform/linux/wayland/FramePacing.h"

#include <gtest/gtest.h>

namespace veloria::tests {
namespace {

// Frames drawn in ten seconds when a display asks `refresh` times a second.
int framesAt(double refresh, double rate) {
  FramePacing pacing;
  pacing.setRate(rate);
  double now = 100;
  const double end = now + 10;
  int drawn = 0;
  while (now < end) {
    // As a panel does it: at once when due, else by a timer; then the display's next word is waited for.
    const double at = pacing.due(now) ? now : now + pacing.wait(now);
    pacing.drawn(at);
    ++drawn;
    const double frames = (at - 100) * refresh;
    now = 100 + (static_cast<double>(static_cast<long>(frames + 1e-9)) + 1) / refresh;
  }
  return drawn;
}

TEST(FramePacing, TheSlowerOfDisplayAndRateWins) {
  for (const auto& [refresh, rate, expected] : {std::tuple{60.0, 60.0, 600},
                                                {60.0, 59.0, 590},
                                                {144.0, 60.0, 600},
                                                {60.0, 240.0, 600},
                                                {60.0, 10.0, 100},
                                                {75.0, 60.0, 600}}) {
    EXPECT_NEAR(framesAt(refresh, rate), expected, expected * 0.02 + 1) << refresh << " Hz, " << rate << " frames";
  }
}

TEST(FramePacing, MissedFramesAreNotMadeUpFor) {
  FramePacing pacing;
  pacing.setRate(10);
  pacing.drawn(1);
  pacing.drawn(100);
  EXPECT_FALSE(pacing.due(100.01));
  EXPECT_NEAR(pacing.wait(100.01), 0.065, 0.03);
}

}  // namespace
}  // namespace veloria::tests
