// The calls that are others on other systems. Built twice: as this system has them, and as one has them that knows only
// what all have.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string>

#include "base/PlainNumber.h"
#include "base/SocketCalls.h"

namespace veloria {
namespace {

bool leavesChildrenAlone(const OwnedDescriptor& descriptor) {
  return (::fcntl(descriptor.get(), F_GETFD) & FD_CLOEXEC) != 0;
}

bool waits(const OwnedDescriptor& descriptor) {
  return (::fcntl(descriptor.get(), F_GETFL) & O_NONBLOCK) == 0;
}

class SocketCallsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "veloria-calls-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    address_.sun_family = AF_UNIX;
    (folder_ / "socket").native().copy(address_.sun_path, sizeof(address_.sun_path) - 1);
    listener_ = makeLocalSocket();
    ASSERT_EQ(::bind(listener_.get(), address(), sizeof(address_)), 0);
    ASSERT_EQ(::listen(listener_.get(), 4), 0);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }

  OwnedDescriptor connect() {
    OwnedDescriptor socket = makeLocalSocket();
    EXPECT_EQ(::connect(socket.get(), address(), sizeof(address_)), 0);
    return socket;
  }

  std::filesystem::path folder_;
  sockaddr_un address_{};
  OwnedDescriptor listener_;
};

TEST_F(SocketCallsTest, SocketsNeitherWaitNorReachChildren) {
  const OwnedDescriptor ours = connect();
  const OwnedDescriptor theirs = acceptConnection(listener_.get());
  for (const OwnedDescriptor* socket : std::initializer_list<const OwnedDescriptor*>{&listener_, &ours, &theirs}) {
    ASSERT_TRUE(*socket);
    EXPECT_TRUE(leavesChildrenAlone(*socket));
    EXPECT_FALSE(waits(*socket));
  }
  EXPECT_FALSE(acceptConnection(listener_.get()));
  EXPECT_EQ(errno, EAGAIN);
}

TEST_F(SocketCallsTest, BytesArriveAndAClosedEndIsNoSignal) {
  const OwnedDescriptor ours = connect();
  OwnedDescriptor theirs = acceptConnection(listener_.get());
  ASSERT_EQ(sendQuietly(ours.get(), "seven\n"), 6);
  std::array<char, 16> got{};
  EXPECT_EQ(::recv(theirs.get(), got.data(), got.size(), 0), 6);
  theirs.reset();
  EXPECT_EQ(sendQuietly(ours.get(), "x"), -1);
  EXPECT_EQ(errno, EPIPE);
}

TEST(PipeTest, AsAsked) {
  for (const bool wanted : {true, false}) {
    const auto pipe = makePipe(wanted);
    ASSERT_TRUE(pipe);
    for (const OwnedDescriptor* end : {&pipe->readable, &pipe->writable}) {
      EXPECT_TRUE(leavesChildrenAlone(*end));
      EXPECT_EQ(waits(*end), wanted);
    }
    ASSERT_EQ(::write(pipe->writable.get(), "a", 1), 1);
    char got = 0;
    EXPECT_EQ(::read(pipe->readable.get(), &got, 1), 1);
    EXPECT_EQ(got, 'a');
  }
}

TEST(PlainNumberTest, WholeDecimalNumbers) {
  const struct {
    const char* text;
    double value;
  } cases[] = {{"0", 0},       {"-0", 0},       {"1", 1},
               {"-2.5", -2.5}, {".5", 0.5},     {"3.", 3},
               {"1e3", 1000},  {"1E-3", 0.001}, {"2.5e+2", 250},
               {"007", 7},     {"0e9999", 0},   {"1.7976931348623157e308", std::numeric_limits<double>::max()},
               {"0.55", 0.55}};
  for (const auto& test : cases) EXPECT_EQ(plainNumber(test.text), test.value) << test.text;
}

TEST(PlainNumberTest, AllElseIsNone) {
  for (const char* text : {"",      " 1",  "1 ",   "+1",  "--1",    "1,5",   "0x10",   "1e",     "e5", ".",   "-",
                           "1.2.3", "inf", "-inf", "nan", "NaN(1)", "1e999", "-1e999", "1e-999", "1f", "1\n", "٣"}) {
    EXPECT_EQ(plainNumber(text), std::nullopt) << text;
  }
  EXPECT_EQ(plainNumber(std::string_view("1\0002", 3)), std::nullopt);
  EXPECT_EQ(plainNumber(std::string_view("12", 1)), 1) << "reads past the end";
}

}  // namespace
}  // namespace veloria
