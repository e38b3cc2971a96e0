#include "render/RendererError.h"

#include "base/PlatformWords.h"

namespace veloria {

RendererError RendererError::noLibrary(const std::string& detail) {
  return {Code::noLibrary, "Could not load the " + std::string(gpuSystemName) + " library: " + detail};
}

RendererError RendererError::missingFunction(const std::string& name) {
  return {Code::missingFunction,
          "Shader function '" + name + "' is missing from the " + std::string(gpuSystemName) + " library."};
}

RendererError RendererError::noDevice() {
  return {Code::noDevice,
          "No " + std::string(gpuSystemName) + " device is available on this " + std::string(machineName) + "."};
}

}  // namespace veloria
