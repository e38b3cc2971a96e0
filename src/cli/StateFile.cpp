#include "cli/StateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "agent/StateMembers.h"
#include "base/Files.h"
#include "base/MediaClock.h"
#include "base/OwnedDescriptor.h"
#include "base/StrictJson.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria::cli {

namespace fs = std::filesystem;

namespace {

/// An exclusive lock between processes, until the descriptor is closed or the process ends. Locks the file at `path`,
/// which is created if missing and never removed. The loop is because only a signal could end a blocking flock().
Result<OwnedDescriptor> lockFile(const fs::path& path, double seconds) {
  const auto failed = [&](int error) { return Failure{path.string() + ": " + std::generic_category().message(error)}; };
  OwnedDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
  if (!file) return failed(errno);
  struct stat status {};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return Failure{path.string() + ": not a regular file"};
  }
  const double end = mediaTime() + seconds;
  while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return failed(errno);
    if (mediaTime() > end) return Failure{path.string() + ": another program keeps it locked"};
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return file;
}

/// The content of the file. With a defect the file is invalid, and `state` is empty.
struct Content {
  nlohmann::json state = nlohmann::json::object();
  std::string defect;
};

Content defective(std::string defect) {
  return {nlohmann::json::object(), std::move(defect)};
}

Result<Content> load(const fs::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return Content{};
    return Failure{path.string() + ": " + std::generic_category().message(errno)};
  }
  if (S_ISREG(status.st_mode) && status.st_size > static_cast<off_t>(maximumJsonBytes)) {
    return defective("larger than " + std::to_string(maximumJsonBytes) + " bytes");
  }
  const auto bytes = readFileBounded(path, maximumJsonBytes);
  if (!bytes) return Failure{bytes.error()};
  auto parsed = parseStrictJson(*bytes);
  if (!parsed) return defective(parsed.error());
  if (!parsed->is_object()) return defective("not a JSON object");
  return Content{*std::move(parsed), {}};
}

fs::path beside(fs::path path, const char* suffix) {
  return path += suffix;
}

Result<std::string> putAside(const fs::path& path, const std::string& defect) {
  const fs::path aside = beside(path, ".rejected");
  std::error_code error;
  fs::rename(path, aside, error);
  if (error) return Failure{path.string() + " can't be moved to " + aside.string() + ": " + error.message()};
  return path.string() + " was invalid (" + defect + "); it was moved to " + aside.string() +
         " and replaced by a new file.";
}

/// The notice of StateFile::change().
Result<std::string> replace(const fs::path& path, const std::string& bytes, const std::string& defect) {
  if (bytes.size() > maximumJsonBytes) return Failure{path.string() + ": the state would be too large"};
  Result<std::string> notice = std::string();
  if (!defect.empty()) notice = putAside(path, defect);
  if (!notice) return notice;
  const auto written = writeFileAtomically(path, bytes, FileAccess::ownerOnly);
  if (!written) return Failure{written.error()};
  return notice;
}

}  // namespace

StateFile::StateFile(fs::path path, double lockSeconds) : path_(std::move(path)), lockSeconds_(lockSeconds) {}

Result<nlohmann::json> StateFile::read() const {
  auto content = load(path_);
  if (!content) return Failure{content.error()};
  if (!content->defect.empty()) return Failure{path_.string() + ": " + content->defect};
  return std::move(content->state);
}

Result<std::string> StateFile::change(const Change& change) const {
  const fs::path folder = path_.parent_path();
  if (!makeUserFolder(folder)) return Failure{folder.string() + ": the folder is missing and can't be made"};
  const auto lock = lockFile(beside(path_, ".lock"), lockSeconds_);
  if (!lock) return Failure{lock.error()};
  removeStaleTemporaryFiles(folder);
  auto content = load(path_);
  if (!content) return Failure{content.error()};
  const double now = wallTime();
  const auto changed = [&] {
    change(content->state, now);
    return content->state.dump(2) + "\n";
  };
  std::string bytes = changed();
  if (bytes.size() > maximumJsonBytes) {
    *content = defective("full: at most " + std::to_string(maximumJsonBytes) + " bytes are allowed");
    bytes = changed();
  }
  return replace(path_, bytes, content->defect);
}

std::optional<fs::path> stateFilePath(const Environment& environment) {
  const auto folder = dataFolder(environment);
  if (!folder) return std::nullopt;
  return *folder / stateFileName;
}

}  // namespace veloria::cli
