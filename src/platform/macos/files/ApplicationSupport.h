#pragma once

#include <filesystem>
#include <optional>

namespace veloria {

/// This program's folder in the user's Application Support folder, where agents' state.json is. Made with those above
/// it where it is missing; nothing where that fails. Main thread.
std::optional<std::filesystem::path> applicationSupportFolder();

}  // namespace veloria
