#include "cli/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "base/MediaClock.h"

namespace veloria::cli {

namespace {

Failure failedLock(const std::filesystem::path& path, int error) {
  return {path.string() + ": " + std::generic_category().message(error)};
}

bool isRegularFile(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

// The waiting is a loop because a blocking flock() could only be ended by a signal.
Result<FileLock> FileLock::acquire(const std::filesystem::path& path, double seconds) {
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
  if (descriptor < 0) return failedLock(path, errno);
  FileLock lock(descriptor);
  if (!isRegularFile(descriptor)) return Failure{path.string() + ": not a regular file"};
  const double end = mediaTime() + seconds;
  while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return failedLock(path, errno);
    if (mediaTime() > end) return Failure{path.string() + ": another program does not let go of it"};
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return lock;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

FileLock::FileLock(FileLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

}  // namespace veloria::cli
