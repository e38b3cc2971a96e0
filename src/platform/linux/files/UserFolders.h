#pragma once

#include <filesystem>
#include <optional>

#include "base/Environment.h"

namespace veloria {

/// This program's folders in the user's home, by the XDG base directory rules: `Veloria` in $XDG_CONFIG_HOME, or in
/// ~/.config when that is not set, empty or not absolute; likewise $XDG_DATA_HOME with ~/.local/share, $XDG_STATE_HOME
/// with ~/.local/state and $XDG_CACHE_HOME with ~/.cache. Nothing when that needs a home and there is none. The folders need not exist. Any
/// thread.
std::optional<std::filesystem::path> configFolder(const Environment& environment);
std::optional<std::filesystem::path> dataFolder(const Environment& environment);
std::optional<std::filesystem::path> stateFolder(const Environment& environment);
std::optional<std::filesystem::path> cacheFolder(const Environment& environment);

/// The user's home: $HOME, or what the user database says when that is not absolute; nothing when nobody knows it. Any
/// thread.
std::optional<std::filesystem::path> homeFolder(const Environment& environment);

/// Makes a folder and those above it that are missing, for the owner alone (0700); those that exist stay as they are.
/// False when there is no such folder afterwards.
bool makeUserFolder(const std::filesystem::path& folder);

}  // namespace veloria
