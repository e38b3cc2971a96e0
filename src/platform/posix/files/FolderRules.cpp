#include "platform/posix/files/FolderRules.h"

#include "platform/posix/files/UserFolders.h"

namespace veloria {

std::optional<std::filesystem::path> absolutePath(const std::optional<std::string>& value) {
  if (!value || !std::filesystem::path(*value).is_absolute()) return std::nullopt;
  return *value;
}

std::optional<std::filesystem::path> folderBy(const FolderRule& rule, const Environment& environment) {
  if (rule.variable != nullptr) {
    if (const auto named = absolutePath(environment(rule.variable))) return *named / "Veloria";
  }
  if (const auto home = homeFolder(environment)) return *home / rule.belowHome / "Veloria";
  return std::nullopt;
}

}  // namespace veloria
