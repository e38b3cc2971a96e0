// What compositors say over their own sockets: the texts, and the sockets with a server that answers as the test says.

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "LocalListener.h"
#include "Process.h"
#include "platform/linux/wayland/CompositorQuestions.h"

namespace veloria::tests {
namespace {

std::string rect(const std::string& numbers) {
  return R"("rect": {)" + numbers + "}";
}

const std::string outputs = R"([{"name": "A", )" + rect(R"("x": 0, "y": 0, "width": 1920, "height": 1080)") +
                            R"(}, {"name": "B", )" + rect(R"("x": 1920, "y": 200, "width": 1280, "height": 720)") +
                            "}]";

std::string workspace(const std::string& output, const std::string& visible, const std::string& numbers) {
  return R"({"output": ")" + output + R"(", "visible": )" + visible + ", " + rect(numbers) + "}";
}

ReservedEdges edgesOf(const std::string& workspaces) {
  const auto edges = swayReservedEdges(outputs, "[" + workspaces + "]");
  EXPECT_TRUE(edges) << workspaces;
  return edges ? *edges : ReservedEdges{};
}

TEST(SwayReplies, WhatTheVisibleWorkspaceLeavesIsReserved) {
  const std::tuple<const char*, const char*, EdgeInsets> cases[] = {
      {"at the top and the bottom", R"("x": 0, "y": 32, "width": 1920, "height": 1000)", {0, 32, 0, 48}},
      {"at the sides", R"("x": 20, "y": 0, "width": 1870, "height": 1080)", {20, 0, 30, 0}},
      {"a panel and gaps", R"("x": 10, "y": 42, "width": 1900, "height": 1028)", {0, 32, 0, 0}},
      {"larger than its output", R"("x": -10, "y": -10, "width": 1940, "height": 1100)", {0, 0, 0, 0}},
  };
  for (const auto& [what, numbers, expected] : cases) {
    EXPECT_EQ(edgesOf(workspace("A", "true", numbers)).at("A"), expected) << what;
  }
  const char* whole = R"("x": 1920, "y": 200, "width": 1280, "height": 720)";
  const char* low = R"("x": 1920, "y": 230, "width": 1280, "height": 690)";
  EXPECT_EQ(
      edgesOf(workspace("B", "false", whole) + "," + workspace("B", "true", low) + "," + workspace("C", "true", whole)),
      (ReservedEdges{{"B", {0, 30, 0, 0}}}))
      << "hidden workspaces and unknown outputs don't count";
}

TEST(SwayReplies, AnythingElseIsRefusedOrLeftOut) {
  for (const char* bytes : {"", "{}", "[1", "\xff"}) {
    EXPECT_FALSE(swayReservedEdges(outputs, bytes)) << bytes;
    EXPECT_FALSE(swayReservedEdges(bytes, "[]")) << bytes;
    EXPECT_FALSE(swayLayerStacking(bytes)) << bytes;
    EXPECT_FALSE(hyprlandReservedEdges(bytes)) << bytes;
    EXPECT_FALSE(swayCoveredOutputs(bytes)) << bytes;
    EXPECT_FALSE(hyprlandCoveredOutputs(bytes, "[]")) << bytes;
    EXPECT_FALSE(hyprlandCoveredOutputs("[]", bytes)) << bytes;
  }
  for (const char* odd :
       {"1", R"({"output": 1, "visible": true})", R"({"output": "A", "visible": "true"})",
        R"({"output": "A", "visible": true, "rect": {"x": 0}})",
        R"({"output": "A", "visible": true, "rect": {"x": 0, "y": 1e30, "width": 1, "height": 1}})"}) {
    EXPECT_TRUE(edgesOf(odd).empty()) << odd;
  }
}

TEST(PlasmaReplies, PanelsThatStayReserveTheirEdge) {
  const std::vector<MonitorDescription> monitors{{"A", {0, 0, 1920, 1080}, {}}, {"B", {1920, 0, 1280, 720}, {}}};
  const auto panel = [](const std::string& members) {
    return R"({"x": 0, "y": 0, "width": 1920, "height": 1080, )" + members + "}";
  };
  const std::pair<std::string, EdgeInsets> cases[] = {
      {panel(R"("location": "bottom", "hiding": "none", "thickness": 44)"), {0, 0, 0, 44}},
      {panel(R"("location": "top", "hiding": "none", "thickness": 28)") + "," +
           panel(R"("location": "top", "hiding": "none", "thickness": 20)"),
       {0, 28, 0, 0}},
      {panel(R"("location": "top", "hiding": "autohide", "thickness": 28)"), {}},
      {panel(R"("location": "floating", "hiding": "none", "thickness": 28)"), {}},
      {panel(R"("location": "left", "hiding": "none", "thickness": -5)"), {}},
      {panel(R"("location": "left", "hiding": "none", "thickness": "5")") + R"(, 7, {"hiding": "none"})", {}},
  };
  for (const auto& [panels, expected] : cases) {
    const auto edges = plasmaReservedEdges("[" + panels + "]\n", monitors);
    ASSERT_TRUE(edges) << panels;
    EXPECT_EQ(edges->at("A"), expected) << panels;
    EXPECT_EQ(edges->at("B"), EdgeInsets{}) << panels;
  }
  for (const char* bytes : {"", "{}", "Error: no panels"}) EXPECT_FALSE(plasmaReservedEdges(bytes, monitors)) << bytes;
}

/// A container of sway's, in which there may be others.
std::string node(const std::string& members, const std::string& nodes = {}) {
  return "{" + members + R"(, "nodes": [)" + nodes + R"(], "floating_nodes": []})";
}

std::string window(const char* mode, const char* visible) {
  return node(std::string(R"("type": "con", "fullscreen_mode": )") + mode + R"(, "visible": )" + visible);
}

TEST(SwayReplies, AFullScreenWindowCountsWhereItIsSeen) {
  const std::string plain = window("0", "true");
  const std::string film = window("1", "true");
  const std::string hidden = window("1", "false");
  const std::tuple<const char*, std::string, std::string, CoveredOutputs> cases[] = {
      {"whatever has the focus", film, plain, {"A"}},
      {"on another workspace", plain, hidden, {}},
      {"over all outputs", plain, window("2", "true"), {"A", "B"}},
      {"two windows side by side", node(R"("type": "con", "fullscreen_mode": 1)", plain + "," + hidden), "", {"A"}},
      {"floating", R"({"type": "con", "nodes": 7, "floating_nodes": [)" + film + "]}", "", {"A"}},
      {"texts", window("\"1\"", "true"), window("1", "\"true\""), {}},
  };
  for (const auto& [what, inA, inB, expected] : cases) {
    const std::string space = R"("type": "workspace", "fullscreen_mode": 1)";
    const auto covered = swayCoveredOutputs(
        node(R"("type": "root", "name": "root")", node(R"("type": "output", "name": "A")", node(space, inA)) + "," +
                                                      node(R"("type": "output", "name": "B")", node(space, inB))));
    ASSERT_TRUE(covered) << what;
    EXPECT_EQ(*covered, expected) << what;
  }
}

TEST(SwayReplies, TheVersionSaysHowALayerIsStacked) {
  EXPECT_EQ(*swayLayerStacking(R"({"major": 1, "minor": 9})"), LayerStacking::newestLowest);
  EXPECT_EQ(*swayLayerStacking(R"({"major": 1, "minor": 10})"), LayerStacking::newestHighest);
}

TEST(SwayMessages, HeadersAreCheckedBeforeTheLengthIsBelieved) {
  const std::string message = swayMessage(3, "abc");
  EXPECT_EQ(swayPayloadLength(message, 3), 3U);
  EXPECT_EQ(swayPayloadLength(message, 4), std::nullopt) << "another type";
  EXPECT_EQ(swayPayloadLength(message.substr(0, 13), 3), std::nullopt);
  std::string huge = message;
  huge.replace(6, 4, "\xff\xff\xff\x7f");
  EXPECT_EQ(swayPayloadLength(huge, 3), std::nullopt);
}

TEST(HyprlandReplies, ReservedIsLeftTopRightBottom) {
  const auto edges = hyprlandReservedEdges(
      R"([{"id": 0, "name": "eDP-1", "width": 2880, "reserved": [1, 30, 2, 0]},
          {"name": "odd", "reserved": [0, 30]}, {"name": "odder", "reserved": [0, "30", 0, 0]},
          {"reserved": [0, 0, 0, 0]}, 7, {"name": "below", "reserved": [-5, 0, 0, 40]}])");
  ASSERT_TRUE(edges);
  EXPECT_EQ(*edges, (ReservedEdges{{"eDP-1", {1, 30, 2, 0}}, {"below", {0, 0, 0, 40}}}));
}

TEST(HyprlandReplies, AFullScreenWindowCountsOnTheWorkspacesThatAreShown) {
  const char* monitors = R"([{"name": "A", "activeWorkspace": {"id": 1}, "specialWorkspace": {"id": 0, "name": ""}},
                             {"name": "B", "activeWorkspace": {"id": 2}, "specialWorkspace": {"id": -98}},
                             {"name": 7, "activeWorkspace": {"id": 3}}, {"name": "C", "activeWorkspace": 3}, null])";
  const std::tuple<const char*, const char*, CoveredOutputs> cases[] = {
      {"full", R"("workspace": {"id": 1}, "fullscreen": 2)", {"A"}},
      {"maximised", R"("workspace": {"id": 1}, "fullscreen": 1)", {}},
      {"full, in older versions", R"("workspace": {"id": 2}, "fullscreen": true, "fullscreenMode": 0)", {"B"}},
      {"maximised, there", R"("workspace": {"id": 2}, "fullscreen": true, "fullscreenMode": 1)", {}},
      {"on a special workspace that is shown", R"("workspace": {"id": -98}, "fullscreen": 2)", {"B"}},
      {"on a workspace that is not", R"("workspace": {"id": 4}, "fullscreen": 2)", {}},
      {"behind others of its group", R"("workspace": {"id": 1}, "fullscreen": 2, "hidden": true)", {}},
  };
  for (const auto& [what, client, expected] : cases) {
    const auto covered = hyprlandCoveredOutputs(monitors, std::string("[7, {") + client + "}]");
    ASSERT_TRUE(covered) << what;
    EXPECT_EQ(*covered, expected) << what;
  }
}

TEST(ReservedEdges, AnEdgeThatWouldTakeMoreThanHalfTheScreenIsLeftOut) {
  const PixelRect frame{100, 50, 1000, 600};
  EXPECT_EQ(withoutReserved(frame, {10, 20, 30, 40}), (PixelRect{110, 70, 960, 540}));
  EXPECT_EQ(withoutReserved(frame, {500, 300, 0, 0}), (PixelRect{600, 350, 500, 300}));
  EXPECT_EQ(withoutReserved(frame, {501, 301, -1, 70000}), frame);
}

/// Answers each message of a connection with the next of `answers`; it closes each connection after `answersEach`, as
/// Hyprland does after one. An empty answer is silence until the client has gone.
class Answerer {
 public:
  Answerer(const std::string& path, std::vector<std::string> answers, std::size_t answersEach = 100)
      : listener_(path), thread_([this, answers = std::move(answers), answersEach] {
          OwnedDescriptor client;
          for (std::size_t next = 0; next < answers.size(); ++next) {
            if (next % answersEach == 0) client = listener_.accept();
            if (LocalListener::receive(client).empty()) return;
            answers[next].empty() ? (void)LocalListener::receive(client) : LocalListener::send(client, answers[next]);
            if ((next + 1) % answersEach == 0) client.reset();
          }
        }) {}
  ~Answerer() { listener_.hangUp(); }

 private:
  LocalListener listener_;
  std::jthread thread_;
};

CompositorQuestions questionsWith(const std::map<std::string, std::string, std::less<>>& variables) {
  return CompositorQuestions([=](std::string_view name) {
    const auto found = variables.find(name);
    return found != variables.end() ? std::optional(found->second) : std::nullopt;
  });
}

TEST(CompositorQuestions, SwayIsAskedAndNonsenseIsNoAnswer) {
  const std::string outputList = swayMessage(3, outputs);
  const std::string workspaces =
      swayMessage(1, "[" + workspace("A", "true", R"("x": 0, "y": 25, "width": 1920, "height": 1055)") + "]");
  const TemporaryFolder folder;
  int count = 0;
  const auto ask = [&](std::vector<std::string> answers) {
    const std::string path = folder.file("sway" + std::to_string(++count));
    const Answerer answerer(path, std::move(answers));
    return questionsWith({{"SWAYSOCK", path}}).reservedEdges();
  };
  EXPECT_EQ(ask({outputList, workspaces}), (ReservedEdges{{"A", {0, 25, 0, 0}}}));
  EXPECT_EQ(ask({outputList, workspaces.substr(0, 40)}), std::nullopt) << "cut off";
  EXPECT_EQ(ask({"HTTP/1.1 400 Bad Request\r\n\r\n"}), std::nullopt);
  EXPECT_EQ(ask({""}), std::nullopt) << "silent";
  EXPECT_EQ(questionsWith({{"SWAYSOCK", "/nowhere"}}).reservedEdges(), std::nullopt);
}

TEST(CompositorQuestions, HyprlandIsAskedOncePerConnection) {
  const TemporaryFolder folder;
  std::filesystem::create_directories(folder.file("hypr/one"));
  const Answerer answerer(
      folder.file("hypr/one/.socket.sock"),
      {R"([{"name": "A", "activeWorkspace": {"id": 1}, "reserved": [0, 30, 0, 0]}])",
       R"([{"workspace": {"id": 1}, "fullscreen": 2}])", R"([{"name": "A", "reserved": [0, 30, 0, 0]}])", "[{"},
      1);
  const auto questions = questionsWith({{"HYPRLAND_INSTANCE_SIGNATURE", "one"}, {"XDG_RUNTIME_DIR", folder.path()}});
  EXPECT_EQ(questions.coveredOutputs(), CoveredOutputs{"A"});
  EXPECT_EQ(questions.reservedEdges(), (ReservedEdges{{"A", {0, 30, 0, 0}}}));
  EXPECT_EQ(questions.coveredOutputs(), std::nullopt) << "half an answer, and none";
}

}  // namespace
}  // namespace veloria::tests
