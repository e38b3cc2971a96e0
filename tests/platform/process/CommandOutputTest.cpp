#include "platform/posix/process/CommandOutput.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "Process.h"
#include "base/MediaClock.h"

namespace veloria {
namespace {

constexpr double longTime = 60;
constexpr std::size_t cap = 1000;

int numberIn(const std::string& file) {
  int number = 0;
  std::ifstream(file) >> number;
  if (number <= 0) throw std::runtime_error("no number in " + file);
  return number;
}

TEST(CommandOutput, IsWhatAProgramWrites) {
  EXPECT_EQ(commandOutput({"printf", "%s", "a b\n"}, longTime, cap), "a b\n");
  EXPECT_EQ(commandOutput({"sh", "-c", "echo out; echo err >&2; cat"}, longTime, cap), "out\n");
  EXPECT_EQ(commandOutput({"true"}, longTime, cap), "");
  EXPECT_EQ(commandOutput({"head", "-c", "1000", "/dev/zero"}, longTime, cap), std::string(1000, '\0'));
}

TEST(CommandOutput, IsNothingWhenTheProgramFails) {
  EXPECT_EQ(commandOutput({"no-such-program-of-any-name"}, longTime, cap), std::nullopt);
  EXPECT_EQ(commandOutput({"sh", "-c", "echo half; exit 3"}, longTime, cap), std::nullopt);
  EXPECT_EQ(commandOutput({"sh", "-c", "echo half; kill -KILL $$"}, longTime, cap), std::nullopt);
  EXPECT_EQ(commandOutput({}, longTime, cap), std::nullopt);
}

TEST(CommandOutput, IsNothingWhenTheProgramWritesTooMuchOrDoesNotEnd) {
  const double start = mediaTime();
  EXPECT_EQ(commandOutput({"head", "-c", "1001", "/dev/zero"}, longTime, cap), std::nullopt);
  EXPECT_EQ(commandOutput({"yes"}, longTime, cap), std::nullopt);
  EXPECT_EQ(commandOutput({"sleep", "1000"}, 0.1, cap), std::nullopt);
  EXPECT_EQ(commandOutput({"sh", "-c", "exec sleep 1000 >&-"}, 0.1, cap), std::nullopt) << "closed but running";
  EXPECT_LT(mediaTime() - start, longTime);
}

TEST(CommandOutput, NeitherWaitsForNorEndsWhatAProgramLeavesRunning) {
  const tests::TemporaryFolder folder;
  const std::string script = "sleep 1000 & echo $! >" + folder.file("pid") + "; echo done";
  EXPECT_EQ(commandOutput({"sh", "-c", script}, longTime, cap), "done\n");
  const int left = numberIn(folder.file("pid"));
  EXPECT_TRUE(tests::isAlive(left));
  ::kill(left, SIGKILL);
}

TEST(ProgramOutput, TellsHowTheProgramEnded) {
  const auto exited = runProgram({"sh", "-c", "echo half; exit 3"}, longTime, cap);
  ASSERT_TRUE(exited);
  EXPECT_EQ(exited->text, "half\n");
  EXPECT_EQ(exited->exitCode, 3);
  EXPECT_EQ(runProgram({"sh", "-c", "kill -KILL $$"}, longTime, cap)->exitCode, 128 + SIGKILL);
  EXPECT_EQ(runProgram({"no-such-program-of-any-name"}, longTime, cap), std::nullopt);
}

TEST(ProgramOutput, EndsWithEverythingThatTheProgramStarted) {
  const tests::TemporaryFolder folder;
  const std::string script = "sleep 1000 & echo $! >" + folder.file("pid") + "; wait";
  EXPECT_EQ(runProgram({"sh", "-c", script}, 0.5, cap), std::nullopt);
  const int pid = numberIn(folder.file("pid"));
  const double deadline = mediaTime() + longTime;
  while (tests::isAlive(pid) && mediaTime() < deadline) std::this_thread::yield();
  EXPECT_FALSE(tests::isAlive(pid));
}

}  // namespace
}  // namespace veloria
