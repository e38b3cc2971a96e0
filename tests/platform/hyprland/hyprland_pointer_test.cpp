// The request and its answers over a real socket, with a server that answers as the test says.

#include "platform/linux/hyprland/HyprlandPointer.h"

#include "LocalListener.h"
#include "Process.h"

namespace veloria::tests {
namespace {

TEST(CursorPosition, IsReadOrRefused) {
  const std::pair<const char*, std::optional<Point>> cases[] = {
      {R"({"x": 123,"y": 456})", Point{123, 456}},
      {"{\n    \"x\": -1920,\n    \"y\": 0.5\n}\n", Point{-1920, 0.5}},
      {R"({"x": "1", "y": 2})", std::nullopt},
      {R"({"x": 1, "y": null})", std::nullopt},
      {"[1, 2]", std::nullopt},
      {R"({"x": 1, "y": 1000001})", std::nullopt},
      {R"({"x": 1, "y": 2} {"x")", std::nullopt},
  };
  for (const auto& [text, position] : cases) EXPECT_EQ(cursorPositionFromAnswer(text), position) << text;
}

TEST(HyprlandRequestSocket, IsInTheInstancesFolder) {
  const TemporaryFolder runtime;
  std::map<std::string, std::string, std::less<>> variables{{"XDG_RUNTIME_DIR", runtime.path()}};
  const Environment environment = [&](std::string_view name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    return found != variables.end() ? std::optional(found->second) : std::nullopt;
  };
  EXPECT_EQ(hyprlandRequestSocket(environment), std::nullopt) << "no Hyprland";
  variables["HYPRLAND_INSTANCE_SIGNATURE"] = "abc_1";
  EXPECT_EQ(hyprlandRequestSocket(environment), std::nullopt) << "no socket";
  const std::string path = runtime.writeProgram("hypr/abc_1/.socket.sock", "");
  EXPECT_EQ(hyprlandRequestSocket(environment), path);
  for (const char* bad : {"", ".", "..", "../hypr/abc_1", "/abc_1"}) {
    variables["HYPRLAND_INSTANCE_SIGNATURE"] = bad;
    EXPECT_EQ(hyprlandRequestSocket(environment), std::nullopt) << bad;
  }
}

class HyprlandPointerTest : public testing::Test {
 protected:
  OwnedDescriptor answer(const std::string& text) {
    OwnedDescriptor client = listener_.accept();
    EXPECT_EQ(LocalListener::receive(client), "j/cursorpos");
    LocalListener::send(client, text);
    return client;
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.file("socket");
  LocalListener listener_{path_};
  double now_ = 50;
  HyprlandPointer pointer_{path_, [this] { return now_; }};
};

TEST_F(HyprlandPointerTest, EachCallReadsTheLastAnswerAndAsksAgain) {
  EXPECT_EQ(pointer_.layoutPosition(), std::nullopt) << "nothing yet, and no waiting";
  answer(R"({"x": 10, "y": 20})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{10, 20}));
  auto client = answer(R"({"x": 11,)");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{10, 20}));
  LocalListener::send(client, R"( "y": 21})");
  client.reset();
  EXPECT_EQ(pointer_.layoutPosition(), (Point{11, 21})) << "in pieces";
}

TEST_F(HyprlandPointerTest, WithoutAUsableAnswerInTimeThePointerIsAbsentAndAskedForAgain) {
  pointer_.layoutPosition();
  for (const std::string& text : {std::string(), std::string(60000, 'x')}) {
    answer(text);
    EXPECT_EQ(pointer_.layoutPosition(), std::nullopt) << text.size();
  }
  answer(R"({"x": 1, "y": 2})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{1, 2}));
  const auto silent = answer("");
  now_ += HyprlandPointer::patienceSeconds * 0.9;
  EXPECT_EQ(pointer_.layoutPosition(), (Point{1, 2}));
  now_ += HyprlandPointer::patienceSeconds * 0.2;
  EXPECT_EQ(pointer_.layoutPosition(), std::nullopt);
  answer(R"({"x": 7, "y": 8})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{7, 8}));
}

TEST_F(HyprlandPointerTest, AServerThatIsGoneOrFullIsNotWaitedFor) {
  EXPECT_EQ(HyprlandPointer(folder_.file("nobody")).layoutPosition(), std::nullopt);
  std::vector<std::unique_ptr<HyprlandPointer>> crowd;
  for (int i = 0; i < 20; ++i) {
    crowd.push_back(std::make_unique<HyprlandPointer>(path_));
    EXPECT_EQ(crowd.back()->layoutPosition(), std::nullopt);
  }
}

TEST_F(HyprlandPointerTest, TheSourceTurnsTheLayoutOver) {
  const auto source = hyprlandPointerSource(path_, [](Point layout) { return Point{layout.x - 100, 1080 - layout.y}; });
  EXPECT_EQ(source.location(), std::nullopt);
  answer(R"({"x": 150, "y": 80})");
  EXPECT_EQ(source.location(), (Point{50, 1000}));
}

}  // namespace
}  // namespace veloria::tests
