#include "platform/posix/process/Programs.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QProcess>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "base/MediaClock.h"
#include "base/OwnedDescriptor.h"
#include "base/SocketCalls.h"
#include "base/Text.h"

#ifdef __APPLE__
extern char** environ;  // no header has it there
#endif

namespace veloria {

namespace fs = std::filesystem;

namespace {

/// With the effective user id.
bool mayAccess(const fs::path& path, int mode) {
  return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

// The end of the output wakes the reader at once. These serve a program that has closed its output and still runs, and
// one that has ended and left its output to others.
constexpr int closedPollMilliseconds = 1;
constexpr int openPollMilliseconds = 10;

/// The start state of a child process: its standard streams, a session of its own, and signals as from a shell.
class SpawnSetup {
 public:
  explicit SpawnSetup(int output) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none;
    sigset_t pipes;
    sigemptyset(&none);
    sigemptyset(&pipes);
    sigaddset(&pipes, SIGPIPE);
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &pipes);
  }
  ~SpawnSetup() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&actions_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  /// The child's process id; -1 if it can't be started.
  pid_t start(std::vector<std::string> argv) const {
    std::vector<char*> words;
    words.reserve(argv.size() + 1);
    for (std::string& word : argv) words.push_back(word.data());
    words.push_back(nullptr);
    pid_t child = -1;
    return ::posix_spawnp(&child, words[0], &actions_, &attributes_, words.data(), environ) == 0 ? child : -1;
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

/// A program that leads a session of its own. The destructor kills it and its session, unless it has ended by itself.
class Child {
 public:
  explicit Child(pid_t pid) : pid_(pid) {}
  ~Child() {
    if (pid_ < 0) return;
    ::kill(-pid_, SIGKILL);
    while (::waitpid(pid_, &status_, 0) < 0 && errno == EINTR) continue;
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  bool runs() const { return pid_ >= 0; }
  bool hasEnded() {
    if (runs() && ::waitpid(pid_, &status_, WNOHANG) == pid_) pid_ = -1;
    return !runs();
  }
  /// Once it has ended.
  int exitCode() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_); }

 private:
  pid_t pid_;
  int status_ = 0;
};

/// The reading end of the pipe that a program writes to.
class OutputReader {
 public:
  OutputReader(OwnedDescriptor descriptor, std::size_t cap) : descriptor_(std::move(descriptor)), cap_(cap) {
    ::fcntl(descriptor_.get(), F_SETFL, O_NONBLOCK);
  }

  /// Reads what is there now.
  void read() {
    std::array<char, 4096> bytes;
    while (descriptor_ && !isTooMuch()) {
      const ssize_t count = ::read(descriptor_.get(), bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0 && errno == EAGAIN) return;
      if (count <= 0) return descriptor_.reset();
      text_.append(bytes.data(), static_cast<std::size_t>(count));
    }
  }

  /// Waits until there is more, or for a moment.
  void wait() const {
    pollfd waiting{descriptor_.get(), POLLIN, 0};
    ::poll(&waiting, 1, descriptor_ ? openPollMilliseconds : closedPollMilliseconds);
  }

  bool isTooMuch() const { return text_.size() > cap_; }
  std::string takeText() { return std::move(text_); }

 private:
  OwnedDescriptor descriptor_;
  std::size_t cap_;
  std::string text_;
};

}  // namespace

std::optional<ProgramOutput> runProgram(const std::vector<std::string>& argv, double seconds, std::size_t cap) {
  const double deadline = mediaTime() + seconds;
  auto pipe = argv.empty() ? std::nullopt : makePipe(true);
  if (!pipe) return std::nullopt;
  OutputReader output(std::move(pipe->readable), cap);
  OwnedDescriptor writing = std::move(pipe->writable);
  Child child(SpawnSetup(writing.get()).start(argv));
  writing.reset();
  if (!child.runs()) return std::nullopt;
  while (mediaTime() < deadline) {
    const bool ended = child.hasEnded();  // asked first: what it wrote is all there then
    output.read();
    if (output.isTooMuch()) return std::nullopt;
    if (ended) return ProgramOutput{output.takeText(), child.exitCode()};
    output.wait();
  }
  return std::nullopt;
}

std::optional<std::string> commandOutput(const std::vector<std::string>& argv, double seconds, std::size_t cap) {
  auto output = runProgram(argv, seconds, cap);
  if (!output || output->exitCode != 0) return std::nullopt;
  return std::move(output->text);
}

bool isRunnable(const fs::path& file) {
  std::error_code error;
  return fs::is_regular_file(file, error) && mayAccess(file, X_OK);
}

bool isWritableFolder(const fs::path& folder) {
  std::error_code error;
  return fs::is_directory(folder, error) && mayAccess(folder, W_OK | X_OK);
}

std::optional<fs::path> findProgram(const std::string& name, std::string_view searchPath) {
  for (const std::string_view folder : splitText(searchPath, ':')) {
    const fs::path candidate = fs::path(folder) / name;
    if (candidate.is_absolute() && isRunnable(candidate)) return candidate;
  }
  return std::nullopt;
}

Result<Done> startDetached(const fs::path& program, const std::vector<std::string>& arguments) {
  QProcess process;
  process.setProgram(QString::fromStdString(program.string()));
  QStringList words;
  for (const std::string& argument : arguments) words << QString::fromStdString(argument);
  process.setArguments(words);
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(QProcess::nullDevice());
  if (!process.startDetached()) return Failure{program.string() + " could not be started."};
  return Done{};
}

}  // namespace veloria
