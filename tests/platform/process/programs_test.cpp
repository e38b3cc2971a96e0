#include "platform/posix/process/Programs.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;

constexpr double longTime = 60;
constexpr std::size_t cap = 1000;

std::string contentWhenThere(const std::string& file) {
  EXPECT_TRUE(poll(longTime, [&] { return fs::exists(file); })) << file;
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(CommandOutput, IsTheOutputOfAProgramThatSucceeds) {
  const std::vector<std::tuple<std::vector<std::string>, double, std::optional<std::string>>> cases{
      {{"printf", "%s", "a b\n"}, longTime, "a b\n"},
      {{"sh", "-c", "echo out; echo err >&2; cat"}, longTime, "out\n"},
      {{"head", "-c", "1000", "/dev/zero"}, longTime, std::string(cap, '\0')},
      {{"head", "-c", "1001", "/dev/zero"}, longTime, std::nullopt},
      {{"no-such-program"}, longTime, std::nullopt},
      {{"sh", "-c", "echo half; exit 3"}, longTime, std::nullopt},
      {{"sleep", "1000"}, 0.1, std::nullopt},
      {{"sh", "-c", "exec sleep 1000 >&-"}, 0.1, std::nullopt},
  };
  for (const auto& [command, seconds, output] : cases) EXPECT_EQ(commandOutput(command, seconds, cap), output);
  EXPECT_EQ(runProgram({"sh", "-c", "echo half; exit 3"}, longTime, cap)->text, "half\n");
  EXPECT_EQ(runProgram({"sh", "-c", "kill -KILL $$"}, longTime, cap)->exitCode, 128 + SIGKILL);
}

TEST(CommandOutput, KillsTheSessionAtATimeOutButNotWhatAProgramLeavesRunning) {
  for (const bool timeOut : {false, true}) {
    const TemporaryFolder folder;
    const std::string script = "sleep 1000 & echo $! >" + folder.file("pid") + "; echo done";
    const auto output = commandOutput({"sh", "-c", script + (timeOut ? "; wait" : "")}, timeOut ? 0.5 : longTime, cap);
    EXPECT_EQ(output, timeOut ? std::nullopt : std::optional("done\n"));
    const int left = std::stoi(contentWhenThere(folder.file("pid")));
    EXPECT_TRUE(timeOut ? poll(longTime, [&] { return !isAlive(left); }) : isAlive(left));
    ::kill(left, SIGKILL);
  }
}

TEST(Programs, AreFoundInAbsoluteFoldersIfTheyCanBeRun) {
  const TemporaryFolder folder;
  const std::string first = folder.writeProgram("a/tool", "#!/bin/sh\n");
  const std::string second = folder.writeProgram("b/tool", "#!/bin/sh\n");
  for (const char* name : {"folder/tool", "plain"}) fs::create_directories(folder.file(name));
  folder.write("plain/tool", "not to be run");
  EXPECT_EQ(findProgram("tool", folder.file("a:") + folder.file("b")), first);
  EXPECT_EQ(
      findProgram("tool", folder.file("folder:") + folder.file("plain:") + folder.file("none:") + folder.file("b")),
      second);
  EXPECT_TRUE(isWritableFolder(folder.path()));
  EXPECT_FALSE(isWritableFolder(folder.file("none")));
  const fs::path here = fs::current_path();
  fs::current_path(folder.file("a"));
  EXPECT_EQ(findProgram("tool", "::."), std::nullopt) << "not from the current folder";
  fs::current_path(here);
}

TEST(Programs, AreStartedWithTheirArgumentsAndOutliveThisOne) {
  const TemporaryFolder folder;
  const std::string program = folder.writeProgram(
      "record",
      "#!/bin/sh\nprintf '[%s]' \"$@\" >\"$0.tmp\"\ncat\necho out\ncut -d' ' -f6 /proc/$$/stat >\"$0.sid\"\n"
      "mv \"$0.tmp\" \"$0.args\"\n");
  ASSERT_TRUE(startDetached(program, {"a b", "", "$HOME", "'", "*"}));
  EXPECT_EQ(contentWhenThere(program + ".args"), "[a b][][$HOME]['][*]");
  EXPECT_NE(std::stoi(contentWhenThere(program + ".sid")), ::getsid(0)) << "the end of our terminal must not be theirs";
  const std::string broken = folder.writeProgram("broken", "#!/no/such/interpreter\n");
  EXPECT_EQ(startDetached(broken, {}).error(), broken + " could not be started.");
}

}  // namespace
}  // namespace veloria::tests
