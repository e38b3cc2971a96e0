#include "platform/posix/socket/InstanceLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace veloria {

namespace {

Failure failureAt(const std::filesystem::path& path, const std::string& reason) {
  return Failure{path.string() + ": " + reason};
}

/// Checks the folder, because another user may have made it first in a folder that all may write.
Result<Done> makePrivateFolder(const std::filesystem::path& folder) {
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return failureAt(folder, std::strerror(errno));
  struct stat attributes {};
  if (::lstat(folder.c_str(), &attributes) != 0) return failureAt(folder, std::strerror(errno));
  if (!S_ISDIR(attributes.st_mode)) return failureAt(folder, "this is not a folder");
  if (attributes.st_uid != ::geteuid()) return failureAt(folder, "this folder belongs to another user");
  if ((attributes.st_mode & 077) != 0 && ::chmod(folder.c_str(), 0700) != 0) {
    return failureAt(folder, "others may use this folder");
  }
  return Done{};
}

}  // namespace

Result<std::optional<InstanceLock>> InstanceLock::acquire(const std::filesystem::path& socket) {
  const auto folder = makePrivateFolder(socket.parent_path());
  if (!folder) return Failure{folder.error()};
  const std::filesystem::path path = socket.native() + ".lock";
  OwnedDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!file) return failureAt(path, std::strerror(errno));
  if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) return std::optional(InstanceLock(std::move(file)));
  if (errno == EWOULDBLOCK) return std::optional<InstanceLock>();
  return failureAt(path, std::strerror(errno));
}

}  // namespace veloria
