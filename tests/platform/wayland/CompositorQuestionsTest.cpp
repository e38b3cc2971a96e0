// Answers from a socket that a test holds: whole ones, none, and ones that are cut off.

#include "platform/linux/wayland/CompositorQuestions.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <thread>
#include <utility>

#include "Process.h"
#include "base/MediaClock.h"
#include "base/OwnedDescriptor.h"

namespace veloria::tests {
namespace {

/// Answers each message of one connection with the next of `answers`, then closes it; or, as Hyprland does it, closes
/// each connection after one answer.
class Answerer {
 public:
  Answerer(const std::string& path, std::vector<std::string> answers, std::size_t answersEach = 100)
      : answers_(std::move(answers)), answersEach_(answersEach) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(::listen(listener_.get(), 4), 0);
    thread_ = std::jthread([this] {
      for (std::size_t first = 0; first == 0 || first < answers_.size(); first += answersEach_) serve(first);
    });
  }
  ~Answerer() { ::shutdown(listener_.get(), SHUT_RDWR); }

 private:
  void serve(std::size_t first) {
    const OwnedDescriptor client(::accept(listener_.get(), nullptr, nullptr));
    std::array<char, 4096> bytes{};
    for (std::size_t i = first; i < std::min(answers_.size(), first + answersEach_); ++i) {
      if (::read(client.get(), bytes.data(), bytes.size()) <= 0) return;
      if (::send(client.get(), answers_[i].data(), answers_[i].size(), MSG_NOSIGNAL) < 0) return;
    }
    if (answers_.empty()) ::read(client.get(), bytes.data(), bytes.size());
    if (answers_.empty()) ::read(client.get(), bytes.data(), bytes.size());  // until the other side is tired
  }

  std::vector<std::string> answers_;
  std::size_t answersEach_;
  OwnedDescriptor listener_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::jthread thread_;
};

Environment environmentWith(std::string name, std::string value) {
  return [name = std::move(name), value = std::move(value)](std::string_view wanted) {
    return wanted == name ? std::optional(value) : std::nullopt;
  };
}

class CompositorQuestionsTest : public testing::Test {
 protected:
  std::optional<ReservedEdges> askSway(std::vector<std::string> answers) {
    const std::string path = folder_.file("sway" + std::to_string(++count_));
    const Answerer answerer(path, std::move(answers));
    return CompositorQuestions(environmentWith("SWAYSOCK", path)).reservedEdges();
  }

  const std::string outputs_ =
      swayMessage(3, R"([{"name": "A", "rect": {"x": 0, "y": 0, "width": 800, "height": 600}}])");
  const std::string workspaces_ =
      swayMessage(1, R"([{"output": "A", "visible": true, "rect": {"x": 0, "y": 25, "width": 800, "height": 575}}])");
  TemporaryFolder folder_;
  int count_ = 0;
};

TEST_F(CompositorQuestionsTest, SwayTellsWhatIsReserved) {
  EXPECT_EQ(askSway({outputs_, workspaces_}), (ReservedEdges{{"A", {0, 25, 0, 0}}}));
}

TEST_F(CompositorQuestionsTest, AnswersThatAreNoneAreNoAnswers) {
  EXPECT_EQ(askSway({outputs_, workspaces_.substr(0, 40)}), std::nullopt) << "cut off";
  EXPECT_EQ(askSway({workspaces_, outputs_}), std::nullopt) << "to another question";
  EXPECT_EQ(askSway({"HTTP/1.1 400 Bad Request\r\n\r\n"}), std::nullopt);
  EXPECT_EQ(CompositorQuestions(environmentWith("SWAYSOCK", "/nowhere")).reservedEdges(), std::nullopt);
  EXPECT_EQ(CompositorQuestions(environmentWith("OTHER", "/nowhere")).reservedEdges(), std::nullopt);
}

TEST_F(CompositorQuestionsTest, ASilentCompositorIsGivenUp) {
  const double start = mediaTime();
  EXPECT_EQ(askSway({}), std::nullopt);
  EXPECT_LT(mediaTime() - start, 10);
}

TEST_F(CompositorQuestionsTest, HyprlandIsAskedOnceAConnection) {
  std::filesystem::create_directories(folder_.file("hypr/one"));
  const Answerer answerer(
      folder_.file("hypr/one/.socket.sock"),
      {R"([{"name": "A", "activeWorkspace": {"id": 1}, "reserved": [0, 30, 0, 0]}])",
       R"([{"workspace": {"id": 1}, "fullscreen": 2}])", R"([{"name": "A", "reserved": [0, 30, 0, 0]}])", "[{"},
      1);
  const CompositorQuestions questions([this](std::string_view name) -> std::optional<std::string> {
    if (name == "HYPRLAND_INSTANCE_SIGNATURE") return "one";
    return name == "XDG_RUNTIME_DIR" ? std::optional(folder_.path()) : std::nullopt;
  });
  EXPECT_EQ(questions.coveredOutputs(), CoveredOutputs{"A"});
  EXPECT_EQ(questions.reservedEdges(), (ReservedEdges{{"A", {0, 30, 0, 0}}}));
  EXPECT_EQ(questions.coveredOutputs(), std::nullopt) << "half an answer, and none";
}

TEST_F(CompositorQuestionsTest, LayersAreStackedAsUsualUnlessSwaySaysOtherwise) {
  EXPECT_EQ(CompositorQuestions(environmentWith("OTHER", "")).layerStacking(), LayerStacking::newestHighest);
  const std::string path = folder_.file("version");
  const Answerer answerer(path, {swayMessage(7, R"({"major": 1, "minor": 7})")});
  EXPECT_EQ(CompositorQuestions(environmentWith("SWAYSOCK", path)).layerStacking(), LayerStacking::newestLowest);
}

}  // namespace
}  // namespace veloria::tests
