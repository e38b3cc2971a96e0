#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace veloria {

/// Whether it is a file (links are followed) that this user may run. Any thread.
bool isRunnable(const std::filesystem::path& file);

/// Whether it is a folder (links are followed) in which this user may make and remove files. Any thread.
bool isWritableFolder(const std::filesystem::path& folder);

/// The first runnable `name` in a search path as PATH holds it; folders in it that are not absolute don't count. Any
/// thread.
std::optional<std::filesystem::path> findProgram(const std::string& name, std::string_view searchPath);

/// Starts a program that goes on without this one: in a session of its own, with nothing to read and its output thrown
/// away. Returns once it runs, without waiting for what it does. The error is a sentence. Any thread.
Result<Done> startDetached(const std::filesystem::path& program, const std::vector<std::string>& arguments);

}  // namespace veloria
