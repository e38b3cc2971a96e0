#include "VeloriaHelp.h"

#include <gtest/gtest.h>

#include <regex>

#include "Process.h"

namespace veloria::tests {

namespace {

std::string help(const std::vector<std::string>& arguments) {
  const ProcessResult result = runProcess(VELORIA_BINARY, arguments);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  return result.output;
}

}  // namespace

std::vector<std::string> matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern, std::regex::ECMAScript | std::regex::multiline);
  std::vector<std::string> found;
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) found.push_back((*at)[1]);
  return found;
}

std::vector<std::string> veloriaCommands() {
  return matches(help({"--help"}), "^ +veloria ([a-z]+) ");
}

std::vector<std::string> veloriaOptions(const std::string& command) {
  return matches(help({command, "--help"}), "^  (?:-[a-z], )?(--[a-z-]+)");
}

std::vector<std::string> veloriaVariables() {
  return matches(help({"--help"}), "^  ([A-Z_]+) ");
}

}  // namespace veloria::tests
