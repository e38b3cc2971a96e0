#include "platform/posix/socket/InstanceLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "Process.h"

namespace veloria::tests {
namespace {

class InstanceLockTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const std::string socket_ = folder_.file("Veloria/control");

  mode_t permissions(const std::string& path) {
    struct stat attributes {};
    EXPECT_EQ(::lstat(path.c_str(), &attributes), 0);
    return attributes.st_mode & 0777;
  }
};

TEST_F(InstanceLockTest, OneHoldsItUntilItsEnd) {
  {
    const auto first = InstanceLock::take(socket_);
    ASSERT_TRUE(first && first->has_value());
    const auto second = InstanceLock::take(socket_);
    ASSERT_TRUE(second);
    EXPECT_FALSE(second->has_value());
  }
  const auto third = InstanceLock::take(socket_);
  EXPECT_TRUE(third && third->has_value());
}

TEST_F(InstanceLockTest, AKilledHolderLeavesItFree) {
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t holder = ::fork();
  if (holder == 0) {
    const auto lock = InstanceLock::take(socket_);
    [[maybe_unused]] const auto told = ::write(ready[1], "x", 1);
    ::pause();
    ::_exit(lock ? 0 : 1);
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  EXPECT_FALSE(InstanceLock::take(socket_)->has_value());
  ::kill(holder, SIGKILL);
  ::waitpid(holder, nullptr, 0);
  EXPECT_TRUE(InstanceLock::take(socket_)->has_value());
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST_F(InstanceLockTest, TheFolderLetsNobodyElseIn) {
  ASSERT_EQ(::mkdir(folder_.file("Veloria").c_str(), 0777), 0);
  ASSERT_EQ(::chmod(folder_.file("Veloria").c_str(), 0777), 0);
  ASSERT_TRUE(InstanceLock::take(socket_));
  EXPECT_EQ(permissions(folder_.file("Veloria")), 0700U);
  EXPECT_EQ(permissions(socket_ + ".lock"), 0600U);
}

TEST_F(InstanceLockTest, WhatIsInTheWayIsNamed) {
  folder_.write("Veloria", "a file");
  auto lock = InstanceLock::take(socket_);
  ASSERT_FALSE(lock);
  EXPECT_EQ(lock.error(), folder_.file("Veloria") + ": this is not a folder");
  ::unlink(folder_.file("Veloria").c_str());
  ASSERT_EQ(::symlink("/", folder_.file("Veloria").c_str()), 0);
  EXPECT_FALSE(InstanceLock::take(socket_));
  lock = InstanceLock::take(folder_.file("missing/Veloria/control"));
  ASSERT_FALSE(lock);
  EXPECT_NE(lock.error().find("No such file"), std::string::npos);
}

TEST_F(InstanceLockTest, AnotherUsersFolderIsRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can make another user's folder";
  ASSERT_EQ(::mkdir(folder_.file("Veloria").c_str(), 0700), 0);
  ASSERT_EQ(::chown(folder_.file("Veloria").c_str(), 65534, 65534), 0);
  const auto lock = InstanceLock::take(socket_);
  ASSERT_FALSE(lock);
  EXPECT_NE(lock.error().find("belongs to another user"), std::string::npos);
}

}  // namespace
}  // namespace veloria::tests
