#pragma once

#include <stdexcept>
#include <string>

namespace veloria {

/// Why drawing can't start. what() is the text for a person.
class RendererError : public std::runtime_error {
 public:
  enum class Code { noLibrary, missingFunction, noDevice };

  static RendererError noLibrary(const std::string& detail);
  static RendererError missingFunction(const std::string& name);
  static RendererError noDevice();

  Code code() const { return code_; }

 private:
  RendererError(Code code, const std::string& text) : std::runtime_error(text), code_(code) {}

  Code code_;
};

}  // namespace veloria
