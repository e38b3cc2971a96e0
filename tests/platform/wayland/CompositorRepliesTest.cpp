#include "platform/linux/wayland/CompositorReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace veloria::tests {
namespace {

std::string rect(const char* numbers) {
  return std::string(R"("rect": {)") + numbers + "}";
}

const std::string outputs = R"([{"name": "A", )" + rect(R"("x": 0, "y": 0, "width": 1920, "height": 1080)") +
                            R"(}, {"name": "B", )" + rect(R"("x": 1920, "y": 200, "width": 1280, "height": 720)") +
                            "}]";

std::string workspace(const char* output, const char* visible, const char* numbers) {
  return std::string(R"({"output": ")") + output + R"(", "visible": )" + visible + ", " + rect(numbers) + "}";
}

ReservedEdges edgesOf(const std::string& workspaces) {
  const auto edges = swayReservedEdges(outputs, "[" + workspaces + "]");
  EXPECT_TRUE(edges) << workspaces;
  return edges ? *edges : ReservedEdges{};
}

TEST(SwayReplies, WhatTheVisibleWorkspaceLeavesIsReserved) {
  struct Case {
    const char* what;
    const char* numbers;
    EdgeInsets expected;
  };
  const Case cases[] = {
      {"a panel at the top", R"("x": 0, "y": 32, "width": 1920, "height": 1048)", {0, 32, 0, 0}},
      {"one at the top, one at the bottom", R"("x": 0, "y": 32, "width": 1920, "height": 1000)", {0, 32, 0, 48}},
      {"gaps alone", R"("x": 10, "y": 10, "width": 1900, "height": 1060)", {0, 0, 0, 0}},
      {"a panel and gaps", R"("x": 10, "y": 42, "width": 1900, "height": 1028)", {0, 32, 0, 0}},
      {"larger than its output", R"("x": -10, "y": -10, "width": 1940, "height": 1100)", {0, 0, 0, 0}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(edgesOf(workspace("A", "true", each.numbers)).at("A"), each.expected) << each.what;
  }
}

TEST(SwayReplies, HiddenWorkspacesAndUnknownOutputsDontCount) {
  const char* whole = R"("x": 1920, "y": 200, "width": 1280, "height": 720)";
  const char* lower = R"("x": 1920, "y": 230, "width": 1280, "height": 690)";
  const auto edges = edgesOf(workspace("B", "false", whole) + "," + workspace("B", "true", lower) + "," +
                             workspace("C", "true", whole));
  EXPECT_EQ(edges, (ReservedEdges{{"B", {0, 30, 0, 0}}}));
}

TEST(SwayReplies, AnythingElseIsRefusedOrLeftOut) {
  for (const char* bytes : {"", "{}", "[1", "null", "\xff"}) {
    EXPECT_FALSE(swayReservedEdges(outputs, bytes)) << bytes;
    EXPECT_FALSE(swayReservedEdges(bytes, "[]")) << bytes;
    EXPECT_FALSE(swayLayerStacking(bytes)) << bytes;
    EXPECT_FALSE(hyprlandReservedEdges(bytes)) << bytes;
    EXPECT_FALSE(swayCoveredOutputs(bytes)) << bytes;
    EXPECT_FALSE(hyprlandCoveredOutputs(bytes, "[]")) << bytes;
    EXPECT_FALSE(hyprlandCoveredOutputs("[]", bytes)) << bytes;
  }
  for (const char* odd :
       {"1", "[]", R"({"output": 1, "visible": true})", R"({"output": "A", "visible": "true"})",
        R"({"output": "A", "visible": true, "rect": {"x": 0}})",
        R"({"output": "A", "visible": true, "rect": {"x": 0, "y": 1e30, "width": 1, "height": 1}})"}) {
    EXPECT_TRUE(edgesOf(odd).empty()) << odd;
  }
}

/// A container of sway's, in which there may be others.
std::string node(const std::string& members, const std::string& nodes = {}) {
  return "{" + members + R"(, "nodes": [)" + nodes + R"(], "floating_nodes": []})";
}

/// The outputs A and B, each with a workspace in which there are these containers.
CoveredOutputs coveredWith(const std::string& inA, const std::string& inB = {}) {
  const std::string workspace = R"("type": "workspace", "fullscreen_mode": 1)";
  const auto covered = swayCoveredOutputs(
      node(R"("type": "root", "name": "root")", node(R"("type": "output", "name": "A")", node(workspace, inA)) + "," +
                                                    node(R"("type": "output", "name": "B")", node(workspace, inB))));
  EXPECT_TRUE(covered) << inA;
  return covered ? *covered : CoveredOutputs{};
}

TEST(SwayReplies, AFullScreenWindowCountsWhereItIsSeen) {
  const std::string plain = node(R"("type": "con", "fullscreen_mode": 0, "visible": true)");
  const std::string film = node(R"("type": "con", "fullscreen_mode": 1, "visible": true)");
  const std::string hidden = node(R"("type": "con", "fullscreen_mode": 1, "visible": false)");
  EXPECT_EQ(coveredWith(plain, plain), CoveredOutputs{});
  EXPECT_EQ(coveredWith(film, plain), CoveredOutputs{"A"}) << "whatever has the focus";
  EXPECT_EQ(coveredWith(plain, hidden), CoveredOutputs{}) << "on another workspace";
  EXPECT_EQ(coveredWith(plain, node(R"("type": "con", "fullscreen_mode": 2, "visible": true)")),
            (CoveredOutputs{"A", "B"}));
  EXPECT_EQ(coveredWith(node(R"("type": "con", "fullscreen_mode": 1)", plain + "," + hidden)), CoveredOutputs{"A"})
      << "two windows side by side";
  EXPECT_EQ(coveredWith(R"({"type": "con", "nodes": 7, "floating_nodes": [)" + film + "]}"), CoveredOutputs{"A"});
  for (const char* odd : {"1", "[]", R"({"type": "con", "fullscreen_mode": "1", "visible": true})",
                          R"({"type": "con", "fullscreen_mode": 1, "visible": "true"})"}) {
    EXPECT_EQ(coveredWith(odd), CoveredOutputs{}) << odd;
  }
}

TEST(SwayReplies, TheVersionSaysHowALayerIsStacked) {
  const auto stacking = [](const char* numbers) { return *swayLayerStacking(std::string("{") + numbers + "}"); };
  EXPECT_EQ(stacking(R"("major": 1, "minor": 7)"), LayerStacking::newestLowest);
  EXPECT_EQ(stacking(R"("major": 1, "minor": 9)"), LayerStacking::newestLowest);
  EXPECT_EQ(stacking(R"("major": 1, "minor": 10)"), LayerStacking::newestHighest);
  EXPECT_EQ(stacking(R"("major": 2, "minor": 0)"), LayerStacking::newestHighest);
}

TEST(SwayMessages, HeadersAreCheckedBeforeTheLengthIsBelieved) {
  const std::string message = swayMessage(3, "abc");
  EXPECT_EQ(message.size(), swayHeaderBytes + 3);
  EXPECT_EQ(swayPayloadLength(message, 3), 3U);
  EXPECT_EQ(swayPayloadLength(message, 4), std::nullopt) << "another type";
  EXPECT_EQ(swayPayloadLength(message.substr(0, 13), 3), std::nullopt);
  EXPECT_EQ(swayPayloadLength("x" + message, 3), std::nullopt);
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
  struct Case {
    const char* what;
    const char* client;
    CoveredOutputs expected;
  };
  const Case cases[] = {
      {"full", R"("workspace": {"id": 1}, "fullscreen": 2)", {"A"}},
      {"full and maximised", R"("workspace": {"id": 1}, "fullscreen": 3)", {"A"}},
      {"maximised", R"("workspace": {"id": 1}, "fullscreen": 1)", {}},
      {"full, in older versions", R"("workspace": {"id": 2}, "fullscreen": true, "fullscreenMode": 0)", {"B"}},
      {"maximised, there", R"("workspace": {"id": 2}, "fullscreen": true, "fullscreenMode": 1)", {}},
      {"neither, there", R"("workspace": {"id": 2}, "fullscreen": false, "fullscreenMode": 0)", {}},
      {"on a special workspace that is shown", R"("workspace": {"id": -98}, "fullscreen": 2)", {"B"}},
      {"on a workspace that is not", R"("workspace": {"id": 4}, "fullscreen": 2)", {}},
      {"behind others of its group", R"("workspace": {"id": 1}, "fullscreen": 2, "hidden": true)", {}},
      {"no workspace", R"("workspace": 1, "fullscreen": 2)", {}},
  };
  for (const Case& each : cases) {
    const auto covered = hyprlandCoveredOutputs(monitors, std::string("[7, {") + each.client + "}]");
    ASSERT_TRUE(covered) << each.what;
    EXPECT_EQ(*covered, each.expected) << each.what;
  }
}

TEST(ReservedEdges, AnEdgeThatWouldTakeHalfTheScreenIsLeftOut) {
  const PixelRect frame{100, 50, 1000, 600};
  EXPECT_EQ(withoutReserved(frame, {10, 20, 30, 40}), (PixelRect{110, 70, 960, 540}));
  EXPECT_EQ(withoutReserved(frame, {501, 301, -1, 70000}), frame);
}

}  // namespace
}  // namespace veloria::tests
