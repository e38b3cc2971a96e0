#include "base/Files.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <set>
#include <thread>

#include "Process.h"

namespace veloria::tests {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

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
    std::set<std::string> sorted;
    for (const auto& entry : fs::directory_iterator(folder)) sorted.insert(entry.path().filename().string());
    return {sorted.begin(), sorted.end()};
  }
  static pid_t inChild(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit((work(), 0));
    return child;
  }
  /// What writing the file in a child process says, after `prepare`.
  std::string writeInChild(const std::function<void()>& prepare, const std::string& bytes) const {
    const std::string told = elsewhere.file("told");
    ::waitpid(inChild([&] { prepare(), static_cast<void>(writeFileAtomically(told, write(file, bytes))); }), nullptr,
              0);
    return read(told);
  }

  TemporaryFolder owned, elsewhere;
  fs::path folder = owned.path();
  fs::path file = folder / "file";
};

TEST_F(FilesTest, AnyBytesUpToTheCap) {
  for (const std::string& bytes : {std::string("a\0b\xFF\n", 5), std::string(), std::string(cap, 'z')}) {
    ASSERT_EQ(write(file, bytes), "written");
    EXPECT_EQ(read(file), bytes);
  }
  EXPECT_THAT(names(), ElementsAre("file"));
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
  EXPECT_EQ(read(folder / "none"), "error: " + (folder / "none").string() + ": No such file or directory");
  EXPECT_THAT(write(folder / "none" / "file"), HasSubstr(": No such file or directory"));
  EXPECT_THAT(write(fifo / "below"), HasSubstr(": Not a directory"));
  EXPECT_THAT(names(), ElementsAre("fifo", "link", "loop"));
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

TEST_F(FilesTest, AFailureLeavesTheOldContentAndNothingElse) {
  owned.write("file", "old");
  const auto fullDisk = [] {
    const rlimit limit{4096, 4096};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);
  };
  EXPECT_EQ(writeInChild(fullDisk, std::string(100'000, 'n')), "error: " + file.string() + ": File too large");
  fs::permissions(folder, fs::perms(0555));
  fs::permissions(elsewhere.path(), fs::perms(0777));
  const auto asNobody = [] { static_cast<void>(::geteuid() == 0 && ::setuid(65534) == 0); };
  EXPECT_EQ(writeInChild(asNobody, "new"), "error: " + file.string() + ": Permission denied");
  fs::permissions(folder, fs::perms(0755));
  EXPECT_EQ(read(file), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
}

// One writer is killed again and again, at any moment; another goes on meanwhile.
TEST_F(FilesTest, AReaderSeesWholeFilesOnly) {
  constexpr std::size_t large = 300'000;
  const auto writeForever = [this](char letter) {
    for (int i = 0;; ++i) {
      if (write(file, std::string(large / (1 + i % 2), static_cast<char>(letter + i % 5))) != "written") return;
    }
  };
  write(file, std::string(large, 'o'));
  const pid_t steady = inChild([&] { writeForever('p'); });
  std::set<char> seen;
  for (int round = 0; round < 40; ++round) {
    const pid_t child = inChild([&] { writeForever('a'); });
    std::this_thread::sleep_for(std::chrono::microseconds(round * 5417 % 12'000));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "a writer failed";
    const std::string bytes = read(file);
    ASSERT_TRUE(bytes.size() == large || bytes.size() == large / 2) << bytes.size();
    ASSERT_EQ(bytes.find_first_not_of(bytes.front()), std::string::npos);
    seen.insert(bytes.front());
  }
  ::kill(steady, SIGKILL);
  ::waitpid(steady, nullptr, 0);
  EXPECT_LT(*seen.begin(), 'f');
  EXPECT_GE(*seen.rbegin(), 'p');
}

TEST_F(FilesTest, RemovesOldTemporaryFilesAndNothingElse) {
  const auto longAgo = fs::file_time_type::clock::now() - std::chrono::minutes(61);
  fs::create_directory(folder / ".veloria-3-0.tmp");
  owned.write(".veloria-2-0.tmp", "in use");
  for (const char* name : {".veloria-1-0.tmp", "veloria-1-0.tmp", ".veloria-1-0.json", ".veloria-3-0.tmp"}) {
    if (!fs::exists(folder / name)) owned.write(name, "x");
    fs::last_write_time(folder / name, longAgo);
  }
  removeStaleTemporaryFiles(folder);
  EXPECT_THAT(names(), ElementsAre(".veloria-1-0.json", ".veloria-2-0.tmp", ".veloria-3-0.tmp", "veloria-1-0.tmp"));
  removeStaleTemporaryFiles(folder / "none");
}

}  // namespace
}  // namespace veloria::tests
