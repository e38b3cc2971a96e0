#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PtySession.h"

namespace veloria::tests {

using Texts = std::vector<std::string>;

/// A program, its completions for each shell, and where those run.
struct CompletedProgram {
  std::string name;
  std::string scripts;  ///< folder of NAME.bash, _NAME and NAME.fish
  std::string folder;   ///< the shells' current folder and home
  Texts environment;    ///< "NAME=value"
};

/// What bash offers for the last of `words`, those after the program's name, as the program would get it.
Texts bashOffers(const CompletedProgram& program, const Texts& words);

/// What fish offers at the end of `line`.
Texts fishOffers(const CompletedProgram& program, const std::string& line);

/// A zsh on a terminal that completes with the program's script.
class ZshLine {
 public:
  explicit ZshLine(const CompletedProgram& program);

  /// Types `line` and Tab; whether all of `texts` come. The line is empty again afterwards.
  testing::AssertionResult offers(const std::string& line, const Texts& texts);

 private:
  PtySession terminal_;
};

}  // namespace veloria::tests
