#include "platform/linux/files/UserFolders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <system_error>

namespace veloria {

namespace fs = std::filesystem;

namespace {

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

std::optional<fs::path> userFolder(const Environment& environment, const char* variable, const char* belowHome) {
  if (const auto named = absolutePath(environment(variable))) return *named / "Veloria";
  if (const auto folder = homeFolder(environment)) return *folder / belowHome / "Veloria";
  return std::nullopt;
}

}  // namespace

std::optional<fs::path> homeFolder(const Environment& environment) {
  const auto named = absolutePath(environment("HOME"));
  return named ? named : homeInUserDatabase();
}

std::optional<fs::path> configFolder(const Environment& environment) {
  return userFolder(environment, "XDG_CONFIG_HOME", ".config");
}

std::optional<fs::path> dataFolder(const Environment& environment) {
  return userFolder(environment, "XDG_DATA_HOME", ".local/share");
}

std::optional<fs::path> stateFolder(const Environment& environment) {
  return userFolder(environment, "XDG_STATE_HOME", ".local/state");
}

std::optional<fs::path> cacheFolder(const Environment& environment) {
  return userFolder(environment, "XDG_CACHE_HOME", ".cache");
}

bool makeUserFolder(const fs::path& folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return true;
  const fs::path above = folder.parent_path();
  if (above != folder && !above.empty() && !makeUserFolder(above)) return false;
  return ::mkdir(folder.c_str(), 0700) == 0 || fs::is_directory(folder, error);
}

}  // namespace veloria
