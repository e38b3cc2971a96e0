#include "platform/posix/process/Programs.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "Process.h"
#include "base/MediaClock.h"

namespace veloria {
namespace {

namespace fs = std::filesystem;

constexpr double bound = 20;

std::string contentWhenThere(const std::string& file) {
  const double deadline = mediaTime() + bound;
  while (!fs::exists(file) && mediaTime() < deadline) std::this_thread::yield();
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class ProgramsTest : public testing::Test {
 protected:
  const tests::TemporaryFolder folder;
};

TEST_F(ProgramsTest, IsTheFirstThatCanBeRunInAnAbsoluteFolder) {
  const std::string first = folder.writeProgram("a/tool", "#!/bin/sh\n");
  const std::string second = folder.writeProgram("b/tool", "#!/bin/sh\n");
  fs::create_directories(folder.file("folder/tool"));
  fs::create_directory(folder.file("plain"));
  folder.write("plain/tool", "not to be run");
  fs::create_directory(folder.file("dangling"));
  fs::create_symlink("nowhere", folder.file("dangling/tool"));
  fs::create_directory(folder.file("linked"));
  fs::create_symlink(second, folder.file("linked/tool"));

  const auto in = [this](const std::vector<std::string>& names) {
    std::string path;
    for (const auto& name : names) path += folder.file(name) + ":";
    return findProgram("tool", path);
  };
  EXPECT_EQ(in({"a", "b"}), first);
  EXPECT_EQ(in({"folder", "plain", "dangling", "none", "b"}), second);
  EXPECT_EQ(in({"linked", "a"}), folder.file("linked/tool"));
  EXPECT_EQ(in({"folder", "plain", "dangling"}), std::nullopt);
  EXPECT_EQ(findProgram("tool", ""), std::nullopt);
  const fs::path here = fs::current_path();
  fs::current_path(folder.file("a"));
  EXPECT_EQ(findProgram("tool", "::."), std::nullopt) << "not from wherever this program happens to be";
  fs::current_path(here);
}

TEST_F(ProgramsTest, AreStartedWithTheirArgumentsAndGoOnByThemselves) {
  const std::string program = folder.writeProgram(
      "record",
      "#!/bin/sh\nprintf '[%s]' \"$@\" >\"$0.tmp\"\ncat\necho out\ncut -d' ' -f6 /proc/$$/stat >\"$0.sid\"\n"
      "mv \"$0.tmp\" \"$0.args\"\n");
  ASSERT_TRUE(startDetached(program, {"a b", "", "$HOME", "'", "*"}));
  EXPECT_EQ(contentWhenThere(program + ".args"), "[a b][][$HOME]['][*]");
  EXPECT_NE(std::stoi(contentWhenThere(program + ".sid")), ::getsid(0)) << "our terminal's end must not be theirs";
}

TEST_F(ProgramsTest, SayWhenTheyCannotBeStarted) {
  const std::string none = folder.file("none");
  EXPECT_EQ(startDetached(none, {}).error(), none + " could not be started.");
  const std::string broken = folder.writeProgram("broken", "#!/no/such/interpreter\n");
  EXPECT_EQ(startDetached(broken, {}).error(), broken + " could not be started.");
}

}  // namespace
}  // namespace veloria
