#include "base/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <random>
#include <set>
#include <thread>

namespace veloria {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::size_t cap = std::size_t{1} << 20;
constexpr int writerSucceeded = 7;
constexpr int writerFailed = 8;

class FilesTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "veloria-files-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder = pattern;
    file = folder / "file";
  }
  void TearDown() override { fs::remove_all(folder); }

  void put(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

  std::string content(const fs::path& path) {
    const auto bytes = readFileBounded(path, 64 * cap);
    return bytes ? *bytes : bytes.error();
  }

  std::vector<std::string> names() {
    std::set<std::string> sorted;
    for (const auto& entry : fs::directory_iterator(folder)) sorted.insert(entry.path().filename().string());
    return {sorted.begin(), sorted.end()};
  }

  std::string errorOfRead(const fs::path& path) {
    const auto result = readFileBounded(path, cap);
    return result ? "read " + std::to_string(result->size()) + " bytes" : result.error();
  }

  std::string errorOfWrite(const fs::path& path) {
    const auto result = writeFileAtomically(path, "new");
    return result ? "written" : result.error();
  }

  /// Runs `work` in a child process. Its result becomes the exit status.
  static pid_t inChild(const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    return child;
  }

  static int statusOf(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  static mode_t modeOf(const fs::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
  }

  fs::path folder;
  fs::path file;
};

TEST_F(FilesTest, WritesAndReadsAnyBytes) {
  for (const std::string& bytes : {std::string("a\0b\xFF\n", 5), std::string(), std::string(cap, 'z')}) {
    ASSERT_TRUE(writeFileAtomically(file, bytes));
    EXPECT_EQ(*readFileBounded(file, cap), bytes);
  }
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FilesTest, ReadsUpToTheCapAndNotOneByteMore) {
  put(file, std::string(5000, 'x'));
  EXPECT_EQ(readFileBounded(file, 5000)->size(), 5000U);
  EXPECT_EQ(readFileBounded(file, 4999).error(), file.string() + ": larger than 4999 bytes");
  EXPECT_EQ(readFileBounded(folder / "none", 1).error(), (folder / "none").string() + ": No such file or directory");
}

TEST_F(FilesTest, RefusesWhatIsNoPlainFileWithoutWaitingForIt) {
  const fs::path fifo = folder / "fifo";
  const fs::path loop = folder / "loop";
  const fs::path linkToFifo = folder / "link";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  fs::create_symlink(loop, loop);
  fs::create_symlink(fifo, linkToFifo);
  for (const fs::path& path : {fifo, linkToFifo, folder, fs::path("/dev/zero")}) {
    EXPECT_THAT(errorOfRead(path), HasSubstr("not a regular file"));
    EXPECT_THAT(errorOfWrite(path), HasSubstr("not a regular file"));
  }
  for (const auto& error : {errorOfRead(loop), errorOfWrite(loop)}) EXPECT_THAT(error, HasSubstr("symbolic link"));
  EXPECT_TRUE(fs::is_fifo(fifo));
  EXPECT_THAT(names(), ElementsAre("fifo", "link", "loop"));
}

TEST_F(FilesTest, RefusesAHugeSparseFileAndOneWithoutASize) {
  put(file, "x");
  fs::resize_file(file, std::uintmax_t{1} << 40);
  EXPECT_THAT(errorOfRead(file), HasSubstr("larger than"));
  EXPECT_EQ(readFileBounded("/proc/self/stat", 8).error(), "/proc/self/stat: larger than 8 bytes");
}

TEST_F(FilesTest, KeepsASymbolicLinkAndWritesWhereItLeads) {
  fs::create_directory(folder / "dots");
  const fs::path real = folder / "dots" / "real";
  fs::create_symlink("dots/real", folder / "middle");
  fs::create_symlink(folder / "middle", file);
  for (const std::string bytes : {"dangling at first", "then there"}) {
    ASSERT_TRUE(writeFileAtomically(file, bytes));
    EXPECT_EQ(content(real), bytes);
    EXPECT_EQ(content(file), bytes);
  }
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_TRUE(fs::is_symlink(folder / "middle"));
  EXPECT_THAT(names(), ElementsAre("dots", "file", "middle"));
}

TEST_F(FilesTest, KeepsPermissionsAndGivesNewFilesTheRightOnes) {
  const mode_t before = ::umask(027);
  EXPECT_TRUE(writeFileAtomically(folder / "shared", "x"));
  EXPECT_TRUE(writeFileAtomically(folder / "private", "x", FileAccess::ownerOnly));
  put(file, "x");
  fs::permissions(file, fs::perms(0604));
  EXPECT_TRUE(writeFileAtomically(file, "y", FileAccess::ownerOnly));
  ::umask(before);
  EXPECT_EQ(modeOf(folder / "shared"), 0640U);
  EXPECT_EQ(modeOf(folder / "private"), 0600U);
  EXPECT_EQ(modeOf(file), 0604U);
}

TEST_F(FilesTest, AFullDiskLeavesTheOldContentAndNothingElse) {
  put(file, "old");
  const pid_t child = inChild([this] {
    const rlimit limit{4096, 4096};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const auto result = writeFileAtomically(file, std::string(100'000, 'n'));
    return result || result.error() != file.string() + ": File too large" ? writerSucceeded : writerFailed;
  });
  EXPECT_EQ(statusOf(child), writerFailed);
  EXPECT_EQ(content(file), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FilesTest, AFolderWithoutPermissionLeavesTheOldContent) {
  put(file, "old");
  fs::permissions(file, fs::perms(0644));
  fs::permissions(folder, fs::perms(0555));
  const pid_t child = inChild([this] {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) return writerSucceeded;
    const auto result = writeFileAtomically(file, "new");
    return result || result.error() != file.string() + ": Permission denied" ? writerSucceeded : writerFailed;
  });
  EXPECT_EQ(statusOf(child), writerFailed);
  fs::permissions(folder, fs::perms(0755));
  EXPECT_EQ(content(file), "old");
  EXPECT_THAT(names(), ElementsAre("file"));
  EXPECT_EQ(errorOfWrite(folder / "none" / "file"),
            (folder / "none" / "file").string() + ": No such file or directory");
  EXPECT_EQ(errorOfWrite(file / "below"), (file / "below").string() + ": Not a directory");
}

constexpr std::size_t largeSize = 300'000;

/// Whole when all of it was written by one write: one letter, in one of the two sizes.
bool isWhole(const std::string& bytes) {
  return (bytes.size() == largeSize || bytes.size() == largeSize / 2) &&
         bytes.find_first_not_of(bytes.front()) == std::string::npos;
}

int writeForever(const fs::path& file, char letter) {
  for (int i = 0;; ++i) {
    const std::string bytes(i % 2 == 0 ? largeSize : largeSize / 2, static_cast<char>(letter + i % 5));
    if (!writeFileAtomically(file, bytes)) return writerFailed;
  }
}

TEST_F(FilesTest, AWriterKilledAtAnyMomentLeavesAWholeFile) {
  put(file, std::string(largeSize, 'o'));
  std::mt19937 random(1);
  std::uniform_int_distribution<int> microseconds(0, 12'000);
  std::set<char> seen;
  for (int round = 0; round < 60; ++round) {
    const pid_t child = inChild([this] { return writeForever(file, 'a'); });
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    ::kill(child, SIGKILL);
    ASSERT_EQ(statusOf(child), -SIGKILL);
    const std::string bytes = content(file);
    ASSERT_TRUE(isWhole(bytes)) << "round " << round << ", size " << bytes.size();
    seen.insert(bytes.front());
  }
  EXPECT_GT(seen.size(), 2U) << "the writers did write";
}

TEST_F(FilesTest, OfTwoWritersAtOnceAReaderNeverSeesAMixture) {
  put(file, std::string(largeSize, 'o'));
  const pid_t one = inChild([this] { return writeForever(file, 'a'); });
  const pid_t two = inChild([this] { return writeForever(file, 'p'); });
  std::set<char> seen;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  bool whole = true;
  while (whole && std::chrono::steady_clock::now() < end) {
    const std::string bytes = content(file);
    whole = isWhole(bytes);
    seen.insert(bytes.front());
  }
  for (const pid_t child : {one, two}) {
    ::kill(child, SIGKILL);
    EXPECT_EQ(statusOf(child), -SIGKILL) << "a writer failed";
  }
  EXPECT_TRUE(whole);
  EXPECT_THAT(*seen.begin(), testing::Lt('f'));
  EXPECT_THAT(*seen.rbegin(), testing::Ge('p'));
}

TEST_F(FilesTest, RemovesOldTemporaryFilesAndNothingElse) {
  const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(2);
  for (const char* name : {".veloria-1-0.tmp", "veloria-1-0.tmp", ".veloria-1-0.json", "file"}) {
    put(folder / name, "x");
    fs::last_write_time(folder / name, longAgo);
  }
  put(folder / ".veloria-2-0.tmp", "in use");
  fs::create_directory(folder / ".veloria-3-0.tmp");
  fs::last_write_time(folder / ".veloria-3-0.tmp", longAgo);
  removeStaleTemporaryFiles(folder);
  EXPECT_THAT(names(),
              ElementsAre(".veloria-1-0.json", ".veloria-2-0.tmp", ".veloria-3-0.tmp", "file", "veloria-1-0.tmp"));
  removeStaleTemporaryFiles(folder / "none");
}

}  // namespace
}  // namespace veloria
