#include "platform/linux/wallpaper/CommandOutput.h"

#include <gtest/gtest.h>

#include "base/MediaClock.h"

namespace veloria {
namespace {

constexpr double longTime = 60;
constexpr std::size_t cap = 1000;

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
  EXPECT_EQ(commandOutput({"sh", "-c", "sleep 2 & echo done"}, 0.3, cap), std::nullopt) << "left its child the pipe";
  EXPECT_LT(mediaTime() - start, longTime);
}

}  // namespace
}  // namespace veloria
