#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace veloria {

/// An error in a scene script. what() and description() are "Line 3: unknown parameter 'glw'".
struct ScriptError : std::runtime_error {
  ScriptError(int atLine, std::string text)
      : std::runtime_error(describe(atLine, text)), line(atLine), message(std::move(text)) {}

  /// Like what(), but whole even if the script has a zero byte.
  std::string description() const { return describe(line, message); }
  bool operator==(const ScriptError& other) const { return line == other.line && message == other.message; }

  int line;             ///< from 1; 0 from the expression parser, which knows no line
  std::string message;  ///< without the line; quotes the script, at any length

 private:
  static std::string describe(int number, const std::string& text) {
    return "Line " + std::to_string(number) + ": " + text;
  }
};

}  // namespace veloria
