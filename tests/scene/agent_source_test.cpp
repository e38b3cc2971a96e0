#include "scene/AgentSource.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::Pair;

constexpr double now = 1'700'000'000;

TEST(AgentState, HoldsEveryNumberAndBooleanAndNothingElse) {
  const auto state = readAgentState(
      R"({"busy": true, "ok": false, "Case": -2.5, "big": 18446744073709551615, "text": "1", "list": [1],
          "object": {"busy": 1}, "none": null, "alert_until": 12.5, "alert_for": 2, "": 3})");
  ASSERT_TRUE(state);
  EXPECT_THAT(state->channels,
              ElementsAre(Pair("", 3), Pair("Case", -2.5), Pair("alert_for", 2), Pair("alert_until", 12.5),
                          Pair("big", 18446744073709551615.0), Pair("busy", 1), Pair("ok", 0)));
  EXPECT_EQ(state->alertUntil, 12.5);
  const std::initializer_list<std::pair<const char*, double>> lengths{
      {"{}", 1.5}, {R"({"alert_for": 0.01})", 0.1}, {R"({"alert_for": "9"})", 1.5}, {R"({"alert_for": 60})", 60}};
  for (const auto& [json, seconds] : lengths) EXPECT_EQ(readAgentState(json)->alertFor, seconds) << json;
  for (const char* text : {"", "[]", "1", "null", "{\"a\": 1e999}", "{\"a\": 1", "{\"a\": NaN}", "\xff"}) {
    EXPECT_FALSE(readAgentState(text)) << text;
  }
}

TEST(AgentState, PalettesAreFourStopsOrNone) {
  const ColorStop red{1, 0, 0}, green{0, 1, 0}, blue{0, 0, 1}, gray{16 / 255.F, 17 / 255.F, 18 / 255.F};
  const std::initializer_list<std::pair<std::string, std::optional<FourStops>>> cases{
      {R"(["#ff0000", "00FF00"])", FourStops{red, green, green, green}},
      {R"(["#ff0000", "#00ff00", "#0000ff"])", FourStops{red, green, blue, blue}},
      {R"(["#ff0000", "#00ff00", "#0000ff", "#101112", "#ffffff"])", FourStops{red, green, blue, gray}},
      {R"(["nothing", "#ff0000", "#12345", "##00ff00", "#00ff00"])", FourStops{red, green, green, green}},
      {R"(["#ff0000", 1, "#00ff00"])", std::nullopt},
      {R"("#ff0000")", std::nullopt}};
  for (const auto& [json, wanted] : cases) {
    const auto state = readAgentState(R"({"palette": )" + json + R"(, "alert_palette": )" + json + "}");
    EXPECT_EQ(state->palette, wanted) << json;
    EXPECT_EQ(state->alertPalette, wanted) << json;
  }
}

TEST(AgentSessions, AnyBusyIsBusyAndAFailureOutranks) {
  const AgentSessions sessions{{"a", {{{"busy", 1}, {"ok", 0}, {"err", 0}}, {}}},
                               {"b", {{{"busy", 0}, {"ok", 1}, {"err", 0}}, {}}},
                               {"c", {{{"err", 1}, {"a0", 0.5}, {"a1", -0.5}}, now + 5}},
                               {"d", {{{"busy", 0.25}, {"a1", -0.25}}, now - 1}}};
  EXPECT_THAT(mergedSessions(sessions, now),
              ElementsAre(Pair("a0", 0.5), Pair("a1", -0.5), Pair("busy", 1), Pair("err", 1), Pair("ok", 0)));
  EXPECT_THAT(mergedSessions(sessions, now + 5),
              ElementsAre(Pair("a0", 0), Pair("a1", 0), Pair("busy", 1), Pair("err", 0), Pair("ok", 1)));
  EXPECT_EQ(nextExpiry(sessions, now), now + 5);
  EXPECT_EQ(nextExpiry(sessions, now + 5), std::nullopt);
  EXPECT_EQ(agentSessions({{"sessions", toJson(sessions)}}), sessions);
}

TEST(AgentSessions, SkipWhatIsNoSession) {
  for (const char* text : {R"({"sessions": [1]})", "[]"})
    EXPECT_EQ(agentSessions(nlohmann::json::parse(text)).size(), 0U);
  const auto sessions = agentSessions(nlohmann::json::parse(
      R"({"sessions": {"a": 1, "b": {"busy": true, "text": "x", "expires": "soon", "deep": {"x": 1}}}})"));
  EXPECT_EQ(sessions, (AgentSessions{{"b", {{{"busy", 1}}, {}}}}));
}

class AgentSourceTest : public testing::Test {
 protected:
  /// As writers do it: a new file under the old name.
  void write(const std::string& text) { fs::rename(folder.write("new", text), path); }
  const ChannelValues& polled(double at = now) {
    source.poll(at);
    return source.latest();
  }

  TemporaryFolder folder;
  std::string path = folder.file("state.json");
  AgentSource source{path};
};

TEST_F(AgentSourceTest, FollowsTheFileAndKeepsWhatItHadWhenTheFileIsBad) {
  EXPECT_TRUE(polled().empty());
  write(R"({"busy": 1, "err": 0, "palette": ["#ff0055", "#ffcc00"], "alert_until": 9})");
  EXPECT_THAT(polled(), ElementsAre(Pair("alert_until", 9), Pair("busy", 1), Pair("err", 0)));
  EXPECT_EQ(source.paletteOverride().size(), 4U);
  write(R"({"busy": 0.5)");
  EXPECT_EQ(polled().at("busy"), 1);
  write(R"({"busy": 0.5})");
  EXPECT_THAT(polled(), ElementsAre(Pair("busy", 0.5)));
  EXPECT_TRUE(source.paletteOverride().empty());
  EXPECT_EQ(source.alertUntil(), 0);
  const auto before = fs::last_write_time(path);
  std::fstream(path, std::ios::in | std::ios::out) << R"({"busy": 0.7})";  // the same size and inode
  fs::last_write_time(path, before + std::chrono::nanoseconds(1));
  EXPECT_EQ(polled().at("busy"), 0.7);
  fs::remove(path);
  EXPECT_EQ(polled().at("busy"), 0.7);
}

TEST_F(AgentSourceTest, NothingAtThePathMakesItWait) {
  write(R"({"busy": 1})");
  polled();
  fs::remove(path);
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(polled().at("busy"), 1);
}

TEST_F(AgentSourceTest, SessionsLapseWithoutTheFileChanging) {
  write(R"({"busy": 1, "a0": 0.7, "sessions": {"a": {"busy": 1, "expires": 1700000010}}})");
  EXPECT_THAT(polled(now), ElementsAre(Pair("a0", 0.7), Pair("busy", 1)));
  EXPECT_THAT(polled(now + 10), ElementsAre(Pair("a0", 0.7), Pair("busy", 0)));
}

}  // namespace
}  // namespace veloria::tests
