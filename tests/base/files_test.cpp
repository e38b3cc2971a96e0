#include "base/Files.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <set>
#include <thread>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

constexpr std::size_t cap = std::size_t{1} << 20;

class FilesTest : public testing::Test {
 protected:
  std::string read(const fs::path& path, std::size_t most = cap) const {
    const auto bytes = readFileBounded(path, most);
    return bytes ? *bytes : "error: " + bytes.error();
  }
  std::string write(const fs::path& path, const std::string& bytes = "new") const {
    const auto result = writeFileAtomically(path, bytes);
    return result ? "written" : "error: " + result.error();
  }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(folder)) all.push_back(entry.path().filename());
    return all;
  }

  TemporaryFolder owned;
  fs::path folder = owned.path();
  fs::path file = folder / "file";
};

TEST_F(FilesTest, AnyBytesUpToTheCap) {
  for (const std::string& bytes : {std::string("a\0b\xFF\n", 5), std::string(), std::string(cap, 'z')}) {
    ASSERT_EQ(write(file, bytes), "written");
    EXPECT_EQ(read(file), bytes);
  }
  EXPECT_THAT(names(), UnorderedElementsAre("file"));
  EXPECT_EQ(read(file, cap - 1), "error: " + file.string() + ": larger than 1048575 bytes");
  fs::resize_file(file, std::uintmax_t{1} << 40);
  EXPECT_THAT(read(file), HasSubstr("larger than"));
  EXPECT_EQ(read("/proc/self/stat", 8), "error: /proc/self/stat: larger than 8 bytes") << "a file that tells no size";
}

TEST_F(FilesTest, RefusesWhatIsNoPlainFileWithoutWaitingForIt) {
  const fs::path fifo = folder / "fifo", loop = folder / "loop", link = folder / "link";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  fs::create_symlink(loop, loop);
  fs::create_symlink(fifo, link);
  for (const fs::path& path : {fifo, link, folder, fs::path("/dev/zero")}) {
    EXPECT_EQ(read(path), "error: " + path.string() + ": not a regular file");
    EXPECT_EQ(write(path), "error: " + path.string() + ": not a regular file");
  }
  for (const auto& error : {read(loop), write(loop)}) EXPECT_THAT(error, HasSubstr("symbolic link"));
  const fs::path missing = folder / "none" / "file";
  for (const auto& error : {read(missing), write(missing)}) EXPECT_THAT(error, HasSubstr(": No such file"));
  EXPECT_THAT(names(), UnorderedElementsAre("fifo", "link", "loop"));
}

TEST_F(FilesTest, KeepsASymbolicLinkAndWritesWhereItLeads) {
  fs::create_directory(folder / "dots");
  fs::create_symlink("dots/real", folder / "middle");
  fs::create_symlink(folder / "middle", file);
  for (const std::string bytes : {"dangling at first", "then there"}) {
    ASSERT_EQ(write(file, bytes), "written");
    EXPECT_EQ(read(folder / "dots" / "real"), bytes);
  }
  EXPECT_TRUE(fs::is_symlink(file) && fs::is_symlink(folder / "middle"));
}

TEST_F(FilesTest, KeepsPermissionsAndGivesNewFilesTheRightOnes) {
  const auto mode = [&](const char* name) { return static_cast<unsigned>(fs::status(folder / name).permissions()); };
  const mode_t before = ::umask(027);
  EXPECT_TRUE(writeFileAtomically(folder / "shared", "x"));
  EXPECT_TRUE(writeFileAtomically(folder / "private", "x", FileAccess::ownerOnly));
  owned.write("file", "x");
  fs::permissions(file, fs::perms(0604));
  EXPECT_TRUE(writeFileAtomically(file, "y", FileAccess::ownerOnly));
  ::umask(before);
  EXPECT_EQ(mode("shared"), 0640U);
  EXPECT_EQ(mode("private"), 0600U);
  EXPECT_EQ(mode("file"), 0604U);
}

TEST_F(FilesTest, AFullDiskLeavesTheOldContentAndNothingElse) {
  owned.write("file", "old");
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  const rlimit full{4096, before.rlim_max};
  ::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &full);
  const std::string told = write(file, std::string(100'000, 'n'));
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(told, "error: " + file.string() + ": File too large");
  EXPECT_EQ(read(file), "old");
  EXPECT_THAT(names(), UnorderedElementsAre("file"));
}

// One writer is killed again and again, at any moment; another goes on meanwhile.
TEST_F(FilesTest, AReaderSeesWholeFilesOnly) {
  constexpr std::size_t large = 300'000;
  const auto startWriter = [&](char letter) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    std::size_t size = large;
    while (write(file, std::string(size, letter)) == "written") size = large + large / 2 - size;
    ::_exit(1);
  };
  const auto isKilled = [](pid_t child) {
    int status = 0;
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status);
  };
  write(file, std::string(large, 'o'));
  const pid_t steady = startWriter('p');
  for (int round = 0; round < 40; ++round) {
    const pid_t child = startWriter('a');
    std::this_thread::sleep_for(std::chrono::microseconds(round * 5417 % 12'000));
    EXPECT_TRUE(isKilled(child)) << "a writer failed";
    const std::string bytes = read(file);
    EXPECT_TRUE(bytes.size() == large || bytes.size() == large / 2) << bytes.size();
    EXPECT_EQ(bytes.find_first_not_of(bytes.front()), std::string::npos);
  }
  EXPECT_TRUE(isKilled(steady)) << "a writer failed";
}

TEST_F(FilesTest, RemovesOldTemporaryFilesAndNothingElse) {
  const auto longAgo = fs::file_time_type::clock::now() - std::chrono::minutes(61);
  owned.write(".veloria-2-0.tmp", "in use");
  for (const char* name : {".veloria-1-0.tmp", "veloria-1-0.tmp", ".veloria-1-0.json"}) {
    fs::last_write_time(owned.write(name, "x"), longAgo);
  }
  removeStaleTemporaryFiles(folder);
  EXPECT_THAT(names(), UnorderedElementsAre(".veloria-1-0.json", ".veloria-2-0.tmp", "veloria-1-0.tmp"));
  removeStaleTemporaryFiles(folder / "none");
}

}  // namespace
}  // namespace veloria::tests
