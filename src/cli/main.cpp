#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "base/ExitCode.h"
#include "base/Text.h"
#include "cli/Commands.h"

namespace {

using namespace veloria;
using namespace veloria::cli;

int print(const std::string& text) {
  const bool whole = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  return whole ? done : failed;
}

UsageError unknownCommand(const std::string& name) {
  std::string text = "unknown command '" + printable(name) + "'. Commands:";
  for (const auto& command : commandDescriptions()) text += " " + std::string(command.name);
  return UsageError(text + ".");
}

int runCommand(const std::string& name, const std::vector<std::string>& arguments) {
  const CommandDescription* command = findCommand(name);
  if (command == nullptr) throw unknownCommand(name);
  const CommandLine line = parseCommandLine(*command, arguments);
  return line.help ? print(helpFor(*command)) : command->run(line, processEnvironment());
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.empty()) throw UsageError("no command given; see 'nimbra --help'.");
  const std::string& first = arguments.front();
  if (first == "--help" || first == "-h" || first == "help") return print(generalHelp());
  if (first == "--version") return print("nimbra " VELORIA_VERSION "\n");
  return runCommand(first, {arguments.begin() + 1, arguments.end()});
}

int complain(const std::vector<std::string>& arguments, const char* text, ExitCode code) {
  const bool known = !arguments.empty() && findCommand(arguments.front()) != nullptr;
  std::fprintf(stderr, "nimbra%s: %s\n", known ? (" " + arguments.front()).c_str() : "", text);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  try {
    return run(arguments);
  } catch (const UsageError& error) {
    return complain(arguments, error.what(), wrongUsage);
  } catch (const std::exception& error) {
    return complain(arguments, error.what(), failed);
  }
}
