#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "gpu/Device.h"

namespace veloria {

/// Where this program's files are.
struct ProgramPlaces {
  std::filesystem::path resourceFolder;  ///< of an installed program
  std::filesystem::path executableFolder;
  std::filesystem::path currentFolder;
};

/// The files that may be the shader library, in search order: in the resource folder (listed only if it exists), beside
/// the executable, in the current folder, in its build folder.
std::vector<std::filesystem::path> shaderLibraryCandidates(const ProgramPlaces& places);

/// Loads the first candidate that is a library; for a device with compiled functions, none. Throws
/// RendererError::noLibrary, which lists them all.
std::unique_ptr<gpu::Library> loadShaderLibrary(gpu::Device& device,
                                                const std::vector<std::filesystem::path>& candidates);

}  // namespace veloria
