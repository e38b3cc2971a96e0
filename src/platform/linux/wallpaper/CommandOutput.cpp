#include "platform/linux/wallpaper/CommandOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "base/MediaClock.h"

namespace veloria {

namespace {

constexpr std::chrono::milliseconds exitPollInterval{1};

/// One end of a pipe.
class PipeEnd {
 public:
  explicit PipeEnd(int descriptor) : descriptor_(descriptor) {}
  ~PipeEnd() { close(); }
  PipeEnd(const PipeEnd&) = delete;
  PipeEnd& operator=(const PipeEnd&) = delete;
  int get() const { return descriptor_; }
  void close() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
  }

 private:
  int descriptor_;
};

/// What a child process starts with: its standard streams, and signals as if it had been started from a shell.
class SpawnSetup {
 public:
  explicit SpawnSetup(int output) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none;
    sigset_t pipes;
    ::sigemptyset(&none);
    ::sigemptyset(&pipes);
    ::sigaddset(&pipes, SIGPIPE);
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &pipes);
  }
  ~SpawnSetup() {
    ::posix_spawnattr_destroy(&attributes_);
    ::posix_spawn_file_actions_destroy(&actions_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;

  /// The child's number, -1 when it can't be started.
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

int millisecondsUntil(double deadline) {
  return static_cast<int>(std::max(0.0, (deadline - mediaTime()) * 1000)) + 1;
}

/// All that is written until the other end is closed; nothing when that is too much or takes too long.
std::optional<std::string> readToEnd(int descriptor, double deadline, std::size_t cap) {
  std::string text;
  std::array<char, 4096> bytes;
  while (mediaTime() < deadline) {
    pollfd waiting{descriptor, POLLIN, 0};
    if (::poll(&waiting, 1, millisecondsUntil(deadline)) <= 0) continue;
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count == 0) return text;
    if (count < 0 && errno != EINTR) return std::nullopt;
    if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
    if (text.size() > cap) return std::nullopt;
  }
  return std::nullopt;
}

/// True when the child exits by itself, with 0, before the deadline. It is gone afterwards either way.
bool endsWell(pid_t child, double deadline) {
  int status = 0;
  pid_t ended = 0;
  while ((ended = ::waitpid(child, &status, WNOHANG)) == 0 && mediaTime() < deadline) {
    std::this_thread::sleep_for(exitPollInterval);
  }
  if (ended == child) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (ended == 0) {
    ::kill(child, SIGKILL);
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  }
  return false;
}

}  // namespace

std::optional<std::string> commandOutput(const std::vector<std::string>& argv, double seconds, std::size_t cap) {
  const double deadline = mediaTime() + seconds;
  std::array<int, 2> ends{};
  if (argv.empty() || ::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  const PipeEnd reading(ends[0]);
  PipeEnd writing(ends[1]);
  const pid_t child = SpawnSetup(writing.get()).start(argv);
  writing.close();
  if (child < 0) return std::nullopt;
  auto output = readToEnd(reading.get(), deadline, cap);
  if (!endsWell(child, output ? deadline : 0)) return std::nullopt;
  return output;
}

}  // namespace veloria
