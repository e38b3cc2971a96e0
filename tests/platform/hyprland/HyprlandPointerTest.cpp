// The request and its answers over a real socket, with a server that answers as the test says.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include "Process.h"
#include "base/OwnedDescriptor.h"
#include "platform/linux/hyprland/CursorPosition.h"
#include "platform/linux/hyprland/HyprlandPointer.h"

namespace veloria::tests {
namespace {

TEST(CursorPosition, answersAreReadOrRefused) {
  EXPECT_EQ(cursorPositionFromAnswer(R"({"x": 123,"y": 456})"), (Point{123, 456}));
  EXPECT_EQ(cursorPositionFromAnswer("{\n    \"x\": -1920,\n    \"y\": 0.5\n}\n"), (Point{-1920, 0.5}));
  for (const char* text :
       {"", "123, 456", "unknown request", "{}", R"({"x": 1})", R"({"x": "1", "y": 2})", R"({"x": null, "y": 2})",
        R"([1, 2])", R"({"x": 1e300, "y": 0})", R"({"x": 1, "y": 2} {"x")", R"({"x": 1, "y": 2000000})", "{\"x\": 1"}) {
    EXPECT_EQ(cursorPositionFromAnswer(text), std::nullopt) << text;
  }
}

TEST(HyprlandRequestSocket, isInTheInstancesFolder) {
  const TemporaryFolder runtime;
  std::filesystem::create_directories(runtime.file("hypr/abc_1"));
  std::map<std::string, std::string, std::less<>> variables{{"XDG_RUNTIME_DIR", runtime.path()}};
  const Environment environment = [&](std::string_view name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    return found != variables.end() ? std::optional(found->second) : std::nullopt;
  };
  EXPECT_EQ(hyprlandRequestSocket(environment), std::nullopt) << "no Hyprland";
  variables["HYPRLAND_INSTANCE_SIGNATURE"] = "abc_1";
  EXPECT_EQ(hyprlandRequestSocket(environment), std::nullopt) << "no socket";
  const std::string path = runtime.write("hypr/abc_1/.socket.sock", "");
  EXPECT_EQ(hyprlandRequestSocket(environment), path);
  for (const char* bad : {"", ".", "..", "../hypr/abc_1", "/abc_1"}) {
    variables["HYPRLAND_INSTANCE_SIGNATURE"] = bad;
    EXPECT_EQ(hyprlandRequestSocket(environment), std::nullopt) << bad;
  }
}

class HyprlandPointerTest : public testing::Test {
 protected:
  HyprlandPointerTest() : listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path_.data(), path_.size());
    EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(::listen(listener_.get(), 4), 0);
  }

  /// Takes the request that is waiting.
  OwnedDescriptor accept() {
    OwnedDescriptor client(::accept(listener_.get(), nullptr, nullptr));
    std::array<char, 64> block{};
    const ssize_t got = ::recv(client.get(), block.data(), block.size(), 0);
    EXPECT_EQ(std::string(block.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0))), "j/cursorpos");
    return client;
  }
  static void send(const OwnedDescriptor& client, const std::string& text) {
    ::send(client.get(), text.data(), text.size(), MSG_NOSIGNAL);
  }
  void answer(const std::string& text) { send(accept(), text); }

  TemporaryFolder folder_;
  std::string path_ = folder_.file("socket");
  OwnedDescriptor listener_;
  double now_ = 50;
  HyprlandPointer pointer_{path_, [this] { return now_; }};
};

TEST_F(HyprlandPointerTest, eachCallTakesTheLastAnswerAndAsksAgain) {
  EXPECT_EQ(pointer_.layoutPosition(), std::nullopt) << "nothing yet, and no waiting";
  answer(R"({"x": 10, "y": 20})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{10, 20}));
  EXPECT_EQ(pointer_.layoutPosition(), (Point{10, 20})) << "the newest there is";
  answer(R"({"x": 11, "y": 21})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{11, 21}));
}

TEST_F(HyprlandPointerTest, anAnswerMayComeInPieces) {
  pointer_.layoutPosition();
  auto client = accept();
  send(client, R"({"x": 3,)");
  EXPECT_EQ(pointer_.layoutPosition(), std::nullopt);
  send(client, R"( "y": 4})");
  client.reset();
  EXPECT_EQ(pointer_.layoutPosition(), (Point{3, 4}));
}

TEST_F(HyprlandPointerTest, withoutAUsableAnswerThePointerIsAbsentAndAskedForAgain) {
  for (const std::string& text : {std::string("unknown request"), std::string(), std::string(100000, 'x')}) {
    pointer_.layoutPosition();
    answer(R"({"x": 1, "y": 2})");
    EXPECT_EQ(pointer_.layoutPosition(), (Point{1, 2}));
    answer(text.substr(0, 60000));
    EXPECT_EQ(pointer_.layoutPosition(), std::nullopt) << text.substr(0, 20);
    answer(R"({"x": 5, "y": 6})");
    EXPECT_EQ(pointer_.layoutPosition(), (Point{5, 6}));
    answer(R"({"x": 5, "y": 6})");
  }
}

TEST_F(HyprlandPointerTest, aServerThatSaysNothingIsGivenUp) {
  pointer_.layoutPosition();
  answer(R"({"x": 1, "y": 2})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{1, 2}));
  const auto silent = accept();
  now_ += HyprlandPointer::patienceSeconds * 0.9;
  EXPECT_EQ(pointer_.layoutPosition(), (Point{1, 2}));
  now_ += HyprlandPointer::patienceSeconds * 0.2;
  EXPECT_EQ(pointer_.layoutPosition(), std::nullopt);
  answer(R"({"x": 7, "y": 8})");
  EXPECT_EQ(pointer_.layoutPosition(), (Point{7, 8}));
}

TEST_F(HyprlandPointerTest, aServerThatIsGoneOrFullIsNotWaitedFor) {
  HyprlandPointer nobody(folder_.file("nobody"));
  EXPECT_EQ(nobody.layoutPosition(), std::nullopt);
  HyprlandPointer farAway(folder_.file(std::string(300, 'a')));
  EXPECT_EQ(farAway.layoutPosition(), std::nullopt);
  std::vector<std::unique_ptr<HyprlandPointer>> crowd;
  for (int i = 0; i < 20; ++i) {
    crowd.push_back(std::make_unique<HyprlandPointer>(path_));
    EXPECT_EQ(crowd.back()->layoutPosition(), std::nullopt);
  }
}

TEST_F(HyprlandPointerTest, theSourceTurnsTheLayoutOver) {
  const PointerSource source = hyprlandPointerSource(path_, [](Point layout) {
    return Point{layout.x - 100, 1080 - layout.y};
  });
  EXPECT_EQ(source.location(), std::nullopt);
  answer(R"({"x": 150, "y": 80})");
  EXPECT_EQ(source.location(), (Point{50, 1000}));
}

}  // namespace
}  // namespace veloria::tests
