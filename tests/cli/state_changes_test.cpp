#include "cli/StateChanges.h"

#include <gmock/gmock.h>

#include <functional>

namespace veloria::cli {
namespace {

using nlohmann::json;
using nlohmann::operator""_json;
using testing::ElementsAre;

constexpr double now = 1'700'000'000;

json after(json state, const std::function<void(json&)>& change) {
  change(state);
  return state;
}

json after(json state, Activity activity, const SessionChoice& session = {}) {
  reportActivity(state, activity, session, now);
  return state;
}

TEST(StateChangesTest, ActivitiesSetAllThreeOutcomes) {
  const auto outcomes = [](const json& state) { return std::array{state["busy"], state["ok"], state["err"]}; };
  const json before = R"({"busy": 0.5, "ok": true, "err": "odd", "a0": 3, "note": ["kept"]})"_json;
  EXPECT_THAT(outcomes(after(before, Activity::busy)), ElementsAre(1, 0, 0));
  EXPECT_THAT(outcomes(after(before, Activity::ok)), ElementsAre(0, 1, 0));
  EXPECT_THAT(outcomes(after(before, Activity::fail)), ElementsAre(0, 0, 1));
  const json idle = after(before, Activity::idle);
  EXPECT_THAT(outcomes(idle), ElementsAre(0, 0, 0));
  EXPECT_EQ(idle["a0"], 3);
  EXPECT_EQ(idle["note"], R"(["kept"])"_json);
  EXPECT_FALSE(idle.contains("sessions")) << "a session that says nothing takes no room";
}

TEST(StateChangesTest, SessionsAreMerged) {
  json state = after(json::object(), Activity::busy, {"build", std::nullopt});
  reportActivity(state, Activity::ok, {"review", 30}, now);
  EXPECT_EQ(state["busy"], 1);
  EXPECT_EQ(state["ok"], 1);
  EXPECT_EQ(state["sessions"]["review"]["expires"], now + 30);
  EXPECT_FALSE(state["sessions"]["build"].contains("expires"));
  reportActivity(state, Activity::fail, {"lint", std::nullopt}, now);
  EXPECT_EQ(state["ok"], 0) << "a failure outranks a success";
  reportActivity(state, Activity::idle, {"build", std::nullopt}, now);
  EXPECT_EQ(state["busy"], 0);
  EXPECT_EQ(state["err"], 1);
  reportActivity(state, Activity::idle, {"lint", std::nullopt}, now);
  EXPECT_EQ(state["ok"], 1);
}

TEST(StateChangesTest, ANewReportReplacesTheSessionsLifetime) {
  json state = after(json::object(), Activity::busy, {"build", 30});
  reportActivity(state, Activity::busy, {"build", std::nullopt}, now);
  EXPECT_FALSE(state["sessions"]["build"].contains("expires"));
}

TEST(StateChangesTest, LapsedSessionsGoWithTheNextChangeWhateverItIs) {
  const json lapsed = R"({"busy": 1, "gone": 2, "sessions": {
    "old": {"busy": 1, "gone": 2, "palette": 1, "expires": 1699999999},
    "new": {"busy": 0.25, "expires": 1700000001}}})"_json;
  const std::vector<std::function<void(json&)>> changes{
      [](json& state) { setChannel(state, "a0", 1, std::nullopt, now); },
      [](json& state) { unsetChannel(state, "a0", now); },
      [](json& state) {
        setPalette(state, {"#000000", "#ffffff"}, now);
      },
      [](json& state) { clearPalette(state, now); },
  };
  for (const auto& change : changes) {
    const json state = after(lapsed, change);
    EXPECT_EQ(state["busy"], 0.25);
    EXPECT_EQ(state["gone"], 0) << "a name that was removed would keep its last value";
    EXPECT_EQ(state["sessions"], R"({"new": {"busy": 0.25, "expires": 1700000001}})"_json);
  }
  EXPECT_FALSE(after(lapsed, changes[0]).contains("palette")) << "a session can't reach the file's own members";
}

TEST(StateChangesTest, AFailureFlashesUntilNobodyHasFailedAnyMore) {
  json state = after(json::object(), Activity::fail, {"build", std::nullopt});
  EXPECT_EQ(state["alert_until"], now + 1.5);
  EXPECT_EQ(state["alert_for"], 1.5);
  EXPECT_EQ(state["alert_palette"].size(), 4);
  for (const Activity activity : {Activity::ok, Activity::busy, Activity::idle}) {
    reportActivity(state, activity, {"review", std::nullopt}, now);
    EXPECT_EQ(state["alert_until"], now + 1.5);
    EXPECT_EQ(after(state, activity, {"build", std::nullopt})["alert_until"], 0);
  }
  EXPECT_FALSE(after(json::object(), Activity::ok).contains("alert_until"));
}

TEST(StateChangesTest, ChannelsGoWhereTheirNameBelongs) {
  json state = json::object();
  setChannel(state, "a0", 0.5, std::nullopt, now);
  EXPECT_EQ(state, R"({"a0": 0.5})"_json);
  setChannel(state, "busy", 0.5, std::nullopt, now);
  EXPECT_EQ(state["sessions"], R"({"default": {"busy": 0.5}})"_json);
  setChannel(state, "a1", 2, SessionChoice{"build", 10}, now);
  EXPECT_EQ(state["sessions"]["build"], R"({"a1": 2, "expires": 1700000010})"_json);
  EXPECT_EQ(state["a1"], 2);
  setChannel(state, "a1", 3, std::nullopt, now);
  EXPECT_EQ(state["a1"], 3) << "not swallowed by the session that has it";
  EXPECT_EQ(state["sessions"]["default"], R"({"a1": 3, "busy": 0.5})"_json);
  setChannel(state, "a2", -0.5, SessionChoice{"build", 10}, now);
  EXPECT_EQ(state["a2"], -0.5) << "the only value is the largest";
}

TEST(StateChangesTest, UnsettingIsZeroInAllSessions) {
  json state = R"({"a0": 1, "sessions": {"x": {"a0": 1, "busy": 1}, "y": {"a0": 2, "expires": 1700000010}}})"_json;
  unsetChannel(state, "a0", now);
  EXPECT_EQ(state, R"({"a0": 0, "busy": 1, "sessions": {"x": {"busy": 1}}})"_json);
}

TEST(StateChangesTest, ClearingLeavesZeroesAndWhatIsNotOurs) {
  json state = R"({"a0": 1, "flag": true, "note": "kept", "palette": ["#000000", "#ffffff"], "alert_until": 5,
                   "alert_for": 2, "alert_palette": [], "sessions": {"x": {"only": 1}}})"_json;
  clearState(state, now);
  EXPECT_EQ(state, R"({"a0": 0, "flag": 0, "note": "kept", "alert_until": 0, "only": 0})"_json);
}

TEST(StateChangesTest, PaletteComesAndGoes) {
  json state = R"({"a0": 1, "palette": "odd"})"_json;
  setPalette(state, {"#ff0055", "#00ddff"}, now);
  EXPECT_EQ(state, R"({"a0": 1, "palette": ["#ff0055", "#00ddff"]})"_json);
  clearPalette(state, now);
  EXPECT_EQ(state, R"({"a0": 1})"_json);
}

TEST(StateChangesTest, ARunLeavesOnlyItsOutcome) {
  json state = after(json::object(), Activity::busy, {"run-7", 60});
  finishRun(state, "run-7", Activity::fail, "default", now);
  EXPECT_EQ(state["sessions"], R"({"default": {"busy": 0, "ok": 0, "err": 1}})"_json);
  EXPECT_EQ(state["alert_until"], now + 1.5);
  reportActivity(state, Activity::busy, {"build", 60}, now);
  finishRun(state, "build", Activity::ok, "build", now);
  EXPECT_EQ(state["sessions"]["build"], R"({"busy": 0, "ok": 1, "err": 0})"_json) << "no lifetime";
  EXPECT_EQ(state["busy"], 0);
}

TEST(StateChangesTest, OddSessionsAreReplaced) {
  for (const char* odd : {"5", "[1]", "null", R"({"x": 1, "y": {"busy": "yes", "expires": "never"}})"}) {
    json state = json::object();
    state["sessions"] = json::parse(odd);
    reportActivity(state, Activity::ok, {}, now);
    EXPECT_EQ(state["sessions"], R"({"default": {"busy": 0, "ok": 1, "err": 0}})"_json) << odd;
  }
}

}  // namespace
}  // namespace veloria::cli
