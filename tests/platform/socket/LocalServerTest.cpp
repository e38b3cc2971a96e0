// The server on Qt's real event loop, asked by the real client and by all who mean it harm.

#include "platform/posix/socket/LocalServer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <future>
#include <thread>

#include "Process.h"
#include "base/LocalSocket.h"
#include "base/MediaClock.h"
#include "platform/qt/DescriptorWatch.h"
#include "platform/qt/QtTimerFactory.h"

namespace veloria::tests {
namespace {

using ::testing::StartsWith;

class LocalServerTest : public testing::Test {
 protected:
  void SetUp() override {
    auto server = LocalServer::listen(path_, {.watch = watchDescriptor, .timers = &timers_, .answer = [this](auto q) {
                                                ++questions_;
                                                return answer_ ? answer_(q) : "you said " + std::string(q);
                                              }});
    ASSERT_TRUE(server) << server.error();
    server_ = *std::move(server);
  }

  template <typename Condition>
  bool spinUntil(Condition condition, double seconds = 20) {
    const double end = mediaTime() + seconds;
    while (!condition()) {
      if (mediaTime() > end) return false;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    }
    return true;
  }

  Result<SocketReply> ask(std::string question, double seconds = 20) {
    auto reply = std::async(std::launch::async, [&] { return askLocalSocket(path_, question, seconds); });
    spinUntil([&] { return reply.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    return reply.get();
  }

  OwnedDescriptor connect() {
    OwnedDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_TRUE(spinUntil(
        [&] { return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0; }));
    return socket;
  }

  static void send(const OwnedDescriptor& socket, const std::string& bytes) {
    [[maybe_unused]] const auto sent = ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }

  /// Whether the server has let go of a connection without an answer.
  bool closedByServer(const OwnedDescriptor& socket) {
    char byte = 0;
    return spinUntil([&] {
      const ssize_t got = ::recv(socket.get(), &byte, 1, 0);
      return got == 0 || (got < 0 && errno != EAGAIN);
    });
  }

  static std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.file("control");
  QtTimerFactory timers_;
  std::function<std::string(std::string_view)> answer_;
  int questions_ = 0;
  std::unique_ptr<LocalServer> server_;
};

TEST_F(LocalServerTest, AnswersLineByLine) {
  for (const std::string question : {"hello", "", "{\"command\": \"status\"}"}) {
    const auto reply = ask(question);
    ASSERT_TRUE(reply) << reply.error();
    EXPECT_EQ(reply->answer, "you said " + question);
  }
  struct stat attributes {};
  ASSERT_EQ(::stat(path_.c_str(), &attributes), 0);
  EXPECT_EQ(attributes.st_mode & 0777, 0600U);
}

TEST_F(LocalServerTest, ALongAnswerArrivesWhole) {
  answer_ = [](auto) { return std::string(100'000, 'x'); };
  EXPECT_EQ(ask("q")->answer.size(), 100'000U);
}

TEST_F(LocalServerTest, RubbishAndHalfMessagesGetNoAnswerAndHarmNobody) {
  const OwnedDescriptor tooLong = connect();
  send(tooLong, std::string(maximumQuestionBytes + 1, 'x'));
  const OwnedDescriptor tooLongLine = connect();
  send(tooLongLine, std::string(maximumQuestionBytes + 1, 'x') + "\n");
  const OwnedDescriptor half = connect();
  send(half, "{\"command\": ");
  OwnedDescriptor gone = connect();
  send(gone, "half");
  gone.reset();
  EXPECT_EQ(ask("still there?")->answer, "you said still there?");
  EXPECT_TRUE(closedByServer(tooLong));
  EXPECT_TRUE(closedByServer(tooLongLine));
  EXPECT_TRUE(closedByServer(half));
  EXPECT_EQ(questions_, 1);
}

TEST_F(LocalServerTest, AMessageInPiecesIsOneMessage) {
  const OwnedDescriptor socket = connect();
  for (const char* piece : {"o", "n", "e\ntw", "o\n"}) {
    send(socket, piece);
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  }
  char bytes[64] = {};
  ASSERT_TRUE(spinUntil([&] { return ::recv(socket.get(), bytes, sizeof(bytes), 0) > 0; }));
  EXPECT_STREQ(bytes, "you said one\n");
}

TEST_F(LocalServerTest, HundredsOfConnectionsKeepNobodyOut) {
  const std::size_t before = openDescriptors();
  std::vector<OwnedDescriptor> idle;
  for (int i = 0; i < 900; ++i) {
    idle.push_back(connect());
    if (i % 3 == 0) send(idle.back(), "half a");
  }
  EXPECT_EQ(ask("me too?")->answer, "you said me too?");
  EXPECT_LE(openDescriptors(), before + idle.size() + 17);
  for (const OwnedDescriptor& socket : idle) ASSERT_TRUE(closedByServer(socket));
  idle.clear();
  EXPECT_LE(openDescriptors(), before);
}

TEST_F(LocalServerTest, OtherUsersAreRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);  // as if the doors before stood open
  const pid_t other = ::fork();
  if (other == 0) {
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(9);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) ::_exit(8);
    [[maybe_unused]] const auto sent = ::send(socket, "hello\n", 6, MSG_NOSIGNAL);
    char byte = 0;
    ::_exit(::recv(socket, &byte, 1, 0) > 0 ? 7 : 0);
  }
  int status = -1;
  ASSERT_TRUE(spinUntil([&] { return ::waitpid(other, &status, WNOHANG) == other; }));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(questions_, 0);
  EXPECT_TRUE(ask("mine")->connected);
}

TEST_F(LocalServerTest, TakesThePlaceOfASocketThatWasLeftBehindAndCleansUp) {
  server_.reset();
  EXPECT_FALSE(std::filesystem::exists(path_));
  folder_.write("control", "left behind");
  SetUp();
  EXPECT_TRUE(ask("hello")->connected);
}

TEST_F(LocalServerTest, TheClientSaysWhatWentWrong) {
  server_.reset();
  EXPECT_FALSE(askLocalSocket(path_, "q", 1)->connected);
  EXPECT_FALSE(askLocalSocket(std::string(300, 'x'), "q", 1)->connected);
  const OwnedDescriptor mute(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path_.copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(::bind(mute.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  ASSERT_EQ(::listen(mute.get(), 1), 0);
  const auto silent = askLocalSocket(path_, "q", 0.2);
  ASSERT_FALSE(silent);
  EXPECT_THAT(silent.error(), StartsWith("the running application does not answer"));
  const OwnedDescriptor givenUpOn(::accept(mute.get(), nullptr, nullptr));
  for (const std::string& half : {std::string("half"), std::string(maximumAnswerBytes + 1, 'x')}) {
    std::thread peer([&] {
      const OwnedDescriptor one(::accept(mute.get(), nullptr, nullptr));
      send(one, half);
    });
    const auto reply = askLocalSocket(path_, "q", 20);
    peer.join();
    EXPECT_FALSE(reply);
  }
}

}  // namespace
}  // namespace veloria::tests

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
