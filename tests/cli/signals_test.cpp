#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>

#include "cli/CommandEnd.h"
#include "cli/ReceivedSignal.h"

namespace veloria::cli {
namespace {

TEST(ReceivedSignalTest, OnlyWhatTheProgramHasNotHadIsPassedOn) {
  constexpr pid_t child = 100;
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT}) {
    EXPECT_TRUE(isForwarded({number, true, 1}, child)) << number;
    EXPECT_FALSE(isForwarded({number, false, 0}, child)) << number << " from the terminal";
    EXPECT_FALSE(isForwarded({number, true, child}, child)) << number << " from the program itself";
  }
  EXPECT_FALSE(isForwarded({SIGCHLD, true, 1}, child));
  EXPECT_FALSE(isForwarded({SIGPIPE, true, 1}, child));
}

TEST(CommandEndTest, WaitStatuses) {
  using Kind = CommandEnd::Kind;
  EXPECT_EQ(commandEnd(W_EXITCODE(0, 0)), (CommandEnd{Kind::exited, 0}));
  EXPECT_EQ(commandEnd(W_EXITCODE(255, 0)), (CommandEnd{Kind::exited, 255}));
  EXPECT_EQ(commandEnd(W_EXITCODE(0, SIGSEGV) | WCOREFLAG), (CommandEnd{Kind::killed, SIGSEGV}));
  EXPECT_EQ(commandEnd(W_STOPCODE(SIGTSTP)), (CommandEnd{Kind::stopped, SIGTSTP}));
}

TEST(CommandEndTest, WhatItMeans) {
  using Kind = CommandEnd::Kind;
  EXPECT_TRUE((CommandEnd{Kind::exited, 0}).succeeded());
  EXPECT_FALSE((CommandEnd{Kind::exited, 1}).succeeded());
  EXPECT_FALSE((CommandEnd{Kind::killed, 0}).succeeded());
  EXPECT_TRUE((CommandEnd{Kind::stopped, SIGTTIN}).stoppedByTerminal());
  EXPECT_FALSE((CommandEnd{Kind::stopped, SIGSTOP}).stoppedByTerminal());
  EXPECT_FALSE((CommandEnd{Kind::killed, SIGTSTP}).stoppedByTerminal());
  EXPECT_EQ(exitCodeForExecError(ENOENT), 127);
  EXPECT_EQ(exitCodeForExecError(EACCES), 126);
  EXPECT_EQ(exitCodeForExecError(E2BIG), 126);
}

}  // namespace
}  // namespace veloria::cli
