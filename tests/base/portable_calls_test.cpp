// The calls that differ between systems. Built twice: as this system has them, and in the form that all systems have.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>

#include "Process.h"
#include "base/PlainNumber.h"
#include "base/SocketCalls.h"

namespace veloria::tests {
namespace {

bool leavesChildrenAlone(const OwnedDescriptor& descriptor) {
  return (::fcntl(descriptor.get(), F_GETFD) & FD_CLOEXEC) != 0;
}

bool waits(const OwnedDescriptor& descriptor) {
  return (::fcntl(descriptor.get(), F_GETFL) & O_NONBLOCK) == 0;
}

TEST(SocketCallsTest, NeitherWaitNorReachChildrenAndAClosedEndIsNoSignal) {
  const TemporaryFolder folder;
  sockaddr_un address{AF_UNIX, {}};
  folder.file("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
  const OwnedDescriptor listener = makeLocalSocket();
  ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  ASSERT_EQ(::listen(listener.get(), 4), 0);
  const OwnedDescriptor ours = makeLocalSocket();
  EXPECT_TRUE(connectLocalSocket(ours.get(), folder.file("socket")));
  OwnedDescriptor theirs = acceptConnection(listener.get());
  for (const OwnedDescriptor* socket : {&listener, &ours, const_cast<const OwnedDescriptor*>(&theirs)}) {
    ASSERT_TRUE(*socket);
    EXPECT_TRUE(leavesChildrenAlone(*socket));
    EXPECT_FALSE(waits(*socket));
  }
  EXPECT_FALSE(acceptConnection(listener.get()));
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(sendQuietly(ours.get(), "seven\n"), 6);
  theirs.reset();
  EXPECT_EQ(sendQuietly(ours.get(), "x"), -1);
  EXPECT_EQ(errno, EPIPE);
  EXPECT_FALSE(connectLocalSocket(makeLocalSocket().get(), folder.file(std::string(sizeof(address.sun_path), 'x'))));
  EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(PipeTest, AsAsked) {
  for (const bool wanted : {true, false}) {
    const auto pipe = makePipe(wanted);
    ASSERT_TRUE(pipe);
    for (const OwnedDescriptor* end : {&pipe->readable, &pipe->writable}) {
      EXPECT_TRUE(leavesChildrenAlone(*end));
      EXPECT_EQ(waits(*end), wanted);
    }
  }
}

TEST(PlainNumberTest, WholeDecimalNumbersOnly) {
  const std::pair<const char*, double> numbers[] = {{"-2.5", -2.5}, {".5", .5},  {"3.", 3},       {"1e3", 1000},
                                                    {"007", 7},     {"0e99", 0}, {"2.5e+2", 250}, {"1E-3", .001}};
  for (const auto& [text, value] : numbers) EXPECT_EQ(plainNumber(text), value) << text;
  for (const char* text : {"",      " 1",  "1 ",   "+1",  "--1",    "1,5",   "0x10",   "1e",     "e5", ".",   "-",
                           "1.2.3", "inf", "-inf", "nan", "NaN(1)", "1e999", "-1e999", "1e-999", "1f", "1\n", "٣"}) {
    EXPECT_EQ(plainNumber(text), std::nullopt) << text;
  }
  EXPECT_EQ(plainNumber(std::string_view("1\0002", 3)), std::nullopt);
  EXPECT_EQ(plainNumber(std::string_view("12", 1)), 1) << "reads past the end";
}

}  // namespace
}  // namespace veloria::tests
