// What is reported of a pointer that moves as the test says, on timers and a clock that the test drives.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "render/PointerTracker.h"

namespace veloria::tests {
namespace {

/// Holds the timer that runs, if any.
class OneTimer final : public TimerFactory {
 public:
  std::unique_ptr<Timer> repeating(double every, double mayWait, std::function<void()> work) override {
    ++made;
    ++running;
    interval = every;
    tolerance = mayWait;
    action = std::move(work);
    return std::make_unique<Handle>(*this);
  }
  int made = 0;
  int running = 0;
  double interval = 0;
  double tolerance = 0;
  std::function<void()> action;

 private:
  struct Handle final : Timer {
    explicit Handle(OneTimer& timers) : owner(timers) {}
    ~Handle() override { --owner.running; }
    OneTimer& owner;
  };
};

using Report = std::pair<std::optional<Point>, Point>;
const std::vector<Report> none;
const std::vector<Report> absence{{std::nullopt, {}}};

class PointerTrackerTest : public testing::Test {
 protected:
  PointerTrackerTest() {
    tracker_.interestRect = {0, 1048, 1920, 32};
    tracker_.onSample = [this](const std::optional<Point>& point, Point velocity) {
      reports_.emplace_back(point, velocity);
    };
  }
  /// Moves the pointer, lets `seconds` pass and fires the timer; what was reported meanwhile.
  std::vector<Report> sampleAt(std::optional<Point> point, double seconds) {
    location_ = point;
    now_ += seconds;
    reports_.clear();
    EXPECT_EQ(timers_.running, 1);
    const auto action = timers_.action;
    action();
    return reports_;
  }

  OneTimer timers_;
  std::optional<Point> location_;
  double now_ = 100;
  std::vector<Report> reports_;
  PointerTracker tracker_{timers_, {.location = [this] { return location_; }, .reason = {}}, [this] { return now_; }};
};

TEST_F(PointerTrackerTest, TheRateFollowsTheDistance) {
  tracker_.setEnabled(true);
  tracker_.setEnabled(true);
  EXPECT_EQ(timers_.made, 1);
  EXPECT_DOUBLE_EQ(timers_.interval, 0.05);
  EXPECT_EQ(reports_, none);
  const std::pair<Point, double> cases[] = {
      // Grown by 120 points, the band reaches down to 928, from -120 to 2040.
      {{960, 500}, 0.05},     {{960, 928}, 1.0 / 60},     {{960, 927.9}, 0.05}, {{-120, 1060}, 1.0 / 60},
      {{-120.1, 1060}, 0.05}, {{2039.9, 1199}, 1.0 / 60}, {{2040, 1060}, 0.05}};
  for (const auto& [point, interval] : cases) {
    sampleAt(point, 0.05);
    EXPECT_DOUBLE_EQ(timers_.interval, interval) << point.x << ", " << point.y;
    EXPECT_DOUBLE_EQ(timers_.tolerance, interval * 0.3);
  }
  const int made = timers_.made;
  for (int i = 0; i < 5; ++i) sampleAt(Point{2040, 1060}, 0.05);
  EXPECT_EQ(timers_.made, made) << "a timer that is right is left alone";
}

TEST_F(PointerTrackerTest, VelocityIsInPointsPerSixtyHertzFrame) {
  tracker_.setEnabled(true);
  const struct {
    Point point;
    double seconds;
    Point velocity;
  } steps[] = {{{100, 1060}, 0.05, {0, 0}},       {{106, 1057}, 1.0 / 60, {6, -3}}, {{118, 1057}, 1.0 / 30, {6, 0}},
               {{119, 1058}, 0.001, {4, 4}},      {{119, 1058}, 0, {0, 0}},         {{121, 1058}, 1.0 / 240, {8, 0}},
               {{121, 1000}, 1.0 / 60, {0, -58}}, {{181, 1000}, 1, {1, 0}}};
  for (const auto& step : steps) {
    const auto reports = sampleAt(step.point, step.seconds);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].first, step.point);
    EXPECT_NEAR(reports[0].second.x, step.velocity.x, 1e-9) << step.point.x;
    EXPECT_NEAR(reports[0].second.y, step.velocity.y, 1e-9) << step.point.x;
  }
}

TEST_F(PointerTrackerTest, LeavingIsReportedOnce) {
  tracker_.setEnabled(true);
  EXPECT_EQ(sampleAt(Point{960, 100}, 0.05), none) << "it never was there";
  EXPECT_EQ(sampleAt(Point{960, 1060}, 0.05).size(), 1U);
  EXPECT_EQ(sampleAt(Point{960, 100}, 0.02), absence);
  EXPECT_EQ(sampleAt(Point{960, 101}, 0.05), none);
  EXPECT_EQ(sampleAt(Point{900, 1060}, 0.05), (std::vector<Report>{{Point{900, 1060}, {0, 0}}})) << "no velocity yet";
  EXPECT_EQ(sampleAt(std::nullopt, 0.02), absence) << "an unknown place counts as elsewhere";
  EXPECT_DOUBLE_EQ(timers_.interval, 0.05);
  EXPECT_EQ(sampleAt(Point{std::numeric_limits<double>::quiet_NaN(), 1060}, 0.05), none);
}

TEST_F(PointerTrackerTest, SwitchingOffReportsAnAbsenceAndOnAgainStartsSlowly) {
  tracker_.setEnabled(true);
  sampleAt(Point{960, 1060}, 0.05);
  reports_.clear();
  tracker_.setEnabled(false);
  tracker_.setEnabled(false);
  EXPECT_EQ(reports_, absence);
  EXPECT_EQ(timers_.running, 0);
  tracker_.setEnabled(true);
  EXPECT_DOUBLE_EQ(timers_.interval, 0.05);
  EXPECT_EQ(sampleAt(Point{990, 1060}, 5), (std::vector<Report>{{Point{990, 1060}, {0, 0}}}));
  EXPECT_DOUBLE_EQ(timers_.interval, 1.0 / 60);
  tracker_.onSample = [this](const std::optional<Point>&, Point) { tracker_.setEnabled(false); };
  sampleAt(Point{960, 1060}, 0.05);
  EXPECT_EQ(timers_.running, 0) << "the handler may switch it off";
  tracker_.onSample = nullptr;
  tracker_.setEnabled(true);
  sampleAt(Point{960, 1060}, 0.05);
}

TEST_F(PointerTrackerTest, WithoutALocationNoTimerRuns) {
  PointerTracker blind(timers_, {.location = {}, .reason = "not told"});
  EXPECT_FALSE(blind.available());
  EXPECT_EQ(blind.reason(), "not told");
  blind.setEnabled(true);
  EXPECT_EQ(timers_.made, 0);
  EXPECT_TRUE(tracker_.available());
}

}  // namespace
}  // namespace veloria::tests
