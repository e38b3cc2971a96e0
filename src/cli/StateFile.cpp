#include "cli/StateFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "agent/StateMembers.h"
#include "base/Files.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"
#include "cli/FileLock.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria::cli {

namespace fs = std::filesystem;

namespace {

/// What the file holds. With a defect it is not what it should be, and `state` is empty.
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
  if (!parsed->is_object()) return defective("no JSON object");
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
  return path.string() + " was not right (" + defect + "); it is " + aside.string() + " now, and a new one is started.";
}

/// The notice of StateFile::change().
Result<std::string> replace(const fs::path& path, const std::string& bytes, const std::string& defect) {
  if (bytes.size() > maximumJsonBytes) return Failure{path.string() + ": there is no room for so much"};
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
  if (!makeUserFolder(folder)) return Failure{folder.string() + ": there is no such folder and it can't be made"};
  const auto lock = FileLock::acquire(beside(path_, ".lock"), lockSeconds_);
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
    *content = defective("there was no room left in " + std::to_string(maximumJsonBytes) + " bytes");
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
