#include "cli/StatusReport.h"

#include <gmock/gmock.h>

namespace veloria::cli {
namespace {

using nlohmann::json;
using nlohmann::operator""_json;

constexpr double now = 1'700'000'000;

TEST(StatusReportTest, TellsWhatIsSet) {
  const json state = R"({"busy": 1, "a0": 0, "flag": true, "note": "text", "alert_until": 1700000001, "alert_for": 1.5,
    "palette": ["#FF0055", "odd", "ffcc00"],
    "sessions": {"build": {"busy": 1, "expires": 1700000042}, "old": {"busy": 1, "err": 1, "expires": 1699999999},
                 "review": {"err": 0.5}}})"_json;
  const StatusReport report = statusReport(state, true, now);
  EXPECT_EQ(textOf(report, now),
            "channels: busy 1, err 0.5, flag 1\n"
            "session build: busy 1 (42 s left)\n"
            "session review: err 0.5\n"
            "palette: #ff0055 #ffcc00\n"
            "flash: 1.0 s left\n"
            "Veloria is running\n");
  EXPECT_EQ(json(jsonOf(report, now)), R"({"channels": {"a0": 0, "busy": 1, "err": 0.5, "flag": 1},
    "sessions": {"build": {"channels": {"busy": 1}, "remaining": 42},
                 "review": {"channels": {"err": 0.5}, "remaining": null}},
    "palette": ["#ff0055", "#ffcc00"], "running": true})"_json);
}

TEST(StatusReportTest, NothingAtAll) {
  const StatusReport report = statusReport(json::object(), false, now);
  EXPECT_EQ(textOf(report, now), "channels: nothing\nVeloria is not running\n");
  EXPECT_EQ(json(jsonOf(report, now)), R"({"channels": {}, "sessions": {}, "palette": null, "running": false})"_json);
}

TEST(StatusReportTest, ALapsedSessionCountsNoMoreThoughNobodyWrote) {
  const json state = R"({"busy": 1, "sessions": {"old": {"busy": 1, "expires": 1700000000}}})"_json;
  EXPECT_EQ(statusReport(state, false, now - 1).channels.at("busy"), 1);
  EXPECT_EQ(statusReport(state, false, now).channels.at("busy"), 0);
}

TEST(StatusReportTest, ForeignNamesCantReachTheTerminal) {
  const json state = {{"\x1b[2J", 1}, {"sessions", {{"a\nb", {{"busy", 1}}}}}};
  const std::string text = textOf(statusReport(state, false, now), now);
  EXPECT_THAT(text, testing::HasSubstr("?[2J 1"));
  EXPECT_THAT(text, testing::HasSubstr("session a?b: busy 1"));
}

}  // namespace
}  // namespace veloria::cli
