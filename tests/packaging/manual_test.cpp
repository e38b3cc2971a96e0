// The manual page of veloria says what its --help says.

#include <gmock/gmock.h>

#include <set>

#include "Process.h"
#include "VeloriaHelp.h"

namespace veloria::tests {
namespace {

using Names = std::set<std::string>;

Names setOf(const std::vector<std::string>& names) {
  return {names.begin(), names.end()};
}

std::string mandoc(const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"mandoc"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.push_back(std::string(VELORIA_PACKAGING) + "/man/veloria.1");
  const ProcessResult result = runProcess("/usr/bin/env", arguments);
  EXPECT_EQ(result.exitCode, 0) << result.output;
  EXPECT_EQ(result.errors, "");
  return result.output;
}

/// What stands under a heading of the page.
std::string section(const std::string& page, const std::string& heading) {
  const std::string line = "# " + heading + "\n";
  const std::size_t begin = page.find(line);
  EXPECT_NE(begin, std::string::npos) << heading;
  return begin == std::string::npos ? "" : page.substr(begin, page.find("\n#", begin) - begin);
}

Names optionsIn(const std::string& text) {
  return setOf(matches(text, "\\*\\*(--[a-z-]+)\\*\\*"));
}

TEST(Manual, HasNoMistakes) {
  // Below warnings is that other manuals are not installed.
  EXPECT_EQ(mandoc({"-T", "lint", "-W", "warning"}), "");
}

TEST(Manual, TellsEveryCommandItsOptionsAndTheVariables) {
  const std::string page = mandoc({"-T", "markdown"});
  const Names commands = setOf(veloriaCommands());
  Names told = setOf(matches(section(page, "DESCRIPTION"), "^\\*\\*([a-z]+)\\*\\*"));
  told.erase("veloria");
  EXPECT_EQ(told, commands);
  const Names common = optionsIn(section(page, "Options of every command"));
  const Names drawing = optionsIn(section(page, "Options of render and bench"));
  for (const auto& command : commands) {
    Names options = common;
    if (command == "render" || command == "bench") options.insert(drawing.begin(), drawing.end());
    if (command != "devices") options.merge(optionsIn(section(page, "Options of " + command)));
    EXPECT_EQ(options, setOf(veloriaOptions(command))) << command;
  }
  EXPECT_EQ(setOf(matches(section(page, "ENVIRONMENT"), "(NIMBRA_[A-Z_]+)")), setOf(veloriaVariables()));
}

}  // namespace
}  // namespace veloria::tests
