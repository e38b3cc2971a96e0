#include "platform/posix/files/UserFolders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <system_error>

namespace veloria {

namespace fs = std::filesystem;

namespace {

/// The value of an environment variable that must be an absolute path; else empty.
std::optional<fs::path> absolutePath(const std::optional<std::string>& value) {
  if (!value || !fs::path(*value).is_absolute()) return std::nullopt;
  return *value;
}

std::optional<fs::path> homeInUserDatabase() {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 16384> text{};
  if (::getpwuid_r(::geteuid(), &entry, text.data(), text.size(), &found) != 0 || !found) return std::nullopt;
  return absolutePath(found->pw_dir);
}

}  // namespace

std::optional<fs::path> homeFolder(const Environment& environment) {
  const auto named = absolutePath(environment("HOME"));
  return named ? named : homeInUserDatabase();
}

std::optional<fs::path> folderBy(const FolderRule& rule, const Environment& environment) {
  if (rule.variable != nullptr) {
    if (const auto named = absolutePath(environment(rule.variable))) return *named / "Veloria";
  }
  if (const auto home = homeFolder(environment)) return *home / rule.belowHome / "Veloria";
  return std::nullopt;
}

std::optional<fs::path> configFolder(const Environment& environment) {
  return folderBy(systemFolders.config, environment);
}

std::optional<fs::path> dataFolder(const Environment& environment) {
  return folderBy(systemFolders.data, environment);
}

std::optional<fs::path> stateFolder(const Environment& environment) {
  return folderBy(systemFolders.state, environment);
}

std::optional<fs::path> cacheFolder(const Environment& environment) {
  return folderBy(systemFolders.cache, environment);
}

bool makeUserFolder(const fs::path& folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return true;
  const fs::path above = folder.parent_path();
  if (above != folder && !above.empty() && !makeUserFolder(above)) return false;
  return ::mkdir(folder.c_str(), 0700) == 0 || fs::is_directory(folder, error);
}

}  // namespace veloria
