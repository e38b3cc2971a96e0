#pragma once

#include <string>
#include <vector>

namespace veloria::tests {

/// What the program's own --help tells, which the manual page and the completions have to follow.

std::vector<std::string> veloriaCommands();
/// "--size" and so on, in the order of the help.
std::vector<std::string> veloriaOptions(const std::string& command);
/// "NIMBRA_LAYER" and so on.
std::vector<std::string> veloriaVariables();

/// Every match of the pattern's first group in `text`, in order.
std::vector<std::string> matches(const std::string& text, const std::string& pattern);

}  // namespace veloria::tests
