#include "app/ShaderLibrary.h"

#include <span>
#include <string>
#include <system_error>

#include "base/Files.h"
#include "base/Log.h"
#include "base/PlatformWords.h"
#include "render/RendererError.h"

namespace veloria {

namespace {

constexpr std::size_t maximumLibraryBytes = 16 << 20;

}  // namespace

std::vector<std::filesystem::path> shaderLibraryCandidates(const ProgramPlaces& places) {
  std::vector<std::filesystem::path> candidates;
  const std::filesystem::path resource = places.resourceFolder / shaderLibraryFile;
  std::error_code ignored;
  if (!places.resourceFolder.empty() && std::filesystem::exists(resource, ignored)) candidates.push_back(resource);
  candidates.push_back(places.executableFolder / shaderLibraryFile);
  candidates.push_back(places.currentFolder / shaderLibraryFile);
  candidates.push_back(places.currentFolder / "build" / shaderLibraryFile);
  return candidates;
}

std::unique_ptr<gpu::Library> loadShaderLibrary(gpu::Device& device,
                                                const std::vector<std::filesystem::path>& candidates) {
  if (device.hasCompiledFunctions()) return device.makeLibrary({});
  std::string tried;
  for (const auto& path : candidates) {
    tried += path.string() + "\n";
    const Result<std::string> bytes = readFileBounded(path, maximumLibraryBytes);
    if (!bytes) continue;
    try {
      auto library = device.makeLibrary(std::as_bytes(std::span(*bytes)));
      NimbraLog::debug(std::string(gpuSystemNameInLines) + " library from " + path.string());
      return library;
    } catch (const gpu::DeviceLostError&) {
      throw;
    } catch (const gpu::DeviceError& error) {
      NimbraLog::debug(path.string() + ": " + error.what());
    }
  }
  throw RendererError::noLibrary(std::string(shaderLibraryFile) + " not found. Looked in:\n" + tried +
                                 "\nRun ./build.sh to compile the shaders.");
}

}  // namespace veloria
