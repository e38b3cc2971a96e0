// What is reported of a pointer that moves as the test says, on timers and a clock that the test drives.

#include "render/PointerTracker.h"

#include <gtest/gtest.h>

#include <cmath>

#include "../support/ManualTimers.h"

namespace veloria::tests {
namespace {

using Reports = std::vector<std::pair<std::optional<Point>, Point>>;
const Reports none;
const Reports absence{{std::nullopt, {}}};

class PointerTrackerTest : public testing::Test {
 protected:
  PointerTrackerTest() {
    tracker_.interestRect = {0, 1048, 1920, 32};
    tracker_.onSample = [this](const std::optional<Point>& point, Point velocity) {
      reports_.emplace_back(point, velocity);
    };
    tracker_.setEnabled(true);
  }
  /// Moves the pointer, lets `seconds` pass and fires the timer; what was reported meanwhile.
  Reports sampleAt(std::optional<Point> point, double seconds) {
    location_ = point;
    now_ += seconds;
    reports_.clear();
    timers_.fire();
    return reports_;
  }
  double interval() const { return timers_.entries.at(0)->interval; }

  ManualTimers timers_;
  std::optional<Point> location_;
  double now_ = 100;
  Reports reports_;
  std::optional<Rect> followed_;
  PointerTracker tracker_{timers_,
                          {.location = [this] { return location_; },
                           .reason = {},
                           .follow = [this](const Rect& place) { followed_ = place; }},
                          [this] { return now_; }};
};

TEST_F(PointerTrackerTest, TheRateFollowsTheDistance) {
  EXPECT_DOUBLE_EQ(interval(), 0.05);
  const std::pair<Point, double> cases[] = {
      // Grown by 120 points, the band reaches down to 928, from -120 to 2040.
      {{960, 500}, 0.05},     {{960, 928}, 1.0 / 60},     {{960, 927.9}, 0.05}, {{-120, 1060}, 1.0 / 60},
      {{-120.1, 1060}, 0.05}, {{2039.9, 1199}, 1.0 / 60}, {{2040, 1060}, 0.05}};
  for (const auto& [point, wanted] : cases) {
    sampleAt(point, 0.05);
    EXPECT_EQ(timers_.entries.size(), 1U);
    EXPECT_DOUBLE_EQ(interval(), wanted) << point.x << ", " << point.y;
  }
}

TEST_F(PointerTrackerTest, VelocityIsInPointsPerSixtyHertzFrame) {
  const struct {
    Point point;
    double seconds;
    Point velocity;
  } steps[] = {{{100, 1060}, 0.05, {0, 0}},  {{106, 1057}, 1.0 / 60, {6, -3}}, {{118, 1057}, 1.0 / 30, {6, 0}},
               {{119, 1058}, 0.001, {4, 4}}, {{119, 1058}, 0, {0, 0}},         {{121, 1000}, 1.0 / 60, {2, -58}}};
  for (const auto& step : steps) {
    const auto reports = sampleAt(step.point, step.seconds);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].first, step.point);
    EXPECT_NEAR(reports[0].second.x, step.velocity.x, 1e-9) << step.point.x;
    EXPECT_NEAR(reports[0].second.y, step.velocity.y, 1e-9) << step.point.x;
  }
}

TEST_F(PointerTrackerTest, LeavingIsReportedOnce) {
  EXPECT_EQ(sampleAt(Point{960, 100}, 0.05), none) << "it never was there";
  EXPECT_EQ(sampleAt(Point{960, 1060}, 0.05).size(), 1U);
  EXPECT_EQ(sampleAt(Point{960, 100}, 0.02), absence);
  EXPECT_EQ(sampleAt(Point{960, 101}, 0.05), none);
  EXPECT_EQ(sampleAt(Point{900, 1060}, 0.05), (Reports{{Point{900, 1060}, {0, 0}}})) << "no velocity yet";
  EXPECT_EQ(sampleAt(std::nullopt, 0.02), absence) << "an unknown place counts as elsewhere";
  EXPECT_EQ(sampleAt(Point{NAN, 1060}, 0.05), none);
}

TEST_F(PointerTrackerTest, SwitchingOffReportsAnAbsenceAndOnAgainStartsSlowly) {
  sampleAt(Point{960, 1060}, 0.05);
  EXPECT_EQ(followed_, (Rect{-120, 928, 2160, 272}));
  reports_.clear();
  for (int i = 0; i < 2; ++i) tracker_.setEnabled(false);
  EXPECT_EQ(reports_, absence);
  EXPECT_EQ(followed_, Rect());
  EXPECT_TRUE(timers_.entries.empty());
  tracker_.setEnabled(true);
  EXPECT_DOUBLE_EQ(interval(), 0.05);
  EXPECT_EQ(sampleAt(Point{990, 1060}, 5), (Reports{{Point{990, 1060}, {0, 0}}}));
  tracker_.onSample = [this](const std::optional<Point>&, Point) { tracker_.setEnabled(false); };
  sampleAt(Point{960, 1060}, 0.05);
  EXPECT_TRUE(timers_.entries.empty()) << "the handler may switch it off";
  PointerTracker blind(timers_, {.location = {}, .reason = "not told"});
  blind.setEnabled(true);
  EXPECT_TRUE(timers_.entries.empty()) << "nothing to sample";
}

}  // namespace
}  // namespace veloria::tests
