#include "platform/qt/http/RequestPacing.h"

#include <gtest/gtest.h>

#include <vector>

namespace veloria {
namespace {

/// When the requests of somebody start who asks again `after` seconds after the start of the one before.
std::vector<double> starts(RequestPacing& pacing, double first, double after, int count) {
  std::vector<double> result;
  for (double now = first; count > 0; --count) {
    result.push_back(now + pacing.delay(now));
    now = result.back() + after;
  }
  return result;
}

TEST(RequestPacingTest, RepeatedAtOnceTheyComeEverMoreSlowly) {
  RequestPacing pacing;
  EXPECT_EQ(starts(pacing, 5, 0, 9), (std::vector<double>{5, 6, 8, 12, 20, 36, 66, 96, 126}));
}

TEST(RequestPacingTest, RequestsThatTakeLongAreNotHeldBackTwice) {
  RequestPacing pacing;
  EXPECT_EQ(starts(pacing, 0, 10, 7), (std::vector<double>{0, 10, 20, 30, 40, 56, 86}));
  RequestPacing timedOut;
  EXPECT_EQ(starts(timedOut, 0, 30, 7), (std::vector<double>{0, 30, 60, 90, 120, 150, 180}));
}

TEST(RequestPacingTest, AMinuteOfQuietIsForgiven) {
  RequestPacing pacing;
  starts(pacing, 0, 0, 9);  // the last at 121
  EXPECT_EQ(starts(pacing, 181, 0, 3), (std::vector<double>{181, 182, 184}));
  EXPECT_EQ(starts(pacing, 784, 600, 3), (std::vector<double>{784, 1384, 1984}));
}

TEST(RequestPacingTest, RequestsAtTheSameTimeQueue) {
  RequestPacing pacing;
  EXPECT_EQ(pacing.delay(0), 0);
  EXPECT_EQ(pacing.delay(0), 1);
  EXPECT_EQ(pacing.delay(0), 3);
  EXPECT_EQ(pacing.delay(0.5), 6.5);
}

}  // namespace
}  // namespace veloria
