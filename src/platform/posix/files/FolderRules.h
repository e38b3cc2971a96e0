#pragma once

#include <filesystem>
#include <optional>

#include "base/Environment.h"

namespace veloria {

/// Where one kind of file belongs.
struct FolderRule {
  const char* variable;   ///< the environment variable that names the folder, when it is absolute; null: none does
  const char* belowHome;  ///< otherwise it is this one in the user's home
};

/// The user's folders on one system; a program has its own in each.
struct FolderRules {
  FolderRule config, data, state, cache;
};

/// The XDG base directories.
inline constexpr FolderRules xdgFolders{{"XDG_CONFIG_HOME", ".config"},
                                        {"XDG_DATA_HOME", ".local/share"},
                                        {"XDG_STATE_HOME", ".local/state"},
                                        {"XDG_CACHE_HOME", ".cache"}};

inline constexpr FolderRules macosFolders{{nullptr, "Library/Application Support"},
                                          {nullptr, "Library/Application Support"},
                                          {nullptr, "Library/Application Support"},
                                          {nullptr, "Library/Caches"}};

#ifdef __APPLE__
inline constexpr const FolderRules& systemFolders = macosFolders;
#else
inline constexpr const FolderRules& systemFolders = xdgFolders;
#endif

/// This program's folder by the rule. Nothing when that needs a home and there is none. Any thread.
std::optional<std::filesystem::path> folderBy(const FolderRule& rule, const Environment& environment);

/// The value of an environment variable that has to be an absolute path; nothing when it is none.
std::optional<std::filesystem::path> absolutePath(const std::optional<std::string>& value);

}  // namespace veloria
