#pragma once

#include <string_view>

namespace veloria {

/// Words in texts for people, and names of files and folders, that differ between systems.
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
