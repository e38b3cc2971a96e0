// Displays that are none. What a real compositor does is looked at with one, in tests/desktop.

#include "platform/linux/wayland/WaylandConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <QCoreApplication>
#include <optional>
#include <thread>

#include "Process.h"
#include "base/OwnedDescriptor.h"
#include "platform/qt/DescriptorWatch.h"
#include "platform/qt/QtTimerFactory.h"

namespace veloria::tests {
namespace {

using ::testing::HasSubstr;

class WaylandConnectionTest : public testing::Test {
 protected:
  std::string problemWith(const std::string& display) {
    try {
      const WaylandConnection connection(display, watchDescriptor, timers_, 0.5);
      return "no problem";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  /// Takes one connection, writes `bytes` and keeps it open; closes it when there are none.
  std::string problemWithServer(std::optional<std::string> bytes) {
    const std::string path = folder_.file("wayland");
    const OwnedDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(::listen(listener.get(), 1), 0);
    OwnedDescriptor client;
    const std::jthread server([&] {
      client = OwnedDescriptor(::accept(listener.get(), nullptr, nullptr));
      if (!bytes) return client.reset();
      EXPECT_GE(::send(client.get(), bytes->data(), bytes->size(), MSG_NOSIGNAL), 0);
    });
    return problemWith(path);
  }

  int argumentCount_ = 0;
  QCoreApplication application_{argumentCount_, nullptr};
  QtTimerFactory timers_;
  TemporaryFolder folder_;
};

TEST_F(WaylandConnectionTest, ADisplayThatIsNotThereIsNamed) {
  EXPECT_THAT(problemWith("/nowhere/wayland-5"), HasSubstr("/nowhere/wayland-5"));
}

TEST_F(WaylandConnectionTest, OneThatSaysNothingIsGivenUp) {
  EXPECT_THAT(problemWithServer(""), HasSubstr("does not answer"));
}

TEST_F(WaylandConnectionTest, OneThatTalksNonsenseIsGivenUp) {
  EXPECT_THAT(problemWithServer(std::string(64, '\xff')), HasSubstr("The Wayland display"));
}

TEST_F(WaylandConnectionTest, OneThatHangsUpIsSaidToHaveGone) {
  EXPECT_THAT(problemWithServer(std::nullopt), HasSubstr("went away"));
}

}  // namespace
}  // namespace veloria::tests
