#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <future>

#include "LocalListener.h"
#include "Process.h"
#include "base/LocalSocket.h"
#include "platform/posix/socket/InstanceLock.h"
#include "platform/posix/socket/LocalServer.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria::tests {
namespace {

using enum std::filesystem::perms;

std::filesystem::perms permissions(const std::string& path) {
  return std::filesystem::status(path).permissions();
}

TEST(InstanceLock, OneHoldsItInAFolderOfTheUsersAlone) {
  const TemporaryFolder folder;
  const std::string app = folder.file("Veloria"), socket = app + "/control";
  std::filesystem::create_directory(app);
  std::filesystem::permissions(app, all);
  const auto isFree = [&] { return InstanceLock::acquire(socket)->has_value(); };
  EXPECT_TRUE(isFree());
  EXPECT_EQ(permissions(app), owner_all);
  EXPECT_EQ(permissions(socket + ".lock"), owner_read | owner_write);
  {
    const auto held = InstanceLock::acquire(socket);
    EXPECT_FALSE(isFree());
  }
  EXPECT_TRUE(isFree());
  if (::chown(app.c_str(), 65534, 65534) == 0) {  // as root only
    EXPECT_THAT(InstanceLock::acquire(socket).error(), testing::HasSubstr("belongs to another user"));
  }
  std::filesystem::remove_all(app);
  std::filesystem::create_symlink("/", app);
  EXPECT_FALSE(InstanceLock::acquire(socket));
}

class LocalServerTest : public testing::Test {
 protected:
  void SetUp() override {
    auto server = LocalServer::listen(path_, {.watch = watchDescriptor, .timers = &timers_, .answer = [this](auto q) {
                                                return ++questions_, prefix_ + std::string(q);
                                              }});
    ASSERT_TRUE(server) << server.error();
    server_ = *std::move(server);
  }

  static bool spinUntil(const std::function<bool()>& condition) {
    return poll(20, [&] {
      QCoreApplication::processEvents();
      return condition();
    });
  }

  std::string ask(const std::string& question) {
    auto reply = std::async(std::launch::async, [&] { return askLocalSocket(path_, question, 20); });
    spinUntil([&] { return reply.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    const auto result = reply.get();
    return result ? result->answer : result.error();
  }

  sockaddr_un address() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
  }

  OwnedDescriptor connect(const std::string& bytes) {
    OwnedDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un to = address();
    EXPECT_TRUE(
        spinUntil([&] { return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0; }));
    LocalListener::send(socket, bytes);
    return socket;
  }

  /// True once the server has closed a connection without an answer.
  static bool closedByServer(const OwnedDescriptor& socket) {
    char byte = 0;
    return spinUntil([&] {
      const ssize_t got = ::recv(socket.get(), &byte, 1, 0);
      return got == 0 || (got < 0 && errno != EAGAIN);
    });
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.file("control");
  QtTimerFactory timers_;
  std::string prefix_ = "you said ";
  int questions_ = 0;
  std::unique_ptr<LocalServer> server_;
};

TEST_F(LocalServerTest, AnswersLineByLine) {
  for (const std::string question : {"hello", ""}) EXPECT_EQ(ask(question), "you said " + question);
  EXPECT_EQ(permissions(path_), owner_read | owner_write);
  const OwnedDescriptor pieces = connect("");
  for (const char* piece : {"o", "n", "e\ntw", "o\n"}) {
    LocalListener::send(pieces, piece);
    QCoreApplication::processEvents();
  }
  EXPECT_TRUE(spinUntil([&] { return LocalListener::receive(pieces) == "you said one\n"; }));
  prefix_ = std::string(100'000, 'x');
  EXPECT_EQ(ask("q").size(), 100'001U) << "a long answer arrives whole";
  server_.reset();
  folder_.write("control", "left behind");
  SetUp();
  EXPECT_THAT(ask("hello"), testing::EndsWith("hello")) << "in place of what was left behind";
}

TEST_F(LocalServerTest, RubbishAndHalfMessagesGetNoAnswer) {
  const OwnedDescriptor bad[] = {connect(std::string(maximumQuestionBytes + 1, 'x') + "\n"), connect("{\"command\": ")};
  EXPECT_EQ(ask("still there?"), "you said still there?");
  for (const OwnedDescriptor& socket : bad) EXPECT_TRUE(closedByServer(socket));
  EXPECT_EQ(questions_, 1);
}

TEST_F(LocalServerTest, HundredsOfConnectionsShutNobodyOut) {
  std::vector<OwnedDescriptor> idle;
  for (int i = 0; i < 900; ++i) idle.push_back(connect(i % 3 == 0 ? "half a" : ""));
  EXPECT_EQ(ask("me too?"), "you said me too?");
  for (const OwnedDescriptor& socket : idle) ASSERT_TRUE(closedByServer(socket));
}

TEST_F(LocalServerTest, OtherUsersAreRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);  // as if permissions did not protect it
  const sockaddr_un to = address();
  const pid_t other = ::fork();
  if (other == 0) {
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(9);
    const OwnedDescriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) ::_exit(8);
    LocalListener::send(socket, "hello\n");
    ::_exit(LocalListener::receive(socket).empty() ? 0 : 7);
  }
  int status = -1;
  ASSERT_TRUE(spinUntil([&] { return ::waitpid(other, &status, WNOHANG) == other; }));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(questions_, 0);
}

TEST_F(LocalServerTest, TheClientDoesNotWaitForEver) {
  server_.reset();
  EXPECT_FALSE(askLocalSocket(path_, "q", 1)->connected);
  const LocalListener mute(path_);
  EXPECT_THAT(askLocalSocket(path_, "q", 0.2).error(), testing::StartsWith("the running application does not answer"));
}

}  // namespace
}  // namespace veloria::tests

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
