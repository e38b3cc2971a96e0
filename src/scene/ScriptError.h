#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace veloria {

/// What is wrong with a scene script. what() and description() are "Line 3: unknown parameter 'glw'".
struct ScriptError : std::runtime_error {
  ScriptError(int atLine, std::string text)
      : std::runtime_error(describe(atLine, text)), line(atLine), message(std::move(text)) {}

  /// Like what(), which ends early where the script has a zero byte.
  std::string description() const { return describe(line, message); }
  bool operator==(const ScriptError& other) const { return line == other.line && message == other.message; }

  int line;             ///< from 1; 0 while the error is still inside the expression parser
  std::string message;  ///< without the line; quotes what was written, however long that is

 private:
  static std::string describe(int number, const std::string& text) {
    return "Line " + std::to_string(number) + ": " + text;
  }
};

}  // namespace veloria
