#include "cli/StateChanges.h"

#include <gmock/gmock.h>

#include <functional>

#include "cli/StatusReport.h"

namespace veloria::cli::tests {
namespace {

using nlohmann::json;
using nlohmann::operator""_json;

constexpr double now = 1'700'000'000;

json after(json state, const std::function<void(json&)>& change) {
  change(state);
  return state;
}

json after(json state, Activity activity, const SessionChoice& session = {}) {
  reportActivity(state, activity, session, now);
  return state;
}

TEST(StateChanges, ActivitiesSetAllThreeOutcomes) {
  const auto before = R"({"busy": 0.5, "ok": true, "err": "odd", "a0": 3, "note": ["kept"]})"_json;
  for (const auto& [activity, outcomes] : {std::pair{Activity::busy, "[1, 0, 0]"},
                                           {Activity::ok, "[0, 1, 0]"},
                                           {Activity::fail, "[0, 0, 1]"},
                                           {Activity::idle, "[0, 0, 0]"}}) {
    const json state = after(before, activity);
    EXPECT_EQ(json({state["busy"], state["ok"], state["err"]}), json::parse(outcomes));
    EXPECT_EQ(json({state["a0"], state["note"]}), R"([3, ["kept"]])"_json);
  }
}

TEST(StateChanges, SessionsAreMerged) {
  json state = after(json::object(), Activity::busy, {"build", 30});
  reportActivity(state, Activity::busy, {"build", std::nullopt}, now);
  reportActivity(state, Activity::ok, {"review", 30}, now);
  EXPECT_EQ(state, R"({"busy": 1, "ok": 1, "err": 0, "sessions": {"build": {"busy": 1, "ok": 0, "err": 0},
                       "review": {"busy": 0, "ok": 1, "err": 0, "expires": 1700000030}}})"_json);
}

TEST(StateChanges, LapsedSessionsGoWithTheNextChangeWhateverItIs) {
  const json lapsed = R"({"busy": 1, "gone": 2, "sessions": {
    "old": {"busy": 1, "gone": 2, "palette": 1, "expires": 1700000000},
    "new": {"busy": 0.25, "expires": 1700000001}}})"_json;
  const std::function<void(json&)> changes[] = {[](json& state) { setChannel(state, "a0", 1, std::nullopt, now); },
                                                [](json& state) { unsetChannel(state, "a0", now); },
                                                [](json& state) { clearPalette(state, now); }};
  for (const auto& change : changes) {
    const json state = after(lapsed, change);
    EXPECT_EQ(state["busy"], 0.25);
    EXPECT_EQ(state["gone"], 0) << "a name that was removed would keep its last value";
    EXPECT_EQ(state["sessions"], R"({"new": {"busy": 0.25, "expires": 1700000001}})"_json);
  }
  EXPECT_FALSE(after(lapsed, changes[0]).contains("palette")) << "a session can't reach the file's own members";
}

TEST(StateChanges, AFailureFlashesUntilNobodyHasFailedAnyMore) {
  json state = after(json::object(), Activity::fail, {"build", std::nullopt});
  EXPECT_EQ(state["alert_for"], 1.5);
  EXPECT_EQ(state["alert_palette"].size(), 4);
  for (const Activity activity : {Activity::ok, Activity::busy, Activity::idle}) {
    reportActivity(state, activity, {"review", std::nullopt}, now);
    EXPECT_EQ(state["alert_until"], now + 1.5);
    EXPECT_EQ(after(state, activity, {"build", std::nullopt})["alert_until"], 0);
  }
}

TEST(StateChanges, ChannelsGoWhereTheirNameBelongs) {
  json state = json::object();
  setChannel(state, "busy", 0.5, std::nullopt, now);
  setChannel(state, "a1", 2, SessionChoice{"build", 10}, now);
  EXPECT_EQ(state["a1"], 2);
  setChannel(state, "a1", 3, std::nullopt, now);
  EXPECT_EQ(state["a1"], 3) << "not swallowed by the session that has it";
  setChannel(state, "a2", -0.5, SessionChoice{"build", 10}, now);
  EXPECT_EQ(state["a2"], -0.5) << "the only value is the largest";
  EXPECT_EQ(state["sessions"], R"({"default": {"a1": 3, "busy": 0.5},
                                   "build": {"a1": 2, "a2": -0.5, "expires": 1700000010}})"_json);
  unsetChannel(state, "a1", now);
  EXPECT_EQ(state["a1"], 0);
  EXPECT_EQ(state["sessions"], R"({"default": {"busy": 0.5}, "build": {"a2": -0.5, "expires": 1700000010}})"_json);
}

// The lifetime of a channel that is set without a session ends nothing else, and what is said again without one stays.
TEST(StateChanges, AChannelsLifetimeIsItsOwn) {
  json state = after(json::object(), Activity::busy);
  for (const char* name : {"a0", "err"}) setChannel(state, name, 1, SessionChoice{lifetimeSession(name), 600}, now);
  EXPECT_EQ(state["sessions"]["set-a0"], R"({"a0": 1, "expires": 1700000600})"_json);
  setChannel(state, "a0", 0.5, std::nullopt, now);
  reportActivity(state, Activity::ok, {}, now);
  EXPECT_EQ(state, R"({"a0": 0.5, "busy": 0, "ok": 1, "err": 0,
                       "sessions": {"default": {"busy": 0, "ok": 1, "err": 0}}})"_json);
}

TEST(StateChanges, PalettesComeAndGoAndClearingLeavesWhatIsNotOurs) {
  json state = R"({"a0": 1, "palette": "odd"})"_json;
  setPalette(state, {"#ff0055", "#00ddff"}, now);
  EXPECT_EQ(state, R"({"a0": 1, "palette": ["#ff0055", "#00ddff"]})"_json);
  clearPalette(state, now);
  EXPECT_EQ(state, R"({"a0": 1})"_json);
  state = R"({"a0": 1, "flag": true, "note": "kept", "palette": ["#000000", "#ffffff"], "alert_until": 5,
              "alert_for": 2, "alert_palette": [], "sessions": {"x": {"only": 1}}})"_json;
  clearState(state, now);
  EXPECT_EQ(state, R"({"a0": 0, "flag": 0, "note": "kept", "alert_until": 0, "only": 0})"_json);
}

TEST(StatusReport, TellsWhatIsSetAndHasNotLapsed) {
  const json state = R"({"busy": 1, "a0": 0, "flag": true, "note": "text", "alert_until": 1700000001, "alert_for": 1.5,
    "palette": ["#FF0055", "odd", "ffcc00"], "\u001b[2J": 1,
    "sessions": {"build": {"busy": 1, "expires": 1700000042}, "old": {"busy": 2, "err": 1, "expires": 1700000000},
                 "a\nb": {"err": 0.5}}})"_json;
  const StatusReport report = statusReport(state, true, now);
  EXPECT_EQ(textOf(report, now),
            "channels: ?[2J 1, busy 1, err 0.5, flag 1\n"
            "session a?b: err 0.5\n"
            "session build: busy 1 (42 s left)\n"
            "palette: #ff0055 #ffcc00\n"
            "flash: 1.0 s left\n"
            "Veloria is running\n");
  EXPECT_EQ(json(jsonOf(report, now)), R"({"channels": {"\u001b[2J": 1, "a0": 0, "busy": 1, "err": 0.5, "flag": 1},
    "sessions": {"build": {"channels": {"busy": 1}, "remaining": 42},
                 "a\nb": {"channels": {"err": 0.5}, "remaining": null}},
    "palette": ["#ff0055", "#ffcc00"], "running": true})"_json);
  EXPECT_EQ(json(jsonOf(statusReport(json::object(), false, now), now)),
            R"({"channels": {}, "sessions": {}, "palette": null, "running": false})"_json);
  EXPECT_EQ(statusReport(R"({"palette": {"a": "#ff0000", "b": "#00ff00"}})"_json, false, now).palette.size(), 0U);
}

}  // namespace
}  // namespace veloria::cli::tests
