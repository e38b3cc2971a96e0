#pragma once

#include <string_view>

namespace veloria {

/// The words that differ between systems in texts that people read, and the names of files and folders.
#ifdef __APPLE__
inline constexpr std::string_view gpuSystemName = "Metal";
inline constexpr std::string_view gpuSystemNameInLines = "metal";  ///< in diagnostics
inline constexpr std::string_view machineName = "Mac";
inline constexpr std::string_view shaderLibraryFile = "default.metallib";
inline constexpr std::string_view resourceFolderFromProgram = "../Resources";
inline constexpr std::string_view stateFilePlace = "~/Library/Application Support/Veloria/state.json.";
#else
inline constexpr std::string_view gpuSystemName = "Vulkan";
inline constexpr std::string_view gpuSystemNameInLines = "vulkan";  ///< in diagnostics
inline constexpr std::string_view machineName = "computer";
inline constexpr std::string_view shaderLibraryFile = "default.spv";
inline constexpr std::string_view resourceFolderFromProgram = "../share/veloria";
inline constexpr std::string_view stateFilePlace =
    "$XDG_DATA_HOME/Veloria/state.json, ~/.local/share/Veloria/state.json when that is not set.";
#endif

}  // namespace veloria
