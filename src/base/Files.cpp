#include "base/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <system_error>
#include <utility>

#include "base/OwnedDescriptor.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view temporaryPrefix = ".veloria-";
constexpr std::string_view temporarySuffix = ".tmp";
constexpr int mostLinks = 40;

Failure failed(const fs::path& path, const std::string& reason) {
  return {path.string() + ": " + reason};
}

Failure failed(const fs::path& path, int error) {
  return failed(path, std::generic_category().message(error));
}

Failure tooLarge(const fs::path& path, std::size_t cap) {
  return failed(path, "larger than " + std::to_string(cap) + " bytes");
}

/// Reads to the end of the file, or cap + 1 bytes if it has grown since its size was read.
bool readAll(int descriptor, std::size_t cap, std::string& bytes) {
  std::size_t length = 0;
  while (length <= cap) {
    if (length == bytes.size()) bytes.resize(std::min(cap + 1, std::max<std::size_t>(4096, 2 * length)));
    const ssize_t count = ::read(descriptor, bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  bytes.resize(length);
  return true;
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// The target of symbolic links, which need not exist.
std::optional<fs::path> followLinks(fs::path path) {
  for (int i = 0; i < mostLinks; ++i) {
    std::error_code error;
    const fs::path target = fs::read_symlink(path, error);
    if (error) return path;
    path = path.parent_path() / target;
  }
  return std::nullopt;
}

/// A new file beside `target`, removed again unless it is renamed to it.
class TemporaryFile {
 public:
  TemporaryFile(const fs::path& target, mode_t mode) : target_(target) {
    static std::atomic<unsigned> counter{0};
    do {
      path_ = target.parent_path() / (std::string(temporaryPrefix) + std::to_string(::getpid()) + "-" +
                                      std::to_string(counter++) + std::string(temporarySuffix));
      descriptor_ = OwnedDescriptor(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    } while (!descriptor_ && errno == EEXIST);
    present_ = static_cast<bool>(descriptor_);
  }
  ~TemporaryFile() {
    if (present_) ::unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int descriptor() const { return descriptor_.get(); }
  bool present() const { return present_; }

  bool becomeTarget() {
    if (!descriptor_.close() || ::rename(path_.c_str(), target_.c_str()) != 0) return false;
    present_ = false;
    return true;
  }

 private:
  fs::path target_;
  fs::path path_;
  OwnedDescriptor descriptor_;
  bool present_ = false;
};

void flushFolder(const fs::path& folder) {
  const OwnedDescriptor descriptor(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor) ::fsync(descriptor.get());
}

bool isOldTemporaryFile(const fs::directory_entry& entry) {
  const std::string name = entry.path().filename().string();
  if (!name.starts_with(temporaryPrefix) || !name.ends_with(temporarySuffix)) return false;
  std::error_code error;
  if (!fs::is_regular_file(entry.symlink_status(error))) return false;
  const auto written = entry.last_write_time(error);
  return !error && fs::file_time_type::clock::now() - written > std::chrono::hours(1);
}

}  // namespace

Result<std::string> readFileBounded(const fs::path& path, std::size_t cap) {
  const OwnedDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return failed(path, errno);
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) return failed(path, errno);
  if (!S_ISREG(status.st_mode)) return failed(path, "not a regular file");
  if (status.st_size > 0 && static_cast<std::uintmax_t>(status.st_size) > cap) return tooLarge(path, cap);
  std::string bytes;
  if (!readAll(file.get(), cap, bytes)) return failed(path, errno);
  if (bytes.size() > cap) return tooLarge(path, cap);
  return bytes;
}

Result<Done> writeFileAtomically(const fs::path& path, std::string_view bytes, FileAccess access) {
  struct stat status {};
  const bool exists = ::stat(path.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) return failed(path, errno);
  if (exists && !S_ISREG(status.st_mode)) return failed(path, "not a regular file");
  const auto target = followLinks(path);
  if (!target) return failed(path, ELOOP);

  TemporaryFile file(*target, exists || access == FileAccess::ownerOnly ? 0600 : 0666);
  if (!file.present()) return failed(path, errno);
  if (exists) ::fchmod(file.descriptor(), status.st_mode & 0777);
  if (!writeAll(file.descriptor(), bytes) || ::fsync(file.descriptor()) != 0 || !file.becomeTarget()) {
    return failed(path, errno);
  }
  flushFolder(target->parent_path());
  return Done{};
}

void removeStaleTemporaryFiles(const fs::path& folder) noexcept {
  try {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; entry != end && !error; entry.increment(error)) {
      if (isOldTemporaryFile(*entry)) fs::remove(entry->path(), error);
    }
  } catch (const std::exception&) {  // out of memory, or an invalid name
  }
}

}  // namespace veloria
