// What is reported of a pointer that moves as the test says, on timers and a clock that the test drives.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "render/PointerTracker.h"

namespace veloria::tests {
namespace {

class ManualTimers final : public TimerFactory {
 public:
  struct Entry {
    double interval;
    double tolerance;
    std::function<void()> action;
  };
  std::unique_ptr<Timer> repeating(double interval, double tolerance, std::function<void()> action) override {
    ++made;
    auto entry = std::make_shared<Entry>(Entry{interval, tolerance, std::move(action)});
    running.push_back(entry);
    return std::make_unique<Handle>(*this, entry);
  }
  /// Fires the only timer.
  void fire() {
    ASSERT_EQ(running.size(), 1U);
    const auto entry = running.front();
    entry->action();
  }
  std::vector<std::shared_ptr<Entry>> running;
  int made = 0;

 private:
  class Handle final : public Timer {
   public:
    Handle(ManualTimers& owner, std::shared_ptr<Entry> entry) : owner_(owner), entry_(std::move(entry)) {}
    ~Handle() override { std::erase(owner_.running, entry_); }

   private:
    ManualTimers& owner_;
    std::shared_ptr<Entry> entry_;
  };
};

struct Report {
  std::optional<Point> point;
  Point velocity;
  bool operator==(const Report&) const = default;
};

void PrintTo(const Report& report, std::ostream* out) {
  if (report.point) {
    *out << "(" << report.point->x << ", " << report.point->y << ")";
  } else {
    *out << "none";
  }
  *out << " at (" << report.velocity.x << ", " << report.velocity.y << ")";
}

const Report absent{std::nullopt, {}};

class PointerTrackerTest : public testing::Test {
 protected:
  PointerTrackerTest() {
    tracker_.interestRect = {0, 1048, 1920, 32};
    tracker_.onSample = [this](const std::optional<Point>& point, Point velocity) {
      reports_.push_back({point, velocity});
    };
  }
  /// Moves the pointer, lets `seconds` pass and fires the timer; what was reported meanwhile.
  std::vector<Report> sampleAt(std::optional<Point> point, double seconds) {
    location_ = point;
    now_ += seconds;
    reports_.clear();
    timers_.fire();
    return reports_;
  }

  ManualTimers timers_;
  std::optional<Point> location_;
  double now_ = 100;
  std::vector<Report> reports_;
  PointerTracker tracker_{timers_, {.location = [this] { return location_; }, .reason = {}}, [this] { return now_; }};
};

TEST_F(PointerTrackerTest, oneTimerHoweverOftenItIsEnabled) {
  EXPECT_TRUE(timers_.running.empty());
  tracker_.setEnabled(true);
  tracker_.setEnabled(true);
  ASSERT_EQ(timers_.running.size(), 1U);
  EXPECT_EQ(timers_.made, 1);
  EXPECT_DOUBLE_EQ(timers_.running[0]->interval, 0.05);
  EXPECT_DOUBLE_EQ(timers_.running[0]->tolerance, 0.015);
  EXPECT_TRUE(reports_.empty());
  tracker_.setEnabled(false);
  EXPECT_TRUE(timers_.running.empty());
  tracker_.setEnabled(false);
  EXPECT_EQ(reports_, std::vector{absent}) << "once, whatever was before";
}

TEST_F(PointerTrackerTest, theRateFollowsTheDistance) {
  tracker_.setEnabled(true);
  struct Case {
    Point point;
    double interval;
  };
  // Grown by 120 points, the band reaches down to 928 and sideways from -120 to 2040.
  for (const Case& each : {Case{{960, 500}, 0.05},
                           {{960, 928}, 1.0 / 60},
                           {{960, 927.9}, 0.05},
                           {{-120, 1060}, 1.0 / 60},
                           {{-120.1, 1060}, 0.05},
                           {{2039.9, 1199}, 1.0 / 60},
                           {{2040, 1060}, 0.05}}) {
    sampleAt(each.point, 0.05);
    EXPECT_DOUBLE_EQ(timers_.running.at(0)->interval, each.interval) << each.point.x << ", " << each.point.y;
    EXPECT_DOUBLE_EQ(timers_.running.at(0)->tolerance, each.interval * 0.3);
  }
  const int made = timers_.made;
  for (int i = 0; i < 5; ++i) sampleAt(Point{2040, 1060}, 0.05);
  EXPECT_EQ(timers_.made, made) << "a timer that is right is left alone";
}

TEST_F(PointerTrackerTest, velocityIsInPointsPerSixtyHertzFrame) {
  tracker_.setEnabled(true);
  EXPECT_EQ(sampleAt(Point{100, 1060}, 0.05), (std::vector<Report>{{Point{100, 1060}, {0, 0}}}));
  struct Step {
    Point point;
    double seconds;
    Point velocity;
  };
  const std::vector<Step> steps{{{106, 1057}, 1.0 / 60, {6, -3}}, {{118, 1057}, 1.0 / 30, {6, 0}},
                                {{119, 1058}, 0.001, {4, 4}},     {{119, 1058}, 0, {0, 0}},
                                {{121, 1058}, 1.0 / 240, {8, 0}}, {{121, 1000}, 1.0 / 60, {0, -58}},
                                {{181, 1000}, 1, {1, 0}}};
  for (const Step& step : steps) {
    const auto reports = sampleAt(step.point, step.seconds);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].point, step.point);
    EXPECT_NEAR(reports[0].velocity.x, step.velocity.x, 1e-9) << step.point.x;
    EXPECT_NEAR(reports[0].velocity.y, step.velocity.y, 1e-9) << step.point.x;
  }
}

TEST_F(PointerTrackerTest, leavingIsReportedOnce) {
  tracker_.setEnabled(true);
  EXPECT_TRUE(sampleAt(Point{960, 100}, 0.05).empty()) << "it never was there";
  EXPECT_EQ(sampleAt(Point{960, 1060}, 0.05).size(), 1U);
  EXPECT_EQ(sampleAt(Point{960, 100}, 0.02), std::vector{absent});
  EXPECT_TRUE(sampleAt(Point{960, 101}, 0.05).empty());
  EXPECT_EQ(sampleAt(Point{900, 1060}, 0.05), (std::vector<Report>{{Point{900, 1060}, {0, 0}}}))
      << "the first one after coming back has no velocity";
  EXPECT_EQ(sampleAt(std::nullopt, 0.02), std::vector{absent}) << "not told counts as elsewhere";
  EXPECT_DOUBLE_EQ(timers_.running.at(0)->interval, 0.05);
}

TEST_F(PointerTrackerTest, switchingOffInsideReportsAnAbsenceAndOnAgainStartsSlowly) {
  tracker_.setEnabled(true);
  sampleAt(Point{960, 1060}, 0.05);
  reports_.clear();
  tracker_.setEnabled(false);
  EXPECT_EQ(reports_, std::vector{absent});
  tracker_.setEnabled(true);
  EXPECT_DOUBLE_EQ(timers_.running.at(0)->interval, 0.05);
  EXPECT_EQ(sampleAt(Point{990, 1060}, 5), (std::vector<Report>{{Point{990, 1060}, {0, 0}}}));
  EXPECT_DOUBLE_EQ(timers_.running.at(0)->interval, 1.0 / 60);
}

TEST_F(PointerTrackerTest, theHandlerMaySwitchItOffAndNothingIsHeardOfNumbersThatAreNone) {
  tracker_.setEnabled(true);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(sampleAt(Point{nan, 1060}, 0.05).empty());
  tracker_.onSample = [this](const std::optional<Point>& point, Point) {
    if (point) tracker_.setEnabled(false);
  };
  sampleAt(Point{960, 1060}, 0.05);
  EXPECT_TRUE(timers_.running.empty());
  tracker_.onSample = nullptr;
  tracker_.setEnabled(true);
  sampleAt(Point{960, 1060}, 0.05);
  tracker_.setEnabled(false);
}

TEST_F(PointerTrackerTest, whereTheSystemDoesNotTellNothingIsAskedAndTheReasonIsKept) {
  PointerTracker blind(timers_, {.location = {}, .reason = "not told"});
  EXPECT_FALSE(blind.available());
  EXPECT_EQ(blind.reason(), "not told");
  blind.setEnabled(true);
  EXPECT_TRUE(timers_.running.empty());
  blind.setEnabled(false);
  EXPECT_TRUE(tracker_.available());
}

}  // namespace
}  // namespace veloria::tests
