#pragma once

#include <filesystem>
#include <optional>

#include "base/Environment.h"

namespace veloria {

/// This program's folders in the user's home: `Veloria` in $XDG_CONFIG_HOME, or in ~/.config if that is not set,
/// empty or not absolute; likewise $XDG_DATA_HOME with ~/.local/share, $XDG_STATE_HOME with ~/.local/state and
/// $XDG_CACHE_HOME with ~/.cache. On macOS in ~/Library/Application Support, and ~/Library/Caches. Empty if that
/// needs a home and there is none. The folders need not exist. Any thread.
std::optional<std::filesystem::path> configFolder(const Environment& environment);
std::optional<std::filesystem::path> dataFolder(const Environment& environment);
std::optional<std::filesystem::path> stateFolder(const Environment& environment);
std::optional<std::filesystem::path> cacheFolder(const Environment& environment);

/// The user's home: $HOME, or the one in the user database if that is not absolute; empty if unknown. Any thread.
std::optional<std::filesystem::path> homeFolder(const Environment& environment);

/// Makes a folder and the missing ones above it, for the owner alone (0700); existing ones stay as they are. False if
/// it does not exist afterwards.
bool makeUserFolder(const std::filesystem::path& folder);

/// The folder for one kind of file.
struct FolderRule {
  const char* variable;   ///< names the folder if it holds an absolute path; null: none
  const char* belowHome;  ///< the folder in the home otherwise
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

/// This program's folder by the rule. Empty if that needs a home and there is none. Any thread.
std::optional<std::filesystem::path> folderBy(const FolderRule& rule, const Environment& environment);

}  // namespace veloria
