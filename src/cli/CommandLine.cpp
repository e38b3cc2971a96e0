#include "base/ExitCode.h"
#include "base/Text.h"
#include "cli/Commands.h"
#include "cli/Operands.h"

namespace veloria::cli {

namespace {

bool isOption(std::string_view argument) {
  if (argument.size() < 2 || argument[0] != '-') return false;
  return std::string_view("0123456789.").find(argument[1]) == std::string_view::npos;
}

class Parser {
 public:
  Parser(const CommandDescription& command, std::span<const std::string> arguments)
      : command_(command), left_(arguments) {}

  CommandLine parse() {
    while (!left_.empty() && !line_.help) {
      if (left_.front() == "--" || (command_.program && !isOption(left_.front()))) break;
      const std::string argument = next();
      if (isOption(argument)) {
        readOption(argument);
      } else {
        line_.operands.push_back(argument);
      }
    }
    if (!left_.empty() && left_.front() == "--") next();
    line_.operands.insert(line_.operands.end(), left_.begin(), left_.end());
    if (!line_.help) checkOperands();
    return line_;
  }

 private:
  std::string next() {
    const std::string& first = left_.front();
    left_ = left_.subspan(1);
    return first;
  }

  void readOption(const std::string& argument) {
    const std::size_t equals = argument.starts_with("--") ? argument.find('=') : std::string::npos;
    const std::string name = argument.substr(0, equals);
    if (command_.session && (name == "--session" || name == "--ttl")) {
      const std::string value = equals == std::string::npos ? valueOf(name) : argument.substr(equals + 1);
      if (name == "--session") line_.session = sessionName(value);
      if (name == "--ttl") line_.ttl = lifetime(value);
    } else {
      readFlag(argument);
    }
  }

  void readFlag(const std::string& argument) {
    if (argument == "-h" || argument == "--help") {
      line_.help = true;
    } else if (command_.verbose && (argument == "-v" || argument == "--verbose")) {
      line_.verbose = true;
    } else if (command_.json && argument == "--json") {
      line_.json = true;
    } else {
      throw UsageError("unknown option '" + printable(argument) + "'; see '" + name() + " --help'.");
    }
  }

  std::string valueOf(const std::string& option) {
    if (left_.empty()) throw UsageError(option + " needs a value; see '" + name() + " --help'.");
    return next();
  }

  void checkOperands() const {
    const std::size_t count = line_.operands.size();
    if (count < command_.fewest) throw UsageError("missing argument. Usage: '" + usageOf(command_) + "'.");
    if (count <= command_.most) return;
    throw UsageError("unexpected argument '" + printable(line_.operands[command_.most]) + "'. Usage: '" +
                     usageOf(command_) + "'.");
  }

  std::string name() const { return "nimbra " + std::string(command_.name); }

  const CommandDescription& command_;
  std::span<const std::string> left_;
  CommandLine line_;
};

}  // namespace

CommandLine parseCommandLine(const CommandDescription& command, const std::vector<std::string>& arguments) {
  return Parser(command, arguments).parse();
}

}  // namespace veloria::cli
