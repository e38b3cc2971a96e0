#pragma once

#include <stdexcept>
#include <string>

#include "base/PlatformWords.h"

namespace veloria {

/// Why drawing can't start. what() is the text for a person.
class RendererError : public std::runtime_error {
 public:
  enum class Code { noLibrary, missingFunction, noDevice };

  static RendererError noLibrary(const std::string& detail) {
    return {Code::noLibrary, "Could not load the " + std::string(gpuSystemName) + " library: " + detail};
  }
  static RendererError missingFunction(const std::string& name) {
    return {Code::missingFunction,
            "Shader function '" + name + "' is missing from the " + std::string(gpuSystemName) + " library."};
  }
  static RendererError noDevice() {
    return {Code::noDevice,
            "No " + std::string(gpuSystemName) + " device is available on this " + std::string(machineName) + "."};
  }

  Code code() const { return code_; }

 private:
  RendererError(Code code, const std::string& text) : std::runtime_error(text), code_(code) {}

  Code code_;
};

}  // namespace veloria
