#pragma once

#include <filesystem>

namespace veloria {

/// The name of this program's folder in Application Support.
inline constexpr const char* supportFolderName = "Veloria";

/// The same folder for programs that ask no framework, the nimbra command for one.
inline std::filesystem::path supportFolderBelow(const std::filesystem::path& home) {
  return home / "Library" / "Application Support" / supportFolderName;
}

}  // namespace veloria
